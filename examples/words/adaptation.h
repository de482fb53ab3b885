// Models that have learned from some speakers, moved towards another one of whom there are a few recordings.
#ifndef WORDS_ADAPTATION_H
#define WORDS_ADAPTATION_H

#include <vector>

#include "accumulators.h"

namespace words {

// Moves the means of all Gaussians by the affine transform that makes what was heard likeliest (maximum-likelihood
// linear regression): one transform for all of them, so that words which were not spoken move, too.  Cepstra, deltas
// and accelerations are transformed each by themselves.  Then the means of what was heard move on towards it, the
// further the more of it there is.  The sums must have been formed with these models.
void adaptMeans(std::vector<WordModel>& models, const Accumulators& sums);

}  // namespace words

#endif
