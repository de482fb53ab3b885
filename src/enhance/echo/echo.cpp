// Entry points of the echo canceller.
#include "kels/echo.h"

#include "core/check.h"
#include "enhance/echo/adaptive_filter.h"
#include "enhance/echo/controller.h"

using namespace kels;
using namespace kels::echo;

namespace {

constexpr bool validBlock(int len) {
    return len >= 32 && len <= 4096;
}

KelStatus sizeFault(int len, const int* pSize) {
    if (anyNull(pSize)) return kelStatusNullPtr;
    return validBlock(len) ? kelStatusOk : kelStatusOutOfRange;
}

KelStatus initFault(int sampleRate, int len, const void* pState) {
    if (anyNull(pState)) return kelStatusNullPtr;
    return sampleRate >= 8000 && sampleRate <= 48000 && validBlock(len) ? kelStatusOk : kelStatusOutOfRange;
}

template <class... P>
KelStatus spectraFault(int len, int numPart, const P*... pointers) {
    if (anyNull(pointers...)) return kelStatusNullPtr;
    if (len < 1 || len > 4097) return kelStatusLengthRange;
    return numPart < 1 ? kelStatusSize : kelStatusOk;
}

constexpr bool isShare(Kel32f v) {
    return v >= 0 && v <= 1;
}
constexpr KelStatus shareFault(Kel32f factor, Kel32f forget, Kel32f smooth) {
    return isShare(factor) && isShare(forget) && isShare(smooth) ? kelStatusOk : kelStatusBadArg;
}

template <class T, class State>
void updateController(const T* pSrcRef, const T* pSrcMic, const T* pSrcErr, State* pState, Kel32f* pFactor,
                      Kel32f* pForget, int* pFlag) {
    Controller& controller = pState->controller;
    const int flag = controller.listen(blockPowers(pSrcRef, pSrcMic, pSrcErr, toSize(controller.len)));
    *pFactor = flag == kelAECDoubleTalk ? 0.5f : 1.0f;
    *pForget = flag == kelAECSingleTalk ? controller.singleTalkForget : 0.0f;
    *pFlag = flag;
}

}  // namespace

KelStatus kelsControllerGetSizeAEC_32f(int len, int* pSize) {
    if (const KelStatus fault = sizeFault(len, pSize)) return fault;
    *pSize = static_cast<int>(sizeof(KelAECState_32f));
    return kelStatusOk;
}

KelStatus kelsControllerGetSizeAEC_32s(int len, int* pSize) {
    if (const KelStatus fault = sizeFault(len, pSize)) return fault;
    *pSize = static_cast<int>(sizeof(KelAECState_32s));
    return kelStatusOk;
}

KelStatus kelsControllerInitAEC_32f(int sampleRate, int len, KelAECState_32f* pState) {
    if (const KelStatus fault = initFault(sampleRate, len, pState)) return fault;
    pState->controller.begin(sampleRate, len);
    return kelStatusOk;
}

KelStatus kelsControllerInitAEC_32s(int sampleRate, int len, KelAECState_32s* pState) {
    if (const KelStatus fault = initFault(sampleRate, len, pState)) return fault;
    pState->controller.begin(sampleRate, len);
    return kelStatusOk;
}

KelStatus kelsControllerUpdateAEC_32f(const Kel32f* pSrcRef, const Kel32f* pSrcMic, const Kel32f* pSrcErr,
                                      KelAECState_32f* pState, Kel32f* pFactor, Kel32f* pForget, int* pFlag) {
    if (anyNull(pSrcRef, pSrcMic, pSrcErr, pState, pFactor, pForget, pFlag)) return kelStatusNullPtr;
    updateController(pSrcRef, pSrcMic, pSrcErr, pState, pFactor, pForget, pFlag);
    return kelStatusOk;
}

KelStatus kelsControllerUpdateAEC_32s(const Kel32s* pSrcRef, const Kel32s* pSrcMic, const Kel32s* pSrcErr,
                                      KelAECState_32s* pState, Kel32f* pFactor, Kel32f* pForget, int* pFlag) {
    if (anyNull(pSrcRef, pSrcMic, pSrcErr, pState, pFactor, pForget, pFlag)) return kelStatusNullPtr;
    updateController(pSrcRef, pSrcMic, pSrcErr, pState, pFactor, pForget, pFlag);
    return kelStatusOk;
}

