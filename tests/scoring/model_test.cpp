// Constants of Gaussian models.
#include "kels/model.h"

#include "support/elements.h"
#include "support/forms.h"
#include "support/overlap.h"
#include "support/rounding.h"

namespace {

constexpr auto kInverse = test::forms(kelsUpdateGConst_32f, kelsUpdateGConst_64f);
constexpr auto kDirect = test::forms(kelsUpdateGConst_DirectVar_32f, kelsUpdateGConst_DirectVar_64f);

template <class T>
class Determinants : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(Determinants, FloatTypes);

TYPED_TEST(Determinants, FirstElementWithoutLogarithmDecides) {
    using T = TypeParam;
    constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    constexpr T normal = std::numeric_limits<T>::min(), tiny = normal / 2;
    const struct {
        std::vector<T> v;
        KelStatus status;
        T det;
    } cases[] = {{{2, 0, -1}, kelStatusLogZero, inf},    {{2, -1, 0}, kelStatusLogNegative, nan},
                 {{-0.0, -1}, kelStatusLogZero, inf},    {{1, -tiny}, kelStatusLogZero, inf},
                 {{1, tiny, -1}, kelStatusLogZero, inf}, {{1, -normal}, kelStatusLogNegative, nan},
                 {{-inf}, kelStatusLogNegative, nan},    {{nan, 1}, kelStatusOk, nan},
                 {{nan, 0}, kelStatusLogZero, inf},      {{1, 1, 1, -3}, kelStatusLogNegative, nan}};
    for (const auto& c : cases) {
        for (const auto form : {kInverse.of<T>(), kDirect.of<T>()}) {
            T det = 5;
            EXPECT_EQ(form(c.v.data(), static_cast<int>(c.v.size()), &det), c.status);
            EXPECT_TRUE(test::sameBits(det, c.det)) << det << " instead of " << c.det;
        }
    }
}

TEST(Model, Constants) {
    const auto rounded = [](Kel32s weight, Kel32s det, auto...) {
        return test::saturated<Kel32s>(weight - std::floor((det + 1.0L) / 2));
    };
    test::expectElements(rounded, {}, kelsOutProbPreCalc_32s, kelsOutProbPreCalc_32s_I);
}

TEST(Model, ConstantsOfOverlappingArraysFollowOneAnother) {
    const auto constants = [](auto f) {
        return [=](const auto& p, int len) { EXPECT_EQ(f(p[0], p[1], p[2], len), 0); };
    };
    test::expectLoopWhereArraysOverlap<Kel32f, 3>(constants(kelsOutProbPreCalc_32f));
    test::expectLoopWhereArraysOverlap<Kel64f, 3>(constants(kelsOutProbPreCalc_64f));
    test::expectLoopWhereArraysOverlap<Kel32s, 3>(constants(kelsOutProbPreCalc_32s));
}

}  // namespace
