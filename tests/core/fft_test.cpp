#include <algorithm>
#include <complex>
#include <memory>
#include <numbers>

#include "core/fft_spec.h"
#include "kels.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using Exact = std::complex<long double>;
using Floats = std::vector<Kel32f>;
using test::Guarded;
using test::Random;

constexpr int kFlags[] = {kelFftDivFwdByN, kelFftDivInvByN, kelFftDivBySqrtN, kelFftNoDiv};
constexpr double kUnit = 0x1p-24;  // of rounding to nearest

// ---- reference -----------------------------------------------------------------------------------------------------

// sum of x[n] e^(-2 pi i k n / N) by halves; roots holds e^(-2 pi i k / N) for N or a multiple of it.
std::vector<Exact> dft(const std::vector<Exact>& x, const std::vector<Exact>& roots) {
    const std::size_t n = x.size();
    if (n == 1) return x;
    std::vector<Exact> even, odd, y(n);
    for (std::size_t i = 0; i < n; i += 2) {
        even.push_back(x[i]);
        odd.push_back(x[i + 1]);
    }
    even = dft(even, roots);
    odd = dft(odd, roots);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const Exact t = odd[k] * roots[k * (roots.size() / n)];
        y[k] = even[k] + t;
        y[k + n / 2] = even[k] - t;
    }
    return y;
}
std::vector<Exact> dft(const std::vector<Exact>& x) {
    std::vector<Exact> roots;
    for (std::size_t k = 0; k < x.size(); ++k) {
        roots.push_back(std::polar(1.0L, -2 * std::numbers::pi_v<long double> * k / x.size()));
    }
    return dft(x, roots);
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

struct Errors {
    double rms, max;  // relative to the root mean square of the exact values
};
Errors errors(const Floats& got, const std::vector<long double>& exact, long double factor = 1) {
    long double square = 0, reference = 0, max = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const long double e = std::fabs(got[i] - factor * exact[i]);
        square += e * e;
        max = e <= max ? max : e;  // takes a NaN
        reference += factor * exact[i] * factor * exact[i];
    }
    const long double n = exact.size();
    return {static_cast<double>(std::sqrt(square / reference)), static_cast<double>(max / std::sqrt(reference / n))};
}

