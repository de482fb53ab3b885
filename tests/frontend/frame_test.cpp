#include "kels/frame.h"

#include <climits>

#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Edge;
using test::Guarded;
using test::Random;

Kel16s clamp16(long double v) {
    return static_cast<Kel16s>(std::clamp(v, -32768.0L, 32767.0L));
}

// ---- offset compensation

template <class T, class V>
struct Compensation {
    KelStatus (*form)(const T*, T*, int, T*, T, V);
    KelStatus (*inPlace)(T*, int, T*, T, V);

    // The outputs of both forms.
    std::pair<std::vector<T>, std::vector<T>> operator()(const std::vector<T>& x, T srcLast, T dstLast, V val) const {
        const int len = static_cast<int>(x.size());
        const Guarded<T> src(x, len % 2 == 0 ? Edge::End : Edge::Begin);
        Guarded<T> y(x.size()), both(x), last{srcLast}, lastOfBoth{srcLast};
        EXPECT_EQ(form(src.data(), y, len, last, dstLast, val), kelStatusOk);
        EXPECT_EQ(inPlace(both, len, lastOfBoth, dstLast, val), kelStatusOk);
        EXPECT_EQ(last[0], x.back());
        EXPECT_EQ(lastOfBoth[0], x.back());
        return {y.vector(), both.vector()};
    }
};
const Compensation<Kel32f, Kel32f> kFloats{kelsCompensateOffset_32f, kelsCompensateOffset_32f_I};
const Compensation<Kel16s, Kel32f> kIntegers{kelsCompensateOffset_16s, kelsCompensateOffset_16s_I};
const Compensation<Kel16s, Kel16s> kQ15{kelsCompensateOffsetQ15_16s, kelsCompensateOffsetQ15_16s_I};

TEST(OffsetCompensation, FloatFormIsTheSequentialSum) {
    Random random(1);
    for (std::size_t len = 1; len < 70; ++len) {
        const auto x = random.vector<Kel32f>(len);
        const Kel32f val = static_cast<Kel32f>(random.uniform(-1.5, 1.5)), dstLast = random.value<Kel32f>();
        const Kel32f srcLast = random.value<Kel32f>();
        std::vector<Kel32f> expected{val * dstLast + x[0] - srcLast};
        for (std::size_t n = 1; n < len; ++n) expected.push_back(val * expected.back() + (x[n] - x[n - 1]));
        const auto [y, inPlace] = kFloats(x, srcLast, dstLast, val);
        EXPECT_TRUE(test::sameBits(y, expected));
        EXPECT_TRUE(test::sameBits(inPlace, expected));
    }
}

Kel16s nearest(long double v) {
    return clamp16(std::round(v));  // halves away from zero
}

TEST(OffsetCompensation, SixteenBitFormsInEveryRoundingMode) {
    Random random(2);
    for (int round = 0; round < 400; ++round) {
        const bool fine = round % 3 == 0, beyondOne = round % 3 == 1;
        const auto val = beyondOne ? static_cast<Kel32f>(random.uniform(1.0001, 1.5)) * (round % 2 == 0 ? 1 : -1)
                         : fine    ? static_cast<Kel32f>(random.uniform(-1, 1))
                                   : static_cast<Kel32f>(random.between(-4096, 4096)) / 4096;
        auto x = random.vector<Kel16s>(static_cast<std::size_t>(random.between(1, 60)));
        if (round % 2 == 0) {
            for (auto& s : x) s = static_cast<Kel16s>(s / 16);
        }
        const auto dstLast = random.value<Kel16s>(), srcLast = random.value<Kel16s>();
        std::pair<std::vector<Kel16s>, std::vector<Kel16s>> outputs;
        test::inEveryRoundingMode(
            [&] { outputs = kIntegers(x, srcLast, dstLast, val); },
            [&] {
                const auto& [y, inPlace] = outputs;
                const Kel16s first = clamp16(std::trunc(val * dstLast + Kel32f(x[0]) - Kel32f(srcLast)));
                EXPECT_EQ(y[0], first);
                EXPECT_EQ(inPlace[0], first);
                for (std::size_t n = 1; n < x.size(); ++n) {
                    const int step = x[n] - x[n - 1];
                    EXPECT_EQ(inPlace[n], nearest(val * inPlace[n - 1] + static_cast<Kel32f>(step)));
                    const Kel16s single = nearest(val * y[n - 1] + static_cast<Kel32f>(step));
                    EXPECT_EQ(y[n],
                              beyondOne ? single : nearest(std::nearbyint(val * 4096.0L) * y[n - 1] / 4096 + step));
                    EXPECT_LE(std::abs(y[n] - single), 1 + (fine ? std::abs(y[n - 1]) / 8192.0 : 0.0));
                }
            });
    }
}

