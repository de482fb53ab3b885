// Where the corners of the filters lie and how the triangles between them are weighted.
#pragma once

#include <algorithm>

#include "frontend/fbank/mel.h"
#include "frontend/fbank/state.h"

namespace kels::fbank {

// Corner points in order of frequency: corners up to `lastLinear` are equally spaced in frequency, the others in mel.
class Corners {
  public:
    // All nFilter + 2 of them from low to high on the mel scale.
    static Corners mel(MelScale scale, Kel32f binScale, Kel32f low, Kel32f high, int nFilter) {
        Corners c(scale, binScale);
        c.spaceMel(0, low, high, nFilter + 1);
        return c;
    }
    // Linear from low to highLin for the first nLinFilter filters, then mel up to high.
    static Corners linearThenMel(MelScale scale, Kel32f binScale, Kel32f low, Kel32f highLin, Kel32f high, int nFilter,
                                 int nLinFilter) {
        Corners c(scale, binScale);
        const bool allLinear = nLinFilter == nFilter;
        c.low_ = low;
        c.linearSpan_ = highLin - low;
        c.lastLinear_ = allLinear ? nFilter + 1 : nLinFilter;
        c.linearParts_ = static_cast<Kel32f>(c.lastLinear_);
        if (!allLinear) c.spaceMel(nLinFilter, highLin, high, nFilter - nLinFilter + 1);
        return c;
    }

    bool isLinear(int k) const { return k <= lastLinear_; }
    Kel32f melOf(int k) const { return static_cast<Kel32f>(k - firstMel_) * melSpan_ / melParts_ + melLow_; }
    // In bins, not yet made whole.
    Kel32f position(int k) const {
        if (isLinear(k)) return (static_cast<Kel32f>(k) * linearSpan_ / linearParts_ + low_) * binScale_;
        return scale_.ratio(melOf(k)) * (binScale_ * scale_.melDiv);
    }

  private:
    Corners(MelScale scale, Kel32f binScale) : scale_(scale), binScale_(binScale) {}
    void spaceMel(int first, Kel32f low, Kel32f high, int parts) {
        firstMel_ = first;
        melLow_ = scale_.ofHertz(low);
        melSpan_ = scale_.ofHertz(high) - melLow_;
        melParts_ = static_cast<Kel32f>(parts);
    }

    MelScale scale_;
    Kel32f binScale_;  // bins per hertz
    int lastLinear_ = -1;
    Kel32f low_ = 0, linearSpan_ = 0, linearParts_ = 1;
    int firstMel_ = 0;
    Kel32f melLow_ = 0, melSpan_ = 0, melParts_ = 1;
};

// What evaluation relies on, whatever the parameters were: centres stay inside the spectrum and never descend.
inline Kel32s nextCentre(const Kel32s* centres, int k, int64_t bin, int lastBin) {
    return static_cast<Kel32s>(std::clamp<int64_t>(bin, k > 0 ? centres[k - 1] : 0, lastBin));
}

// Weights in proportion to the distance in bins.  A side of n bins starts at 1 / n, not at zero, and ends at its top.
template <class W>
void weighByBin(typename W::Weight* rising, typename W::Weight* falling, int lo, int top, int hi) {
    for (int i = lo; i <= top; ++i) rising[i - lo] = W::ofRatio(i - lo + 1, top - lo + 1);
    for (int i = top + 1; i <= hi; ++i) falling[i - top - 1] = W::ofRatio(hi + 1 - i, hi - top + 1);
}

// Weights in proportion to the distance in mel from the corners themselves (`mels`), not from the bins next to them.
template <class W>
void weighByMel(typename W::Weight* rising, typename W::Weight* falling, int lo, int top, int hi, MelScale scale,
                Kel32f hertzPerBin, const Kel32f* mels) {
    const auto melOfBin = [&](int i) { return scale.ofHertz(static_cast<Kel32f>(i) * hertzPerBin); };
    rising[0] = 0;
    for (int i = lo + 1; i <= top; ++i) rising[i - lo] = W::ofFloat((melOfBin(i) - mels[0]) / (mels[1] - mels[0]));
    for (int i = top + 1; i <= hi; ++i) {
        falling[i - top - 1] = W::ofFloat((mels[2] - melOfBin(i)) / (mels[2] - mels[1]));
    }
}

// Centres and weights of a newly allocated bank; inside a NearestScope.
template <class Bank>
void layTriangles(Bank& bank, const Corners& corners, MelScale scale, Kel32f sampFreq) {
    using W = typename Bank::Weights;
    bank.melMul = scale.melMul;
    bank.melDiv = scale.melDiv;
    const bool byBin = (bank.flag & kelFBankWeightBin) != 0;
    for (int k = 0; k < bank.nFilter + 2; ++k) {
        const Kel32f position = corners.position(k);
        const Kel32s bin = byBin ? roundSaturate<Kel32s>(position) : truncateSaturate<Kel32s>(position);
        bank.centres[k] = nextCentre(bank.centres, k, bin, bank.fftLen2 / 2);
    }
    const Kel32f hertzPerBin = sampFreq / static_cast<Kel32f>(bank.fftLen2);
    for (int m = 0; m < bank.nFilter; ++m) {
        const Kel32s* const c = bank.centres + m;
        if (byBin || corners.isLinear(m + 1)) {
            weighByBin<W>(bank.rising[m], bank.falling[m], c[0], c[1], c[2]);
        } else {
            const Kel32f mels[3] = {corners.melOf(m), corners.melOf(m + 1), corners.melOf(m + 2)};
            weighByMel<W>(bank.rising[m], bank.falling[m], c[0], c[1], c[2], scale, hertzPerBin, mels);
        }
    }
    bank.ready = 1;
}

}  // namespace kels::fbank
