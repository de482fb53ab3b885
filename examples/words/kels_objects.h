// The library's C objects as C++ ones: owned, and with statuses turned into exceptions.
#ifndef WORDS_KELS_OBJECTS_H
#define WORDS_KELS_OBJECTS_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "common/check.h"
#include "kels.h"

namespace words {

using common::check;
using common::Release;

using FftSpec = std::unique_ptr<KelFFTSpec_R_32f, Release<kelsFFTFree_R_32f>>;
using FeatureSpec = std::unique_ptr<KelFeatureSpec_32f, Release<kelsFeatureFree_32f>>;
using FilterBank = std::unique_ptr<KelFilterBank_32f, Release<kelsFBankFree_32f>>;
using DctLifter = std::unique_ptr<KelDCTLifterState_32f, Release<kelsDCTLifterFree_32f>>;

// An array of floats that starts out as zeros, aligned as the library likes it.
class Vector {
  public:
    Vector() = default;
    explicit Vector(int length) : values_(length > 0 ? kelsMalloc_32f(length) : nullptr), length_(length) {
        if (length < 0 || (length > 0 && !values_)) throw std::bad_alloc();
        if (length > 0) check(kelsZero_32f(data(), length), "kelsZero_32f");
    }
    Vector(const Vector& other) : Vector(other.length_) {
        if (length_ > 0) check(kelsCopy_32f(other.data(), data(), length_), "kelsCopy_32f");
    }
    Vector(Vector&&) = default;
    Vector& operator=(Vector other) {
        std::swap(values_, other.values_);
        std::swap(length_, other.length_);
        return *this;
    }
    ~Vector() = default;
    Kel32f* data() { return values_.get(); }
    const Kel32f* data() const { return values_.get(); }
    int size() const { return length_; }
    Kel32f& operator[](int i) { return values_.get()[i]; }
    Kel32f operator[](int i) const { return values_.get()[i]; }

  private:
    std::unique_ptr<Kel32f, Release<kelsFree>> values_;
    int length_ = 0;
};

// Rows of floats, each row on an aligned address.
class Matrix {
  public:
    Matrix() = default;
    Matrix(int rows, int cols) : rows_(rows), cols_(cols), step_((cols + 7) / 8 * 8), values_(rows * step_) {}
    Kel32f* row(int i) { return values_.data() + static_cast<std::ptrdiff_t>(i) * step_; }
    const Kel32f* row(int i) const { return values_.data() + static_cast<std::ptrdiff_t>(i) * step_; }
    int rows() const { return rows_; }
    int cols() const { return cols_; }
    int step() const { return step_; }

  private:
    int rows_ = 0;
    int cols_ = 0;
    int step_ = 0;
    Vector values_;
};

}  // namespace words

#endif
