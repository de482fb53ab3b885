// Taps from gains, their application, the weighting of waveforms and blind equalisation.
#include "kels/aurora.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr Kel32f kNaN = std::numeric_limits<Kel32f>::quiet_NaN();
const Real kPi = std::acos(-1.0L);

TEST(AuroraTaps, InverseCosineTransformOfTheBands) {
    const Real centres[] = {0,         62.5,    125,       187.5,     250,       1000 / 3.L, 1250 / 3.L,
                            520.833L,  625,     750,       875,       1000,      1125,       1270.833L,
                            1437.5L,   1625,    1812.5L,   2020.833L, 2229.167L, 2479.167L,  2729.167L,
                            3020.833L, 3312.5L, 3645.833L, 4000};
    Random random;
    for (int round = 0; round < 20; ++round) {
        Guarded<Kel32f> gains(25), taps(17);
        for (int k = 0; k < 25; ++k) gains[k] = static_cast<Kel32f>(random.uniform(0.07, 1));
        EXPECT_EQ(kelsTabsCalculation_Aurora_32f(gains, taps), kelStatusOk);
        for (int n = 0; n <= 8; ++n) {
            Real sum = 0;
            for (int k = 0; k < 25; ++k) {
                const Real width = (centres[std::min(k + 1, 24)] - centres[std::max(k - 1, 0)]) / 8000;
                sum += gains[k] * width * std::cos(2 * kPi * n * centres[k] / 8000);
            }
            const Real window = 0.5L - 0.5L * std::cos(2 * kPi * (8 + n + 0.5L) / 17);
            EXPECT_NEAR(taps[8 + n], sum * window, 2e-6) << n;
            EXPECT_TRUE(sameBits(taps[8 + n], taps[8 - n]));
        }
    }
}

TEST(AuroraResidualFilter, IsAConvolution) {
    Random random;
    for (const int len : {1, 2, 3, 5, 8, 15, 16, 17, 64, 80, 131}) {
        const Guarded<Kel32f> x(random.vector<Kel32f>(static_cast<std::size_t>(len + 16)));
        const Guarded<Kel32f> taps(random.vector<Kel32f>(17));
        Guarded<Kel32f> y(static_cast<std::size_t>(len));
        EXPECT_EQ(kelsResidualFilter_Aurora_32f(x.data(), taps.data(), y, len), kelStatusOk);
        for (int n = 0; n < len; ++n) {
            Real sum = 0, size = 0;
            for (int j = 0; j < 17; ++j) {
                const Real term = Real{taps[j]} * x[n + 16 - j];
                sum += term;
                size += std::fabs(term);
            }
            EXPECT_NEAR(y[n], sum, 17 * 6e-8 * size) << n << " of " << len;
        }
    }
}

// The maxima in a list of their own, and the weights from that.
std::vector<Real> weighted(const std::vector<Kel32f>& x) {
    const int len = static_cast<int>(x.size());
    const auto at = [&](const auto& v, int n) { return v[static_cast<std::size_t>(std::clamp(n, 0, len - 1))]; };
    std::vector<Kel32f> e(x.size()), s(x.size());
    for (int n = 0; n < len; ++n) {
        e[static_cast<std::size_t>(n)] = std::fabs(at(x, n) * at(x, n) - at(x, n - 1) * at(x, n + 1));
    }
    for (int n = 0; n < len; ++n) {
        for (int i = n - 4; i <= n + 4; ++i) s[static_cast<std::size_t>(n)] += at(e, i);
    }
    std::vector<int> maxima;
    const auto best = [&](int from, int to, bool lastOfEquals) {
        int place = from;
        for (int n = from; n <= to; ++n) {
            if (at(s, n) > at(s, place) || (lastOfEquals && at(s, n) == at(s, place))) place = n;
        }
        maxima.push_back(place);
    };
    best(0, len - 1, false);
    if (at(s, maxima[0]) > 0) {
        for (int m = maxima[0]; m + 25 < len; m = maxima.back()) best(m + 25, std::min(m + 79, len - 1), true);
        for (int m = maxima[0]; m - 25 > 0; m = maxima.back()) best(std::max(m - 79, 0), m - 25, false);
    }
    std::sort(maxima.begin(), maxima.end());
    std::vector<Real> half(x.size() + 1, 0.4L);
    for (std::size_t i = 0; maxima.size() > 1 && i < maxima.size(); ++i) {
        const int distance = i + 1 < maxima.size() ? maxima[i + 1] - maxima[i] : maxima[i] - maxima[i - 1];
        for (int n = maxima[i] - 4; n < maxima[i] - 4 + (4 * distance + 4) / 5; ++n) {
            if (n >= 0 && n < len) half[static_cast<std::size_t>(n)] = 0.6L;
        }
    }
    half.back() = half[x.size() - 1];
    std::vector<Real> y;
    for (std::size_t n = 0; n < x.size(); ++n) y.push_back(x[n] * (half[n] + half[n + 1]));
    return y;
}

