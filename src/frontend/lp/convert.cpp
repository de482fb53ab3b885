// Conversions of predictors: cepstrum, spectrum, reflection coefficients, line spectral pairs.
#include <cmath>
#include <limits>

#include "core/check.h"
#include "core/memory.h"
#include "frontend/lp/lsp.h"
#include "frontend/lp/recursion.h"
#include "frontend/lp/spectrum.h"
#include "frontend/lp/values.h"
#include "kels/lp.h"

using namespace kels;

namespace {

template <int Arrays>
using LpScratch = Scratch<Kel64f, Arrays * kLpStackOrder>;

// ---- cepstrum ------------------------------------------------------------------------------------------------------

template <class T>
KelStatus cepstrumOf(const LpSource<T>& src, const LpResult<T>& dst, int len) {
    const std::size_t p = toSize(len);
    LpScratch<2> work(2 * (int64_t{len} + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    Kel64f* const weighted = a + p + 1;
    for (std::size_t n = 1; n <= p; ++n) {
        a[n] = src[n - 1];
        const Kel64f c = -a[n] - cepstrumTerm(weighted, a, n, p);
        weighted[n] = static_cast<Kel64f>(n) * c;
        dst.set(n - 1, c);
    }
    return kelStatusOk;
}

template <class T>
KelStatus predictorOfCepstrum(const LpSource<T>& src, const LpResult<T>& dst, int len) {
    const std::size_t p = toSize(len);
    LpScratch<2> work(2 * (int64_t{len} + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    Kel64f* const weighted = a + p + 1;
    for (std::size_t n = 1; n <= p; ++n) {
        weighted[n] = static_cast<Kel64f>(n) * src[n - 1];
        a[n] = -src[n - 1] - cepstrumTerm(weighted, a, n, p);
        dst.set(n - 1, a[n]);
    }
    return kelStatusOk;
}

// ---- reflection coefficients ---------------------------------------------------------------------------------------

template <class T>
KelStatus reflectionOf(const LpSource<T>& src, const LpResult<T>& dst, int len, Kel64f undefined) {
    const std::size_t p = toSize(len);
    LpScratch<1> work(int64_t{len} + 1);
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    for (std::size_t i = 1; i <= p; ++i) a[i] = src[i - 1];
    for (std::size_t i = p; i >= 1; --i) {
        dst.set(i - 1, -a[i]);
        if (std::fabs(a[i]) == 1 && i > 1) {
            for (std::size_t j = 1; j < i; ++j) dst.set(j - 1, undefined);
            return kelStatusDivByZero;
        }
        stepDown(a, i);
    }
    return kelStatusOk;
}

template <class T>
KelStatus predictorOfReflection(const LpSource<T>& src, const LpResult<T>& dst, int len) {
    const std::size_t p = toSize(len);
    LpScratch<1> work(int64_t{len} + 1);
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const a = work.data();
    for (std::size_t i = 1; i <= p; ++i) {
        a[i] = -src[i - 1];
        stepUp(a, i);
    }
    for (std::size_t i = 1; i <= p; ++i) dst.set(i - 1, a[i]);
    return kelStatusOk;
}

// ---- line spectral pairs -------------------------------------------------------------------------------------------

// Of each of `height` rows.
template <class T>
KelStatus pairsOf(const LpSource<T>& src, int srcStep, const LpResult<T>& dst, int dstStep, int width, int height) {
    LpScratch<4> work(lpToLspScratch(width));
    if (work.failed()) return kelStatusNoMemory;
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        if (!lpToLsp(src.from(i * srcStep), dst.from(i * dstStep), toSize(width), work.data())) return kelStatusNoRoot;
    }
    return kelStatusOk;
}

template <class T>
KelStatus predictorsOf(const LpSource<T>& src, int srcStep, const LpResult<T>& dst, int dstStep, int width,
                       int height) {
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        if (!isLspDescending(src.from(i * srcStep), toSize(width))) return kelStatusBadLsp;
    }
    LpScratch<4> work(lspToLpScratch(width));
    if (work.failed()) return kelStatusNoMemory;
    for (std::ptrdiff_t i = 0; i < height; ++i) {
        lspToLp(src.from(i * srcStep), dst.from(i * dstStep), toSize(width), work.data());
    }
    return kelStatusOk;
}

}  // namespace

// ---- cepstrum ------------------------------------------------------------------------------------------------------

KelStatus kelsLPToCepstrum_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return cepstrumOf(plainSource(pSrc), floatResult(pDst), len);
}
KelStatus kelsLPToCepstrum_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    return cepstrumOf(plainSource(pSrc), scaledResult(pDst, scaleFactor), len);
}
KelStatus kelsCepstrumToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return predictorOfCepstrum(plainSource(pSrc), floatResult(pDst), len);
}
KelStatus kelsCepstrumToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    return predictorOfCepstrum(plainSource(pSrc), scaledResult(pDst, scaleFactor), len);
}

