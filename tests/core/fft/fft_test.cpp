// Real transforms against the definition in extended precision, products of spectra, autocorrelation.
#include <algorithm>
#include <memory>

#include "core/fft/spec.h"
#include "kels.h"
#include "support/numeric.h"
#include "support/random.h"
#include "support/rounding.h"
#include "support/transform.h"

namespace {

using Exact = test::Complex;
using Floats = std::vector<Kel32f>;
using test::Random;

constexpr double kUnit = 0x1p-24;  // of rounding to nearest

// ---- reference -----------------------------------------------------------------------------------------------------

std::vector<long double> exactCcs(const Floats& x) {
    const std::vector<Exact> y = test::transform(x, x.size());
    std::vector<long double> ccs;
    for (std::size_t k = 0; k <= x.size() / 2; ++k) {
        ccs.push_back(y[k].real());
        ccs.push_back(k == 0 || 2 * k == x.size() ? 0.0L : y[k].imag());
    }
    return ccs;
}

std::vector<long double> exactInverse(const Floats& pack) {
    const std::size_t n = pack.size();
    std::vector<Exact> y(n);
    y[0] = pack[0];
    if (n > 1) y[n / 2] = pack[n - 1];
    for (std::size_t k = 1; 2 * k < n; ++k) {  // the conjugate, whose forward transform is the same real signal
        y[k] = Exact(pack[2 * k - 1], -pack[2 * k]);
        y[n - k] = std::conj(y[k]);
    }
    std::vector<long double> x;
    for (const Exact& v : test::transform(y)) x.push_back(v.real());
    return x;
}

Floats packed(const Floats& ccs) {
    Floats pack = {ccs[0]};
    for (std::size_t i = 2; i + 1 < ccs.size(); ++i) pack.push_back(ccs[i]);
    return pack;
}

// Rounding errors that are independent and uniform leave 0.65 units * sqrt(order) of root mean square (C. Weinstein,
// IEEE Trans. Audio Electroacoustics 17, 1969); a factor that is no power of two adds one more.  Among 2^19 values the
// largest of a normal distribution lies near five of them.
::testing::AssertionResult accurate(const Floats& got, const std::vector<long double>& exact, long double factor,
                                    long double roundings) {
    long double square = 0, reference = 0, max = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const long double e = std::fabs(got[i] - factor * exact[i]);
        square += e * e;
        max = e <= max ? max : e;  // takes a NaN
        reference += factor * exact[i] * factor * exact[i];
    }
    const long double bound = kUnit * std::sqrt(roundings * reference);
    if (square <= bound * bound && max <= 6 * bound / std::sqrt(1.0L * exact.size())) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "rms " << std::sqrt(square) << ", max " << max << ", rms bound " << bound;
}

// ---- transforms -----------------------------------------------------------------------------------------------------

template <class S>
std::unique_ptr<S, KelStatus (*)(S*)> make(KelStatus (*init)(S**, int, int, int), KelStatus (*release)(S*), int order,
                                           int flag) {
    S* spec = nullptr;
    EXPECT_EQ(init(&spec, order, flag, kelHintNone), 0);
    return {spec, release};
}
auto makeSpec(int order, int flag) {
    return make(kelsFFTInitAlloc_R_32f, kelsFFTFree_R_32f, order, flag);
}
auto makeIntegerSpec(int order, int flag) {
    return make(kelsFFTInitAlloc_R_16s32s, kelsFFTFree_R_16s32s, order, flag);
}
using Spec = decltype(makeSpec(0, 0));

using Transform = decltype(&kelsFFTFwd_RToCCS_32f);

// Out of place with a work buffer, and in place without.
Floats run(Transform transform, const Spec& spec, const Floats& x, std::size_t outputs) {
    int bytes = -1;
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(spec.get(), &bytes), 0);
    std::vector<Kel8u> work(static_cast<std::size_t>(bytes + 15));
    Floats dst(outputs), both = x;
    both.resize(std::max(outputs, x.size()));
    EXPECT_EQ(transform(x.data(), dst.data(), spec.get(), work.data()), 0);
    EXPECT_EQ(transform(both.data(), both.data(), spec.get(), nullptr), 0);
    EXPECT_TRUE(test::sameBits(both, dst));
    return dst;
}

class Fft : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Orders, Fft, ::testing::Range(0, 19));

TEST_P(Fft, ForwardAndInverse) {
    const int order = GetParam();
    const std::size_t n = std::size_t{1} << order;
    const Floats x = Random(static_cast<unsigned>(order) + 1).vector<Kel32f>(n, 2);
    const std::vector<long double> spectrum = exactCcs(x), signal = exactInverse(x);
    for (const int flag : {kelFftNoDiv, kelFftDivFwdByN, kelFftDivInvByN, kelFftDivBySqrtN}) {
        const Spec spec = makeSpec(order, flag);
        const auto factor = [&](int byN) {
            return flag == byN ? 1.0L / n : flag == kelFftDivBySqrtN ? 1 / std::sqrt(1.0L * n) : 1.0L;
        };
        const Floats ccs = run(kelsFFTFwd_RToCCS_32f, spec, x, n == 1 ? 2 : n + 2);
        EXPECT_TRUE(accurate(ccs, spectrum, factor(kelFftDivFwdByN), order + 2)) << "flag " << flag;
        EXPECT_TRUE(ccs[1] == 0 && ccs.back() == 0);
        EXPECT_TRUE(test::sameBits(run(kelsFFTFwd_RToPack_32f, spec, x, n), packed(ccs)));
        const Floats back = run(kelsFFTInv_PackToR_32f, spec, x, n);
        EXPECT_TRUE(accurate(back, signal, factor(kelFftDivInvByN), order + 2)) << "flag " << flag;
        if (order > 16) return;
    }
}

