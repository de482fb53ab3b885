// Where two scores of vectors at the mean meet: floors, ties and values that are none.
#include <kels.h>

#include "support/forms.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr auto most = forms(kelsLogGaussMax_32f_D2, kelsLogGaussMax_64f_D2);
constexpr auto added = forms(kelsLogGaussAdd_32f_D2, kelsLogGaussAdd_64f_D2);
constexpr auto mixed = forms(kelsLogGaussMixture_32f_D2, kelsLogGaussMixture_64f_D2);
constexpr auto mostOfMany = forms(kelsLogGaussMaxMultiMix_32f_D2, kelsLogGaussMaxMultiMix_64f_D2);
constexpr auto addedOfMany = forms(kelsLogGaussAddMultiMix_32f_D2, kelsLogGaussAddMultiMix_64f_D2);

template <class T>
class MeetingScores : public ::testing::Test {};
using FloatTypes = ::testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(MeetingScores, FloatTypes);

TYPED_TEST(MeetingScores, KeepFloorsTiesAndNaN) {
    using T = TypeParam;
    constexpr bool wide = sizeof(T) == 8;
    constexpr auto zero = static_cast<T>(wide ? -1e10 : -4500000.0), below = static_cast<T>(3 * zero);
    constexpr auto equal = static_cast<T>(wide ? 0.6931471805599475 : 0.6931471827215062);
    constexpr T nan = std::numeric_limits<T>::quiet_NaN();
    const struct {
        T a, b, sum;
    } cases[] = {{zero, T(-7.25), T(-7.25)},
                 {T(-7.25), zero, T(-7.25)},
                 {below, 2 * zero, zero},
                 {T(0.95L * zero), below, wide ? zero : T(0.95L * zero)},
                 {0, 0, equal},
                 {below, below, below + equal},
                 {zero, zero, zero + equal},
                 {T(0.0), T(-0.0), equal},
                 {T(-0.0), T(0.0), equal},
                 {nan, T(-7.25), nan},
                 {T(-7.25), nan, nan}};
    for (const auto& [a, b, sum] : cases) {
        const T x[10] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, both[] = {a, b};
        T results[] = {a, a, 7, a, a};
        EXPECT_EQ(most(x, 5, x, x, 5, &results[0], 1, b), kelStatusOk);
        EXPECT_EQ(added(x, 5, x, x, 5, &results[1], 1, b), kelStatusOk);
        EXPECT_EQ(mixed(x, x, x, 2, 5, 5, both, &results[2]), kelStatusOk);
        EXPECT_EQ(mostOfMany(x, x, 5, x, 5, &b, &results[3], 1), kelStatusOk);
        EXPECT_EQ(addedOfMany(x, x, 5, x, 5, &b, &results[4], 1), kelStatusOk);
        for (const int k : {1, 2, 4}) EXPECT_TRUE(sameBits(results[k], sum)) << k << ": " << a << ' ' << b;
        // Of equal values, zeros of both signs among them, the maximum is the score.
        for (const int k : {0, 3}) EXPECT_TRUE(sameBits(results[k], a <= b ? b : a)) << k << ": " << a << ' ' << b;
    }
}

}  // namespace
