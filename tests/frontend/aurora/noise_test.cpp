// The noise in spectra, and the gains that take it off: decisions, and what is no number.
#include <cstring>

#include "kels/aurora.h"
#include "kels/vad.h"
#include "support/support.h"

namespace {

using namespace test;

constexpr Kel32f kNaN = std::numeric_limits<Kel32f>::quiet_NaN();
constexpr Real kLeast = 4.539993e-5L;

template <class State>
Kel8u* bytes(State& s) {
    return reinterpret_cast<Kel8u*>(&s);
}

std::vector<Kel32f> positive(Random& random, int n) {
    auto v = random.vector<Kel32f>(static_cast<std::size_t>(n), 12);
    for (auto& x : v) x = std::fabs(x);
    return v;
}

// Runs of shifts of one amplitude each, in both types, and what the detector says about them.
TEST(AuroraEnergyDetector, HangsOverAfterFiveLoudShifts) {
    const auto decisions = [](const std::vector<std::pair<int, int>>& runs) {
        KelVADNestState_Aurora s;
        Guarded<Kel8u> odd(sizeof(s) + 1);
        EXPECT_EQ(kelsVADNestInit_Aurora_32f(bytes(s)), kelStatusOk);
        EXPECT_EQ(kelsVADNestInit_Aurora_16s(odd + 1), kelStatusOk);
        std::string said;
        for (const auto& [shifts, amplitude] : runs) {
            Guarded<Kel16s> integers(80);
            Guarded<Kel32f> floats(80);
            for (int i = 0; i < 80; ++i) {
                floats[i] = integers[i] = static_cast<Kel16s>(i % 3 != 0 ? amplitude : -amplitude);
            }
            for (int t = 0; t < shifts; ++t) {
                int result = 0, count = 0, result16 = 0, count16 = 0;
                EXPECT_EQ(kelsVADNestDecision_Aurora_32f(floats, 80, &result, &count, bytes(s)), kelStatusOk);
                EXPECT_EQ(kelsVADNestDecision_Aurora_16s(integers, 80, &result16, &count16, odd + 1), kelStatusOk);
                EXPECT_TRUE(result == result16 && count == count16 && std::memcmp(&s, odd + 1, sizeof(s)) == 0);
                EXPECT_TRUE(result == kelVadSpeech || result == kelVadNoise);
                said += result == kelVadNoise ? '.' : count > 9 ? '+' : static_cast<char>('0' + count);
            }
        }
        return said;
    };
    EXPECT_EQ(decisions({{20, 20}, {4, 200}, {2, 20}}), "....................1234..");
    EXPECT_EQ(decisions({{20, 20}, {5, 200}, {17, 20}}), "....................12345000000000000000..");
    EXPECT_EQ(decisions({{3, 2}, {1, 30000}, {2, 2}}), "......");  // the first four are noise whatever they hold
}

TEST(AuroraEnergyDetector, MeanFollowsQuietShifts) {
    KelVADNestState_Aurora s = {};
    const auto hear = [&](Kel32f amplitude) {
        const Guarded<Kel32f> shift(std::vector<Kel32f>(80, amplitude));
        int result = 0, count = 0;
        kelsVADNestDecision_Aurora_32f(shift.data(), 80, &result, &count, bytes(s));
        return result;
    };
    const Real low = 143.999144L, high = 250.255L;
    for (int t = 0; t < 20; ++t) hear(20);
    EXPECT_NEAR(s.meanEn, low, 1e-3);
    hear(200);  // too far above to be followed
    EXPECT_NEAR(s.meanEn, low, 1e-3);
    hear(25);  // 0.01 of 10.3 upwards, and 0.03 downwards
    const Real above = 16 * std::log2((64 + 80 * 625.0L) / 64) + 0.5L;
    EXPECT_NEAR(s.meanEn, low + 0.01L * (above - low), 1e-3);
    hear(kNaN);  // silence: 0.03 of the way to 0.5
    EXPECT_NEAR(s.meanEn, 0.97L * (low + 0.01L * (above - low)) + 0.03L * 0.5L, 1e-3);
    s = {};
    EXPECT_EQ(hear(0), kelVadNoise);
    EXPECT_EQ(s.meanEn, 80);
    for (int t = 2; t <= 4; ++t) EXPECT_EQ(hear(20000), kelVadNoise);
    EXPECT_EQ(s.speechCount, 0);
    s = {144, std::numeric_limits<Kel32s>::max(), 1, 0, std::numeric_limits<Kel32s>::max()};
    EXPECT_EQ(hear(200), kelVadSpeech);
    EXPECT_TRUE(s.frameCount == std::numeric_limits<Kel32s>::max() && s.speechCount == s.frameCount);
    EXPECT_LT(s.meanEn, high);
}

TEST(AuroraNoise, FollowsEachRule) {
    Random random;
    const auto expected = [](Real n, Real p, int t, int vad) {
        const Real share = t < 100 ? 1.0L / t : 0.01L, N = n * n;
        const Real tracked = N * (0.9L + 0.1L * p / (p + N) * (1 + 1 / (1 + 0.1L * p / N)));
        const Real next = vad == kelVadNoise ? n + share * (std::sqrt(p) - n)
                          : t < 11           ? std::sqrt(N + (p - N) / t)
                                             : std::sqrt(tracked);
        return std::max(t == 1 ? std::sqrt(p) : next, kLeast);
    };
    for (const int vad : {kelVadNoise, kelVadPending, kelVadSpeech}) {
        for (const int frame : {1, 2, 9, 10, 11, 50, 99, 100, 101, 1 << 30}) {
            const int len = random.between(1, 70), spoilt = random.between(0, len - 1);
            auto source = positive(random, len), old = positive(random, len);
            source[static_cast<std::size_t>(spoilt)] = kNaN;
            if (frame == 1) old[0] = kNaN;
            auto noise = old;
            EXPECT_EQ(kelsNoiseSpectrumUpdate_Aurora_32f(source.data(), noise.data(), len, frame, vad), kelStatusOk);
            for (int b = 0; b < len; ++b) {
                const Kel32f before = old[static_cast<std::size_t>(b)];
                if (vad == kelVadSpeech || (b == spoilt && frame > 1)) {
                    EXPECT_TRUE(sameBits(noise[b], before));
                } else {
                    const Real exact = b == spoilt ? kLeast : expected(before, source[b], frame, vad);
                    EXPECT_LE(ulpError(noise[b], exact), 4) << "bin " << b << ", frame " << frame << ", vad " << vad;
                }
            }
        }
    }
}

// A power that is not a number gives the smallest gain twice; then the bin is as after silence.
TEST(AuroraWienerFilter, ForgetsWhatIsNoNumber) {
    Kel32f denoised = 7, gain = 0;
    const Kel32f noise = 10, good = 4e4f;
    for (const auto& [power, smallest] : {std::pair(kNaN, true), {good, true}, {good, false}, {good, false}}) {
        kelsWienerFilterDesign_Aurora_32f(&power, &power, &noise, &denoised, &gain, 1);
        EXPECT_EQ(gain < 0.0735877f, smallest);
    }
}

TEST(AuroraGainFactorization, DeepInNoiseShallowInSpeech) {
    KelGainFactState_Aurora s;
    EXPECT_EQ(kelsGainFactorizationInit_Aurora_32f(bytes(s)), kelStatusOk);
    const std::vector<Kel32f> noise(65, 10), loud(65, 100), spoilt(65, kNaN), silent(65, 1);
    const auto update = [&](const std::vector<Kel32f>& frame) {
        EXPECT_EQ(kelsGainFactorizationUpdate_Aurora_32f(frame.data(), 65, bytes(s)), kelStatusOk);
    };
    const auto expectGains = [&](const std::vector<Kel32f>& frame, const std::vector<double>& expected) {
        for (const double gain : expected) {
            update(frame);
            Kel32f half = 0.5f;
            EXPECT_EQ(kelsGainFactorization_Aurora_32f(noise.data(), 65, &half, &half, 1, bytes(s)), kelStatusOk);
            EXPECT_NEAR(half, gain, 1e-6);
        }
    };
    update(noise);
    update(noise);
    expectGains(noise, std::vector<double>(12, 0.6));
    EXPECT_NEAR(s.lowSnr, 0, 1e-6);
    expectGains(loud, {0.75, 0.9, 0.95, 0.95});
    expectGains(noise, {0.95, 0.95, 0.875, 0.8, 0.725, 0.65, 0.6, 0.6});
    expectGains(silent, {0.6, 0.6});
    EXPECT_LT(s.lowSnr, -0.5);
    // Not a number counts as the lowest ratio, and is gone after three frames.
    expectGains(spoilt, {0.6});
    expectGains(noise, {0.6, 0.6, 0.75});  // which is above what the lowest ratio has become
    EXPECT_TRUE(std::isfinite(s.lowSnr));
    EXPECT_EQ(s.frameCount, 30);
}

}  // namespace
