// The states of the allocated filter banks, and what their parts share: allocation, checks, the view that is evaluated.
#pragma once

#include "core/check.h"
#include "core/memory.h"
#include "core/rows.h"
#include "core/scaling.h"
#include "kels/fbank.h"
#include "kels/fft.h"

namespace kels::fbank {

// A weight of each number format, from a fraction or from a float.
struct FloatWeights {
    using Weight = Kel32f;
    static Weight ofRatio(int64_t numerator, int64_t denominator) {
        return static_cast<Kel32f>(numerator) / static_cast<Kel32f>(denominator);
    }
    static Weight ofFloat(Kel32f v) { return v; }
    static Kel32f toFloat(Weight w) { return w; }
};

template <int fractionBits>
struct FixedWeights {
    using Weight = Kel32s;
    static constexpr int kFractionBits = fractionBits;
    static constexpr auto kOne = static_cast<Kel32f>(1 << fractionBits);
    static Weight ofRatio(int64_t numerator, int64_t denominator) {
        return static_cast<Kel32s>((numerator << fractionBits) / denominator);
    }
    static Weight ofFloat(Kel32f v) {  // inside a NearestScope
        return roundSaturate<Kel32s>(v * kOne);
    }
    static Kel32f toFloat(Weight w) { return static_cast<Kel32f>(w) * (1 / kOne); }
};

// Filter m is a triangle over the FFT bins centres[m] .. centres[m + 2] with its top at centres[m + 1].  Up to and with
// the top rising[m][j] is the weight of bin centres[m] + j; behind it falling[m][j] is that of bin centres[m + 1] + 1 +
// j.
template <class W, class Spec>
struct FilterBank {
    using Weights = W;
    using Weight = typename W::Weight;

    Kel32s* centres;   // nFilter + 2
    Weight** rising;   // nFilter + 2 rows of fftLen2 / 2, behind kHeadroom more
    Weight** falling;  // nFilter + 2 rows of fftLen2 / 2
    Kel32s flag;
    Kel32s fftLen2;
    Kel32s fftOrder;
    Kel32s nFilter;
    Kel32s nLinFilter;
    Kel32f melMul;
    Kel32f melDiv;
    Kel8u ready;  // 1 once the centres are valid
    Spec* fftSpec;
    Weight* fftBuf;  // fftLen2 + 2, and behind them the work buffer of the transform
};

}  // namespace kels::fbank

struct KelFilterBank_32f : kels::fbank::FilterBank<kels::fbank::FloatWeights, KelFFTSpec_R_32f> {};

struct KelFilterBank_16s : kels::fbank::FilterBank<kels::fbank::FixedWeights<14>, KelFFTSpec_R_16s32s> {
    Kel32s weightShift;  // the fraction bits of the weights
};

#if defined(__i386__)
static_assert(sizeof(KelFilterBank_32f) == 52 && sizeof(KelFilterBank_16s) == 56);
#endif

namespace kels::fbank {

// The elements before element 0 of a rising row.
inline constexpr int kHeadroom = 3;

// What evaluation sees of a bank.
template <class Rows, class Centre = const Kel32s>
struct Triangles {
    Centre* centres;
    Rows rising, falling;
    int nFilter;
};

template <class Bank>
auto triangles(const Bank& bank) {
    using Rows = PointerRows<typename Bank::Weight>;
    return Triangles<Rows>{bank.centres, Rows(bank.rising), Rows(bank.falling), bank.nFilter};
}

template <class Bank>
Kel8u* fftWork(const Bank& bank) {
    return reinterpret_cast<Kel8u*>(bank.fftBuf + bank.fftLen2 + 2);
}

// A state that was freed, or whose constructor ran out of memory.
template <class Bank>
bool incomplete(const Bank& bank) {
    return anyNull(bank.centres, bank.rising, bank.falling);
}

// A bank without centres and with zero weights in *ppFBank, and its FFT order in *pFFTOrder.  Where memory runs out the
// status is kelStatusNoMemory, and *ppFBank holds null or as much as there was memory for, with null in the other
// pointers.
KelStatus allocateBank(KelFilterBank_32f** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag);
KelStatus allocateBank(KelFilterBank_16s** ppFBank, int* pFFTOrder, int fftLen, int nFilter, int flag);

// Everything that the bank owns, but not the bank itself.
void releaseParts(KelFilterBank_32f& bank);
void releaseParts(KelFilterBank_16s& bank);

}  // namespace kels::fbank
