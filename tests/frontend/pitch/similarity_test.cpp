// Measures of similarity against their definitions in extended precision, within the errors that the header promises.
#include <limits>

#include "kels/core.h"
#include "kels/fft.h"
#include "kels/pitch.h"
#include "support/forms.h"
#include "support/support.h"

namespace {

using namespace test;

using Floats = std::vector<Kel32f>;
using Shorts = std::vector<Kel16s>;

constexpr auto coefficients = forms(kelsCrossCorrCoeff_32f, kelsCrossCorrCoeff_16s32f);
constexpr auto partial = forms(kelsCrossCorrCoeffPartial_32f, kelsCrossCorrCoeffPartial_16s32f);
constexpr auto between = forms(kelsCrossCorrCoeffInterpolation_32f, kelsCrossCorrCoeffInterpolation_16s32f);
constexpr auto leastSquares = forms(kelsPeriodicityLSPE_32f, kelsPeriodicityLSPE_16s32f);

constexpr Kel32f kNaN = std::numeric_limits<Kel32f>::quiet_NaN(), kInfinity = std::numeric_limits<Kel32f>::infinity();

template <class T>
Real dot(const T* x, const T* y, int len) {
    Real sum = 0;
    for (int i = 0; i < len; ++i) sum += static_cast<Real>(x[i]) * static_cast<Real>(y[i]);
    return sum;
}

template <class T>
Real coefficient(const T* x, const T* y, int len, Real bias) {
    const Real root = std::sqrt((dot(x, x, len) + bias) * (dot(y, y, len) + bias));
    return root == 0 ? 0 : dot(x, y, len) / root;
}

template <class T>
class Similarity : public ::testing::Test {};
using Samples = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Similarity, Samples);

// ---- coefficients --------------------------------------------------------------------------------------------------

// Windows of every length, lags on both sides of 0 and more than are worked on together, samples of every size.
TYPED_TEST(Similarity, Coefficients) {
    using T = TypeParam;
    Random random;
    for (int n = 1; n < 60; ++n) {
        const int len = n < 50 ? n : random.between(100, 1500), lags = random.between(1, n % 5 == 0 ? 200 : 30);
        const int minLag = random.between(-40, 20), first = std::max(0, -minLag);
        const int scale = n % 3 == 0 ? 105 : n % 3 == 1 ? -105 : 0;
        Guarded<T> x(random.vector<T>(len)), y(random.vector<T>(len + lags - 1));
        if constexpr (std::is_same_v<T, Kel32f>) {
            for (auto* v : {&x, &y}) {
                for (std::size_t i = 0; i < v->size(); ++i) (*v)[i] = std::ldexp((*v)[i], scale);
            }
        }
        for (const Kel32f bias : {0.0f, static_cast<Kel32f>(dot(x.data(), x.data(), len) / 3)}) {
            if (!std::isfinite(bias)) continue;
            Guarded<Kel32f> c(lags);
            ASSERT_EQ(partial(x.data(), y.data() - minLag, len, c.data(), minLag, minLag + lags - 1, bias),
                      kelStatusOk);
            for (int k = 0; k < lags; ++k) {
                const Real exact = coefficient(x.data(), y.data() + k, len, bias);
                const Real bound = std::is_same_v<T, Kel16s> ? 1.0001L * 0x1p-24L * std::fabs(exact) + 0x1p-149L
                                                             : 0x1p-24L * std::fabs(exact) + (2 * len + 8) * 0x1p-53L;
                ASSERT_TRUE(near(c[k], exact, bound)) << "len " << len << ", lag " << k << ", from " << first;
            }
            if (bias != 0) continue;
            Guarded<Kel32f> same(lags);
            ASSERT_EQ(coefficients(x.data(), y.data(), len, same.data(), lags), kelStatusOk);
            EXPECT_TRUE(sameBits(same.vector(), c.vector()));
        }
    }
}

