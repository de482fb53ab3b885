#include "kels/resample.h"

#include <memory>
#include <numeric>
#include <tuple>

#include "support/support.h"

namespace {

using namespace test;
const Real kPi = std::acos(-1.0L);

// A function, and the states, by the element type T.
#define F(name) \
    std::get<sizeof(T) == 2>(std::tuple(&kelsResamplePolyphase##name##_32f, &kelsResamplePolyphase##name##_16s))
template <class T>
using General = std::conditional_t<sizeof(T) == 2, KelResamplePolyphase_16s, KelResamplePolyphase_32f>;
template <class T>
using Fixed = std::conditional_t<sizeof(T) == 2, KelResamplePolyphaseFixed_16s, KelResamplePolyphaseFixed_32f>;
template <class T>
constexpr bool kInteger = std::is_integral_v<T>;
template <class T>
constexpr Real kUnit = kInteger<T> ? 0x1p-15L : 1;  // of the weights

struct Filter {
    Kel32f window;
    int nStep;
    Kel32f rollf, alpha;
};
struct FixedFilter {
    int in, out, len;
    Kel32f rollf = 0.9f, alpha = 6;
};
template <class T>
auto make(const Filter& f, int hint = 0) {
    General<T>* state = nullptr;
    EXPECT_EQ(F(InitAlloc)(&state, f.window, f.nStep, f.rollf, f.alpha, hint), 0);
    return std::unique_ptr<General<T>, KelStatus (*)(General<T>*)>(state, F(Free));
}
template <class T>
auto make(const FixedFilter& f) {
    Fixed<T>* state = nullptr;
    EXPECT_EQ(F(FixedInitAlloc)(&state, f.in, f.out, f.len, f.rollf, f.alpha, 0), 0);
    return std::unique_ptr<Fixed<T>, KelStatus (*)(Fixed<T>*)>(state, F(FixedFree));
}

// One filter weight in units of the samples, and what its storage may be off by.
Real windowedSinc(Real x, Real rollf, Real alpha, Real reach) {
    const Real sinc = x == 0 ? rollf : sinl(kPi * rollf * x) / (kPi * x);
    return sinc * std::cyl_bessel_il(0, alpha * sqrtl(std::max(0.0L, 1 - x * x / (reach * reach)))) /
           std::cyl_bessel_il(0, alpha);
}
template <class T>
void expectTap(T got, Real exact) {
    if (kInteger<T>) exact = std::min(32768 * exact, 32767.0L);
    ASSERT_TRUE(near(got, exact, kInteger<T> ? 0.5L + 1e-9L : fabsl(exact) * 0x1p-24L + 1e-15L));
}
// Runs `run(x, len, y, &count)` on a signal with nothing but the promised samples before and behind it, and compares each
// output with gain times the sum of w x[j]; weight(i, j) gives w and something of at least its size.
template <class T, class Run, class Weight>
void expectSums(Random& random, int history, int len, int outputs, Real gain, Run run, Weight weight) {
    const Guarded<T> guarded(random.vector<T>(history + len, 2), Edge(history > 0 && random.between(0, 1)));
    const T* const x = guarded.data() + history;
    Guarded<T> y(outputs);
    int n = -1;
    ASSERT_EQ(run(x, len, y.data(), &n), 0);
    ASSERT_EQ(n, outputs);
    for (int i = 0; i < n; ++i) {
        Real sum = 0, parts = 0, terms = 0;
        for (int j = -history; j < len; ++j) {
            const auto [w, magnitude] = weight(i, j);
            sum += gain * w * x[j];
            parts += gain * magnitude * fabsl(x[j]);
            terms += magnitude > 0;
        }
        if (kInteger<T>) sum = std::clamp(sum, -32768.0L, 32767.0L);
        ASSERT_TRUE(near(y[i], sum, (2 * terms + 8) * 0x1p-24L * parts + (kInteger<T> ? 0.5L : 0))) << i;
    }
}
template <class T>
class Resample : public testing::Test {};
using SampleTypes = testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Resample, SampleTypes);

// ---- general form --------------------------------------------------------------------------------------------------

const Filter kFilters[] = {{16, 32, 0.9f, 6},   {7.5f, 16, 1, 1},     {2.0f / 16, 16, 0.5f, 3},
                           {10.3f, 7, 0.8f, 2}, {3, 1, 0.95f, 1.5f},  {40, 100, 0.95f, 10},
                           {1, 5, 1, 4},        {2.0f / 41, 41, 1, 1}};

const FixedFilter kFixedCases[] = {{1, 1, 8},          {8000, 16000, 33},  {16000, 8000, 48}, {48000, 16000, 91},
                                   {44100, 48000, 32}, {48000, 44100, 35}, {7, 5, 1},         {3, 70, 20},
                                   {50, 3, 7},         {2, 3, 2}};

TYPED_TEST(Resample, TableIsTheDesign) {
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
TYPED_TEST(Resample, GeneralFormIsTheSumOverTheTable) {
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
            [&](const T* x, int n, T* y, int* count) { return F()(state.get(), x, n, y, factor, norm, &time, count); },
            weight);
        ASSERT_NEAR(time, static_cast<Kel64f>(timeOf(outputs)), 1e-12 * len);
    }
}

// ---- blocks --------------------------------------------------------------------------------------------------------

// `run(src, len, dst, &time, &n)` on a whole signal and on blocks of random lengths, moving on as the header says.
template <class T, class Run>
void expectBlocks(Run run, Kel64f reach, bool exact, unsigned seed) {
    Random random(seed);
    constexpr int kLen = 6000;
    const auto history = static_cast<int>(std::ceil(reach));
    auto x = random.vector<T>(history + kLen, 2);
    std::fill_n(x.begin(), history, T());
    std::vector<T> whole(24 * kLen), blocks(24 * kLen);
    Kel64f time = 0, wholeTime = 0;
    int n, wholeN, blocksN = 0, base = 0;
    std::fesetround(FE_UPWARD);  // which must neither matter nor change
    run(Guarded<T>(x).data() + history, kLen, whole.data(), &wholeTime, &wholeN);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    std::fesetround(FE_TONEAREST);
    for (int end = 0; end < kLen; blocksN += n) {
        end = std::min(kLen, end + random.between(1, random.between(0, 3) ? 900 : 40));
        const int oldest = static_cast<int>(std::floor(time - reach));
        const Guarded<T> block(std::vector<T>(x.begin() + history + base + oldest, x.begin() + history + end));
        time -= oldest;
        base += oldest;
        run(block.data(), end - base, blocks.data() + blocksN, &time, &n);
    }
    ASSERT_TRUE(blocksN == wholeN && wholeN > 0);
    EXPECT_NEAR(time + base, wholeTime, 1e-8);
    const Real allowed = exact ? 0 : kInteger<T> ? 1 : 1e-6L * *std::max_element(x.begin(), x.end());
    for (int i = 0; i < wholeN; ++i) ASSERT_TRUE(near(blocks[i], whole[i], allowed)) << i;
}

TYPED_TEST(Resample, BlocksOfAnyLengthsGiveWhatOneCallGives) {
    using T = TypeParam;
    // Rows of one vector and more, and of more than the margins of sums; filters for a fraction that fit or do not.
    for (const Filter& f : {Filter{24, 64, 0.9f, 7}, {9.3f, 10, 1, 2}, {600, 4, 0.9f, 7}}) {
        const auto state = make<T>(f);
        for (const Kel64f factor : {1.0, 2.0, 0.5, 0.25, 0.125, 8.0, 1 / 3.0, 160 / 147.0, 147 / 160.0, 0.7, 0.15,
                                    32 / 23.0, 16 / 15.0, 16 / 17.0, 0.5001, 0.61803398875, 1.61803398875}) {
            SCOPED_TRACE(factor);
            const Kel64f reach = (state->tableLen - 1) / (f.nStep * std::min(1.0, factor));
            // 1 / factor a binary fraction: times, and places in a table of 2^n points, have no rounding.
            const bool exact = std::fmod(16 / factor, 1) == 0;
            const auto run = [&](const T* x, int len, T* y, Kel64f* time, int* n) {
                return F()(state.get(), x, len, y, factor, 0.3f, time, n);
            };
            expectBlocks<T>(run, reach, exact, static_cast<unsigned>(factor * 1000));
        }
    }
    for (const FixedFilter& f : kFixedCases) {
        SCOPED_TRACE(testing::Message() << f.in << " " << f.out);
        const auto state = make<T>(f);
        const auto run = [&](const T* x, int len, T* y, Kel64f* time, int* n) {
            return F(Fixed)(state.get(), x, len, y, 0.3f, time, n);
        };
        expectBlocks<T>(run, f.len / 2.0, true, static_cast<unsigned>(f.out));  // phases are found exactly
    }
}

TEST(ResampleLong, AnHourKeepsItsTime) {
    // 48 kHz to about 100 Hz, a call for each output: where rounding would add up it has 350000 chances.
    const auto general = make<Kel32f>(Filter{2.0f / 500, 500, 1, 1});
    const auto fixed = make<Kel32f>(FixedFilter{48000, 101, 3});
    const std::vector<Kel32f> x(600);
    std::vector<Kel32f> y(8);
    const auto walk = [&](auto run) {
        Kel64f time = 10;
        int64_t base = 0, count = 0;
        for (int n; base < 3600 * 48000; count += n) {
            run(&time, &n);
            const Kel64f whole = std::floor(time) - 10;
            time -= whole;
            base += static_cast<int64_t>(whole);
        }
        return std::tuple(base, time, count);
    };
    const Kel64f factor = 1 / 477.7;
    const auto [base, time, count] = walk(
        [&](Kel64f* t, int* n) { kelsResamplePolyphase_32f(general.get(), x.data(), 480, y.data(), factor, 1, t, n); });
    EXPECT_NEAR(static_cast<Kel64f>(base) + time, 10 + static_cast<Kel64f>(count) / factor, 1e-6);
    const auto [fixedBase, fixedTime, fixedCount] =
        walk([&](Kel64f* t, int* n) { kelsResamplePolyphaseFixed_32f(fixed.get(), x.data(), 480, y.data(), 1, t, n); });
    // At a multiple of 1/101, rounded once as a time of up to 600.
    const int64_t place = 10 * 101 + fixedCount * 48000 - fixedBase * 101;
    EXPECT_NEAR(fixedTime, static_cast<Kel64f>(place) / 101, 0x1p-43);
}

// ---- fixed form ----------------------------------------------------------------------------------------------------

// The sample at which the filter of an output at place / phases begins.
int firstTap(int place, int len, int phases) {
    return static_cast<int>(ceill((2 * place - len * phases) / (2.0L * phases)));
}

TYPED_TEST(Resample, FixedFiltersAreTheDesignAtTheirPhases) {
    using T = TypeParam;
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        SCOPED_TRACE(testing::Message() << in << " " << out);
        const int phases = out / std::gcd(in, out), taps = len + 1;
        std::vector<T> filters(phases * taps);
        ASSERT_EQ(F(GetFixedFilter)(make<T>(FixedFilter{in, out, len, 0.85f, 5}).get(), filters.data(), taps, phases),
                  0);
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

// The filters are the test's own, so that nothing rests on symmetry.
TYPED_TEST(Resample, FixedFormIsTheSumOverItsFilters) {
    using T = TypeParam;
    Random random;
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        SCOPED_TRACE(testing::Message() << in << " " << out);
        const auto state = make<T>(FixedFilter{in, out, len});
        const int phases = out / std::gcd(in, out), down = in / std::gcd(in, out), taps = len + 1;
        const auto filters = random.vector<T>(phases * taps, 2);
        ASSERT_EQ(F(SetFixedFilter)(state.get(), filters.data(), taps, phases), 0);
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
                [&](auto* x, int xs, T* y, int* count) { return F(Fixed)(state.get(), x, xs, y, 0.4f, &time, count); },
                weight);
        }
    }
}