KelStatus kelsFilterAECNLMS_32fc(const Kel32fc** ppSrcRef, const Kel32fc** ppSrcCoef, Kel32fc* pDst, int len,
                                 int numPart) {
    if (const KelStatus fault = spectraFault(len, numPart, ppSrcRef, ppSrcCoef, pDst)) return fault;
    predictEcho<FloatForm>(PointerRows(ppSrcRef), PointerRows(ppSrcCoef), pDst, toSize(len), numPart);
    return kelStatusOk;
}

KelStatus kelsFilterAECNLMS_32sc(const Kel32sc** ppSrcRef, const Kel32sc** ppSrcCoef, Kel32sc* pDst, int len,
                                 int numPart) {
    if (const KelStatus fault = spectraFault(len, numPart, ppSrcRef, ppSrcCoef, pDst)) return fault;
    const NearestScope scope;
    predictEcho<IntegerForm>(PointerRows(ppSrcRef), PointerRows(ppSrcCoef), pDst, toSize(len), numPart);
    return kelStatusOk;
}

KelStatus kelsStepSizeUpdateAECNLMS_32f(const Kel32fc** ppSrcRef, const Kel32fc** ppSrcCoef, const Kel32fc* pSrcErr,
                                        Kel32f* pSrcDstNear, Kel32f** ppSrcDstVar, Kel32f** ppDstStep, int len,
                                        int numPart, Kel32f factor, Kel32f forget, Kel32f smooth) {
    if (const KelStatus fault =
            spectraFault(len, numPart, ppSrcRef, ppSrcCoef, pSrcErr, pSrcDstNear, ppSrcDstVar, ppDstStep))
        return fault;
    if (const KelStatus fault = shareFault(factor, forget, smooth)) return fault;
    const StepSizes<FloatForm> steps{
        PointerRows(ppSrcRef),    PointerRows(ppSrcCoef), pSrcErr, pSrcDstNear,
        PointerRows(ppSrcDstVar), PointerRows(ppDstStep), numPart, {factor, forget, smooth}};
    steps.update(toSize(len));
    return kelStatusOk;
}

KelStatus kelsStepSizeUpdateAECNLMS_32s(const Kel32sc** ppSrcRef, const Kel32sc** ppSrcCoef, const Kel32sc* pSrcErr,
                                        Kel32s* pSrcDstNear, Kel32s** ppSrcDstVar, Kel32s** ppDstStep, int len,
                                        int numPart, Kel32f factor, Kel32f forget, Kel32f smooth) {
    if (const KelStatus fault =
            spectraFault(len, numPart, ppSrcRef, ppSrcCoef, pSrcErr, pSrcDstNear, ppSrcDstVar, ppDstStep))
        return fault;
    if (const KelStatus fault = shareFault(factor, forget, smooth)) return fault;
    const NearestScope scope;
    const StepSizes<IntegerForm> steps{
        PointerRows(ppSrcRef),    PointerRows(ppSrcCoef), pSrcErr, pSrcDstNear,
        PointerRows(ppSrcDstVar), PointerRows(ppDstStep), numPart, {factor, forget, smooth}};
    steps.update(toSize(len));
    return kelStatusOk;
}

KelStatus kelsCoefUpdateAECNLMS_32fc_I(const Kel32fc** ppSrcRef, const Kel32fc* pSrcErr, const Kel32f** ppSrcStep,
                                       Kel32fc** ppSrcDstCoef, int len, int numPart) {
    if (const KelStatus fault = spectraFault(len, numPart, ppSrcRef, pSrcErr, ppSrcStep, ppSrcDstCoef)) return fault;
    moveCoefficients(PointerRows(ppSrcRef), pSrcErr, PointerRows(ppSrcStep), PointerRows(ppSrcDstCoef), toSize(len),
                     numPart);
    return kelStatusOk;
}

KelStatus kelsCoefUpdateAECNLMS_32sc_I(const Kel32sc** ppSrcRef, const Kel32sc* pSrcErr, const Kel32s** ppSrcStep,
                                       Kel32sc** ppSrcDstCoef, int len, int numPart) {
    if (const KelStatus fault = spectraFault(len, numPart, ppSrcRef, pSrcErr, ppSrcStep, ppSrcDstCoef)) return fault;
    const NearestScope scope;
    moveCoefficients(PointerRows(ppSrcRef), pSrcErr, PointerRows(ppSrcStep), PointerRows(ppSrcDstCoef), toSize(len),
                     numPart);
    return kelStatusOk;
}