TYPED_TEST(Similarity, WindowsOfOneSignal) {
    using T = TypeParam;
    // Itself and its negative; silence; nothing of a burst is left in the quiet windows behind it.
    Random random(2);
    std::vector<T> x(900);
    for (std::size_t i = 0; i < 300; ++i) x[i] = static_cast<T>(random.between(-3, 3));
    for (std::size_t i = 300; i < 330; ++i) x[i] = static_cast<T>(random.between(-32767, 32767));
    for (std::size_t i = 330; i < 800; ++i) x[i] = static_cast<T>(random.between(-1, 1));
    for (std::size_t i = 0; i < 100; ++i) x[400 + i] = static_cast<T>(-x[i]);
    Floats c(801);
    ASSERT_EQ(coefficients(x.data(), x.data(), 100, c.data(), 801), kelStatusOk);
    EXPECT_EQ(c[0], 1);
    EXPECT_EQ(c[400], -1);
    EXPECT_EQ(c[800], 0);
    for (int k = 330; k < 700; ++k) ASSERT_TRUE(near(c[k], coefficient(&x[0], &x[k], 100, 0), 0x1p-24L)) << k;
    // An infinite bias takes everything to 0.
    ASSERT_EQ(partial(x.data(), x.data(), 100, c.data(), 0, 800, kInfinity), kelStatusOk);
    EXPECT_EQ(std::count(c.begin(), c.end(), 0.0f), 801);

    const std::vector<T> one = {1, 2, 3}, five = {1, 2, 3, 4, 5};
    ASSERT_EQ(coefficients(one.data(), five.data(), 3, c.data(), 3), kelStatusOk);
    EXPECT_NEAR(c[1], 20 / std::sqrt(14.0 * 29), 1e-7);
    EXPECT_NEAR(c[2], 26 / std::sqrt(14.0 * 50), 1e-7);
    ASSERT_EQ(partial(one.data(), five.data(), 3, c.data(), 1, 2, 14), kelStatusOk);
    EXPECT_NEAR(c[0], 20 / std::sqrt(28.0 * 43), 1e-7);
    EXPECT_NEAR(c[1], 26 / std::sqrt(28.0 * 64), 1e-7);
    EXPECT_EQ(partial(one.data(), five.data(), 3, c.data(), 1, 2, kNaN), kelStatusOutOfRange);
}

TEST(Coefficients, NotANumberStaysInItsWindows) {
    for (const Kel32f strange : {kNaN, kInfinity, -kInfinity}) {
        Floats x(400, 1.0f), c(200);
        x[250] = strange;
        for (const Kel32f bias : {0.0f, kInfinity}) {
            ASSERT_EQ(kelsCrossCorrCoeffPartial_32f(x.data(), x.data(), 100, c.data(), 0, 199, bias), kelStatusOk);
            for (int k = 0; k < 200; ++k) ASSERT_EQ(std::isnan(c[k]), k > 150) << k;
            ASSERT_EQ(kelsCrossCorrCoeffPartial_32f(&x[200], x.data(), 100, c.data(), 0, 199, bias), kelStatusOk);
            ASSERT_EQ(std::count_if(c.begin(), c.end(), [](Kel32f v) { return std::isnan(v); }), 200);
        }
    }
}

// ---- between lags --------------------------------------------------------------------------------------------------

TYPED_TEST(Similarity, BetweenLags) {
    using T = TypeParam;
    Random random(3);
    for (int n = 1; n < 300; ++n) {
        const int len = n < 60 ? n + 1 : random.between(3, 900), lag = random.between(-5, 5);
        // Windows that are like each other, as those of speech are.
        std::vector<T> s(len + 12);
        Real state = 0;
        for (T& v : s) v = static_cast<T>(state = 0.9L * state + random.uniform(-2000, 2000));
        const T* const x = &s[5];
        Kel32f f, c;
        ASSERT_EQ(between(x, x, len, lag, &f, &c), kelStatusOk);
        const T *const y = x + lag, *const z = y + 1;
        const Real xy = dot(x, y, len), xz = dot(x, z, len), yz = dot(y, z, len);
        const Real yy = dot(y, y, len), zz = dot(z, z, len);
        const Real numerator = xz * yy - xy * yz, denominator = numerator + xy * zz - xz * yz;
        const Real place = numerator / denominator, v = 1 - place;
        const Real energy = dot(x, x, len) * (v * v * yy + 2 * v * place * yz + place * place * zz);
        const Real like = (v * xy + place * xz) / std::sqrt(energy);
        // What rounding of the sums does to differences of products.
        const Real slack = 64 * 0x1p-53L * (std::fabs(xz * yy) + std::fabs(xy * zz)) / std::fabs(denominator);
        ASSERT_TRUE(near(f, place, 0x1p-23L * std::fabs(place) + slack * (1 + std::fabs(place)))) << n;
        ASSERT_TRUE(near(c, like, 0x1p-23L + slack * 8)) << n;
    }
}

