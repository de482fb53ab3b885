#include "kels/fbank.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <string>

#include "kels/core.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using Real = long double;

// The two allocated forms behind one set of names.
template <class B>
struct Form {
    using Bank = B;
    static constexpr bool kFixed = std::is_same_v<B, KelFilterBank_16s>;
    static constexpr Real unit = kFixed ? 1.0L / 16384 : 0;  // the step of the stored weights

#define FORM(name, function) \
    static constexpr auto name = std::get<kFixed>(std::tuple(&kels##function##_32f, &kels##function##_16s))
    FORM(mel, MelFBankInitAlloc);
    FORM(melLin, MelLinFBankInitAlloc);
    FORM(empty, EmptyFBankInitAlloc);
    FORM(auroraLow, MelFBankInitAllocLow_Aurora);
    FORM(auroraHigh, MelFBankInitAllocHigh_Aurora);
    FORM(getCenters, FBankGetCenters);
    FORM(setCenters, FBankSetCenters);
    FORM(getCoeffs, FBankGetCoeffs);
    FORM(setCoeffs, FBankSetCoeffs);
    FORM(release, FBankFree);

    static KelStatus eval(Bank* bank) {
        if constexpr (kFixed) {
            Kel16s src[600] = {}, dst[40];
            return kelsEvalFBank_16s_Sfs(src, dst, bank, 0);
        } else {
            Kel32f src[600] = {}, dst[40];
            return kelsEvalFBank_32f(src, dst, bank);
        }
    }
};
using Float = Form<KelFilterBank_32f>;
using Q14 = Form<KelFilterBank_16s>;

// Owns a bank, the block that Free leaves included.
template <class F>
struct Held {
    typename F::Bank* bank = nullptr;
    int order = -1;
    int nFilter = 0;

    Held() = default;
    Held(Held&& other) : bank(std::exchange(other.bank, nullptr)), order(other.order), nFilter(other.nFilter) {}
    ~Held() {
        if (bank == nullptr) return;
        EXPECT_EQ(F::release(bank), kelStatusOk);
        kelsFree(bank);
    }
    std::vector<int> centers() const {
        test::Guarded<int> c(static_cast<std::size_t>(nFilter) + 2);
        EXPECT_EQ(F::getCenters(bank, c), kelStatusOk);
        return c.vector();
    }
    // Of filter m from 0: the weights of bins centres[m] .. centres[m + 2], nothing behind them.
    std::vector<Kel32f> weights(int m) const {
        const auto c = centers();
        const int last = m < nFilter ? m + 2 : m + 1;
        test::Guarded<Kel32f> w(static_cast<std::size_t>(c[last] - c[m] + 1));
        EXPECT_EQ(F::getCoeffs(bank, m + 1, w), kelStatusOk);
        return w.vector();
    }
};

struct Shape {
    int fftLen;
    float sampFreq, low, high;
    int nFilter;
    float highLin;
    int nLin;  // 0: all mel
    float melMul, melDiv;
};
const Shape kShapes[] = {{512, 16000, 64, 8000, 26, 0, 0, 1127, 700},   {400, 11025, 100.5f, 4800, 23, 0, 0, 1127, 700},
                         {128, 8000, 10, 4000, 60, 0, 0, 2595, 700},    {3, 8000, 1, 4000, 2, 0, 0, 1127, 700},
                         {8192, 48000, 20, 23999, 5, 0, 0, 900, 1500},  {512, 16000, 60, 7000, 26, 1000, 10, 1127, 700},
                         {256, 8000, 50, 4000, 20, 3900, 20, 1127, 700}};

template <class F>
Held<F> build(const Shape& s, int flag) {
    Held<F> held;
    held.nFilter = s.nFilter;
    const KelStatus status = s.nLin == 0 ? F::mel(&held.bank, &held.order, s.fftLen, s.sampFreq, s.low, s.high,
                                                  s.nFilter, s.melMul, s.melDiv, flag)
                                         : F::melLin(&held.bank, &held.order, s.fftLen, s.sampFreq, s.low, s.high,
                                                     s.nFilter, s.highLin, s.nLin, s.melMul, s.melDiv, flag);
    EXPECT_EQ(status, kelStatusOk);
    return held;
}

// Corner k in Hz, and the corners that are spaced linearly.
struct Reference {
    const Shape& s;
    Real mel(Real f) const { return s.melMul * std::log(1 + f / s.melDiv); }
    bool linear(int k) const { return s.nLin > 0 && (s.nLin == s.nFilter || k <= s.nLin); }
    Real hertz(int k) const {
        if (linear(k)) {
            const int parts = s.nLin == s.nFilter ? s.nFilter + 1 : s.nLin;
            return s.low + k * (static_cast<Real>(s.highLin) - s.low) / parts;
        }
        const Real from = mel(s.nLin > 0 ? s.highLin : s.low);
        const Real m = from + (k - s.nLin) * (mel(s.high) - from) / (s.nFilter - s.nLin + 1);
        return s.melDiv * (std::exp(m / s.melMul) - 1);
    }
};

template <class F>
class Bank : public ::testing::Test {};
using Forms = ::testing::Types<Float, Q14>;
TYPED_TEST_SUITE(Bank, Forms);

// Single precision loses a few units in the last place of mel, which the exponential multiplies by at most its
// argument.
TYPED_TEST(Bank, CornersAndWeightsFollowTheFormulas) {
    const Real eps = std::ldexp(1.0L, -24);
    for (const Shape& s : kShapes) {
        const Reference ref{s};
        for (const int flag : {kelFBankWeightMel, kelFBankWeightBin}) {
            SCOPED_TRACE(std::to_string(s.fftLen) + " flag " + std::to_string(flag));
            const auto held = build<TypeParam>(s, flag);
            const int fftLen2 = 1 << held.order;
            EXPECT_GE(fftLen2, s.fftLen);
            EXPECT_TRUE(held.order == 1 || fftLen2 / 2 < s.fftLen);
            const auto c = held.centers();
            const Real binScale = fftLen2 / static_cast<Real>(s.sampFreq);
            for (int k = 0; k < s.nFilter + 2; ++k) {
                const Real hertz = ref.hertz(k);
                const Real tolerance = 16 * eps * (hertz + s.melDiv) * binScale;
                const Real above = hertz * binScale - c[k];
                EXPECT_GE(above, (flag == kelFBankWeightBin ? -0.5L : 0) - tolerance) << k;
                EXPECT_LE(above, (flag == kelFBankWeightBin ? 0.5L : 1) + tolerance) << k;
            }
            for (int m = 0; m < s.nFilter; ++m) {
                const auto w = held.weights(m);
                const Real mel[] = {ref.mel(ref.hertz(m)), ref.mel(ref.hertz(m + 1)), ref.mel(ref.hertz(m + 2))};
                for (int i = c[m]; i <= c[m + 2]; ++i) {
                    const bool up = i <= c[m + 1];
                    const Real got = w[static_cast<std::size_t>(i - c[m])];
                    if (flag == kelFBankWeightBin || ref.linear(m + 1)) {
                        Real exact = up ? (i - c[m] + 1) / static_cast<Real>(c[m + 1] - c[m] + 1)
                                        : (c[m + 2] + 1 - i) / static_cast<Real>(c[m + 2] - c[m + 1] + 1);
                        if (TypeParam::unit > 0) exact = std::floor(exact / TypeParam::unit) * TypeParam::unit;
                        EXPECT_EQ(got, static_cast<Kel32f>(exact)) << m << " " << i;
                    } else if (i == c[m]) {
                        EXPECT_EQ(got, 0);
                    } else {
                        const Real at = ref.mel(i / binScale);
                        const Real span = up ? mel[1] - mel[0] : mel[2] - mel[1];
                        const Real exact = (up ? at - mel[0] : mel[2] - at) / span;
                        const Real tolerance = 16 * eps * ref.mel(s.high) / span + TypeParam::unit / 2;
                        EXPECT_LE(std::fabs(got - exact), tolerance) << m << " " << i;
                    }
                }
            }
            for (const Kel32f spare : held.weights(s.nFilter)) EXPECT_EQ(spare, 0);
        }
    }
}

// Q14 weights are the float ones, truncated for one flag and rounded for the other, whatever mode the caller runs in.
TEST(FBank, RoundsAlikeInEveryMode) {
    for (const Shape& s : kShapes) {
        const auto mels = build<Float>(s, kelFBankWeightMel);
        const auto bins = build<Float>(s, kelFBankWeightBin);
        test::inEveryRoundingMode([&] {
            const int mode = std::fegetround();
            const auto mels16 = build<Q14>(s, kelFBankWeightMel);
            const auto mels32 = build<Float>(s, kelFBankWeightMel);
            const auto bins32 = build<Float>(s, kelFBankWeightBin);
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(mels32.centers(), mels.centers());
            EXPECT_EQ(mels16.centers(), mels.centers());
            EXPECT_EQ(bins32.centers(), bins.centers());
            for (int m = s.nLin; m < s.nFilter; ++m) {
                const auto expected = mels.weights(m);
                const auto got = mels16.weights(m);
                EXPECT_TRUE(test::sameBits(mels32.weights(m), expected));
                EXPECT_TRUE(test::sameBits(bins32.weights(m), bins.weights(m)));
                for (std::size_t i = 0; i < got.size(); ++i)
                    EXPECT_EQ(got[i] * 16384, std::nearbyint(expected[i] * 16384));
            }
            std::fesetround(mode);
        });
    }
}

TYPED_TEST(Bank, CoincidingCorners) {
    Held<TypeParam> held;
    held.nFilter = 3;
    ASSERT_EQ(TypeParam::mel(&held.bank, &held.order, 256, 8000, 1000, 1000, 3, 1127, 700, 2), kelStatusOk);
    EXPECT_EQ(held.centers(), std::vector<int>(5, 32));
    for (int m = 0; m < 3; ++m) EXPECT_EQ(held.weights(m), std::vector<Kel32f>(1, 1));
    for (const auto& [len, order] : {std::pair{1, 1}, {2, 1}, {3, 2}, {256, 8}, {257, 9}}) {
        Held<TypeParam> sized;
        ASSERT_EQ(TypeParam::empty(&sized.bank, &sized.order, len, 1, 0), kelStatusOk);
        EXPECT_EQ(sized.order, order);
    }
}

// Parameters without sense must not put a corner outside the spectrum or out of order.
TYPED_TEST(Bank, CornersStayInsideTheSpectrum) {
    for (const float melDiv : {700.0f, -700.0f, 0.0f, NAN, INFINITY, 1e-30f, 1e30f}) {
        for (const float melMul : {1127.0f, -3.0f, 0.0f, NAN, 1e38f}) {
            for (const int flag : {1, 2}) {
                Held<TypeParam> held;
                held.nFilter = 9;
                ASSERT_EQ(TypeParam::mel(&held.bank, &held.order, 64, 8000, 50, 4000, 9, melMul, melDiv, flag), 0);
                held.centers();  // checks them
                EXPECT_EQ(TypeParam::eval(held.bank), kelStatusOk);
            }
        }
    }
}

// ---- evaluation ----

// A bank with random centres, narrow, wide and coinciding, and random weights k * 2^-14 of up to +-`limit`.
template <class F>
struct RandomBank : Held<F> {
    std::vector<int> c;
    std::vector<std::vector<Kel32f>> w;

    RandomBank(test::Random& random, int fftLen, int filters, int limit) {
        this->nFilter = filters;
        EXPECT_EQ(F::empty(&this->bank, &this->order, fftLen, filters, 0), kelStatusOk);
        EXPECT_EQ(F::eval(this->bank), kelStatusFBankState);
        for (int k = 0; k < filters + 2; ++k) c.push_back(random.between(0, fftLen / 2));
        std::sort(c.begin(), c.end());
        if (random.between(0, 3) == 0) c[1] = c[0] = 0, c.back() = fftLen / 2;
        EXPECT_EQ(F::setCenters(this->bank, c.data()), kelStatusOk);
        for (int m = 0; m < filters; ++m) {
            w.emplace_back(static_cast<std::size_t>(c[m + 2] - c[m] + 1));
            for (auto& v : w.back()) v = static_cast<float>(random.between(-limit, limit)) / 16384;
            const test::Guarded<Kel32f> given(w.back());
            EXPECT_EQ(F::setCoeffs(this->bank, m + 1, given.data()), kelStatusOk);
            EXPECT_EQ(this->weights(m), w.back());
        }
    }
};

TEST(FBank, FloatSums) {
    test::Random random;
    for (int round = 0; round < 60; ++round) {
        const RandomBank<Float> bank(random, 4 << random.between(0, 7), random.between(1, 40), 1 << 20);
        const auto bins = static_cast<std::size_t>(bank.c.back()) + 1;  // none behind the last centre is read
        for (const auto edge : {test::Edge::Begin, test::Edge::End}) {
            const test::Guarded<Kel32f> s(random.vector<Kel32f>(bins), edge);
            test::Guarded<Kel32f> dst(static_cast<std::size_t>(bank.nFilter), edge);
            ASSERT_EQ(kelsEvalFBank_32f(s.data(), dst, bank.bank), kelStatusOk);
            for (std::size_t m = 0; m < dst.size(); ++m) {
                Real exact = 0, size = 0;
                for (std::size_t i = 0; i < bank.w[m].size(); ++i) {
                    const Real term = static_cast<Real>(bank.w[m][i]) * s[static_cast<std::size_t>(bank.c[m]) + i];
                    exact += term;
                    size += std::fabs(term);
                }
                const Real bound = static_cast<Real>(bank.w[m].size() + 2) * std::ldexp(size, -24);
                EXPECT_LE(std::fabs(dst[m] - exact), bound) << m;
            }
        }
    }
}

// The whole number `v` times 2^-shift, toward minus infinity, held to T.
template <class T>
T scaled(int64_t v, int64_t shift) {
    const Real exact =
        std::floor(std::ldexp(static_cast<Real>(v), static_cast<int>(std::clamp<int64_t>(-shift, -200, 200))));
    return static_cast<T>(std::clamp<Real>(exact, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

TEST(FBank, IntegerSumsShiftAndSaturate) {
    test::Random random;
    for (int round = 0; round < 40; ++round) {
        const int limit = 1 << random.between(8, 24);
        const RandomBank<Q14> bank(random, 4 << random.between(0, 7), random.between(1, 30), limit);
        const test::Guarded<Kel16s> s(random.vector<Kel16s>(static_cast<std::size_t>(bank.c.back()) + 1));
        const auto n = static_cast<std::size_t>(bank.nFilter);
        for (const int scaleFactor : {INT_MIN, -70, -33, -14, -13, -6, 0, 1, 3, 11, 18, 34, 49, 50, 90, INT_MAX}) {
            test::Guarded<Kel16s> dst16(n);
            test::Guarded<Kel32s> dst32(n);
            ASSERT_EQ(kelsEvalFBank_16s_Sfs(s.data(), dst16, bank.bank, scaleFactor), kelStatusOk);
            ASSERT_EQ(kelsEvalFBank_16s32s_Sfs(s.data(), dst32, bank.bank, scaleFactor), kelStatusOk);
            for (std::size_t m = 0; m < n; ++m) {
                int64_t sum = 0;
                for (std::size_t i = 0; i < bank.w[m].size(); ++i) {
                    sum += static_cast<int64_t>(bank.w[m][i] * 16384) * s[static_cast<std::size_t>(bank.c[m]) + i];
                }
                const int64_t shift = int64_t{14} + scaleFactor;
                EXPECT_EQ(dst16[m], scaled<Kel16s>(sum, shift)) << scaleFactor;
                EXPECT_EQ(dst32[m], scaled<Kel32s>(sum, shift)) << scaleFactor;
            }
        }
    }
}

// Magnitudes of bins 0 .. N/2 of the samples' transform.
template <class T>
std::vector<Real> magnitudes(const T* samples, int n) {
    std::vector<Real> cosines, sines, result;
    for (int i = 0; i < n; ++i) {
        cosines.push_back(std::cos(2 * std::acos(-1.0L) * i / n));
        sines.push_back(std::sin(2 * std::acos(-1.0L) * i / n));
    }
    for (int k = 0; k <= n / 2; ++k) {
        Real re = 0, im = 0;
        for (int i = 0; i < n; ++i) {
            re += samples[i] * cosines[static_cast<std::size_t>(k * i % n)];
            im += samples[i] * sines[static_cast<std::size_t>(k * i % n)];
        }
        result.push_back(std::hypot(re, im));
    }
    return result;
}

TEST(FBank, TransformsSamplesItself) {
    test::Random random;
    for (const Shape& s : kShapes) {
        if (s.fftLen > 512) continue;
        for (const int flag : {kelFBankWeightMel, kelFBankWeightBin}) {
            const auto bank32 = build<Float>(s, flag | kelFBankOwnFFT);
            const auto bank16 = build<Q14>(s, flag | kelFBankOwnFFT);
            const int n = 1 << bank32.order;
            const auto samples16 = random.vector<Kel16s>(static_cast<std::size_t>(n));
            const test::Guarded<Kel16s> src16(samples16);
            const test::Guarded<Kel32f> src32(std::vector<Kel32f>(samples16.begin(), samples16.end()));
            const auto S = magnitudes(src16.data(), n);
            // An FFT errs by about a unit a stage relative to the root of the energy; 16-bit: besides, by halves of 1/8
            // in both parts and of 1/64 in the magnitude.
            Real energy = 0;
            for (const Kel16s x : samples16) energy += static_cast<Real>(x) * x;
            const Real float32 = (bank32.order + 2) * std::ldexp(std::sqrt(energy * n), -23);
            test::Guarded<Kel32f> dst32(static_cast<std::size_t>(s.nFilter));
            test::Guarded<Kel16s> dst16(static_cast<std::size_t>(s.nFilter));
            test::Guarded<Kel32s> dst16to32(static_cast<std::size_t>(s.nFilter));
            const test::AllocationWatch watch;
            ASSERT_EQ(kelsEvalFBank_32f(src32.data(), dst32, bank32.bank), kelStatusOk);
            ASSERT_EQ(kelsEvalFBank_16s_Sfs(src16.data(), dst16, bank16.bank, 12), kelStatusOk);
            ASSERT_EQ(kelsEvalFBank_16s32s_Sfs(src16.data(), dst16to32, bank16.bank, 0), kelStatusOk);
            EXPECT_EQ(watch.calls(), 0);
            const auto c = bank32.centers();
            for (int m = 0; m < s.nFilter; ++m) {
                const auto w = bank32.weights(m);
                Real exact = 0, weight = 0, all = 0;
                for (std::size_t i = 0; i < w.size(); ++i) {
                    const Real bin = S[static_cast<std::size_t>(c[m]) + i];
                    exact += w[i] * bin;
                    weight += std::fabs(w[i]);
                    all += bin;
                }
                const auto at = static_cast<std::size_t>(m);
                EXPECT_LE(std::fabs(dst32[at] - exact), weight * float32 + all * std::ldexp(1.0L, -22)) << m;
                const Real bound = weight * (float32 + 0.1L) + all * Q14::unit;
                EXPECT_LE(std::fabs(dst16to32[at] - exact), bound + 1) << m;
                const Real narrow = std::clamp<Real>(exact / 4096, -32768, 32767);
                EXPECT_LE(std::fabs(dst16[at] - narrow), bound / 4096 + 1) << m;
            }
        }
    }
}

// ---- statuses and memory ----

TYPED_TEST(Bank, ConstructorStatusesInOrder) {
    using F = TypeParam;
    struct Row {
        int fftLen;
        float sampFreq, low, high;
        int nFilter, flag;
        KelStatus status;
    };
    const float nan = NAN;
    const Row mel[] = {{0, 0, 0, 9, 0, 9, -6},           {1, 0, 2, 1, 1, 0, -6},
                       {512, 8000, 100, 50, 0, 0, -6},   {512, 0, 100, 50, 20, 0, -6},
                       {512, nan, 100, 50, 20, 0, -6},   {512, 8000, 0, 50, 20, 0, -6},
                       {512, 8000, nan, 9, 20, 0, -6},   {512, 8000, 100, 99, 20, 0, -71},
                       {512, 8000, 9, nan, 20, 0, -71},  {512, 8000, 100, 4000.5f, 20, 0, -71},
                       {512, 8000, 9, 4000, 20, 0, -70}, {512, 8000, 9, 4000, 20, 3, -70},
                       {512, 8000, 9, 4000, 20, 4, -70}, {512, 8000, 9, 4000, 20, 9, -70},
                       {512, 8000, 9, 4000, 20, -2, -70}};
    for (const Row& r : mel) {
        auto* const before = reinterpret_cast<typename F::Bank*>(const_cast<Row*>(&r));
        auto* bank = before;
        int order = 77;
        EXPECT_EQ(F::mel(&bank, &order, r.fftLen, r.sampFreq, r.low, r.high, r.nFilter, 1127, 700, r.flag), r.status);
        EXPECT_EQ(bank, before);
        EXPECT_EQ(order, 77);
        const float middle = (r.low + r.high) / 2;
        EXPECT_EQ(
            F::melLin(&bank, &order, r.fftLen, r.sampFreq, r.low, r.high, r.nFilter, middle, 1, 1127, 700, r.flag),
            r.status);
        EXPECT_EQ(bank, before);
        EXPECT_EQ(order, 77);
    }
    typename F::Bank* bank = nullptr;
    int order = 77;
    const auto lin = [&](float low, float highLin, float high, int nLin, int flag) {
        return F::melLin(&bank, &order, 512, 8000, low, high, 20, highLin, nLin, 1127, 700, flag);
    };
    EXPECT_EQ(lin(100, 99, 98, 0, 0), -6);
    EXPECT_EQ(lin(100, 99, 98, 21, 0), -6);
    EXPECT_EQ(lin(100, 99, 200, 20, 0), -71);
    EXPECT_EQ(lin(100, 201, 200, 20, 0), -71);
    EXPECT_EQ(lin(100, nan, 200, 20, 0), -71);
    EXPECT_EQ(lin(100, 200, 200, 20, 0), -70);
    EXPECT_EQ(F::empty(&bank, &order, 0, 1, 0), -6);
    EXPECT_EQ(F::empty(&bank, &order, 1, 0, 0), -6);
    EXPECT_EQ(order, 77);
    for (const auto& [len, filters] : {std::pair{(1 << 30) + 1, 1}, {INT_MAX, INT_MAX}, {1, INT_MAX}}) {
        EXPECT_EQ(F::empty(&bank, &order, len, filters, 0), -9);
        EXPECT_EQ(bank, nullptr);
    }
    EXPECT_EQ(F::empty(&bank, &order, 1 << 30, 20, 0), -9);
    EXPECT_EQ(F::release(bank), kelStatusOk);
    kelsFree(bank);
}

TYPED_TEST(Bank, EveryFailedAllocationLeavesWhatFreeTakes) {
    using F = TypeParam;
    using Make = std::function<KelStatus(typename F::Bank**)>;
    int order;
    int centers[40];
    Kel32f coeffs[600];
    const Make makes[] = {
        [&](auto** pp) { return F::mel(pp, &order, 512, 16000, 60, 8000, 26, 1127, 700, 1 + 4); },
        [&](auto** pp) { return F::melLin(pp, &order, 512, 16000, 60, 8000, 26, 500, 5, 1127, 700, 2); },
        [&](auto** pp) { return F::empty(pp, &order, 512, 26, 4); }, [&](auto** pp) { return F::auroraLow(pp); },
        [&](auto** pp) { return F::auroraHigh(pp); }};
    for (const Make& make : makes) {
        test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
            auto* bank = reinterpret_cast<typename F::Bank*>(&order);
            const KelStatus status = make(&bank);
            EXPECT_EQ(status, watch.calls() > n ? kelStatusNoMemory : kelStatusOk);
            if (bank == nullptr) {
                EXPECT_EQ(n, 0);
                EXPECT_EQ(watch.unreleased(), 0);
                return;
            }
            for (int twice = 0; twice < 2; ++twice) {
                EXPECT_EQ(F::release(bank), kelStatusOk);
                EXPECT_EQ(watch.unreleased(), 1);
            }
            EXPECT_EQ(F::eval(bank), kelStatusNullPtr);
            EXPECT_EQ(F::getCenters(bank, centers), kelStatusNullPtr);
            EXPECT_EQ(F::setCenters(bank, centers), kelStatusNullPtr);
            EXPECT_EQ(F::getCoeffs(bank, 1, coeffs), kelStatusNullPtr);
            EXPECT_EQ(F::setCoeffs(bank, 1, coeffs), kelStatusNullPtr);
            kelsFree(bank);
            EXPECT_EQ(watch.unreleased(), 0);
        });
    }
}

TYPED_TEST(Bank, AccessorStatuses) {
    using F = TypeParam;
    Held<F> held;
    held.nFilter = 3;
    ASSERT_EQ(F::empty(&held.bank, &held.order, 16, 3, 0), kelStatusOk);
    int out[5] = {77, 77, 77, 77, 77};
    Kel32f coeffs[20];
    std::fill_n(coeffs, 20, 77.0f);
    test::expectNullChecks(F::getCenters, F::setCenters, F::getCoeffs, F::setCoeffs, F::release, F::auroraLow,
                           F::auroraHigh);
    EXPECT_EQ(F::getCenters(held.bank, nullptr), -8);
    EXPECT_EQ(F::getCoeffs(held.bank, 99, nullptr), -8);
    EXPECT_EQ(F::setCoeffs(held.bank, 99, nullptr), -8);
    EXPECT_EQ(F::eval(held.bank), -69);
    EXPECT_EQ(F::getCenters(held.bank, out), -69);
    EXPECT_EQ(F::getCoeffs(held.bank, 99, coeffs), -69);
    EXPECT_EQ(F::setCoeffs(held.bank, 99, coeffs), -69);
    for (const auto& bad : {std::array{-1, 2, 3, 4, 5},
                            {2, 1, 3, 4, 5},
                            {0, 3, 2, 4, 5},
                            {0, 1, 5, 4, 5},
                            {0, 1, 2, 6, 5},
                            {0, 1, 2, 3, 9},
                            {8, 8, 8, 8, 7}}) {
        EXPECT_EQ(F::setCenters(held.bank, bad.data()), -69);
        EXPECT_EQ(F::eval(held.bank), -69);
    }
    const std::vector<int> good{0, 0, 3, 8, 8};
    EXPECT_EQ(F::setCenters(held.bank, good.data()), kelStatusOk);
    EXPECT_EQ(held.centers(), good);
    EXPECT_EQ(F::eval(held.bank), kelStatusOk);
    for (const int fIdx : {INT_MIN, -1, 0, 5, INT_MAX}) EXPECT_EQ(F::getCoeffs(held.bank, fIdx, coeffs), -6) << fIdx;
    for (const int fIdx : {INT_MIN, 0, 4, INT_MAX}) EXPECT_EQ(F::setCoeffs(held.bank, fIdx, coeffs), -6) << fIdx;
    EXPECT_EQ(std::count(coeffs, coeffs + 20, 77.0f), 20);
    EXPECT_EQ(std::count(out, out + 5, 77), 5);
    EXPECT_EQ(F::getCoeffs(held.bank, 4, coeffs), kelStatusOk);  // the spare filter: bins 8 .. 8
    EXPECT_EQ(coeffs[0], 0);
    EXPECT_EQ(coeffs[1], 77);
    // A rising side over all bins.
    const std::vector<int> wide{0, 8, 8, 8, 8};
    EXPECT_EQ(F::setCenters(held.bank, wide.data()), kelStatusOk);
    std::vector<Kel32f> all(9);
    std::iota(all.begin(), all.end(), 1.0f);
    EXPECT_EQ(F::setCoeffs(held.bank, 1, all.data()), kelStatusOk);
    EXPECT_EQ(held.weights(0), all);
    EXPECT_EQ(held.weights(1), std::vector<Kel32f>(1, 0));
}

TEST(FBank, Q14CoefficientsRoundAndSaturate) {
    Held<Q14> held;
    ASSERT_EQ(kelsEmptyFBankInitAlloc_16s(&held.bank, &held.order, 16, 1, 0), kelStatusOk);
    held.nFilter = 1;
    const int centers[] = {1, 4, 7};
    ASSERT_EQ(kelsFBankSetCenters_16s(held.bank, centers), kelStatusOk);
    const std::vector<Kel32f> given{0.5f / 16384, 1.5f / 16384, -2.5f / 16384, 1e9f, -INFINITY, NAN, 131071.99f};
    test::inEveryRoundingMode([&] { EXPECT_EQ(kelsFBankSetCoeffs_16s(held.bank, 1, given.data()), kelStatusOk); });
    EXPECT_EQ(held.weights(0),
              (std::vector<Kel32f>{0, 2.0f / 16384, -2.0f / 16384, 131072, -131072, -131072, 131071.99f}));
}

// ---- Aurora ----

TYPED_TEST(Bank, AuroraBanks) {
    const std::vector<int> low{0,  0,  1,  2,  3,  4,  5,  7,  8,  10, 12, 14, 16, 18,
                               20, 23, 26, 29, 32, 36, 39, 44, 48, 53, 58, 64, 64};
    for (const auto& centers : {low, std::vector<int>{0, 13, 27, 44, 64}}) {
        Held<TypeParam> held;
        held.nFilter = static_cast<int>(centers.size()) - 2;
        ASSERT_EQ((centers.size() == 5 ? TypeParam::auroraHigh : TypeParam::auroraLow)(&held.bank), kelStatusOk);
        EXPECT_EQ(held.centers(), centers);
        for (int m = 0; m < held.nFilter; ++m) {
            const int lo = centers[m], top = centers[m + 1], hi = centers[m + 2];
            const auto triangle = [&](int i) {
                if (i == top) return 1.0L;
                return i < top ? (i - lo) / static_cast<Real>(top - lo) : (hi - i) / static_cast<Real>(hi - top);
            };
            Real sum = 0;
            for (int i = lo; i <= hi; ++i) sum += triangle(i);
            const auto w = held.weights(m);
            for (int i = lo; i <= hi; ++i) {
                const Real tolerance = TypeParam::unit * 0.501L + std::ldexp(1.0L, -22);
                EXPECT_LE(std::fabs(w[static_cast<std::size_t>(i - lo)] - triangle(i) / sum), tolerance)
                    << m << " " << i;
            }
        }
    }
}

// ---- the fixed-point bank ----

struct FixedShape {
    int fftLen, sampFreq, low, high, nFilter;
    double melMul, melDiv;
};
const FixedShape kFixed[] = {{512, 16000, 64, 8000, 26, 1127, 700},
                             {32, 8000, 0, 4000, 17, 1127, 700},
                             {1000, 48000, 1, 24000, 40, 2595, 700},
                             {256, 8000, 300, 24000, 12, 32767, 8191},
                             {8192, 44100, 20, 20000, 3, 17, 17}};

int inQ15(double v) {
    return static_cast<int>(std::lround(v * 32768));
}

// Impulses of 2^30 read the weights of a bank out exactly.
std::vector<std::vector<int>> weightMatrix(KelFilterBank_32s* bank, int bins, int nFilter) {
    std::vector<std::vector<int>> w(static_cast<std::size_t>(nFilter),
                                    std::vector<int>(static_cast<std::size_t>(bins)));
    std::vector<Kel32s> s(static_cast<std::size_t>(bins)), dst(static_cast<std::size_t>(nFilter));
    for (std::size_t i = 0; i < s.size(); ++i) {
        s[i] = 1 << 30;
        EXPECT_EQ(kelsEvalFBank_32s_Sfs(s.data(), dst.data(), bank, 0), kelStatusOk);
        s[i] = 0;
        for (std::size_t m = 0; m < dst.size(); ++m) w[m][i] = dst[m];
    }
    return w;
}

TEST(FixedBank, WeightsFollowTheFormulasAtEveryAlignment) {
    for (const FixedShape& s : kFixed) {
        int size = 0;
        // The construction takes one filter more than the size query: the size grows as the formula says.
        const int extra = s.nFilter == 17 ? 1 : 0;
        ASSERT_EQ(kelsMelFBankGetSize_32s(s.fftLen, s.nFilter - extra, 2, &size), kelStatusOk);
        size += extra * (4 + 18 * 2 + 2 * 2 * (16 + 9) + 2 * 2 * 16);
        for (const int offset : {0, 1, 4, 8, 16, 31}) {
            std::vector<Kel8u> memory(static_cast<std::size_t>(size) + 96, 0xA5);
            const auto misaligned = reinterpret_cast<uintptr_t>(memory.data()) % 32;
            Kel8u* const buffer = memory.data() + 32 + (32 - misaligned) % 32 + offset;
            int order = 0;
            ASSERT_EQ(kelsMelFBankInit_32s(buffer, &order, s.fftLen, s.sampFreq, s.low, s.high, s.nFilter,
                                           inQ15(s.melMul), inQ15(s.melDiv), 2),
                      kelStatusOk);
            for (Kel8u* p = memory.data(); p < buffer; ++p) ASSERT_EQ(*p, 0xA5);
            for (Kel8u* p = buffer + size; p < memory.data() + memory.size(); ++p) ASSERT_EQ(*p, 0xA5);
            if (offset > 1 && s.fftLen > 512) continue;

            const int bins = (1 << order) / 2 + 1;
            auto* const bank = reinterpret_cast<KelFilterBank_32s*>(buffer);
            const auto w = weightMatrix(bank, bins, s.nFilter);
            std::vector<std::ptrdiff_t> c;
            const auto isSet = [](int v) { return v != 0; };
            c.push_back(std::find_if(w[0].begin(), w[0].end(), isSet) - w[0].begin());
            for (const auto& row : w) c.push_back(std::find(row.begin(), row.end(), 1 << 30) - row.begin());
            c.push_back(bins - 1 - (std::find_if(w.back().rbegin(), w.back().rend(), isSet) - w.back().rbegin()));
            const auto mel = [&](Real f) { return std::log(1 + f / s.melDiv); };
            for (std::size_t k = 0; k < c.size(); ++k) {
                const Real m = mel(s.low) + static_cast<Real>(k) * (mel(s.high) - mel(s.low)) / (s.nFilter + 1);
                const Real hertz = s.melDiv * (std::exp(m) - 1);
                const Real binScale = static_cast<Real>(1 << order) / s.sampFreq;
                // Several units of 2^-22 in the logarithm, and the quantisation of melDiv.
                const Real tolerance = 8 * std::ldexp(hertz + s.melDiv, -22) * binScale;
                const Real position = std::min<Real>(hertz * binScale, bins - 1);
                EXPECT_LE(std::fabs(position - static_cast<Real>(c[k])), 0.5L + tolerance) << k;
            }
            for (std::size_t m = 0; m < w.size(); ++m) {
                for (int i = 0; i < bins; ++i) {
                    int64_t exact = 0;
                    if (i >= c[m] && i <= c[m + 1]) exact = (int64_t{i - c[m] + 1} << 30) / (c[m + 1] - c[m] + 1);
                    if (i > c[m + 1] && i <= c[m + 2])
                        exact = (int64_t{c[m + 2] + 1 - i} << 30) / (c[m + 2] - c[m + 1] + 1);
                    ASSERT_EQ(w[m][static_cast<std::size_t>(i)], exact) << m << " " << i;
                }
            }
        }
    }
}

TEST(FixedBank, SumsScaleRoundAndSaturate) {
    test::Random random;
    const FixedShape& s = kFixed[0];
    std::vector<Kel8u> memory(100000);
    int order;
    ASSERT_EQ(kelsMelFBankInit_32s(memory.data(), &order, s.fftLen, s.sampFreq, s.low, s.high, s.nFilter, inQ15(1127),
                                   inQ15(700), 2),
              kelStatusOk);
    auto* const bank = reinterpret_cast<KelFilterBank_32s*>(memory.data());
    const auto w = weightMatrix(bank, 257, s.nFilter);
    test::Guarded<Kel32s> dst(static_cast<std::size_t>(s.nFilter));
    for (int scaleFactor = -31; scaleFactor <= 31; ++scaleFactor) {
        test::Guarded<Kel32s> spectrum(random.vector<Kel32s>(257));
        if (scaleFactor % 3 == 0) {
            for (std::size_t i = 0; i < 257; ++i) spectrum[i] >>= 20;
        }
        ASSERT_EQ(kelsEvalFBank_32s_Sfs(spectrum.data(), dst, bank, scaleFactor), kelStatusOk);
        for (std::size_t m = 0; m < dst.size(); ++m) {
            int64_t sum = 0;
            for (std::size_t i = 0; i < 257; ++i) sum += (static_cast<int64_t>(w[m][i]) * spectrum[i]) >> 8;
            const Real shifted = std::floor(std::ldexp(static_cast<Real>(sum), -scaleFactor));
            const Real rounded = std::floor(std::ldexp(shifted, -22) + 0.5L);
            EXPECT_EQ(dst[m], static_cast<Kel32s>(std::clamp<Real>(rounded, INT32_MIN, INT32_MAX))) << scaleFactor;
        }
    }
    // All bins at full scale in one wide filter: the sum itself reaches 64 bits.
    memory.resize(400000);
    ASSERT_EQ(kelsMelFBankInit_32s(memory.data(), &order, 8192, 8000, 1, 4000, 1, inQ15(8000), inQ15(8000), 2), 0);
    for (const auto& [bin, expected] : {std::pair{INT32_MAX, INT32_MAX}, {INT32_MIN, INT32_MIN}}) {
        const test::Guarded<Kel32s> full(std::vector<Kel32s>(4097, bin));
        ASSERT_EQ(kelsEvalFBank_32s_Sfs(full.data(), dst, reinterpret_cast<KelFilterBank_32s*>(memory.data()), 0), 0);
        EXPECT_EQ(dst.data()[0], expected);
    }
}

TEST(FixedBank, Statuses) {
    int size = 77;
    EXPECT_EQ(kelsMelFBankGetSize_32s(0, 0, 0, nullptr), -8);
    EXPECT_EQ(kelsMelFBankGetSize_32s(512, 0, 1, &size), -6);
    EXPECT_EQ(kelsMelFBankGetSize_32s(31, 1, 1, &size), -6);
    EXPECT_EQ(kelsMelFBankGetSize_32s(8193, 1, 1, &size), -6);
    EXPECT_EQ(kelsMelFBankGetSize_32s(512, 999, 6, &size), -70);
    EXPECT_EQ(kelsMelFBankGetSize_32s(512, 257, 2, &size), -6);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(kelsMelFBankGetSize_32s(512, 256, 2, &size), 0);
    EXPECT_EQ(size, 4 * 256 + 96 + 18 * 516 + 2 * 516 * 265 + 2 * 516 * 256 + 64);
    EXPECT_EQ(kelsMelFBankGetSize_32s(300, 256, 2, &size), 0);
    EXPECT_EQ(size, 548144);

    const int ok = 100 << 15, low = 0x80000, divHigh = 0x10000000, mulHigh = 0x40000000;
    struct Row {
        int fftLen, sampFreq, lowFreq, highFreq, nFilter, melMul, melDiv, flag;
        KelStatus status;
    };
    const Row rows[] = {{0, 0, -1, 0, 0, 0, 0, 0, -6},
                        {512, 0, -1, 0, 1, 0, 0, 0, -6},
                        {31, 0, -1, 1, 1, 0, 0, 0, -6},
                        {8193, 0, -1, 1, 1, 0, 0, 0, -6},
                        {512, 0, -1, 1, 1, 0, 0, 0, -70},
                        {512, 0, -1, 1, 1, 0, 0, 3, -70},
                        {512, 0, 2, 1, 1, 0, 0, 2, -6},
                        {512, 48001, 2, 1, 1, 0, 0, 2, -6},
                        {512, 8000, -1, 24001, 1, 0, 0, 2, -6},
                        {512, 8000, 2, 2, 999, 0, 0, 2, -71},
                        {512, 8000, 2, 24001, 999, 0, 0, 2, -71},
                        {512, 8000, 2, 3, 999, 0, low, 2, -5},
                        {512, 8000, 2, 3, 999, ok, divHigh, 2, -5},
                        {512, 8000, 2, 3, 999, low, ok, 2, -5},
                        {512, 8000, 2, 3, 999, mulHigh, ok, 2, -5},
                        {512, 8000, 2, 3, 258, ok, ok, 2, -6}};
    Kel8u buffer[32] = {};
    int order = 77;
    for (const Row& r : rows) {
        EXPECT_EQ(kelsMelFBankInit_32s(buffer, &order, r.fftLen, r.sampFreq, r.lowFreq, r.highFreq, r.nFilter, r.melMul,
                                       r.melDiv, r.flag),
                  r.status);
    }
    EXPECT_EQ(kelsMelFBankInit_32s(nullptr, &order, 0, 0, 0, 0, 0, 0, 0, 0), -8);
    EXPECT_EQ(kelsMelFBankInit_32s(buffer, nullptr, 0, 0, 0, 0, 0, 0, 0, 0), -8);
    EXPECT_EQ(order, 77);
    EXPECT_EQ(std::count(buffer, buffer + 32, 0), 32);

    auto* const bank = reinterpret_cast<KelFilterBank_32s*>(buffer);
    Kel32s s = 1, d = 77;
    test::expectNullChecks(kelsEvalFBank_32f, kelsEvalFBank_16s_Sfs, kelsEvalFBank_16s32s_Sfs, kelsEvalFBank_32s_Sfs);
    EXPECT_EQ(kelsEvalFBank_32s_Sfs(&s, nullptr, bank, 32), -8);
    EXPECT_EQ(kelsEvalFBank_32s_Sfs(&s, &d, bank, 32), -5);
    EXPECT_EQ(kelsEvalFBank_32s_Sfs(&s, &d, bank, -32), -5);
    std::vector<Kel8u> zeros(128);  // a bank of no filters
    EXPECT_EQ(kelsEvalFBank_32s_Sfs(&s, &d, reinterpret_cast<KelFilterBank_32s*>(zeros.data()), 31), 0);
    EXPECT_EQ(d, 77);
}

// ---- conversions ----

TEST(Mel, ConvertsBothWays) {
    test::Random random;
    for (const std::size_t n : {1u, 7u, 100u}) {
        test::Guarded<Kel32f> hertz(n), mel(n), back(n);
        for (std::size_t i = 0; i < n; ++i) hertz[i] = static_cast<float>(random.uniform(0, 24000));
        ASSERT_EQ(kelsLinearToMel_32f(hertz, mel, static_cast<int>(n), 1127, 700), kelStatusOk);
        ASSERT_EQ(kelsMelToLinear_32f(mel, back, static_cast<int>(n), 1127, 700), kelStatusOk);
        const Real eps = std::ldexp(1.0L, -24);
        for (std::size_t i = 0; i < n; ++i) {
            // Three roundings in the argument of the logarithm, and two after it; exp(mel / melMul) likewise.
            const Real exactMel = 1127 * std::log1p(hertz[i] / 700.0L);
            EXPECT_LE(std::fabs(mel[i] - exactMel), 3 * 1127 * eps + 2 * exactMel * eps);
            const Real exactBack = 700 * std::expm1(mel[i] / 1127.0L);
            EXPECT_LE(std::fabs(back[i] - exactBack), (exactBack + 700) * (2 * mel[i] / 1127 + 4) * eps);
        }
        ASSERT_EQ(kelsLinearToMel_32f(hertz, hertz, static_cast<int>(n), 1127, 700), kelStatusOk);
        EXPECT_TRUE(test::sameBits(hertz, mel));
    }
    test::expectVectorChecks({-8, -6}, kelsLinearToMel_32f, kelsMelToLinear_32f);
    for (const auto convert : {kelsLinearToMel_32f, kelsMelToLinear_32f}) {
        Kel32f v = 77;
        EXPECT_EQ(convert(&v, &v, 1, 0, 700), -6);
        EXPECT_EQ(convert(&v, &v, 1, 1127, -1), -6);
        EXPECT_EQ(convert(&v, &v, 1, NAN, 700), -6);
        EXPECT_EQ(v, 77);
    }
}

}  // namespace
