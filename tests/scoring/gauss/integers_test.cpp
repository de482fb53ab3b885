// Scores of 16-bit vectors as 32-bit integers: exact sums, shifted toward minus infinity.
#include <kels.h>

#include "support/matrix.h"

namespace {

using namespace test;
using Quad = __float128;
using In = const Kel16s*;
using Rows = const Kel16s**;

// How a score is formed; whether many Gaussians meet one vector, and the larger of a score and the result stays.
struct Kind {
    bool manyGaussians = false, most = false;
    bool unit = false;      // variances of 1
    bool direct = false;    // variances themselves, not their inverses
    bool distance = false;  // the sum itself
    bool low = false;       // scores keep their low 32 bits
};

struct Problem {
    Kind kind;
    int height, width, gap = height % 4, scaleFactor;
    Random& random;
    Matrix<Kel16s> x = block(kind.manyGaussians ? 1 : height), mean = block(kind.manyGaussians ? height : 1),
                   ivar = block(kind.manyGaussians ? height : 1);
    std::vector<Kel32s> constants = random.vector<Kel32s>(height), before = random.vector<Kel32s>(height),
                        results = before;
    Kel32s gConst = random.value<Kel32s>();

    Matrix<Kel16s> block(int h) {
        return {h, width, gap, [this](int, int) {
                    const auto value = random.value<Kel16s>();
                    return kind.direct && value == 0 ? Kel16s{1} : value;
                }};
    }
    // The sum for row g, by which its score is below the constant.
    Quad sum(int g) const {
        Quad all = 0;
        for (int i = 0; i < width; ++i) {
            const auto in = [=](const Matrix<Kel16s>& b) { return Quad(b(b.height == 1 ? 0 : g, i)); };
            const Quad d = in(x)-in(mean);
            const Quad square = kind.unit && kind.low && d * d >= 0x1p31 ? d * d - 0x1p32 : d * d;
            all += kind.unit ? square : kind.direct ? square / in(ivar) : square * in(ivar);
        }
        return all;
    }
    Kel32s expected(int g) const {
        const int64_t shift = int64_t{scaleFactor} + (kind.distance ? 0 : 1);
        const auto places = static_cast<int>(std::clamp<int64_t>(shift, -999, 999));
        const Real shifted = std::floor(scaled(static_cast<Real>(sum(g)), places));
        if (kind.distance) return saturated<Kel32s>(shifted);
        const Kel32s constant = !kind.manyGaussians ? gConst : kind.most ? constants[g] : before[g];
        Kel32s score = saturated<Kel32s>(constant - shifted);
        if (kind.low) {
            const auto bits = static_cast<uint32_t>(static_cast<int64_t>(std::fmod(shifted, 0x1p32L)));
            score = static_cast<Kel32s>(static_cast<uint32_t>(constant) - bits);
        }
        return kind.most ? std::max(score, before[g]) : score;
    }
};

// The arguments in the order of each function: of a vector, of frames, of many Gaussians.
KelStatus call(KelStatus (*f)(In, In, In, int, Kel32s*, Kel32s, int), Problem& p) {
    return f(p.x.d2(), p.mean.d2(), p.ivar.d2(), p.width, p.results.data(), p.gConst, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(In, In, int, Kel32s*, Kel32s, int), Problem& p) {
    return f(p.x.d2(), p.mean.d2(), p.width, p.results.data(), p.gConst, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(In, In, In, int, Kel32s*, int), Problem& p) {
    return f(p.x.d2(), p.mean.d2(), p.ivar.d2(), p.width, p.results.data(), p.scaleFactor);
}
KelStatus call(KelStatus (*f)(In, int, In, In, int, Kel32s*, int, Kel32s, int), Problem& p) {
    return f(p.x.d2(), p.width + p.gap, p.mean.d2(), p.ivar.d2(), p.width, p.results.data(), p.height, p.gConst,
             p.scaleFactor);
}
KelStatus call(KelStatus (*f)(In, int, In, int, Kel32s*, int, Kel32s, int), Problem& p) {
    return f(p.x.d2(), p.width + p.gap, p.mean.d2(), p.width, p.results.data(), p.height, p.gConst, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(Rows, In, In, int, Kel32s*, int, Kel32s, int), Problem& p) {
    return f(p.x.constD2l(), p.mean.d2(), p.ivar.d2(), p.width, p.results.data(), p.height, p.gConst, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(Rows, In, int, Kel32s*, int, Kel32s, int), Problem& p) {
    return f(p.x.constD2l(), p.mean.d2(), p.width, p.results.data(), p.height, p.gConst, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(In, In, int, In, int, Kel32s*, int, int), Problem& p) {
    return f(p.mean.d2(), p.ivar.d2(), p.width + p.gap, p.x.d2(), p.width, p.results.data(), p.height, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(Rows, Rows, In, int, Kel32s*, int, int), Problem& p) {
    return f(p.mean.constD2l(), p.ivar.constD2l(), p.x.d2(), p.width, p.results.data(), p.height, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(In, In, int, In, int, const Kel32s*, Kel32s*, int, int), Problem& p) {
    return f(p.mean.d2(), p.ivar.d2(), p.width + p.gap, p.x.d2(), p.width, p.constants.data(), p.results.data(),
             p.height, p.scaleFactor);
}
KelStatus call(KelStatus (*f)(Rows, Rows, In, int, const Kel32s*, Kel32s*, int, int), Problem& p) {
    return f(p.mean.constD2l(), p.ivar.constD2l(), p.x.d2(), p.width, p.constants.data(), p.results.data(), p.height,
             p.scaleFactor);
}

// For all widths up to a few vectors, heights that leave every rest, and some large ones.
template <class... F>
void expectScores(const Kind& kind, bool oneRow, F*... functions) {
    std::vector<std::pair<int, int>> sizes = {{64, 3}, {131, 2}, {70, 39}, {5, 65}, {2, 1000}};
    for (int width = 1; width <= 41; ++width) sizes.emplace_back(1 + width * 5 % 9, width);
    Random random(11);
    for (const auto& [height, width] : sizes) {
        for (const int scaleFactor : {INT_MIN, -33, -1, 20, 33, 37, 64, INT_MAX}) {
            Problem p{.kind = kind,
                      .height = oneRow ? 1 : height,
                      .width = width,
                      .scaleFactor = scaleFactor,
                      .random = random};
            const auto expectOne = [&](auto* f) {
                p.results = p.before;
                ASSERT_EQ(call(f, p), kelStatusOk);
                for (int g = 0; g < p.height; ++g) {
                    ASSERT_EQ(p.results[g], p.expected(g)) << p.height << 'x' << width << ", scale " << scaleFactor;
                }
            };
            (expectOne(functions), ...);
        }
    }
}

TEST(IntegerScores, OfAVector) {
    expectScores({}, true, kelsLogGaussSingle_16s32s_Sfs);
    expectScores({.low = true}, true, kelsLogGaussSingle_Low_16s32s_Sfs);
    expectScores({.unit = true}, true, kelsLogGaussSingle_IdVar_16s32s_Sfs);
    expectScores({.unit = true, .low = true}, true, kelsLogGaussSingle_IdVarLow_16s32s_Sfs);
    expectScores({.direct = true}, true, kelsLogGaussSingle_DirectVar_16s32s_Sfs);
    expectScores({.distance = true}, true, kelsMahDistSingle_16s32s_Sfs);
}
TEST(IntegerScores, OfFrames) {
    expectScores({}, false, kelsLogGauss_16s32s_D2Sfs, kelsLogGauss_16s32s_D2LSfs);
    expectScores({.low = true}, false, kelsLogGauss_Low_16s32s_D2Sfs, kelsLogGauss_Low_16s32s_D2LSfs);
    expectScores({.unit = true}, false, kelsLogGauss_IdVar_16s32s_D2Sfs, kelsLogGauss_IdVar_16s32s_D2LSfs);
    expectScores({.unit = true, .low = true}, false, kelsLogGauss_IdVarLow_16s32s_D2Sfs,
                 kelsLogGauss_IdVarLow_16s32s_D2LSfs);
}
TEST(IntegerScores, TheLargerStays) {
    expectScores({.most = true}, false, kelsLogGaussMax_16s32s_D2Sfs, kelsLogGaussMax_16s32s_D2LSfs);
    expectScores({.most = true, .low = true}, false, kelsLogGaussMax_Low_16s32s_D2Sfs,
                 kelsLogGaussMax_Low_16s32s_D2LSfs);
    expectScores({.most = true, .unit = true}, false, kelsLogGaussMax_IdVar_16s32s_D2Sfs,
                 kelsLogGaussMax_IdVar_16s32s_D2LSfs);
    expectScores({.most = true, .unit = true, .low = true}, false, kelsLogGaussMax_IdVarLow_16s32s_D2Sfs,
                 kelsLogGaussMax_IdVarLow_16s32s_D2LSfs);
}
TEST(IntegerScores, OfManyGaussians) {
    const Kind many = {.manyGaussians = true}, low = {.manyGaussians = true, .low = true};
    expectScores(many, false, kelsLogGaussMultiMix_16s32s_D2Sfs, kelsLogGaussMultiMix_16s32s_D2LSfs);
    expectScores(low, false, kelsLogGaussMultiMix_Low_16s32s_D2Sfs, kelsLogGaussMultiMix_Low_16s32s_D2LSfs);
    expectScores({.manyGaussians = true, .most = true}, false, kelsLogGaussMaxMultiMix_16s32s_D2Sfs,
                 kelsLogGaussMaxMultiMix_16s32s_D2LSfs);
    expectScores({.manyGaussians = true, .most = true, .low = true}, false, kelsLogGaussMaxMultiMix_Low_16s32s_D2Sfs,
                 kelsLogGaussMaxMultiMix_Low_16s32s_D2LSfs);
}

}  // namespace
