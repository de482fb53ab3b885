// Entry points of specifications and whole signals.
#include <limits>

#include "core/check.h"
#include "frontend/features/config.h"
#include "frontend/features/spec.h"
#include "frontend/features/whole.h"
#include "kels/core.h"

namespace kels::features {
namespace {

constexpr int64_t kMostRows = std::numeric_limits<int>::max();

template <class... P>
KelStatus specFault(const KelFeatureSpec_32f* spec, const P*... pointers) {
    if (anyNull(spec, pointers...)) return kelStatusNullPtr;
    return isSpec(spec) ? kelStatusOk : kelStatusContextMatch;
}

// What GetSize, GetBufSize and the calls on whole signals ask of the length.
KelStatus lengthFault(const KelFeatureSpec_32f& spec, int len, int least) {
    return len < least || spec.grid.count(len) > kMostRows ? kelStatusSize : kelStatusOk;
}

template <class Sample>
KelStatus featuresOf(const Sample* pSrc, int len, Kel32f* pDst, int dstStep, const KelFeatureSpec_32f* pSpec,
                     Kel8u* pBuffer) {
    if (const KelStatus fault = specFault(pSpec, pSrc, pDst)) return fault;
    if (const KelStatus fault = lengthFault(*pSpec, len, 1)) return fault;
    if (stepTooSmall(dstStep, static_cast<int>(pSpec->width))) return kelStatusStep;
    Kel8u* const owned = pBuffer == nullptr ? allocate<Kel8u>(scratchBytes(*pSpec, len)) : nullptr;
    if (pBuffer == nullptr && owned == nullptr) return kelStatusNoMemory;
    const NewSamples signal(pSrc, len, pSpec->config);
    wholeSignal(*pSpec, signal, pDst, dstStep, pBuffer == nullptr ? owned : pBuffer);
    kelsFree(owned);
    return kelStatusOk;
}

}  // namespace
}  // namespace kels::features

using namespace kels;
using namespace kels::features;

KelStatus kelsFeaturePreset(KelFeatureConfig* pConfig, int sampleRate, int preset) {
    if (anyNull(pConfig)) return kelStatusNullPtr;
    if (!isSampleRate(sampleRate)) return kelStatusSize;
    return fillPreset(*pConfig, sampleRate, preset) ? kelStatusOk : kelStatusBadArg;
}

KelStatus kelsFeatureInitAlloc_32f(KelFeatureSpec_32f** ppSpec, const KelFeatureConfig* pConfig) {
    if (anyNull(ppSpec, pConfig)) return kelStatusNullPtr;
    if (const KelStatus fault = configFault(*pConfig)) return fault;
    KelFeatureSpec_32f* const spec = buildSpec(*pConfig);
    if (spec == nullptr) return kelStatusNoMemory;
    *ppSpec = spec;
    return kelStatusOk;
}

KelStatus kelsFeatureFree_32f(KelFeatureSpec_32f* pSpec) {
    if (const KelStatus fault = specFault(pSpec)) return fault;
    pSpec->identifier = 0;
    kelsFree(pSpec);
    return kelStatusOk;
}

KelStatus kelsFeatureGetSize_32f(const KelFeatureSpec_32f* pSpec, int len, int* pHeight, int* pWidth) {
    if (const KelStatus fault = specFault(pSpec, pHeight, pWidth)) return fault;
    if (const KelStatus fault = lengthFault(*pSpec, len, 0)) return fault;
    *pHeight = static_cast<int>(pSpec->grid.count(len));
    *pWidth = static_cast<int>(pSpec->width);
    return kelStatusOk;
}

KelStatus kelsFeatureGetBufSize_32f(const KelFeatureSpec_32f* pSpec, int len, int* pSize) {
    if (const KelStatus fault = specFault(pSpec, pSize)) return fault;
    if (const KelStatus fault = lengthFault(*pSpec, len, 0)) return fault;
    const int64_t bytes = scratchBytes(*pSpec, len);
    if (bytes > std::numeric_limits<int>::max()) return kelStatusNoMemory;
    *pSize = static_cast<int>(bytes);
    return kelStatusOk;
}

KelStatus kelsFeatureGetBank_32f_D2(Kel32f* pDst, int dstStep, const KelFeatureSpec_32f* pSpec) {
    if (const KelStatus fault = specFault(pSpec, pDst)) return fault;
    if (!hasBank(pSpec->config)) return kelStatusModeNotSupported;
    const int bins = pSpec->config.fftLen / 2 + 1;
    if (stepTooSmall(dstStep, bins)) return kelStatusStep;
    for (int m = 0; m < pSpec->config.numFilters; ++m) {
        const FilterBins& filter = pSpec->filters[m];
        Kel32f* const row = pDst + static_cast<std::ptrdiff_t>(m) * dstStep;
        zero(row, toSize(bins));
        for (int i = 0; i < filter.count; ++i) {
            row[filter.first + i] = static_cast<Kel32f>(pSpec->exact.weights[filter.weights + i]);
        }
    }
    return kelStatusOk;
}

KelStatus kelsFeature_32f_D2(const Kel32f* pSrc, int len, Kel32f* pDst, int dstStep, const KelFeatureSpec_32f* pSpec,
                             Kel8u* pBuffer) {
    return featuresOf(pSrc, len, pDst, dstStep, pSpec, pBuffer);
}
KelStatus kelsFeature_16s32f_D2(const Kel16s* pSrc, int len, Kel32f* pDst, int dstStep, const KelFeatureSpec_32f* pSpec,
                                Kel8u* pBuffer) {
    return featuresOf(pSrc, len, pDst, dstStep, pSpec, pBuffer);
}
