// Scores with block-diagonal inverse covariances.
#include <gtest/gtest.h>
#include <kels.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "core/memory.h"
#include "support/allocation.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using namespace kels;
using test::Guarded;
using Quad = __float128;

BlockMatrix<Kel16s>* build(const std::vector<Kel32s>& sizes, Kel16s) {
    return allocMatrix_16s(sizes.data(), static_cast<int>(sizes.size()));
}
BlockMatrix<Kel32f>* build(const std::vector<Kel32s>& sizes, Kel32f) {
    return allocMatrix_32f(sizes.data(), static_cast<int>(sizes.size()));
}
BlockMatrix<Kel64f>* build(const std::vector<Kel32s>& sizes, Kel64f) {
    return allocMatrix_64f(sizes.data(), static_cast<int>(sizes.size()));
}

// A model of blocks of the given sizes and a vector; S and the sum of the magnitudes of its terms.
template <class T>
struct Model {
    Model(test::Random& random, const std::vector<Kel32s>& blockSizes)
        : sizes(blockSizes),
          len(std::accumulate(sizes.begin(), sizes.end(), 0)),
          x(random.vector<T>(static_cast<std::size_t>(len), 2)),
          mean(random.vector<T>(static_cast<std::size_t>(len), 2)),
          matrix(build(sizes, T())) {
        int start = 0;
        for (const int n : sizes) {
            for (int r = start; r < start + n; ++r) {
                Quad product = 0, magnitude = 0;
                for (int c = 0; c < n; ++c) {
                    const T value = matrix->rowPointers[r][c] = random.value<T>(2);
                    Quad d = Quad(x[start + c]) - Quad(mean[start + c]);
                    if constexpr (std::is_integral_v<T>) d = std::clamp(x[start + c] - mean[start + c], -32768, 32767);
                    product += value * d;
                    magnitude += value * d < 0 ? -value * d : value * d;
                }
                const Quad d = Quad(x[r]) - Quad(mean[r]);
                sum += d * product;
                magnitudes += (d < 0 ? -d : d) * magnitude;
            }
            start += n;
        }
    }
    ~Model() { kelsFree(matrix->rawBlock); }

    std::vector<Kel32s> sizes;
    int len;
    Guarded<T> x, mean;
    BlockMatrix<T>* matrix;
    Quad sum = 0, magnitudes = 0;
};

const std::vector<std::vector<Kel32s>> kSizes = {{1}, {5, 1, 2}, {39}, {13, 13, 13}, {111}, {100, 12}, {1, 127}};

// |got - (gConst - factor * sum)| within the roundings of differences, products and the result.
template <class R, class T>
void expectNear(R got, const Model<T>& model, R constant, long double factor, long double rounding) {
    const Quad exact = constant - model.sum * factor;
    const Quad error = got > exact ? got - exact : exact - got;
    const Quad last = std::numeric_limits<R>::epsilon() / 2 * (1 + 0x1p-9L) * (exact < 0 ? -exact : exact);
    EXPECT_LE(error, rounding * model.magnitudes * factor + last) << static_cast<double>(exact) << " len " << model.len;
}

