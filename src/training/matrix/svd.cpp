// Singular value decomposition.
#include <algorithm>
#include <limits>

#include "core/rows.h"
#include "kels/matrix.h"
#include "training/matrix/bidiagonal.h"
#include "training/matrix/check.h"

namespace {
using namespace kels;
using namespace kels::matrix;

// The greatest magnitude in A; not a number where A holds an infinity or what is not a number.
template <class Rows>
Kel64f greatestOf(const Rows& a, std::size_t width, std::size_t height) {
    Kel64f greatest = 0, nothing = 0;
    for (std::size_t i = 0; i < height; ++i) {
        const Kel64f* const row = a[static_cast<std::ptrdiff_t>(i)];
        for (std::size_t j = 0; j < width; ++j) {
            greatest = std::max(greatest, std::fabs(row[j]));
            nothing += row[j] * 0;
        }
    }
    return greatest + nothing;
}

// Memory for the decomposition of a matrix of `rows` rows and no more columns.
struct Workspace {
    Workspace(int64_t rows, int64_t columns)
        : uStride(columnStride(rows)),
          vStride(columnStride(columns)),
          block(addSaturate(columns * uStride, addSaturate(columns * vStride, 3 * uStride + 9 * columns))) {
        if (block.failed()) return;
        Kel64f* place = block.data();
        const auto take = [&](int64_t size) {
            Kel64f* const taken = place;
            place += size;
            return taken;
        };
        b.rows = static_cast<std::size_t>(rows);
        b.count = static_cast<std::size_t>(columns);
        b.u = {take(columns * uStride), static_cast<std::size_t>(uStride)};
        b.v = {take(columns * vStride), static_cast<std::size_t>(vStride)};
        b.reflections = take(2 * uStride);
        b.product = take(uStride);
        for (Kel64f** const array : {&b.diagonal, &b.above, &b.leftFactors, &b.rightFactors, &b.leftCosines,
                                     &b.leftSines, &b.rightCosines, &b.rightSines}) {
            *array = take(columns);
        }
        order = reinterpret_cast<int*>(take(columns));
    }

