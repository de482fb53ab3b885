#include <algorithm>
#include <complex>
#include <memory>
#include <numbers>

#include "core/fft_spec.h"
#include "kels.h"
#include "support/allocation.h"
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

// sum of x[n] e^(sign 2 pi i k n / N): by definition up to 64 points, above by halves.  roots[k * step] is
// e^(sign 2 pi i k / N).
std::vector<Exact> dft(const std::vector<Exact>& x, const std::vector<Exact>& roots, std::size_t step) {
    const std::size_t n = x.size();
    std::vector<Exact> y(n);
    if (n <= 64) {
        for (std::size_t k = 0; k < n; ++k) {
            for (std::size_t i = 0; i < n; ++i) y[k] += x[i] * roots[k * i % n * step];
        }
        return y;
    }
    std::vector<Exact> even, odd;
    for (std::size_t i = 0; i < n; i += 2) {
        even.push_back(x[i]);
        odd.push_back(x[i + 1]);
    }
    even = dft(even, roots, 2 * step);
    odd = dft(odd, roots, 2 * step);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const Exact t = odd[k] * roots[k * step];
        y[k] = even[k] + t;
        y[k + n / 2] = even[k] - t;
    }
    return y;
}
std::vector<Exact> dft(const std::vector<Exact>& x, int sign) {
    std::vector<Exact> roots;
    for (std::size_t k = 0; k < x.size(); ++k) {
        const long double angle = 2 * sign * std::numbers::pi_v<long double> * k / x.size();
        roots.emplace_back(std::cos(angle), std::sin(angle));
    }
    return dft(x, roots, 1);
}

