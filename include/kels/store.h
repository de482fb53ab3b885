/** @defgroup store Codebooks in bytes
 *
 * A codebook is packed into a block of bytes, to be kept in a file or sent, and comes back as it was.
 *
 * @code{.c}
 * // A codebook of 4 of 400 points, into bytes and back.
 * enum { kPoints = 400 };
 * Kel32f points[kPoints][2];
 * for (int i = 0; i < kPoints; ++i) {
 *     points[i][0] = (i & 1 ? 10 : 0) + 0.1f * (i % 7);
 *     points[i][1] = (i & 2 ? 10 : 0) + 0.1f * (i % 5);
 * }
 * KelCdbk_32f* codebook = NULL;
 * KelCdbk_32f* same = NULL;
 * int bytes = 0;
 * if (kelsCdbkInitAlloc_L2_32f(&codebook, points[0], 2, 2, kPoints, 4, kelCdbkSplitWidest) < 0) return 1;
 * kelsCdbkGetPackedSize_32f(codebook, &bytes);
 * Kel8u* block = kelsMalloc_8u(bytes);
 * if (block == NULL || kelsCdbkPack_32f(codebook, block, bytes) < 0) return 1;
 * if (kelsCdbkUnpackAlloc_32f(&same, block, bytes) < 0) return 1;
 * printf("%d codevectors in %d bytes\n", same->cdbkSize, bytes);
 * kelsCdbkFree_32f(same);
 * kelsFree(block);
 * kelsCdbkFree_32f(codebook);
 * @endcode
 *
 * ## What it computes
 * Every kind of codebook of kels/vq.h can be packed, with and without weights and grid, in the library's memory or the
 * caller's.  What UnpackAlloc builds has the same codevectors, weights and tree to the bit, whichever ABI and build
 * packed it; indexBits are those of its size.  In the same build its searches find what those of the packed codebook
 * find, to the bit.  Another build may add up distances in another order, as with any codebook.
 *
 * Equal codebooks give equal blocks on all builds, and what came out of a block gives that block again.
 *
 * ## Shapes and units
 * A block stands at any address.  It begins with eight bytes that tell the type of the elements, then a version; all
 * numbers stand with their low byte first, and a checksum of 64 bits ends it.  It takes 44 bytes, one element for each
 * weight and for each component of a codevector, and in a split codebook for each codevector 18 bytes and 2 for each
 * neighbour of its leaf, less 10.
 *
 * Bytes behind a block do no harm: `len` may be larger.  Several blocks can therefore stand in one file, each of them
 * as long as its codebook's packed size.
 *
 * ## Ownership
 * The block is the caller's.  What UnpackAlloc builds goes back with kelsCdbkFree of its type.
 *
 * ## Checks, in order
 * GetPackedSize and Pack:
 * - kelStatusNullPtr: a null pointer, or a codebook without codevectors.
 * - kelStatusUnknownKind: a codebook of a kind that there is not.
 * - kelStatusSize: a packed size that does not fit an int; in Pack, `len` below the packed size.
 *
 * UnpackAlloc:
 * - kelStatusNullPtr: a null pointer.
 * - kelStatusSize: `len` below 1.
 * - kelStatusBadArg: a block that is cut, of the other type, of another version, with any wrong bit, or none at all.
 * - kelStatusNoMemory: no memory.
 *
 * A block may come from anyone: whatever its bytes are, nothing beyond `len` is read, and a codebook made from them is
 * safe to search.  *ppCdbk changes only when there is a codebook.
 *
 * ## Threads
 * Threads may pack one codebook at once, and unpack one block.
 *
 * ## Source
 * The checksum is the cyclic redundancy check of ECMA-182, reflected.  The functions are in
 * `src/training/codebook/store/`.
 * @{
 */
#ifndef KELS_STORE_H
#define KELS_STORE_H

#include "kels/vq.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Packing
 * GetPackedSize gives the bytes that a codebook takes; Pack writes as many to pDst, which has room for `len`.
 * @{ */
KELS_API KelStatus kelsCdbkGetPackedSize_32f(const KelCdbk_32f* pCdbk, int* pSize);
KELS_API KelStatus kelsCdbkGetPackedSize_16s(const KelCdbk_16s* pCdbk, int* pSize);
KELS_API KelStatus kelsCdbkPack_32f(const KelCdbk_32f* pCdbk, Kel8u* pDst, int len);
KELS_API KelStatus kelsCdbkPack_16s(const KelCdbk_16s* pCdbk, Kel8u* pDst, int len);
/** @} */

/** @name Unpacking
 * These build the codebook of the block at the beginning of `len` bytes.
 * @{ */
KELS_API KelStatus kelsCdbkUnpackAlloc_32f(KelCdbk_32f** ppCdbk, const Kel8u* pSrc, int len);
KELS_API KelStatus kelsCdbkUnpackAlloc_16s(KelCdbk_16s** ppCdbk, const Kel8u* pSrc, int len);
/** @} */

#ifdef __cplusplus
}
#endif
/** @} */

#endif
