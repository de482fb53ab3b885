// Where the corners of filter banks lie, and how their triangles are weighted.
#include "frontend/fbank/banks.h"

#include <optional>

namespace {

using namespace test;

template <class Owned>
class FBankBuild : public ::testing::Test {};
TYPED_TEST_SUITE(FBankBuild, BankForms);

// Single precision loses a few units in the last place of mel, which the exponential multiplies by at most its
// argument.
template <class F>
void checkTriangles(const F& held, const Shape& s, bool byBin) {
    constexpr Real eps = 0x1p-24L, unit = F::kFixed ? 0x1p-14L : 0;
    const int fftLen2 = 1 << held.order;
    EXPECT_TRUE(fftLen2 >= s.fftLen && (held.order == 1 || fftLen2 / 2 < s.fftLen));
    const auto c = held.centers();
    const Real binScale = fftLen2 / static_cast<Real>(s.sampFreq);
    for (int k = 0; k < s.nFilter + 2; ++k) {
        const Real above = s.hertz(k) * binScale - c[k] + (byBin ? 0.5L : 0);
        EXPECT_TRUE(near(above, 0.5L, 0.5L + 16 * eps * (s.hertz(k) + s.melDiv) * binScale)) << k;
    }
    for (int m = 0; m < s.nFilter; ++m) {
        const auto w = held.weights(m);
        for (int i = c[m]; i <= c[m + 2]; ++i) {
            // The side that rises, or falls, from `zero` to the top.
            const bool up = i <= c[m + 1];
            const int zero = up ? m : m + 2;
            Real exact = 0, tolerance = 0;
            if (byBin || s.linear(m + 1)) {
                exact = (std::abs(i - c[zero]) + 1) / static_cast<Real>(std::abs(c[m + 1] - c[zero]) + 1);
                exact = static_cast<Kel32f>(unit > 0 ? std::floor(exact / unit) * unit : exact);
            } else if (i > c[m]) {
                const Real from = s.mel(s.hertz(zero)), span = s.mel(s.hertz(m + 1)) - from;
                exact = (s.mel(i / binScale) - from) / span;
                tolerance = 16 * eps * s.mel(s.high) / std::fabs(span) + unit / 2;
            }
            EXPECT_TRUE(near(w[i - c[m]], exact, tolerance)) << m << " " << i;
        }
    }
    for (const Kel32f spare : held.weights(s.nFilter)) EXPECT_EQ(spare, 0);
}
TYPED_TEST(FBankBuild, CornersAndWeightsFollowTheFormulas) {
    for (const Shape& s : kShapes) {
        for (const int flag : {kelFBankWeightMel, kelFBankWeightBin}) {
            std::optional<TypeParam> held;
            inEveryRoundingMode([&] { s.build(held.emplace(s.nFilter), flag); },
                                [&] { checkTriangles(*held, s, flag == kelFBankWeightBin); });
        }
    }
}

// Parameters without sense must not put a corner outside the spectrum or out of order.
TYPED_TEST(FBankBuild, CornersStayInsideTheSpectrum) {
    for (const float melDiv : {-700.0f, 0.0f, NAN, 1e-30f, 1e30f}) {
        for (const float melMul : {1127.0f, -3.0f, 0.0f, 1e38f}) {
            TypeParam held(9);
            const Shape shape{.fftLen = 64,
                              .sampFreq = 8000,
                              .low = 50,
                              .high = 4000,
                              .nFilter = 9,
                              .melMul = melMul,
                              .melDiv = melDiv,
                              .highLin = 2000,
                              .nLin = 4};
            shape.build(held, kelFBankWeightMel);
            held.centers();  // checks them
            EXPECT_EQ(TypeParam::evaluate(held.bank), kelStatusOk);
        }
    }
}

TYPED_TEST(FBankBuild, AuroraBanks) {
    using F = TypeParam;
    const std::vector<int> low{0,  0,  1,  2,  3,  4,  5,  7,  8,  10, 12, 14, 16, 18,
                               20, 23, 26, 29, 32, 36, 39, 44, 48, 53, 58, 64, 64};
    for (const auto& c : {low, std::vector<int>{0, 13, 27, 44, 64}}) {
        F held(std::ssize(c) - 2);
        ASSERT_EQ(c == low ? initAuroraLow(&held.bank) : initAuroraHigh(&held.bank), kelStatusOk);
        EXPECT_EQ(held.centers(), c);
        for (int m = 0; m < held.nFilter; ++m) {
            const auto w = held.weights(m);
            const auto triangle = [&](int i) {
                const int side = i < c[m + 1] ? c[m] : c[m + 2];
                return i == c[m + 1] ? 1 : (i - side) / static_cast<Real>(c[m + 1] - side);
            };
            Real sum = 0;
            for (int i = c[m]; i <= c[m + 2]; ++i) sum += triangle(i);
            for (int i = c[m]; i <= c[m + 2]; ++i) {
                const Real tolerance = F::kFixed ? 0.51L * 0x1p-14L : 0x1p-22L;
                EXPECT_TRUE(near(w[i - c[m]], triangle(i) / sum, tolerance)) << m << " " << i;
            }
        }
    }
}

// Of a bank that is not ready: whatever the index and the array, nothing is looked at.
template <class F>
void expectRefused(typename F::Bank* bank, KelStatus status) {
    Kel32f coeff = 77;
    int center = 77;
    EXPECT_EQ(F::evaluate(bank), status);
    EXPECT_EQ(getCenters(bank, &center), status);
    EXPECT_EQ(getCoeffs(bank, 99, &coeff), status);
    EXPECT_EQ(setCoeffs(bank, 99, &coeff), status);
    EXPECT_TRUE(center == 77 && coeff == 77);
}

TYPED_TEST(FBankBuild, BanksAreReadyWhenTheirCentresAscend) {
    using F = TypeParam;
    F held(3), unfinished(3);
    {
        const AllocationWatch watch(1);
        EXPECT_EQ(initEmpty(&unfinished.bank, &unfinished.order, 16, 3, 0), kelStatusNoMemory);
    }
    expectRefused<F>(unfinished.bank, kelStatusNullPtr);
    ASSERT_EQ(initEmpty(&held.bank, &held.order, 16, 3, 0), kelStatusOk);
    for (const auto& bad : {std::array{-1, 2, 3, 4, 5}, {2, 1, 3, 4, 5}, {0, 1, 2, 6, 5}, {0, 1, 2, 3, 9}}) {
        EXPECT_EQ(setCenters(held.bank, bad.data()), kelStatusFBankState);
        expectRefused<F>(held.bank, kelStatusFBankState);
    }
    EXPECT_EQ(setCenters(held.bank, std::array{0, 0, 3, 8, 8}.data()), kelStatusOk);
    EXPECT_EQ(F::evaluate(held.bank), kelStatusOk);
    EXPECT_EQ(setCoeffs(held.bank, 1, std::array{1e9f, 0.0f, -INFINITY, NAN}.data()), kelStatusOk);
    EXPECT_EQ(held.weights(0)[0], F::kFixed ? 131072 : 1e9f);  // 2^31 - 1 in Q14 is not a float
    EXPECT_EQ(held.weights(0)[2], F::kFixed ? -131072 : -INFINITY);
}

}  // namespace
