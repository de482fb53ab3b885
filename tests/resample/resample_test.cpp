#include "kels/resample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <memory>
#include <numeric>
#include <tuple>

#include "kels/core.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using LD = long double;
constexpr LD kPi = 3.141592653589793238462643383279502884L;
constexpr Kel64f kNaN = NAN, kInf = HUGE_VAL;

// ---- the functions by type -----------------------------------------------------------------------------------------

template <class T>
struct Of;
#define KELS_FORMS(TYPE, SUFFIX)                                                       \
    template <>                                                                        \
    struct Of<TYPE> {                                                                  \
        using General = KelResamplePolyphase##SUFFIX;                                  \
        using Fixed = KelResamplePolyphaseFixed##SUFFIX;                               \
        static constexpr auto init = kelsResamplePolyphaseInitAlloc##SUFFIX;           \
        static constexpr auto run = kelsResamplePolyphase##SUFFIX;                     \
        static constexpr auto release = kelsResamplePolyphaseFree##SUFFIX;             \
        static constexpr auto fixedInit = kelsResamplePolyphaseFixedInitAlloc##SUFFIX; \
        static constexpr auto fixedSize = kelsResamplePolyphaseFixedGetSize##SUFFIX;   \
        static constexpr auto fixedPlace = kelsResamplePolyphaseFixedInit##SUFFIX;     \
        static constexpr auto fixedRun = kelsResamplePolyphaseFixed##SUFFIX;           \
        static constexpr auto set = kelsResamplePolyphaseSetFixedFilter##SUFFIX;       \
        static constexpr auto get = kelsResamplePolyphaseGetFixedFilter##SUFFIX;       \
        static constexpr auto fixedRelease = kelsResamplePolyphaseFixedFree##SUFFIX;   \
    };
KELS_FORMS(Kel32f, _32f)
KELS_FORMS(Kel16s, _16s)

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
auto makeGeneral(Filter f, int hint = 0) {
    typename Of<T>::General* state = nullptr;
    EXPECT_EQ(Of<T>::init(&state, f.window, f.nStep, f.rollf, f.alpha, hint), kelStatusOk);
    return std::unique_ptr<typename Of<T>::General, decltype(Of<T>::release)>(state, Of<T>::release);
}
template <class T>
auto makeFixed(FixedFilter f) {
    typename Of<T>::Fixed* state = nullptr;
    EXPECT_EQ(Of<T>::fixedInit(&state, f.in, f.out, f.len, f.rollf, f.alpha, 0), kelStatusOk);
    return std::unique_ptr<typename Of<T>::Fixed, decltype(Of<T>::fixedRelease)>(state, Of<T>::fixedRelease);
}

// One filter weight in units of the samples, and what its storage may be off by.
LD windowedSinc(LD x, LD rollf, LD alpha, LD reach) {
    const LD sinc = x == 0 ? rollf : sinl(kPi * rollf * x) / (kPi * x);
    return sinc * std::cyl_bessel_il(0, alpha * sqrtl(std::max(0.0L, 1 - x * x / (reach * reach)))) /
           std::cyl_bessel_il(0, alpha);
}
template <class T>
void expectTap(T got, LD exact) {
    if constexpr (std::is_same_v<T, Kel16s>) {
        ASSERT_LE(fabsl(got - std::min(32768 * exact, 32767.0L)), 0.5L + 1e-9L);
    } else {
        ASSERT_LE(fabsl(got - exact), fabsl(exact) * 0x1p-24L + 1e-15L);
    }
}
// Runs `run(x, len, y, &count)` on a signal with nothing but the promised samples before and behind it, and compares each
// output with gain times the sum of weight(i, j) x[j]; magnitude(i, j) is at least the weight's size.
template <class T, class Run, class Weight, class Magnitude>
void expectSums(test::Random& random, int history, int len, std::size_t outputs, LD gain, Run run, Weight weight,
                Magnitude magnitude) {
    const test::Guarded<T> guarded(random.vector<T>(static_cast<std::size_t>(history + len), 2),
                                   history > 0 && random.between(0, 1) ? test::Edge::Begin : test::Edge::End);
    const T* const x = guarded.data() + history;
    test::Guarded<T> y(outputs);
    int n = -1;
    ASSERT_EQ(run(x, len, y.data(), &n), kelStatusOk);
    ASSERT_EQ(static_cast<std::size_t>(n), outputs);
    for (int i = 0; i < n; ++i) {
        LD sum = 0, parts = 0, terms = 0;
        for (int j = -history; j < len; ++j) {
            sum += gain * weight(i, j) * x[j];
            parts += gain * magnitude(i, j) * fabsl(x[j]);
            terms += magnitude(i, j) > 0;
        }
        const LD rounding = (2 * terms + 8) * 0x1p-24L * parts;
        if constexpr (std::is_same_v<T, Kel16s>) {
            ASSERT_LE(fabsl(y[i] - std::clamp(sum, -32768.0L, 32767.0L)), 0.5L + rounding) << i;
        } else {
            ASSERT_LE(fabsl(y[i] - sum), rounding) << i;
        }
    }
}
template <class T>
constexpr LD kUnit = std::is_same_v<T, Kel16s> ? 0x1p-15L : 1;  // of the weights

