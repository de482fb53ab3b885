#include "tracker.h"

#include <kels.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace pitch {
namespace {

constexpr std::size_t kHop = static_cast<std::size_t>(kRate * Tracker::kStep);
constexpr std::size_t kPathFrames = 20;     // that a decision waits for
constexpr std::size_t kAheadFrames = 15;    // the noise is the quietest of these ...
constexpr std::size_t kBehindFrames = 150;  // ... and these,
constexpr float kFaint = 5e-4F;             // or this much of the loudest of them,
constexpr float kSilence = 1;               // or the least that 16 bits can say
// Costs, beside 1 less the score.
constexpr float kLongPeriod = 0.3F;  // what the longest period takes off a score: octaves below are as similar
constexpr float kVoicing = 0.3F;     // of a change between voice and none
constexpr float kJump = 2;           // of a jump, times the logarithm of its ratio ...
constexpr float kOctave = 0.35F;     // ... or as for this, if it is about an octave
constexpr float kNoVoice = -0.05F;   // of a frame without voice, besides its best score

float stepCost(float before, float now) {
    const float q = std::fabs(std::log(now / before));
    return kJump * std::min(q, kOctave + std::fabs(q - std::log(2.0F)));
}

}  // namespace

Tracker::Tracker(int rate, const Range& range, bool keepSimilarity, Listener listener)
    : analyser_(range),
      band_(rate),
      keepSimilarity_(keepSimilarity),
      listener_(std::move(listener)),
      longest_(1 / range.lowest),
      signal_(static_cast<std::size_t>(analyser_.reach())) {}

void Tracker::feed(const float* samples, std::size_t count) {
    band_.feed(samples, count);
    advance();
}

void Tracker::finish() {
    band_.finish();
    ended_ = true;
    advance();
    tell(0);
}

float Tracker::energyOf(std::size_t place) const {
    float sum;
    kelsDotProd_32f(&signal_[place], &signal_[place], kHop, &sum);
    return sum / kHop;
}

void Tracker::advance() {
    signal_.insert(signal_.end(), band_.samples().begin(), band_.samples().end());
    end_ += band_.samples().size();
    band_.clear();
    const auto reach = static_cast<std::size_t>(analyser_.reach());
    const std::size_t ahead = std::max(reach, kHop * (kAheadFrames + 1));
    if (ended_) signal_.resize(signal_.size() + ahead);
    // Sample `reach` of the signal is that of the next frame.
    while (next_ * kHop < end_ && signal_.size() >= reach + ahead) {
        while (firstEnergy_ + energies_.size() <= next_ + kAheadFrames) {
            const std::size_t frame = firstEnergy_ + energies_.size();
            if (ended_ && (frame + 1) * kHop > end_) break;
            energies_.push_back(energyOf(reach + (frame - next_) * kHop));
        }
        const auto [quietest, loudest] = std::minmax_element(energies_.begin(), energies_.end());
        const float noise = energies_.empty() ? 0 : std::max(*quietest, kFaint * *loudest);
        Frame frame;
        frame.time = static_cast<double>(next_) * kStep;
        frame.candidates = analyser_.analyse(&signal_[reach], std::max(noise, kSilence));
        if (keepSimilarity_) frame.similarity = analyser_.similarity();
        extendPaths(std::move(frame));
        ++next_;
        signal_.erase(signal_.begin(), signal_.begin() + kHop);
        if (firstEnergy_ + kBehindFrames < next_) {
            energies_.pop_front();
            ++firstEnergy_;
        }
    }
}

void Tracker::extendPaths(Frame frame) {
    Column column;
    float best = 0;
    for (const Candidate& c : frame.candidates) best = std::max(best, c.score);
    column.states.push_back({{0, best}, best + kNoVoice, 0});
    for (const Candidate& c : frame.candidates) {
        const float length = 1 / (c.frequency * longest_);
        column.states.push_back({c, 1 - c.score * (1 - kLongPeriod * length), 0});
    }
    if (!columns_.empty()) {
        const auto& before = columns_.back().states;
        for (State& now : column.states) {
            float least = 0;
            for (std::size_t i = 0; i < before.size(); ++i) {
                const float from = before[i].candidate.frequency, to = now.candidate.frequency;
                const bool voiced = from > 0 && to > 0;
                const float step = voiced ? stepCost(from, to) : from == to ? 0 : kVoicing;
                if (i > 0 && before[i].cost + step >= least) continue;
                least = before[i].cost + step;
                now.before = i;
            }
            now.cost += least;
        }
    }
    // Costs are compared, never told: the common part goes, lest it grows for ever.
    float common = column.states[0].cost;
    for (const State& s : column.states) common = std::min(common, s.cost);
    for (State& s : column.states) s.cost -= common;
    column.frame = std::move(frame);
    columns_.push_back(std::move(column));
    if (columns_.size() > kPathFrames) tell(kPathFrames);
}

// Tells frames, along the cheapest path, until `left` of them wait.
void Tracker::tell(std::size_t left) {
    if (columns_.size() <= left) return;
    const auto& last = columns_.back().states;
    const auto cheaper = [](const State& a, const State& b) { return a.cost < b.cost; };
    auto state = static_cast<std::size_t>(std::min_element(last.begin(), last.end(), cheaper) - last.begin());
    for (std::size_t i = columns_.size(); i-- > 0;) {
        Column& column = columns_[i];
        column.frame.frequency = column.states[state].candidate.frequency;
        column.frame.strength = column.states[state].candidate.score;
        state = column.states[state].before;
    }
    while (columns_.size() > left) {
        listener_(columns_.front().frame);
        columns_.pop_front();
    }
}

}  // namespace pitch
