// The general form: its table, and every output as a sum over it.
#include "resample/resample_forms.h"

namespace {

using namespace test;

template <class T>
class ResampleGeneral : public testing::Test {};
using SampleTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(ResampleGeneral, SampleTypes);

TYPED_TEST(ResampleGeneral, TableIsTheDesign) {
    for (const Filter& f : kFilters) {
        for (const int hint : {0, 1, 2, 7}) {
            const auto state = make<TypeParam>(f, hint);
            const int last = std::max(1, static_cast<int>(f.window * 0.5 * f.nStep));
            ASSERT_EQ(state->tableLen, last + 1);
            EXPECT_TRUE(state->nStep == f.nStep && state->invStep == 1.0f / static_cast<Kel32f>(f.nStep));
            EXPECT_TRUE(state->gain == 1 && state->flags == (hint == 2 ? 1 : 2));
            EXPECT_EQ(static_cast<void*>(state->pTable), state.get() + 1);
            const auto h = [&, n = Real(f.nStep)](int k) { return windowedSinc(k / n, f.rollf, f.alpha, last / n); };
            Real sum = h(0);
            for (int k = f.nStep; k <= last; k += f.nStep) sum += 2 * h(k);
            for (int k = 0; k <= last; ++k) expectTap(state->pTable[k], h(k) / sum);
            EXPECT_EQ(state->pTable[last + 1], state->pTable[last]);
        }
    }
}

// At every filter and factor, from times on, between and before the samples.
TYPED_TEST(ResampleGeneral, GeneralFormIsTheSumOverTheTable) {
    using T = TypeParam;
    Random random;
    const double factors[] = {1, 2, 1.5, 1.0884353741496598, 7.3, 0.5, 1 / 3.0, 0.9187, 0.61803398875, 0.2, 0.03};
    const double starts[] = {0, 0.25, 30.3, -12.75};
    for (int round = 0; round < 8 * 11 * 4; ++round) {
        const Filter& f = kFilters[round % 8];
        const double factor = factors[round / 8 % 11], start = starts[round / 88];
        SCOPED_TRACE(testing::Message() << f.window << " " << f.nStep << " " << factor << " " << start);
        const auto state = make<T>(f);
        state->gain = 1.25f;
        const Kel32f norm = start < 1 ? 1 : 0.7f;
        const int last = state->tableLen - 1, len = random.between(1, 900);
        const Real scale = f.nStep * std::min(1.0, factor), slack = 1e-5L * std::min(1.0L, scale);
        const auto timeOf = [&](int n) { return start + n / Real{factor}; };
        int outputs = 0;
        while ((len - 1 - timeOf(outputs)) * scale >= last - slack) ++outputs;
        // Between two points of the table.
        const auto weight = [&](int i, int j) {
            const Real place = fabsl(timeOf(i) - j) * scale;
            if (place > last + slack) return std::pair(0.0L, 0.0L);
            const int k = static_cast<int>(place);
            const Real low = state->pTable[k] * kUnit<T>, high = state->pTable[k + 1] * kUnit<T>;
            return std::pair(low + (place - k) * (high - low), fabsl(low) + fabsl(high) + 1e-7L);
        };
        Kel64f time = start;
        const int history = std::max(0, -static_cast<int>(floorl(start - last / scale)));
        expectSums<T>(
            random, history, len, outputs, norm * (factor < 1 ? factor * state->gain : 1),
            [&](const T* x, int n, T* y, int* count) {
                return runGeneral(state.get(), x, n, y, factor, norm, &time, count);
            },
            weight);
        ASSERT_NEAR(time, static_cast<Kel64f>(timeOf(outputs)), 1e-12 * len);
    }
}

// A block that is too short, times that are none, a filter that is stretched beyond all numbers.
TYPED_TEST(ResampleGeneral, GivesNothingWhereNoOutputLies) {
    using T = TypeParam;
    const auto state = make<T>(Filter{4, 8, 1, 2});
    const auto fixed = make<T>(FixedFilter{2, 3, 4});
    const T x[20] = {};
    T y[] = {5};
    for (const Kel64f t : {18.0, Kel64f(NAN), HUGE_VAL, -HUGE_VAL, 1e300}) {
        Kel64f time = t, zero = 0;
        int n = 99, m = 99, l = 99;
        EXPECT_EQ(runGeneral(state.get(), x, 20, y, 1, 1, &time, &n), 0);
        EXPECT_EQ(runFixed(fixed.get(), x, 20, y, 1, &time, &m), 0);
        EXPECT_EQ(runGeneral(state.get(), x, 20, y, 5e-324, 1, &zero, &l), 0);
        EXPECT_TRUE(n == 0 && m == 0 && l == 0 && sameBits(time, t) && y[0] == 5);
    }
}

}  // namespace
