#include "kels/frame.h"

#include <climits>

#include "support/allocation.h"
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

TEST(OffsetCompensation, FloatFormIsTheSequentialSum) {
    Random random(1);
    for (int len = 1; len < 70; ++len) {
        const Guarded<Kel32f> x(random.vector<Kel32f>(static_cast<std::size_t>(len)));
        Guarded<Kel32f> y(static_cast<std::size_t>(len)), inPlace(x.vector());
        const Kel32f val = static_cast<Kel32f>(random.uniform(-1.5, 1.5)), dstLast = random.value<Kel32f>();
        const Kel32f srcLast = random.value<Kel32f>();
        Guarded<Kel32f> last{srcLast}, lastInPlace{srcLast};
        EXPECT_EQ(kelsCompensateOffset_32f(x.data(), y, len, last, dstLast, val), kelStatusOk);
        EXPECT_EQ(kelsCompensateOffset_32f_I(inPlace, len, lastInPlace, dstLast, val), kelStatusOk);
        std::vector<Kel32f> expected{val * dstLast + x[0] - srcLast};
        for (int n = 1; n < len; ++n) expected.push_back(val * expected.back() + (x[n] - x[n - 1]));
        EXPECT_TRUE(test::sameBits(y, expected));
        EXPECT_TRUE(test::sameBits(inPlace, expected));
        EXPECT_EQ(last[0], x[len - 1]);
        EXPECT_EQ(lastInPlace[0], x[len - 1]);
    }
}

// The sum that an output is rounded from, in single precision.
Kel32f floatSum(Kel32f val, Kel16s y, Kel16s x, Kel16s before) {
    return val * y + static_cast<Kel32f>(x - before);
}
Kel16s nearest(long double v) {
    return clamp16(std::round(v));  // halves away from zero
}

TEST(OffsetCompensation, SixteenBitForms) {
    Random random(2);
    for (int round = 0; round < 400; ++round) {
        const int len = random.between(1, 60), coefficient = random.between(-4096, 4096);
        const bool fine = round % 3 == 0, beyondOne = round % 3 == 1;
        const auto val = beyondOne ? static_cast<Kel32f>(random.uniform(1.0001, 1.5)) * (round % 2 == 0 ? 1 : -1)
                         : fine    ? static_cast<Kel32f>(random.uniform(-1, 1))
                                   : static_cast<Kel32f>(coefficient) / 4096;
        auto signal = random.vector<Kel16s>(static_cast<std::size_t>(len));
        if (round % 2 == 0) {
            for (auto& s : signal) s = static_cast<Kel16s>(s / 16);
        }
        const Guarded<Kel16s> x(signal, round % 4 < 2 ? Edge::End : Edge::Begin);
        const auto dstLast = random.value<Kel16s>(), srcLast = random.value<Kel16s>();
        Guarded<Kel16s> y(x.size()), inPlace(signal), last{srcLast}, lastInPlace{srcLast};
        EXPECT_EQ(kelsCompensateOffset_16s(x.data(), y, len, last, dstLast, val), kelStatusOk);
        EXPECT_EQ(kelsCompensateOffset_16s_I(inPlace, len, lastInPlace, dstLast, val), kelStatusOk);
        EXPECT_EQ(last[0], x[len - 1]);
        EXPECT_EQ(lastInPlace[0], x[len - 1]);
        const Kel16s first = clamp16(std::trunc(val * dstLast + Kel32f(x[0]) - Kel32f(srcLast)));
        EXPECT_EQ(y[0], first);
        EXPECT_EQ(inPlace[0], first);
        for (int n = 1; n < len; ++n) {
            EXPECT_EQ(inPlace[n], nearest(floatSum(val, inPlace[n - 1], x[n], x[n - 1])));
            const Kel16s single = nearest(floatSum(val, y[n - 1], x[n], x[n - 1]));
            if (beyondOne) {
                EXPECT_EQ(y[n], single);
            } else {
                const long double q = std::nearbyint(val * 4096.0L);
                EXPECT_EQ(y[n], nearest((q * y[n - 1]) / 4096 + (x[n] - x[n - 1])));
                EXPECT_LE(std::abs(y[n] - single), 1 + (fine ? std::abs(y[n - 1]) / 8192.0 : 0.0));
            }
        }
    }
}

TEST(OffsetCompensation, RoundingModesSurviveAndChangeNothing) {
    Random random(3);
    const auto x = random.vector<Kel16s>(500);
    for (const Kel32f val : {0.9990001f, 1.1f}) {
        std::vector<Kel16s> expected(500), expectedInPlace(x), y(500), inPlace;
        Kel16s last = 11, none = 0;
        kelsCompensateOffset_16s(x.data(), expected.data(), 500, &last, 777, val);
        last = 11;
        kelsCompensateOffset_16s_I(expectedInPlace.data(), 500, &last, 777, val);
        test::inEveryRoundingMode(
            [&] {
                inPlace = x;
                last = none = 11;
                kelsCompensateOffset_16s(x.data(), y.data(), 500, &last, 777, val);
                kelsCompensateOffset_16s_I(inPlace.data(), 500, &none, 777, val);
            },
            [&] {
                EXPECT_EQ(y, expected);
                EXPECT_EQ(inPlace, expectedInPlace);
            });
    }
}

