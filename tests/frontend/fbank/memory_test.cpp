// What the functions of filter banks refuse, and what is left where memory runs out.
#include <array>

#include "frontend/fbank/banks.h"

namespace {

using namespace test;

template <class Owned>
class FBankMemory : public ::testing::Test {};
TYPED_TEST_SUITE(FBankMemory, BankForms);

// Places of the arguments of the constructors; the linear part comes behind the filters.
enum MelArgument { kFFTLen = 2, kSampFreq, kLowFreq, kHighFreq, kFilters };
constexpr int kMelFlag = 9, kHighLinFreq = 7, kLinFilters = 8;

TYPED_TEST(FBankMemory, ConstructorsCheckInOrder) {
    using B = typename TypeParam::Bank;
    expectNullChecks(initAuroraLow.template of<B>(), initAuroraHigh.template of<B>(), freeBank.template of<B>());
    expectChecks<Places{.height = 3, .width = 2}>({kelStatusSize}, 1, initEmpty.template of<B>());
    // Each step shows which fault comes next; a flag of 0 is one, too.
    const std::vector<Step> common{{kFFTLen, 0, kelStatusSize},           {kFFTLen, 512, kelStatusFBankFreq},
                                   {kFilters, 0, kelStatusSize},          {kFilters, 20, kelStatusFBankFreq},
                                   {kSampFreq, 0, kelStatusSize},         {kSampFreq, NAN, kelStatusSize},
                                   {kSampFreq, 8000, kelStatusFBankFreq}, {kLowFreq, 0, kelStatusSize},
                                   {kLowFreq, NAN, kelStatusSize},        {kLowFreq, 2, kelStatusFBankFreq},
                                   {kHighFreq, NAN, kelStatusFBankFreq},  {kHighFreq, 4000.5, kelStatusFBankFreq}};
    expectSteps(initMel.template of<B>(), {0, 0, 512, 8000, 2, 1, 20, 1127, 700, 0}, common);
    expectSteps(initMelLin.template of<B>(), {0, 0, 512, 8000, 2, 1, 20, 2, 9, 1127, 700, 0}, common);
    std::vector<Step> flags;
    for (const int bad : {0, 3, 4, 9}) flags.push_back({kMelFlag, static_cast<double>(bad), kelStatusFBankFlag});
    expectSteps(initMel.template of<B>(), {0, 0, 512, 8000, 2, 4000, 20, 1127, 700}, flags);
    const std::vector<Step> linear{{kLinFilters, 0, kelStatusSize},          {kLinFilters, 21, kelStatusSize},
                                   {kLinFilters, 20, kelStatusFBankFlag},    {kHighLinFreq, 1, kelStatusFBankFreq},
                                   {kHighLinFreq, 4001, kelStatusFBankFreq}, {kHighLinFreq, NAN, kelStatusFBankFreq},
                                   {kHighLinFreq, 2, kelStatusFBankFlag}};
    expectSteps(initMelLin.template of<B>(), {0, 0, 512, 8000, 2, 4000, 20, 2, 9, 1127, 700, 0}, linear);
    TypeParam huge(1);
    EXPECT_EQ(initEmpty(&huge.bank, &huge.order, (1 << 30) + 1, 1, 0), kelStatusNoMemory);
    EXPECT_EQ(initEmpty(&huge.bank, &huge.order, 1, INT_MAX, 0), kelStatusNoMemory);
}

// Of a bank that is not ready yet, or no more: indices and arrays are not looked at.
template <class F>
void expectRefused(typename F::Bank* bank, KelStatus status) {
    Kel32f coeff = 77;
    int center = 77;
    EXPECT_EQ(F::evaluate(bank), status);
    EXPECT_EQ(getCenters(bank, &center), status);
    EXPECT_EQ(getCoeffs(bank, 99, &coeff), status);
    EXPECT_EQ(setCoeffs(bank, 99, &coeff), status);
    EXPECT_TRUE(status != kelStatusNullPtr || setCenters(bank, &center) == status);
    EXPECT_TRUE(center == 77 && coeff == 77);
}

TYPED_TEST(FBankMemory, EveryFailedAllocationLeavesWhatFreeTakes) {
    using F = TypeParam;
    using B = typename F::Bank;
    const auto check = [](auto make) {
        const auto refused = [](B* bank) { expectRefused<F>(bank, kelStatusNullPtr); };
        expectReleasable(make, freeBank.template of<B>(), refused);
    };
    const int melWithFFT = kelFBankWeightMel | kelFBankOwnFFT;
    int order;
    check([&](B** pp) { return initMel(pp, &order, 512, 16000, 60, 8000, 26, 1127, 700, melWithFFT); });
    const auto melLin = [&](B** pp) {
        return initMelLin(pp, &order, 64, 8000, 60, 4000, 6, 99, 5, 1127, 700, kelFBankWeightBin);
    };
    check(melLin);
    check([&](B** pp) { return initEmpty(pp, &order, 512, 26, kelFBankOwnFFT); });
    check(initAuroraLow.template of<B>());
    check(initAuroraHigh.template of<B>());
}

TYPED_TEST(FBankMemory, AccessorStatusesInOrder) {
    using F = TypeParam;
    using B = typename F::Bank;
    expectNullChecks(getCenters.template of<B>(), setCenters.template of<B>(), getCoeffs.template of<B>(),
                     setCoeffs.template of<B>());
    F held(3);
    ASSERT_EQ(initEmpty(&held.bank, &held.order, 16, 3, 0), kelStatusOk);
    for (const auto& bad : {std::array{-1, 2, 3, 4, 5}, {2, 1, 3, 4, 5}, {0, 1, 2, 6, 5}, {0, 1, 2, 3, 9}}) {
        EXPECT_EQ(setCenters(held.bank, bad.data()), kelStatusFBankState);
        expectRefused<F>(held.bank, kelStatusFBankState);
    }
    EXPECT_EQ(setCenters(held.bank, std::array{0, 0, 3, 8, 8}.data()), kelStatusOk);
    EXPECT_EQ(F::evaluate(held.bank), kelStatusOk);
    EXPECT_EQ(setCoeffs(held.bank, 1, std::array{1e9f, 0.0f, -INFINITY, NAN}.data()), kelStatusOk);
    float weight = 0;  // 2^31 - 1 in Q14 is not a float
    inEveryRoundingMode([&] { weight = held.weights(0)[0]; }, [&] { EXPECT_EQ(weight, F::kFixed ? 131072 : 1e9f); });
    EXPECT_EQ(held.weights(0)[2], F::kFixed ? -131072 : -INFINITY);
    Kel32f coeff = 77;
    for (const int fIdx : {INT_MIN, 0, 5}) EXPECT_EQ(getCoeffs(held.bank, fIdx, &coeff), kelStatusSize) << fIdx;
    for (const int fIdx : {INT_MIN, 0, 4}) EXPECT_EQ(setCoeffs(held.bank, fIdx, &coeff), kelStatusSize) << fIdx;
    EXPECT_EQ(coeff, 77);
}

}  // namespace
