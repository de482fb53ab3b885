#include "noise_reduction.h"

#include <cmath>
#include <random>

#include "common/aurora_stream.h"
#include "common/stream.h"

namespace words {
namespace {

constexpr float kFullScale = 32768;
constexpr float kStretchSeconds = 0.1F;  // what is quietest ...
constexpr int kTurns = 4;                // ... is heard so many times, forwards and backwards in turn
constexpr float kDither = 1;             // digital silence is no model of a quiet room

// The samples in the range of 16-bit audio, at a rate that the front end takes.
std::vector<float> atRate(const Recording& recording, int rate) {
    constexpr Quality kForSpeech{"speech", 94, 512, 0.90F, 9};
    const Vector& x = recording.samples;
    std::vector<float> samples(x.data(), x.data() + x.size());
    for (float& v : samples) v *= kFullScale;
    if (recording.rate == rate) return samples;
    const Resampler resampler(recording.rate, rate, kForSpeech);
    Channel channel(resampler);
    std::vector<float> resampled;
    channel.feed(samples.data(), static_cast<int>(samples.size()), resampled);
    const std::vector<float> silence(static_cast<std::size_t>(2 * resampler.reach()) + 8);
    channel.feed(silence.data(), static_cast<int>(silence.size()), resampled);
    resampled.resize(std::min(
        resampled.size(), samples.size() * static_cast<std::size_t>(rate) / static_cast<std::size_t>(recording.rate)));
    return resampled;
}

// Where the energy of `length` samples is least.
std::size_t quietest(const std::vector<float>& x, std::size_t length) {
    double energy = 0, least = 0;
    std::size_t place = 0;
    for (std::size_t n = 0; n < x.size(); ++n) {
        energy += double{x[n]} * x[n];
        if (n + 1 < length) continue;
        if (n + 1 == length || energy < least) {
            least = energy;
            place = n + 1 - length;
        }
        energy -= double{x[n + 1 - length]} * x[n + 1 - length];
    }
    return place;
}

}  // namespace

Denoised reduceNoise(const Recording& recording, float warp) {
    const int rate = recording.rate >= 16000 ? 16000 : 8000;
    std::vector<float> samples = atRate(recording, rate);
    std::mt19937 random(1);
    for (float& x : samples) x += kDither * (static_cast<float>(random()) / 2147483648.0F - 1);

    const auto stretch = std::min(samples.size(), static_cast<std::size_t>(kStretchSeconds * static_cast<float>(rate)));
    const auto from = samples.begin() + static_cast<std::ptrdiff_t>(quietest(samples, stretch));
    std::vector<float> forwards(from, from + static_cast<std::ptrdiff_t>(stretch));
    const std::vector<float> backwards(forwards.rbegin(), forwards.rend());

    std::vector<float> denoised, features;
    common::AuroraStream stream(
        rate,
        {[&](const float* x, int n) { denoised.insert(denoised.end(), x, x + n); },
         [&](const float* row) { features.insert(features.end(), row, row + common::AuroraStream::kFeatures); },
         {},
         {}},
        warp);
    for (int turn = 0; turn < kTurns; ++turn) {
        const auto& part = turn % 2 == 0 ? backwards : forwards;
        stream.feed(part.data(), part.size());
    }
    stream.feed(samples.data(), samples.size());
    stream.finish();

    const std::size_t lead = kTurns * stretch * 8000 / static_cast<std::size_t>(rate);
    const std::size_t rows = features.size() / common::AuroraStream::kFeatures;
    const std::size_t leadRows = std::min(rows, lead / common::AuroraChain::kShift);
    Denoised result;
    result.recording.rate = 8000;
    result.recording.samples = Vector(static_cast<int>(denoised.size() - lead));
    for (int n = 0; n < result.recording.samples.size(); ++n)
        result.recording.samples[n] = denoised[lead + static_cast<std::size_t>(n)] / kFullScale;
    result.features = Matrix(static_cast<int>(rows - leadRows), common::AuroraStream::kFeatures);
    for (std::size_t t = leadRows; t < rows; ++t)
        std::copy_n(&features[t * common::AuroraStream::kFeatures], common::AuroraStream::kFeatures,
                    result.features.row(static_cast<int>(t - leadRows)));
    return result;
}

}  // namespace words