TEST(OffsetCompensation, Q15IsExactAndFramesAreSeamless) {
    Random random(4);
    for (int len = 1; len < 60; ++len) {
        const auto x = random.vector<Kel16s>(static_cast<std::size_t>(len));
        const auto valQ15 = static_cast<Kel16s>(random.between(0, 1) ? random.between(0, 32767) : 32767);
        std::vector<Kel16s> expected;
        Kel16s before = 0, out = 0;
        for (const Kel16s s : x) {
            out = clamp16((int64_t{s - before} * 32768 + int64_t{out} * valQ15) / 32768);  // toward zero
            before = s;
            expected.push_back(out);
        }
        const int cut = random.between(1, len);
        Guarded<Kel16s> y(x.size()), inPlace(x), last(1), lastInPlace(1);
        EXPECT_EQ(kelsCompensateOffsetQ15_16s(x.data(), y, cut, last, 0, valQ15), kelStatusOk);
        if (cut < len) {
            kelsCompensateOffsetQ15_16s(x.data() + cut, y + cut, len - cut, last, y[cut - 1], valQ15);
        }
        EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(inPlace, len, lastInPlace, 0, valQ15), kelStatusOk);
        EXPECT_EQ(y.vector(), expected);
        EXPECT_EQ(inPlace.vector(), expected);
        EXPECT_EQ(last[0], x.back());
        EXPECT_EQ(lastInPlace[0], x.back());
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
                if (i % step == 0 && x[i] == top) {
                    EXPECT_EQ(y[i], 1.0f);
                }
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

template <class T>
void checkSignChanges(const std::vector<T>& signal, Edge edge) {
    const Guarded<T> x(signal, edge);
    const int len = static_cast<int>(signal.size());
    int64_t products = 0, steps = 0, bits = 0;
    for (int n = 0; n + 1 < len; ++n) {
        products += !(x[n + 1] * x[n] >= 0);
        steps += std::abs(sgn(x[n + 1]) - sgn(x[n]));
        bits += std::signbit(static_cast<double>(x[n])) != std::signbit(static_cast<double>(x[n + 1]));
    }
    if constexpr (std::is_same_v<T, Kel16s>) {
        Guarded<Kel32s> r(2);
        EXPECT_EQ(kelsSignChangeRate_16s(x.data(), len, r), kelStatusOk);
        EXPECT_EQ(kelsSignChangeRate_Count0_16s(x.data(), len, r + 1), kelStatusOk);
        EXPECT_EQ(r[0], products);
        EXPECT_EQ(r[1], steps / 2);
    } else {
        Guarded<Kel32f> r(2);
        Guarded<Kel32s> xored(1);
        EXPECT_EQ(kelsSignChangeRate_32f(x.data(), len, r), kelStatusOk);
        EXPECT_EQ(kelsSignChangeRate_Count0_32f(x.data(), len, r + 1), kelStatusOk);
        EXPECT_EQ(kelsSignChangeRateXor_32f(x.data(), len, xored), kelStatusOk);
        EXPECT_EQ(r[0], static_cast<Kel32f>(products));
        EXPECT_EQ(r[1], static_cast<Kel32f>(steps) * 0.5f);
        EXPECT_EQ(xored[0], bits);
    }
}

TEST(SignChanges, AreThePlainCounts) {
    constexpr Kel32f nan = std::numeric_limits<Kel32f>::quiet_NaN(), inf = HUGE_VALF;
    const Kel32f floats[] = {0, -0.0f, 1, -1, 1e-30f, -1e-30f, inf, -inf, nan, -nan, 3, -2, 5, -7};
    const Kel16s integers[] = {0, 0, 1, -1, 32767, -32768, 300, -300};
    Random random(7);
    for (int len = 1; len < 200; ++len) {
        for (const Edge edge : {Edge::End, Edge::Begin}) {
            std::vector<Kel32f> f;
            std::vector<Kel16s> s;
            for (int n = 0; n < len; ++n) f.push_back(floats[random.between(0, len % 2 ? 13 : 5)]);
            for (int n = 0; n < len; ++n) s.push_back(integers[random.between(0, 7)]);
            checkSignChanges(f, edge);
            checkSignChanges(s, edge);
        }
    }
    std::vector<Kel32f> f;  // more changes than a lane of 16 bits or a part of the sum counts
    std::vector<Kel16s> s;
    for (int n = 0; n < 1100003; ++n) {
        f.push_back(n % 2 ? -1.0f : 1.0f);
        s.push_back(n % 2 ? Kel16s{-1} : Kel16s{1});
    }
    checkSignChanges(f, Edge::End);
    checkSignChanges(s, Edge::End);
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
    T x[4] = {1, 2, 3, 4}, y[4] = {5, 6, 7, 8};
    EXPECT_EQ(pad(nullptr, 0, y, 0), kelStatusNullPtr);
    EXPECT_EQ(pad(x, 0, nullptr, 0), kelStatusNullPtr);
    for (const auto& [from, to] : {std::pair(0, 4), {-1, -1}, {1, 0}, {4, 3}}) {
        EXPECT_EQ(pad(x, from, y, to), kelStatusSize);
    }
    EXPECT_EQ(y[0], 5);
}
TEST(CopyWithPadding, CopiesAndClears) {
    checkPadding(kelsCopyWithPadding_16s);
    checkPadding(kelsCopyWithPadding_32f);
}

TEST(FrameStatus, InOrderAndNothingWritten) {
    Kel32f x[2] = {3, 4}, y[2] = {5, 6}, last = 7;
    Kel16s s[2] = {3, 4}, d[2] = {5, 6}, end = 7;
    Kel32s count = 8;
    const auto compensate = [&](Kel32f* a, Kel16s* b, int len, Kel32f* l, Kel16s* e) {
        const KelStatus status = kelsCompensateOffset_32f(a, y, len, l, 0, 1);
        EXPECT_EQ(kelsCompensateOffset_32f_I(a, len, l, 0, 1), status);
        EXPECT_EQ(kelsCompensateOffset_16s(b, d, len, e, 0, 1), status);
        EXPECT_EQ(kelsCompensateOffset_16s_I(b, len, e, 0, 1), status);
        EXPECT_EQ(kelsCompensateOffsetQ15_16s(b, d, len, e, 0, -1), status);
        EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(b, len, e, 0, -1), status);
        return status;
    };
    EXPECT_EQ(compensate(nullptr, nullptr, 0, &last, &end), kelStatusNullPtr);
    EXPECT_EQ(compensate(x, s, 0, nullptr, nullptr), kelStatusNullPtr);
    EXPECT_EQ(compensate(x, s, 0, &last, &end), kelStatusSize);
    EXPECT_EQ(kelsCompensateOffset_32f(x, nullptr, 0, &last, 0, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsCompensateOffset_16s(s, nullptr, 0, &end, 0, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s(s, nullptr, 0, &end, 0, 1), kelStatusNullPtr);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s(s, d, 65536, &end, 0, -1), kelStatusSize);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(s, 65536, &end, 0, -1), kelStatusSize);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s(s, d, 2, &end, 0, -1), kelStatusBadArg);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(s, 2, &end, 0, -1), kelStatusBadArg);
    std::vector<Kel16s> longest(65535);
    EXPECT_EQ(kelsCompensateOffsetQ15_16s_I(longest.data(), 65535, &longest[0], 0, 0), kelStatusOk);

    EXPECT_EQ(kelsZeroMean_16s(nullptr, 0), kelStatusSize);
    EXPECT_EQ(kelsZeroMean_16s(nullptr, 1), kelStatusNullPtr);

    for (const auto& [step, height] : {std::pair(0, 1), {1, 0}}) {
        EXPECT_EQ(kelsNormEnergy_32f(nullptr, step, height, 1, 1), kelStatusNullPtr);
        EXPECT_EQ(kelsNormEnergy_16s(nullptr, step, height, 1, 1, 1), kelStatusNullPtr);
        EXPECT_EQ(kelsNormEnergy_RT_32f(nullptr, step, height, 1, 1, 1), kelStatusNullPtr);
        EXPECT_EQ(kelsNormEnergy_RT_16s(nullptr, step, height, 1, 1, 1, 1), kelStatusNullPtr);
        EXPECT_EQ(kelsNormEnergy_32f(x, step, height, 1, 1), kelStatusSize);
        EXPECT_EQ(kelsNormEnergy_16s(s, step, height, 1, 1, 1), kelStatusSize);
        EXPECT_EQ(kelsNormEnergy_RT_32f(x, step, height, 1, 1, 1), kelStatusSize);
        EXPECT_EQ(kelsNormEnergy_RT_16s(s, step, height, 1, 1, 1, 1), kelStatusSize);
    }

    const auto changes = [&](const Kel32f* a, const Kel16s* b, Kel32f* r, Kel32s* n) {
        const KelStatus status = kelsSignChangeRate_32f(a, 0, r);
        EXPECT_EQ(kelsSignChangeRate_Count0_32f(a, 0, r), status);
        EXPECT_EQ(kelsSignChangeRateXor_32f(a, 0, n), status);
        EXPECT_EQ(kelsSignChangeRate_16s(b, 0, n), status);
        EXPECT_EQ(kelsSignChangeRate_Count0_16s(b, 0, n), status);
        return status;
    };
    EXPECT_EQ(changes(nullptr, nullptr, &last, &count), kelStatusNullPtr);
    EXPECT_EQ(changes(x, s, nullptr, nullptr), kelStatusNullPtr);
    EXPECT_EQ(changes(x, s, &last, &count), kelStatusSize);

    EXPECT_TRUE(x[0] == 3 && y[0] == 5 && s[0] == 3 && d[0] == 5 && last == 7 && end == 7 && count == 8);
}

}  // namespace
