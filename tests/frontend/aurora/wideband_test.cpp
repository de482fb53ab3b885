// The extension to 16 kHz: half bands in blocks, and the noise of the upper one.

#include "kels/aurora.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr Kel32f kNaN = std::numeric_limits<Kel32f>::quiet_NaN();

template <class State>
Kel8u* bytes(State& s) {
    return reinterpret_cast<Kel8u*>(&s);
}

struct Bands {
    std::vector<Kel32f> low, high;
};
template <class T, class F>
Bands split(F f, const std::vector<T>& x, const std::vector<int>& blocks) {
    KelLowHighState_Aurora s;
    EXPECT_EQ(kelsLowHighFilterInit_Aurora_32f(bytes(s)), kelStatusOk);
    Bands bands;
    for (std::size_t from = 0, i = 0; from < x.size(); ++i) {
        const auto n = std::min<std::size_t>(static_cast<std::size_t>(blocks[i % blocks.size()]), x.size() - from);
        std::vector<Kel32f> low(n / 2), high(n / 2);
        EXPECT_EQ(f(&x[from], low.data(), high.data(), static_cast<int>(n), bytes(s)), kelStatusOk);
        bands.low.insert(bands.low.end(), low.begin(), low.end());
        bands.high.insert(bands.high.end(), high.begin(), high.end());
        from += n;
    }
    return bands;
}

TEST(AuroraHalfBands, BlocksAndTypesGiveTheSame) {
    Random random;
    const auto integers = random.vector<Kel16s>(3000);
    const std::vector<Kel32f> floats(integers.begin(), integers.end());
    const auto whole = split(kelsLowHighFilter_Aurora_32f, floats, {3000});
    const auto typed = split(kelsLowHighFilter_Aurora_16s32f, integers, {3000});
    EXPECT_TRUE(sameBits(typed.low, whole.low) && sameBits(typed.high, whole.high));
    for (const auto& blocks : {std::vector<int>{2}, {160}, {6, 258, 2, 256, 118}}) {
        const auto parts = split(kelsLowHighFilter_Aurora_32f, floats, blocks);
        for (std::size_t k = 0; k < whole.low.size(); ++k) {
            EXPECT_NEAR(parts.low[k], whole.low[k], 0.03);
            EXPECT_NEAR(parts.high[k], whole.high[k], 0.03);
        }
    }
}

TEST(AuroraHighBands, NoiseIsSubtracted) {
    KelHighBandState_Aurora s;
    EXPECT_EQ(kelsHighBandInit_Aurora_32f(bytes(s)), kelStatusOk);
    const auto subtract = [&](std::vector<Kel32f> bands, Kel32f expected) {
        EXPECT_EQ(kelsHighBandSpectralSubtraction_Aurora_32f(bands.data(), bands.data(), bytes(s)), kelStatusOk);
        EXPECT_NEAR(bands[0], expected, 1e-5 * expected);
    };
    for (int t = 1; t <= 5; ++t) subtract({100, 100, 100}, 10);
    EXPECT_NEAR(s.meanEn, 5.703782, 1e-6);
    subtract({1e4f, 1e4f, 1e4f}, 9850);
    EXPECT_TRUE(s.vadFlag == 1 && s.speechCount == 1 && s.noise[2] == 100);
    for (int t = 7; t <= 9; ++t) subtract({100, 100, 100}, 10);
    // From frame 10 on: upwards slowly, downwards as the mean of the first hundred.
    subtract({150, 90, kNaN}, 15);
    EXPECT_NEAR(s.noise[0], 100.25, 1e-4);
    EXPECT_NEAR(s.noise[1], 99, 1e-4);
    EXPECT_EQ(s.noise[2], 100);
}

TEST(AuroraHighBands, TakeWhatIsNoNumberForTheFloor) {
    const Kel32f ref[] = {2, 3, 4}, energies[] = {1000, 1e-6f, kNaN};
    Kel32f codes[9], logs[3];
    EXPECT_EQ(kelsHighBandCoding_Aurora_32f(ref, energies, codes), kelStatusOk);
    EXPECT_EQ(kelsHighBandDecoding_Aurora_32f(ref, codes, logs), kelStatusOk);
    const double expected[] = {std::log(1000.0), -10, -10};
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(logs[i], expected[i], 1e-5);

    KelHighBandState_Aurora s = {};
    Kel32f spoilt[] = {kNaN, 50, 50};
    EXPECT_EQ(kelsHighBandSpectralSubtraction_Aurora_32f(spoilt, spoilt, bytes(s)), kelStatusOk);
    EXPECT_TRUE(std::isnan(spoilt[0]) && spoilt[1] == 5);
    EXPECT_NEAR(s.noise[0], 4.539993e-5, 1e-10);
}

}  // namespace