template <class T>
class Resample : public ::testing::Test {};
using Types = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Resample, Types);

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
            const auto state = makeGeneral<TypeParam>(f, hint);
            const int last = std::max(1, static_cast<int>(f.window * 0.5 * f.nStep));
            ASSERT_EQ(state->tableLen, last + 1);
            EXPECT_TRUE(state->nStep == f.nStep && state->invStep == 1.0f / static_cast<Kel32f>(f.nStep));
            EXPECT_TRUE(state->gain == 1 && state->flags == (hint == 2 ? 1 : 2));
            EXPECT_EQ(static_cast<void*>(state->pTable), state.get() + 1);
            const auto h = [&](int k) {
                return windowedSinc(static_cast<LD>(k) / f.nStep, f.rollf, f.alpha, static_cast<LD>(last) / f.nStep);
            };
            LD sum = h(0);
            for (int k = f.nStep; k <= last; k += f.nStep) sum += 2 * h(k);
            for (int k = 0; k <= last; ++k) expectTap(state->pTable[k], h(k) / sum);
            EXPECT_EQ(state->pTable[last + 1], state->pTable[last]);
        }
    }
}

template <class T>
void checkGeneral(const Filter& f, Kel64f factor, Kel64f start, int len, Kel32f norm, test::Random& random) {
    const auto state = makeGeneral<T>(f);
    state->gain = 1.25f;
    const int last = state->tableLen - 1;
    const LD scale = f.nStep * std::min(1.0L, static_cast<LD>(factor)), slack = 1e-5L * std::min(1.0L, scale);
    const auto timeOf = [&](int n) { return start + static_cast<LD>(n) / factor; };
    int outputs = 0;
    while ((len - 1 - timeOf(outputs)) * scale >= last - slack) ++outputs;
    // What `size` makes of the two points of the table around the place of x[j] and of how far between them it is.
    const auto between = [&](int i, int j, auto size) {
        const LD place = fabsl(timeOf(i) - j) * scale;
        if (place > last + slack) return 0.0L;
        const int k = static_cast<int>(place);
        return size(state->pTable[k] * kUnit<T>, state->pTable[k + 1] * kUnit<T>, place - k);
    };
    Kel64f time = start;
    expectSums<T>(
        random, std::max(0, -static_cast<int>(floorl(start - last / scale))), len, static_cast<std::size_t>(outputs),
        norm * (factor < 1 ? factor * state->gain : 1),
        [&](const T* x, int n, T* y, int* count) {
            return Of<T>::run(state.get(), x, n, y, factor, norm, &time, count);
        },
        [&](int i, int j) { return between(i, j, [](LD low, LD high, LD a) { return low + a * (high - low); }); },
        [&](int i, int j) { return between(i, j, [](LD a, LD b, LD) { return fabsl(a) + fabsl(b) + 1e-7L; }); });
    ASSERT_NEAR(time, static_cast<Kel64f>(timeOf(outputs)), 1e-12 * len);
}

TYPED_TEST(Resample, GeneralFormIsTheSumOverTheTable) {
    test::Random random;
    for (const Filter& f : kFilters) {
        for (const Kel64f factor :
             {1.0, 2.0, 1.5, 1.0884353741496598, 7.3, 0.5, 1 / 3.0, 0.9187, 0.61803398875, 0.2, 0.03}) {
            for (const Kel64f start : {0.0, 0.25, 30.3, -12.75}) {
                checkGeneral<TypeParam>(f, factor, start, random.between(1, 900), start < 1 ? 1 : 0.7f, random);
                if (::testing::Test::HasFatalFailure())
                    FAIL() << f.window << " " << f.nStep << " " << factor << " " << start;
            }
        }
    }
}

