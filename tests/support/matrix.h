// Matrices in both layouts, for tests that write them.
#pragma once

#include <cstring>
#include <vector>

#include "support/support.h"

namespace test {

// Rows with gaps between them that hold a mark, and row pointers to the same rows elsewhere.
template <class T>
class Matrix {
  public:
    static constexpr T kMark = T(-12345);

    Matrix(int h, int w, int gap = 2) : height(h), width(w), step(w + gap), values_(std::vector<T>(cells(), kMark)) {
        rows_.assign(static_cast<std::size_t>(h), std::vector<T>(static_cast<std::size_t>(w), kMark));
        for (auto& row : rows_) pointers_.push_back(row.data());
    }
    template <class Value>
    Matrix(int h, int w, int gap, const Value& value) : Matrix(h, w, gap) {
        for (int i = 0; i < h; ++i) {
            for (int j = 0; j < w; ++j)
                (*this)(i, j) = pointers_[static_cast<std::size_t>(i)][j] = static_cast<T>(value(i, j));
        }
    }
    Matrix(const Matrix& other) : Matrix(other.height, other.width, other.step - other.width, other) {}

    T& operator()(int i, int j) { return values_[i * step + j]; }
    T operator()(int i, int j) const { return values_[i * step + j]; }
    const T* d2lRow(int i) const { return pointers_[static_cast<std::size_t>(i)]; }

    T* d2() { return values_; }
    T** d2l() { return pointers_.data(); }
    const T** constD2l() { return const_cast<const T**>(pointers_.data()); }

    // Both layouts hold the same bits, and what is between the rows is as it was.
    ::testing::AssertionResult isWhole() const {
        for (int i = 0; i < height; ++i) {
            for (int j = 0; j < step && i * step + j < static_cast<int>(values_.size()); ++j) {
                const bool same = j < width ? std::memcmp(&values_[i * step + j], &d2lRow(i)[j], sizeof(T)) == 0
                                            : values_[i * step + j] == kMark;
                if (!same) return ::testing::AssertionFailure() << "row " << i << ", column " << j;
            }
        }
        return ::testing::AssertionSuccess();
    }

    const int height, width, step;

  private:
    std::size_t cells() const { return static_cast<std::size_t>((height - 1) * step + width); }

    Guarded<T> values_;
    std::vector<std::vector<T>> rows_;
    std::vector<T*> pointers_;
};

}  // namespace test
