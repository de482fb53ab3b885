// What a recording sounds like where nobody speaks, told by the recording itself.
#ifndef WORDS_QUIET_H
#define WORDS_QUIET_H

#include <vector>

#include "hmm.h"

namespace words {

// Whether a recording is so much longer than a word that some of it is none.
bool hasQuiet(const Matrix& features);

// A Gaussian of the frames with the least energy.  It knows noise that training has not heard.  The variances are not
// below `leastVariance`, as the frames are few.  For recordings that have some.
Mixture quietOf(const Matrix& features, const Vector& leastVariance);

// The mean variance of all Gaussians of all words.
Vector meanVariance(const std::vector<WordModel>& words);

}  // namespace words

#endif
