// The fold that adds likelihoods: scores are logarithms, and each is added to the running sum that is already there.
#pragma once

#include <cstddef>

#include "scoring/gauss/walk.h"
#include "scoring/log/vectors.h"

namespace kels::mixture {

using log::logAddVector;

template <class T>
struct LogAddTo {
    T* results;
    void operator()(std::size_t first, const T* scores, std::size_t n) const {
        logAddVector(scores, results + first, n);
    }
};
template <class T>
LogAddTo(T*) -> LogAddTo<T>;

}  // namespace kels::mixture
