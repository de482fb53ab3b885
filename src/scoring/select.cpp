// Shortlists of Gaussians and the sign tables that unite them.
#include "kels/select.h"

#include "core/check.h"
#include "scoring/bit_table.h"

namespace {
using namespace kels;
using namespace kels::scoring;

// A row of `step` bytes that cannot hold `offset` + `bits` bits; their sum may exceed an int.
bool rowTooShort(int step, int offset, int bits) {
    return step < (int64_t{offset} + bits + 7) >> 3;
}

}  // namespace

KelStatus kelsFillShortlist_Row_1u(const Kel32s* pIndices, int bound, int n, Kel8u** ppRows, int height, int step,
                                   int offset) {
    if (anyNull(pIndices, ppRows)) return kelStatusNullPtr;
    if (height < 1 || bound < 1 || step < 1 || n < 1 || offset < 0) return kelStatusSize;
    if (rowTooShort(step, offset, bound)) return kelStatusStep;
    if (anyOutside(pIndices, SameCount{n}, toSize(height), bound)) return kelStatusBadArg;
    toggleInRows(pIndices, SameCount{n}, toSize(height), toSize(offset), ppRows);
    return kelStatusOk;
}

KelStatus kelsFillShortlist_RowVar_1u(const Kel32s* pIndices, int bound, const Kel32s* pCounts, Kel8u** ppRows,
                                      int height, int step, int offset) {
    if (anyNull(pIndices, pCounts, ppRows)) return kelStatusNullPtr;
    if (height < 1 || bound < 1 || step < 1 || offset < 0) return kelStatusSize;
    if (anyBelowOne(pCounts, height)) return kelStatusSize;
    if (rowTooShort(step, offset, bound)) return kelStatusStep;
    if (anyOutside(pIndices, pCounts, toSize(height), bound)) return kelStatusBadArg;
    toggleInRows(pIndices, pCounts, toSize(height), toSize(offset), ppRows);
    return kelStatusOk;
}

KelStatus kelsFillShortlist_Column_1u(const Kel32s* pIndices, int n, Kel8u** ppRows, int bound, int step, int offset,
                                      int width) {
    if (anyNull(pIndices, ppRows)) return kelStatusNullPtr;
    if (bound < 1 || width < 1 || step < 1 || n < 1 || offset < 0) return kelStatusSize;
    if (rowTooShort(step, offset, width)) return kelStatusStep;
    if (anyOutside(pIndices, SameCount{n}, toSize(width), bound)) return kelStatusBadArg;
    toggleInColumns(pIndices, SameCount{n}, toSize(width), toSize(offset), ppRows);
    return kelStatusOk;
}

KelStatus kelsFillShortlist_ColumnVar_1u(const Kel32s* pIndices, const Kel32s* pCounts, Kel8u** ppRows, int bound,
                                         int step, int offset, int width) {
    if (anyNull(pIndices, pCounts, ppRows)) return kelStatusNullPtr;
    if (bound < 1 || width < 1 || step < 1 || offset < 0) return kelStatusSize;
    if (anyBelowOne(pCounts, width)) return kelStatusSize;
    if (rowTooShort(step, offset, width)) return kelStatusStep;
    if (anyOutside(pIndices, pCounts, toSize(width), bound)) return kelStatusBadArg;
    toggleInColumns(pIndices, pCounts, toSize(width), toSize(offset), ppRows);
    return kelStatusOk;
}

KelStatus kelsBuildSignTable_8u1u(const Kel32s* pClusterIdx, int n, const Kel8u** ppShortlist, int bound, int step,
                                  int offset, Kel8u* pDst, int height, int width) {
    if (anyNull(pClusterIdx, ppShortlist, pDst)) return kelStatusNullPtr;
    if (n < 1 || bound < 1 || step < 1 || width < 1 || height < 1 || offset < 0) return kelStatusSize;
    if (rowTooShort(step, offset, width)) return kelStatusStep;
    if (anyOutside(pClusterIdx, SameCount{n}, toSize(height), bound)) return kelStatusBadArg;
    uniteRows(pClusterIdx, SameCount{n}, toSize(height), ppShortlist, toSize(offset), toSize(width), pDst);
    return kelStatusOk;
}

KelStatus kelsBuildSignTable_Var_8u1u(const Kel32s* pClusterIdx, const Kel32s* pCounts, const Kel8u** ppShortlist,
                                      int bound, int step, int offset, Kel8u* pDst, int height, int width) {
    if (anyNull(pClusterIdx, pCounts, ppShortlist, pDst)) return kelStatusNullPtr;
    if (bound < 1 || step < 1 || width < 1 || height < 1 || offset < 0) return kelStatusSize;
    if (anyBelowOne(pCounts, height)) return kelStatusSize;
    if (rowTooShort(step, offset, width)) return kelStatusStep;
    if (anyOutside(pClusterIdx, pCounts, toSize(height), bound)) return kelStatusBadArg;
    uniteRows(pClusterIdx, pCounts, toSize(height), ppShortlist, toSize(offset), toSize(width), pDst);
    return kelStatusOk;
}
