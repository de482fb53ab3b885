// The names of statuses, and errors that tell them.
#include "common/check.h"

#include <stdexcept>

namespace common {
namespace {

const char* nameOf(KelStatus status) {
    switch (status) {
#define KEL_NAME(status) \
    case status:         \
        return #status
        KEL_NAME(kelStatusOk);
        KEL_NAME(kelStatusErr);
        KEL_NAME(kelStatusAllocError);
        KEL_NAME(kelStatusBadArg);
        KEL_NAME(kelStatusSize);
        KEL_NAME(kelStatusOutOfRange);
        KEL_NAME(kelStatusNullPtr);
        KEL_NAME(kelStatusNoMemory);
        KEL_NAME(kelStatusDivByZeroErr);
        KEL_NAME(kelStatusFftOrder);
        KEL_NAME(kelStatusFftFlag);
        KEL_NAME(kelStatusContextMatch);
        KEL_NAME(kelStatusStep);
        KEL_NAME(kelStatusNoConverge);
        KEL_NAME(kelStatusModeNotSupported);
        KEL_NAME(kelStatusNegOcc);
        KEL_NAME(kelStatusFBankState);
        KEL_NAME(kelStatusFBankFlag);
        KEL_NAME(kelStatusFBankFreq);
        KEL_NAME(kelStatusNoRoot);
        KEL_NAME(kelStatusBadLsp);
        KEL_NAME(kelStatusLpcCalc);
        KEL_NAME(kelStatusLengthRange);
        KEL_NAME(kelStatusUnknownKind);
        KEL_NAME(kelStatusSqrtNegative);
        KEL_NAME(kelStatusNoOperation);
        KEL_NAME(kelStatusDivByZero);
        KEL_NAME(kelStatusLogZero);
        KEL_NAME(kelStatusLogNegative);
        KEL_NAME(kelStatusAllFloored);
        KEL_NAME(kelStatusZeroOcc);
        KEL_NAME(kelStatusCdbkShrunk);
#undef KEL_NAME
    }
    return "unknown status";
}

}  // namespace

std::string describe(KelStatus status) {
    return std::string(nameOf(status)) + " (" + std::to_string(status) + "), " + kelsrGetStatusString(status);
}

void check(KelStatus status, std::string_view what) {
    if (status < 0) throw std::runtime_error(std::string(what) + ": " + describe(status));
}

}  // namespace common
