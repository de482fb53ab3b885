// Linear prediction of autocorrelations and of samples.
#include "kels/lp.h"

#include "core/check.h"
#include "core/fft/autocorrelation.h"
#include "core/simd/accurate_sum.h"
#include "core/vector/fill_copy.h"
#include "core/vector/reductions.h"
#include "frontend/lp/covariance.h"
#include "frontend/lp/recursion.h"
#include "frontend/lp/values.h"

using namespace kels;
using namespace kels::lp;

namespace {

// ---- checks --------------------------------------------------------------------------------------------------------

// The error is looked at last.
KelStatus recursionFault(int order, const void* pSrc, const void* pDst, const void* pErr) {
    if (const KelStatus fault = vectorFault(order, pSrc, pDst)) return fault;
    return anyNull(pErr) ? kelStatusNullPtr : kelStatusOk;
}

KelStatus samplesFault(int len, int order, const void* pSrc, const void* pDst) {
    if (anyNull(pSrc, pDst)) return kelStatusNullPtr;
    if (len < 1 || order < 1 || order > len) return kelStatusSize;
    return kelStatusOk;
}

// ---- recursions over autocorrelations ------------------------------------------------------------------------------

using Recursion = Steps (*)(Kel64f* r, Kel64f* work, std::size_t order);

// The coefficients that the recursion has reached are stored in any case, the error only when it has come to the end.
template <class S, class D>
KelStatus recur(Recursion recursion, const S* src, const Result<D>& dst, int order, const Result<D>& error) {
    const std::size_t p = toSize(order);
    OrderScratch<3> work(3 * (int64_t{order} + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const r = work.data();
    for (std::size_t i = 0; i <= p; ++i) r[i] = static_cast<Kel64f>(src[i]);
    const Steps steps = recursion(r, r + p + 1, p);
    for (std::size_t i = 1; i <= steps.done; ++i) dst.set(i - 1, steps.coefficients[i]);
    if (!steps.complete()) return kelStatusLpcCalc;
    if (error.data != nullptr) error.set(0, steps.error);
    return kelStatusOk;
}

// ---- autocorrelation method ----------------------------------------------------------------------------------------

// The first `lags` autocorrelations, at most one more than there are samples.
KelStatus correlate(const Kel32f* src, int len, Kel32f* r, int lags) {
    return autocorrelate(src, len, r, lags);
}
KelStatus correlate(const Kel16s* src, int len, Kel32f* r, int lags) {
    for (int k = 0; k < lags; ++k) r[k] = static_cast<Kel32f>(integerDot(src, src + k, toSize(len - k)));
    return kelStatusOk;
}

template <class T>
KelStatus predictByAutocorrelation(const T* src, int len, const Result<T>& dst, int order) {
    Scratch<Kel32f, kStackOrder> r(int64_t{order} + 1);
    if (r.failed()) return kelStatusNoMemory;
    const KelStatus status = correlate(src, len, r.data(), order + 1);
    if (status != kelStatusOk) return status;
    return recur(durbin, r.data(), dst, order, Result<T>{nullptr, 1});
}

// ---- covariance method ---------------------------------------------------------------------------------------------

Kel64f product(const Kel32f* a, const Kel32f* b, std::size_t len) {
    return static_cast<Kel64f>(extendedSum(FloatProducts{a, b}, len));
}
Kel64f product(const Kel16s* a, const Kel16s* b, std::size_t len) {
    return static_cast<Kel64f>(integerDot(a, b, len));
}

template <class T>
KelStatus predictByCovariance(const T* src, int len, const Result<T>& dst, int order) {
    constexpr std::size_t kStackRows = 21;
    const std::size_t p = toSize(order);
    const int64_t rows = int64_t{order} + 1;
    Scratch<Kel64f, kStackRows*(kStackRows + 1)> work(rows * (rows + 1));
    if (work.failed()) return kelStatusNoMemory;
    Kel64f* const phi = work.data();
    Kel64f* const a = phi + (p + 1) * (p + 1);
    // The sums run over the len - order samples that have `order` samples before them; there may be none.
    for (int i = 0; i <= order; ++i) {
        phi[toSize(i) * (p + 1)] = product(src + order, src + order - i, toSize(len - order));
    }
    fillCovariance(src, toSize(len), phi, p);
    if (!solveCovariance(phi, a, p)) return kelStatusLpcCalc;
    for (std::size_t i = 1; i <= p; ++i) dst.set(i - 1, a[i]);
    return kelStatusOk;
}

}  // namespace

// ---- from the autocorrelation --------------------------------------------------------------------------------------

KelStatus kelsDurbin_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr) {
    if (const KelStatus fault = recursionFault(order, pSrc, pDst, pErr)) return fault;
    return recur(durbin, pSrc, floatResult(pDst), order, floatResult(pErr));
}
KelStatus kelsDurbin_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor) {
    if (const KelStatus fault = recursionFault(order, pSrc, pDst, pErr)) return fault;
    const NearestScope nearest;
    return recur(durbin, pSrc, scaledResult(pDst, scaleFactor), order, scaledResult(pErr, scaleFactor));
}
KelStatus kelsSchur_32f(const Kel32f* pSrc, Kel32f* pDst, int order, Kel32f* pErr) {
    if (const KelStatus fault = recursionFault(order, pSrc, pDst, pErr)) return fault;
    return recur(schur, pSrc, floatResult(pDst), order, floatResult(pErr));
}
KelStatus kelsSchur_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, int order, Kel16s* pErr, int scaleFactor) {
    if (const KelStatus fault = recursionFault(order, pSrc, pDst, pErr)) return fault;
    const NearestScope nearest;
    return recur(schur, pSrc, q15Result(pDst), order, scaledResult(pErr, scaleFactor));
}

// ---- from samples --------------------------------------------------------------------------------------------------

KelStatus kelsLinearPrediction_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order) {
    if (const KelStatus fault = samplesFault(len, order, pSrc, pDst)) return fault;
    return predictByAutocorrelation(pSrc, len, floatResult(pDst), order);
}
KelStatus kelsLinearPrediction_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order, int scaleFactor) {
    if (const KelStatus fault = samplesFault(len, order, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictByAutocorrelation(pSrc, len, scaledResult(pDst, scaleFactor), order);
}
KelStatus kelsLinearPredictionNeg_Auto_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order) {
    if (const KelStatus fault = samplesFault(len, order, pSrc, pDst)) return fault;
    return predictByAutocorrelation(pSrc, len, negated(floatResult(pDst)), order);
}
KelStatus kelsLinearPredictionNeg_Auto_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order, int scaleFactor) {
    if (const KelStatus fault = samplesFault(len, order, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictByAutocorrelation(pSrc, len, negated(scaledResult(pDst, scaleFactor)), order);
}
KelStatus kelsLinearPrediction_Cov_32f(const Kel32f* pSrc, int len, Kel32f* pDst, int order) {
    if (const KelStatus fault = samplesFault(len, order, pSrc, pDst)) return fault;
    return predictByCovariance(pSrc, len, floatResult(pDst), order);
}
KelStatus kelsLinearPrediction_Cov_16s_Sfs(const Kel16s* pSrc, int len, Kel16s* pDst, int order, int scaleFactor) {
    if (const KelStatus fault = samplesFault(len, order, pSrc, pDst)) return fault;
    const NearestScope nearest;
    return predictByCovariance(pSrc, len, scaledResult(pDst, scaleFactor), order);
}
