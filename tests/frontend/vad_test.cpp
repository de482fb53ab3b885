#include "kels/vad.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <string>

#include "kels/core.h"
#include "kels/fbank.h"
#include "kels/fft.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using test::Guarded;

// A detector whose state stands at an odd address.
class Detector {
  public:
    Detector() { EXPECT_EQ(kelsVADInit_Aurora_32f(bytes()), kelStatusOk); }

    template <class T>
    char decide(const T* mel, const T* spec, int extCount = 0) {
        int result = 0;
        const auto call = [&](auto f) { EXPECT_EQ(f(mel, spec, extCount, &result, bytes()), kelStatusOk); };
        if constexpr (std::is_same_v<T, Kel16s>) {
            call(kelsVADDecision_Aurora_16s);
        } else {
            call(kelsVADDecision_Aurora_32f);
        }
        return letter(result);
    }
    char flush() {
        int result = 0;
        EXPECT_EQ(kelsVADFlush_Aurora_16s(&result, bytes()), kelStatusOk);
        return letter(result);
    }
    KelVADState_Aurora state() {
        KelVADState_Aurora s;
        std::memcpy(&s, bytes(), sizeof(s));
        return s;
    }

  private:
    Kel8u* bytes() { return buffer_ + 1; }
    static char letter(int result) { return result == kelVadSpeech ? 'S' : result == kelVadNoise ? 'n' : '.'; }

    Guarded<Kel8u> buffer_ = Guarded<Kel8u>(65);
};

// A frame of given mel values (all alike, but for the low band) and variance.
struct Frame {
    Guarded<Kel32f> mel = Guarded<Kel32f>(25), spec = Guarded<Kel32f>(64);

    explicit Frame(Kel32f level, Kel32f band = 10, Kel32f deviation = 1) {
        for (int i = 0; i < 25; ++i) mel[i] = i >= 1 && i <= 3 ? band : level;
        for (int i = 0; i < 64; ++i) spec[i] = 50 + (i % 2 == 0 ? deviation : -deviation);
    }
};

// Decisions about frames that are active (1) or not (0); letters times their counts.
std::string decisions(const std::string& frames, int flushes = 0) {
    Detector detector;
    const Frame quiet(10);
    std::string all, brief;
    for (const char c : frames) all += detector.decide(quiet.mel.data(), quiet.spec.data(), c == '1' ? 5 : 4);
    while (flushes-- > 0) all += detector.flush();
    for (std::size_t i = 0; i < all.size();) {
        const std::size_t end = std::min(all.find_first_not_of(all[i], i), all.size());
        brief += all[i] + std::to_string(end - i) + ' ';
        i = end;
    }
    return brief;
}
std::string times(int n, char c) {
    return std::string(static_cast<std::size_t>(n), c);
}

TEST(VoiceActivity, RunsAndHangovers) {
    const std::string start = times(20, '0'), late = times(40, '0'), rest = times(70, '0');
    const struct {
        std::string frames;
        int flushes;
        const char* expected;
    } cases[] = {
        {times(10, '1'), 0, ".10 "},
        {start + "11" + rest, 0, ".10 n82 "},
        {start + "1101100" + rest, 0, ".10 n87 "},
        // A run of three stays in the history for five frames, and the short hangover lasts four more.
        {start + "111" + rest, 0, ".10 n12 S9 n62 "},
        // A run of four stays for four frames, the first of which makes the hangover of the others 40.
        {start + "1111" + rest, 0, ".10 n12 S45 n27 "},
        {late + "1111" + rest, 0, ".10 n32 S28 n44 "},
        {times(32, '0') + "1111" + rest, 0, ".10 n24 S28 n44 "},  // the fourth is frame 36
        {times(31, '0') + "1111" + rest, 0, ".10 n23 S45 n27 "},  // it is 35, and frame 36 takes the longer one
        {late + "1110000001111", 0, ".10 n32 S11 "},
        // Flushing: six decisions over a turning history; none before frame 11.
        {late, 9, ".10 n36 .3 "},
        {late + "111", 9, ".10 n32 S7 .3 "},
        {late + "1111" + times(30, '0'), 9, ".10 n32 S28 n10 .3 "},
        {late + "1111" + times(22, '0'), 9, ".10 n32 S28 n2 .3 "},
        {late + "1110000000", 9, ".10 n32 S9 n5 .3 "},
        {times(7, '0'), 9, ".10 n3 .3 "},
        {"", 20, ".20 "},
    };
    for (const auto& c : cases) EXPECT_EQ(decisions(c.frames, c.flushes), c.expected) << c.frames;
}

