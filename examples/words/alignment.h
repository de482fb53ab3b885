// Which frame of a recording belongs to which state of a word: the Viterbi algorithm on a left-to-right model.
#ifndef WORDS_ALIGNMENT_H
#define WORDS_ALIGNMENT_H

#include <array>
#include <vector>

#include "kels_objects.h"

namespace words {

// From one frame to the next a path stays in its state, goes on to the next state or leaves one state out.  It enters
// as if it came from before the first state and leaves as if to one beyond the last.
enum Step { kStay, kNext, kSkip, kSteps };
using StepLogs = std::array<float, kSteps>;  // logarithms of their probabilities

// What a path is made of: the log likelihood of each frame (column) in each state (row), and of each state's steps.
struct StateScores {
    Matrix frames;
    std::vector<StepLogs> logSteps;
};

struct Path {
    std::vector<int> states;  // of every frame
    float logLikelihood = 0;
};

Path bestPath(const StateScores& scores);
float bestScore(const StateScores& scores);

// Gives all states the same number of frames, as far as that goes.
Path uniformPath(int frames, int states);

}  // namespace words

#endif
