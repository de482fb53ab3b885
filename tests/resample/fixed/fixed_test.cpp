// The fixed form: its filters, every output as a sum over them, and states in the caller's memory.
#include "resample/resample_forms.h"

namespace {

using namespace test;

template <class T>
class ResampleFixed : public testing::Test {};
using SampleTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(ResampleFixed, SampleTypes);

// The sample at which the filter of an output at place / phases begins.
int firstTap(int place, int len, int phases) {
    return static_cast<int>(ceill((2 * place - len * phases) / (2.0L * phases)));
}

TYPED_TEST(ResampleFixed, FixedFiltersAreTheDesignAtTheirPhases) {
    using T = TypeParam;
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        SCOPED_TRACE(testing::Message() << in << " " << out);
        const int phases = out / std::gcd(in, out), taps = len + 1;
        std::vector<T> filters(phases * taps);
        ASSERT_EQ(getFilter(make<T>(FixedFilter{in, out, len, 0.85f, 5}).get(), filters.data(), taps, phases), 0);
        const Real stretch = std::min<Real>(in, out) / in;
        const auto weight = [&](int i) {
            const int p = i / taps, place = 2 * (p - (firstTap(p, len, phases) + i % taps) * phases);
            if (std::abs(place) > len * phases) return 0.0L;
            return windowedSinc(stretch * place / (2 * phases), 0.85f, 5, len * stretch / 2);
        };
        Real sum = 0;
        for (int i = 0; i < phases * taps; ++i) sum += weight(i);
        for (int i = 0; i < phases * taps; ++i) expectTap(filters[i], weight(i) * phases / sum);
    }
}

// Of filters of the test's own, so that nothing rests on symmetry, and of those of the design.
TYPED_TEST(ResampleFixed, FixedFormIsTheSumOverItsFilters) {
    using T = TypeParam;
    Random random;
    std::vector<std::pair<FixedFilter, bool>> cases = {{{1, 2, 2100}, true}};  // longer than filters that are folded
    for (const FixedFilter& design : kFixedCases)
        for (const bool designed : {true, false}) cases.push_back({design, designed});
    for (const auto& [design, designed] : cases) {
        const auto& [in, out, len, rollf, alpha] = design;
        SCOPED_TRACE(testing::Message() << in << " " << out << (designed ? ", designed" : ""));
        const auto state = make<T>(FixedFilter{in, out, len});
        const int phases = out / std::gcd(in, out), down = in / std::gcd(in, out), taps = len + 1;
        auto filters = random.vector<T>(phases * taps, 2);
        if (designed) {
            getFilter(state.get(), filters.data(), taps, phases);
        } else {
            ASSERT_EQ(setFilter(state.get(), filters.data(), taps, phases), 0);
        }
        for (const int n : {1, len, 300}) {
            // A time off the grid counts as the nearest one.
            const int place = random.between(-40 * phases, phases * 3);
            Kel64f time = (place + random.uniform(-0.4, 0.4)) / phases;
            int outputs = 0;
            while (2 * (place + outputs * down) + len * phases <= 2 * phases * (n - 1)) ++outputs;
            const auto weight = [&](int i, int j) {
                const int at = place + i * down, phase = (at % phases + phases) % phases;
                const int k = j - firstTap(at, len, phases);
                const Real w = k < 0 || k >= taps ? 0 : kUnit<T> * filters[phase * taps + k];
                return std::pair(w, fabsl(w));
            };
            expectSums<T>(
                random, std::max(0, -firstTap(place, len, phases)), n, outputs, 0.4f,
                [&](auto* x, int xs, T* y, int* count) { return runFixed(state.get(), x, xs, y, 0.4f, &time, count); },
                weight);
        }
    }
}

TYPED_TEST(ResampleFixed, FiltersAreExchangedUpToTheSmallerSize) {
    using T = TypeParam;
    const auto state = make<T>(FixedFilter{1, 3, 5});
    const auto read = [&](int len, int height) {
        std::vector<T> taps(len * height, 77);
        getFilter(state.get(), taps.data(), len, height);
        return taps;
    };
    const T given[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    auto expected = read(6, 3);
    ASSERT_EQ(setFilter(state.get(), given, 2, 2), 0);
    expected[0] = 1, expected[1] = 2, expected[6] = 3, expected[7] = 4;
    EXPECT_EQ(read(6, 3), expected);
    const auto larger = read(8, 4);
    for (int i = 0; i < 32; ++i) EXPECT_EQ(larger[i], i < 24 && i % 8 < 6 ? expected[i / 8 * 6 + i % 8] : 77) << i;
    ASSERT_EQ(setFilter(state.get(), given, 5, 1), 0);  // all taps but the last one
    EXPECT_EQ(read(7, 1), (std::vector<T>{1, 2, 3, 4, 5, expected[5], 77}));
}

TYPED_TEST(ResampleFixed, SettingWhatWasGotChangesNothing) {
    using T = TypeParam;
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        const auto state = make<T>(FixedFilter{in, out, len});
        const int phases = out / std::gcd(in, out), taps = len + 1;
        std::vector<T> before(phases * taps), after(before);
        getFilter(state.get(), before.data(), taps, phases);
        const auto x = Random().vector<T>(len + 300, 2);
        const auto outputs = [&] {
            std::vector<T> y(25 * x.size());
            Kel64f time = len;
            int n = 0;
            EXPECT_EQ(runFixed(state.get(), x.data(), static_cast<int>(x.size()), y.data(), 1, &time, &n), 0);
            return y;
        };
        const std::vector<T> expected = outputs();
        for (int width = 1; width <= len + 2; ++width) {
            std::vector<T> some(phases * width);
            ASSERT_EQ(getFilter(state.get(), some.data(), width, phases), 0);
            ASSERT_EQ(setFilter(state.get(), some.data(), width, phases), 0);
            getFilter(state.get(), after.data(), taps, phases);
            ASSERT_EQ(after, before) << in << " to " << out << ", " << width << " of " << taps << " taps";
        }
        // And back from others.
        setFilter(state.get(), std::vector<T>(x.begin(), x.begin() + 5).data(), 1, std::min(phases, 5));
        EXPECT_NE(outputs(), expected);
        setFilter(state.get(), before.data(), taps, phases);
        EXPECT_EQ(outputs(), expected) << in << " to " << out;
    }
}

TYPED_TEST(ResampleFixed, StatesInTheCallersBufferMayMove) {
    using T = TypeParam;
    for (const auto& [in, out] : {std::pair(44100, 48000), {8000, 16000}}) {
        int bytes = 0, n;
        ASSERT_EQ(fixedSizeOf<T>(in, out, 31, 0.9f, 6, 0, &bytes), kelStatusOk);
        const auto x = Random().vector<T>(2000, 2);
        const auto run = [&](const void* state) {
            std::vector<T> y(4300);
            Kel64f time = 20.25;
            runFixed(static_cast<const Fixed<T>*>(state), x.data(), 2000, y.data(), 1, &time, &n);
            return y;
        };
        std::vector<Kel32s> buffer((bytes + 3) / 4);
        ASSERT_EQ(fixedInit(reinterpret_cast<Fixed<T>*>(buffer.data()), in, out, 31, 0.9f, 6, 0), 0);
        const std::vector<Kel32s> moved = buffer;
        const auto expected = run(make<T>(FixedFilter{in, out, 31}).get());
        EXPECT_EQ(run(buffer.data()), expected);
        EXPECT_EQ(run(moved.data()), expected);
    }
}

}  // namespace
