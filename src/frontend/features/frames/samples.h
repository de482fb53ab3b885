// The samples of a signal as frames take them: singles of the caller or of a stream, 16-bit samples scaled, and what
// stands for samples outside the signal.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/vector/fill_copy.h"
#include "frontend/features/frames/grid.h"
#include "kels/types.h"

namespace kels::features {

// New samples of either type.
struct NewSamples {
    const Kel32f* floats = nullptr;
    const Kel16s* shorts = nullptr;
    double scale = 1;  // of the shorts
    int64_t count = 0;

    NewSamples() = default;  // none
    NewSamples(const Kel32f* samples, int len, const KelFeatureConfig&) : floats(samples), count(len) {}
    NewSamples(const Kel16s* samples, int len, const KelFeatureConfig& c)
        : shorts(samples), scale(c.scale16s), count(len) {}

    // Samples from .. from + n, as singles; inside a NearestScope.
    void copyTo(Kel32f* dst, int64_t from, int64_t n) const {
        const auto at = static_cast<std::ptrdiff_t>(from);
        const auto size = static_cast<std::size_t>(n);
        if (floats != nullptr) return copy(floats + at, dst, size);
        for (std::size_t i = 0; i < size; ++i) {
            dst[i] = static_cast<Kel32f>(scale * shorts[at + static_cast<std::ptrdiff_t>(i)]);
        }
    }
};

// A signal of `total` samples, of which the last ones are new and those before them, as far as they are still needed,
// were kept as singles.
class Samples {
  public:
    Samples(const FrameGrid& grid, const Kel32f* kept, int64_t keptCount, const NewSamples& more, int64_t total)
        : grid_(grid), kept_(kept), keptCount_(keptCount), more_(more), total_(total) {}

    // Where the samples of `count` frames stand: in the caller's array where they are singles inside it, else in room
    // for count * length samples.
    void frames(int64_t first, std::size_t count, Kel32f* room, const Kel32f** places) const {
        const auto length = static_cast<std::size_t>(grid_.length());
        if (grid_.shift() <= grid_.length()) {  // all in one piece
            const auto shift = static_cast<std::size_t>(grid_.shift());
            const Kel32f* const start = piece(grid_.begin(first), (count - 1) * shift + length, room);
            for (std::size_t i = 0; i < count; ++i) places[i] = start + i * shift;
            if (start != room) fetchAhead(start + (count - 1) * shift + length, count * shift);
            return;
        }
        for (std::size_t i = 0; i < count; ++i) {
            places[i] = piece(grid_.begin(first + static_cast<int64_t>(i)), length, room + i * length);
        }
    }

    // Samples from .. from + n, all of them kept or new.
    void copyTo(Kel32f* dst, int64_t from, int64_t n) const {
        const int64_t firstNew = total_ - more_.count;
        const int64_t old = std::clamp<int64_t>(firstNew - from, 0, n);
        const auto oldSize = static_cast<std::size_t>(old);
        if (old > 0) copy(kept_ + static_cast<std::ptrdiff_t>(from - (firstNew - keptCount_)), dst, oldSize);
        if (n > old) more_.copyTo(dst + oldSize, from + old - firstNew, n - old);
    }

  private:
    // Asks for samples that the next frames will need, as far as there are any.  Frames that overlap are read side by
    // side, which hides from the processor that it reads one array from its beginning to its end.
    void fetchAhead(const Kel32f* from, std::size_t count) const {
        constexpr std::size_t kLine = 64 / sizeof(Kel32f);
        const auto left = static_cast<std::size_t>(more_.floats + static_cast<std::ptrdiff_t>(more_.count) - from);
        for (std::size_t i = 0; i < std::min(count, left); i += kLine) __builtin_prefetch(from + i);
    }

    const Kel32f* piece(int64_t begin, std::size_t size, Kel32f* room) const {
        const int64_t end = begin + static_cast<int64_t>(size), firstNew = total_ - more_.count;
        if (more_.floats != nullptr && begin >= firstNew && end <= total_) {
            return more_.floats + static_cast<std::ptrdiff_t>(begin - firstNew);
        }
        const int64_t insideBegin = std::clamp<int64_t>(begin, 0, total_);
        const int64_t insideEnd = std::clamp<int64_t>(end, insideBegin, total_);
        Kel32f* out = room;
        for (int64_t i = begin; i < std::min(insideBegin, end); ++i) *out++ = outside(i);
        copyTo(out, insideBegin, insideEnd - insideBegin);
        out += static_cast<std::ptrdiff_t>(insideEnd - insideBegin);
        for (int64_t i = std::max(insideEnd, begin); i < end; ++i) *out++ = outside(i);
        return room;
    }

    Kel32f outside(int64_t i) const {
        const int64_t source = grid_.source(i, total_);
        Kel32f value = 0;
        if (source >= 0) copyTo(&value, source, 1);
        return value;
    }

    const FrameGrid& grid_;
    const Kel32f* kept_;
    int64_t keptCount_;
    NewSamples more_;
    int64_t total_;
};

}  // namespace kels::features
