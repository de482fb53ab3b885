// A left-to-right hidden Markov model: a word as a sequence of states, each with a mixture for its frames.
#ifndef WORDS_HMM_H
#define WORDS_HMM_H

#include <array>
#include <vector>

#include "alignment.h"
#include "mixture.h"

namespace words {

struct State {
    Mixture mixture;
    StepLogs logSteps{};
};

class Hmm {
  public:
    // States of one component each, all of them with this mean and variance.
    Hmm(int states, const Mixture& start);
    explicit Hmm(std::vector<State> states);

    int stateCount() const { return static_cast<int>(states_.size()); }
    int width() const { return states_.front().mixture.width(); }
    State& state(int i) { return states_[static_cast<std::size_t>(i)]; }
    const State& state(int i) const { return states_[static_cast<std::size_t>(i)]; }

    // The likeliest path through all frames.
    Path align(const Matrix& frames) const;
    // Of the likeliest path.
    float logLikelihood(const Matrix& frames) const;

    // The log likelihood of every frame in every state.
    StateScores score(const Matrix& frames) const;

  private:
    std::vector<State> states_;
};

struct WordModel {
    std::string word;
    Hmm hmm;
};

}  // namespace words

#endif