// ---- blocks --------------------------------------------------------------------------------------------------------

// `run(src, len, dst, &time, &n)` on a whole signal and on blocks of random lengths, moving on as the header says.
template <class T, class Run>
void checkBlocks(Run run, Kel64f reach, bool exact, unsigned seed) {
    test::Random random(seed);
    constexpr int kLen = 6000;
    const auto history = static_cast<int>(std::ceil(reach));
    auto x = random.vector<T>(history + kLen, 2);
    std::fill_n(x.begin(), history, T());
    std::vector<T> whole(24 * kLen), blocks(24 * kLen);
    Kel64f time = 0, wholeTime = 0;
    int n, wholeN, blocksN = 0;
    std::fesetround(FE_UPWARD);  // which must neither matter nor change
    run(test::Guarded<T>(x).data() + history, kLen, whole.data(), &wholeTime, &wholeN);
    const int mode = std::fegetround();
    std::fesetround(FE_TONEAREST);
    ASSERT_EQ(mode, FE_UPWARD);
    ASSERT_GT(wholeN, 0);
    int base = 0;  // of the block
    for (int end = 0; end < kLen;) {
        end = std::min(kLen, end + random.between(1, random.between(0, 3) ? 900 : 40));
        const int oldest = static_cast<int>(std::floor(time - reach));
        const test::Guarded<T> block(std::vector<T>(x.begin() + history + base + oldest, x.begin() + history + end));
        time -= oldest;
        base += oldest;
        run(block.data(), end - base, blocks.data() + blocksN, &time, &n);
        blocksN += n;
    }
    ASSERT_EQ(blocksN, wholeN);
    EXPECT_NEAR(time + base, wholeTime, 1e-8);
    const Kel64f allowed = std::is_same_v<T, Kel16s> ? 1 : 1e-6 * *std::max_element(x.begin(), x.end());
    for (std::size_t i = 0; i < static_cast<std::size_t>(wholeN); ++i) {
        ASSERT_LE(std::fabs(static_cast<Kel64f>(blocks[i]) - static_cast<Kel64f>(whole[i])), exact ? 0 : allowed) << i;
    }
}

TYPED_TEST(Resample, BlocksOfAnyLengthsGiveWhatOneCallGives) {
    using T = TypeParam;
    // Rows of one vector and more, and of more than the margins of sums; filters for a fraction that fit or do not.
    for (const Filter& f : {Filter{24, 64, 0.9f, 7}, Filter{9.3f, 10, 1, 2}, Filter{600, 4, 0.9f, 7}}) {
        const auto state = makeGeneral<T>(f);
        for (const Kel64f factor : {1.0, 2.0, 0.5, 0.25, 0.125, 8.0, 1 / 3.0, 160 / 147.0, 147 / 160.0, 0.7, 0.15,
                                    32 / 23.0, 16 / 15.0, 16 / 17.0, 0.5001, 0.61803398875, 1.61803398875}) {
            const Kel64f scale = f.nStep * std::min(1.0, factor);
            // 1 / factor a binary fraction: times, and places in a table of 2^n points, have no rounding.
            const bool exact = std::ldexp(1 / factor, 4) == std::floor(std::ldexp(1 / factor, 4));
            checkBlocks<T>([&](const T* x, int len, T* y, Kel64f* time,
                               int* n) { Of<T>::run(state.get(), x, len, y, factor, 0.3f, time, n); },
                           (state->tableLen - 1) / scale, exact, static_cast<unsigned>(factor * 1000));
            if (::testing::Test::HasFatalFailure()) FAIL() << factor;
        }
    }
    for (const FixedFilter& f : kFixedCases) {
        const auto state = makeFixed<T>(f);
        checkBlocks<T>([&](const T* x, int n, T* y, Kel64f* time,
                           int* count) { Of<T>::fixedRun(state.get(), x, n, y, 0.3f, time, count); },
                       f.len / 2.0, true, static_cast<unsigned>(f.out));  // phases are found exactly whatever the rates
        if (::testing::Test::HasFatalFailure()) FAIL() << f.in << " " << f.out;
    }
}

