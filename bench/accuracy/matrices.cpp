// Products, sums, columns and decompositions of matrices.
#include "forms.h"

namespace accuracy {
namespace {

Exact product(const Row& x, const Row& y) {
    return sum(x.size(), [&](std::size_t i) { return x[i] * y[i]; });
}

void matVec(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = product(p.all("a")[i], p.row("x"));
}
void vecMat(Problem& p) {
    Row& d = p.exact("d")[0];
    const Row& x = p.row("x");
    for (std::size_t j = 0; j < d.size(); ++j) {
        d[j] = sum(x.size(), [&](std::size_t i) { return x[i] * p.all("a")[i][j]; });
    }
}
void matVecRows(Problem& p) {
    Rows& d = p.exact("d");
    for (std::size_t r = 0; r < d.size(); ++r) {
        for (std::size_t j = 0; j < d[r].size(); ++j) {
            d[r][j] = product(p.all("a")[j], p.all("s")[r]) + (p.has("o") ? p.row("o")[j] : 0);
        }
    }
}
void sumColumn(Problem& p) {
    const Rows& a = p.all("a");
    Row& d = p.exact("d")[0];
    for (std::size_t j = 0; j < d.size(); ++j) d[j] = sum(a.size(), [&](std::size_t i) { return a[i][j]; });
}
void sumRow(Problem& p) {
    Row& d = p.exact("d")[0];
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = sum(p.all("a")[i]);
}
void addNRows(Problem& p) {
    const Row& x = p.row("x");
    const auto from = static_cast<std::size_t>(p.whole("from"));
    Row& d = p.exact("d")[0];
    const auto rowOf = [&](std::size_t k) -> const Row& { return p.all("a")[static_cast<std::size_t>(x[k].value)]; };
    for (std::size_t j = 0; j < d.size(); ++j) {
        d[j] = sum(x.size(), [&](std::size_t k) { return rowOf(k)[from + j]; });
    }
}
void chosenColumns(Problem& p) {
    Rows& d = p.exact("d");
    for (std::size_t r = 0; r < d.size(); ++r) {
        for (std::size_t j = 0; j < d[r].size(); ++j) {
            d[r][j] = p.all("s")[r][static_cast<std::size_t>(p.row("x")[j].value)];
        }
    }
}
void normalise(Problem& p) {
    Rows& d = p.exact("d");
    const Rows& s = p.all(p.has("s") ? "s" : "d");
    for (std::size_t r = 0; r < d.size(); ++r) {
        for (std::size_t j = 0; j < d[r].size(); ++j) d[r][j] = (s[r][j] - p.row("m")[j]) * p.row("k")[j];
    }
}

// What the parts of a decomposition give when they are multiplied, as the result that A should be; relative to the
// largest element of A.  Beside it the columns of Q, and of U and V, should be orthonormal.
using Part = std::function<Exact(std::size_t, std::size_t)>;
void compare(Problem& p, std::size_t height, std::size_t width, const Part& got, const Part& exact) {
    Output output{0, 53, Rows(height, Row(width)), Rows(height, Row(width))};
    for (std::size_t i = 0; i < height; ++i) {
        for (std::size_t j = 0; j < width; ++j) {
            output.got[i][j] = got(i, j);
            output.exact[i][j] = exact(i, j);
        }
    }
    p.outputs().push_back(output);
}
void orthonormal(Problem& p, const Rows& q, std::size_t columns) {
    const auto inner = [&](std::size_t i, std::size_t j) {
        return sum(q.size(), [&](std::size_t r) { return q[r][i] * q[r][j]; });
    };
    compare(p, columns, columns, inner, [](std::size_t i, std::size_t j) { return Exact(i == j); });
}

void singularValues(Problem& p) {
    const bool inPlace = !p.has("u");
    const Rows &a = p.all("a"), &u = p.result(inPlace ? "a" : "u"), &v = p.result("v");
    const Row& s = p.result("s")[0];
    const auto made = [&](std::size_t i, std::size_t j) {
        return sum(s.size(), [&](std::size_t k) { return u[i][k] * s[k] * v[j][k]; });
    };
    compare(p, a.size(), a[0].size(), made, [&](std::size_t i, std::size_t j) { return a[i][j]; });
    orthonormal(p, u, s.size());
    orthonormal(p, v, s.size());
}
void qr(Problem& p) {
    const Rows &a = p.all("a"), &q = p.result("a"), &r = p.result("r");
    const auto made = [&](std::size_t i, std::size_t j) {
        return sum(r.size(), [&](std::size_t k) { return q[i][k] * r[k][j]; });
    };
    compare(p, a.size(), a[0].size(), made, [&](std::size_t i, std::size_t j) { return a[i][j]; });
    orthonormal(p, q, r.size());
}
void solveUpper(Problem& p) {
    const Rows& r = p.all("r");
    Row& d = p.exact("d")[0];
    for (std::size_t i = d.size(); i-- > 0;) {
        d[i] = p.row("b")[i];
        for (std::size_t j = i + 1; j < d.size(); ++j) d[i] -= r[i][j] * d[j];
        d[i] = d[i] / r[i][i];
    }
}

}  // namespace

References matrixReferences() {
    return {
        {"kelsMatVecMul", "", Unit::Sum, matVec},
        {"kelsVecMatMul", "", Unit::Sum, vecMat},
        {"kelsMatVecMulRows", "", Unit::Sum, matVecRows, nullptr, 40},
        {"kelsSumColumn", "", Unit::Sum, sumColumn},
        {"kelsSumRow", "", Unit::Sum, sumRow},
        {"kelsAddNRows", "", Unit::Sum, addNRows},
        {"kelsCopyColumn_Indirect", "", Unit::Ulp, chosenColumns},
        {"kelsNormalizeColumn", "", Unit::Sum, normalise},
        {"kelsSVD", "a=-9..9 w=1..24 h=1..24", Unit::Peak, singularValues, nullptr, 60},
        {"kelsQRTransColumn", "a=-9..9 w=1..24 h=24..30", Unit::Peak, qr, nullptr, 60},
        {"kelsSolveUpper", "r=0.5..2 n=1..24", Unit::Sum, solveUpper},
    };
}

}  // namespace accuracy
