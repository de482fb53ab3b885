// The sampled spectrum of a predictor.
#include "frontend/lp/spectrum.h"

#include "core/check.h"
#include "kels/lp.h"

using namespace kels;
using namespace kels::lp;

namespace {

KelStatus spectrumFault(int len, int fftOrder, const void* pSrc, const void* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (fftOrder < 0 || fftOrder > kMaxSpectrumOrder) return kelStatusFftOrder;
    if (len >= 1 << fftOrder) return kelStatusSize;
    return kelStatusOk;
}

}  // namespace

KelStatus kelsLPToSpectrum_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int fftOrder, Kel32f val) {
    if (const KelStatus fault = spectrumFault(len, fftOrder, pSrc, pDst)) return fault;
    return sampledSpectrum(plainSource(pSrc), toSize(len), floatResult(pDst), fftOrder, val);
}
KelStatus kelsLPToSpectrum_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int fftOrder, Kel16s val,
                                   int scaleFactor) {
    if (const KelStatus fault = spectrumFault(len, fftOrder, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return sampledSpectrum(plainSource(pSrc), toSize(len), scaledResult(pDst, scaleFactor), fftOrder, val);
}
