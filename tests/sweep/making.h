// What the makers of objects share, and those makers that have a file of their own.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <type_traits>
#include <vector>

#include "kels.h"
#include "sweep/objects.h"

namespace sweep {

inline void require(KelStatus status, const char* what) {
    if (status >= 0) return;
    std::fprintf(stderr, "cannot make %s: status %d\n", what, status);
    std::abort();
}
#define MAKE(call) require(call, #call)

inline Object inMemory(int bytes) {
    Object object;
    object.memory = std::make_shared<test::Guarded<Kel8u>>(static_cast<std::size_t>(bytes));
    object.pointer = object.memory->data();
    return object;
}

template <class T>
std::vector<T> values(Dice& dice, int n) {
    std::vector<T> v(static_cast<std::size_t>(n));
    for (T& x : v) x = static_cast<T>(dice.ordinary() * (std::is_integral_v<T> ? 60 : 1));
    return v;
}

// feature_objects.cpp
Object featureConfiguration(Dice& dice, int);
Object features(Dice& dice, int);
Object featureStream(Dice& dice, int);

}  // namespace sweep
