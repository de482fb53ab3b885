// QR decomposition and the triangular system that it leaves.
#include "core/rows.h"
#include "kels/matrix.h"
#include "training/matrix/check.h"
#include "training/matrix/reflections.h"
#include "training/matrix/sums.h"

namespace {
using namespace kels;
using namespace kels::matrix;

// ---- QR -------------------------------------------------------------------------------------------------------------

// What a decomposition works on: the columns of A, two reflections and, for each column, the factor of its reflection,
// the diagonal element of R and the power of two that the column was divided by.
struct Workspace {
    Workspace(int64_t width, int64_t height)
        : stride(columnStride(height)), block(addSaturate(width * stride, 2 * stride + 3 * width)) {
        if (block.failed()) return;
        columns = {block.data(), static_cast<std::size_t>(stride)};
        reflections = columns[static_cast<std::size_t>(width)];
        factors = reflections + 2 * stride;
        diagonal = factors + width;
        exponents = diagonal + width;
    }

    int64_t stride;
    Scratch<Kel64f, 4096> block;
    Columns columns{};
    Kel64f *reflections = nullptr, *factors = nullptr, *diagonal = nullptr, *exponents = nullptr;
};

// Takes in A.  Each column is divided by a power of two, so that columns of any magnitudes come out alike.
template <class Rows>
void takeColumns(const Rows& a, std::size_t width, std::size_t height, Workspace& work) {
    for (std::size_t i = 0; i < height; ++i) {
        const Kel64f* const row = a[static_cast<std::ptrdiff_t>(i)];
        for (std::size_t j = 0; j < width; ++j) work.columns[j][i] = row[j];
    }
    for (std::size_t j = 0; j < width; ++j) {
        Kel64f* const column = work.columns[j];
        std::fill(column + height, column + work.stride, 0.0);
        const int exponent = exponentOf(greatestMagnitude(column, height));
        for (std::size_t i = 0; i < height; ++i) column[i] = column[i] * PowerOfTwo(-exponent);
        work.exponents[j] = exponent;
    }
}

template <class Rows, class Triangle>
KelStatus decompose(const Rows& a, const Triangle& r, int width, int height) {
    const std::size_t n = toSize(width), m = toSize(height);
    Workspace work(width, height);
    if (work.block.failed()) return kelStatusNoMemory;
    const Columns& columns = work.columns;
    takeColumns(a, n, m, work);
    const auto mirrorOf = [&](std::size_t k, Kel64f* place) {
        const Reflection made = reflectionOf(columns[k], k, m, place, columns.stride);
        work.factors[k] = made.factor;
        work.diagonal[k] = made.value;
        return Mirror{place, made.factor};
    };
    for (std::size_t k = 0; k < n; k += 2) {
        const Mirror one = mirrorOf(k, work.reflections);
        if (k + 1 == n) break;
        reflect(one, k, m, columns, k + 1, k + 2);
        const Mirror other = mirrorOf(k + 1, work.reflections + columns.stride);
        reflect(one, other, k, m, columns, k + 2, n);
    }
    // Reflections leave either sign on the diagonal of R; its negative rows and the columns of Q that meet them change
    // theirs.
    const auto sign = [&](std::size_t k) { return work.diagonal[k] < 0 ? -1.0 : 1.0; };
    for (std::size_t i = 0; i < n; ++i) {
        Kel64f* const row = r[static_cast<std::ptrdiff_t>(i)];
        std::fill_n(row, i, 0.0);
        for (std::size_t j = i; j < n; ++j) {
            const Kel64f value = j == i ? work.diagonal[i] : columns[j][i];
            row[j] = sign(i) * value * PowerOfTwo(static_cast<int>(work.exponents[j]));
        }
    }
    formOrthonormal(columns, n, m, work.factors, work.reflections);
    for (std::size_t i = 0; i < m; ++i) {
        Kel64f* const row = a[static_cast<std::ptrdiff_t>(i)];
        for (std::size_t j = 0; j < n; ++j) row[j] = sign(j) * columns[j][i];
    }
    return kelStatusOk;
}

// ---- triangular system ----------------------------------------------------------------------------------------------

// x with R x = b, from the last row up; x may be b.
template <class Rows>
KelStatus solve(const Rows& r, const Kel64f* b, Kel64f* x, int len) {
    FirstWarning warning;
    for (std::ptrdiff_t i = len; i-- > 0;) {
        Kel64f sum;
        addAlong<1>(r, i, Factors<Kel64f>{x}, static_cast<std::size_t>(i) + 1, toSize(len), &sum);
        const Kel64f numerator = b[i] - sum, divisor = r[i][i];
        if (divisor == 0) warning.note(kelStatusDivByZero);
        x[i] = divisor == 0 ? numerator * HUGE_VAL : numerator / divisor;
    }
    return warning.status();
}

}  // namespace

KelStatus kelsQRTransColumn_64f_D2(Kel64f* pSrcDst, int srcDstStep, Kel64f* pDstR, int rStep, int width, int height) {
    if (anyNull(pSrcDst, pDstR)) return kelStatusNullPtr;
    if (width < 1 || height < width) return kelStatusSize;
    if (srcDstStep < width || rStep < width) return kelStatusStep;
    return decompose(StepRows(pSrcDst, srcDstStep), StepRows(pDstR, rStep), width, height);
}
KelStatus kelsQRTransColumn_64f_D2L(Kel64f** ppSrcDst, Kel64f** ppDstR, int width, int height) {
    if (anyNull(ppSrcDst, ppDstR)) return kelStatusNullPtr;
    if (width < 1 || height < width) return kelStatusSize;
    return decompose(PointerRows(ppSrcDst), PointerRows(ppDstR), width, height);
}

KelStatus kelsSolveUpper_64f_D2(const Kel64f* pSrc, int srcStep, const Kel64f* pSrcVec, Kel64f* pDst, int len) {
    if (const KelStatus fault = shapeFault({len}, {{srcStep, len}}, pSrc, pSrcVec, pDst)) return fault;
    return solve(StepRows(pSrc, srcStep), pSrcVec, pDst, len);
}
KelStatus kelsSolveUpper_64f_D2L(const Kel64f** ppSrc, const Kel64f* pSrcVec, Kel64f* pDst, int len) {
    if (const KelStatus fault = sizeFault({len}, ppSrc, pSrcVec, pDst)) return fault;
    return solve(PointerRows(ppSrc), pSrcVec, pDst, len);
}
