/** @defgroup features Features of recordings and streams
 *
 * One call turns a recording, or a piece of a stream, into rows of features: log mel energies or cepstra, with energy,
 * deltas and normalisation where wanted.
 *
 * Every choice that the known toolkits make differently is a field of one plain configuration.  Presets fill it so that
 * the rows match those of HTK, Kaldi, librosa and Whisper; any field may be changed afterwards.
 *
 * @code{.c}
 * Kel16s samples[8000];
 * for (int i = 0; i < 8000; ++i) samples[i] = (Kel16s)(8000 * sin(0.05 * i) + i % 50);
 * KelFeatureConfig config;
 * KelFeatureSpec_32f* spec;
 * static Kel32f rows[100 * 13];
 * int height, width;
 * kelsFeaturePreset(&config, 8000, kelFeatKaldiMfcc);
 * kelsFeatureInitAlloc_32f(&spec, &config);
 * kelsFeatureGetSize_32f(spec, 8000, &height, &width);
 * if (height <= 100 && width == 13) kelsFeature_16s32f_D2(samples, 8000, rows, width, spec, NULL);
 * kelsFeatureFree_32f(spec);
 * @endcode
 *
 * A stream takes samples as they come, and a flush ends it:
 *
 * @code{.c}
 * KelFeatureConfig config;
 * KelFeatureSpec_32f* spec;
 * KelFeatureStream_32f* stream;
 * Kel32f block[160], rows[4 * 80];
 * int got;
 * for (int i = 0; i < 160; ++i) block[i] = (Kel32f)(1000 * sin(0.1 * i));
 * kelsFeaturePreset(&config, 16000, kelFeatKaldiFbank);
 * kelsFeatureInitAlloc_32f(&spec, &config);
 * kelsFeatureStreamInitAlloc_32f(&stream, spec);
 * for (int i = 0; i < 20; ++i) kelsFeatureStream_32f_D2(block, 160, rows, 80, 4, &got, stream);
 * kelsFeatureStreamFlush_32f_D2(rows, 80, 4, &got, stream);
 * kelsFeatureStreamFree_32f(stream);
 * kelsFeatureFree_32f(spec);
 * @endcode
 *
 * ## What it computes
 * Frames.  With n samples, L = frameLen and S = frameShift, frame t covers the samples s(t) .. s(t) + L - 1.  Divisions
 * of numbers of samples round down.
 *
 *     edges           s(t)             frames                             samples outside the signal
 *     snip            t S              0 if n < L, else 1 + (n - L) / S   none are needed
 *     mirror          t S + S/2 - L/2  (n + S/2) / S                      mirrored, the edge sample repeated
 *     centreZero      t S - L/2        1 + n / S, none for n = 0          0
 *     centreReflect   t S - L/2        the same                           mirrored about the edge sample
 *
 * Mirrors repeat as often as needed.  kelFeatDropLast takes the last frame off; that frame has no part in anything.
 * Each frame goes through these steps:
 *
 * 1.  16-bit samples are multiplied by scale16s and rounded to single precision; floats are taken as they are.  With
 *     removeMean the frame's mean is subtracted.  The raw energy E is the sum of squares at this point.
 * 2.  Pre-emphasis k within the frame: f[i] - k f[i-1]; the first sample stands before itself: f[0] (1 - k).
 * 3.  A window of L values.  Energy that is not raw is taken here.  Zeros follow up to fftLen.
 * 4.  The spectrum of bins 0 .. fftLen/2: the magnitude of the transform, or its square, without a factor.
 * 5.  The filter bank.  F + 2 corners are equally spaced on a mel scale from lowFreq to highFreq.  Filter m rises from
 *     corner m to m + 1 and falls to m + 2, straight over mel or over Hz; it is 0 at and beyond its ends.  It peaks at
 *     1, or with kelFeatBankArea has area 1 over Hz.  A filter may hold no bin; its value is 0.
 *     The mel scales are 1127 ln(1 + f / 700), and Slaney's: 3 f / 200 below 1000 Hz, 15 + 27 ln(f / 1000) / ln 6.4
 *     from there on.
 * 6.  The logarithm v of max(value, logFloor).  With logRange above 0, v is raised to at least the largest v of the
 *     whole signal less logRange (NaN and infinity do not count as largest).  Then (v + logOffset) * logScale.
 *     kelFeatLogNone leaves the values alone.
 * 7.  Cepstra c[k] = s[k] l[k] sum over j of v[j] cos(pi k (j + 1/2) / F), with s = sqrt(2 / F), for kelFeatDctOrtho
 *     s[0] = sqrt(1 / F); l[k] = 1 + lifter/2 sin(pi k / lifter), and 1 for k = 0 or lifter 0.
 * 8.  The row: c0 and the logarithm of max(E, energyFloor), those of them that are asked for, before or behind
 *     c1 .. cK, the bank's values or the spectrum.
 * 9.  Normalisation over the signal: x - mean, or (x - mean) / sqrt(max(variance, 1e-20)), of the stored statics.
 * 10. Deltas behind the statics: the sum over k = 1 .. W of k (x[t+k] - x[t-k]), divided by twice the sum of k^2.  The
 *     first or last row stands for rows outside.  Accelerations behind them: the same of the stored deltas
 *     (kelFeatDeltaOfDelta); or of the formula's deltas at t +- k, computed from the statics, whose rows alone are
 *     repeated (kelFeatDeltaOfStatic).  Away from the ends both are the same but for rounding.
 *
 * NaN and infinity spoil the rows whose frames hold them, and the deltas and means that use those, no others.
 *
 * A stream gives, bit for bit, the rows of one call on all its samples, however they are cut and of either type.  A row
 * is given as soon as no later sample can change it: its frame ends among the samples, what mirrors it to the left is
 * there, and so are deltaOrder * deltaWin further frames.  With kelFeatDropLast there may be one frame more to wait
 * for. What needs the whole signal has no stream: logRange above 0, and normalisation.
 *
 * ## Shapes and units
 * Results are rows of `width` values, `dstStep` elements apart; kelsFeatureGetSize_32f gives height and width.
 * Elements of a row beyond its width are neither read nor written.  Sources and destinations do not overlap unless a
 * function's own description allows it.
 *
 * Float samples must be in the unit of the toolkit: +-32768 for HTK and Kaldi, +-1 for librosa and Whisper.  16-bit
 * samples are brought there by scale16s.
 *
 * ## Ownership
 * A specification is built from a configuration and read-only afterwards.  Its stream refers to it, so it must outlive
 * the stream.  Both are freed, handle included, by their own functions.  The scratch buffer of a call on a whole signal
 * may stand at any address, and a null buffer makes the call allocate.  With a buffer these calls allocate nothing, and
 * neither do pushes, flushes, resets and size queries of streams.  The buffer's size does not depend on the length
 * unless logRange is used with cepstra.  The memory of a stream does not grow.
 *
 * ## Accuracy
 * Everything from the samples to the cepstra runs in double precision and is rounded once; deltas and normalisation are
 * computed in double from the stored statics.  A bin is within 2^-47 of the sum of the frame's absolute samples, a
 * logarithm or a value within 2^-23 of itself beyond what that makes, a cepstrum within 2^-23 of itself and 2^-40 of
 * the sum of its absolute terms.  With hint kelHintFast the transform, the spectrum, the bank, the logarithms and the
 * squares of the energy run in single precision: a bin may be off by 2^-21 of the frame's largest bin, which bands far
 * below the rest show as 1e-3 to 1e-2 in the logarithm.  Transforms with a prime factor above 31 are not done in single
 * precision.
 *
 * docs/features.md tabulates how far the rows of each preset are from the toolkit's formulas, and what is not matched.
 *
 * ## Checks, in order
 * The first failure is returned, and nothing has been written.
 *
 *     Preset                 kelStatusNullPtr, Size (rate outside 1000 .. 384000), BadArg (unknown preset)
 *     InitAlloc              NullPtr, Size, FBankFreq, BadArg, NoMemory
 *     Free, StreamReset,
 *       StreamFree           NullPtr, ContextMatch
 *     GetSize, StreamGetSize NullPtr, ContextMatch, Size (len < 0, or more rows than an int counts)
 *     GetBufSize             NullPtr, ContextMatch, Size (the same), NoMemory (more bytes than an int counts)
 *     GetBank                NullPtr, ContextMatch, ModeNotSupported (no bank), Step
 *     kelsFeature_*          NullPtr (pBuffer excepted), ContextMatch, Size (len < 1, or too many rows), Step, NoMemory
 *     StreamInitAlloc        NullPtr, ContextMatch, ModeNotSupported (logRange, norm), NoMemory
 *     push, flush            NullPtr (whatever the counts), ContextMatch, Size (len or height < 0), Step,
 *                            Size (the rows do not fit into height: nothing is taken)
 *     FFT rows               NullPtr (pFFTSpec), ContextMatch, NullPtr (pSrc, pDst), Size (height), Step, NoMemory
 *     bank rows              NullPtr (or a freed bank), FBankState, Size (height), Step
 *     cosine transform rows  NullPtr, Size (height), Step
 *     all others             NullPtr, Size (len < 1), BadArg (window: unknown kind, or beta outside 0 .. 700;
 *                            pre-emphasis: val not finite)
 *
 * Sizes of a configuration are sampleRate, frameLen, frameShift, fftLen, numFilters, numCeps, lifter, deltaOrder and
 * deltaWin, and a row of cepstra without any value.  Frequencies must obey 0 <= low < high <= half the rate.  BadArg is
 * everything else outside the ranges below, energy flags that the output does not have, and NaN and infinity.
 * A signal too short for a frame has no rows and is no error.
 *
 * ## Threads
 * Any number of threads may use one specification at a time, each with a buffer of its own.  A stream belongs to one
 * thread at a time.
 *
 * ## Source
 * S. Young et al., The HTK Book (version 3.4), chapters 5 and 18.  D. Povey et al., "The Kaldi speech recognition
 * toolkit", ASRU 2011.  B. McFee et al., "librosa: audio and music signal analysis in Python", SciPy 2015.  A. Radford
 * et al., "Robust speech recognition via large-scale weak supervision", 2022.  M. Slaney, Auditory Toolbox, Technical
 * Report 1998-010, Interval Research.  S. Davis, P. Mermelstein, IEEE Trans. ASSP 28(4), 1980.  J. F. Kaiser, ISCAS
 * 1974.
 *
 * @{
 */
