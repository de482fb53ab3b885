// A stream: samples kept until no later one can change a row.
#include "frontend/features/stream.h"

#include <limits>

#include "core/check.h"
#include "core/memory.h"
#include "core/scaling.h"
#include "frontend/features/deltas.h"
#include "kels/core.h"

namespace kels::features {
namespace {

int64_t lookahead(const KelFeatureConfig& c) {
    return c.deltaOrder == 0 ? 0 : int64_t{c.deltaOrder} * c.deltaWin;
}

// Rows come in at their number modulo the count of a ring that holds as many as any sum reaches over.
class RowMaker {
  public:
    RowMaker(KelFeatureStream_32f& stream, Kel32f* dst, std::ptrdiff_t step)
        : stream_(stream), spec_(*stream.spec), dst_(dst), step_(step) {}

    // Frames up to `end` of a signal of which `samples` are there become statics; of these the ones before `settled`
    // have a part in rows.  Where the signal `ends`, so do its rows.
    void advance(const Samples& samples, int64_t end, int64_t settled, bool ends) {
        if (spec_.fast) {
            advanceIn(stream_.single, samples, end, settled);
        } else {
            advanceIn(stream_.exact, samples, end, settled);
        }
        giveRows(settled, ends);
    }

  private:
    template <class T>
    void advanceIn(const BatchWork<T>& work, const Samples& samples, int64_t end, int64_t settled) {
        const Batch<T> batch(spec_, work);
        const LogarithmEnd logarithmEnd(spec_.config, -std::numeric_limits<double>::infinity());
        while (stream_.statics < end) {
            const auto count = static_cast<std::size_t>(std::min(end - stream_.statics, kFrames<T>));
            batch.run(samples, stream_.statics, count,
                      [&](Vec<double>* values, const Vec<double>& energy, std::size_t at, std::size_t n) {
                          const auto place = [&](std::size_t j) {
                              return row(stream_.statics + static_cast<int64_t>(at + j));
                          };
                          finishRows(spec_, values, energy, logarithmEnd, work.finish, place, n);
                      });
            stream_.statics += static_cast<int64_t>(count);
            giveRows(std::min(stream_.statics, settled), false);
        }
    }

    // Deltas and rows as far as `count` settled statics allow, the signal having no more rows if it `ends`.
    void giveRows(int64_t count, bool ends) {
        const KelFeatureConfig& c = spec_.config;
        const int64_t end = ends ? count : std::max<int64_t>(count - lookahead(c), stream_.given);
        const auto rows = [this](int64_t t) { return row(t); };
        const std::size_t n = spec_.staticWidth;
        for (int64_t t = stream_.given; t < end; ++t) {
            if (c.deltaOrder > 0) makeDeltas(t, count);
            if (c.deltaOrder > 1) {
                secondOrderRow(c, spec_.deltaWeights, rows, t, count - 1, n, row(t) + 2 * n);
            }
            copy(row(t), dst_, spec_.width);
            dst_ += step_;
        }
        stream_.given = end;
    }

    // The deltas that row t and its accelerations need: those up to W rows behind it, most of which are there.
    void makeDeltas(int64_t t, int64_t count) {
        const KelFeatureConfig& c = spec_.config;
        const auto rows = [this](int64_t i) { return row(i); };
        const std::size_t n = spec_.staticWidth;
        const bool ofDeltas = c.deltaOrder > 1 && c.deltaEdge == kelFeatDeltaOfDelta;
        const int64_t last = std::min(count - 1, ofDeltas ? t + c.deltaWin : t);
        const int64_t first = ofDeltas && t > 0 ? t + c.deltaWin : t;
        for (int64_t i = first; i <= last; ++i) deltaRow(c, rows, i, count - 1, n, 0, row(i) + n);
    }

    Kel32f* row(int64_t t) const {
        return stream_.rows +
               static_cast<std::ptrdiff_t>(t % stream_.rowCount) * static_cast<std::ptrdiff_t>(spec_.width);
    }

