// Fundamental frequencies that a series of pitch marks suggests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kels/types.h"

namespace kels::pitch {

inline bool ascending(const Kel32f* marks, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (!std::isfinite(marks[i]) || (i > 0 && !(marks[i] > marks[i - 1]))) return false;
    }
    return true;
}

struct FrequencyRange {
    Kel32f rate, lowest, highest;
    bool holds(Kel32f f) const { return f >= lowest && f <= highest; }
};

struct Candidate {
    Kel32f frequency, strength;
};

// From the intervals from each mark to the one `span` marks on, by how even they are.
inline Candidate candidate(const Kel32f* marks, std::size_t count, std::size_t span, const FrequencyRange& range) {
    if (count < span + 2) return {0, 0};
    const std::size_t intervals = count - span;
    const auto interval = [=](std::size_t i) { return Kel64f{marks[i + span]} - marks[i]; };
    Kel64f sum = 0, squares = 0;
    for (std::size_t i = 0; i < intervals; ++i) sum += interval(i);
    const Kel64f mean = sum / static_cast<Kel64f>(intervals);
    const auto frequency = static_cast<Kel32f>(range.rate / mean);
    if (!range.holds(frequency)) return {0, 0};
    for (std::size_t i = 0; i < intervals; ++i) squares += (interval(i) - mean) * (interval(i) - mean);
    const Kel64f variance = squares / static_cast<Kel64f>(intervals - 1);
    const Kel64f strength = 1 - std::sqrt(static_cast<Kel64f>(span) * variance) / mean;
    return {frequency, static_cast<Kel32f>(std::max(0.0, strength))};
}

}  // namespace kels::pitch
