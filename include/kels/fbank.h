/* Mel filter banks. */
#ifndef KELS_FBANK_H
#define KELS_FBANK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KelFilterBank_32f KelFilterBank_32f;
typedef struct KelFilterBank_16s KelFilterBank_16s;
typedef struct KelFilterBank_32s KelFilterBank_32s;

/* construction flags */
enum { kelFBankWeightMel = 1, kelFBankWeightBin = 2, kelFBankOwnFFT = 4 };

/* construction */
KELS_API KelStatus kelsMelFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                             Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                             int flag);
KELS_API KelStatus kelsMelFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, Kel32f sampFreq,
                                             Kel32f lowFreq, Kel32f highFreq, int nFilter, Kel32f melMul, Kel32f melDiv,
                                             int flag);
KELS_API KelStatus kelsMelLinFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen,
                                                Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                                                Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv,
                                                int flag);
KELS_API KelStatus kelsMelLinFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen,
                                                Kel32f sampFreq, Kel32f lowFreq, Kel32f highFreq, int nFilter,
                                                Kel32f highLinFreq, int nLinFilter, Kel32f melMul, Kel32f melDiv,
                                                int flag);
KELS_API KelStatus kelsEmptyFBankInitAlloc_32f(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter,
                                               int flag);
KELS_API KelStatus kelsEmptyFBankInitAlloc_16s(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter,
                                               int flag);
KELS_API KelStatus kelsMelFBankInitAllocLow_Aurora_16s(KelFilterBank_16s** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocLow_Aurora_32f(KelFilterBank_32f** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocHigh_Aurora_16s(KelFilterBank_16s** ppFBank);
KELS_API KelStatus kelsMelFBankInitAllocHigh_Aurora_32f(KelFilterBank_32f** ppFBank);
KELS_API KelStatus kelsMelFBankGetSize_32s(int fftLen, int nFilter, int flag, int* pSize);
KELS_API KelStatus kelsMelFBankInit_32s(Kel8u* pBuffer, int* pFFTOrder, int fftLen, int sampFreq, int lowFreq,
                                        int highFreq, int nFilter, int melMul, int melDiv, int flag);

/* evaluation */
KELS_API KelStatus kelsEvalFBank_32f(const Kel32f* pSrc, Kel32f* pDst, KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsEvalFBank_16s_Sfs(const Kel16s* pSrc, Kel16s* pDst, KelFilterBank_16s* pFBank, int scaleFactor);
KELS_API KelStatus kelsEvalFBank_16s32s_Sfs(const Kel16s* pSrc, Kel32s* pDst, KelFilterBank_16s* pFBank,
                                            int scaleFactor);
KELS_API KelStatus kelsEvalFBank_32s_Sfs(const Kel32s* pSrc, Kel32s* pDst, KelFilterBank_32s* pFBank, int scaleFactor);

/* centres, coefficients, release */
KELS_API KelStatus kelsFBankGetCenters_32f(const KelFilterBank_32f* pFBank, int* pCenters);
KELS_API KelStatus kelsFBankGetCenters_16s(const KelFilterBank_16s* pFBank, int* pCenters);
KELS_API KelStatus kelsFBankSetCenters_32f(KelFilterBank_32f* pFBank, const int* pCenters);
KELS_API KelStatus kelsFBankSetCenters_16s(KelFilterBank_16s* pFBank, const int* pCenters);
KELS_API KelStatus kelsFBankGetCoeffs_32f(const KelFilterBank_32f* pFBank, int fIdx, Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankGetCoeffs_16s(const KelFilterBank_16s* pFBank, int fIdx, Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankSetCoeffs_32f(KelFilterBank_32f* pFBank, int fIdx, const Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankSetCoeffs_16s(KelFilterBank_16s* pFBank, int fIdx, const Kel32f* pCoeffs);
KELS_API KelStatus kelsFBankFree_32f(KelFilterBank_32f* pFBank);
KELS_API KelStatus kelsFBankFree_16s(KelFilterBank_16s* pFBank);

/* frequency conversions */
KELS_API KelStatus kelsLinearToMel_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv);
KELS_API KelStatus kelsMelToLinear_32f(const Kel32f* pSrc, Kel32f* pDst, int len, Kel32f melMul, Kel32f melDiv);

#ifdef __cplusplus
}
#endif

#endif
