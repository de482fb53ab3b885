// Mel and mel-linear filter banks of any shape and scale, then one evaluation.
#include "bytes.h"
#include "kels/fbank.h"

using fuzz::Bytes;
using fuzz::Guarded;

namespace {

template <class Element, class Bank, class Mel, class MelLin, class Evaluate, class Free>
void buildAndEvaluate(Bytes& in, Mel mel, MelLin melLin, Evaluate evaluate, Free release) {
    constexpr int kMaxLength = 250, kMaxFilters = 40;
    const int fftLen = in.count(kMaxLength), nFilter = in.count(kMaxFilters), flag = in.any<uint8_t>() % 8;
    // Beyond that a constructor would take what memory there is.
    if (fftLen > kMaxLength || nFilter > kMaxFilters) return;
    const Kel32f rate = in.number(), low = in.number(), high = in.number(), melMul = in.number(), melDiv = in.number();

    Bank* bank = nullptr;
    int order = -1;
    const bool linear = in.any<uint8_t>() % 2 != 0;
    const KelStatus status = linear ? melLin(&bank, &order, fftLen, rate, low, high, nFilter, in.number(),
                                             in.count(kMaxFilters), melMul, melDiv, flag)
                                    : mel(&bank, &order, fftLen, rate, low, high, nFilter, melMul, melDiv, flag);
    if (status == kelStatusOk) {
        const size_t length = size_t{1} << order;
        const auto source = in.array<Element>((flag & kelFBankOwnFFT) != 0 ? length : length / 2 + 1);
        Guarded<Element> destination(static_cast<size_t>(nFilter));
        evaluate(source.data(), destination.data(), bank);
    }
    if (bank != nullptr) release(bank);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    if (in.any<uint8_t>() % 2 != 0) {
        buildAndEvaluate<Kel32f, KelFilterBank_32f>(in, kelsMelFBankInitAlloc_32f, kelsMelLinFBankInitAlloc_32f,
                                                    kelsEvalFBank_32f, kelsFBankFree_32f);
    } else {
        const int scaleFactor = in.scalar();
        const auto evaluate = [&](const Kel16s* pSrc, Kel16s* pDst, KelFilterBank_16s* bank) {
            kelsEvalFBank_16s_Sfs(pSrc, pDst, bank, scaleFactor);
        };
        buildAndEvaluate<Kel16s, KelFilterBank_16s>(in, kelsMelFBankInitAlloc_16s, kelsMelLinFBankInitAlloc_16s,
                                                    evaluate, kelsFBankFree_16s);
    }
    return 0;
}
