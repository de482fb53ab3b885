#include "kels/model.h"

#include <climits>
#include <cmath>
#include <deque>

#include "scoring/block_matrix.h"
#include "support/allocation.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

// Functions by the element type T: those whose signature has it.
#define DETERMINANT(name) \
    std::get<KelStatus (*)(const T*, int, T*)>(std::tuple(&kelsUpdateGConst##name##_32f, &kelsUpdateGConst##name##_64f))
#define CONSTANTS(name, ...)              \
    std::get<KelStatus (*)(__VA_ARGS__)>( \
        std::tuple(&kelsOutProbPreCalc_32f##name, &kelsOutProbPreCalc_64f##name, &kelsOutProbPreCalc_32s##name))

template <class T>
struct Blocks;
#define BLOCKS(type)                                                   \
    template <>                                                        \
    struct Blocks<Kel##type> {                                         \
        using Matrix = KelBlockDMatrix_##type;                         \
        static constexpr auto make = kelsBlockDMatrixInitAlloc_##type; \
        static constexpr auto free = kelsBlockDMatrixFree_##type;      \
    }
BLOCKS(16s);
BLOCKS(32f);
BLOCKS(64f);

template <class T>
class FloatModel : public testing::Test {};
using FloatTypes = testing::Types<Kel32f, Kel64f>;
TYPED_TEST_SUITE(FloatModel, FloatTypes);

TYPED_TEST(FloatModel, DeterminantIsRoundedOnce) {
    using T = TypeParam;
    test::Random random(2);
    for (int len = 1; len < 60; ++len) {
        test::Guarded<T> v(random.vector<T>(len, 30));
        long double logs = 0, magnitudes = 1.8378770664093L * len;
        for (int i = 0; i < len; ++i) {
            v[i] = i == 5 ? std::numeric_limits<T>::min() : std::fabs(v[i]);  // which still has a logarithm
            logs += std::log(static_cast<long double>(v[i]));
            magnitudes += std::fabs(std::log(static_cast<long double>(v[i])));
        }
        // A logarithm and an addition in double precision an element, and one rounding to T.
        const long double bound = len * 0x1p-52L * magnitudes;
        for (const int sign : {-1, 1}) {
            T det = 0;
            EXPECT_EQ((sign < 0 ? DETERMINANT() : DETERMINANT(_DirectVar))(v, len, &det), 0);
            const long double exact = static_cast<long double>(1.8378770664093) * len + sign * logs;
            const long double rounding = std::ldexp(std::fabs(exact), -std::numeric_limits<T>::digits);
            EXPECT_TRUE(test::near(det, exact, bound + rounding)) << len;
        }
    }
}

TYPED_TEST(FloatModel, FirstElementWithoutLogarithmDecides) {
    using T = TypeParam;
    constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    constexpr T normal = std::numeric_limits<T>::min(), tiny = normal / 2;
    const struct {
        std::vector<T> v;
        KelStatus status;
        T det;
    } cases[] = {{{2, 0, -1}, 7, inf},
                 {{2, -1, 0}, 8, nan},
                 {{-0.0, -1}, 7, inf},
                 {{1, -tiny}, 7, inf},
                 {{1, tiny, -1}, 7, inf},
                 {{1, -normal}, 8, nan},
                 {{-inf}, 8, nan},
                 {{nan, 1}, 0, nan},
                 {{nan, 0}, 7, inf},
                 {{1, 1, 1, -3}, 8, nan},
                 {{1, 1}, 0, static_cast<T>(2 * 1.8378770664093)}};
    for (const auto& c : cases) {
        for (const auto form : {DETERMINANT(), DETERMINANT(_DirectVar)}) {
            T det = 5;
            EXPECT_EQ(form(c.v.data(), static_cast<int>(c.v.size()), &det), c.status);
            EXPECT_TRUE(test::sameBits(det, c.det)) << det << " instead of " << c.det;
        }
    }
}

template <class T>
class AnyModel : public testing::Test {};
using ConstantTypes = testing::Types<Kel32f, Kel64f, Kel32s>;
TYPED_TEST_SUITE(AnyModel, ConstantTypes);

TYPED_TEST(AnyModel, ConstantsOfAnyLength) {
    using T = TypeParam;
    test::Random random(3);
    for (int len = 1; len < 70; ++len) {
        test::Guarded<T> weight(random.vector<T>(len)), det(random.vector<T>(len));
        std::vector<T> expected;
        for (int i = 0; i < len; ++i) {
            if constexpr (std::is_integral_v<T>) {
                const auto half = static_cast<int64_t>(std::floor((det[i] + 1.0L) / 2));
                expected.push_back(static_cast<T>(std::clamp<int64_t>(weight[i] - half, INT_MIN, INT_MAX)));
            } else {
                expected.push_back(static_cast<T>(weight[i] - static_cast<__float128>(det[i]) / 2));
            }
        }
        test::Guarded<T> result(len), inPlace(det.vector());
        EXPECT_EQ(CONSTANTS(, const T*, const T*, T*, int)(weight, det, result, len), 0);
        EXPECT_EQ(CONSTANTS(_I, const T*, T*, int)(weight, inPlace, len), 0);
        EXPECT_TRUE(result.vector() == expected && inPlace.vector() == expected) << len;
    }
}

TEST(Model, ChecksPointersThenLength) {
    test::expectVectorChecks({-8, -6}, kelsUpdateGConst_32f, kelsUpdateGConst_64f, kelsUpdateGConst_DirectVar_32f,
                             kelsUpdateGConst_DirectVar_64f, kelsOutProbPreCalc_32f, kelsOutProbPreCalc_64f,
                             kelsOutProbPreCalc_32s, kelsOutProbPreCalc_32f_I, kelsOutProbPreCalc_64f_I,
                             kelsOutProbPreCalc_32s_I);
}

template <class T>
class BlockModel : public testing::Test {};
using BlockTypes = testing::Types<Kel16s, Kel32f, Kel64f>;
TYPED_TEST_SUITE(BlockModel, BlockTypes);

template <class T>
struct Source {
    std::vector<int> sizes;
    std::deque<test::Guarded<T>> values;
    std::vector<const T*> rows;

    explicit Source(std::vector<int> blockSizes) : sizes(std::move(blockSizes)) {
        test::Random random(4);
        for (const int n : sizes) {
            for (int i = 0; i < n; ++i) {
                rows.push_back(values.emplace_back(random.vector<T>(n)).data());
            }
        }
    }
    KelStatus make(typename Blocks<T>::Matrix** matrix) {
        return Blocks<T>::make(matrix, rows.data(), sizes.data(), static_cast<int>(sizes.size()));
    }
};

TYPED_TEST(BlockModel, HoldsTheRowsOfItsBlocks) {
    using T = TypeParam;
    for (const auto& sizes : {std::vector<int>{1}, {3, 2}, {13, 1, 26}, {39}}) {
        Source<T> source(sizes);
        const test::AllocationWatch watch;
        typename Blocks<T>::Matrix* opaque = nullptr;
        ASSERT_EQ(source.make(&opaque), 0);
        const auto& matrix = *kels::blockMatrix(opaque);
        ASSERT_EQ(matrix.blockCount, static_cast<int>(sizes.size()));
        ASSERT_EQ(matrix.rowCount, static_cast<int>(source.rows.size()));
        for (std::size_t b = 0, row = 0; b < sizes.size(); ++b) {
            EXPECT_EQ(matrix.blockSizes[b], sizes[b]);
            for (int i = 0; i < sizes[b]; ++i, ++row) {
                const T* const p = matrix.rowPointers[row];
                EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 16, 0u);
                EXPECT_EQ(std::vector<T>(p, p + sizes[b]), source.values[row].vector());
            }
        }
        EXPECT_EQ(Blocks<T>::free(opaque), 0);
        EXPECT_EQ(watch.unreleased(), 0);
    }
}

TYPED_TEST(BlockModel, FailuresLeaveThePointerAlone) {
    using T = TypeParam;
    Source<T> source({2, 3});
    typename Blocks<T>::Matrix* const untouched = reinterpret_cast<typename Blocks<T>::Matrix*>(&source);
    auto* matrix = untouched;
    const int bad[] = {2, 0};
    test::expectVectorChecks({-8, -6}, Blocks<T>::make);
    test::expectNullChecks(Blocks<T>::free);
    {
        const test::AllocationWatch watch(0);  // sizes come before memory
        EXPECT_EQ(Blocks<T>::make(&matrix, source.rows.data(), bad, 2), -6);
        EXPECT_EQ(source.make(&matrix), -9);
        EXPECT_EQ(watch.unreleased(), 0);
    }
    const int large[] = {32767, 1};  // a row more than can be counted
    EXPECT_EQ(Blocks<T>::make(&matrix, source.rows.data(), large, 2), -9);
    EXPECT_EQ(matrix, untouched);
}

}  // namespace
