// What every analysis does with samples before it looks at them.
#ifndef WORDS_SIGNAL_H
#define WORDS_SIGNAL_H

#include "kels_objects.h"

namespace words {

Vector hammingWindow(int length);

// The samples in the range of 16-bit audio, without their constant offset.
Vector withoutOffset(const Vector& samples);

}  // namespace words

#endif