TEST(VoiceActivity, NoiseLevelsFollow) {
    Detector detector;
    const auto see = [&](Kel32f level, Kel32f band, Kel32f deviation) {
        const Frame f(level, band, deviation);
        detector.decide(f.mel.data(), f.spec.data());
        return detector.state();
    };
    // 22 values of 4.5 and three of 1: a sum of 102 and an energy of 10401.
    KelVADState_Aurora s = see(4.5f, 1, 2);
    EXPECT_FLOAT_EQ(s.meanMel, 1.1f * 10401);
    EXPECT_FLOAT_EQ(s.thrMel, 10401);
    EXPECT_FLOAT_EQ(s.thrVar, 4);
    EXPECT_FLOAT_EQ(s.thrSpec, 0.75f);
    EXPECT_EQ(s.band, 1);
    EXPECT_EQ(s.prevBand, 0);
    s = see(5, 2, 3);  // a sum of 116, an energy of 13453; the largest values count
    EXPECT_FLOAT_EQ(s.meanMel, 1.1f * (1.1f * 10401 + 13453) / 2);
    EXPECT_FLOAT_EQ(s.thrMel, 13453);
    EXPECT_FLOAT_EQ(s.thrVar, 9);
    EXPECT_FLOAT_EQ(s.thrSpec, 1.75f);
    EXPECT_EQ(s.startTrigger + s.melFlag + s.varFlag + s.specFlag, 0);
    s = see(40, 2, 3);  // an energy of 784993 is more than 2.5 times the mean: speech has begun
    EXPECT_EQ(s.startTrigger, 1);
    EXPECT_FLOAT_EQ(s.thrMel, 13453);
    EXPECT_EQ(s.melFlag, 1);
    for (int i = 3; i < 14; ++i) s = see(5, 2, 3);
    EXPECT_FLOAT_EQ(s.thrMel, 13453);
    EXPECT_FLOAT_EQ(s.thrSpec, 2);
    const struct {
        Kel32f band, deviation, thrSpec, thrVar;
    } later[] = {
        {2.9f, 3.5f, 2 * 0.8f + 0.2f * 2.675f, 9 * 0.8f + 0.2f * 12.25f},  // within 1.5 times
        {2, 10, 2.135f * 0.8f + 0.2f * 2.225f, 9.65f},                     // var above: 100 > 1.65 thrVar
        {8, 2.8f, 2.153f, 9.65f},                                          // b 6.5 beyond 1.5 times; 7.84 below 0.85
        {8, 1.5f, 2.153f, 0.97f * 9.65f + 0.03f * 2.25f},                  // b 8 > 3.25 thrSpec; 2.25 below 0.25
        {0.2f, 3, 2.153f * 0.8f + 0.2f * 2.15f, 9.428f * 0.8f + 0.2f * 9},
        {0.2f, 3, 2.1524f * 0.97f + 0.03f * 0.2f, 9.3424f * 0.8f + 0.2f * 9},
    };
    for (const auto& e : later) {
        s = see(5, e.band, e.deviation);
        EXPECT_NEAR(s.thrSpec, e.thrSpec, 1e-5);
        EXPECT_NEAR(s.thrVar, e.thrVar, 1e-5);
        EXPECT_EQ(s.varFlag, e.deviation == 10);
        EXPECT_EQ(s.specFlag, e.band == 8 && e.deviation == 1.5f);
        EXPECT_EQ(s.melFlag, 0);
    }
    EXPECT_EQ(s.frameCount, 20);
}

// Voiced bursts in noise through an FFT and a mel bank.
class SpeechInNoise : public ::testing::TestWithParam<double> {};
INSTANTIATE_TEST_SUITE_P(Decibels, SpeechInNoise, ::testing::Values(30, 20, 15, 10));