TEST(OffsetCompensation, Q15IsExact) {
    Random random(4);
    for (std::size_t len = 1; len < 60; ++len) {
        const auto x = random.vector<Kel16s>(len);
        const auto valQ15 = static_cast<Kel16s>(random.between(0, 1) ? random.between(0, 32767) : 32767);
        const auto srcLast = random.value<Kel16s>(), dstLast = random.value<Kel16s>();
        std::vector<Kel16s> expected;
        Kel16s before = srcLast, out = dstLast;
        for (const Kel16s s : x) {
            out = clamp16((int64_t{s - before} * 32768 + int64_t{out} * valQ15) / 32768);  // toward zero
            before = s;
            expected.push_back(out);
        }
        EXPECT_EQ(kQ15(x, srcLast, dstLast, valQ15), std::pair(expected, expected));
    }
}

// ---- zero mean

TEST(ZeroMean, SubtractsTheNearestMeanWithoutMemory) {
    Random random(5);
    for (int len = 1; len < 300; ++len) {
        auto x = random.vector<Kel16s>(static_cast<std::size_t>(len));
        if (len % 3 == 0) {
            for (auto& s : x) s = static_cast<Kel16s>(s % 3);  // means on halves
        }
        Guarded<Kel16s> y(x, len % 2 == 0 ? Edge::End : Edge::Begin);
        {
            const test::AllocationWatch watch(0);
            EXPECT_EQ(kelsZeroMean_16s(y, len), kelStatusOk);
            EXPECT_EQ(watch.calls(), 0);
        }
        long double sum = 0;
        for (const Kel16s s : x) sum += s;
        const long double mean = std::round(sum / len);
        for (int n = 0; n < len; ++n) ASSERT_EQ(y[n], clamp16(x[n] - mean)) << len;
    }
    for (const int level : {-32768, 32767}) {  // the sum leaves 32 bits
        std::vector<Kel16s> x(300001, static_cast<Kel16s>(level));
        EXPECT_EQ(kelsZeroMean_16s(x.data(), 300001), kelStatusOk);
        EXPECT_EQ(x, std::vector<Kel16s>(300001));
    }
}

// ---- energy normalisation

TEST(NormEnergy, FloatColumns) {
    Random random(6);
    const long double u = std::ldexp(1.0L, -24);
    for (int height = 1; height < 50; ++height) {
        const int step = random.between(1, 4);
        const Kel32f silFloor = static_cast<Kel32f>(random.uniform(1, 80)), scale = 0.1f, maxE = 9.5f;
        std::vector<Kel32f> x(static_cast<std::size_t>((height - 1) * step + 1));
        for (auto& e : x) e = static_cast<Kel32f>(random.uniform(-12, 9));
        Kel32f largest = -1000;
        for (int k = 0; k < height; ++k) largest = std::fmax(largest, x[k * step]);
        for (const bool running : {false, true}) {
            Guarded<Kel32f> y(x);
            EXPECT_EQ(running ? kelsNormEnergy_RT_32f(y, step, height, silFloor, maxE, scale)
                              : kelsNormEnergy_32f(y, step, height, silFloor, scale),
                      kelStatusOk);
            const long double top = running ? maxE : largest;
            for (int i = 0; i < static_cast<int>(x.size()); ++i) {
                const long double e = std::fmax(static_cast<long double>(x[i]), top - 0.230259L * silFloor);
                const long double exact = i % step == 0 ? 1 - (top - e) * scale : x[i];
                // One rounding of the factor, its product, the floor, the distance, its product and the result.
                const long double bound = u * ((0.230259L * silFloor * 2 + std::fabs(e) + 2 * (top - e)) * scale + 2);
                EXPECT_LE(std::fabs(y[i] - exact), i % step == 0 ? 1.01L * bound : 0);
            }
        }
    }
}