// Rounding errors that are independent and uniform leave 0.65 units * sqrt(order) of root mean square (C. Weinstein,
// IEEE Trans. Audio Electroacoustics 17, 1969); a factor that is no power of two adds one more.  Among 2^21 values the
// largest of a normal distribution lies near five of them.
::testing::AssertionResult accurate(const Errors& e, int order, int extra = 0) {
    const double bound = kUnit * std::sqrt(order + extra);
    if (e.rms <= bound && e.max <= 6 * bound) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "rms " << e.rms << ", max " << e.max << ", rms bound " << bound;
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
INSTANTIATE_TEST_SUITE_P(Orders, Fft, ::testing::Range(0, 21));

TEST_P(Fft, ForwardAndInverse) {
    const int order = GetParam();
    const std::size_t n = std::size_t{1} << order;
    const Kel32f reciprocal = 1 / static_cast<Kel32f>(n);
    const long double root = std::sqrt(static_cast<long double>(n));
    const Floats x = Random(static_cast<unsigned>(order) + 1).vector<Kel32f>(n, 2);
    for (const bool forward : {true, false}) {
        const Transform transform = forward ? kelsFFTFwd_RToCCS_32f : kelsFFTInv_PackToR_32f;
        const std::vector<long double> exact = forward ? exactCcs(x) : exactInverse(x);
        const Floats plain = run(transform, makeSpec(order, kelFftNoDiv), x, exact.size());
        const Errors e = errors(plain, exact);
        EXPECT_TRUE(accurate(e, order, forward ? 0 : 1));
        if (forward) {
            RecordProperty("rms", std::to_string(1e8 * e.rms));
            RecordProperty("max", std::to_string(1e8 * e.max));
            EXPECT_TRUE(plain[1] == 0 && plain.back() == 0);
        }
        for (const int flag : kFlags) {
            if (order > 16) break;
            const Spec spec = makeSpec(order, flag);
            const Floats y = run(transform, spec, x, exact.size());
            if (forward) {
                const Floats pack = run(kelsFFTFwd_RToPack_32f, spec, x, n);
                EXPECT_TRUE(test::sameBits(pack, packed(y)));
                const Floats back = run(kelsFFTInv_PackToR_32f, spec, pack, n);
                const long double factor = flag == kelFftNoDiv ? static_cast<long double>(n) : 1;
                EXPECT_TRUE(accurate(errors(back, {x.begin(), x.end()}, factor), 2 * order, 3)) << flag;
            }
            if (flag == kelFftDivBySqrtN) {
                EXPECT_TRUE(accurate(errors(y, exact, 1 / root), order, 2));
                continue;
            }
            Floats expected = plain;  // powers of two commute with rounding
            for (auto& v : expected) v *= flag == (forward ? kelFftDivFwdByN : kelFftDivInvByN) ? reciprocal : 1;
            EXPECT_EQ(y, expected) << "flag " << flag;
        }
    }
}

TEST(FftProperties, SpectrumOfOneConstant) {
    EXPECT_EQ(run(kelsFFTFwd_RToCCS_32f, makeSpec(3, kelFftNoDiv), Floats(8, 1), 10),
              (Floats{8, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(FftProperties, RoundingModesSurviveAndTablesDoNotDependOnThem) {
    for (const int order : {3, 4, 6, 9, 16}) {
        const std::size_t n = std::size_t{1} << order;
        const Floats x = Random(5).vector<Kel32f>(n, 2);
        const std::vector<long double> exact = exactCcs(x);
        Spec spec = makeSpec(order, kelFftNoDiv);
        Floats expected(n + 2), y(n + 2);
        const auto transform = [&](Floats& to) { kelsFFTFwd_RToCCS_32f(x.data(), to.data(), spec.get(), nullptr); };
        transform(expected);
        const auto anew = [&] {
            spec = makeSpec(order, kelFftNoDiv);
            transform(y);
        };
        test::inEveryRoundingMode(anew, [&] {
            // Errors of one sign and up to two units add up over the passes.
            EXPECT_LE(errors(y, exact).rms, 2 * kUnit * order);
            transform(y);
            EXPECT_TRUE(test::sameBits(y, expected));
        });
    }
}

// ---- 16-bit form ---------------------------------------------------------------------------------------------------

Kel32s roundedAndSaturated(long double v, int scaleFactor) {
    const long double scaled = std::nearbyint(std::ldexp(v, -scaleFactor));
    return static_cast<Kel32s>(std::clamp(scaled, -2147483648.0L, 2147483647.0L));
}

TEST(Fft16s, IsTheFloatSpectrumScaledAndRoundedToNearest) {
    for (int order = 0; order <= 17; order += order < 12 ? 1 : 5) {
        const std::size_t n = std::size_t{1} << order, outputs = order == 0 ? 2 : n + 2;
        const Guarded<Kel16s> x(Random(static_cast<unsigned>(order) + 3).vector<Kel16s>(n));
        const Floats floats(x.data(), x.data() + n);
        for (const int flag : kFlags) {
            const auto spec = makeIntegerSpec(order, flag);
            int inner = -1;
            kelsFFTGetBufSize_R_32f(spec->inner, &inner);
            EXPECT_EQ(spec->bufferSize, 4 * static_cast<int>(n) + inner + 16);
            Guarded<Kel8u> work(static_cast<std::size_t>(spec->bufferSize) + 15);
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
                        ASSERT_EQ(y[i], roundedAndSaturated(spectrum[i], scaleFactor)) << order << ' ' << i;
                    }
                    EXPECT_EQ(unbuffered.vector(), y.vector());
                });
            }
        }
    }
}

// ---- statuses and memory -------------------------------------------------------------------------------------------

template <class S>
void checkInit(KelStatus (*init)(S**, int, int, int), KelStatus (*release)(S*)) {
    S* const untouched = reinterpret_cast<S*>(16);
    S* spec = untouched;
    EXPECT_EQ(init(nullptr, 31, 3, 0), -8);
    EXPECT_EQ(init(&spec, -1, 3, 0), -15);
    EXPECT_EQ(init(&spec, 31, 3, 0), -15);
    for (const int flag : {0, 3, 5, 16, -1}) {
        const test::AllocationWatch watch;
        EXPECT_EQ(init(&spec, 8, flag, 0), -16);
        EXPECT_EQ(watch.unreleased(), 0);
    }
    if (sizeof(void*) == 4) {
        EXPECT_EQ(init(&spec, 30, kelFftNoDiv, 0), -9);
    }
    for (const int order : {0, 8, 16}) {
        test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
            spec = untouched;
            const KelStatus status = init(&spec, order, n == 0 ? 3 : kelFftNoDiv, 0);
            if (watch.calls() <= n) {
                EXPECT_EQ(status, 0);
                EXPECT_EQ(release(spec), 0);
            } else {
                EXPECT_EQ(status, -9);
                EXPECT_EQ(spec, untouched);
            }
            EXPECT_EQ(watch.unreleased(), 0);
        });
    }
    EXPECT_EQ(release(nullptr), -8);
    Kel32s other[32] = {5};
    EXPECT_EQ(release(reinterpret_cast<S*>(other)), -17);
}