TEST(GaussCovariance, ScoresAreQuadraticFormsOfTheBlocks) {
    test::Random random(1);
    for (const auto& sizes : kSizes) {
        Kel32f f;
        Kel64f d;
        const Model<Kel32f> single(random, sizes);
        const auto* const matrix32 = reinterpret_cast<const KelBlockDMatrix_32f*>(single.matrix);
        const int len = single.len;
        ASSERT_EQ(kelsLogGaussSingle_BlockDVar_32f(single.x.data(), single.mean.data(), matrix32, len, &f, -3.7f), 0);
        expectNear(f, single, -3.7f, 0.5L, 4 * 0x1p-24L);
        ASSERT_EQ(kelsLogGaussSingle_BlockDVar_32f64f(single.x.data(), single.mean.data(), matrix32, len, &d, -3.7), 0);
        expectNear(d, single, -3.7, 0.5L, (len + 8) * 0x1p-64L);

        const Model<Kel64f> wide(random, sizes);
        const auto* const matrix64 = reinterpret_cast<const KelBlockDMatrix_64f*>(wide.matrix);
        ASSERT_EQ(kelsLogGaussSingle_BlockDVar_64f(wide.x.data(), wide.mean.data(), matrix64, len, &d, -3.7), 0);
        expectNear(d, wide, -3.7, 0.5L, (len + 8) * 0x1p-64L);

        const Model<Kel16s> shorts(random, sizes);
        const auto* const matrix16 = reinterpret_cast<const KelBlockDMatrix_16s*>(shorts.matrix);
        const Kel16s *const x = shorts.x.data(), *const mean = shorts.mean.data();
        ASSERT_EQ(kelsLogGaussSingle_BlockDVarScaled_16s32f(x, mean, matrix16, len, &f, -3.7f, 9), 0);
        expectNear(f, shorts, -3.7f, 0x1p-10L, (len + 8) * 0x1p-53L);
        ASSERT_EQ(kelsLogGaussSingle_BlockDVar_16s32f(x, mean, matrix16, len, &f, -3.7f), 0);
        expectNear(f, shorts, -3.7f, 0.5L, (len + 8) * 0x1p-53L);
        for (const int scale : {20, 28, 34, -1}) {
            Kel32s i;
            ASSERT_EQ(kelsLogGaussSingle_BlockDVar_16s32s_Sfs(x, mean, matrix16, len, &i, 7, scale), 0);
            const long double score = 7 - std::floor(std::ldexp(static_cast<long double>(shorts.sum), -scale - 1));
            EXPECT_EQ(i, static_cast<Kel32s>(std::clamp<long double>(score, INT32_MIN, INT32_MAX))) << scale;
        }
    }
}

// Runs one form with every fault of its own.
template <class T, class R, class Matrix, class Call>
void expectFaults(Call call, const Matrix*) {
    test::Random random(2);
    const Model<T> small(random, {3, 2}), large(random, {112});
    const auto* const matrix = reinterpret_cast<const Matrix*>(small.matrix);
    const T *const x = small.x.data(), *const mean = small.mean.data();
    R out = 77;
    EXPECT_EQ(call(static_cast<const T*>(nullptr), mean, matrix, 0, &out), kelStatusNullPtr);
    EXPECT_EQ(call(x, static_cast<const T*>(nullptr), matrix, 0, &out), kelStatusNullPtr);
    EXPECT_EQ(call(x, mean, static_cast<const Matrix*>(nullptr), 0, &out), kelStatusNullPtr);
    EXPECT_EQ(call(x, mean, matrix, 0, static_cast<R*>(nullptr)), kelStatusNullPtr);
    for (const int len : {0, -1, 4, 6}) EXPECT_EQ(call(x, mean, matrix, len, &out), kelStatusSize);
    EXPECT_EQ(out, 77);
    const test::AllocationWatch watch(0);
    EXPECT_EQ(call(x, mean, matrix, 5, &out), kelStatusOk);
    out = 77;
    EXPECT_EQ(call(large.x.data(), large.mean.data(), reinterpret_cast<const Matrix*>(large.matrix), 112, &out),
              kelStatusNoMemory);
    EXPECT_EQ(out, 77);
    EXPECT_EQ(watch.calls(), 1);
    EXPECT_EQ(call(large.x.data(), large.mean.data(), reinterpret_cast<const Matrix*>(large.matrix), 112, &out),
              kelStatusOk);
    EXPECT_EQ(watch.unreleased(), 0);
}

TEST(GaussCovariance, FaultsAreReportedInOrder) {
    const KelBlockDMatrix_16s* const m16 = nullptr;
    const KelBlockDMatrix_32f* const m32 = nullptr;
    const KelBlockDMatrix_64f* const m64 = nullptr;
    const auto plain = [](auto function, auto... more) {
        return [=](auto x, auto mean, auto matrix, int len, auto* out) {
            return function(x, mean, matrix, len, out, 0, more...);
        };
    };
    expectFaults<Kel32f, Kel32f>(plain(kelsLogGaussSingle_BlockDVar_32f), m32);
    expectFaults<Kel32f, Kel64f>(plain(kelsLogGaussSingle_BlockDVar_32f64f), m32);
    expectFaults<Kel64f, Kel64f>(plain(kelsLogGaussSingle_BlockDVar_64f), m64);
    expectFaults<Kel16s, Kel32f>(plain(kelsLogGaussSingle_BlockDVar_16s32f), m16);
    expectFaults<Kel16s, Kel32f>(plain(kelsLogGaussSingle_BlockDVarScaled_16s32f, 3), m16);
    expectFaults<Kel16s, Kel32s>(plain(kelsLogGaussSingle_BlockDVar_16s32s_Sfs, 3), m16);
}

}  // namespace