TYPED_TEST(Resample, FiltersAreExchangedUpToTheSmallerSize) {
    using T = TypeParam;
    const auto state = make<T>(FixedFilter{1, 3, 5});
    const auto read = [&](int len, int height) {
        std::vector<T> taps(len * height, 77);
        F(GetFixedFilter)(state.get(), taps.data(), len, height);
        return taps;
    };
    const T given[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    auto expected = read(6, 3);
    ASSERT_EQ(F(SetFixedFilter)(state.get(), given, 2, 2), 0);
    expected[0] = 1, expected[1] = 2, expected[6] = 3, expected[7] = 4;
    EXPECT_EQ(read(6, 3), expected);
    const auto larger = read(8, 4);
    for (int i = 0; i < 32; ++i) EXPECT_EQ(larger[i], i < 24 && i % 8 < 6 ? expected[i / 8 * 6 + i % 8] : 77) << i;
    ASSERT_EQ(F(SetFixedFilter)(state.get(), given, 5, 1), 0);  // all taps but the last one
    EXPECT_EQ(read(7, 1), (std::vector<T>{1, 2, 3, 4, 5, expected[5], 77}));
}

TYPED_TEST(Resample, SettingWhatWasGotChangesNothing) {
    using T = TypeParam;
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        const auto state = make<T>(FixedFilter{in, out, len});
        const int phases = out / std::gcd(in, out), taps = len + 1;
        std::vector<T> before(phases * taps), after(before);
        F(GetFixedFilter)(state.get(), before.data(), taps, phases);
        for (int width = 1; width <= len + 2; ++width) {
            std::vector<T> some(phases * width);
            ASSERT_EQ(F(GetFixedFilter)(state.get(), some.data(), width, phases), 0);
            ASSERT_EQ(F(SetFixedFilter)(state.get(), some.data(), width, phases), 0);
            F(GetFixedFilter)(state.get(), after.data(), taps, phases);
            ASSERT_EQ(after, before) << in << " to " << out << ", " << width << " of " << taps << " taps";
        }
    }
}

