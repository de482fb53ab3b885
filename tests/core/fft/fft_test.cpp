// Real transforms against the definition in extended precision, products of spectra, autocorrelation.
#include <algorithm>
#include <complex>
#include <memory>
#include <numbers>

#include "core/fft/spec.h"
#include "kels.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"
#include "support/rounding.h"

namespace {

using Exact = std::complex<long double>;
using Floats = std::vector<Kel32f>;
using test::Guarded;
using test::Random;

constexpr double kUnit = 0x1p-24;  // of rounding to nearest

// ---- reference -----------------------------------------------------------------------------------------------------

// sum of x[n] e^(-2 pi i k n / N), by halves.
std::vector<Exact> dft(const std::vector<Exact>& x) {
    const std::size_t n = x.size();
    if (n == 1) return x;
    std::vector<Exact> even, odd, y(n);
    for (std::size_t i = 0; i < n; i += 2) {
        even.push_back(x[i]);
        odd.push_back(x[i + 1]);
    }
    even = dft(even);
    odd = dft(odd);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const Exact t = odd[k] * std::polar(1.0L, -2 * std::numbers::pi_v<long double> * k / n);
        y[k] = even[k] + t;
        y[k + n / 2] = even[k] - t;
    }
    return y;
}

std::vector<long double> exactCcs(const Floats& x) {
    const std::vector<Exact> y = dft({x.begin(), x.end()});
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
    for (const Exact& v : dft(y)) x.push_back(v.real());
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

// ---- transforms on guarded arrays ----------------------------------------------------------------------------------

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

// Every way to call gives the same: out of place and in place, with a work buffer of just the size asked for and
// without, with nothing accessible on one side of each array.
Floats run(Transform transform, const Spec& spec, const Floats& x, std::size_t outputs) {
    int bytes = -1;
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(spec.get(), &bytes), 0);
    Floats result;
    for (const auto edge : {test::Edge::End, test::Edge::Begin}) {
        Guarded<Kel8u> work(static_cast<std::size_t>(bytes + 15), edge);
        Guarded<Kel32f> src(x, edge), dst(outputs, edge), both(std::max(outputs, x.size()), edge);
        EXPECT_EQ(transform(src, dst, spec.get(), work), 0);
        EXPECT_TRUE(test::sameBits(src, x));
        std::copy(x.begin(), x.end(), both.data());
        EXPECT_EQ(transform(both, both, spec.get(), nullptr), 0);
        EXPECT_TRUE(test::sameBits(both, dst));
        EXPECT_TRUE(result.empty() || test::sameBits(dst, result));
        result = dst.vector();
    }
    return result;
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
        const Guarded<Kel16s> x(Random(3).vector<Kel16s>(n));
        const Floats floats(x.data(), x.data() + n);
        const auto spec = makeIntegerSpec(order, order % 2 ? kelFftDivFwdByN : kelFftNoDiv);
        int inner = -1;
        kelsFFTGetBufSize_R_32f(spec->inner, &inner);
        Guarded<Kel8u> work(4 * n + inner + 31);
        Guarded<Kel32s> y(outputs), unbuffered(outputs);
        Floats spectrum(outputs);
        for (const int scaleFactor : {0, 3, -9, 70}) {
            const auto call = [&] {
                kelsFFTFwd_RToCCS_32f(floats.data(), spectrum.data(), spec->inner, nullptr);
                EXPECT_EQ(kelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), y, spec.get(), scaleFactor, work), 0);
                EXPECT_EQ(kelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), unbuffered, spec.get(), scaleFactor, nullptr), 0);
            };
            test::inEveryRoundingMode(call, [&] {
                for (std::size_t i = 0; i < outputs; ++i) {
                    ASSERT_EQ(y[i], test::halfEven<Kel32s>(spectrum[i], scaleFactor)) << order << ' ' << i;
                }
                EXPECT_EQ(unbuffered.vector(), y.vector());
            });
        }
    }
}

// ---- statuses and memory -------------------------------------------------------------------------------------------

// Runs `call` with each of its allocations failing: the status says so, and everything is as it was.
template <class Call, class Untouched>
void expectNoMemory(Call call, Untouched untouched) {
    test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
        const KelStatus status = call();
        const bool failed = watch.calls() > n;
        EXPECT_EQ(status, failed ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(untouched(), failed);
        EXPECT_TRUE(!failed || watch.unreleased() == 0);
    });
}

template <class S>
void checkInit(KelStatus (*init)(S**, int, int, int), KelStatus (*release)(S*)) {
    S* const untouched = reinterpret_cast<S*>(16);
    S* spec = untouched;
    const test::AllocationWatch watch;
    EXPECT_EQ(init(nullptr, 31, 3, 0), kelStatusNullPtr);
    for (const int order : {-1, 31}) EXPECT_EQ(init(&spec, order, 3, 0), kelStatusFftOrder);
    for (const int flag : {0, 3, 16}) EXPECT_EQ(init(&spec, 8, flag, 0), kelStatusFftFlag);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(init(&spec, 30, kelFftNoDiv, 0), kelStatusNoMemory);
    }
    EXPECT_EQ(watch.unreleased(), 0);
    for (const int order : {0, 8, 16}) {
        expectNoMemory([&] { return init(&spec, order, kelFftNoDiv, 0); }, [&] { return spec == untouched; });
        EXPECT_EQ(release(std::exchange(spec, untouched)), 0);
    }
    const test::AllocationWatch first(0);
    EXPECT_EQ(init(&spec, 8, 3, 0), kelStatusNoMemory);
    EXPECT_EQ(release(nullptr), kelStatusNullPtr);
    Kel32s other[32] = {5};
    EXPECT_EQ(release(reinterpret_cast<S*>(other)), kelStatusContextMatch);
}

