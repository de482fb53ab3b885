// Matrices of blocks, and scores with block-diagonal inverse covariances.
#include <kels.h>

#include <deque>
#include <numeric>

#include "support/allocation.h"
#include "support/forms.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"
#include "support/rounding.h"

namespace {

using test::Guarded;
using Quad = __float128;

constexpr auto kMake =
    test::forms(kelsBlockDMatrixInitAlloc_16s, kelsBlockDMatrixInitAlloc_32f, kelsBlockDMatrixInitAlloc_64f);
constexpr auto kFree = test::forms(kelsBlockDMatrixFree_16s, kelsBlockDMatrixFree_32f, kelsBlockDMatrixFree_64f);

template <class Matrix, class T>
Matrix* matrixMadeBy(KelStatus (*)(Matrix**, const T**, const int*, int));
template <class T>
using MatrixOf = std::remove_pointer_t<decltype(matrixMadeBy(kMake.of<T>()))>;

// A model of blocks of the given sizes and a vector; S and the sum of the magnitudes of its terms.
template <class T>
struct Model {
    explicit Model(const std::vector<int>& blockSizes)
        : sizes(blockSizes),
          len(std::accumulate(sizes.begin(), sizes.end(), 0)),
          x(random.vector<T>(len, 2)),
          mean(random.vector<T>(len, 2)) {
        int start = 0;
        for (const int n : sizes) {
            for (int r = start; r < start + n; ++r) {
                rows.push_back(values.emplace_back(random.vector<T>(n, 2)).data());
                const Quad distance = Quad(x[r]) - Quad(mean[r]);
                for (int c = 0; c < n; ++c) {
                    Quad d = Quad(x[start + c]) - Quad(mean[start + c]);
                    if constexpr (std::is_integral_v<T>) d = std::clamp(x[start + c] - mean[start + c], -32768, 32767);
                    const Quad term = distance * (rows[r][c] * d);
                    sum += term;
                    magnitudes += term < 0 ? -term : term;
                }
            }
            start += n;
        }
        EXPECT_EQ(kMake(&matrix, rows.data(), sizes.data(), static_cast<int>(sizes.size())), 0);
    }
    ~Model() { EXPECT_EQ(kFree(matrix), 0); }

    test::Random random;
    std::vector<int> sizes;
    int len;
    Guarded<T> x, mean;
    std::deque<Guarded<T>> values;
    std::vector<const T*> rows;
    MatrixOf<T>* matrix = nullptr;
    Quad sum = 0, magnitudes = 0;
};

// |result - (-3.7 - factor * sum)| within the roundings of differences, products and the result.
template <class T, class R, class F, class... Scale>
void expectScore(F f, R, const Model<T>& model, long double factor, long double rounding, Scale... scaleFactor) {
    R got;
    const R constant = static_cast<R>(-3.7);
    ASSERT_EQ(f(model.x.data(), model.mean.data(), model.matrix, model.len, &got, constant, scaleFactor...), 0);
    const auto exact = static_cast<long double>(constant - model.sum * factor);
    const long double last = std::numeric_limits<R>::epsilon() / 2 * (1 + 0x1p-9L) * std::fabs(exact);
    EXPECT_TRUE(test::near(got, exact, rounding * static_cast<long double>(model.magnitudes) * factor + last));
}

TEST(GaussCovariance, ScoresAreQuadraticFormsOfTheBlocks) {
    for (const std::vector<int>& sizes :
         {std::vector{1}, {5, 1, 2}, {39}, {13, 13, 13}, {13, 1, 26}, {111}, {100, 12}, {1, 127}}) {
        const Model<Kel32f> single(sizes);
        const Model<Kel64f> wide(sizes);
        const Model<Kel16s> shorts(sizes);
        const long double extended = (single.len + 8) * 0x1p-64L, exact = (single.len + 8) * 0x1p-53L;
        expectScore(kelsLogGaussSingle_BlockDVar_32f, Kel32f(), single, 0.5L, 4 * 0x1p-24L);
        expectScore(kelsLogGaussSingle_BlockDVar_32f64f, Kel64f(), single, 0.5L, extended);
        expectScore(kelsLogGaussSingle_BlockDVar_64f, Kel64f(), wide, 0.5L, extended);
        expectScore(kelsLogGaussSingle_BlockDVar_16s32f, Kel32f(), shorts, 0.5L, exact);
        expectScore(kelsLogGaussSingle_BlockDVarScaled_16s32f, Kel32f(), shorts, 0x1p-10L, exact, 9);
        for (const int scale : {20, 28, 34, -1}) {
            Kel32s i;
            ASSERT_EQ(kelsLogGaussSingle_BlockDVar_16s32s_Sfs(shorts.x.data(), shorts.mean.data(), shorts.matrix,
                                                              shorts.len, &i, 7, scale),
                      0);
            EXPECT_EQ(i, test::saturated<Kel32s>(
                             7 - std::floor(test::scaled(static_cast<long double>(shorts.sum), scale + 1))));
        }
    }
}

}  // namespace