TEST(FftStatuses, Specifications) {
    checkInit(kelsFFTInitAlloc_R_32f, kelsFFTFree_R_32f);
    checkInit(kelsFFTInitAlloc_R_16s32s, kelsFFTFree_R_16s32s);
    KelFFTSpec_R_16s32s* none = nullptr;
    EXPECT_EQ(kelsFFTInitAlloc_R_16s32s(&none, 28, 3, 0), -9);

    Kel32s words[32] = {7};
    const auto* const wrong = reinterpret_cast<KelFFTSpec_R_32f*>(words);
    int size = 99;
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(wrong, nullptr), -8);
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(nullptr, &size), -8);
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(wrong, &size), -17);
    EXPECT_EQ(size, 99);
    EXPECT_EQ(kelsFFTGetBufSize_R_32f(makeSpec(3, kelFftNoDiv).get(), &size), 0);
    EXPECT_EQ(size, 0);
}

// What all four transforms check, and that neither a fault nor a lack of memory touches the destination.
template <class T, class D, class S, class Call>
void checkTransform(const S* spec, Call call) {
    Kel32s words[32] = {7};
    const S* const wrong = reinterpret_cast<S*>(words);
    const std::vector<T> x(512, T(1));
    std::vector<D> y(514, D(5));
    const std::vector<D> untouched = y;
    EXPECT_EQ(call(nullptr, y.data(), static_cast<const S*>(nullptr)), -8);
    EXPECT_EQ(call(x.data(), nullptr, wrong), -17);
    EXPECT_EQ(call(nullptr, y.data(), wrong), -17);
    EXPECT_EQ(call(nullptr, y.data(), spec), -8);
    EXPECT_EQ(call(x.data(), nullptr, spec), -8);
    test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
        const KelStatus status = call(x.data(), y.data(), spec);
        EXPECT_EQ(status, watch.calls() > n ? -9 : 0);
        EXPECT_EQ(y == untouched, status != 0);
        EXPECT_EQ(watch.unreleased(), 0);
    });
}