TEST(FftStatuses, Specifications) {
    checkInit(kelsFFTInitAlloc_R_32f, kelsFFTFree_R_32f);
    checkInit(kelsFFTInitAlloc_R_16s32s, kelsFFTFree_R_16s32s);
    KelFFTSpec_R_16s32s* none = nullptr;
    EXPECT_EQ(kelsFFTInitAlloc_R_16s32s(&none, 28, 3, 0), kelStatusNoMemory);
    Kel32s words[32] = {7};
    int size = 99;
    test::expectNullChecks(kelsFFTGetBufSize_R_32f);
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(reinterpret_cast<KelFFTSpec_R_32f*>(words), &size), kelStatusContextMatch);
    EXPECT_EQ(size, 99);
}

template <class T, class D, class S, class Call>
void checkTransform(const S* spec, Call f) {
    Kel32s words[32] = {7};
    const S* const wrong = reinterpret_cast<S*>(words);
    const std::vector<T> x(512, T(1));
    std::vector<D> y(514, D(5));
    EXPECT_EQ(f(static_cast<T*>(nullptr), y.data(), static_cast<S*>(nullptr)), kelStatusNullPtr);
    EXPECT_EQ(f(static_cast<T*>(nullptr), y.data(), wrong), kelStatusContextMatch);
    EXPECT_EQ(f(static_cast<T*>(nullptr), y.data(), spec), kelStatusNullPtr);
    EXPECT_EQ(f(x.data(), static_cast<D*>(nullptr), spec), kelStatusNullPtr);
    expectNoMemory([&] { return f(x.data(), y.data(), spec); }, [&] { return y[0] == D(5); });
}

TEST(FftStatuses, Transforms) {
    const Spec spec = makeSpec(9, kelFftNoDiv);
    for (const Transform f : {kelsFFTFwd_RToCCS_32f, kelsFFTFwd_RToPack_32f, kelsFFTInv_PackToR_32f}) {
        checkTransform<Kel32f, Kel32f>(spec.get(), [=](auto* x, auto* y, auto* s) { return f(x, y, s, nullptr); });
    }
    const auto f = kelsFFTFwd_RToCCS_16s32s_Sfs;
    const auto integer = makeIntegerSpec(9, kelFftNoDiv);
    checkTransform<Kel16s, Kel32s>(integer.get(), [=](auto* x, auto* y, auto* s) { return f(x, y, s, 0, nullptr); });
}

// ---- products and autocorrelation ----------------------------------------------------------------------------------

TEST(MulPackConj, MultipliesPairsByConjugates) {
    Random random;
    for (int len = 1; len <= 70; ++len) {
        const auto n = static_cast<std::size_t>(len);
        const Guarded<Kel32f> a(random.vector<Kel32f>(n));
        const Floats b = random.vector<Kel32f>(n);
        Guarded<Kel32f> y(b);
        EXPECT_EQ(kelsMulPackConj_32f_I(a.data(), y, len), 0);
        EXPECT_EQ(y[0], a[0] * b[0]);
        EXPECT_EQ(y[n - 1], len % 2 == 0 ? a[n - 1] * b[n - 1] : y[n - 1]);
        for (std::size_t i = 1; i + 1 < n; i += 2) {
            const Exact s(a[i], -a[i + 1]), d(b[i], b[i + 1]), exact = d * s;
            // Two products and a sum, each rounded once.
            const auto re = std::fabs(s.real() * d.real()) + std::fabs(s.imag() * d.imag());
            const auto im = std::fabs(s.real() * d.imag()) + std::fabs(s.imag() * d.real());
            EXPECT_TRUE(test::near(y[i], exact.real(), 2.01 * kUnit * re));
            EXPECT_TRUE(test::near(y[i + 1], exact.imag(), 2.01 * kUnit * im));
        }
    }
    test::expectVectorChecks({kelStatusNullPtr, kelStatusSize}, kelsMulPackConj_32f_I);
}

TEST(AutoCorr, DirectSumsAreRoundedOnceAndTransformsAreClose) {
    Random random;
    const std::size_t lengths[][2] = {{1, 1}, {5, 9}, {400, 13}, {699, 2000}, {700, 700}, {1500, 1024}, {5000, 701}};
    for (const auto& [srcLen, dstLen] : lengths) {
        const Guarded<Kel32f> x(random.vector<Kel32f>(srcLen, 3));
        Guarded<Kel32f> y(Floats(dstLen, 5.0f));
        ASSERT_EQ(kelsAutoCorr_32f(x.data(), static_cast<int>(srcLen), y, static_cast<int>(dstLen)), 0);
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

TEST(AutoCorr, StatusesAndMemory) {
    Floats x(800, 1.0f), y(900, 5.0f);
    test::expectChecks<test::Places{.height = 3, .width = 1}>({kelStatusNullPtr, kelStatusSize}, 1, kelsAutoCorr_32f);
    EXPECT_EQ(kelsAutoCorr_32f(x.data(), (1 << 29) + 1, y.data(), 700), kelStatusFftOrder);
    expectNoMemory([&] { return kelsAutoCorr_32f(x.data(), 800, y.data(), 900); },
                   [&] { return y == Floats(900, 5.0f); });
}

}  // namespace
