// Blocks for the chain, and derivatives of what it gives.
#include "aurora_stream.h"

#include <algorithm>
#include <stdexcept>

namespace common {
namespace {

constexpr int kShift = AuroraChain::kShift, kStatics = AuroraChain::kStatics;
constexpr int kHistory = 8, kReach = 4;  // rows that the derivatives keep; rows to either side that they look at

std::size_t framesIn(std::size_t samples) {
    return samples < AuroraStream::kFrame ? 0 : (samples - AuroraStream::kFrame) / kShift + 1;
}

}  // namespace

AuroraStream::AuroraStream(int rate, Listener listener, float warp)
    : chain_(rate, warp), listener_(std::move(listener)) {}

void AuroraStream::feed(const float* samples, std::size_t count) {
    const auto length = static_cast<std::size_t>(chain_.blockLength());
    samples_ += count;
    while (count > 0) {
        const std::size_t part = std::min(count, length - block_.size());
        block_.insert(block_.end(), samples, samples + part);
        samples += part;
        count -= part;
        if (block_.size() < length) return;
        take(block_.data());
        block_.clear();
    }
}

void AuroraStream::finish() {
    wanted_ = samples_ * kShift / static_cast<std::size_t>(chain_.blockLength());
    // Silence brings out what is still inside.
    while (given_ < wanted_ || frames_ < framesIn(wanted_)) {
        block_.resize(static_cast<std::size_t>(chain_.blockLength()));
        take(block_.data());
        block_.clear();
    }
    while (begun_ && decisions_ < frames_) decide(chain_.flush());
    if (frames_ == 0 || !listener_.features) return;
    // A stream shorter than the derivatives take ends with its last frame, repeated.
    while (rows_ == 0 && statics_.size() < kHistory * kStatics) {
        const std::vector<float> last(statics_.end() - kStatics, statics_.end());
        statics_.insert(statics_.end(), last.begin(), last.end());
    }
    derive(kelDeltaBlockLast);
}

void AuroraStream::take(const float* block) {
    static constexpr float kNothing[kShift] = {};
    static constexpr float kSilence[kStatics] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -230, -50};
    ++blocks_;
    // Silence before the first sound would teach the noise estimates that there is no noise.
    begun_ = begun_ || !std::all_of(block, block + chain_.blockLength(), [](float x) { return x == 0; });
    if (!begun_) {
        ++silent_;
        put(kNothing, nullptr);
    }
    // A frame is longer than two blocks.
    if (frames_ < silent_ && frames_ + 2 < blocks_) {
        put(nullptr, kSilence);
        decide(kelVadNoise);
    }
    if (!begun_) return;
    const auto output = chain_.take(block);
    if (output.denoised && listener_.gains && given_ < wanted_) listener_.gains(chain_.gains());
    put(output.denoised, output.statics);
    // The first answers are about nothing yet.
    if (output.decision != kelVadPending) decide(output.decision);
}

void AuroraStream::decide(int decision) {
    if (decisions_ == framesIn(wanted_)) return;
    ++decisions_;
    if (listener_.decision) listener_.decision(decision == kelVadSpeech);
}

void AuroraStream::put(const float* denoised, const float* statics) {
    if (denoised) {
        const std::size_t count = std::min<std::size_t>(kShift, wanted_ - given_);
        if (listener_.denoised && count > 0) listener_.denoised(denoised, static_cast<int>(count));
        given_ += count;
    }
    if (!statics || frames_ == framesIn(wanted_)) return;
    ++frames_;
    if (!listener_.features) return;
    statics_.insert(statics_.end(), statics, statics + kStatics);
    // The first block of rows is as long as the derivatives reach; each later row completes one before it.
    if (rows_ > 0 || statics_.size() == kHistory * kStatics) derive(rows_ > 0 ? 0 : kelDeltaBlockFirst);
}

void AuroraStream::derive(int mode) {
    const bool first = history_.empty();
    const int height = static_cast<int>(statics_.size()) / kStatics, before = first ? 0 : kHistory;
    std::vector<float> block = history_;
    block.resize(static_cast<std::size_t>((before + height) * kFeatures));
    const float nothing = 0;
    const float* const source = height > 0 ? statics_.data() : &nothing;
    if (kelsDeltaDelta_Aurora_32f_D2(source, block.data(), kFeatures, height,
                                     mode | (first ? kelDeltaBlockFirst : 0)) != kelStatusOk)
        throw std::runtime_error("the derivatives of the features fail");
    statics_.clear();
    const int from = first ? 0 : kHistory - kReach;
    const int to = before + height - ((mode & kelDeltaBlockLast) != 0 ? 0 : kReach);
    for (int t = from; t < to && rows_ < frames_; ++t, ++rows_) {
        listener_.features(&block[static_cast<std::size_t>(t * kFeatures)]);
    }
    history_.assign(block.end() - kHistory * kFeatures, block.end());
}

}  // namespace common
