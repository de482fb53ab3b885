// The weighting of waveforms, and blind equalisation where values are none.
#include "kels/aurora.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr Kel32f kNaN = std::numeric_limits<Kel32f>::quiet_NaN();

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

// None, half a step, a whole one, none; the component that is not a number is left out.
TEST(AuroraBlindEqualization, StepsByLoudness) {
    const Kel32f levels[] = {3.0f, 3.796875f, 20.0f, kNaN};
    const Real steps[] = {0, 0.0087890625L / 2, 0.0087890625L, 0};
    for (int i = 0; i < 4; ++i) {
        const Kel32f x[] = {5, kNaN}, ref[] = {3, 3};
        Kel32f y[2], bias[] = {1, 1};
        EXPECT_EQ(kelsBlindEqualizationRef_Aurora_32f(x, ref, y, 2, levels[i], bias), kelStatusOk);
        EXPECT_EQ(y[0], 4);
        EXPECT_NEAR(bias[0], 1 + steps[i] * (4 - 3), 1e-6);
        EXPECT_TRUE(std::isnan(y[1]) && bias[1] == 1);
    }
}

}  // namespace