TEST(AuroraWaveProcessing, RaisesWhatFollowsTheMaxima) {
    Random random;
    for (int round = 0; round < 300; ++round) {
        const int len = round % 3 == 0 ? 200 : random.between(1, round % 50 == 1 ? 1000 : 270);
        const int period = random.between(3, 150), kind = random.between(0, 2);
        std::vector<Kel32f> x(static_cast<std::size_t>(len));
        for (int n = 0; n < len; ++n) {
            // Pulses (whose neighbours tie), voices, and a constant.  Integers, so that sums are exact in any order.
            const int decay = std::max(0, 1000 - 40 * (n % period));
            x[static_cast<std::size_t>(n)] = static_cast<Kel32f>(kind == 0   ? (n % period == 1) * 100
                                                                 : kind == 1 ? random.between(-decay, decay) / 8
                                                                             : 100);
        }
        Guarded<Kel32f> src(x), dst(x.size());
        EXPECT_EQ(kelsWaveProcessing_Aurora_32f(src, dst, len), kelStatusOk);
        EXPECT_EQ(kelsWaveProcessing_Aurora_32f(src, src, len), kelStatusOk);
        Real energy = 0;
        for (const Kel32f v : x) energy += v * v;
        const auto expected = energy >= 100 ? weighted(x) : std::vector<Real>(x.begin(), x.end());
        for (int n = 0; n < len; ++n) {
            EXPECT_LE(ulpError(dst[n], expected[static_cast<std::size_t>(n)]), 2) << n << " of " << len;
            EXPECT_EQ(src[n], dst[n]);
        }
    }
    Guarded<Kel32f> quiet(200), spoilt(std::vector<Kel32f>(200, 50));
    quiet[100] = 9.9f;
    spoilt[3] = kNaN;
    kelsWaveProcessing_Aurora_32f(quiet, quiet, 200);
    kelsWaveProcessing_Aurora_32f(spoilt, spoilt, 200);
    EXPECT_TRUE(quiet[100] == 9.9f && spoilt[4] == 50);
    for (const int len : {256, 257}) {
        Guarded<Kel32f> frame(std::vector<Kel32f>(static_cast<std::size_t>(len), 50));
        const AllocationWatch none(0);
        EXPECT_EQ(kelsWaveProcessing_Aurora_32f(frame, frame, len), len > 256 ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(frame[0], len > 256 ? 50 : 40);
    }
}

TEST(AuroraBlindEqualization, LeadsToTheReferenceByLoudness) {
    // The steps that four levels give: none, half, whole, none.
    const Kel32f levels[] = {3.0f, 3.796875f, 20.0f, kNaN};
    const Real steps[] = {0, 0.0087890625L / 2, 0.0087890625L, 0};
    Random random;
    for (int i = 0; i < 4; ++i) {
        const auto x = random.vector<Kel32f>(12), ref = random.vector<Kel32f>(12), old = random.vector<Kel32f>(12);
        for (int place = 0; place < 3; ++place) {  // the result alone, and in the place of each source
            Guarded<Kel32f> src(x), target(ref), bias(old), own(12);
            src[5] = kNaN;
            Kel32f* const y = place == 0 ? own.data() : place == 1 ? src.data() : target.data();
            EXPECT_EQ(kelsBlindEqualizationRef_Aurora_32f(src, target, y, 12, levels[i], bias), kelStatusOk);
            for (std::size_t k = 0; k < 12; ++k) {
                if (k == 5) {
                    EXPECT_TRUE(std::isnan(y[k]) && bias[k] == old[k]);
                    continue;
                }
                EXPECT_EQ(y[k], x[k] - old[k]);
                EXPECT_NEAR(bias[k], old[k] + steps[i] * (y[k] - Real{ref[k]}), 1e-6 * (1 + std::fabs(old[k])));
            }
        }
    }
    Guarded<Kel32f> cepstra(12), bias(12);
    cepstra[0] = -3;
    EXPECT_EQ(kelsBlindEqualization_Aurora_32f(cepstra, cepstra, 3.8f, bias), kelStatusOk);
    EXPECT_NEAR(bias[0], 0.0160028, 1e-7);
    EXPECT_NEAR(bias[1], -0.000876745, 1e-9);
    EXPECT_EQ(cepstra[0], -3);
}

}  // namespace