TEST(NormEnergy, SixteenBitColumnsTruncateAndSaturate) {
    const std::vector<Kel16s> x{-5, 99, 100, 99, 97, 99, -300, 99, -32768, 99};
    const auto run = [&](Kel16s silFloor, Kel16s valShift, Kel32f scale, int maxE = INT_MIN) {
        Guarded<Kel16s> y(x);
        test::inEveryRoundingMode([&] {
            std::copy(x.begin(), x.end(), y.data());
            EXPECT_EQ(maxE == INT_MIN
                          ? kelsNormEnergy_16s(y, 2, 5, silFloor, valShift, scale)
                          : kelsNormEnergy_RT_16s(y, 2, 5, silFloor, static_cast<Kel16s>(maxE), valShift, scale),
                      kelStatusOk);
        });
        return y.vector();
    };
    // The floor 0.230259 * 1000 below 100 is -130.259.
    EXPECT_EQ(run(1000, 10, 0.5f), (std::vector<Kel16s>{-42, 99, 10, 99, 8, 99, -105, 99, -105, 99}));
    EXPECT_EQ(run(32767, 10, 100.f), (std::vector<Kel16s>{-10490, 99, 10, 99, -290, 99, -32768, 99, -32768, 99}));
    EXPECT_EQ(run(32767, 1, -100.f), (std::vector<Kel16s>{10501, 99, 1, 99, 301, 99, 32767, 99, 32767, 99}));
    EXPECT_EQ(run(1000, 10, 0.5f, 50), (std::vector<Kel16s>{-17, 99, 35, 99, 33, 99, -105, 99, -105, 99}));
    Guarded<Kel16s> low{-32768, -32768};
    EXPECT_EQ(kelsNormEnergy_16s(low, 1, 2, 10, 7, 1), kelStatusOk);
    EXPECT_EQ(low.vector(), (std::vector<Kel16s>{7, 7}));
}

// ---- sign changes

template <class T>
int sgn(T v) {
    return (v > 0) - (v < 0);
}

template <class T, class R>
void expectCount(KelStatus (*count)(const T*, int, R*), const Guarded<T>& x, double expected) {
    Guarded<R> result(1);
    EXPECT_EQ(count(x.data(), static_cast<int>(x.size()), result), kelStatusOk);
    EXPECT_EQ(result[0], static_cast<R>(expected));
}

template <class T>
void checkSignChanges(const std::vector<T>& signal, Edge edge) {
    const Guarded<T> x(signal, edge);
    int64_t products = 0, steps = 0, bits = 0;
    for (std::size_t n = 0; n + 1 < x.size(); ++n) {
        products += !(x[n + 1] * x[n] >= 0);
        steps += std::abs(sgn(x[n + 1]) - sgn(x[n]));
        bits += std::signbit(static_cast<double>(x[n])) != std::signbit(static_cast<double>(x[n + 1]));
    }
    if constexpr (std::is_same_v<T, Kel16s>) {
        expectCount(kelsSignChangeRate_16s, x, static_cast<double>(products));
        expectCount(kelsSignChangeRate_Count0_16s, x, static_cast<double>(steps) / 2);
    } else {
        expectCount(kelsSignChangeRate_32f, x, static_cast<double>(products));
        expectCount(kelsSignChangeRate_Count0_32f, x, static_cast<double>(steps) / 2);
        expectCount(kelsSignChangeRateXor_32f, x, static_cast<double>(bits));
    }
}