TEST(FftStatuses, Transforms) {
    const Spec spec = makeSpec(9, kelFftNoDiv);
    for (const Transform transform : {kelsFFTFwd_RToCCS_32f, kelsFFTFwd_RToPack_32f, kelsFFTInv_PackToR_32f}) {
        checkTransform<Kel32f, Kel32f>(spec.get(), [=](const Kel32f* x, Kel32f* y, const KelFFTSpec_R_32f* s) {
            return transform(x, y, s, nullptr);
        });
    }
    const auto integer = makeIntegerSpec(9, kelFftNoDiv);
    checkTransform<Kel16s, Kel32s>(integer.get(), [](const Kel16s* x, Kel32s* y, const KelFFTSpec_R_16s32s* s) {
        return kelsFFTFwd_RToCCS_16s32s_Sfs(x, y, s, 0, nullptr);
    });
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
        if (len % 2 == 0) {
            EXPECT_EQ(y[n - 1], a[n - 1] * b[n - 1]);
        }
        for (std::size_t i = 1; i + 1 < n; i += 2) {
            const Exact s(a[i], a[i + 1]), d(b[i], b[i + 1]), exact = d * std::conj(s);
            // Two products and a sum, each rounded once.
            const double re = std::fabs(a[i] * b[i]) + std::fabs(a[i + 1] * b[i + 1]);
            const double im = std::fabs(a[i] * b[i + 1]) + std::fabs(a[i + 1] * b[i]);
            EXPECT_LE(std::fabs(y[i] - exact.real()), 2.01 * kUnit * re);
            EXPECT_LE(std::fabs(y[i + 1] - exact.imag()), 2.01 * kUnit * im);
        }
        Guarded<Kel32f> square(b), copied(b);
        kelsMulPackConj_32f_I(square, square, len);
        kelsMulPackConj_32f_I(b.data(), copied, len);
        EXPECT_TRUE(test::sameBits(square, copied));
    }
    test::expectVectorChecks({-8, -6}, kelsMulPackConj_32f_I);
}

TEST(AutoCorr, DirectSumsAreRoundedOnceAndTransformsAreClose) {
    Random random;
    const std::size_t lengths[][2] = {{1, 1},      {5, 9},     {9, 5},       {400, 13},    {699, 2000},
                                      {1500, 699}, {700, 700}, {1024, 1500}, {1500, 1024}, {5000, 701}};
    for (const auto& [srcLen, dstLen] : lengths) {
        const Guarded<Kel32f> x(random.vector<Kel32f>(srcLen, 3));
        Guarded<Kel32f> y(Floats(dstLen, 5.0f));
        ASSERT_EQ(kelsAutoCorr_32f(x.data(), static_cast<int>(srcLen), y, static_cast<int>(dstLen)), 0);
        const std::size_t lags = std::min(srcLen, dstLen);
        std::vector<long double> exact(dstLen);
        long double energy = 0, norm = 0;
        for (std::size_t k = 0; k < srcLen; ++k) {
            long double sum = 0;
            for (std::size_t i = 0; i + k < srcLen; ++i) sum += static_cast<long double>(x[i]) * x[i + k];
            if (k < lags) exact[k] = sum;
            if (k == 0) energy = sum;
            norm += (k == 0 ? 1 : 2) * sum * sum;
        }
        // Forward error d of the spectrum: 2 d of the energy; then d of the norm of the whole result.
        const double d = kUnit * std::sqrt(1 + std::ceil(std::log2(srcLen)));
        const auto bound = static_cast<double>(2 * d * energy + d * std::sqrt(norm));
        for (std::size_t k = 0; k < dstLen; ++k) {
            if (k >= lags) {
                ASSERT_EQ(y[k], 0) << k;
            } else if (lags < 700) {
                const auto slack = static_cast<double>(energy * srcLen * 0x1p-62L / (std::fabs(exact[k]) * kUnit));
                ASSERT_LE(test::ulpError(y[k], exact[k]), 0.5 + slack) << srcLen << ' ' << k;
            } else {
                ASSERT_LE(std::fabs(y[k] - exact[k]), bound) << srcLen << ' ' << k;
            }
        }
    }
}

TEST(AutoCorr, StatusesAndMemory) {
    Floats x(800, 1.0f), y(900, 5.0f);
    test::expectChecks<test::Places{-1, 3, 1}>({-8, -6}, 1, kelsAutoCorr_32f);
    EXPECT_EQ(kelsAutoCorr_32f(x.data(), (1 << 29) + 1, y.data(), 700), -15);
    const Floats untouched = y;
    int failures = 0;
    test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
        const KelStatus status = kelsAutoCorr_32f(x.data(), 800, y.data(), 900);
        EXPECT_EQ(status, watch.calls() > n ? -9 : 0);
        EXPECT_EQ(y == untouched, status != 0);
        EXPECT_EQ(watch.unreleased(), 0);
        failures += status != 0;
    });
    EXPECT_EQ(failures, 5);  // specification, tables, spectrum, and a work buffer for each transform
}

}  // namespace