#ifndef KELS_FEATURES_H
#define KELS_FEATURES_H

#include "kels/dct.h"
#include "kels/fbank.h"
#include "kels/fft.h"
#include "kels/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Choices
 * The numbers of a configuration's fields.
 * @{ */

/** Windows.  With a = 2 pi i / D and D = len - 1, or D = len where kelWinPeriodic is added:
 *  1; Hann 0.5 - 0.5 cos a; Hamming 0.54 - 0.46 cos a; Povey Hann^0.85; Blackman 0.42 - 0.5 cos a + 0.08 cos 2a; Kaiser
 *  I0(beta sqrt(1 - (2 i / D - 1)^2)) / I0(beta).  A window of one value is 1. */
enum {
    kelWinRect = 0,
    kelWinHann = 1,
    kelWinHamming = 2,
    kelWinPovey = 3,
    kelWinBlackman = 4,
    kelWinKaiser = 5,
    kelWinPeriodic = 16
};
/** edges; kelFeatDropLast is added to any of the others. */
enum { kelFeatSnip = 0, kelFeatMirror = 1, kelFeatCentreZero = 2, kelFeatCentreReflect = 3, kelFeatDropLast = 16 };
/** spectrum */
enum { kelFeatMagnitude = 0, kelFeatPower = 1 };
/** melScale */
enum { kelFeatScaleMel = 0, kelFeatScaleSlaney = 1 };
/** triangles */
enum { kelFeatTriangleMel = 0, kelFeatTriangleHz = 1 };
/** bankNorm */
enum { kelFeatBankPeak = 0, kelFeatBankArea = 1 };
/** logKind */
enum { kelFeatLogNone = 0, kelFeatLn = 1, kelFeatLog10 = 2, kelFeatDecibel = 3 };
/** output */
enum { kelFeatSpectrum = 0, kelFeatBank = 1, kelFeatCepstra = 2 };
/** dctScale */
enum { kelFeatDctPlain = 0, kelFeatDctOrtho = 1 };
/** energy: a set of flags */
enum { kelFeatC0 = 1, kelFeatEnergy = 2 };
/** energyPlace */
enum { kelFeatFirst = 0, kelFeatLast = 1 };
/** deltaEdge */
enum { kelFeatDeltaOfDelta = 0, kelFeatDeltaOfStatic = 1 };
/** norm */
enum { kelFeatNormNone = 0, kelFeatNormMean = 1, kelFeatNormMeanVar = 2 };
/** Presets */
enum { kelFeatHtkMfcc = 1, kelFeatKaldiMfcc = 2, kelFeatKaldiFbank = 3, kelFeatLibrosaMfcc = 4, kelFeatWhisperMel = 5 };
/** @} */

/** The choices of a front end.  Real fields are double so that 0.97 means 0.97.  A field without effect beside the
 *  others is not looked at. */
typedef struct {
    Kel32s sampleRate;  /**< Hz, 1000 .. 384000 */
    Kel32s frameLen;    /**< samples, 1 .. 65536 */
    Kel32s frameShift;  /**< samples, at least 1 */
    Kel32s fftLen;      /**< even, 2 .. 65536, at least frameLen; need not be a power of two */
    Kel32s edges;       /**< kelFeatSnip .., and kelFeatDropLast */
    Kel32s window;      /**< kelWinRect .., and kelWinPeriodic */
    Kel32s removeMean;  /**< 1: each frame's mean is subtracted */
    Kel32s spectrum;    /**< kelFeatMagnitude, kelFeatPower */
    Kel32s melScale;    /**< of the bank: kelFeatScaleMel, kelFeatScaleSlaney */
    Kel32s triangles;   /**< of the bank: kelFeatTriangleMel, kelFeatTriangleHz */
    Kel32s bankNorm;    /**< of the bank: kelFeatBankPeak, kelFeatBankArea */
    Kel32s numFilters;  /**< of the bank: 1 .. 1024 */
    Kel32s logKind;     /**< kelFeatLogNone .. kelFeatDecibel (10 log10) */
    Kel32s output;      /**< kelFeatSpectrum, kelFeatBank, kelFeatCepstra */
    Kel32s numCeps;     /**< cepstra from c1 on, 0 .. numFilters - 1 */
    Kel32s dctScale;    /**< of cepstra: kelFeatDctPlain, kelFeatDctOrtho */
    Kel32s lifter;      /**< of cepstra: 0 off */
    Kel32s energy;      /**< flags: kelFeatC0 (of cepstra), kelFeatEnergy (of cepstra and bank) */
    Kel32s energyPlace; /**< kelFeatFirst, kelFeatLast */
    Kel32s energyRaw;   /**< 1: before pre-emphasis and window, 0: after them */
    Kel32s deltaOrder;  /**< 0 .. 2 */
    Kel32s deltaWin;    /**< W, 1 .. 64 */
    Kel32s deltaEdge;   /**< kelFeatDeltaOfDelta, kelFeatDeltaOfStatic */
    Kel32s norm;        /**< kelFeatNormNone .. kelFeatNormMeanVar */
    Kel32s hint;        /**< kelHintFast: transform in single precision; any other value: double */
    Kel32s reserved;    /**< 0 */

    Kel64f windowParam; /**< of the Kaiser window: beta, 0 .. 700 */
    Kel64f preEmphasis; /**< -1 .. 1; 0 off */
    Kel64f scale16s;    /**< factor of 16-bit samples; not 0 */
    Kel64f lowFreq;     /**< of the bank: Hz */
    Kel64f highFreq;    /**< of the bank: Hz; up to 0 it stands for half the rate plus highFreq */
    Kel64f logFloor;    /**< least argument of the logarithm, above 0 */
    Kel64f logRange;    /**< largest distance below the signal's maximum, in units of the logarithm; 0 off */
    Kel64f logOffset;   /**< added to a logarithm */
    Kel64f logScale;    /**< multiplies it then */
    Kel64f energyFloor; /**< least energy, above 0 */
} KelFeatureConfig;

typedef struct KelFeatureSpec_32f KelFeatureSpec_32f;
typedef struct KelFeatureStream_32f KelFeatureStream_32f;

/** @name Configuration and specification
 * Preset fills a configuration, InitAlloc checks it and builds the specification, and Free frees all of it.  GetSize
 * gives the rows for len samples and the values in a row; GetBufSize the bytes of scratch for len samples or fewer;
 * GetBank the weights of the bank, numFilters rows of fftLen/2 + 1 bins.
 * @{ */
KELS_API KelStatus kelsFeaturePreset(KelFeatureConfig* pConfig, int sampleRate, int preset);
KELS_API KelStatus kelsFeatureInitAlloc_32f(KelFeatureSpec_32f** ppSpec, const KelFeatureConfig* pConfig);
KELS_API KelStatus kelsFeatureFree_32f(KelFeatureSpec_32f* pSpec);
KELS_API KelStatus kelsFeatureGetSize_32f(const KelFeatureSpec_32f* pSpec, int len, int* pHeight, int* pWidth);
KELS_API KelStatus kelsFeatureGetBufSize_32f(const KelFeatureSpec_32f* pSpec, int len, int* pSize);
KELS_API KelStatus kelsFeatureGetBank_32f_D2(Kel32f* pDst, int dstStep, const KelFeatureSpec_32f* pSpec);
/** @} */

/** @name Whole signals
 * All rows of len samples.  pBuffer holds what GetBufSize says, or is null.
 * @{ */
KELS_API KelStatus kelsFeature_32f_D2(const Kel32f* pSrc, int len, Kel32f* pDst, int dstStep,
                                      const KelFeatureSpec_32f* pSpec, Kel8u* pBuffer);
KELS_API KelStatus kelsFeature_16s32f_D2(const Kel16s* pSrc, int len, Kel32f* pDst, int dstStep,
                                         const KelFeatureSpec_32f* pSpec, Kel8u* pBuffer);
/** @} */

/** @name Streams
 * A push takes len samples (0 is allowed) and writes the rows that are settled by them; pushes of both types may be
 * mixed.  A flush ends the signal and writes the rows that are left; then, as after a reset, the stream is at its start
 * again.  *pHeight is the number of rows written.  A call whose rows do not fit into height rows is refused and takes
 * nothing; len / frameShift + 1 rows are always enough for a push.  GetSize gives the rows of a push of len samples,
 * and those of a flush after it.
 * @{ */
KELS_API KelStatus kelsFeatureStreamInitAlloc_32f(KelFeatureStream_32f** ppStream, const KelFeatureSpec_32f* pSpec);
KELS_API KelStatus kelsFeatureStreamGetSize_32f(const KelFeatureStream_32f* pStream, int len, int* pHeight,
                                                int* pFlush);
KELS_API KelStatus kelsFeatureStream_32f_D2(const Kel32f* pSrc, int len, Kel32f* pDst, int dstStep, int height,
                                            int* pHeight, KelFeatureStream_32f* pStream);
KELS_API KelStatus kelsFeatureStream_16s32f_D2(const Kel16s* pSrc, int len, Kel32f* pDst, int dstStep, int height,
                                               int* pHeight, KelFeatureStream_32f* pStream);
KELS_API KelStatus kelsFeatureStreamFlush_32f_D2(Kel32f* pDst, int dstStep, int height, int* pHeight,
                                                 KelFeatureStream_32f* pStream);
KELS_API KelStatus kelsFeatureStreamReset_32f(KelFeatureStream_32f* pStream);
KELS_API KelStatus kelsFeatureStreamFree_32f(KelFeatureStream_32f* pStream);
/** @} */

/** @name Logarithms and exponential
 * ln x, log10 x and e^x of each element, within 2^-23 (2^-51 of doubles) of the value and the smallest denormal.  The
 * logarithm of either zero is -infinity and gives the warning kelStatusLogZero, that of a negative number is NaN and
 * gives kelStatusLogNegative; the first such element decides.  NaN stays NaN without a warning.  e^x overflows to
 * infinity and underflows to 0 with status 0.  These stand in core, in vector/logarithms.cpp.
 * @{ */
KELS_API KelStatus kelsLn_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLn_64f(const Kel64f* pSrc, Kel64f* pDst, int len);
KELS_API KelStatus kelsLn_32f_I(Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsLn_64f_I(Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsLog10_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsLog10_64f(const Kel64f* pSrc, Kel64f* pDst, int len);
KELS_API KelStatus kelsLog10_32f_I(Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsLog10_64f_I(Kel64f* pSrcDst, int len);
KELS_API KelStatus kelsExp_32f(const Kel32f* pSrc, Kel32f* pDst, int len);
KELS_API KelStatus kelsExp_64f(const Kel64f* pSrc, Kel64f* pDst, int len);
KELS_API KelStatus kelsExp_32f_I(Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsExp_64f_I(Kel64f* pSrcDst, int len);
/** @} */

/** @name Floors, ceilings, squared magnitude
 * MaxEveryC raises the elements below val to it, MinEveryC lowers those above.  Comparisons with NaN fail: a NaN
 * element stays, and a NaN val changes nothing.  MagnitudeSqr is re^2 + im^2 within 2^-22 of itself and the smallest
 * denormal; pDst may be pSrc.  These stand in core, in vector/limits.cpp.
 * @{ */
KELS_API KelStatus kelsMaxEveryC_32f_I(Kel32f val, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMinEveryC_32f_I(Kel32f val, Kel32f* pSrcDst, int len);
KELS_API KelStatus kelsMagnitudeSqr_32fc(const Kel32fc* pSrc, Kel32f* pDst, int len);
/** @} */

/** @name Windows
 * The values of a window of len values, and their products with a vector.  param is the beta of a Kaiser window; other
 * kinds do not look at it.  Windows are exactly symmetric (periodic ones about len / 2), and the ends of Hann, Povey
 * and Blackman windows are exactly 0.  Values are within 1e-14 + 1e-15 beta; in single precision they are rounded once
 * more. MulWindow multiplies by the values of kelsWindow_32f.  To multiply many rows, make the window once and use it
 * as the scales of kelsNormalizeColumn_32f_D2_I, with means of 0.
 * @{ */
KELS_API KelStatus kelsWindow_32f(Kel32f* pDst, int len, int kind, Kel32f param);
KELS_API KelStatus kelsWindow_64f(Kel64f* pDst, int len, int kind, Kel64f param);
KELS_API KelStatus kelsMulWindow_32f_I(Kel32f* pSrcDst, int len, int kind, Kel32f param);
/** @} */

/** @name Pre-emphasis
 * x[i] - val x[i-1], with exact products and rounded once.  Where pMem is null the first sample stands before itself.
 * Otherwise *pMem is the sample before the first one (0 leaves that as it is) and becomes the last source sample, so
 * that chunks of a signal join.
 * @{ */
KELS_API KelStatus kelsPreEmphasis_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f val, Kel32f* pMem);
KELS_API KelStatus kelsPreEmphasis_32f_I(Kel32f* pSrcDst, int len, Kel32f val, Kel32f* pMem);
KELS_API KelStatus kelsPreEmphasis_16s32f(const Kel16s* pSrc, Kel32f* pDst, int len, Kel32f val, Kel16s* pMem);
/** @} */

/** @name Rows of frames
 * The real transform, the filter bank and the cosine transform with lifter, applied to each of height rows: bit for bit
 * what the calls for one frame give.  The transform works in place where the steps are equal; N samples become N + 2
 * values (2 for N = 1).
 * @{ */
KELS_API KelStatus kelsFFTFwd_RToCCS_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                            const KelFFTSpec_R_32f* pFFTSpec, Kel8u* pBuffer);
KELS_API KelStatus kelsEvalFBank_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                        KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsDCTLifter_32f_D2(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int height,
                                        const KelDCTLifterState_32f* pState);
/** @} */

/** @name Services
 * A short English text for any status, never null: "unknown status" for a number that is none.  The name of the build
 * that the loader picked: "i386", "x86-64", "x86-64-v3" or "x86-64-v4".
 * @{ */
KELS_API const char* kelsrGetStatusString(KelStatus status);
KELS_API const char* kelsrGetTargetName(void);
/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
