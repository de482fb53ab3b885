// The rows that a codebook is trained from, as floats.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/layout.h"
#include "core/rows.h"
#include "core/vector/convert.h"
#include "kels/types.h"

namespace kels::codebook {

template <class T>
class TrainingRows {
  public:
    TrainingRows(const StepRows<const T>& rows, std::size_t count, std::size_t width)
        : rows_(rows), count_(count), width_(width) {}
    void arrange(Layout& layout) { converted_ = layout.take<Kel32f>(static_cast<int64_t>(width_)); }

    std::size_t count() const { return count_; }
    std::size_t width() const { return width_; }

    // Row r, until the next call.
    const Kel32f* operator[](std::size_t r) const {
        if constexpr (std::is_same_v<T, Kel32f>) {
            return source(r);
        } else {
            convertWidening(source(r), converted_, width_);
            return converted_;
        }
    }

    // Row r will be read soon.
    void prefetch(std::size_t r) const {
        constexpr std::size_t kLine = 64, kMost = 1024;
        const auto* const bytes = reinterpret_cast<const char*>(source(r));
        for (std::size_t i = 0; i < std::min(width_ * sizeof(T), kMost); i += kLine) __builtin_prefetch(bytes + i);
    }

    void addTo(Kel64f* sums, std::size_t r) const {
        const T* const row = source(r);
        for (std::size_t k = 0; k < width_; ++k) sums[k] += row[k];
    }

  private:
    const T* source(std::size_t r) const { return rows_[static_cast<std::ptrdiff_t>(r)]; }

    StepRows<const T> rows_;
    std::size_t count_, width_;
    Kel32f* converted_ = nullptr;
};

}  // namespace kels::codebook
