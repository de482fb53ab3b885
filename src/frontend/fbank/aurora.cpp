// The fixed banks of the ETSI distributed-speech-recognition front end: triangles between rounded mel centres that are
// zero at their corners and weigh each filter's bins to a sum of 1.
#include <algorithm>
#include <cmath>

#include "core/check.h"
#include "frontend/fbank/build.h"
#include "frontend/fbank/state.h"

using namespace kels;
using namespace kels::fbank;

namespace {

constexpr int kBins = 65;  // also the length asked for: the FFT length is the next power of two
constexpr Kel64f kBinWidth = 62.5;
constexpr Kel64f kMelMul = 2595;
constexpr Kel64f kMelDiv = 700;

Kel64f melOf(Kel64f f) {
    return kMelMul * std::log(1 + f / kMelDiv);
}

// Bin of point k of `parts` + 1 that are equally spaced in mel from low to high; bin 0 lies at `origin`.
int bin(int k, int parts, Kel64f low, Kel64f high, Kel64f origin) {
    const Kel64f mel = melOf(low) + k * (melOf(high) - melOf(low)) / parts;
    const Kel64f f = kMelDiv * (std::exp(mel / kMelMul) - 1);
    return static_cast<int>((f - origin) / kBinWidth + 0.5);
}

constexpr int kLowFilters = 25, kHighFilters = 3;

// Low band: the filters stand on the points themselves, so the outermost two are one-sided.
int lowCorner(int k) {
    constexpr int parts = kLowFilters - 1;
    return bin(std::clamp(k - 1, 0, parts), parts, 1, 4000, 0);
}

// High band: the outermost points are only the corners of the first and the last filter.
int highCorner(int k) {
    return bin(k, kHighFilters + 1, 4000, 8000, 4000);
}

template <class W>
void weighToOne(typename W::Weight* rising, typename W::Weight* falling, int lo, int top, int hi) {
    const auto up = [&](int i) { return i == top ? 1 : static_cast<Kel32f>(i - lo) / static_cast<Kel32f>(top - lo); };
    const auto down = [&](int i) { return static_cast<Kel32f>(hi - i) / static_cast<Kel32f>(hi - top); };
    Kel32f sum = 0;
    for (int i = lo; i <= top; ++i) sum += up(i);
    for (int i = top + 1; i <= hi; ++i) sum += down(i);
    for (int i = lo; i <= top; ++i) rising[i - lo] = W::ofFloat(up(i) / sum);
    for (int i = top + 1; i <= hi; ++i) falling[i - top - 1] = W::ofFloat(down(i) / sum);
}

template <class Bank>
KelStatus buildAurora(Bank** ppFBank, int nFilter, int (*corner)(int)) {
    int fftOrder = 0;
    const KelStatus status = allocateBank(ppFBank, &fftOrder, kBins, nFilter, kelFBankWeightBin);
    if (status != kelStatusOk) return status;
    Bank& bank = **ppFBank;
    bank.melMul = static_cast<Kel32f>(kMelMul);
    bank.melDiv = static_cast<Kel32f>(kMelDiv);
    const NearestScope nearest;
    for (int k = 0; k < nFilter + 2; ++k) bank.centres[k] = nextCentre(bank.centres, k, corner(k), bank.fftLen2 / 2);
    for (int m = 0; m < nFilter; ++m) {
        const Kel32s* const c = bank.centres + m;
        weighToOne<typename Bank::Weights>(bank.rising[m], bank.falling[m], c[0], c[1], c[2]);
    }
    bank.ready = 1;
    return kelStatusOk;
}

}  // namespace

KelStatus kelsMelFBankInitAllocLow_Aurora_16s(KelFilterBank_16s** ppFBank) {
    if (anyNull(ppFBank)) return kelStatusNullPtr;
    return buildAurora(ppFBank, kLowFilters, lowCorner);
}
KelStatus kelsMelFBankInitAllocLow_Aurora_32f(KelFilterBank_32f** ppFBank) {
    if (anyNull(ppFBank)) return kelStatusNullPtr;
    return buildAurora(ppFBank, kLowFilters, lowCorner);
}

KelStatus kelsMelFBankInitAllocHigh_Aurora_16s(KelFilterBank_16s** ppFBank) {
    if (anyNull(ppFBank)) return kelStatusNullPtr;
    return buildAurora(ppFBank, kHighFilters, highCorner);
}
KelStatus kelsMelFBankInitAllocHigh_Aurora_32f(KelFilterBank_32f** ppFBank) {
    if (anyNull(ppFBank)) return kelStatusNullPtr;
    return buildAurora(ppFBank, kHighFilters, highCorner);
}