TYPED_TEST(Resample, StatesInTheCallersBufferMayMove) {
    using T = TypeParam;
    int bytes = 0, n;
    ASSERT_EQ(F(FixedGetSize)(44100, 48000, 31, 0.9f, 6, 0, &bytes), 0);
    const auto x = Random().vector<T>(2000, 2);
    const auto run = [&](const void* state) {
        std::vector<T> y(2300);
        Kel64f time = 20.25;
        F(Fixed)(static_cast<const Fixed<T>*>(state), x.data(), 2000, y.data(), 1, &time, &n);
        return y;
    };
    const auto expected = run(make<T>(FixedFilter{44100, 48000, 31}).get());
    const int words = (bytes + 3) / 4;
    for (int offset = 0; offset < 16; ++offset) {
        Guarded<Kel32s> buffer(offset + words), moved(words);
        Kel32s* const state = buffer.data() + offset;
        ASSERT_EQ(F(FixedInit)(reinterpret_cast<Fixed<T>*>(state), 44100, 48000, 31, 0.9f, 6, 0), 0);
        ASSERT_EQ(run(state), expected);
        std::copy_n(state, words, moved.data());
        ASSERT_EQ(run(moved.data()), expected);
    }
}

// ---- faults --------------------------------------------------------------------------------------------------------

