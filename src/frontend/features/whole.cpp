// A whole signal: frames in batches, then what looks at all of them.
#include "frontend/features/whole.h"

#include "core/scaling.h"
#include "frontend/features/deltas.h"
#include "frontend/features/frames/batch.h"

namespace kels::features {
namespace {

// Cepstra under a range below the maximum wait for it: their logarithms and energies, a part of a batch behind the
// other.
bool waitsForPeak(const KelFeatureConfig& c) {
    return hasRange(c) && c.output == kelFeatCepstra;
}

template <class T>
struct WholeWork {
    BatchWork<T> batch;
    Vec<double>* waiting;

    void arrange(const KelFeatureSpec_32f& spec, int64_t frames, Layout& layout) {
        constexpr auto kFrames = static_cast<int64_t>(lanes<double>);
        batch.arrange(spec, layout);
        const int64_t parts = waitsForPeak(spec.config) ? (frames + kFrames - 1) / kFrames : 0;
        waiting = layout.take<Vec<double>>(parts * static_cast<int64_t>(spec.valueCount + 1), alignof(Vec<double>));
    }
};

// The rows of a signal in the caller's array.
class OutputRows {
  public:
    OutputRows(Kel32f* base, std::ptrdiff_t step) : base_(base), step_(step) {}
    Kel32f* operator()(int64_t t) const { return base_ + static_cast<std::ptrdiff_t>(t) * step_; }
    // Asks for rows that will be written.
    void fetch(int64_t t, std::size_t count, std::size_t width) const {
        constexpr std::size_t kLine = 64 / sizeof(Kel32f);
        for (std::size_t j = 0; j < count; ++j) {
            const Kel32f* const row = (*this)(t + static_cast<int64_t>(j));
            for (std::size_t i = 0; i < width; i += kLine) __builtin_prefetch(row + i, 1);
        }
    }
    auto from(int64_t t) const {
        return [rows = *this, t](std::size_t j) { return rows(t + static_cast<int64_t>(j)); };
    }

  private:
    Kel32f* base_;
    std::ptrdiff_t step_;
};

template <class T>
void writeStatics(const KelFeatureSpec_32f& spec, const Samples& samples, int64_t frames, const OutputRows& rows,
                  void* scratch) {
    constexpr auto kFrames = static_cast<int64_t>(Batch<T>::kFrames);
    const KelFeatureConfig& c = spec.config;
    const bool ranged = hasRange(c), waits = waitsForPeak(c);
    WholeWork<T> work;
    Layout layout(scratch);
    work.arrange(spec, frames, layout);
    const Batch<T> batch(spec, work.batch);

    constexpr double kNone = -std::numeric_limits<double>::infinity();
    const LogarithmEnd end = ranged ? LogarithmEnd() : LogarithmEnd(c, kNone);
    const std::size_t stored = spec.valueCount + 1;
    Peak peak;
    Vec<double>* waiting = work.waiting;
    for (int64_t t = 0; t < frames; t += kFrames) {
        const auto count = static_cast<std::size_t>(std::min(frames - t, kFrames));
        if (!waits) rows.fetch(t, count, spec.staticWidth);
        batch.run(
            samples, t, count, [&](Vec<double>* values, const Vec<double>& energy, std::size_t at, std::size_t n) {
                if (ranged) peak.note(values, spec.valueCount);
                if (waits) {
                    std::copy_n(values, spec.valueCount, waiting);
                    waiting[spec.valueCount] = energy;
                    waiting += stored;
                    return;
                }
                finishRows(spec, values, energy, end, work.batch.finish, rows.from(t + static_cast<int64_t>(at)), n);
            });
    }
    if (!ranged) return;

    const LogarithmEnd rangedEnd(c, peak.value() - c.logRange);
    if (waits) {
        constexpr auto kPart = static_cast<int64_t>(lanes<double>);
        waiting = work.waiting;
        for (int64_t t = 0; t < frames; t += kPart, waiting += stored) {
            const auto count = static_cast<std::size_t>(std::min(frames - t, kPart));
            finishRows(spec, waiting, waiting[spec.valueCount], rangedEnd, work.batch.finish, rows.from(t), count);
        }
        return;
    }
    constexpr std::size_t w = lanes<double>;
    for (int64_t t = 0; t < frames; ++t) {
        Kel32f* const values = rows(t) + spec.places.values;
        for (std::size_t i = 0; i < spec.valueCount; i += w) {
            const std::size_t count = std::min(spec.valueCount - i, w);
            storeColumns(values + i, rangedEnd(loadColumns(values + i, count)), count);
        }
    }
}

void writeDeltas(const KelFeatureSpec_32f& spec, int64_t frames, const OutputRows& rows) {
    const KelFeatureConfig& c = spec.config;
    const std::size_t n = spec.staticWidth;
    for (int64_t t = 0; t < frames; ++t) deltaRow(c, rows, t, frames - 1, n, 0, rows(t) + n);
    if (c.deltaOrder < 2) return;
    for (int64_t t = 0; t < frames; ++t) {
        secondOrderRow(c, spec.deltaWeights, rows, t, frames - 1, n, rows(t) + 2 * n);
    }
}

}  // namespace

int64_t scratchBytes(const KelFeatureSpec_32f& spec, int64_t len) {
    const int64_t frames = spec.grid.count(len);
    Layout layout;
    if (spec.fast) {
        WholeWork<float>().arrange(spec, frames, layout);
    } else {
        WholeWork<double>().arrange(spec, frames, layout);
    }
    return layout.bytes(1);
}

void wholeSignal(const KelFeatureSpec_32f& spec, const NewSamples& signal, Kel32f* dst, std::ptrdiff_t step,
                 void* scratch) {
    const NearestScope nearest;
    const KelFeatureConfig& c = spec.config;
    const int64_t frames = spec.grid.count(signal.count);
    if (frames == 0) return;
    const Samples samples(spec.grid, nullptr, 0, signal, signal.count);
    const OutputRows rows(dst, step);
    if (spec.fast) {
        writeStatics<float>(spec, samples, frames, rows, scratch);
    } else {
        writeStatics<double>(spec, samples, frames, rows, scratch);
    }
    if (c.norm != kelFeatNormNone) normaliseColumns(dst, step, frames, spec.staticWidth, c.norm == kelFeatNormMeanVar);
    if (c.deltaOrder > 0) writeDeltas(spec, frames, rows);
}

}  // namespace kels::features