TEST(FftProperties, RoundingModesSurviveAndTablesDoNotDependOnThem) {
    for (const int order : {3, 4, 9, 16}) {
        const std::size_t n = std::size_t{1} << order;
        const Floats x = Random(5).vector<Kel32f>(n, 2);
        Spec spec = makeSpec(order, kelFftNoDiv);
        Floats expected(n + 2), y(n + 2);
        kelsFFTFwd_RToCCS_32f(x.data(), expected.data(), spec.get(), nullptr);
        const auto anew = [&] {
            spec = makeSpec(order, kelFftNoDiv);
            kelsFFTFwd_RToCCS_32f(x.data(), y.data(), spec.get(), nullptr);
        };
        test::inEveryRoundingMode(anew, [&] {
            kelsFFTFwd_RToCCS_32f(x.data(), y.data(), spec.get(), nullptr);
            EXPECT_TRUE(test::sameBits(y, expected));
        });
    }
}

TEST(Fft16s, IsTheFloatSpectrumScaledAndRoundedToNearest) {
    for (const int order : {0, 1, 2, 3, 4, 7, 10, 17}) {
        const std::size_t n = std::size_t{1} << order, outputs = order == 0 ? 2 : n + 2;
        const auto x = Random(3).vector<Kel16s>(n);
        const Floats floats(x.begin(), x.end());
        const auto spec = makeIntegerSpec(order, order % 2 ? kelFftDivFwdByN : kelFftNoDiv);
        int inner = -1;
        kelsFFTGetBufSize_R_32f(spec->inner, &inner);
        std::vector<Kel8u> work(4 * n + inner + 31);
        std::vector<Kel32s> y(outputs), unbuffered(outputs);
        Floats spectrum(outputs);
        for (const int scaleFactor : {0, 3, -9, 70}) {
            const auto call = [&] {
                kelsFFTFwd_RToCCS_32f(floats.data(), spectrum.data(), spec->inner, nullptr);
                EXPECT_EQ(kelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), y.data(), spec.get(), scaleFactor, work.data()), 0);
                EXPECT_EQ(kelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), unbuffered.data(), spec.get(), scaleFactor, nullptr),
                          0);
            };
            test::inEveryRoundingMode(call, [&] {
                for (std::size_t i = 0; i < outputs; ++i) {
                    ASSERT_EQ(y[i], test::halfEven<Kel32s>(spectrum[i], scaleFactor)) << order << ' ' << i;
                }
                EXPECT_EQ(unbuffered, y);
            });
        }
    }
}

TEST(FftSpecs, AreToldFromOthers) {
    Kel32s words[32] = {7};
    auto* const wrong = reinterpret_cast<KelFFTSpec_R_32f*>(words);
    auto* const wrongIntegers = reinterpret_cast<KelFFTSpec_R_16s32s*>(words);
    int size = 99;
    EXPECT_EQ(kelsFFTFree_R_32f(wrong), kelStatusContextMatch);
    EXPECT_EQ(kelsFFTFree_R_16s32s(wrongIntegers), kelStatusContextMatch);
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(wrong, &size), kelStatusContextMatch);
    for (const Transform f : {kelsFFTFwd_RToCCS_32f, kelsFFTFwd_RToPack_32f, kelsFFTInv_PackToR_32f}) {
        EXPECT_EQ(f(nullptr, nullptr, wrong, nullptr), kelStatusContextMatch);
    }
    EXPECT_EQ(kelsFFTFwd_RToCCS_16s32s_Sfs(nullptr, nullptr, wrongIntegers, 0, nullptr), kelStatusContextMatch);
}

// ---- products and autocorrelation ----------------------------------------------------------------------------------

TEST(AutoCorr, DirectSumsAreRoundedOnceAndTransformsAreClose) {
    Random random;
    const std::size_t lengths[][2] = {{1, 1}, {5, 9}, {400, 13}, {699, 2000}, {700, 700}, {1500, 1024}, {5000, 701}};
    for (const auto& [srcLen, dstLen] : lengths) {
        const Floats x = random.vector<Kel32f>(srcLen, 3);
        Floats y(dstLen, 5.0f);
        ASSERT_EQ(kelsAutoCorr_32f(x.data(), static_cast<int>(srcLen), y.data(), static_cast<int>(dstLen)), 0);
        std::vector<long double> exact(std::max(srcLen, dstLen));
        long double squares = 0;
        for (std::size_t k = 0; k < srcLen; ++k) {
            for (std::size_t i = 0; i + k < srcLen; ++i) exact[k] += static_cast<long double>(x[i]) * x[i + k];
            squares += (k == 0 ? 1 : 2) * exact[k] * exact[k];
        }
        // Forward error d of the spectrum: 2 d of the energy; then d of the norm of the whole result.
        const double d = kUnit * std::sqrt(1 + std::ceil(std::log2(srcLen)));
        const bool direct = std::min(srcLen, dstLen) < 700;
        for (std::size_t k = 0; k < dstLen; ++k) {
            const long double once = 1.001 * kUnit * std::fabs(exact[k]) + exact[0] * srcLen * 0x1p-62L;
            const long double bound = direct ? once : 2 * d * exact[0] + d * std::sqrt(squares);
            ASSERT_TRUE(test::near(y[k], exact[k], k < srcLen ? bound : 0)) << srcLen << ' ' << k;
        }
    }
}

}  // namespace
