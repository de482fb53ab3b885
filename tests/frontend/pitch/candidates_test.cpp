// Peaks, frequencies from pitch marks and entropies against their definitions.
#include <limits>

#include "kels/pitch.h"
#include "support/support.h"

namespace {

using namespace test;

using Floats = std::vector<Kel32f>;
using Flags = std::vector<Kel8u>;

constexpr Kel32f kNaN = std::numeric_limits<Kel32f>::quiet_NaN(), kInfinity = std::numeric_limits<Kel32f>::infinity();

// ---- peaks ---------------------------------------------------------------------------------------------------------

// By the definition, every pair of peaks compared.
Flags peaksOf(const Floats& x, Kel32f threshold, int minDist) {
    std::vector<int> places;
    const int len = static_cast<int>(x.size());
    for (int a = 1; a < len - 1; ++a) {
        int b = a;
        while (b + 1 < len && x[b + 1] == x[a]) ++b;
        if (b < len - 1 && x[a - 1] < x[a] && x[b + 1] < x[a] && x[a] >= threshold) places.push_back(a + (b - a) / 2);
    }
    Flags flags(x.size());
    for (const int p : places) {
        flags[p] = std::none_of(places.begin(), places.end(), [&](int q) {
            return std::abs(p - q) < minDist && (x[q] > x[p] || (x[q] == x[p] && q < p));
        });
    }
    return flags;
}

TEST(FindPeaks, TakesWhatNoNeighbourOutdoes) {
    Random random;
    for (int t = 0; t < 4000; ++t) {
        const int len = t < 200 ? random.between(1, 6) : random.between(5, t % 50 == 0 ? 3000 : 80);
        Floats curve(len);
        const int levels = t % 4 == 0 ? 3 : 30;
        for (auto& v : curve) v = static_cast<Kel32f>(random.between(-levels, levels));
        if (t % 7 == 0) curve[random.between(0, len - 1)] = kNaN;
        if (t % 11 == 0) curve[random.between(0, len - 1)] = kInfinity;
        const Kel32f threshold = t % 3 == 0 ? -kInfinity : static_cast<Kel32f>(random.between(-levels, levels));
        const int minDist = random.between(1, t % 5 == 0 ? 100 : 7);
        const Guarded<Kel32f> guarded(curve);
        Guarded<Kel8u> flags(curve.size());
        std::fill_n(flags.data(), flags.size(), Kel8u{7});
        ASSERT_EQ(kelsFindPeaks_32f8u(guarded.data(), flags.data(), len, threshold, minDist), kelStatusOk);
        ASSERT_EQ(flags.vector(), peaksOf(curve, threshold, minDist)) << "turn " << t;
    }
    Flags flags(6);
    const Floats shoulder = {0, 2, 2, 3, 0};
    ASSERT_EQ(kelsFindPeaks_32f8u(shoulder.data(), flags.data(), 5, kNaN, 1), kelStatusOk);
    EXPECT_EQ(flags, Flags(6));
    const Floats longest(65536);
    Flags many(65536);
    EXPECT_EQ(kelsFindPeaks_32f8u(longest.data(), many.data(), 65535, 0, 65535), kelStatusOk);
    EXPECT_EQ(kelsFindPeaks_32f8u(longest.data(), many.data(), 65536, 0, 0), kelStatusLengthRange);
}

// ---- pitch marks ---------------------------------------------------------------------------------------------------

struct Candidates {
    Floats f0, strength;
    KelStatus status;
};
Candidates candidates(const Floats& marks, int count, Kel32f rate = 8000, Kel32f low = 40, Kel32f high = 500) {
    Candidates c{Floats(count, -1), Floats(count, -1), kelStatusOk};
    const Guarded<Kel32f> guarded(marks);
    c.status = kelsPitchmarkToF0Cand_32f(guarded.data(), static_cast<int>(marks.size()), c.f0.data(), c.strength.data(),
                                         count, rate, low, high);
    return c;
}

TEST(PitchmarkToF0Cand, AllSpans) {
    const struct {
        Floats marks, f0, strength;
    } rows[] = {
        {{0, 80, 160, 240, 320}, {100, 50, 0, 0, 0, 0}, {1, 1, 0, 0, 0, 0}},
        {{0, 30, 80, 110, 160, 190, 240}, {200, 100, 66.667f, 50, 40}, {0.7261f, 1, 0.8333f, 1, 0.8419f}},
        {{7}, {0}, {0}},
    };
    for (const auto& row : rows) {
        const Candidates c = candidates(row.marks, static_cast<int>(row.f0.size()));
        ASSERT_EQ(c.status, kelStatusOk);
        for (std::size_t m = 0; m < row.f0.size(); ++m) {
            EXPECT_NEAR(c.f0[m], row.f0[m], 5e-4) << m;
            EXPECT_NEAR(c.strength[m], row.strength[m], 5e-5) << m;
        }
    }
    Random random(6);
    for (int t = 0; t < 300; ++t) {
        Floats marks = {static_cast<Kel32f>(random.uniform(-9e4, 9e4))};
        for (int i = random.between(2, 40); i > 0; --i) {
            const auto next = static_cast<Kel32f>(marks.back() + random.uniform(60, t % 2 == 0 ? 70 : 500));
            marks.push_back(next);
        }
        const int spans = static_cast<int>(marks.size()) - 2;
        const Candidates c = candidates(marks, spans, 16000, 1e-9f, kInfinity);
        for (int m = 1; m <= spans; ++m) {
            std::vector<Real> intervals;
            for (std::size_t i = m; i < marks.size(); ++i) {
                intervals.push_back(static_cast<Real>(marks[i]) - marks[i - m]);
            }
            const auto count = static_cast<Real>(intervals.size());
            Real mean = 0, variance = 0;
            for (const Real d : intervals) mean += d / count;
            for (const Real d : intervals) variance += (d - mean) * (d - mean) / (count - 1);
            ASSERT_LE(ulpError(c.f0[m - 1], 16000 / mean), 0.51);
            ASSERT_TRUE(near(c.strength[m - 1], std::max(0.0L, 1 - std::sqrt(m * variance) / mean), 1e-6L));
        }
    }
    // Both ends belong to the range; a mark that does not ascend, or is no number, spoils all.
    EXPECT_EQ(candidates({0, 80, 160}, 1, 8000, 100, 100).f0[0], 100);
    EXPECT_EQ(candidates({0, 80, 160}, 1, 8000, 100.01f, 200).strength[0], 0);
    EXPECT_EQ(candidates({0, 80, 80}, 1).status, kelStatusOutOfRange);
    EXPECT_EQ(candidates({kNaN, 80, 90}, 1).status, kelStatusOutOfRange);
    EXPECT_EQ(candidates({0, 80, kInfinity}, 1).status, kelStatusOutOfRange);
    for (const Kel32f rate : {kNaN, kInfinity, 0.0f}) EXPECT_EQ(candidates({0}, 1, rate).status, kelStatusBadArg);
    EXPECT_EQ(candidates({0}, 1, 8000, kNaN).status, kelStatusBadArg);
    EXPECT_EQ(candidates({0}, 1, 8000, 40, kNaN).f0[0], -1);
}

// ---- entropy -------------------------------------------------------------------------------------------------------

Kel32f entropy(const Floats& spectrum, KelStatus expected = kelStatusOk) {
    const Guarded<Kel32f> guarded(spectrum);
    Kel32f result;
    EXPECT_EQ(kelsEntropy_32f(guarded.data(), static_cast<int>(spectrum.size()), &result), expected);
    return result;
}

TEST(Entropy, OfSpectra) {
    Random random(7);
    for (int n = 1; n < 400; ++n) {
        // From nearly a single line to nearly flat, any scale, some zeros.
        Floats spectrum(n < 350 ? n : 40 * n);
        const double slope = random.uniform(0, 60);
        for (auto& v : spectrum) {
            v = static_cast<Kel32f>(std::ldexp(std::exp(-slope * random.uniform(0, 1)), n % 3 == 0 ? -100 : 90));
            if (random.between(0, 9) == 0) v = n % 2 == 0 ? 0.0f : -0.0f;
        }
        spectrum[0] = 1;
        Real sum = 0, exact = 0;
        for (const Kel32f v : spectrum) sum += v;
        for (const Kel32f v : spectrum) exact -= v == 0 ? 0 : v / sum * std::log(v / sum);
        const Kel32f h = entropy(spectrum);
        ASSERT_TRUE(near(h, exact, 0x1p-24L * exact + (static_cast<Real>(spectrum.size()) + 100) * 0x1p-50L)) << n;
        ASSERT_GE(h, 0);
    }
    EXPECT_FLOAT_EQ(entropy({1, 1, 1, 1}), 1.386294f);
    EXPECT_FLOAT_EQ(entropy({1, 3}), 0.562335f);
    EXPECT_EQ(entropy({4, 0, 0}), 0);
    EXPECT_TRUE(std::isnan(entropy({1, kNaN, kInfinity, -1, 0}, kelStatusLogNegative)));
    EXPECT_EQ(entropy({0, -0.0f, 0}, kelStatusLogZero), -kInfinity);
    EXPECT_TRUE(std::isnan(entropy({1, 2, kNaN})));
    EXPECT_TRUE(std::isnan(entropy({1, 2, 3, 4, kInfinity})));
}

}  // namespace
