// Independent pieces of work spread over the machine's processors, and the time that they take.
#ifndef WORDS_PARALLEL_H
#define WORDS_PARALLEL_H

#include <ctime>

#include "common/parallel.h"

namespace words {

using common::forEachInParallel;
using common::processorCount;

// The time that all threads of this program together spend computing; unlike the clock on the wall it does not depend
// on what else the machine does.
class ProcessorTimer {
  public:
    double seconds() const { return static_cast<double>(std::clock() - begin_) / CLOCKS_PER_SEC; }

  private:
    std::clock_t begin_ = std::clock();
};

}  // namespace words

#endif
