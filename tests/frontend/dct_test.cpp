// Cosine transform and liftering: frames of every form of state, and the state in the caller's memory.
#include "kels/dct.h"

#include "kels/core.h"

#include "support/support.h"

namespace {

using namespace test;

Random rng;

// The constructors and the release, each for both states.
constexpr auto initSine = forms(kelsDCTLifterInitAlloc_32f, kelsDCTLifterInitAlloc_16s);
constexpr auto initSineC0 = forms(kelsDCTLifterInitAlloc_C0_32f, kelsDCTLifterInitAlloc_C0_16s);
constexpr auto initSupplied = forms(kelsDCTLifterInitAlloc_Mul_32f, kelsDCTLifterInitAlloc_Mul_16s);
constexpr auto initSuppliedC0 = forms(kelsDCTLifterInitAlloc_MulC0_32f, kelsDCTLifterInitAlloc_MulC0_16s);
constexpr auto freeState = forms(kelsDCTLifterFree_32f, kelsDCTLifterFree_16s);

struct Plan {
    int lenDCT, lenCeps, nLifter;
    bool supplied, c0;
    std::vector<Kel32f> given = rng.vector<Kel32f>(lenCeps, 4);
    float val = rng.value<Kel32f>(3), val0 = rng.value<Kel32f>(3);

    // Of ck.
    Real weight(int k) const {
        if (supplied) return given[k > 0 ? k - 1 : lenCeps - 1];
        return k == 0 ? val0 : (1 + nLifter / 2.0L * std::sin(std::acos(-1.0L) * k / nLifter)) * val;
    }
    template <class S>
    KelStatus build(S** state) const {
        if (supplied && c0) return initSuppliedC0(state, lenDCT, given.data(), lenCeps);
        if (supplied) return initSupplied(state, lenDCT, given.data(), lenCeps);
        if (c0) return initSineC0(state, lenDCT, lenCeps, nLifter, val, val0);
        return initSine(state, lenDCT, lenCeps, nLifter, val);
    }
};

// Of a random frame: every result is within what single-precision sums and tables may lose, an integer within a half
// more.
template <class T, class D, class S, class... Scale>
void checkFrame(const Plan& s, const S* state, KelStatus (*apply)(const T*, D*, const S*, Scale...), Scale... scale) {
    const std::vector<T> src = rng.vector<T>(s.lenDCT);
    std::vector<D> dst(s.lenCeps + s.c0);
    ASSERT_EQ(apply(src.data(), dst.data(), state, scale...), kelStatusOk);
    for (std::size_t i = 0; i < dst.size(); ++i) {
        const int k = static_cast<int>(i + 1) % (s.lenCeps + 1);
        Real sum = 0, size = 0;
        for (int j = 0; j < s.lenDCT; ++j) {
            sum += src[j] * std::cos(std::acos(-1.0L) * k * (j + 0.5L) / s.lenDCT);
            size += std::fabs(static_cast<Real>(src[j]));
        }
        const Real loss = std::fabs(s.weight(k)) * size * static_cast<Real>(s.lenDCT + 6) * 0x1p-24L;
        Real exact = scaled(s.weight(k) * sum, (0 + ... + scale));
        if (std::is_integral_v<D>) exact = std::clamp(exact, -32768.0L, 32767.0L);
        const Real half = std::is_integral_v<D> ? 0.5L : 0;
        EXPECT_TRUE(near(dst[i], exact, scaled(loss, (0 + ... + scale)) + half)) << k;
    }
}

const std::pair<int, int> kShapes[] = {{1, 1},   {2, 1},   {5, 3},   {23, 12},  {26, 16},
                                       {33, 33}, {40, 17}, {256, 4}, {257, 20}, {700, 9}};

template <class S>
class DCTLifter : public ::testing::Test {};
using States = ::testing::Types<std::type_identity<KelDCTLifterState_32f>, std::type_identity<KelDCTLifterState_16s>>;
TYPED_TEST_SUITE(DCTLifter, States);

TYPED_TEST(DCTLifter, FramesOfEveryForm) {
    using S = typename TypeParam::type;
    for (const auto& [lenDCT, lenCeps] : kShapes) {
        for (const int nLifter : {1, 23, 300}) {
            for (int form = 0; form < 4; ++form) {
                const Plan s{.lenDCT = lenDCT,
                             .lenCeps = lenCeps,
                             .nLifter = nLifter,
                             .supplied = form >= 2,
                             .c0 = form % 2 == 1};
                S* state = nullptr;
                ASSERT_EQ(s.build(&state), kelStatusOk);
                if constexpr (std::is_same_v<S, KelDCTLifterState_32f>) {
                    checkFrame(s, state, kelsDCTLifter_32f);
                } else {
                    checkFrame(s, state, kelsDCTLifter_16s_Sfs, rng.between(-3, 9));
                    checkFrame(s, state, kelsDCTLifter_32s16s_Sfs, rng.between(13, 25));
                }
                EXPECT_EQ(freeState(state), kelStatusOk);
                kelsFree(state);
            }
        }
    }
}

TEST(DCTLifter, StatesInTheCallersMemory) {
    for (const auto& [lenDCT, lenCeps] : kShapes) {
        int size = 0;
        ASSERT_EQ(kelsDCTLifterGetSize_MulC0_16s(lenDCT, lenCeps, &size), kelStatusOk);
        EXPECT_EQ(size, 4 * (lenCeps + 1) * lenDCT + 44 * lenCeps + 168);
        Plan s{.lenDCT = lenDCT, .lenCeps = lenCeps, .nLifter = 0, .supplied = true, .c0 = true};
        for (auto& w : s.given) w = std::trunc(w);
        const std::vector<Kel32s> given(s.given.begin(), s.given.end());
        std::vector<Kel8u> memory(size);
        ASSERT_EQ(kelsDCTLifterInit_MulC0_16s(memory.data(), lenDCT, given.data(), lenCeps), kelStatusOk);
        const auto* const state = reinterpret_cast<KelDCTLifterState_16s*>(memory.data());
        for (const int scale : {3, 0}) checkFrame(s, state, kelsDCTLifter_16s_Sfs, scale);
    }
}

TEST(DCTLifter, TiesGoToEvenInEveryRoundingMode) {  // c0 of one input is that input
    KelDCTLifterState_16s* state;
    const Plan plan{.lenDCT = 1, .lenCeps = 1, .nLifter = 1, .supplied = true, .c0 = true, .given = {1}};
    ASSERT_EQ(plan.build(&state), kelStatusOk);
    for (const Kel32s src : {1, 3, 5, 7, -1, -3, -5}) {
        Kel16s dst[2];
        inEveryRoundingMode([&] { EXPECT_EQ(kelsDCTLifter_32s16s_Sfs(&src, dst, state, 1), kelStatusOk); },
                            [&] { EXPECT_EQ(dst[1], std::nearbyint(src / 2.0)) << src; });
    }
    kelsDCTLifterFree_16s(state);
    kelsFree(state);
}

}  // namespace
