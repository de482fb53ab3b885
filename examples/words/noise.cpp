#include "noise.h"

#include <cmath>
#include <numbers>
#include <random>

namespace words {
namespace {

constexpr int kTalkers = 6;
constexpr double kCarHz = 250;
constexpr int kOrder = 12;  // of the predictor that shapes noise like speech

// The same numbers on every system, unlike the distributions of the standard library.
class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    double uniform() { return (static_cast<double>(engine_()) + 0.5) / 4294967296.0; }
    double normal() { return std::sqrt(-2 * std::log(uniform())) * std::cos(2 * std::numbers::pi * uniform()); }
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(uniform() * static_cast<double>(count)); }

  private:
    std::mt19937 engine_;
};

double meanPower(const Vector& x) {
    Kel64f energy = 0;
    check(kelsDotProd_32f64f(x.data(), x.data(), x.size(), &energy), "kelsDotProd_32f64f");
    return energy / x.size();
}

// Two filters of the first order in a row.
void makeCar(Vector& x, int rate) {
    const double pole = std::exp(-2 * std::numbers::pi * kCarHz / rate);
    double first = 0, second = 0;
    for (int n = 0; n < x.size(); ++n) {
        first += (1 - pole) * (x[n] - first);
        second += (1 - pole) * (first - second);
        x[n] = static_cast<float>(second);
    }
}

// Through the synthesis filter of the speech's linear predictor.
void makeLike(Vector& x, const Vector& speech) {
    double r[kOrder + 1];
    for (int lag = 0; lag <= kOrder; ++lag) {
        Kel64f sum = 0;
        if (lag < speech.size())
            check(kelsDotProd_32f64f(speech.data(), speech.data() + lag, speech.size() - lag, &sum),
                  "kelsDotProd_32f64f");
        r[lag] = sum;
    }
    double a[kOrder + 1] = {1};
    double error = r[0] * (1 + 1e-6) + 1e-20;
    for (int i = 1; i <= kOrder; ++i) {
        double k = r[i];
        for (int j = 1; j < i; ++j) k += a[j] * r[i - j];
        k /= -error;
        double next[kOrder + 1];
        for (int j = 1; j < i; ++j) next[j] = a[j] + k * a[i - j];
        std::copy(next + 1, next + i, a + 1);
        a[i] = k;
        error *= 1 - k * k;
    }
    for (int n = 0; n < x.size(); ++n) {
        double y = x[n];
        for (int i = 1; i <= std::min(kOrder, n); ++i) y -= a[i] * x[n - i];
        x[n] = static_cast<float>(y);
    }
}

Vector babble(int length, const Recording& clean, std::span<const Recording* const> talkers, Random& random) {
    Vector sum(length);
    for (int talker = 0; talker < kTalkers; ++talker) {
        for (int n = -static_cast<int>(random.below(4000)); n < length;) {
            const Vector& word = talkers.empty() ? clean.samples : talkers[random.below(talkers.size())]->samples;
            const bool backwards = talkers.empty() && random.uniform() < 0.5;
            const float level = static_cast<float>(1 / std::sqrt(meanPower(word) + 1e-12));
            for (int i = 0; i < word.size() && n < length; ++i, ++n)
                if (n >= 0) sum[n] += level * word[backwards ? word.size() - 1 - i : i];
        }
    }
    return sum;
}

unsigned seedOf(const Recording& recording, const Surroundings& s) {
    unsigned seed = 2166136261U;
    const auto mix = [&](unsigned value) { seed = (seed ^ value) * 16777619U; };
    for (int n = 0; n < recording.samples.size(); n += 97)
        mix(static_cast<unsigned>(static_cast<int>(recording.samples[n] * 32768)));
    mix(static_cast<unsigned>(s.kind));
    mix(s.draw);
    return seed;
}

}  // namespace

std::string_view nameOf(NoiseKind kind) {
    constexpr std::string_view kNames[] = {"none", "white", "car", "speech", "babble"};
    return kNames[static_cast<std::size_t>(kind)];
}

NoisyRecording withNoise(const Recording& clean, const Surroundings& surroundings,
                         std::span<const Recording* const> talkers) {
    const auto samplesOf = [&](float seconds) { return static_cast<int>(seconds * static_cast<float>(clean.rate)); };
    NoisyRecording result;
    result.begin = samplesOf(surroundings.secondsBefore);
    result.end = result.begin + clean.samples.size();
    result.recording.rate = clean.rate;
    const int length = result.end + samplesOf(surroundings.secondsAfter);
    Vector mixed(length);
    check(kelsCopy_32f(clean.samples.data(), mixed.data() + result.begin, clean.samples.size()), "kelsCopy_32f");
    if (surroundings.kind != NoiseKind::none) {
        Random random(seedOf(clean, surroundings));
        Vector noise(length);
        if (surroundings.kind == NoiseKind::babble) {
            noise = babble(length, clean, talkers, random);
        } else {
            for (int n = 0; n < length; ++n) noise[n] = static_cast<float>(random.normal());
            if (surroundings.kind == NoiseKind::car) makeCar(noise, clean.rate);
            if (surroundings.kind == NoiseKind::speech) makeLike(noise, clean.samples);
        }
        const double ratio = meanPower(clean.samples) / (meanPower(noise) + 1e-30);
        const auto level = static_cast<float>(std::sqrt(ratio * std::pow(10, -surroundings.snrDb / 10)));
        for (int n = 0; n < length; ++n) mixed[n] += level * noise[n];
    }
    result.recording.samples = std::move(mixed);
    return result;
}

}  // namespace words
