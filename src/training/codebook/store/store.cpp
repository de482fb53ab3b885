// Codebooks in bytes, to be kept and sent.
#include <limits>

#include "kels/store.h"
#include "training/codebook/check.h"
#include "training/codebook/store/pack.h"
#include "training/codebook/store/unpack.h"

namespace {

using namespace kels;
using namespace kels::codebook;

template <class Record, class P>
KelStatus packingFault(const Record* codebook, const P* pointer) {
    if (isNull(codebook) || anyNull(pointer)) return kelStatusNullPtr;
    return isKnown(codebook->kind) ? kelStatusOk : kelStatusUnknownKind;
}

template <class T>
KelStatus sizeOf(const Codebook<T>& codebook, int* pSize) {
    const int64_t bytes = packedBytes<T>(codebook);
    if (bytes > std::numeric_limits<int>::max()) return kelStatusSize;
    *pSize = static_cast<int>(bytes);
    return kelStatusOk;
}

template <class T>
KelStatus unpackTo(Codebook<T>** ppCdbk, const Kel8u* pSrc, int len) {
    PackedCodebook<T> packed(pSrc, len);
    if (!packed.isSound()) return kelStatusBadArg;
    Codebook<T>* const codebook = unpack(packed);
    if (codebook == nullptr) return kelStatusNoMemory;
    *ppCdbk = codebook;
    return kelStatusOk;
}

}  // namespace

KelStatus kelsCdbkGetPackedSize_32f(const KelCdbk_32f* pCdbk, int* pSize) {
    if (const KelStatus fault = packingFault(pCdbk, pSize)) return fault;
    return sizeOf<Kel32f>(*pCdbk, pSize);
}

KelStatus kelsCdbkGetPackedSize_16s(const KelCdbk_16s* pCdbk, int* pSize) {
    if (const KelStatus fault = packingFault(pCdbk, pSize)) return fault;
    return sizeOf<Kel16s>(*pCdbk, pSize);
}

KelStatus kelsCdbkPack_32f(const KelCdbk_32f* pCdbk, Kel8u* pDst, int len) {
    if (const KelStatus fault = packingFault(pCdbk, pDst)) return fault;
    if (len < packedBytes<Kel32f>(*pCdbk)) return kelStatusSize;
    pack<Kel32f>(*pCdbk, pDst);
    return kelStatusOk;
}

KelStatus kelsCdbkPack_16s(const KelCdbk_16s* pCdbk, Kel8u* pDst, int len) {
    if (const KelStatus fault = packingFault(pCdbk, pDst)) return fault;
    if (len < packedBytes<Kel16s>(*pCdbk)) return kelStatusSize;
    pack<Kel16s>(*pCdbk, pDst);
    return kelStatusOk;
}

KelStatus kelsCdbkUnpackAlloc_32f(KelCdbk_32f** ppCdbk, const Kel8u* pSrc, int len) {
    if (anyNull(ppCdbk, pSrc)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return unpackTo<Kel32f>(ppCdbk, pSrc, len);
}

KelStatus kelsCdbkUnpackAlloc_16s(KelCdbk_16s** ppCdbk, const Kel8u* pSrc, int len) {
    if (anyNull(ppCdbk, pSrc)) return kelStatusNullPtr;
    if (len < 1) return kelStatusSize;
    return unpackTo<Kel16s>(ppCdbk, pSrc, len);
}
