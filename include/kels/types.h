/** @defgroup types Types, statuses and conventions
 *
 * What every function of the library has in common: scalar types, status codes, and how names and arguments are to be
 * read.
 *
 * @code{.c}
 * float x[4] = {1, 4, 9, 16}, y[4];
 * const KelStatus status = kelsMulC_32f(x, 0.5f, y, 4);
 * if (status < kelStatusOk) puts("an error: nothing has been written");
 * if (status > kelStatusOk) puts("a warning: all has been written, some of it as a substitute");
 * @endcode
 *
 * ## Names
 * A name is `kels`, the operation, the types from source to destination, and suffixes.  `kelsConvert_32f16s_Sfs`
 * converts floats to 16-bit integers with a scale factor.
 *
 *     8u 16s 32s 32f 64f   unsigned and signed integers, floats; 32fc and 32sc are complex
 *     _I                   in place: the destination is also a source
 *     _Sfs                 an integer result is scaled by 2^-scaleFactor; _ISfs: the same in place
 *     _D2                  a matrix is one array with a row step, which counts elements and not bytes
 *     _D2L                 a matrix is an array of row pointers; rows need not be contiguous or in order
 *     C                    behind the operation: one operand is a constant
 *
 * ## Shapes and units
 * Arguments come in this order: sources, destinations, lengths and sizes, then modes.
 *
 * A result r is stored as r 2^-scaleFactor, rounded, then saturated to the range of the destination.  Every int is a
 * valid scaleFactor.  "Half to even" rounds to the nearest integer, and ties to the even one.
 *
 * ## Ownership
 * Arrays belong to the caller and are never kept.  Unless a header says so for a function, source and destination are
 * either the same array or do not overlap at all.
 *
 * ## Checks, in order
 * A function checks its arguments before it touches an array, and returns at the first fault.  Unless its header states
 * another order, that is:
 * 1. kelStatusNullPtr: a pointer is null.
 * 2. kelStatusSize: a size is below 1.
 * 3. kelStatusStep: a row step is too small.
 * 4. kelStatusBadArg, or a status of the family's own: a scalar lies outside its domain.
 *
 * A negative status is an error: nothing has been written.  A positive status is a warning: all outputs have been
 * written, and some of them hold a documented substitute.  The first element that needs a substitute decides which
 * warning it is.
 *
 * ## Threads
 * The library starts no threads, takes no locks and has no mutable global state.  Calls whose outputs are disjoint may
 * run at once.  The caller's floating-point control state, rounding and exception masks, is the same after a call as
 * before it.
 * @{
 */
#ifndef KELS_TYPES_H
#define KELS_TYPES_H

#include <stdint.h>

/** What stands before every declaration; a program may define it otherwise. */
#ifndef KELS_API
#if defined(__GNUC__)
#define KELS_API __attribute__((visibility("default")))
#else
#define KELS_API
#endif
#endif

/* The version of this library, as kelsrGetLibVersion() reports that of the library in use. */
#define KELS_VERSION_MAJOR 4
#define KELS_VERSION_MINOR 1
#define KELS_VERSION 401 /* 100 times the first, plus the second: for comparisons */
#define KELS_VERSION_STRING "4.1"
#ifdef __cplusplus
extern "C" {
#endif

typedef uint8_t Kel8u;
typedef int16_t Kel16s;
typedef int32_t Kel32s;
typedef float Kel32f;
typedef double Kel64f;

/** Complex numbers. */
typedef struct {
    Kel32f re, im;
} Kel32fc;
typedef struct {
    Kel32s re, im;
} Kel32sc;

/** What a call returns: 0, an error below it, or a warning above it. */
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

/** Rounding of the conversions that take an rndMode: everything but kelRndNear is toward zero. */
enum { kelRndZero = 0, kelRndNear = 1 };

/** Algorithm choice of the functions that take a `hint`. */
enum { kelHintNone = 0, kelHintFast = 1, kelHintAccurate = 2 };

#ifdef __cplusplus
}
#endif
/** @} */
#endif