TYPED_TEST(Similarity, BetweenLagsOfTonesAndSilence) {
    using T = TypeParam;
    std::vector<T> tone(80), silence(80), falling(80);
    for (std::size_t i = 0; i < 80; ++i) {
        tone[i] = static_cast<T>(std::lrint(1000 * std::sin(2 * M_PI * static_cast<double>(i) / 6.4)));
        falling[i] = static_cast<T>(std::ldexp(1.0, 14 - static_cast<int>(i % 15)));
    }
    Kel32f f, c;
    ASSERT_EQ(between(tone.data(), tone.data(), 32, 6, &f, &c), kelStatusOk);
    EXPECT_NEAR(f, 0.40787, 5e-6);
    EXPECT_NEAR(c, 1, 1e-6);
    ASSERT_EQ(between(tone.data(), tone.data(), 32, 5, &f, &c), kelStatusOk);
    EXPECT_NEAR(f, 1.63983, 5e-6);
    // Silence, a window that does not change, and one whose next is half of it.
    for (const auto* signal : {&silence, &falling}) {
        EXPECT_EQ(between(tone.data(), signal->data(), 14, 0, &f, &c), kelStatusDivByZero);
        EXPECT_TRUE(std::isnan(f) && std::isnan(c));
    }
}

// ---- periodicity ---------------------------------------------------------------------------------------------------

// Frames under a Hann window; ranges of few lags are summed, those of many are transformed.
TEST(Periodicity, FreesTheAutocorrelationOfItsWindow) {
    Random random(4);
    for (const int len : {1, 2, 40, 400, 1800}) {
        Floats window(len), frame(len), correlation(len);
        for (int i = 0; i < len; ++i) {
            window[i] = static_cast<Kel32f>(0.5 - 0.5 * std::cos(2 * M_PI * (i + 0.5) / len));
            frame[i] = window[i] * static_cast<Kel32f>(random.uniform(-1, 1) + std::sin(i * 0.1));
        }
        kelsAutoCorr_32f(window.data(), len, correlation.data(), len);
        for (const int minLag : {0, len / 5}) {
            const int maxLag = std::max(minLag, len - len / 8 - 1);
            const Guarded<Kel32f> f(frame), w(Floats(correlation.begin(), correlation.begin() + maxLag + 1));
            Guarded<Kel32f> value(maxLag - minLag + 1);
            ASSERT_EQ(kelsPeriodicity_32f(f.data(), len, w.data(), value.data(), minLag, maxLag), kelStatusOk);
            for (int k = minLag; k <= maxLag; ++k) {
                const Real ratio = static_cast<Real>(correlation[0]) / correlation[k];
                const Real exact = dot(&frame[0], &frame[k], len - k) / dot(&frame[0], &frame[0], len) * ratio;
                const Real bound = 0x1p-20L * ratio + 0x1p-22L * std::fabs(exact);
                ASSERT_TRUE(near(value[k - minLag], exact, bound)) << "len " << len << ", lag " << k;
            }
            if (minLag == 0) {
                EXPECT_EQ(value[0], 1);
            }
            for (const int power : {-90, 110}) {
                Floats scaled = frame, same(value.size());
                for (auto& v : scaled) v = std::ldexp(v, power);
                kelsPeriodicity_32f(scaled.data(), len, w.data(), same.data(), minLag, maxLag);
                EXPECT_TRUE(sameBits(same, value.vector())) << "len " << len << ", power " << power;
            }
            // Silence, and what is no number.
            Floats odd(len);
            kelsPeriodicity_32f(odd.data(), len, w.data(), value.data(), minLag, maxLag);
            EXPECT_TRUE(sameBits(value.vector(), Floats(value.size())));
            odd[len / 2] = kNaN;
            kelsPeriodicity_32f(odd.data(), len, w.data(), value.data(), minLag, maxLag);
            EXPECT_TRUE(sameBits(value.vector(), Floats(value.size(), kNaN)));
        }
    }
}