std::vector<long double> exactCcs(const Floats& x) {
    const std::vector<Exact> y = dft({x.begin(), x.end()}, -1);
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
    for (std::size_t k = 1; 2 * k < n; ++k) {
        y[k] = Exact(pack[2 * k - 1], pack[2 * k]);
        y[n - k] = std::conj(y[k]);
    }
    std::vector<long double> x;
    for (const Exact& v : dft(y, 1)) x.push_back(v.real());
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

struct FreeSpec {
    void operator()(KelFFTSpec_R_32f* s) const { kelsFFTFree_R_32f(s); }
    void operator()(KelFFTSpec_R_16s32s* s) const { kelsFFTFree_R_16s32s(s); }
};
using Spec = std::unique_ptr<KelFFTSpec_R_32f, FreeSpec>;
using IntegerSpec = std::unique_ptr<KelFFTSpec_R_16s32s, FreeSpec>;

Spec makeSpec(int order, int flag) {
    KelFFTSpec_R_32f* spec = nullptr;
    EXPECT_EQ(kelsFFTInitAlloc_R_32f(&spec, order, flag, kelHintNone), 0);
    return Spec(spec);
}
IntegerSpec makeIntegerSpec(int order, int flag) {
    KelFFTSpec_R_16s32s* spec = nullptr;
    EXPECT_EQ(kelsFFTInitAlloc_R_16s32s(&spec, order, flag, kelHintNone), 0);
    return IntegerSpec(spec);
}

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

class Fft : public ::testing::TestWithParam<int> {
  protected:
    const int order = GetParam();
    const std::size_t n = std::size_t{1} << order;
    const long double size = static_cast<long double>(n);
    Random random{static_cast<unsigned>(order) + 1};
};

TEST_P(Fft, Forward) {
    const Floats x = random.vector<Kel32f>(n, 2);
    const std::vector<long double> exact = exactCcs(x);
    const Floats plain = run(kelsFFTFwd_RToCCS_32f, makeSpec(order, kelFftNoDiv), x, n + 2 - (n == 1));
    const Errors e = errors(plain, exact);
    EXPECT_TRUE(accurate(e, order));
    RecordProperty("rms", std::to_string(1e8 * e.rms));
    RecordProperty("max", std::to_string(1e8 * e.max));
    EXPECT_EQ(plain[1], 0);
    EXPECT_EQ(plain.back(), 0);

    for (const int flag : kFlags) {
        if (order > 16) break;
        const Spec spec = makeSpec(order, flag);
        const Floats ccs = run(kelsFFTFwd_RToCCS_32f, spec, x, plain.size());
        EXPECT_TRUE(test::sameBits(run(kelsFFTFwd_RToPack_32f, spec, x, n), packed(ccs)));
        if (flag == kelFftDivBySqrtN) {
            EXPECT_TRUE(accurate(errors(ccs, exact, 1 / std::sqrt(size)), order, 2));
            continue;
        }
        Floats expected = plain;  // powers of two commute with rounding
        for (auto& v : expected) v *= flag == kelFftDivFwdByN ? static_cast<Kel32f>(1 / size) : 1;
        EXPECT_EQ(ccs, expected) << "flag " << flag;
    }
}

TEST_P(Fft, Inverse) {
    const Floats spectrum = random.vector<Kel32f>(n, 2);
    const std::vector<long double> exact = exactInverse(spectrum);
    const Floats plain = run(kelsFFTInv_PackToR_32f, makeSpec(order, kelFftNoDiv), spectrum, n);
    EXPECT_TRUE(accurate(errors(plain, exact), order, 1));
    for (const int flag : kFlags) {
        if (order > 16) break;
        const Floats x = run(kelsFFTInv_PackToR_32f, makeSpec(order, flag), spectrum, n);
        if (flag == kelFftDivBySqrtN) {
            EXPECT_TRUE(accurate(errors(x, exact, 1 / std::sqrt(size)), order, 2));
            continue;
        }
        Floats expected = plain;
        for (auto& v : expected) v *= flag == kelFftDivInvByN ? static_cast<Kel32f>(1 / size) : 1;
        EXPECT_EQ(x, expected) << "flag " << flag;
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, Fft, ::testing::Range(0, 21));

TEST(FftProperties, ForwardThenInverseRestores) {
    for (int order = 0; order <= 12; ++order) {
        const std::size_t n = std::size_t{1} << order;
        const Floats x = Random(9).vector<Kel32f>(n, 2);
        for (const int flag : kFlags) {
            const Spec spec = makeSpec(order, flag);
            Floats y = x;
            kelsFFTFwd_RToPack_32f(y.data(), y.data(), spec.get(), nullptr);
            kelsFFTInv_PackToR_32f(y.data(), y.data(), spec.get(), nullptr);
            const long double factor = flag == kelFftNoDiv ? static_cast<long double>(n) : 1;
            EXPECT_TRUE(accurate(errors(y, {x.begin(), x.end()}, factor), 2 * order, 3)) << order << ' ' << flag;
        }
    }
}

TEST(FftProperties, SpectrumOfOneConstant) {
    const Floats ones(8, 1.0f);
    Floats y(10, 7.0f);
    kelsFFTFwd_RToCCS_32f(ones.data(), y.data(), makeSpec(3, kelFftNoDiv).get(), nullptr);
    EXPECT_EQ(y, (Floats{8, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    kelsFFTFwd_RToCCS_32f(ones.data(), y.data(), makeSpec(3, kelFftDivFwdByN).get(), nullptr);
    EXPECT_EQ(y, (Floats{1, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(FftProperties, RoundingModesSurviveAndTablesDoNotDependOnThem) {
    for (const int order : {3, 4, 6, 9, 16}) {
        const std::size_t n = std::size_t{1} << order;
        const Floats x = Random(5).vector<Kel32f>(n, 2);
        const std::vector<long double> exact = exactCcs(x);
        const Spec usual = makeSpec(order, kelFftNoDiv);
        Floats expected(n + 2), y(n + 2);
        kelsFFTFwd_RToCCS_32f(x.data(), expected.data(), usual.get(), nullptr);
        test::inEveryRoundingMode([&] {
            const Spec spec = makeSpec(order, kelFftNoDiv);
            kelsFFTFwd_RToCCS_32f(x.data(), y.data(), spec.get(), nullptr);
            const int mode = std::fegetround();
            std::fesetround(FE_TONEAREST);
            // Errors of one sign and up to two units add up over the passes.
            EXPECT_LE(errors(y, exact).rms, 2 * kUnit * order);
            kelsFFTFwd_RToCCS_32f(x.data(), y.data(), spec.get(), nullptr);
            EXPECT_TRUE(test::sameBits(y, expected));
            std::fesetround(mode);
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
        Random random(static_cast<unsigned>(order) + 3);
        const Guarded<Kel16s> x(random.vector<Kel16s>(n));
        for (const int flag : kFlags) {
            const IntegerSpec spec = makeIntegerSpec(order, flag);
            int inner = -1;
            kelsFFTGetBufSize_R_32f(spec->inner, &inner);
            EXPECT_EQ(spec->bufferSize, 4 * static_cast<int>(n) + inner + 16);
            Guarded<Kel8u> work(static_cast<std::size_t>(spec->bufferSize) + 15);
            for (const int scaleFactor : {0, 3, -9, 70}) {
                test::inEveryRoundingMode([&] {
                    Floats spectrum(outputs);
                    Guarded<Kel32s> y(outputs);
                    const Floats floats(x.data(), x.data() + n);
                    kelsFFTFwd_RToCCS_32f(floats.data(), spectrum.data(), spec->inner, nullptr);
                    EXPECT_EQ(kelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), y, spec.get(), scaleFactor, work), 0);
                    std::vector<Kel32s> unbuffered(outputs);
                    kelsFFTFwd_RToCCS_16s32s_Sfs(x.data(), unbuffered.data(), spec.get(), scaleFactor, nullptr);
                    const int mode = std::fegetround();
                    std::fesetround(FE_TONEAREST);
                    for (std::size_t i = 0; i < outputs; ++i) {
                        ASSERT_EQ(y[i], roundedAndSaturated(spectrum[i], scaleFactor)) << order << ' ' << i;
                    }
                    EXPECT_EQ(unbuffered, y.vector());
                    std::fesetround(mode);
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
    const IntegerSpec integer = makeIntegerSpec(9, kelFftNoDiv);
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
    Kel32f v = 1;
    EXPECT_EQ(kelsMulPackConj_32f_I(nullptr, &v, 0), -8);
    EXPECT_EQ(kelsMulPackConj_32f_I(&v, nullptr, 0), -8);
    EXPECT_EQ(kelsMulPackConj_32f_I(&v, &v, 0), -6);
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
    EXPECT_EQ(kelsAutoCorr_32f(nullptr, 0, y.data(), 1), -8);
    EXPECT_EQ(kelsAutoCorr_32f(x.data(), 0, nullptr, 1), -8);
    EXPECT_EQ(kelsAutoCorr_32f(x.data(), 0, y.data(), 1), -6);
    EXPECT_EQ(kelsAutoCorr_32f(x.data(), 1, y.data(), 0), -6);
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
