/** @defgroup cpu Processor services
 *
 * What the processor can do, and the floating-point control state of the calling thread, for applications that look
 * after either themselves.
 *
 * @code{.c}
 * const unsigned int before = kel_control87(0, 0);
 * kel_control87(kelFpuPrecision53, kelFpuPrecisionMask);
 * // ... arithmetic of the x87 unit with the precision of a double ...
 * kel_control87(before, kelFpuPrecisionMask);
 * if (kel_is_vbz_extension() == 0) puts("this processor has no SSE2");
 * @endcode
 *
 * ## What it computes
 * Queries return 1 for yes and 0 for no.  They ask the processor anew in every call.
 *
 * No other function of the library looks at the processor, and none is changed by what is set here, except that
 * arithmetic without a stated rounding follows the rounding mode.
 *
 * ## Threads
 * The control functions act on the calling thread alone.
 * @{
 */
#ifndef KELS_CPU_H
#define KELS_CPU_H

#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Processor
 * @{ */

KELS_API int kel_has_cpuid(void);         /* the CPUID instruction: bit 21 of the flags register can be changed */
KELS_API int kel_max_cpuid_input(void);   /* the highest standard CPUID leaf, 0 without CPUID */
KELS_API int kel_has_rdtsc(void);         /* the time-stamp counter */
KELS_API int kel_is_mmx_extension(void);  /* MMX */
KELS_API int kel_is_ssx_extension(void);  /* SSE */
KELS_API int kel_is_vbz_extension(void);  /* SSE2 */
KELS_API int kel_is_vcz_extension(void);  /* SSE3 */
KELS_API int kel_is_htt_extension(void);  /* more than one logical processor in the package */
KELS_API int kel_is_x64e_extension(void); /* the 64-bit extension */
KELS_API int kel_is_GenuineOrvex(void);   /* the vendor string reads GenuineOrvex */

/* Family and model from CPUID leaf 1, with their extended fields: family * 65536 + model * 16 + stepping.  0 without
 * CPUID.
 */
KELS_API int kel_get_talvine_ident(void);

/* The time-stamp counter. */
KELS_API uint64_t kel_get_talvine_counter(void);
/** @} */

/** @name Control registers, in their hardware layout
 * @{ */

/* MXCSR takes its power-on value 0x1F80: exceptions masked, rounding to nearest, flags clear.  Returns what it was. */
KELS_API int kel_clear_ssx(void);

/* Writes the x87 control word, or MXCSR (of which bits 16 to 31 do not exist and are ignored). */
KELS_API void kel_set_cw_fpu(int cw);
KELS_API void kel_set_cw_ssx(int cw);

/* Of cw only the rounding and precision control of the x87 unit (mask 0x0F00), or the rounding control of MXCSR (mask
 * 0x6000), each at its place in the register.  The register is written only when they differ.
 */
KELS_API void kel_set_rcpc_fpu(int cw);
KELS_API void kel_set_rc_ssx(int cw);

/* Whether MXCSR has the bit that treats denormals as zeros (bit 6). */
KELS_API int kel_tst_daz_ssx(void);
/** @} */

/** @name The x87 unit, in a layout of symbols
 * @{ */

/* Exceptions: masked (control word) or raised (status). */
enum {
    kelFpuInexact = 0x00001,
    kelFpuUnderflow = 0x00002,
    kelFpuOverflow = 0x00004,
    kelFpuZeroDivide = 0x00008,
    kelFpuInvalid = 0x00010,
    kelFpuDenormal = 0x80000,
    kelFpuExceptionMask = 0x8001f
};
/* Rounding. */
enum {
    kelFpuRoundNearest = 0x000,
    kelFpuRoundDown = 0x100,
    kelFpuRoundUp = 0x200,
    kelFpuRoundChop = 0x300,
    kelFpuRoundMask = 0x300
};
/* Precision of results, in bits of the significand.  A reserved hardware setting reads as all ones. */
enum {
    kelFpuPrecision64 = 0x00000,
    kelFpuPrecision53 = 0x10000,
    kelFpuPrecision24 = 0x20000,
    kelFpuPrecisionMask = 0x30000
};
/* Infinity control: kept by the register, without effect. */
enum { kelFpuAffineInfinity = 0x40000 };

/* Replaces the bits of the control word that are set in mask by those of newCw, and returns the resulting word.  With
 * mask 0 it only reads.
 */
KELS_API unsigned int kel_control87(unsigned int newCw, unsigned int mask);

/* The raised exceptions; clear87 also clears them and returns what they were. */
KELS_API unsigned int kel_status87(void);
KELS_API unsigned int kel_clear87(void);
/** @} */

/** @name Classification
 * @{ */

KELS_API int kel_isnan(double x);  /* 1 for NaN */
KELS_API int kel_finite(double x); /* 0 for infinities and NaN */
/** @} */

#ifdef __cplusplus
}
#endif
/** @} */
#endif