constexpr KelStatus kSize = kelStatusSize, kBad = kelStatusBadArg, kMemory = kelStatusAllocError;

template <class T>
KelStatus fixedSize(int* bytes, int in, int out, int len, Kel32f rollf, Kel32f alpha, int hint) {
    return F(FixedGetSize)(in, out, len, rollf, alpha, hint, bytes);
}

TYPED_TEST(Resample, DesignsThatAreRefused) {
    using T = TypeParam;
    const Kel32f least = 2 / 10.0f;  // window
    expectChecks<Places{-1, -1, 2}>({-8, kSize}, 1, F(InitAlloc));
    expectSteps(F(InitAlloc), {0, -1, 10, 1, 1}, {{1, NAN, kBad}, {1, std::nextafter(least, 0.0f), kBad}});
    expectSteps(F(InitAlloc), {0, 9, 9, 0, 1}, {{3, 0, kBad}, {3, 1.0001, kBad}, {3, NAN, kBad}});
    expectSteps(F(InitAlloc), {0, 1e10, 2, 1, 1}, {{4, 0.999, kBad}, {4, 701, kBad}, {4, NAN, kBad}, {4, 1, kMemory}});
    expectSteps(F(InitAlloc), {0, 0, 2, 1, 1}, {{1, 2e9, kMemory}, {1, HUGE_VAL, kMemory}});
    EXPECT_NE(make<T>(Filter{least, 10, 1, 1}), nullptr);
    const auto expect = [](auto* f) {
        const double most = INT_MAX, huge = 1 << 29;
        expectChecks<Places{-1, 2, 1}>({-8, kSize}, 1, f);
        expectSteps(f, {0, 1, 1, 1}, {{1, 0, kSize}, {1, 1, kBad}, {2, 0, kSize}, {2, 1, kBad}, {3, 0, kSize}});
        expectSteps(f, {0, 1, 1, huge, 0, 1}, {{4, 0, kBad}, {4, 1.0001, kBad}, {4, 1, kMemory}, {3, most, kMemory}});
        expectSteps(f, {0, 1, 1, huge, 1, 0}, {{5, 0.9, kBad}, {5, NAN, kBad}, {5, 1, kMemory}});
        expectSteps(f, {0, huge + 1, huge, 0, 1, 1}, {{3, 3, kMemory}});
        expectSteps(f, {0, most, most - 1, 0, 1, 1}, {{3, 1, kMemory}});
    };
    expect(F(FixedInitAlloc));
    expect(F(FixedInit));
    expect(fixedSize<T>);
}

