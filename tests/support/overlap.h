// Functions whose arrays may overlap in any way.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "support/random.h"

namespace test {

// Expects that call(arrays, len), on arrays that reach into one another by a few elements, does what it does on one
// element of each of them after the other.
template <class T, std::size_t n, class Call>
void expectLoopWhereArraysOverlap(Call call) {
    Random random(21);
    for (int round = 0; round < 3000; ++round) {
        const int len = random.between(1, round % 3 ? 24 : 90);
        std::array<int, n> places;
        for (int& place : places) place = random.between(0, round % 2 ? 12 : 100);
        std::vector<T> together(200);
        for (T& x : together) x = static_cast<T>(random.uniform(0.25, 3));
        std::vector<T> single = together;
        const auto arrays = [&](std::vector<T>& memory, int at) {
            std::array<T*, n> p;
            for (std::size_t i = 0; i < n; ++i) p[i] = memory.data() + places[i] + at;
            return p;
        };
        call(arrays(together, 0), len);
        for (int k = 0; k < len; ++k) call(arrays(single, k), 1);
        const bool same = std::memcmp(together.data(), single.data(), together.size() * sizeof(T)) == 0;
        ASSERT_TRUE(same) << len << " elements at " << testing::PrintToString(places);
    }
}

}  // namespace test
