// The filter banks with float and with Q14 weights, as the tests build and read them.
#pragma once

#include <type_traits>
#include <vector>

#include "kels/core.h"
#include "kels/fbank.h"
#include "support/forms.h"
#include "support/support.h"

namespace test {

constexpr auto initMel = forms(kelsMelFBankInitAlloc_32f, kelsMelFBankInitAlloc_16s);
constexpr auto initMelLin = forms(kelsMelLinFBankInitAlloc_32f, kelsMelLinFBankInitAlloc_16s);
constexpr auto initEmpty = forms(kelsEmptyFBankInitAlloc_32f, kelsEmptyFBankInitAlloc_16s);
constexpr auto initAuroraLow = forms(kelsMelFBankInitAllocLow_Aurora_32f, kelsMelFBankInitAllocLow_Aurora_16s);
constexpr auto initAuroraHigh = forms(kelsMelFBankInitAllocHigh_Aurora_32f, kelsMelFBankInitAllocHigh_Aurora_16s);
constexpr auto getCenters = forms(kelsFBankGetCenters_32f, kelsFBankGetCenters_16s);
constexpr auto setCenters = forms(kelsFBankSetCenters_32f, kelsFBankSetCenters_16s);
constexpr auto getCoeffs = forms(kelsFBankGetCoeffs_32f, kelsFBankGetCoeffs_16s);
constexpr auto setCoeffs = forms(kelsFBankSetCoeffs_32f, kelsFBankSetCoeffs_16s);
constexpr auto freeBank = forms(kelsFBankFree_32f, kelsFBankFree_16s);

// A bank of either form; the block that Free leaves is released, too.
template <class B>
struct Owned {
    using Bank = B;
    static constexpr bool kFixed = std::is_same_v<B, KelFilterBank_16s>;
    int nFilter;
    B* bank = nullptr;
    int order = -1;

    explicit Owned(int filters) : nFilter(filters) {}
    ~Owned() {
        EXPECT_TRUE(bank == nullptr || freeBank(bank) == kelStatusOk);
        kelsFree(bank);
    }
    std::vector<int> centers() const {
        Guarded<int> c(nFilter + 2);
        EXPECT_EQ(getCenters(bank, c), kelStatusOk);
        return c.vector();
    }
    // Of filter m from 0: the weights of bins centres[m] .. centres[m + 2], nothing behind them.
    std::vector<Kel32f> weights(int m) const {
        const auto c = centers();
        Guarded<Kel32f> w(c[std::min(m + 2, nFilter + 1)] - c[m] + 1);
        EXPECT_EQ(getCoeffs(bank, m + 1, w), kelStatusOk);
        return w.vector();
    }
    static KelStatus evaluate(B* bank) {
        std::conditional_t<kFixed, Kel16s, Kel32f> src[600] = {}, dst[40];
        if constexpr (kFixed) return kelsEvalFBank_16s_Sfs(src, dst, bank, 0);
        if constexpr (!kFixed) return kelsEvalFBank_32f(src, dst, bank);
    }
};
// The arguments of a constructor, and where they put the corners.
struct Shape {
    int fftLen;
    float sampFreq, low, high;
    int nFilter;
    float melMul = 1127, melDiv = 700;
    float highLin = 0;
    int nLin = 0;  // 0: all mel

    template <class F>
    void build(F& held, int flag) const {
        if (nLin == 0) {
            ASSERT_EQ(initMel(&held.bank, &held.order, fftLen, sampFreq, low, high, nFilter, melMul, melDiv, flag),
                      kelStatusOk);
        } else {
            ASSERT_EQ(initMelLin(&held.bank, &held.order, fftLen, sampFreq, low, high, nFilter, highLin, nLin, melMul,
                                 melDiv, flag),
                      kelStatusOk);
        }
    }
    Real mel(Real f) const { return melMul * std::log(1 + f / melDiv); }
    bool linear(int k) const { return nLin > 0 && (nLin == nFilter || k <= nLin); }
    // Of corner k.
    Real hertz(int k) const {
        if (linear(k)) return low + k * (static_cast<Real>(highLin) - low) / (nLin == nFilter ? nFilter + 1 : nLin);
        const Real from = mel(nLin > 0 ? highLin : low);
        const Real m = from + (k - nLin) * (mel(high) - from) / (nFilter - nLin + 1);
        return melDiv * (std::exp(m / melMul) - 1);
    }
};

inline const Shape kShapes[] = {
    {.fftLen = 512, .sampFreq = 16000, .low = 64, .high = 8000, .nFilter = 26},
    {.fftLen = 400, .sampFreq = 11025, .low = 100.5f, .high = 4800, .nFilter = 23},
    {.fftLen = 128, .sampFreq = 8000, .low = 10, .high = 4000, .nFilter = 60, .melMul = 2595},
    {.fftLen = 1, .sampFreq = 8000, .low = 1, .high = 4000, .nFilter = 2},
    {.fftLen = 256, .sampFreq = 8000, .low = 1000, .high = 1000, .nFilter = 3},
    {.fftLen = 512, .sampFreq = 16000, .low = 60, .high = 7000, .nFilter = 26, .highLin = 1000, .nLin = 10},
    {.fftLen = 256, .sampFreq = 8000, .low = 50, .high = 4000, .nFilter = 20, .highLin = 3900, .nLin = 20},
};

using BankForms = ::testing::Types<Owned<KelFilterBank_32f>, Owned<KelFilterBank_16s>>;

}  // namespace test
