// Frame conditioning against the formulas.
#include "kels/frame.h"

#include "support/support.h"

namespace {

using namespace test;

// What single precision has come to, in a 16-bit form truncated and saturated.
template <class T>
T stored(Kel32f v) {
    if constexpr (std::is_integral_v<T>) return saturated<T>(std::trunc(v));
    return static_cast<T>(v);
}

// ---- offset compensation -------------------------------------------------------------------------------------------

// first(y, x, before) is the first output, next(y, x, before) a later one; y and `before` precede it.
template <class T, class V, class First, class Next>
void checkOffset(KelStatus (*form)(const T*, T*, int, T*, T, V), V val, First first, Next next) {
    Random random(1);
    for (std::size_t len = 1; len < 70; ++len) {
        auto x = random.vector<T>(len);
        for (auto& s : x) s /= len % 2 ? 16 : 1;
        const T dstLast = random.value<T>(), srcLast = random.value<T>();
        std::vector<T> expected{first(val, dstLast, x[0], srcLast)};
        for (std::size_t n = 1; n < len; ++n) expected.push_back(next(val, expected[n - 1], x[n], x[n - 1]));
        std::vector<T> y(len), last{srcLast};
        EXPECT_EQ(form(x.data(), y.data(), static_cast<int>(len), last.data(), dstLast, val), kelStatusOk);
        EXPECT_EQ(y, expected) << val;
        EXPECT_EQ(last[0], x.back());
    }
}

TEST(OffsetCompensation, FollowsItsRecursions) {
    const auto first = [](float val, float y, float x, float before) { return val * y + x - before; };
    const auto first16 = [=](float val, float y, float x, float before) {
        return stored<Kel16s>(first(val, y, x, before));
    };
    const auto next = [](float val, float y, float x, float before) { return val * y + (x - before); };
    // Halves away from zero: 0.5 is added in single precision, or the sum is exact.
    const auto nearest = [&](float val, float y, float x, float before) {
        const float sum = next(val, y, x, before);
        return stored<Kel16s>(sum + std::copysign(0.5f, sum));
    };
    const auto nearestQ12 = [&](float val, int y, int x, int before) {
        if (std::fabs(val) > 1) return nearest(val, y, x, before);
        return saturated<Kel16s>(std::round(std::nearbyint(val * 4096.0L) * y / 4096.0L + (x - before)));
    };
    const auto exact = [](int valQ15, int y, int x, int before) {
        return saturated<Kel16s>(std::trunc(valQ15 * y / 32768.0L + (x - before)));
    };
    Random random(2);
    for (int round = 0; round < 8; ++round) {
        const double val = round % 2 ? random.between(-4096, 4096) / 4096.0 : random.uniform(-1.5, 1.5);
        const auto q15 = static_cast<Kel16s>(round ? random.between(0, 32767) : 32767);
        checkOffset(kelsCompensateOffset_32f, Kel32f(val), first, next);
        checkOffset(apart<kelsCompensateOffset_32f_I>, Kel32f(val), first, next);
        checkOffset(kelsCompensateOffset_16s, Kel32f(val), first16, nearestQ12);
        checkOffset(apart<kelsCompensateOffset_16s_I>, Kel32f(val), first16, nearest);
        checkOffset(kelsCompensateOffsetQ15_16s, q15, exact, exact);
        checkOffset(apart<kelsCompensateOffsetQ15_16s_I>, q15, exact, exact);
    }
}

// ---- zero mean, energy normalisation -------------------------------------------------------------------------------

TEST(ZeroMean, SubtractsTheNearestMean) {
    Random random(5);
    for (const int len : {1, 2, 3, 4, 7, 8, 17, 32, 33, 64, 100, 300001}) {
        for (const int range : {1, 2, 32767}) {  // 1 and 2: means on halves; all alike: a sum beyond 32 bits
            std::vector<Kel16s> x(len, static_cast<Kel16s>(-range - 1));
            for (int n = 0; n < len && len < 1000; ++n) x[n] = static_cast<Kel16s>(random.between(-range - 1, range));
            auto y = x;
            EXPECT_EQ(kelsZeroMean_16s(y.data(), len), kelStatusOk);
            long double sum = 0;
            for (const Kel16s s : x) sum += s;
            for (int n = 0; n < len; ++n) ASSERT_EQ(y[n], saturated<Kel16s>(x[n] - std::round(sum / len))) << len;
        }
    }
}

// `own` looks for the largest energy, `running` is told; `peak` is valShift, without it 1.
template <class T, class Own, class Running, class... Peak>
void checkEnergy(Own* own, Running* running, Peak... peak) {
    Random random(6);
    for (int height = 1; height < 50; ++height) {
        const int step = random.between(1, 4);
        const T silFloor = static_cast<T>(random.between(1, 32767)), maxE = random.value<T>();
        const Kel32f scale = height % 3 ? 0.1f : -5;
        auto x = random.vector<T>((height - 1) * step + 1);
        if (std::is_floating_point_v<T> && height > 2) x[step] = static_cast<T>(NAN);  // no maximum, and stays
        T largest = std::numeric_limits<T>::lowest();
        for (int k = 0; k < height; ++k) largest = x[k * step] > largest ? x[k * step] : largest;
        for (const bool told : {false, true}) {
            const Kel32f top = told ? maxE : largest, floor = top - 0.230259f * silFloor;
            auto expected = x;
            for (int k = 0; k < height; ++k) {
                const Kel32f e = x[k * step] < floor ? floor : x[k * step];
                expected[k * step] = stored<T>((sizeof...(peak) ? (0 + ... + peak) : 1) - (top - e) * scale);
            }
            auto y = x;
            const KelStatus status = told ? running(y.data(), step, height, silFloor, maxE, peak..., scale)
                                          : own(y.data(), step, height, silFloor, peak..., scale);
            EXPECT_EQ(status, kelStatusOk);
            for (int i = 0; i < std::ssize(x); ++i) EXPECT_TRUE(sameBits(y[i] * 1.0, expected[i] * 1.0));
        }
    }
}
TEST(NormEnergy, FollowsItsFormulaInSinglePrecision) {
    checkEnergy<Kel32f>(kelsNormEnergy_32f, kelsNormEnergy_RT_32f);
    checkEnergy<Kel16s>(kelsNormEnergy_16s, kelsNormEnergy_RT_16s, 7);
}

// ---- sign changes --------------------------------------------------------------------------------------------------

// The result is the sum of change(x[n], x[n + 1]).
template <class T, class R, class Change>
void checkSum(KelStatus (*count)(const T*, int, R*), const std::vector<T>& values, Change change) {
    Random random(7);
    for (int len : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 199, 1100003}) {
        std::vector<T> x(len);
        for (auto& v : x) v = values[random.between(0, values.size() - 1)];
        // More changes than a lane of 16 bits or a part of the sum counts.
        for (int n = 0; len > 199 && n < len; ++n) x[n] = T(n % 2 ? -1 : 1);
        double sum = 0;
        for (std::size_t n = 1; n < x.size(); ++n) sum += change(x[n - 1], x[n]);
        R result;
        EXPECT_EQ(count(x.data(), len, &result), kelStatusOk);
        EXPECT_EQ(result, static_cast<R>(sum)) << len;
    }
}