TYPED_TEST(Resample, CallsThatAreRefusedOrGiveNothing) {
    using T = TypeParam;
    expectNullChecks(F(Free), F(FixedFree));
    expectChecks<Places{-1, -1, 2}>({-8, kBad}, 1, F(), F(Fixed));
    expectSteps(F(), {0, 0, 20, 0, 1, 1}, {{4, 0, kBad}, {4, -1, kBad}, {4, NAN, kBad}, {4, HUGE_VAL, kBad}});
    expectSteps(F(), {0, 0, 0, 0, 1, 1}, {{2, 0, kBad}});
    expectChecks<Places{-1, 2, 3}>({-8, kSize}, 1, F(SetFixedFilter), F(GetFixedFilter));

    // A block that is too short, times that are none, a filter that is stretched beyond all numbers.
    const auto state = make<T>(Filter{4, 8, 1, 2});
    const auto fixed = make<T>(FixedFilter{2, 3, 4});
    const T x[20] = {};
    T y[] = {5};
    for (const Kel64f t : {18.0, Kel64f(NAN), HUGE_VAL, -HUGE_VAL, 1e300}) {
        Kel64f time = t;
        int n = 99, m = 99;
        EXPECT_EQ(F()(state.get(), x, 20, y, 1, 1, &time, &n), 0);
        EXPECT_EQ(F(Fixed)(fixed.get(), x, 20, y, 1, &time, &m), 0);
        EXPECT_TRUE(n == 0 && m == 0 && sameBits(time, t));
        EXPECT_EQ(F()(state.get(), x, 20, y, 5e-324, 1, &(time = 0), &(n = 99)), 0);
        EXPECT_TRUE(n == 0 && y[0] == 5);
    }
}

TYPED_TEST(Resample, FailedAllocationsLeaveNothing) {
    using T = TypeParam;
    const auto expect = [](auto* state, auto init, auto release, auto... design) {
        failEachAllocation([&](int failing, const AllocationWatch& watch) {
            state = nullptr;
            const KelStatus status = init(&state, design..., 0);
            EXPECT_EQ(status, watch.calls() > failing ? kMemory : 0);
            EXPECT_EQ(release(state), state == nullptr ? -8 : 0);
            EXPECT_EQ(watch.unreleased(), 0);
        });
    };
    expect((General<T>*){}, F(InitAlloc), F(Free), 8, 8, 1, 3);
    expect((Fixed<T>*){}, F(FixedInitAlloc), F(FixedFree), 2, 3, 8, 1, 3);
}

}  // namespace