    template <class T>
    static constexpr auto kFrames = static_cast<int64_t>(Batch<T>::kFrames);

    KelFeatureStream_32f& stream_;
    const KelFeatureSpec_32f& spec_;
    Kel32f* dst_;
    std::ptrdiff_t step_;
};

// The ring reaches from the rows that accelerations look back on to the last of a batch, which may wait for a row that
// is not dropped.
int64_t ringRows(const KelFeatureSpec_32f& spec) {
    const auto frames = static_cast<int64_t>(spec.fast ? Batch<float>::kFrames : Batch<double>::kFrames);
    return 2 * lookahead(spec.config) + frames + 2;
}

int64_t keptCount(const KelFeatureStream_32f& stream) {
    return std::min<int64_t>(stream.samples, stream.spec->config.frameLen + 1);
}

}  // namespace

int64_t settledRows(const KelFeatureSpec_32f& spec, int64_t n) {
    return std::max<int64_t>(spec.grid.settled(n) - lookahead(spec.config), 0);
}

KelFeatureStream_32f* buildStream(const KelFeatureSpec_32f& spec) {
    KelFeatureStream_32f made = {};
    made.identifier = kStreamIdentifier;
    made.spec = &spec;
    made.rowCount = ringRows(spec);
    KelFeatureStream_32f* stream = nullptr;
    const auto arrange = [&](Layout& layout) {
        stream = layout.take<KelFeatureStream_32f>(1);
        made.kept = layout.take<Kel32f>(spec.config.frameLen + 1);
        made.rows = layout.take<Kel32f>(made.rowCount * static_cast<int64_t>(spec.width));
        if (spec.fast) {
            made.single.arrange(spec, layout);
        } else {
            made.exact.arrange(spec, layout);
        }
    };
    if (allocateArranged(arrange) == nullptr) return nullptr;
    *stream = made;
    return stream;
}

void push(KelFeatureStream_32f& stream, const NewSamples& more, Kel32f* dst, std::ptrdiff_t step) {
    const NearestScope nearest;
    const KelFeatureSpec_32f& spec = *stream.spec;
    const int64_t total = stream.samples + more.count, wasKept = keptCount(stream);
    const Samples samples(spec.grid, stream.kept, wasKept, more, total);
    RowMaker(stream, dst, step).advance(samples, spec.grid.inside(total), spec.grid.settled(total), false);

    stream.samples = total;
    const int64_t keep = keptCount(stream);
    samples.copyTo(stream.kept, total - keep, keep);
}

void flush(KelFeatureStream_32f& stream, Kel32f* dst, std::ptrdiff_t step) {
    const NearestScope nearest;
    const FrameGrid& grid = stream.spec->grid;
    const Samples samples(grid, stream.kept, keptCount(stream), NewSamples(), stream.samples);
    const int64_t frames = grid.count(stream.samples);
    RowMaker(stream, dst, step).advance(samples, frames, frames, true);
    resetStream(stream);
}

// ---- entry points --------------------------------------------------------------------------------------------------

namespace {

template <class... P>
KelStatus streamFault(const KelFeatureStream_32f* stream, const P*... pointers) {
    if (anyNull(stream, pointers...)) return kelStatusNullPtr;
    return isStream(stream) ? kelStatusOk : kelStatusContextMatch;
}

constexpr bool isCount(int64_t rows) {
    return rows <= std::numeric_limits<int>::max();
}

// The rows of a call: at most `height`, which was not negative.
KelStatus heightFault(const KelFeatureStream_32f& stream, int dstStep, int height, int64_t rows) {
    if (stepTooSmall(dstStep, static_cast<int>(stream.spec->width))) return kelStatusStep;
    return rows > height ? kelStatusSize : kelStatusOk;
}

template <class Sample>
KelStatus pushSamples(const Sample* pSrc, int len, Kel32f* pDst, int dstStep, int height, int* pHeight,
                      KelFeatureStream_32f* pStream) {
    if (const KelStatus fault = streamFault(pStream, pSrc, pDst, pHeight)) return fault;
    if (len < 0 || height < 0) return kelStatusSize;
    const KelFeatureSpec_32f& spec = *pStream->spec;
    const int64_t rows = settledRows(spec, pStream->samples + len) - pStream->given;
    if (const KelStatus fault = heightFault(*pStream, dstStep, height, rows)) return fault;
    push(*pStream, NewSamples(pSrc, len, spec.config), pDst, dstStep);
    *pHeight = static_cast<int>(rows);
    return kelStatusOk;
}

}  // namespace
}  // namespace kels::features

