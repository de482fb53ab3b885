// The waveform through the noise filter, its weighting, and the equalisation of its cepstra.
#include "frontend/aurora/waveform.h"

#include "core/check.h"
#include "core/memory.h"
#include "core/vector/fill_copy.h"
#include "frontend/aurora/equalise.h"
#include "frontend/aurora/sums.h"
#include "frontend/aurora/taps.h"
#include "kels/aurora.h"

using namespace kels;

KelStatus kelsTabsCalculation_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    aurora::tapsOf(pSrc, pDst);
    return kelStatusOk;
}

KelStatus kelsResidualFilter_Aurora_32f(const Kel32f* pSrc, const Kel32f* pTaps, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pTaps, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    aurora::applyTaps(pSrc, pTaps, pDst, toSize(len));
    return kelStatusOk;
}

KelStatus kelsWaveProcessing_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    constexpr Kel64f kAudible = 100;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    Scratch<Kel32f, aurora::waveformScratch(256)> scratch(aurora::waveformScratch(len));
    if (scratch.failed()) return kelStatusNoMemory;
    if (aurora::energyOf(pSrc, toSize(len)) >= kAudible) {
        aurora::weighWaveform(pSrc, pDst, toSize(len), scratch.data());
    } else {
        copy(pSrc, pDst, toSize(len));
    }
    return kelStatusOk;
}

KelStatus kelsBlindEqualization_Aurora_32f(const Kel32f* pSrc, Kel32f* pDst, Kel32f logE, Kel32f* pBias) {
    if (anyNull(pSrc, pDst, pBias)) return kelStatusNullPtr;
    aurora::equalise(pSrc, aurora::kReference, pDst, aurora::kCepstra, logE, pBias);
    return kelStatusOk;
}

KelStatus kelsBlindEqualizationRef_Aurora_32f(const Kel32f* pSrc, const Kel32f* pRef, Kel32f* pDst, int len,
                                              Kel32f logE, Kel32f* pBias) {
    if (anyNull(pSrc, pRef, pDst, pBias)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    aurora::equalise(pSrc, pRef, pDst, toSize(len), logE, pBias);
    return kelStatusOk;
}
