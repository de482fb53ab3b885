// The texts of statuses.
#include "kels/features.h"

namespace {

struct StatusText {
    KelStatus status;
    const char* text;
};

constexpr StatusText kTexts[] = {
    {kelStatusOk, "no error"},
    {kelStatusErr, "inner call failed"},
    {kelStatusAllocError, "allocation failed"},
    {kelStatusBadArg, "argument outside its domain"},
    {kelStatusSize, "size out of range"},
    {kelStatusOutOfRange, "value out of range"},
    {kelStatusNullPtr, "null pointer"},
    {kelStatusNoMemory, "out of memory"},
    {kelStatusDivByZeroErr, "constant divisor is zero or not a number"},
    {kelStatusFftOrder, "FFT order out of range"},
    {kelStatusFftFlag, "FFT flag not accepted"},
    {kelStatusContextMatch, "structure of another kind"},
    {kelStatusStep, "row step too small"},
    {kelStatusNoConverge, "iteration did not converge"},
    {kelStatusModeNotSupported, "mode not supported here"},
    {kelStatusNegOcc, "occupation or weight negative or not a number"},
    {kelStatusFBankState, "filter bank centres missing or not ascending"},
    {kelStatusFBankFlag, "filter bank flag not accepted"},
    {kelStatusFBankFreq, "filter bank frequencies out of order or range"},
    {kelStatusNoRoot, "too few line spectral frequencies found"},
    {kelStatusBadLsp, "line spectral frequencies out of range or order"},
    {kelStatusLpcCalc, "prediction error not greater than zero"},
    {kelStatusLengthRange, "length out of range"},
    {kelStatusUnknownKind, "codebook of unknown kind"},
    {kelStatusSqrtNegative, "square root of a negative number"},
    {kelStatusNoOperation, "nothing could be processed normally"},
    {kelStatusDivByZero, "division by zero"},
    {kelStatusLogZero, "logarithm of zero"},
    {kelStatusLogNegative, "logarithm of a negative number"},
    {kelStatusAllFloored, "every element fell below its floor"},
    {kelStatusZeroOcc, "occupation is zero, nothing updated"},
    {kelStatusCdbkShrunk, "codebook size differs from the request"},
};

}  // namespace

const char* kelsrGetStatusString(KelStatus status) {
    for (const StatusText& known : kTexts) {
        if (known.status == status) return known.text;
    }
    return "unknown status";
}