TEST_P(SpeechInNoise, BurstsAreFoundAndPausesAreNot) {
    constexpr int kRate = 8000, kStep = 80, kFrame = 256, kSeconds = 12;
    const auto speaks = [](int n) { return n % (3 * kRate) > 3 * kRate / 2 && n % (3 * kRate) < 5 * kRate / 2; };
    test::Random random(7);
    std::vector<Kel32f> x(kSeconds * kRate);
    const double noise = 3000 * std::pow(10, -GetParam() / 20) * std::sqrt(3.0);
    for (int n = 0; n < kSeconds * kRate; ++n) {
        double voice = 0;
        for (int h = 1; h < 25; ++h) {  // harmonics under formants at 500 and 1500 Hz; the sum has about 1 as its RMS
            const double f = 130.0 * h,
                         a = std::exp(-std::pow((f - 500) / 250, 2)) + std::exp(-std::pow((f - 1500) / 300, 2)) / 2;
            voice += a * 0.75 * std::sin(2 * std::numbers::pi * f * n / kRate);
        }
        x[static_cast<std::size_t>(n)] =
            static_cast<Kel32f>((speaks(n) ? 3000 * voice : 0) + random.uniform(-noise, noise));
    }
    KelFilterBank_32f* bank = nullptr;
    KelFFTSpec_R_32f* fft = nullptr;
    int order = 0;
    ASSERT_EQ(kelsMelFBankInitAlloc_32f(&bank, &order, kFrame, kRate, 64, 4000, 25, 1127, 700, 1), kelStatusOk);
    ASSERT_EQ(kelsFFTInitAlloc_R_32f(&fft, order, kelFftNoDiv, 0), kelStatusOk);
    Detector floats, integers;
    int found = 0, spoken = 0, wrong = 0, silent = 0, frames = 0;
    for (int n = 0; n + kFrame <= kSeconds * kRate; n += kStep, ++frames) {
        Kel32f frame[kFrame], spectrum[kFrame + 2], mel[25];
        for (int i = 0; i < kFrame; ++i) {
            frame[i] = x[static_cast<std::size_t>(n + i)] *
                       static_cast<Kel32f>(0.54 - 0.46 * std::cos(2 * std::numbers::pi * i / 255));
        }
        kelsFFTFwd_RToCCS_32f(frame, spectrum, fft, nullptr);
        kelsMagnitude_32fc(reinterpret_cast<Kel32fc*>(spectrum), spectrum, kFrame / 2 + 1);
        ASSERT_EQ(kelsEvalFBank_32f(spectrum, mel, bank), kelStatusOk);
        // The float form on what the 16-bit form sees: the same state to the bit.
        Kel16s mel16[25], spec16[64];
        kelsConvert_32f16s_Sfs(mel, mel16, 25, 1, 7);
        kelsConvert_32f16s_Sfs(spectrum, spec16, 64, 1, 5);
        kelsConvert_16s32f(mel16, mel, 25);
        kelsConvert_16s32f(spec16, spectrum, 64);
        const char decision = floats.decide(mel, spectrum);
        ASSERT_EQ(integers.decide(mel16, spec16), decision);
        const KelVADState_Aurora a = floats.state(), b = integers.state();
        ASSERT_EQ(std::memcmp(&a, &b, sizeof(a)), 0);
        const int middle = n + kFrame / 2;
        if (n > kRate && speaks(middle - kRate / 10) && speaks(middle + kRate / 10)) {
            ++spoken;
            found += decision == 'S';
        }
        // Later than the longest hangover, or more than the lag before speech.
        if (frames >= 10 && !speaks(middle) && !speaks(middle - kRate / 2)) {
            ++silent;
            wrong += decision == 'S';
        }
    }
    EXPECT_GE(found, 0.98 * spoken) << spoken;
    EXPECT_LE(wrong, 0.02 * silent) << silent;
    kelsFFTFree_R_32f(fft);
    kelsFBankFree_32f(bank);
    kelsFree(bank);  // the block itself stays
}

TEST(VoiceActivity, StatesAndStatuses) {
    int size = 0;
    EXPECT_EQ(kelsVADGetBufSize_Aurora_32f(&size), kelStatusOk);
    EXPECT_EQ(size, 64);
    EXPECT_EQ(kelsVADGetBufSize_Aurora_16s(&size), kelStatusOk);
    EXPECT_EQ(size, 64);
    std::vector<Kel8u> expected(64), state(64, 9);
    std::fill_n(&expected[36], 4, 255);  // flushStop
    expected[40] = 23;                   // longHang
    EXPECT_EQ(kelsVADInit_Aurora_16s(state.data()), kelStatusOk);
    EXPECT_EQ(state, expected);
    const Kel32f f[64] = {};
    const Kel16s s[64] = {};
    int r = 0;
    Kel8u* const p = state.data();
    // clang-format off
    const KelStatus faults[] = {
        kelsVADGetBufSize_Aurora_32f(nullptr), kelsVADInit_Aurora_32f(nullptr), kelsVADFlush_Aurora_32f(nullptr, p),
        kelsVADGetBufSize_Aurora_16s(nullptr), kelsVADInit_Aurora_16s(nullptr), kelsVADFlush_Aurora_16s(&r, nullptr),
        kelsVADDecision_Aurora_32f(nullptr, f, 0, &r, p), kelsVADDecision_Aurora_32f(f, nullptr, 0, &r, p),
        kelsVADDecision_Aurora_32f(f, f, 0, nullptr, p), kelsVADDecision_Aurora_32f(f, f, 0, &r, nullptr),
        kelsVADDecision_Aurora_16s(nullptr, s, 0, &r, p), kelsVADDecision_Aurora_16s(s, s, 0, &r, nullptr)};
    // clang-format on
    for (const KelStatus status : faults) EXPECT_EQ(status, kelStatusNullPtr);
    EXPECT_EQ(state, expected);
    EXPECT_EQ(kelsVADFlush_Aurora_32f(&r, p), kelStatusOk);
    EXPECT_EQ(r, kelVadPending);
}

}  // namespace
