// How well words are recognised where it is noisy.
#ifndef WORDS_NOISE_EVALUATION_H
#define WORDS_NOISE_EVALUATION_H

#include <iosfwd>

#include "evaluate.h"

namespace words {

struct NoiseTest {
    int draws = 1;  // of noise, for every recording and condition
    int every = 1;  // of so many recordings one is tested
};

// Recognises recordings with half a second before and after them: quiet, and in white noise, car noise, noise with the
// spectrum of speech and babble of other speakers at 20 to 0 dB.  Prints a line a condition: its name, its level in dB,
// the percentage that is right, the ends of its confidence interval (95 %, Wilson), and how many were right of how
// many.
void evaluateInNoise(const Corpus& corpus, const Split& split, const Choice& choice, const NoiseTest& test,
                     std::ostream& out);

// Writes the recordings of a folder to another one as they would sound in these surroundings.
void writeNoisy(const Corpus& corpus, const Surroundings& surroundings, int every, const std::filesystem::path& folder);

}  // namespace words

#endif
