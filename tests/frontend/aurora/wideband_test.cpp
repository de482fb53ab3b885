// The extension to 16 kHz: half bands, and the bands of the upper one.
#include <cstring>

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
        const auto begin = x.begin() + static_cast<std::ptrdiff_t>(from);
        Guarded<T> src(std::vector<T>(begin, begin + static_cast<std::ptrdiff_t>(n)));
        Guarded<Kel32f> low(n / 2), high(n / 2);
        EXPECT_EQ(f(src.data(), low.data(), high.data(), static_cast<int>(n), bytes(s)), kelStatusOk);
        for (std::size_t k = 0; k < n / 2; ++k) {
            bands.low.push_back(low[k]);
            bands.high.push_back(high[k]);
        }
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

// The sums with alternating signs, from the impulse response that the lower band shows.
TEST(AuroraHalfBands, UpperBandIsTheLowerOneTurned) {
    Real taps[118];
    for (const int parity : {0, 1}) {
        std::vector<Kel32f> impulse(240);
        impulse[static_cast<std::size_t>(parity)] = 8388608;
        const auto bands = split(kelsLowHighFilter_Aurora_32f, impulse, {240});
        // x[n] = 1 meets h[117 + n - 2k] in output k.
        for (int k = parity; k < 59 + parity; ++k) taps[117 + parity - 2 * k] = bands.low[static_cast<std::size_t>(k)];
    }
    Real sum = 0;
    for (int j = 0; j < 118; ++j) {
        EXPECT_EQ(taps[j], taps[117 - j]);
        sum += taps[j];
    }
    EXPECT_EQ(taps[0], 1584);
    EXPECT_EQ(taps[58], 3562497);
    EXPECT_NEAR(sum / 8388608, 0.9965532, 1e-7);
    Random random;
    const auto x = random.vector<Kel16s>(600);
    const auto bands = split(kelsLowHighFilter_Aurora_16s32f, x, {34});
    for (int k = 0; k < 300; ++k) {
        Real low = 0, high = 0, size = 0;
        for (int j = std::max(0, 117 - 2 * k); j < 118; ++j) {
            const Real term = taps[j] / 8388608 * x[static_cast<std::size_t>(2 * k - 117 + j)];
            low += term;
            high += (j + k) % 2 == 0 ? -term : term;
            size += std::fabs(term);
        }
        EXPECT_NEAR(bands.low[static_cast<std::size_t>(k)], low, 20 * 6e-8 * size) << k;
        EXPECT_NEAR(bands.high[static_cast<std::size_t>(k)], high, 20 * 6e-8 * size) << k;
    }
    Kel32f out[2];
    KelLowHighState_Aurora s;
    EXPECT_EQ(kelsLowHighFilter_Aurora_16s32f(x.data(), out, out + 1, 3, bytes(s)), kelStatusSize);
}

TEST(AuroraHighBands, CodesGiveBackTheEnergies) {
    Random random;
    std::vector<Kel32f> spectrum(129);
    for (auto& p : spectrum) p = static_cast<Kel32f>(random.uniform(1, 1000));
    const Guarded<Kel32f> fine(spectrum), coarse(std::vector<Kel32f>(spectrum.begin(), spectrum.begin() + 65));
    Guarded<Kel32f> ref(3), late(3), codes(9), logs(3);
    EXPECT_EQ(kelsHighBandCodingRef_Aurora_32f(coarse.data(), ref), kelStatusOk);
    EXPECT_EQ(kelsHighBandDecodingRef_Aurora_32f(fine.data(), late), kelStatusOk);
    const auto sumLog = [&](int first, int last, Real share) {
        Real sum = 0;
        for (int b = first; b <= last; ++b) sum += spectrum[static_cast<std::size_t>(b)];
        return std::log(share * sum);
    };
    const int coding[][2] = {{33, 38}, {39, 48}, {49, 64}}, decoding[][2] = {{66, 76}, {78, 96}, {98, 128}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_LE(ulpError(ref[i], sumLog(coding[i][0], coding[i][1], 1)), 1);
        EXPECT_LE(ulpError(late[i], sumLog(decoding[i][0], decoding[i][1], 0.5L)), 1);
    }
    const Guarded<Kel32f> energies = {1000, 1e-6f, kNaN};
    EXPECT_EQ(kelsHighBandCoding_Aurora_32f(ref.data(), energies.data(), codes), kelStatusOk);
    EXPECT_EQ(kelsHighBandDecoding_Aurora_32f(ref.data(), codes.data(), logs), kelStatusOk);
    EXPECT_NEAR(logs[0], std::log(1000.0), 1e-5);
    EXPECT_NEAR(logs[1], -10, 1e-5);
    EXPECT_NEAR(logs[2], -10, 1e-5);
    // References lower by 1, 2 and 3, in the place of the result.
    for (int i = 0; i < 3; ++i) late[i] = ref[i] - static_cast<Kel32f>(i + 1);
    EXPECT_EQ(kelsHighBandDecoding_Aurora_32f(late.data(), codes.data(), late), kelStatusOk);
    EXPECT_NEAR(late[0], std::log(1000.0) - 0.1 - 0.4 - 2.1, 1e-5);
}

TEST(AuroraHighBands, NoiseIsSubtractedAndMerged) {
    KelHighBandState_Aurora s;
    EXPECT_EQ(kelsHighBandInit_Aurora_32f(bytes(s)), kelStatusOk);
    const auto subtract = [&](const std::vector<Kel32f>& energies, Kel32f expected) {
        Guarded<Kel32f> bands(energies);
        EXPECT_EQ(kelsHighBandSpectralSubtraction_Aurora_32f(bands, bands, bytes(s)), kelStatusOk);
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
    s = {};
    Guarded<Kel32f> spoilt = {kNaN, 50, 50};
    EXPECT_EQ(kelsHighBandSpectralSubtraction_Aurora_32f(spoilt, spoilt, bytes(s)), kelStatusOk);
    EXPECT_TRUE(std::isnan(spoilt[0]) && spoilt[1] == 5);
    EXPECT_NEAR(s.noise[0], 4.539993e-5, 1e-10);

    const Guarded<Kel32f> coded = {8, 7, 6}, high = {1000, 500, 200};
    Guarded<Kel32f> logs(std::vector<Kel32f>(26, 9));
    Kel32f energy = 0;
    EXPECT_EQ(kelsHighBandMerge_Aurora_32f(coded.data(), high.data(), logs, &energy), kelStatusOk);
    EXPECT_EQ(logs[21], 9);
    const double expected[] = {8.862836, 8.451344, 7.406236, 6.431349};
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(logs[22 + i], expected[i], 2e-6);
    EXPECT_NEAR(energy, 3657.154, 2e-3);
}

}  // namespace
