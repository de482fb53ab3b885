// Gaussian scores: of a vector, of frames, of many Gaussians, of mixtures.
#include "forms.h"
#include "scoring/block_matrix.h"

namespace accuracy {
namespace {

// The distance of row r of the vectors or Gaussians: where there is one vector, or one Gaussian, it serves all rows.
Exact distance(Problem& p, std::size_t r) {
    const auto rowOf = [&](const char* name) -> const Row& {
        const Rows& rows = p.all(name);
        return rows[r % rows.size()];
    };
    const Row &x = rowOf("s"), &mean = rowOf("m");
    const bool unit = !p.has("v"), direct = p.isCalled("DirectVar");
    return sum(x.size(), [&](std::size_t i) {
        const Exact square = accuracy::square(x[i] - mean[i]);
        return unit ? square : direct ? square / rowOf("v")[i] : square * rowOf("v")[i];
    });
}

Exact scaleOf(Problem& p) {
    return p.has("sf") ? std::exp2(-p.number("sf")) : 1;
}
Exact score(Problem& p, std::size_t r, const Exact& constant) {
    return constant - distance(p, r) * scaleOf(p) * 0.5L;
}
Exact constantOf(Problem& p, std::size_t r) {
    return p.has("g") ? Exact(p.number("g")) : p.row(p.has("det") ? "det" : "r")[r];
}

void distances(Problem& p) {
    Row& result = p.exact("r")[0];
    for (std::size_t r = 0; r < result.size(); ++r) result[r] = distance(p, r);
}
void scores(Problem& p) {
    Row& result = p.exact("r")[0];
    for (std::size_t r = 0; r < result.size(); ++r) result[r] = score(p, r, constantOf(p, r));
}
void best(Problem& p) {
    Row& result = p.exact("r")[0];
    for (std::size_t r = 0; r < result.size(); ++r) result[r] = std::max(p.row("r")[r], score(p, r, constantOf(p, r)));
}
void added(Problem& p) {
    Row& result = p.exact("r")[0];
    for (std::size_t r = 0; r < result.size(); ++r) {
        result[r] = logAdd(p.row("r")[r], score(p, r, constantOf(p, r)), p.isSingle("r"));
    }
}

bool selected(Problem& p, std::size_t r) {
    if (!p.has("sign")) return true;
    const std::size_t bit = r + static_cast<std::size_t>(p.whole("off"));
    return static_cast<int>(p.row("sign")[bit / 8].value) >> (7 - bit % 8) & 1;
}
void mixture(Problem& p) {
    Exact all(-4500000);
    bool first = true;
    for (std::size_t r = 0; r < p.all("m").size(); ++r) {
        if (!selected(p, r)) continue;
        const Exact one = score(p, r, constantOf(p, r));
        all = first ? one : logAdd(all, one, p.isSingle("r"));
        first = false;
    }
    p.exact("r")[0][0] = all;
}

template <class Matrix>
Exact blockForm(Problem& p) {
    const auto* const matrix = &kels::scoring::blocksOf(p.object<Matrix>("b"));
    const Row &x = p.row("s"), &mean = p.row("m");
    Exact all;
    for (std::size_t b = 0, at = 0; b < static_cast<std::size_t>(matrix->blockCount); ++b) {
        const auto n = static_cast<std::size_t>(matrix->blockSizes[b]);
        for (std::size_t r = 0; r < n; ++r) {
            const auto product = [&](std::size_t i) {
                return Exact(static_cast<Real>(matrix->rowPointers[at + r][i])) * (x[at + i] - mean[at + i]);
            };
            all += (x[at + r] - mean[at + r]) * sum(n, product);
        }
        at += n;
    }
    return all;
}
void blockScore(Problem& p) {
    const Exact form = p.isCalled("_16s")   ? blockForm<KelBlockDMatrix_16s>(p)
                       : p.isCalled("_64f") ? blockForm<KelBlockDMatrix_64f>(p)
                                            : blockForm<KelBlockDMatrix_32f>(p);
    p.exact("r")[0][0] = Exact(p.number("g")) - form * scaleOf(p) * 0.5L;
}

}  // namespace

References scoreReferences() {
    const char* const variance = "v=0.1..9 sf=0..12";
    return {
        {"kelsLogGaussSingle kelsLogGaussSingle_Scaled kelsLogGaussSingle_Low kelsLogGaussSingle_LowScaled "
         "kelsLogGaussSingle_IdVar kelsLogGaussSingle_IdVarScaled kelsLogGaussSingle_IdVarLow "
         "kelsLogGaussSingle_IdVarLowScaled kelsLogGaussSingle_DirectVar kelsLogGaussSingle_DirectVarScaled",
         variance, Unit::Sum, scores},
        {"kelsLogGaussSingle_BlockDVar kelsLogGaussSingle_BlockDVarScaled", "s=-9..9 m=-9..9 sf=0..12", Unit::Sum,
         blockScore},
        {"kelsLogGauss kelsLogGauss1 kelsLogGauss_IdVar kelsLogGauss_Scaled kelsLogGauss_LowScaled "
         "kelsLogGauss_IdVarScaled kelsLogGauss_IdVarLowScaled kelsLogGauss_Low kelsLogGauss_IdVarLow "
         "kelsLogGaussMultiMix kelsLogGaussMultiMix_Scaled kelsLogGauss2",
         variance, Unit::Sum, scores},
        {"kelsMahDistSingle kelsMahDist kelsMahDist1 kelsMahDistMultiMix kelsMahDist2", variance, Unit::Sum, distances},
        {"kelsLogGaussMax1 kelsLogGaussMax kelsLogGaussMax_IdVar kelsLogGaussMax_Scaled kelsLogGaussMax_IdVarScaled "
         "kelsLogGaussMax_LowScaled kelsLogGaussMax_IdVarLowScaled kelsLogGaussMaxMultiMix "
         "kelsLogGaussMaxMultiMix_Scaled kelsLogGaussMaxMultiMix_LowScaled",
         "v=0.1..9 r=-900..-9 sf=0..12", Unit::Sum, best},
        {"kelsLogGaussAdd1 kelsLogGaussAdd kelsLogGaussAdd_IdVar kelsLogGaussAdd_Scaled kelsLogGaussAdd_IdVarScaled "
         "kelsLogGaussAdd_LowScaled kelsLogGaussAdd_IdVarLowScaled kelsLogGaussAdd2 kelsLogGaussAddMultiMix "
         "kelsLogGaussAddMultiMix_Scaled kelsLogGaussAddMultiMix_LowScaled",
         "v=0.1..9 r=-900..-9 sf=0..12", Unit::Sum, added},
        {"kelsLogGaussMixture kelsLogGaussMixture_IdVar kelsLogGaussMixture_Select kelsLogGaussMixture_SelectIdVar",
         variance, Unit::Sum, mixture},
        // Above the logarithm of zero, from where on it makes a difference how close two scores are.
        {"kelsLogGaussMixture_Scaled kelsLogGaussMixture_LowScaled kelsLogGaussMixture_IdVarScaled "
         "kelsLogGaussMixture_IdVarLowScaled kelsLogGaussMixture_SelectScaled kelsLogGaussMixture_SelectIdVarScaled",
         "s=-0.3..0.3 m=-0.3..0.3 v=0.001..0.009 sf=8..12", Unit::Sum, mixture},
    };
}

}  // namespace accuracy
