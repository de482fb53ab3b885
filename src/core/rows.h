// One view of a matrix for both layouts: rows[i] is a pointer to row i.  Kernels take the view as a template argument
// and are written once.
#pragma once

#include <cstddef>

namespace kels {

// D2: one array, rows `step` elements apart.
template <class T>
class StepRows {
  public:
    StepRows(T* base, int step) : base_(base), step_(step) {}
    T* operator[](std::ptrdiff_t i) const { return base_ + i * step_; }
    // The part of the matrix from a row, and a column, on.
    StepRows from(std::ptrdiff_t row, std::ptrdiff_t column = 0) const {
        StepRows rest = *this;
        rest.base_ += row * step_ + column;
        return rest;
    }

  private:
    T* base_;
    std::ptrdiff_t step_;
};

// D2L: an array of row pointers.
template <class T>
class PointerRows {
  public:
    explicit PointerRows(T* const* rows) : rows_(rows) {}
    T* operator[](std::ptrdiff_t i) const { return rows_[i]; }

  private:
    T* const* rows_;
};

}  // namespace kels
