/* Scalar types, status codes and conventions shared by every function of the library.
 *
 * Conventions
 * -----------
 * Names.  kels + operation + types from source to destination + suffixes:
 *   _I     in place: the destination is also a source
 *   _Sfs   integer result scaled by 2^-scaleFactor (scaleFactor is the last argument); _ISfs the same in place
 *   _D2    matrix as one array with a row step counted in elements (not bytes)
 *   _D2L   matrix as an array of row pointers; rows need not be contiguous or in order
 *   C      after the operation: one operand is a constant
 *
 * Arguments.  Sources, destinations, lengths and sizes, then modes; arrays belong to the caller and are never kept.
 * Unless a header says so for a function, source and destination must be the same array or not overlap at all.
 *
 * Checks.  Every function validates its arguments before it touches an array and returns at the first fault, in this
 * order unless its own header states another: null pointers (-8), sizes below 1 (-6), row step (-37), scalar domains.
 * After an error nothing has been written.  A positive status is a warning: all outputs are written, some of them hold
 * a documented substitute; the first element that needs a substitute decides which warning is returned.
 *
 * Scale factor.  A result r is stored as r * 2^-scaleFactor, rounded, then saturated to the destination's range.  Any
 * int is a valid scaleFactor.  "Half to even" rounds to the nearest integer and ties to the even one.
 *
 * Threads and state.  The library starts no threads, takes no locks and has no mutable global state.  Calls whose
 * outputs are disjoint may run at once.  The caller's floating-point control state (rounding, exception masks) is the
 * same after a call as before it.
 */
#ifndef KELS_TYPES_H
#define KELS_TYPES_H

#include <stdint.h>

#if defined(__GNUC__)
#define KELS_API __attribute__((visibility("default")))
#else
#define KELS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint8_t Kel8u;
typedef int16_t Kel16s;
typedef int32_t Kel32s;
typedef float Kel32f;
typedef double Kel64f;

typedef struct {
    Kel32f re, im;
} Kel32fc;

typedef struct {
    Kel32s re, im;
} Kel32sc;

typedef Kel32s KelStatus;

enum {
    kelStatusOk = 0,

    /* errors: nothing has been written */
    kelStatusErr = -2,               /* an inner call of a composite function failed */
    kelStatusAllocError = -4,        /* allocation failed (resampling, direct-variance scratch) */
    kelStatusBadArg = -5,            /* a scalar argument lies outside its domain */
    kelStatusSize = -6,              /* a length, count, order or dimension is out of range */
    kelStatusOutOfRange = -7,        /* a value lies outside the range that the operation allows */
    kelStatusNullPtr = -8,           /* a pointer argument, or a pointer inside a structure, is null */
    kelStatusNoMemory = -9,          /* memory allocation failed */
    kelStatusDivByZeroErr = -10,     /* the constant divisor is zero or NaN */
    kelStatusFftOrder = -15,         /* FFT order outside 0..30 */
    kelStatusFftFlag = -16,          /* FFT normalisation flag not one of the accepted values */
    kelStatusContextMatch = -17,     /* a specification is not of the kind that the function takes */
    kelStatusStep = -37,             /* row step smaller than the part of the row that the call touches */
    kelStatusNoConverge = -65,       /* an iteration reached its limit */
    kelStatusModeNotSupported = -66, /* codebook kind not supported by this entry point */
    kelStatusNegOcc = -67,           /* an occupation count or weight is negative or NaN */
    kelStatusFBankState = -69,       /* filter-bank centres unset, negative or not ascending */
    kelStatusFBankFlag = -70,        /* filter-bank flag, less bit 4, neither 1 nor 2 */
    kelStatusFBankFreq = -71,        /* filter-bank frequency limits out of order or above half the rate */
    kelStatusNoRoot = -114,          /* fewer line spectral frequencies found than the order */
    kelStatusBadLsp = -115,          /* line spectral input out of range or not descending */
    kelStatusLpcCalc = -117,         /* a prediction error that is not greater than 0 */
    kelStatusLengthRange = -119,     /* a length below 1 or above the family's maximum */
    kelStatusUnknownKind = -9999,    /* a codebook structure holds an unknown kind */

    /* warnings: all outputs have been written */
    kelStatusSqrtNegative = 3, /* an element had no real square root */
    kelStatusNoOperation = 4,  /* no element could be processed normally */
    kelStatusDivByZero = 6,    /* an element was divided by zero */
    kelStatusLogZero = 7,      /* the logarithm of zero was needed */
    kelStatusLogNegative = 8,  /* the logarithm of a negative number was needed */
    kelStatusAllFloored = 11,  /* every element fell below its floor */
    kelStatusZeroOcc = 16,     /* the occupation count is zero: nothing is updated */
    kelStatusCdbkShrunk = 31   /* a codebook has another number of codevectors than requested */
};

/* Algorithm choice of the functions that take a `hint`. */
enum { kelHintNone = 0, kelHintFast = 1, kelHintAccurate = 2 };

#ifdef __cplusplus
}
#endif

#endif
