#include "quiet.h"

#include <numeric>

namespace words {
namespace {

constexpr int kWordFrames = 45;      // that many belong to the word ...
constexpr float kQuietShare = 0.6F;  // ... and so large a share of the others, those of least energy, to what is quiet
constexpr int kLeastQuiet = 8;
constexpr int kSmoothedFrames = 3;  // to either side

// How many frames of a recording are surely not the word's.
int quietFrames(int frames) {
    return static_cast<int>(kQuietShare * static_cast<float>(std::max(0, frames - kWordFrames)));
}

}  // namespace

bool hasQuiet(const Matrix& features) {
    return quietFrames(features.rows()) >= kLeastQuiet;
}

Mixture quietOf(const Matrix& features, const Vector& leastVariance) {
    const int frames = features.rows(), width = features.cols();
    const int energy = width / 3 - 1;  // the last of the statics
    std::vector<float> smoothed(static_cast<std::size_t>(frames));
    for (int t = 0; t < frames; ++t) {
        const int from = std::max(0, t - kSmoothedFrames), to = std::min(frames - 1, t + kSmoothedFrames);
        for (int k = from; k <= to; ++k)
            smoothed[static_cast<std::size_t>(t)] += features.row(k)[energy] / static_cast<float>(to - from + 1);
    }
    std::vector<int> order(static_cast<std::size_t>(frames));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return smoothed[static_cast<std::size_t>(a)] < smoothed[static_cast<std::size_t>(b)];
    });
    order.resize(static_cast<std::size_t>(quietFrames(frames)));
    Mixture quiet(1, width);
    for (int i = 0; i < width; ++i) {
        double sum = 0, squares = 0;
        for (const int t : order) {
            const double x = features.row(t)[i];
            sum += x;
            squares += x * x;
        }
        const auto count = static_cast<double>(order.size());
        quiet.mean(0)[i] = static_cast<float>(sum / count);
        const double variance = squares / count - sum * sum / (count * count);
        quiet.variance(0)[i] = std::max(static_cast<float>(variance), leastVariance[i]);
    }
    quiet.prepare();
    return quiet;
}

Vector meanVariance(const std::vector<WordModel>& words) {
    Vector sum(words.front().hmm.width());
    int count = 0;
    for (const auto& word : words) {
        for (int i = 0; i < word.hmm.stateCount(); ++i) {
            const Mixture& mixture = word.hmm.state(i).mixture;
            for (int k = 0; k < mixture.components(); ++k, ++count)
                check(kelsAdd_32f_I(mixture.variance(k), sum.data(), sum.size()), "kelsAdd_32f_I");
        }
    }
    check(kelsMulC_32f_I(1 / static_cast<float>(count), sum.data(), sum.size()), "kelsMulC_32f_I");
    return sum;
}

}  // namespace words
