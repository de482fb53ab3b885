// The banks with float and with Q14 weights.
#include "kels/fbank.h"

#include <numeric>
#include <optional>

#include "support/support.h"
#include "support/transform.h"

namespace {

using namespace test;

// A function by the form F of the bank.
#define FORM(name) (std::get<F::kFixed>(std::tuple(&kels##name##_32f, &kels##name##_16s)))

// A bank of either form; the block that Free leaves is released, too.
template <class B>
struct Owned {
    using F = Owned;
    static constexpr bool kFixed = std::is_same_v<B, KelFilterBank_16s>;
    int nFilter;
    B* bank = nullptr;
    int order = -1;

    explicit Owned(int filters) : nFilter(filters) {}
    ~Owned() {
        EXPECT_TRUE(bank == nullptr || FORM(FBankFree)(bank) == kelStatusOk);
        kelsFree(bank);
    }
    std::vector<int> centers() const {
        Guarded<int> c(nFilter + 2);
        EXPECT_EQ(FORM(FBankGetCenters)(bank, c), kelStatusOk);
        return c.vector();
    }
    // Of filter m from 0: the weights of bins centres[m] .. centres[m + 2], nothing behind them.
    std::vector<Kel32f> weights(int m) const {
        const auto c = centers();
        Guarded<Kel32f> w(c[std::min(m + 2, nFilter + 1)] - c[m] + 1);
        EXPECT_EQ(FORM(FBankGetCoeffs)(bank, m + 1, w), kelStatusOk);
        return w.vector();
    }
    static KelStatus evaluate(B* bank) {
        std::conditional_t<kFixed, Kel16s, Kel32f> src[600] = {}, dst[40];
        if constexpr (kFixed) return kelsEvalFBank_16s_Sfs(src, dst, bank, 0);
        if constexpr (!kFixed) return kelsEvalFBank_32f(src, dst, bank);
    }
};
template <class Owned>
class Bank : public ::testing::Test {};
using Forms = ::testing::Types<Owned<KelFilterBank_32f>, Owned<KelFilterBank_16s>>;
TYPED_TEST_SUITE(Bank, Forms);

struct Shape {
    int fftLen;
    float sampFreq, low, high;
    int nFilter;
    float highLin;
    int nLin;  // 0: all mel
    float melMul, melDiv;

