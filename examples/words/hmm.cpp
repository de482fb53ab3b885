#include "hmm.h"

#include <cmath>
#include <utility>

namespace words {
namespace {

// Before anything is known: states last five frames, and few are left out.
const StepLogs kFirstSteps{std::log(0.80F), std::log(0.19F), std::log(0.01F)};

}  // namespace

Hmm::Hmm(int states, const Mixture& start) : states_(static_cast<std::size_t>(states), State{start, kFirstSteps}) {}

Hmm::Hmm(std::vector<State> states) : states_(std::move(states)) {}

StateScores Hmm::score(const Matrix& frames) const {
    StateScores scores{Matrix(stateCount(), frames.rows()), {}};
    for (int i = 0; i < stateCount(); ++i) {
        state(i).mixture.score(frames, scores.frames.row(i));
        scores.logSteps.push_back(state(i).logSteps);
    }
    return scores;
}

Path Hmm::align(const Matrix& frames) const {
    return bestPath(score(frames));
}

float Hmm::logLikelihood(const Matrix& frames) const {
    return bestScore(score(frames));
}

}  // namespace words
