#include "alignment.h"

#include <limits>

namespace words {
namespace {

constexpr float kImpossible = -1e30F;  // far below any log likelihood, and sums of it stay finite

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

// The best paths to every state, frame by frame; remember(frame, state, step) is told how each one got there.
// Returns the last state of the best path, and its score.
template <class Remember>
std::pair<int, float> search(const StateScores& scores, const Remember& remember) {
    const int states = scores.frames.rows();
    const int frames = scores.frames.cols();
    const auto logStep = [&](int state, int step) { return scores.logSteps[at(state)][at(step)]; };
    std::vector<float> best(at(states), kImpossible);
    best[0] = scores.frames.row(0)[0];
    if (states > 1) best[1] = logStep(0, kSkip) + scores.frames.row(1)[0];
    for (int t = 1; t < frames; ++t) {
        // From the last state to the first, so that what a state came from is still that of the frame before.
        for (int state = states - 1; state >= 0; --state) {
            float score = best[at(state)] + logStep(state, kStay);
            int step = kStay;
            for (int candidate = kNext; candidate <= std::min<int>(kSkip, state); ++candidate) {
                const int from = state - candidate;
                const float other = best[at(from)] + logStep(from, candidate);
                if (other > score) {
                    score = other;
                    step = candidate;
                }
            }
            best[at(state)] = score + scores.frames.row(state)[t];
            remember(t, state, step);
        }
    }
    int last = states - 1;
    float score = best[at(last)] + logStep(last, kNext);
    if (states > 1 && best[at(last - 1)] + logStep(last - 1, kSkip) > score) {
        --last;
        score = best[at(last)] + logStep(last, kSkip);
    }
    return {last, score};
}

}  // namespace

Path bestPath(const StateScores& scores) {
    const int states = scores.frames.rows();
    const int frames = scores.frames.cols();
    std::vector<unsigned char> steps(at(states) * at(frames));
    const auto stepAt = [&](int t, int state) -> unsigned char& { return steps[at(t) * at(states) + at(state)]; };
    const auto [last, score] =
        search(scores, [&](int t, int state, int step) { stepAt(t, state) = static_cast<unsigned char>(step); });
    Path path{std::vector<int>(at(frames)), score};
    int state = last;
    for (int t = frames - 1; t >= 0; --t) {
        path.states[at(t)] = state;
        state -= stepAt(t, state);
    }
    return path;
}

float bestScore(const StateScores& scores) {
    return search(scores, [](int, int, int) {}).second;
}

SpottedWord bestWithin(const StateScores& scores, const float* noise) {
    const int states = scores.frames.rows();
    const int frames = scores.frames.cols();
    struct Reached {
        float score = kImpossible;
        int begin = 0;
    };
    const auto logStep = [&](int state, int step) { return scores.logSteps[at(state)][at(step)]; };
    std::vector<Reached> best(at(states));
    float before = 0;  // the likelihood of the frames so far as noise
    float after = 0;   // and that of the others
    for (int t = 0; t < frames; ++t) after += noise[t];
    SpottedWord found{kImpossible, 0, frames};
    for (int t = 0; t < frames; ++t) {
        for (int state = states - 1; state >= 0; --state) {
            Reached here = best[at(state)];
            here.score += logStep(state, kStay);
            for (int step = kNext; step <= std::min<int>(kSkip, state); ++step) {
                const Reached& from = best[at(state - step)];
                const float score = from.score + logStep(state - step, step);
                if (score > here.score) here = {score, from.begin};
            }
            // Into the word.
            const float entry = state == 0 ? before : before + logStep(0, kSkip);
            if (state <= 1 && entry > here.score) here = {entry, t};
            here.score += scores.frames.row(state)[t];
            best[at(state)] = here;
        }
        before += noise[t];
        after -= noise[t];
        for (int state = std::max(0, states - 2); state < states; ++state) {
            const float score = best[at(state)].score + logStep(state, state == states - 1 ? kNext : kSkip) + after;
            if (score > found.logLikelihood) found = {score, best[at(state)].begin, t + 1};
        }
    }
    return found;
}

Path uniformPath(int frames, int states) {
    Path path;
    for (int t = 0; t < frames; ++t) path.states.push_back((2 * t + 1) * states / (2 * frames));
    return path;
}

}  // namespace words
