#include "kels/dct.h"

#include <algorithm>
#include <string>

#include "kels/core.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using Real = long double;

// A function by the type S of the state.
#define FORM(name)                                       \
    (std::get<std::is_same_v<S, KelDCTLifterState_16s>>( \
        std::tuple(&kelsDCTLifter##name##_32f, &kelsDCTLifter##name##_16s)))

// What is asked of a state; weights[k] belongs to ck.
struct Plan {
    int lenDCT, lenCeps, nLifter;
    float val, val0;
    std::vector<Kel32f> given;  // weights of the Mul forms

    Real weight(bool supplied, int k) const {
        if (supplied) return given[static_cast<std::size_t>(k > 0 ? k - 1 : lenCeps - 1)];
        if (k == 0) return val0;
        return (1 + nLifter / 2.0L * std::sin(std::acos(-1.0L) * k / nLifter)) * val;
    }
    int outputs(bool c0) const { return lenCeps + (c0 ? 1 : 0); }
};

template <class S>
S* build(const Plan& s, bool supplied, bool c0) {
    S* state = nullptr;
    const test::Guarded<Kel32f> given(s.given);
    const KelStatus status =
        supplied ? (c0 ? FORM(InitAlloc_MulC0) : FORM(InitAlloc_Mul))(&state, s.lenDCT, given.data(), s.lenCeps)
        : c0     ? FORM(InitAlloc_C0)(&state, s.lenDCT, s.lenCeps, s.nLifter, s.val, s.val0)
                 : FORM(InitAlloc)(&state, s.lenDCT, s.lenCeps, s.nLifter, s.val);
    EXPECT_EQ(status, kelStatusOk);
    return state;
}

template <class S>
void release(S* state) {
    EXPECT_EQ(FORM(Free)(state), kelStatusOk);
    kelsFree(state);
}

// The exact result k (c1 .. cM, then c0) and a bound on what single-precision sums and tables may lose.
template <class T>
std::pair<Real, Real> exactResult(const Plan& s, bool supplied, int place, const T* src) {
    const int k = place < s.lenCeps ? place + 1 : 0;
    Real sum = 0, size = 0;
    for (int j = 0; j < s.lenDCT; ++j) {
        sum += src[j] * std::cos(std::acos(-1.0L) * k * (j + 0.5L) / s.lenDCT);
        size += std::fabs(static_cast<Real>(src[j]));
    }
    const Real weight = s.weight(supplied, k);
    // Of the sine lifter the term 1 + L/2 sin may cancel: its double-precision error is far below that of the rest.
    const Real bound = std::fabs(weight) * size * static_cast<Real>(s.lenDCT + 6) * std::ldexp(1.0L, -24) +
                       std::fabs(s.val) * size * (s.nLifter + 1) * std::ldexp(1.0L, -44);
    return {weight * sum, bound};
}

const std::pair<int, int> kShapes[] = {{1, 1},   {2, 1},   {2, 2},   {5, 3},   {23, 12}, {24, 12},  {26, 13},
                                       {33, 33}, {40, 17}, {64, 31}, {255, 5}, {256, 4}, {257, 20}, {700, 9}};

template <class Use>
void forEachState(Use use) {
    test::Random random;
    for (const auto& [lenDCT, lenCeps] : kShapes) {
        for (const int nLifter : {1, 23, 300}) {
            const Plan s{lenDCT,
                         lenCeps,
                         nLifter,
                         random.value<Kel32f>(3),
                         random.value<Kel32f>(3),
                         random.vector<Kel32f>(static_cast<std::size_t>(lenCeps), 4)};
            for (const bool supplied : {false, true}) {
                for (const bool c0 : {false, true}) {
                    SCOPED_TRACE(std::to_string(lenDCT) + "x" + std::to_string(lenCeps) + " L" +
                                 std::to_string(nLifter) + (supplied ? " supplied" : "") + (c0 ? " c0" : ""));
                    use(random, s, supplied, c0);
                }
            }
        }
    }
}

TEST(DCTLifter, FloatFrames) {
    forEachState([](test::Random& random, const Plan& s, bool supplied, bool c0) {
        auto* const state = build<KelDCTLifterState_32f>(s, supplied, c0);
        for (const auto edge : {test::Edge::Begin, test::Edge::End}) {
            const test::Guarded<Kel32f> src(random.vector<Kel32f>(static_cast<std::size_t>(s.lenDCT)), edge);
            test::Guarded<Kel32f> dst(static_cast<std::size_t>(s.outputs(c0)), edge);
            ASSERT_EQ(kelsDCTLifter_32f(src.data(), dst, state), kelStatusOk);
            for (int i = 0; i < s.outputs(c0); ++i) {
                const auto [exact, bound] = exactResult(s, supplied, i, src.data());
                EXPECT_LE(std::fabs(dst[static_cast<std::size_t>(i)] - exact), bound) << i;
            }
        }
        release(state);
    });
}

template <class T>
void checkIntegerFrame(const Plan& s, bool supplied, bool c0, const KelDCTLifterState_16s* state,
                       KelStatus (*apply)(const T*, Kel16s*, const KelDCTLifterState_16s*, int), test::Random& random) {
    for (const int scaleFactor : {-3, 0, 4, 9}) {
        const test::Guarded<T> src(random.vector<T>(static_cast<std::size_t>(s.lenDCT)));
        test::Guarded<Kel16s> dst(static_cast<std::size_t>(s.outputs(c0)));
        const int scale = scaleFactor + static_cast<int>(8 * sizeof(T)) - 16;
        ASSERT_EQ(apply(src.data(), dst, state, scale), kelStatusOk);
        for (int i = 0; i < s.outputs(c0); ++i) {
            const auto [exact, bound] = exactResult(s, supplied, i, src.data());
            const Real narrow = std::clamp<Real>(std::ldexp(exact, -scale), -32768, 32767);
            EXPECT_LE(std::fabs(dst[static_cast<std::size_t>(i)] - narrow), 0.5L + std::ldexp(bound, -scale)) << i;
        }
    }
}

TEST(DCTLifter, IntegerFrames) {
    forEachState([](test::Random& random, const Plan& s, bool supplied, bool c0) {
        auto* const state = build<KelDCTLifterState_16s>(s, supplied, c0);
        checkIntegerFrame<Kel16s>(s, supplied, c0, state, kelsDCTLifter_16s_Sfs, random);
        checkIntegerFrame<Kel32s>(s, supplied, c0, state, kelsDCTLifter_32s16s_Sfs, random);
        release(state);
    });
}

// The state fits into the bytes asked for wherever the buffer lies, and needs no more than on any other ABI.
TEST(DCTLifter, CallerBufferAtEveryAlignment) {
    test::Random random;
    for (const auto& [lenDCT, lenCeps] : kShapes) {
        int size = 0;
        ASSERT_EQ(kelsDCTLifterGetSize_MulC0_16s(lenDCT, lenCeps, &size), kelStatusOk);
        EXPECT_EQ(size, 4 * (lenCeps + 1) * lenDCT + 44 * lenCeps + 168);
        for (int offset = 0; offset < 32; ++offset) {
            test::Guarded<Kel32s> given(static_cast<std::size_t>(lenCeps));
            Plan s{lenDCT, lenCeps, 0, 0, 0, {}};
            for (auto i = std::size_t{0}; i < given.size(); ++i) {
                given[i] = random.between(-40, 40);
                s.given.push_back(static_cast<Kel32f>(given[i]));
            }
            const auto after = static_cast<std::size_t>((64 - offset - size % 32) % 32);
            test::Guarded<Kel8u> memory(static_cast<std::size_t>(offset + size) + after);
            std::fill_n(memory.data(), memory.size(), Kel8u{0xA5});
            Kel8u* const buffer = memory + offset;
            ASSERT_EQ(kelsDCTLifterInit_MulC0_16s(buffer, lenDCT, given.data(), lenCeps), kelStatusOk);
            const auto* const state = reinterpret_cast<KelDCTLifterState_16s*>(buffer);
            checkIntegerFrame<Kel16s>(s, true, true, state, kelsDCTLifter_16s_Sfs, random);
            EXPECT_EQ(std::count(memory.data(), buffer, 0xA5), offset);
            EXPECT_EQ(std::count(buffer + size, memory.data() + memory.size(), 0xA5),
                      static_cast<std::ptrdiff_t>(after));
        }
    }
}

// c0 of one input is input times weight: exact ties show the rounding, large weights the saturation.
TEST(DCTLifter, IntegerResultsRoundToEvenAndSaturate) {
    struct Row {
        int src;
        float weight;
        int scaleFactor;
        Kel16s expected;
    };
    const Row rows[] = {
        {3, 1, 1, 2},         {5, 1, 1, 2},          {-3, 1, 1, -2},          {-5, 1, 1, -2},
        {7, 1, 1, 4},         {32767, 1, -1, 32767}, {-32768, 1, -1, -32768}, {-32768, 1e30f, 0, -32768},
        {1, 1e30f, 0, 32767}, {0, 1, INT_MIN, 0},    {1, 1, INT_MIN, 32767},  {32767, 1, INT_MAX, 0}};
    for (const Row& r : rows) {
        KelDCTLifterState_16s* state;
        ASSERT_EQ(kelsDCTLifterInitAlloc_MulC0_16s(&state, 1, &r.weight, 1), kelStatusOk);
        test::inEveryRoundingMode([&] {
            const auto narrow = static_cast<Kel16s>(r.src);
            const Kel32s wide = r.src;
            Kel16s dst[2] = {}, dstWide[2] = {};
            EXPECT_EQ(kelsDCTLifter_16s_Sfs(&narrow, dst, state, r.scaleFactor), kelStatusOk);
            EXPECT_EQ(kelsDCTLifter_32s16s_Sfs(&wide, dstWide, state, r.scaleFactor), kelStatusOk);
            EXPECT_EQ(dst[1], r.expected) << r.src << " by " << r.scaleFactor;
            EXPECT_EQ(dstWide[1], r.expected) << r.src << " by " << r.scaleFactor;
        });
        release(state);
    }
}

template <class S>
class DCTLifterForm : public ::testing::Test {};
using States = ::testing::Types<std::type_identity<KelDCTLifterState_32f>, std::type_identity<KelDCTLifterState_16s>>;
TYPED_TEST_SUITE(DCTLifterForm, States);

TYPED_TEST(DCTLifterForm, StatusesInOrder) {
    using S = typename TypeParam::type;
    test::expectVectorChecks({-8, -6}, FORM(InitAlloc), FORM(InitAlloc_C0), FORM(InitAlloc_Mul), FORM(InitAlloc_MulC0));
    EXPECT_EQ(FORM(Free)(nullptr), -8);
    const Kel32f w[4] = {};
    auto* const before = reinterpret_cast<S*>(const_cast<Kel32f*>(w));
    auto* state = before;
    EXPECT_EQ(FORM(InitAlloc)(&state, 4, 4, 0, 1), -6);
    EXPECT_EQ(FORM(InitAlloc_C0)(&state, 4, 4, -1, 1, 1), -6);
    for (const auto& [lenDCT, lenCeps] : {std::pair{0, 0}, {0, 1}, {1, 0}, {3, 4}, {-1, -2}, {INT_MAX - 1, INT_MAX}}) {
        EXPECT_EQ(FORM(InitAlloc)(&state, lenDCT, lenCeps, 1, 1), -6);
        EXPECT_EQ(FORM(InitAlloc_C0)(&state, lenDCT, lenCeps, 1, 1, 1), -6);
        EXPECT_EQ(FORM(InitAlloc_Mul)(&state, lenDCT, w, lenCeps), -6);
        EXPECT_EQ(FORM(InitAlloc_MulC0)(&state, lenDCT, w, lenCeps), -6);
    }
    EXPECT_EQ(state, before);
    for (const int huge : {INT_MAX, 1 << 20}) {  // tables beyond every memory
        EXPECT_EQ(FORM(InitAlloc)(&state, INT_MAX, huge, 1, 1), -9);
        release(state);
    }
}

TYPED_TEST(DCTLifterForm, EveryFailedAllocationLeavesWhatFreeTakes) {
    using S = typename TypeParam::type;
    const Kel32f w[13] = {};
    for (int form = 0; form < 4; ++form) {
        test::failEachAllocation([&](int n, const test::AllocationWatch& watch) {
            auto* state = reinterpret_cast<S*>(const_cast<Kel32f*>(w));
            const KelStatus status = form == 0   ? FORM(InitAlloc)(&state, 26, 13, 22, 1)
                                     : form == 1 ? FORM(InitAlloc_C0)(&state, 26, 13, 22, 1, 2)
                                     : form == 2 ? FORM(InitAlloc_Mul)(&state, 26, w, 13)
                                                 : FORM(InitAlloc_MulC0)(&state, 26, w, 13);
            EXPECT_EQ(status, watch.calls() > n ? kelStatusNoMemory : kelStatusOk);
            EXPECT_EQ(state == nullptr, n == 0);
            if (state == nullptr) return;
            for (int twice = 0; twice < 2; ++twice) {
                EXPECT_EQ(FORM(Free)(state), kelStatusOk);
                EXPECT_EQ(watch.unreleased(), 1);
            }
            kelsFree(state);
        });
    }
}

TEST(DCTLifter, OtherStatusesInOrder) {
    test::expectVectorChecks({-8, -6}, kelsDCTLifterGetSize_MulC0_16s, kelsDCTLifterInit_MulC0_16s);
    test::expectNullChecks(kelsDCTLifter_32f, kelsDCTLifter_16s_Sfs, kelsDCTLifter_32s16s_Sfs);
    int size = 77;
    Kel8u buffer[8] = {};
    const Kel32s w[1] = {};
    for (const auto& [lenDCT, lenCeps] : {std::pair{0, 0}, {1, 0}, {3, 4}, {8193, 1}, {INT_MAX, INT_MAX}}) {
        EXPECT_EQ(kelsDCTLifterGetSize_MulC0_16s(lenDCT, lenCeps, &size), -6);
        if (lenCeps < 1 || lenCeps > lenDCT) {
            EXPECT_EQ(kelsDCTLifterInit_MulC0_16s(buffer, lenDCT, w, lenCeps), -6);
        }
    }
    EXPECT_EQ(size, 77);
    EXPECT_EQ(std::count(buffer, buffer + 8, 0), 8);
    EXPECT_EQ(kelsDCTLifterGetSize_MulC0_16s(8192, 8192, &size), kelStatusOk);
    EXPECT_EQ(size, 268828840);
}

}  // namespace
