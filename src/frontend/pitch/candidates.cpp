// Peaks of a curve, frequencies from pitch marks, and the entropy of a spectrum.
#include <cmath>

#include "core/check.h"
#include "core/scaling.h"
#include "frontend/pitch/entropy.h"
#include "frontend/pitch/marks.h"
#include "frontend/pitch/peaks.h"
#include "kels/pitch.h"

using namespace kels;
using namespace kels::pitch;

KelStatus kelsFindPeaks_32f8u(const Kel32f* pSrc, Kel8u* pDst, int len, Kel32f threshold, int minDist) {
    constexpr int kLongest = 65535;
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || len > kLongest) return kelStatusLengthRange;
    if (minDist < 1) return kelStatusBadArg;
    return findPeaks(pSrc, pDst, toSize(len), threshold, toSize(minDist));
}

KelStatus kelsPitchmarkToF0Cand_32f(const Kel32f* pMark, int nMark, Kel32f* pF0, Kel32f* pStrength, int nCand,
                                    Kel32f sampleRate, Kel32f minF0, Kel32f maxF0) {
    if (anyNull(pMark, pF0, pStrength)) return kelStatusNullPtr;
    if (nMark < 1 || nCand < 1) return kelStatusSize;
    if (!(sampleRate > 0) || !std::isfinite(sampleRate) || !(minF0 > 0) || !(maxF0 >= minF0)) return kelStatusBadArg;
    if (!ascending(pMark, toSize(nMark))) return kelStatusOutOfRange;
    const FrequencyRange range = {sampleRate, minF0, maxF0};
    for (std::size_t i = 0; i < toSize(nCand); ++i) {
        const Candidate found = candidate(pMark, toSize(nMark), i + 1, range);
        pF0[i] = found.frequency;
        pStrength[i] = found.strength;
    }
    return kelStatusOk;
}

KelStatus kelsEntropy_32f(const Kel32f* pSrc, int len, Kel32f* pEntropy) {
    if (const KelStatus fault = vectorFault(len, pSrc, pEntropy)) return fault;
    const NearestScope nearest;
    return entropy(pSrc, toSize(len), *pEntropy);
}