    int64_t uStride, vStride;
    Scratch<Kel64f, 4096> block;
    Bidiagonal b{};
    int* order = nullptr;  // the columns by descending singular values
};

// The columns of A, or its rows where it is turned over, times 2^-exponent.
template <class Rows>
void takeScaled(const Rows& a, int exponent, bool turned, const Bidiagonal& b) {
    const PowerOfTwo unit(-exponent);
    for (std::size_t j = 0; j < b.count; ++j) std::fill(b.u[j] + b.rows, b.u[j] + b.u.stride, 0.0);
    for (std::size_t i = 0; i < (turned ? b.count : b.rows); ++i) {
        const Kel64f* const row = a[static_cast<std::ptrdiff_t>(i)];
        for (std::size_t j = 0; j < (turned ? b.rows : b.count); ++j) (turned ? b.u[i][j] : b.u[j][i]) = row[j] * unit;
    }
}

// Writes `width` columns: those of `from` in their order, each times its sign, then zeros.
template <class Rows>
void storeColumns(const Columns& from, const Workspace& work, const Kel64f* signs, const Rows& dst, std::size_t width,
                  std::size_t height) {
    for (std::size_t i = 0; i < height; ++i) {
        Kel64f* const row = dst[static_cast<std::ptrdiff_t>(i)];
        for (std::size_t c = 0; c < work.b.count; ++c) {
            row[c] = signs[c] * from[static_cast<std::size_t>(work.order[c])][i];
        }
        std::fill(row + work.b.count, row + std::max(width, work.b.count), 0.0);
    }
}

// The element of the largest magnitude, the first of equals.
Kel64f leadingElement(const Kel64f* x, std::size_t len) {
    Kel64f leading = x[0];
    for (std::size_t i = 1; i < len; ++i) {
        if (std::fabs(x[i]) > std::fabs(leading)) leading = x[i];
    }
    return leading;
}

// Every rotation leaves lengths that differ from 1 by a rounding error, and there were hundreds of them.
void bringToLength1(Kel64f* x, std::size_t rows) {
    constexpr std::size_t w = lanes<Kel64f>;
    Vec<Kel64f> squares(0.0);
    for (std::size_t i = 0; i < rows; i += w) squares = mulAdd(load(x + i), load(x + i), squares);
    const Kel64f length = std::sqrt(stdx::reduce(squares));
    for (std::size_t i = 0; i < rows; i += w) store(x + i, Vec<Kel64f>(load(x + i) / length));
}

// A = U diag(s) V'.  u may be A: it has uWidth columns, of which those behind the last singular value become 0.
template <class Src, class U, class V>
KelStatus decompose(const Src& a, const U& u, int uWidth, Kel64f* s, const V& v, int width, int height) {
    const std::size_t w = toSize(width), h = toSize(height);
    const Kel64f greatest = greatestOf(a, w, h);
    if (!std::isfinite(greatest)) return kelStatusNoConverge;
    const bool turned = width > height;
    Workspace work(std::max(width, height), std::min(width, height));
    if (work.block.failed()) return kelStatusNoMemory;
    Bidiagonal& b = work.b;
    const int exponent = exponentOf(greatest);
    takeScaled(a, exponent, turned, b);
    reduce(b);
    if (!diagonalise(b)) return kelStatusNoConverge;

    const std::size_t n = b.count;
    for (std::size_t c = 0; c < n; ++c) work.order[c] = static_cast<int>(c);
    std::sort(work.order, work.order + n, [&](int x, int y) {
        const Kel64f first = std::fabs(b.diagonal[x]), second = std::fabs(b.diagonal[y]);
        return first > second || (first == second && x < y);
    });
    const Columns &uColumns = turned ? b.v : b.u, &vColumns = turned ? b.u : b.v;
    Kel64f *const uSigns = b.leftFactors, *const vSigns = b.rightFactors;
    for (std::size_t c = 0; c < n; ++c) {
        const auto from = static_cast<std::size_t>(work.order[c]);
        bringToLength1(uColumns[from], h);
        bringToLength1(vColumns[from], w);
        vSigns[c] = leadingElement(vColumns[from], w) < 0 ? -1 : 1;
        uSigns[c] = b.diagonal[from] < 0 ? -vSigns[c] : vSigns[c];
        s[c] = std::fabs(b.diagonal[from]) * PowerOfTwo(exponent);
    }
    storeColumns(uColumns, work, uSigns, u, toSize(uWidth), h);
    storeColumns(vColumns, work, vSigns, v, n, w);
    return kelStatusOk;
}

}  // namespace

KelStatus kelsSVD_64f_D2(const Kel64f* pSrc, int srcStep, Kel64f* pDstU, int uStep, Kel64f* pDstS, Kel64f* pDstV,
                         int vStep, int width, int height) {
    const int count = width < height ? width : height;
    if (const KelStatus fault =
            shapeFault({width, height}, {{srcStep, width}, {uStep, count}, {vStep, count}}, pSrc, pDstU, pDstS, pDstV))
        return fault;
    return decompose(StepRows(pSrc, srcStep), StepRows(pDstU, uStep), count, pDstS, StepRows(pDstV, vStep), width,
                     height);
}
KelStatus kelsSVD_64f_D2L(const Kel64f** ppSrc, Kel64f** ppDstU, Kel64f* pDstS, Kel64f** ppDstV, int width,
                          int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrc, ppDstU, pDstS, ppDstV)) return fault;
    const int count = width < height ? width : height;
    return decompose(PointerRows(ppSrc), PointerRows(ppDstU), count, pDstS, PointerRows(ppDstV), width, height);
}
KelStatus kelsSVD_64f_D2_I(Kel64f* pSrcDst, int srcDstStep, Kel64f* pDstS, Kel64f* pDstV, int vStep, int width,
                           int height) {
    const int count = width < height ? width : height;
    if (const KelStatus fault =
            shapeFault({width, height}, {{srcDstStep, width}, {vStep, count}}, pSrcDst, pDstS, pDstV))
        return fault;
    const StepRows a(pSrcDst, srcDstStep);
    return decompose(a, a, width, pDstS, StepRows(pDstV, vStep), width, height);
}
KelStatus kelsSVD_64f_D2L_I(Kel64f** ppSrcDst, Kel64f* pDstS, Kel64f** ppDstV, int width, int height) {
    if (const KelStatus fault = sizeFault({width, height}, ppSrcDst, pDstS, ppDstV)) return fault;
    const PointerRows a(ppSrcDst);
    return decompose(a, a, width, pDstS, PointerRows(ppDstV), width, height);
}