using namespace kels;
using namespace kels::features;

KelStatus kelsFeatureStreamInitAlloc_32f(KelFeatureStream_32f** ppStream, const KelFeatureSpec_32f* pSpec) {
    if (anyNull(ppStream, pSpec)) return kelStatusNullPtr;
    if (!isSpec(pSpec)) return kelStatusContextMatch;
    if (hasRange(pSpec->config) || pSpec->config.norm != kelFeatNormNone) return kelStatusModeNotSupported;
    KelFeatureStream_32f* const stream = buildStream(*pSpec);
    if (stream == nullptr) return kelStatusNoMemory;
    *ppStream = stream;
    return kelStatusOk;
}

KelStatus kelsFeatureStreamGetSize_32f(const KelFeatureStream_32f* pStream, int len, int* pHeight, int* pFlush) {
    if (const KelStatus fault = streamFault(pStream, pHeight, pFlush)) return fault;
    if (len < 0) return kelStatusSize;
    const int64_t total = pStream->samples + len, settled = settledRows(*pStream->spec, total);
    const int64_t pushed = settled - pStream->given, flushed = pStream->spec->grid.count(total) - settled;
    if (!isCount(pushed) || !isCount(flushed)) return kelStatusSize;
    *pHeight = static_cast<int>(pushed);
    *pFlush = static_cast<int>(flushed);
    return kelStatusOk;
}

KelStatus kelsFeatureStream_32f_D2(const Kel32f* pSrc, int len, Kel32f* pDst, int dstStep, int height, int* pHeight,
                                   KelFeatureStream_32f* pStream) {
    return pushSamples(pSrc, len, pDst, dstStep, height, pHeight, pStream);
}
KelStatus kelsFeatureStream_16s32f_D2(const Kel16s* pSrc, int len, Kel32f* pDst, int dstStep, int height, int* pHeight,
                                      KelFeatureStream_32f* pStream) {
    return pushSamples(pSrc, len, pDst, dstStep, height, pHeight, pStream);
}

KelStatus kelsFeatureStreamFlush_32f_D2(Kel32f* pDst, int dstStep, int height, int* pHeight,
                                        KelFeatureStream_32f* pStream) {
    if (const KelStatus fault = streamFault(pStream, pDst, pHeight)) return fault;
    if (height < 0) return kelStatusSize;
    const int64_t rows = pStream->spec->grid.count(pStream->samples) - pStream->given;
    if (const KelStatus fault = heightFault(*pStream, dstStep, height, rows)) return fault;
    flush(*pStream, pDst, dstStep);
    *pHeight = static_cast<int>(rows);
    return kelStatusOk;
}

KelStatus kelsFeatureStreamReset_32f(KelFeatureStream_32f* pStream) {
    if (const KelStatus fault = streamFault(pStream)) return fault;
    resetStream(*pStream);
    return kelStatusOk;
}

KelStatus kelsFeatureStreamFree_32f(KelFeatureStream_32f* pStream) {
    if (const KelStatus fault = streamFault(pStream)) return fault;
    pStream->identifier = 0;
    kelsFree(pStream);
    return kelStatusOk;
}