    template <class F>
    void build(F& held, int flag) const {
        const KelStatus status = nLin == 0
                                     ? FORM(MelFBankInitAlloc)(&held.bank, &held.order, fftLen, sampFreq, low, high,
                                                               nFilter, melMul, melDiv, flag)
                                     : FORM(MelLinFBankInitAlloc)(&held.bank, &held.order, fftLen, sampFreq, low, high,
                                                                  nFilter, highLin, nLin, melMul, melDiv, flag);
        ASSERT_EQ(status, kelStatusOk);
    }
    Real mel(Real f) const { return melMul * std::log(1 + f / melDiv); }
    bool linear(int k) const { return nLin > 0 && (nLin == nFilter || k <= nLin); }
    // Of corner k.
    Real hertz(int k) const {
        if (linear(k)) return low + k * (static_cast<Real>(highLin) - low) / (nLin == nFilter ? nFilter + 1 : nLin);
        const Real from = mel(nLin > 0 ? highLin : low);
        const Real m = from + (k - nLin) * (mel(high) - from) / (nFilter - nLin + 1);
        return melDiv * (std::exp(m / melMul) - 1);
    }
};
const Shape kShapes[] = {{512, 16000, 64, 8000, 26, 0, 0, 1127, 700},   {400, 11025, 100.5f, 4800, 23, 0, 0, 1127, 700},
                         {128, 8000, 10, 4000, 60, 0, 0, 2595, 700},    {1, 8000, 1, 4000, 2, 0, 0, 1127, 700},
                         {256, 8000, 1000, 1000, 3, 0, 0, 1127, 700},   {512, 16000, 60, 7000, 26, 1000, 10, 1127, 700},
                         {256, 8000, 50, 4000, 20, 3900, 20, 1127, 700}};

// Single precision loses a few units in the last place of mel, which the exponential multiplies by at most its
// argument.
template <class F>
void checkTriangles(const F& held, const Shape& s, bool byBin) {
    constexpr Real eps = 0x1p-24L, unit = F::kFixed ? 0x1p-14L : 0;
    const int fftLen2 = 1 << held.order;
    EXPECT_TRUE(fftLen2 >= s.fftLen && (held.order == 1 || fftLen2 / 2 < s.fftLen));
    const auto c = held.centers();
    const Real binScale = fftLen2 / static_cast<Real>(s.sampFreq);
    for (int k = 0; k < s.nFilter + 2; ++k) {
        const Real above = s.hertz(k) * binScale - c[k] + (byBin ? 0.5L : 0);
        EXPECT_TRUE(near(above, 0.5L, 0.5L + 16 * eps * (s.hertz(k) + s.melDiv) * binScale)) << k;
    }
    for (int m = 0; m < s.nFilter; ++m) {
        const auto w = held.weights(m);
        for (int i = c[m]; i <= c[m + 2]; ++i) {
            // The side that rises, or falls, from `zero` to the top.
            const bool up = i <= c[m + 1];
            const int zero = up ? m : m + 2;
            Real exact = 0, tolerance = 0;
            if (byBin || s.linear(m + 1)) {
                exact = (std::abs(i - c[zero]) + 1) / static_cast<Real>(std::abs(c[m + 1] - c[zero]) + 1);
                exact = static_cast<Kel32f>(unit > 0 ? std::floor(exact / unit) * unit : exact);
            } else if (i > c[m]) {
                const Real from = s.mel(s.hertz(zero)), span = s.mel(s.hertz(m + 1)) - from;
                exact = (s.mel(i / binScale) - from) / span;
                tolerance = 16 * eps * s.mel(s.high) / std::fabs(span) + unit / 2;
            }
            EXPECT_TRUE(near(w[i - c[m]], exact, tolerance)) << m << " " << i;
        }
    }
    for (const Kel32f spare : held.weights(s.nFilter)) EXPECT_EQ(spare, 0);
}
TYPED_TEST(Bank, CornersAndWeightsFollowTheFormulas) {
    for (const Shape& s : kShapes) {
        for (const int flag : {kelFBankWeightMel, kelFBankWeightBin}) {
            std::optional<TypeParam> held;
            inEveryRoundingMode([&] { s.build(held.emplace(s.nFilter), flag); },
                                [&] { checkTriangles(*held, s, flag == kelFBankWeightBin); });
        }
    }
}

// Parameters without sense must not put a corner outside the spectrum or out of order.
TYPED_TEST(Bank, CornersStayInsideTheSpectrum) {
    for (const float melDiv : {-700.0f, 0.0f, NAN, 1e-30f, 1e30f}) {
        for (const float melMul : {1127.0f, -3.0f, 0.0f, 1e38f}) {
            TypeParam held(9);
            Shape{64, 8000, 50, 4000, 9, 2000, 4, melMul, melDiv}.build(held, kelFBankWeightMel);
            held.centers();  // checks them
            EXPECT_EQ(TypeParam::evaluate(held.bank), kelStatusOk);
        }
    }
}

TYPED_TEST(Bank, AuroraBanks) {
    using F = TypeParam;
    const std::vector<int> low{0,  0,  1,  2,  3,  4,  5,  7,  8,  10, 12, 14, 16, 18,
                               20, 23, 26, 29, 32, 36, 39, 44, 48, 53, 58, 64, 64};
    for (const auto& c : {low, std::vector<int>{0, 13, 27, 44, 64}}) {
        F held(std::ssize(c) - 2);
        ASSERT_EQ((c.size() == 5 ? FORM(MelFBankInitAllocHigh_Aurora) : FORM(MelFBankInitAllocLow_Aurora))(&held.bank),
                  kelStatusOk);
        EXPECT_EQ(held.centers(), c);
        for (int m = 0; m < held.nFilter; ++m) {
            const auto w = held.weights(m);
            const auto triangle = [&](int i) {
                const int side = i < c[m + 1] ? c[m] : c[m + 2];
                return i == c[m + 1] ? 1 : (i - side) / static_cast<Real>(c[m + 1] - side);
            };
            Real sum = 0;
            for (int i = c[m]; i <= c[m + 2]; ++i) sum += triangle(i);
            for (int i = c[m]; i <= c[m + 2]; ++i) {
                const Real tolerance = F::kFixed ? 0.51L * 0x1p-14L : 0x1p-22L;
                EXPECT_TRUE(near(w[i - c[m]], triangle(i) / sum, tolerance)) << m << " " << i;
            }
        }
    }
}

// ---- evaluation ----

// Results are the sums of a spectrum by the bank's weights, which `source` gives directly or up to an error a bin.
template <class F, class S, class D, class B, class... Scale>
void checkSums(const F& held, KelStatus (*evaluate)(const S*, D*, B*, Scale...), const std::vector<S>& source,
               const std::vector<Real>& spectrum, Real error, Scale... scale) {
    const Guarded<S> src(source, Edge(held.nFilter % 2));
    Guarded<D> dst(held.nFilter);
    const AllocationWatch watch;
    ASSERT_EQ(evaluate(src.data(), dst, held.bank, scale...), kelStatusOk);
    EXPECT_EQ(watch.calls(), 0);
    const auto c = held.centers();
    for (int m = 0; m < held.nFilter; ++m) {
        const auto w = held.weights(m);
        Real sum = 0, size = 0, slack = 0;
        for (std::size_t i = 0; i < w.size(); ++i) {
            const Real term = w[i] * spectrum[c[m] + i];
            sum += term;
            size += std::fabs(term);
            slack += std::fabs(w[i]) * error;
        }
        if constexpr (std::is_integral_v<D>) {
            const D exact = saturated<D>(std::floor(scaled(sum, (0 + ... + scale))));
            EXPECT_TRUE(near(dst[m], exact, error > 0 ? scaled(slack, (0 + ... + scale)) + 1 : 0)) << m;
        } else {
            EXPECT_TRUE(near(dst[m], sum, static_cast<Real>(w.size() + 2) * 0x1p-24L * size + slack)) << m;
        }
    }
}

// A bank with random centres, narrow, wide and coinciding, and random weights k * 2^-16, k up to `limit`, and a
// spectrum up to its last centre.
template <class S, class F>
std::vector<S> randomBank(Random& random, F& held, int fftLen, int limit) {
    EXPECT_EQ(FORM(EmptyFBankInitAlloc)(&held.bank, &held.order, fftLen, held.nFilter, 0), kelStatusOk);
    std::vector<int> c;
    for (int k = 0; k < held.nFilter + 2; ++k) c.push_back(random.between(0, fftLen / 2));
    std::sort(c.begin(), c.end());
    if (random.between(0, 3) == 0) std::fill(c.begin() + random.between(1, 2), c.end(), fftLen / 2);
    EXPECT_EQ(FORM(FBankSetCenters)(held.bank, c.data()), kelStatusOk);
    EXPECT_EQ(held.centers(), c);
    for (int m = 0; m < held.nFilter; ++m) {
        std::vector<Kel32f> w(c[m + 2] - c[m] + 1);
        for (auto& v : w) v = static_cast<float>(random.between(-limit, limit)) / 65536;
        const Guarded<Kel32f> given(w);
        inEveryRoundingMode([&] { EXPECT_EQ(FORM(FBankSetCoeffs)(held.bank, m + 1, given.data()), kelStatusOk); });
        for (auto& v : w) v = F::kFixed ? std::nearbyint(v * 16384) / 16384 : v;
        EXPECT_EQ(held.weights(m), w);
    }
    return random.vector<S>(c.back() + 1);
}

TEST(FBank, SumsOfASpectrum) {
    expectNullChecks(kelsEvalFBank_32f, kelsEvalFBank_16s_Sfs, kelsEvalFBank_16s32s_Sfs);
    Random random;
    for (int round = 0; round < 30; ++round) {
        Owned<KelFilterBank_32f> floats(random.between(1, 40));
        Owned<KelFilterBank_16s> fixed(random.between(1, 30));
        const auto s = randomBank<Kel32f>(random, floats, 4 << random.between(0, 7), 1 << 20);
        checkSums(floats, kelsEvalFBank_32f, s, std::vector<Real>(s.begin(), s.end()), 0);
        const auto s16 = randomBank<Kel16s>(random, fixed, 4 << random.between(0, 7), 1 << random.between(8, 24));
        for (const int scaleFactor : {INT_MIN, -33, -13, -6, 0, 3, 11, 18, 34, 49, 50, INT_MAX}) {
            const std::vector<Real> spectrum(s16.begin(), s16.end());
            checkSums(fixed, kelsEvalFBank_16s_Sfs, s16, spectrum, 0, scaleFactor);
            checkSums(fixed, kelsEvalFBank_16s32s_Sfs, s16, spectrum, 0, scaleFactor);
        }
    }
}

TEST(FBank, SumsOfSamples) {
    Random random;
    for (const Shape& s : kShapes) {
        Owned<KelFilterBank_32f> floats(s.nFilter);
        Owned<KelFilterBank_16s> fixed(s.nFilter);
        s.build(floats, kelFBankWeightBin | kelFBankOwnFFT);
        s.build(fixed, kelFBankWeightBin | kelFBankOwnFFT);
        const auto x = random.vector<Kel16s>(std::size_t{1} << floats.order);
        // An FFT errs by about a unit a stage relative to the root of the energy; 16-bit: besides, by halves of 1/8 in
        // both parts and of 1/64 in the magnitude.
        const Real energy = std::inner_product(x.begin(), x.end(), x.begin(), Real(0));
        const Real error = (floats.order + 2) * 0x1p-23L * std::sqrt(energy * static_cast<Real>(x.size()));
        std::vector<Real> magnitudes;
        for (const auto& bin : transform(x, x.size())) magnitudes.push_back(std::abs(bin));
        checkSums(floats, kelsEvalFBank_32f, std::vector<Kel32f>(x.begin(), x.end()), magnitudes, error);
        checkSums(fixed, kelsEvalFBank_16s_Sfs, x, magnitudes, error + 0.1L, 12);
        checkSums(fixed, kelsEvalFBank_16s32s_Sfs, x, magnitudes, error + 0.1L, 0);
    }
}

// ---- statuses and memory ----

TYPED_TEST(Bank, ConstructorStatusesInOrder) {
    using F = TypeParam;
    expectNullChecks(FORM(MelFBankInitAllocLow_Aurora), FORM(MelFBankInitAllocHigh_Aurora), FORM(FBankFree));
    expectChecks<Places{-1, 3, 2}>({-6}, 1, FORM(EmptyFBankInitAlloc));
    // Arguments: bank, order, 2 fftLen, 3 sampFreq, 4 lowFreq, 5 highFreq, 6 nFilter, ...
    const std::vector<Step> steps{{2, 0, -6},   {2, 512, -71}, {6, 0, -6},     {6, 20, -71},
                                  {3, 0, -6},   {3, NAN, -6},  {3, 8000, -71}, {4, 0, -6},
                                  {4, NAN, -6}, {4, 2, -71},   {5, NAN, -71},  {5, 4000.5, -71}};
    expectSteps(FORM(MelFBankInitAlloc), {0, 0, 512, 8000, 2, 1, 20, 1127, 700, 0}, steps);
    expectSteps(FORM(MelFBankInitAlloc), {0, 0, 512, 8000, 2, 4000, 20, 1127, 700},
                {{9, 0, -70}, {9, 3, -70}, {9, 4, -70}, {9, 9, -70}});
    // ... 7 highLinFreq, 8 nLinFilter.
    expectSteps(FORM(MelLinFBankInitAlloc), {0, 0, 512, 8000, 2, 1, 20, 2, 9, 1127, 700, 0}, steps);
    const std::vector<Step> linear{{8, 0, -6},     {8, 21, -6},   {8, 20, -70}, {7, 1, -71},
                                   {7, 4001, -71}, {7, NAN, -71}, {7, 2, -70}};
    expectSteps(FORM(MelLinFBankInitAlloc), {0, 0, 512, 8000, 2, 4000, 20, 2, 9, 1127, 700, 0}, linear);
    F huge(1);
    EXPECT_EQ(FORM(EmptyFBankInitAlloc)(&huge.bank, &huge.order, (1 << 30) + 1, 1, 0), kelStatusNoMemory);
    EXPECT_EQ(FORM(EmptyFBankInitAlloc)(&huge.bank, &huge.order, 1, INT_MAX, 0), kelStatusNoMemory);
}

// Of a bank that is not ready yet, or no more: indices and arrays are not looked at.
template <class F, class B>
void expectRefused(B* bank, KelStatus status) {
    Kel32f coeff = 77;
    int center = 77;
    EXPECT_EQ(F::evaluate(bank), status);
    EXPECT_EQ(FORM(FBankGetCenters)(bank, &center), status);
    EXPECT_EQ(FORM(FBankGetCoeffs)(bank, 99, &coeff), status);
    EXPECT_EQ(FORM(FBankSetCoeffs)(bank, 99, &coeff), status);
    EXPECT_TRUE(status != kelStatusNullPtr || FORM(FBankSetCenters)(bank, &center) == status);
    EXPECT_TRUE(center == 77 && coeff == 77);
}

TYPED_TEST(Bank, EveryFailedAllocationLeavesWhatFreeTakes) {
    using F = TypeParam;
    const auto check = [](auto make) {
        expectReleasable(make, FORM(FBankFree), [](auto* bank) { expectRefused<F>(bank, kelStatusNullPtr); });
    };
    int order;
    check([&](auto** pp) { return FORM(MelFBankInitAlloc)(pp, &order, 512, 16000, 60, 8000, 26, 1127, 700, 1 + 4); });
    check(
        [&](auto** pp) { return FORM(MelLinFBankInitAlloc)(pp, &order, 64, 8000, 60, 4000, 6, 99, 5, 1127, 700, 2); });
    check([&](auto** pp) { return FORM(EmptyFBankInitAlloc)(pp, &order, 512, 26, 4); });
    check(FORM(MelFBankInitAllocLow_Aurora));
    check(FORM(MelFBankInitAllocHigh_Aurora));
}

TYPED_TEST(Bank, AccessorStatusesInOrder) {
    using F = TypeParam;
    expectNullChecks(FORM(FBankGetCenters), FORM(FBankSetCenters), FORM(FBankGetCoeffs), FORM(FBankSetCoeffs));
    F held(3);
    ASSERT_EQ(FORM(EmptyFBankInitAlloc)(&held.bank, &held.order, 16, 3, 0), kelStatusOk);
    for (const auto& bad : {std::array{-1, 2, 3, 4, 5}, {2, 1, 3, 4, 5}, {0, 1, 2, 6, 5}, {0, 1, 2, 3, 9}}) {
        EXPECT_EQ(FORM(FBankSetCenters)(held.bank, bad.data()), -69);
        expectRefused<F>(held.bank, kelStatusFBankState);
    }
    EXPECT_EQ(FORM(FBankSetCenters)(held.bank, std::array{0, 0, 3, 8, 8}.data()), kelStatusOk);
    EXPECT_EQ(F::evaluate(held.bank), kelStatusOk);
    EXPECT_EQ(FORM(FBankSetCoeffs)(held.bank, 1, std::array{1e9f, 0.0f, -INFINITY, NAN}.data()), kelStatusOk);
    float weight = 0;  // 2^31 - 1 in Q14 is not a float
    inEveryRoundingMode([&] { weight = held.weights(0)[0]; }, [&] { EXPECT_EQ(weight, F::kFixed ? 131072 : 1e9f); });
    EXPECT_EQ(held.weights(0)[2], F::kFixed ? -131072 : -INFINITY);
    Kel32f coeff = 77;
    for (const int fIdx : {INT_MIN, 0, 5}) EXPECT_EQ(FORM(FBankGetCoeffs)(held.bank, fIdx, &coeff), -6) << fIdx;
    for (const int fIdx : {INT_MIN, 0, 4}) EXPECT_EQ(FORM(FBankSetCoeffs)(held.bank, fIdx, &coeff), -6) << fIdx;
    EXPECT_EQ(coeff, 77);
}

}  // namespace
