// What resampling refuses, and in which order it looks.
#include "resample/resample_forms.h"

namespace {

using namespace test;

template <class T>
class ResampleFaults : public testing::Test {};
using SampleTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(ResampleFaults, SampleTypes);

constexpr KelStatus kNull = kelStatusNullPtr, kSize = kelStatusSize, kBad = kelStatusBadArg,
                    kMemory = kelStatusAllocError;

// With the result first, as the others have it.
template <class T>
KelStatus fixedSize(int* bytes, int in, int out, int len, Kel32f rollf, Kel32f alpha, int hint) {
    return fixedSizeOf<T>(in, out, len, rollf, alpha, hint, bytes);
}

TYPED_TEST(ResampleFaults, DesignsThatAreRefused) {
    using T = TypeParam;
    {
        enum { kWindow = 1, kStep, kRollf, kAlpha };
        const auto form = initAlloc.of<General<T>>();
        const Kel32f least = 2 / 10.0f;  // window of a table with ten points to a sample
        expectChecks<Places{.step = -1, .height = -1, .width = kStep}>({kNull, kSize}, 1, form);
        expectSteps(form, {0, -1, 10, 1, 1}, {{kWindow, NAN, kBad}, {kWindow, std::nextafter(least, 0.0f), kBad}});
        expectSteps(form, {0, 9, 9, 0, 1}, {{kRollf, 0, kBad}, {kRollf, 1.0001, kBad}, {kRollf, NAN, kBad}});
        expectSteps(form, {0, 1e10, 2, 1, 1},
                    {{kAlpha, 0.999, kBad}, {kAlpha, 701, kBad}, {kAlpha, NAN, kBad}, {kAlpha, 1, kMemory}});
        expectSteps(form, {0, 0, 2, 1, 1}, {{kWindow, 2e9, kMemory}, {kWindow, HUGE_VAL, kMemory}});
        EXPECT_NE(make<T>(Filter{least, 10, 1, 1}), nullptr);
    }
    const auto expect = [](auto* f) {
        enum { kIn = 1, kOut, kLen, kRollf, kAlpha };
        const double most = INT_MAX, huge = 1 << 29;
        expectChecks<Places{.step = -1, .height = kOut, .width = kIn}>({kNull, kSize}, 1, f);
        expectSteps(f, {0, 1, 1, 1},
                    {{kIn, 0, kSize}, {kIn, 1, kBad}, {kOut, 0, kSize}, {kOut, 1, kBad}, {kLen, 0, kSize}});
        expectSteps(f, {0, 1, 1, huge, 0, 1},
                    {{kRollf, 0, kBad}, {kRollf, 1.0001, kBad}, {kRollf, 1, kMemory}, {kLen, most, kMemory}});
        expectSteps(f, {0, 1, 1, huge, 1, 0}, {{kAlpha, 0.9, kBad}, {kAlpha, NAN, kBad}, {kAlpha, 1, kMemory}});
        expectSteps(f, {0, huge + 1, huge, 0, 1, 1}, {{kLen, 3, kMemory}});
        expectSteps(f, {0, most, most - 1, 0, 1, 1}, {{kLen, 1, kMemory}});
    };
    expect(fixedInitAlloc.of<Fixed<T>>());
    expect(fixedInit.of<Fixed<T>>());
    expect(fixedSize<T>);
}

TYPED_TEST(ResampleFaults, CallsThatAreRefusedOrGiveNothing) {
    using T = TypeParam;
    enum { kLen = 2, kFactor = 4 };
    expectNullChecks(release.of<General<T>>(), fixedRelease.of<Fixed<T>>());
    expectChecks<Places{.step = -1, .height = -1, .width = kLen}>({kNull, kBad}, 1, runGeneral.of<T>(),
                                                                  runFixed.of<T>());
    expectSteps(runGeneral.of<T>(), {0, 0, 20, 0, 1, 1},
                {{kFactor, 0, kBad}, {kFactor, -1, kBad}, {kFactor, NAN, kBad}, {kFactor, HUGE_VAL, kBad}});
    expectSteps(runGeneral.of<T>(), {0, 0, 0, 0, 1, 1}, {{kLen, 0, kBad}});
    expectChecks<Places{.step = -1, .height = 2, .width = 3}>({kNull, kSize}, 1, setFilter.of<T>(), getFilter.of<T>());

    // A block that is too short, times that are none, a filter that is stretched beyond all numbers.
    const auto state = make<T>(Filter{4, 8, 1, 2});
    const auto fixed = make<T>(FixedFilter{2, 3, 4});
    const T x[20] = {};
    T y[] = {5};
    for (const Kel64f t : {18.0, Kel64f(NAN), HUGE_VAL, -HUGE_VAL, 1e300}) {
        Kel64f time = t;
        int n = 99, m = 99;
        EXPECT_EQ(runGeneral(state.get(), x, 20, y, 1, 1, &time, &n), 0);
        EXPECT_EQ(runFixed(fixed.get(), x, 20, y, 1, &time, &m), 0);
        EXPECT_TRUE(n == 0 && m == 0 && sameBits(time, t));
        EXPECT_EQ(runGeneral(state.get(), x, 20, y, 5e-324, 1, &(time = 0), &(n = 99)), 0);
        EXPECT_TRUE(n == 0 && y[0] == 5);
    }
}

TYPED_TEST(ResampleFaults, FailedAllocationsLeaveNothing) {
    using T = TypeParam;
    const auto expect = [](auto* state, auto init, auto release, auto... design) {
        failEachAllocation([&](int failing, const AllocationWatch& watch) {
            state = nullptr;
            const KelStatus status = init(&state, design..., 0);
            EXPECT_EQ(status, watch.calls() > failing ? kMemory : kelStatusOk);
            EXPECT_EQ(release(state), state == nullptr ? kNull : kelStatusOk);
            EXPECT_EQ(watch.unreleased(), 0);
        });
    };
    expect((General<T>*){}, initAlloc.of<General<T>>(), release.of<General<T>>(), 8, 8, 1, 3);
    expect((Fixed<T>*){}, fixedInitAlloc.of<Fixed<T>>(), fixedRelease.of<Fixed<T>>(), 2, 3, 8, 1, 3);
}

}  // namespace
