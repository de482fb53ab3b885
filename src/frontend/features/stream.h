// What a stream remembers between calls, and how its rows come about.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/layout.h"
#include "frontend/features/frames/batch.h"
#include "frontend/features/frames/samples.h"
#include "frontend/features/spec.h"

struct KelFeatureStream_32f {
    Kel32s identifier;
    const KelFeatureSpec_32f* spec;
    int64_t samples;  // taken so far
    int64_t statics;  // frames computed so far
    int64_t given;    // rows given so far
    Kel32f* kept;     // the last samples, at most frameLen + 1
    Kel32f* rows;     // the last rows, each at its number modulo rowCount
    int64_t rowCount;
    kels::features::BatchWork<double> exact;
    kels::features::BatchWork<float> single;
};

namespace kels::features {

inline bool isStream(const KelFeatureStream_32f* stream) {
    return stream->identifier == kStreamIdentifier;
}

// A stream at its start; null when memory is out.
KelFeatureStream_32f* buildStream(const KelFeatureSpec_32f& spec);

inline void resetStream(KelFeatureStream_32f& stream) {
    stream.samples = stream.statics = stream.given = 0;
}

// The rows that samples 0 .. n - 1 settle, and those that the signal has if it ends there.
int64_t settledRows(const KelFeatureSpec_32f& spec, int64_t n);

// Takes the samples and writes the rows that are settled then.
void push(KelFeatureStream_32f& stream, const NewSamples& more, Kel32f* dst, std::ptrdiff_t step);

// Writes the rows that are left and goes back to the start.
void flush(KelFeatureStream_32f& stream, Kel32f* dst, std::ptrdiff_t step);

}  // namespace kels::features