TEST(ResampleLong, AnHourKeepsItsTime) {
    // 48 kHz to about 100 Hz, a call for each output: where rounding would add up it has 350000 chances.
    const auto general = makeGeneral<Kel32f>({2.0f / 500, 500, 1, 1});
    const auto fixed = makeFixed<Kel32f>({48000, 101, 3});
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
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        const auto state = makeFixed<TypeParam>({in, out, len, 0.85f, 5});
        const int phases = out / std::gcd(in, out);
        const int taps = len + 1;
        std::vector<TypeParam> filters(static_cast<std::size_t>(phases * taps));
        ASSERT_EQ(Of<TypeParam>::get(state.get(), filters.data(), taps, phases), kelStatusOk);
        const LD stretch = std::min(1.0L, static_cast<LD>(out) / in);
        const auto weight = [&](int i) {
            const int p = i / taps, first = firstTap(p, len, phases);
            const int place = 2 * (p - (first + i % taps) * phases);
            if (std::abs(place) > len * phases) return 0.0L;
            return windowedSinc(stretch * place / (2 * phases), 0.85f, 5, len * stretch / 2);
        };
        LD sum = 0;
        for (int i = 0; i < phases * taps; ++i) sum += weight(i);
        for (int i = 0; i < phases * taps; ++i)
            expectTap(filters[static_cast<std::size_t>(i)], weight(i) * phases / sum);
        if (::testing::Test::HasFatalFailure()) FAIL() << in << " " << out;
    }
}

TYPED_TEST(Resample, FixedFormIsTheSumOverItsFilters) {
    using T = TypeParam;
    test::Random random;
    for (const auto& [in, out, len, rollf, alpha] : kFixedCases) {
        const auto state = makeFixed<T>({in, out, len});
        const int phases = out / std::gcd(in, out), down = in / std::gcd(in, out), taps = len + 1;
        const int reach = len * phases;  // of a filter, in halves of phases
        // Filters of one's own, so that nothing rests on symmetry.
        const auto filters = random.vector<T>(static_cast<std::size_t>(phases * taps), 2);
        ASSERT_EQ(Of<T>::set(state.get(), filters.data(), taps, phases), kelStatusOk);
        for (const int n : {1, len, 300}) {
            // A time off the grid counts as the nearest one.
            const int place = random.between(-40 * phases, phases * 3);
            Kel64f time = (place + random.uniform(-0.4, 0.4)) / phases;
            std::size_t outputs = 0;
            for (int at = place; 2 * at + reach <= 2 * phases * (n - 1); at += down) ++outputs;
            const auto weight = [&](int i, int j) {
                const int at = place + i * down, phase = (at % phases + phases) % phases,
                          k = j - firstTap(at, len, phases);
                return k < 0 || k >= taps ? 0 : kUnit<T> * filters[static_cast<std::size_t>(phase * taps + k)];
            };
            expectSums<T>(
                random, std::max(0, -firstTap(place, len, phases)), n, outputs, 0.4f,
                [&](const T* x, int length, T* y, int* count) {
                    return Of<T>::fixedRun(state.get(), x, length, y, 0.4f, &time, count);
                },
                weight, [&](int i, int j) { return fabsl(weight(i, j)); });
            if (::testing::Test::HasFatalFailure()) FAIL() << in << " " << out;
        }
    }
}

