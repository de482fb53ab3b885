// Blocks of rows in both layouts of the library.
#pragma once

#include <deque>

#include "support/support.h"

namespace test {

// An array whose rows have gaps between them that must not enter a result, and row pointers, the first of them to rows
// elsewhere that end at guard pages of their own.
template <class T>
struct Block {
    template <class Value>
    Block(int h, int w, int s, Value value) : height(h), width(w), step(s), d2((h - 1) * s + w) {
        const T poison = std::is_integral_v<T> ? T(12345) : std::numeric_limits<T>::quiet_NaN();
        for (int i = 0; i < (h - 1) * s + w; ++i) d2[i] = i % s < w ? static_cast<T>(value()) : poison;
        for (int i = 0; i < h; ++i) {
            const T* const row = &d2[i * s];
            pointers.push_back(i < 9 ? rows.emplace_back(std::vector<T>(row, row + w)).data() : row);
        }
    }
    T at(int i, int j) const { return d2[i * step + j]; }
    void fill(T value) {
        std::fill_n(d2.data(), d2.size(), value);
        for (auto& row : rows) std::fill_n(row.data(), row.size(), value);
    }

    int height, width, step;
    Guarded<T> d2;
    std::deque<Guarded<T>> rows;
    std::vector<const T*> pointers;
};

}  // namespace test
