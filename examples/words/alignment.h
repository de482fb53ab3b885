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

// The same for a word with noise before and after it: a path may begin and end in any frame.  `noise` holds the log
// likelihood of each frame as noise.  Frames begin .. end - 1 are the word's.
struct SpottedWord {
    float logLikelihood = 0;  // of all frames
    int begin = 0;
    int end = 0;
};
SpottedWord bestWithin(const StateScores& scores, const float* noise);

// Gives all states the same number of frames, as far as that goes.
Path uniformPath(int frames, int states);

}  // namespace words

#endif