TYPED_TEST(Resample, FiltersAreExchangedUpToTheSmallerSize) {
    const auto state = makeFixed<TypeParam>({1, 3, 5});
    const auto read = [&](int len, int height) {
        std::vector<TypeParam> taps(static_cast<std::size_t>(len * height), 77);
        Of<TypeParam>::get(state.get(), taps.data(), len, height);
        return taps;
    };
    const TypeParam given[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    auto expected = read(6, 3);
    ASSERT_EQ(Of<TypeParam>::set(state.get(), given, 2, 2), kelStatusOk);
    expected[0] = 1, expected[1] = 2, expected[6] = 3, expected[7] = 4;
    EXPECT_EQ(read(6, 3), expected);
    const auto larger = read(8, 4);
    for (std::size_t i = 0; i < larger.size(); ++i)
        EXPECT_EQ(larger[i], i / 8 < 3 && i % 8 < 6 ? expected[i / 8 * 6 + i % 8] : 77) << i;
    ASSERT_EQ(Of<TypeParam>::set(state.get(), given, 5, 1), kelStatusOk);  // whole filters: the sixth tap becomes 0
    EXPECT_EQ(read(7, 1), (std::vector<TypeParam>{1, 2, 3, 4, 5, 0, 77}));
}

TYPED_TEST(Resample, StatesInTheCallersBufferMayMove) {
    using F = Of<TypeParam>;
    int bytes = 0, n;
    ASSERT_EQ(F::fixedSize(44100, 48000, 31, 0.9f, 6, 0, &bytes), kelStatusOk);
    test::Random random;
    const auto x = random.vector<TypeParam>(2000, 2);
    const auto run = [&](const typename F::Fixed* state) {
        std::vector<TypeParam> y(2300);
        Kel64f time = 20.25;
        F::fixedRun(state, x.data(), 2000, y.data(), 1, &time, &n);
        return y;
    };
    const auto expected = run(makeFixed<TypeParam>({44100, 48000, 31}).get());
    const std::size_t words = static_cast<std::size_t>(bytes + 3) / 4;
    for (std::size_t offset = 0; offset < 16; ++offset) {
        test::Guarded<Kel32s> buffer(offset + words), moved(words);
        auto* const state = reinterpret_cast<typename F::Fixed*>(buffer.data() + offset);
        auto* const other = reinterpret_cast<typename F::Fixed*>(moved.data());
        ASSERT_EQ(F::fixedPlace(state, 44100, 48000, 31, 0.9f, 6, 0), kelStatusOk);
        ASSERT_EQ(run(state), expected);
        std::memcpy(static_cast<void*>(other), state, static_cast<std::size_t>(bytes));
        ASSERT_EQ(run(other), expected);
    }
}

// ---- faults --------------------------------------------------------------------------------------------------------

constexpr Kel32f kLeast = 2 / 10.0f;
constexpr KelStatus kNull = kelStatusNullPtr, kSize = kelStatusSize, kBad = kelStatusBadArg,
                    kMemory = kelStatusAllocError;

const std::pair<KelStatus, Filter> kRefused[] = {
    {kSize, {0, 0, 0, 0}},         {kBad, {std::nextafter(kLeast, 0.0f), 10, 1, 1}},
    {kBad, {-1, 10, 0, 0}},        {kBad, {NAN, 10, 1, 1}},
    {kBad, {9, 9, 0, 0}},          {kBad, {9, 9, 1.0001f, 1}},
    {kBad, {9, 9, NAN, 1}},        {kBad, {9, 9, 1, 0.999f}},
    {kBad, {9, 9, 1, 701}},        {kBad, {9, 9, 1, NAN}},
    {kMemory, {1e10f, 2, 1, 1}},   {kMemory, {2e9f, 2, 1, 1}},
    {kMemory, {INFINITY, 2, 1, 1}}};
constexpr int kMost = INT32_MAX, kHuge = 1 << 29;
const std::pair<KelStatus, FixedFilter> kFixedRefused[] = {{kSize, {0, 1, 1, 0, 0}},
                                                           {kSize, {1, 0, 1, 0, 0}},
                                                           {kSize, {1, 1, 0, 0, 0}},
                                                           {kBad, {1, 1, 1, 0, 0}},
                                                           {kBad, {1, 1, 1, 1.0001f, 1}},
                                                           {kBad, {1, 1, 1, 1, 0.9f}},
                                                           {kBad, {1, 1, 1, 1, NAN}},
                                                           {kMemory, {kHuge + 1, kHuge, 3, 1, 1}},
                                                           {kMemory, {1, 1, kHuge, 1, 1}},
                                                           {kMemory, {1, 1, kMost, 1, 1}},
                                                           {kMemory, {kMost, kMost - 1, 1, 1, 1}}};

TYPED_TEST(Resample, DesignsThatAreRefused) {
    using F = Of<TypeParam>;
    typename F::General* g = nullptr;
    for (const auto& [status, f] : kRefused) {
        EXPECT_EQ(F::init(&g, f.window, f.nStep, f.rollf, f.alpha, 0), status) << f.window;
        EXPECT_EQ(F::init(nullptr, f.window, f.nStep, f.rollf, f.alpha, 0), kNull);
    }
    EXPECT_EQ(g, nullptr);
    EXPECT_NE(makeGeneral<TypeParam>({kLeast, 10, 1, 1}), nullptr);
    typename F::Fixed* f = nullptr;
    int bytes = -1;
    Kel64f buffer = 7;
    auto* const place = reinterpret_cast<typename F::Fixed*>(&buffer);
    for (const auto& [status, filter] : kFixedRefused) {
        const auto [in, out, len, rollf, alpha] = filter;
        EXPECT_EQ(F::fixedInit(&f, in, out, len, rollf, alpha, 0), status) << in << " " << len;
        EXPECT_EQ(F::fixedSize(in, out, len, rollf, alpha, 0, &bytes), status);
        EXPECT_EQ(F::fixedPlace(place, in, out, len, rollf, alpha, 0), status);
        EXPECT_EQ(F::fixedInit(nullptr, in, out, len, rollf, alpha, 0), kNull);
        EXPECT_EQ(F::fixedSize(in, out, len, rollf, alpha, 0, nullptr), kNull);
        EXPECT_EQ(F::fixedPlace(nullptr, in, out, len, rollf, alpha, 0), kNull);
    }
    EXPECT_TRUE(f == nullptr && bytes == -1 && buffer == 7);
}

TYPED_TEST(Resample, CallsThatAreRefusedOrGiveNothing) {
    using F = Of<TypeParam>;
    const auto state = makeGeneral<TypeParam>({4, 8, 1, 2});
    const auto fixed = makeFixed<TypeParam>({2, 3, 4});
    TypeParam x[20] = {}, y[40];
    std::fill_n(y, 40, TypeParam(5));
    Kel64f time = 3;
    int n = 99;
    for (const Kel64f factor : {0.0, -1.0, kNaN, kInf}) {
        EXPECT_EQ(F::run(state.get(), x, 20, y, factor, 1, &time, &n), kBad);
    }
    EXPECT_EQ(F::run(state.get(), x, 0, y, 1, 1, &time, &n), kBad);
    EXPECT_EQ(F::fixedRun(fixed.get(), x, 0, y, 1, &time, &n), kBad);
    for (const int size : {0, 1}) {
        EXPECT_EQ(F::set(fixed.get(), x, size, 1 - size), kSize);
        EXPECT_EQ(F::get(fixed.get(), y, size, 1 - size), kSize);
    }
    test::expectChecks<test::Places{-1, -1, 2}>({-8, kBad}, 1, F::fixedRun);
    test::expectNullChecks(F::run, F::set, F::get, F::release, F::fixedRelease);
    EXPECT_TRUE(time == 3 && n == 99);

    // A block that is too short, times that are none, a filter that is stretched beyond all numbers.
    for (const Kel64f t : {18.0, kNaN, kInf, -kInf, 1e300}) {
        time = t;
        int m = 99;
        EXPECT_EQ(F::run(state.get(), x, 20, y, 1, 1, &time, &(n = 99)), kelStatusOk);
        EXPECT_EQ(F::fixedRun(fixed.get(), x, 20, y, 1, &time, &m), kelStatusOk);
        EXPECT_TRUE(n == 0 && m == 0 && test::sameBits(time, t));
    }
    EXPECT_EQ(F::run(state.get(), x, 20, y, 5e-324, 1, &(time = 0), &n), kelStatusOk);
    EXPECT_EQ(n, 0);
    for (const TypeParam v : y) EXPECT_EQ(v, 5);
}

TYPED_TEST(Resample, FailedAllocationsLeaveNothing) {
    test::failEachAllocation([](int failing, const test::AllocationWatch& watch) {
        typename Of<TypeParam>::General* general = nullptr;
        typename Of<TypeParam>::Fixed* fixed = nullptr;
        const bool failed = Of<TypeParam>::init(&general, 8, 8, 1, 3, 0) == kMemory;
        const bool fixedFailed = Of<TypeParam>::fixedInit(&fixed, 2, 3, 8, 1, 3, 0) == kMemory;
        EXPECT_EQ(failed + fixedFailed, watch.calls() > failing);
        EXPECT_EQ(failed, general == nullptr);
        EXPECT_EQ(fixedFailed, fixed == nullptr);
        if (!failed) Of<TypeParam>::release(general);
        if (!fixedFailed) Of<TypeParam>::fixedRelease(fixed);
        EXPECT_EQ(watch.unreleased(), 0);
    });
}

}  // namespace