TEST(Periodicity, WindowsWithoutCorrelation) {
    const Floats frame = {1, 1, -2, 1}, window = {4, 3, 2, 1}, expected = {1, -4 / 7.0f, -2 / 7.0f, 4 / 7.0f};
    Floats value(4);
    ASSERT_EQ(kelsPeriodicity_32f(frame.data(), 4, window.data(), value.data(), 0, 3), kelStatusOk);
    for (std::size_t k = 0; k < 4; ++k) EXPECT_FLOAT_EQ(value[k], expected[k]);
    const Floats none = {4, -0.0f, 2, 0};
    EXPECT_EQ(kelsPeriodicity_32f(frame.data(), 4, none.data(), value.data(), 0, 3), kelStatusDivByZero);
    EXPECT_TRUE(sameBits(value, Floats{1, -kInfinity, -2 / 7.0f, kInfinity}));
    EXPECT_EQ(kelsPeriodicity_32f(Floats(4).data(), 4, none.data(), value.data(), 0, 3), kelStatusOk);
    EXPECT_TRUE(sameBits(value, Floats(4)));
}

TYPED_TEST(Similarity, LeastSquares) {
    using T = TypeParam;
    Random random(5);
    for (int n = 2; n < 70; ++n) {
        const int len = n < 60 ? n : random.between(200, 1500);
        const Guarded<T> x(random.vector<T>(len));
        const int maxLag = random.between(1, len - 1), minLag = random.between(1, maxLag);
        Guarded<Kel32f> value(maxLag - minLag + 1);
        ASSERT_EQ(leastSquares(x.data(), len, value.data(), minLag, maxLag), kelStatusOk);
        for (int period = minLag; period <= maxLag; ++period) {
            Real above = 0, whole = 0;
            for (int phase = 0; phase < period; ++phase) {
                Real count = 0, sum = 0, squares = 0;
                for (int i = phase; i < len; i += period) {
                    const Real v = x[i];
                    count += 1;
                    sum += v;
                    squares += v * v;
                }
                if (count < 2) continue;
                above += (sum * sum - squares) / count;
                whole += squares * (count - 1) / count;
            }
            const Real exact = whole == 0 ? 0 : above / whole;
            const Real bound = 0x1p-24L * std::fabs(exact) + 16 * (len + 16) * 0x1p-53L;
            ASSERT_TRUE(near(value[period - minLag], exact, bound)) << "len " << len << ", period " << period;
        }
    }
    const std::vector<T> frame = {3, 1, 0, 3, 1, 0, 3, 1};
    const Floats expected = {19 / 35.0f, 22 / 45.0f, 1, 0.4f, 0.3f};
    Floats value(5);
    ASSERT_EQ(leastSquares(frame.data(), 8, value.data(), 1, 5), kelStatusOk);
    for (std::size_t k = 0; k < 5; ++k) EXPECT_FLOAT_EQ(value[k], expected[k]);
}

TEST(LeastSquares, SamplesAloneAtTheirPhaseHaveNoPart) {
    Floats frame(40, 1.0f), value(39);
    frame[15] = kNaN;
    ASSERT_EQ(kelsPeriodicityLSPE_32f(frame.data(), 40, value.data(), 1, 39), kelStatusOk);
    for (int period = 1; period < 40; ++period) {
        const bool alone = 15 - period < 0 && 15 + period >= 40;
        ASSERT_TRUE(sameBits(value[period - 1], alone ? 1.0f : kNaN)) << period;
    }
}

}  // namespace
