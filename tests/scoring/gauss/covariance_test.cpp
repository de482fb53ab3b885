// Scores with block-diagonal inverse covariances as integers: exact sums, shifted toward minus infinity.
#include <kels.h>

#include <numeric>

#include "support/support.h"

namespace {

using namespace test;

TEST(GaussCovariance, IntegersAreExact) {
    Random random;
    for (const std::vector<int>& sizes :
         {std::vector{1}, {5, 1, 2}, {39}, {13, 13, 13}, {13, 1, 26}, {111}, {100, 12}, {1, 127}}) {
        const int len = std::accumulate(sizes.begin(), sizes.end(), 0);
        const auto x = random.vector<Kel16s>(len), mean = random.vector<Kel16s>(len);
        std::vector<std::vector<Kel16s>> values;
        std::vector<const Kel16s*> rows;
        __float128 sum = 0;
        for (std::size_t b = 0, start = 0; b < sizes.size(); start += sizes[b++]) {
            for (int r = 0; r < sizes[b]; ++r) {
                values.push_back(random.vector<Kel16s>(sizes[b]));
                const __float128 distance = x[start + r] - mean[start + r];
                for (int c = 0; c < sizes[b]; ++c) {
                    const int d = std::clamp(x[start + c] - mean[start + c], -32768, 32767);
                    sum += distance * values.back()[c] * d;
                }
            }
        }
        for (const auto& row : values) rows.push_back(row.data());
        KelBlockDMatrix_16s* matrix = nullptr;
        ASSERT_EQ(kelsBlockDMatrixInitAlloc_16s(&matrix, rows.data(), sizes.data(), std::ssize(sizes)), kelStatusOk);
        for (const int scale : {20, 28, 34, -1}) {
            Kel32s got;
            const auto f = kelsLogGaussSingle_BlockDVar_16s32s_Sfs;
            ASSERT_EQ(f(x.data(), mean.data(), matrix, len, &got, 7, scale), kelStatusOk);
            EXPECT_EQ(got, saturated<Kel32s>(7 - std::floor(scaled(static_cast<Real>(sum), scale + 1))));
        }
        EXPECT_EQ(kelsBlockDMatrixFree_16s(matrix), kelStatusOk);
    }
}

}  // namespace
