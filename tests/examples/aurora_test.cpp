// The Aurora front end as a whole: how streams are cut, and what it does to noise, speech, silence and bad samples.
#include "common/aurora_stream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using common::AuroraStream;
using Signal = std::vector<float>;

struct Heard {
    Signal denoised, features;
    std::vector<bool> decisions;
};
// In pieces of random lengths up to `longest`.
Heard hear(const Signal& x, int rate, std::size_t longest) {
    Heard heard;
    AuroraStream stream(rate, {[&](const float* v, int n) { heard.denoised.insert(heard.denoised.end(), v, v + n); },
                               [&](const float* v) { heard.features.insert(heard.features.end(), v, v + 39); },
                               [&](bool speech) { heard.decisions.push_back(speech); },
                               {}});
    std::mt19937 random(3);
    for (std::size_t from = 0; from < x.size();) {
        const std::size_t n = std::min(x.size() - from, 1 + random() % longest);
        stream.feed(&x[from], n);
        from += n;
    }
    stream.finish();
    return heard;
}

Signal noise(std::size_t length, double deviation, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::normal_distribution<double> value(0, deviation);
    Signal x(length);
    for (float& v : x) v = static_cast<float>(value(random));
    return x;
}
// Voiced syllables of 0.2 s from 0.5 s on, every 0.4 s.
Signal syllables(std::size_t length, double rate) {
    constexpr double kPi = 3.14159265358979323846;
    Signal x(length);
    for (std::size_t n = 0; n < length; ++n) {
        const double t = static_cast<double>(n) / rate, within = std::fmod(t + 0.3, 0.4);
        if (t < 0.5 || within > 0.2) continue;
        double sum = 0;
        for (int h = 1; h * 130 < rate / 2; ++h) {
            const double f = 130 * h;
            const double formants = 1 / (1 + std::pow((f - 600) / 150, 2)) + 0.7 / (1 + std::pow((f - 1600) / 200, 2));
            sum += formants * std::cos(2 * kPi * f * t);
        }
        x[n] = static_cast<float>(2000 * sum * std::pow(std::sin(kPi * within / 0.2), 2));
    }
    return x;
}
Signal sum(Signal a, const Signal& b) {
    for (std::size_t n = 0; n < a.size(); ++n) a[n] += b[n];
    return a;
}
double level(const Signal& x, std::size_t from, std::size_t to) {
    double energy = 0;
    for (std::size_t n = from; n < to; ++n) energy += double{x[n]} * x[n];
    return 10 * std::log10(energy / static_cast<double>(to - from) + 1e-30);
}

TEST(AuroraFrontEnd, PiecesMakeNoDifference) {
    for (const int rate : {8000, 16000}) {
        for (const std::size_t length : {std::size_t{30011}, std::size_t{1}, std::size_t{399}, std::size_t{2000}}) {
            auto x = sum(syllables(length, rate), noise(length, 30));
            std::fill_n(x.begin(), std::min<std::size_t>(length, 700), 0.0F);  // as files begin that were faded in
            const auto whole = hear(x, rate, length), parts = hear(x, rate, 50);
            const std::size_t low = length * 8000 / static_cast<std::size_t>(rate);
            const std::size_t frames = low < 200 ? 0 : (low - 200) / 80 + 1;
            EXPECT_EQ(whole.denoised.size(), low);
            EXPECT_EQ(whole.features.size(), 39 * frames);
            EXPECT_EQ(whole.decisions.size(), frames);
            EXPECT_TRUE(whole.denoised == parts.denoised && whole.features == parts.features);
            EXPECT_EQ(whole.decisions, parts.decisions);
        }
    }
}

TEST(AuroraFrontEnd, NoiseFallsAndSpeechStays) {
    for (const int rate : {8000, 16000}) {
        const auto length = static_cast<std::size_t>(4 * rate);
        for (const double deviation : {10.0, 300.0}) {
            const auto heard = hear(noise(length, deviation), rate, length);
            const double before = 20 * std::log10(deviation) - (rate == 16000 ? 3 : 0);
            EXPECT_NEAR(level(heard.denoised, 8000, 32000), before - 28, 1.5) << rate;
        }
        const auto speech = syllables(length, rate);
        const double loud = level(hear(speech, rate, length).denoised, 4000, 32000);
        const double power = level(speech, static_cast<std::size_t>(rate) / 2, length);
        EXPECT_NEAR(loud, power, 2);  // each syllable's beginning counts as noise for a frame
        const double deviation = std::pow(10, (power - 10) / 20);
        const auto heard = hear(sum(speech, noise(length, deviation)), rate, length);
        EXPECT_NEAR(level(heard.denoised, 4000, 32000), power, 3);
        EXPECT_LT(level(heard.denoised, 1600, 3200), 20 * std::log10(deviation) - 22);
        // Speech is found, and the first 0.4 s are none.
        const auto& decisions = heard.decisions;
        EXPECT_EQ(std::accumulate(decisions.begin(), decisions.begin() + 40, 0), 0);
        EXPECT_GT(std::accumulate(decisions.begin() + 45, decisions.end(), 0), 200);
    }
}

TEST(AuroraFrontEnd, SilenceAndBadSamples) {
    const auto silent = hear(Signal(8000), 8000, 100);
    EXPECT_EQ(silent.denoised, Signal(8000));
    for (std::size_t t = 0; t < silent.features.size(); ++t) {
        const float expected = t % 39 == 12 ? 0.6F * -230 / 23 + 0.4F * -50 : 0;
        EXPECT_NEAR(silent.features[t], expected, 1e-4) << t;
    }
    auto x = sum(syllables(16000, 8000), noise(16000, 50));
    const auto good = hear(x, 8000, 100);
    x[8003] = std::numeric_limits<float>::quiet_NaN();
    const auto bad = hear(x, 8000, 100);
    std::vector<std::size_t> spoilt;
    for (std::size_t n = 0; n < bad.denoised.size(); ++n) {
        if (!std::isfinite(bad.denoised[n])) spoilt.push_back(n);
    }
    EXPECT_TRUE(!spoilt.empty() && spoilt.back() - spoilt.front() < 240) << spoilt.size();
    EXPECT_NEAR(level(bad.denoised, 10000, 16000), level(good.denoised, 10000, 16000), 0.3);
}

}  // namespace