template <class T>
void checkSignChanges(std::initializer_list<T> values) {
    Random random(7);
    const int most = static_cast<int>(values.size()) - 1;
    for (int len = 1; len < 200; ++len) {
        std::vector<T> x;
        for (int n = 0; n < len; ++n) x.push_back(values.begin()[random.between(0, len % 2 ? most : 5)]);
        for (const Edge edge : {Edge::End, Edge::Begin}) checkSignChanges(x, edge);
    }
    std::vector<T> x;  // more changes than a lane of 16 bits or a part of the sum counts
    for (int n = 0; n < 1100003; ++n) x.push_back(T(n % 2 ? -1 : 1));
    checkSignChanges(x, Edge::End);
}
TEST(SignChanges, AreThePlainCounts) {
    constexpr Kel32f nan = std::numeric_limits<Kel32f>::quiet_NaN(), inf = HUGE_VALF;
    checkSignChanges<Kel32f>({0, -0.0f, 1, -1, 1e-30f, -1e-30f, inf, -inf, nan, -nan, 3, -2, 5, -7});
    checkSignChanges<Kel16s>({0, 0, 1, -1, 32767, -32768, 300, -300});
}

// ---- padding, statuses

template <class T>
void checkPadding(KelStatus (*pad)(const T*, int, T*, int)) {
    Random random(8);
    for (int len = 1; len < 40; ++len) {
        const int padded = len + random.between(0, 30) * (len % 3 != 0);
        const Guarded<T> x(random.vector<T>(static_cast<std::size_t>(len)));
        auto expected = x.vector();
        expected.resize(static_cast<std::size_t>(padded), T(0));
        Guarded<T> y(random.vector<T>(expected.size())), own(random.vector<T>(expected.size()));
        std::copy_n(x.data(), len, own.data());
        EXPECT_EQ(pad(x.data(), len, y, padded), kelStatusOk);
        EXPECT_EQ(pad(own, len, own, padded), kelStatusOk);
        EXPECT_EQ(y.vector(), expected);
        EXPECT_EQ(own.vector(), expected);
    }
    T x[4] = {1, 2, 3, 4};
    EXPECT_EQ(pad(x, 4, x, 3), kelStatusSize);
    test::expectChecks<test::Places{-1, 3, 1}>({-8, -6}, 1, pad);
}
TEST(CopyWithPadding, CopiesAndClears) {
    checkPadding(kelsCopyWithPadding_16s);
    checkPadding(kelsCopyWithPadding_32f);
}

TEST(FrameStatus, InOrderAndNothingWritten) {
    test::expectVectorChecks({-8, -6}, kelsCompensateOffset_32f, kelsCompensateOffset_32f_I, kelsCompensateOffset_16s,
                             kelsCompensateOffset_16s_I, kelsCompensateOffsetQ15_16s, kelsCompensateOffsetQ15_16s_I,
                             kelsSignChangeRate_32f, kelsSignChangeRate_Count0_32f, kelsSignChangeRateXor_32f,
                             kelsSignChangeRate_16s, kelsSignChangeRate_Count0_16s);
    test::expectVectorChecks({-6, -8}, kelsZeroMean_16s);
    test::expectChecks<test::Places{-1, 2, 1}>({-8, -6}, 1, kelsNormEnergy_32f, kelsNormEnergy_16s,
                                               kelsNormEnergy_RT_32f, kelsNormEnergy_RT_16s);
    std::vector<Kel16s> x(65536, 7);
    Kel16s last = 7;
    for (const auto& [len, status] : {std::pair(65536, kelStatusSize), {2, kelStatusBadArg}}) {
        EXPECT_EQ(kelsCompensateOffsetQ15_16s(x.data(), x.data(), len, &last, 0, -1), status);
        EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(x.data(), len, &last, 0, -1), status);
    }
    EXPECT_EQ(std::count(x.begin(), x.end(), 7) + last, 65536 + 7);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s(x.data(), x.data(), 65535, &last, 0, 0), kelStatusOk);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(x.data(), 65535, &last, 0, 0), kelStatusOk);
}

}  // namespace