TEST(SignChanges, AreThePlainCounts) {
    const std::vector<Kel32f> floats{0, -0.0f, 1, -1, 1e-30f, -1e-30f, HUGE_VALF, -HUGE_VALF, NAN, -NAN, 3, -2};
    const std::vector<Kel16s> integers{0, 0, 1, -1, 32767, -32768, 300, -300};
    const auto negative = [](auto a, auto b) { return !(a * b >= 0); };
    const auto sgn = [](auto v) { return (v > 0) - (v < 0); };
    const auto half = [=](auto a, auto b) { return std::abs(sgn(b) - sgn(a)) / 2.0; };
    checkSum(kelsSignChangeRate_32f, floats, negative);
    checkSum(kelsSignChangeRate_16s, integers, negative);
    checkSum(kelsSignChangeRate_Count0_32f, floats, half);
    checkSum(kelsSignChangeRate_Count0_16s, integers, half);
    checkSum(kelsSignChangeRateXor_32f, floats, [](float a, float b) { return std::signbit(a) != std::signbit(b); });
}

// ---- padding -------------------------------------------------------------------------------------------------------

template <class T>
void checkPadding(KelStatus (*pad)(const T*, int, T*, int)) {
    Random random(8);
    for (int len = 1; len < 40; ++len) {
        const auto x = random.vector<T>(len);
        std::vector<T> y(len + random.between(0, 30), 1), expected = x;
        expected.resize(y.size());
        EXPECT_EQ(pad(x.data(), len, y.data(), static_cast<int>(y.size())), kelStatusOk);
        EXPECT_EQ(y, expected);
    }
}
TEST(CopyWithPadding, CopiesAndClears) {
    checkPadding(kelsCopyWithPadding_16s);
    checkPadding(kelsCopyWithPadding_32f);
}

}  // namespace