// ---- spectrum ------------------------------------------------------------------------------------------------------

KelStatus kelsLPToSpectrum_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int fftOrder, Kel32f val) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (fftOrder < 0 || fftOrder > kMaxSpectrumOrder) return kelStatusFftOrder;
    if (len >= 1 << fftOrder) return kelStatusSize;
    return sampledSpectrum(plainSource(pSrc), toSize(len), floatResult(pDst), fftOrder, val);
}
KelStatus kelsLPToSpectrum_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int fftOrder, Kel16s val,
                                   int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    if (fftOrder < 0 || fftOrder > kMaxSpectrumOrder) return kelStatusFftOrder;
    if (len >= 1 << fftOrder) return kelStatusSize;
    const NearestScope nearest;
    return sampledSpectrum(plainSource(pSrc), toSize(len), scaledResult(pDst, scaleFactor), fftOrder, val);
}

// ---- reflection coefficients ---------------------------------------------------------------------------------------

KelStatus kelsLPToReflection_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return reflectionOf(plainSource(pSrc), floatResult(pDst), len, std::numeric_limits<Kel64f>::quiet_NaN());
}
KelStatus kelsLPToReflection_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    return reflectionOf(scaledSource(pSrc, scaleFactor), q15Result(pDst), len, 0);
}
KelStatus kelsReflectionToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return predictorOfReflection(plainSource(pSrc), floatResult(pDst), len);
}
KelStatus kelsReflectionToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    return predictorOfReflection(q15Source(pSrc), scaledResult(pDst, scaleFactor), len);
}

// ---- line spectral pairs -------------------------------------------------------------------------------------------

KelStatus kelsLPToLSP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return pairsOf(plainSource(pSrc), 0, floatResult(pDst), 0, len, 1);
}
KelStatus kelsLPToLSP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    return pairsOf(scaledSource(pSrc, scaleFactor), 0, scaledResult(pDst, scaleFactor), 0, len, 1);
}
KelStatus kelsLPToLSP_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width, int height) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    return pairsOf(plainSource(pSrc), srcStep, floatResult(pDst), dstStep, width, height);
}
KelStatus kelsLPToLSP_16s_D2Sfs(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height,
                                int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    const NearestScope nearest;
    return pairsOf(scaledSource(pSrc, scaleFactor), srcStep, scaledResult(pDst, scaleFactor), dstStep, width, height);
}
KelStatus kelsLSPToLP_32f(const Kel32f* pSrc, Kel32f* pDst, int len) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return predictorsOf(plainSource(pSrc), 0, floatResult(pDst), 0, len, 1);
}
KelStatus kelsLSPToLP_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int len, int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    const NearestScope nearest;
    return predictorsOf(scaledSource(pSrc, scaleFactor), 0, scaledResult(pDst, scaleFactor), 0, len, 1);
}
KelStatus kelsLSPToLP_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width, int height) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    return predictorsOf(plainSource(pSrc), srcStep, floatResult(pDst), dstStep, width, height);
}
KelStatus kelsLSPToLP_16s_D2Sfs(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height,
                                int scaleFactor) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (width < 1 || height < 1) return kelStatusSize;
    if (stepTooSmall(srcStep, width) || stepTooSmall(dstStep, width)) return kelStatusStep;
    const NearestScope nearest;
    return predictorsOf(scaledSource(pSrc, scaleFactor), srcStep, scaledResult(pDst, scaleFactor), dstStep, width,
                        height);
}
