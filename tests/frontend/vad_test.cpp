#include "kels/vad.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "support/checks.h"
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
        KelStatus status;
        if constexpr (std::is_same_v<T, Kel16s>) {
            status = kelsVADDecision_Aurora_16s(mel, spec, extCount, &result, bytes());
        } else {
            status = kelsVADDecision_Aurora_32f(mel, spec, extCount, &result, bytes());
        }
        EXPECT_EQ(status, kelStatusOk);
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

// Decisions about runs of frames, by turns not active and active, the first not; letters times their counts.
std::string decisions(const std::vector<int>& runs, int flushes) {
    Detector detector;
    const Frame quiet(10);
    std::string all, brief;
    for (std::size_t run = 0; run < runs.size(); ++run) {
        for (int i = 0; i < runs[run]; ++i)
            all += detector.decide(quiet.mel.data(), quiet.spec.data(), run % 2 ? 5 : 4);
    }
    while (flushes-- > 0) all += detector.flush();
    for (std::size_t i = 0; i < all.size();) {
        const std::size_t end = std::min(all.find_first_not_of(all[i], i), all.size());
        brief += all[i] + std::to_string(end - i) + ' ';
        i = end;
    }
    return brief;
}

TEST(VoiceActivity, RunsAndHangovers) {
    const struct {
        std::vector<int> runs;
        int flushes;
        const char* expected;
    } cases[] = {
        {{0, 10}, 0, ".10 "},
        {{20, 2, 70}, 0, ".10 n82 "},
        {{20, 2, 1, 2, 72}, 0, ".10 n87 "},
        // A run of three stays in the history for five frames, and the short hangover lasts four more.
        {{20, 3, 70}, 0, ".10 n12 S9 n62 "},
        // A run of four stays for four frames, the first of which makes the hangover of the others 40.
        {{20, 4, 70}, 0, ".10 n12 S45 n27 "},
        {{40, 4, 70}, 0, ".10 n32 S28 n44 "},
        {{32, 4, 70}, 0, ".10 n24 S28 n44 "},  // the fourth is frame 36
        {{31, 4, 70}, 0, ".10 n23 S45 n27 "},  // it is 35, and frame 36 takes the longer one
        {{40, 3, 6, 4}, 0, ".10 n32 S11 "},
        // Flushing: six decisions over a turning history; none before frame 11.
        {{40}, 9, ".10 n36 .3 "},
        {{40, 3}, 9, ".10 n32 S7 .3 "},
        {{40, 4, 30}, 9, ".10 n32 S28 n10 .3 "},
        {{40, 4, 22}, 9, ".10 n32 S28 n2 .3 "},
        {{40, 3, 7}, 9, ".10 n32 S9 n5 .3 "},
        {{7}, 9, ".10 n3 .3 "},
        {{}, 20, ".20 "},
    };
    for (const auto& c : cases) EXPECT_EQ(decisions(c.runs, c.flushes), c.expected);
}

TEST(VoiceActivity, NoiseLevelsFollow) {
    constexpr double e1 = 102 * 102 - 3, e2 = 116 * 116 - 3;  // sums of mel values: 22 levels and three of the band
    const struct {
        int frames;  // alike
        Kel32f level, band, deviation;
        double thrMel, thrVar, thrSpec;
        const char* flags;  // of energy, variance and low band
    } rows[] = {
        // The largest values count until frame 15, those of energies until speech begins: above 2.5 times the mean.
        {1, 4.5f, 1, 2, e1, 4, 0.75, "000"},
        {1, 5, 2, 3, e2, 9, 1.75, "000"},
        {1, 40, 2, 3, e2, 9, 2, "100"},
        {11, 5, 2, 3, e2, 9, 2, "000"},
        // Values within 1.5 times the level move it by a fifth, those far below by 0.03, others not.
        {1, 5, 2.9f, 3.5f, 13579.738, 10.0 - 0.35, 2 * 0.8 + 0.2 * 2.675, "000"},
        {1, 5, 2, 4, 13554.390, 9.65, 2.135 * 0.8 + 0.2 * 2.225, "010"},      // 16 > 1.65 thrVar > 1.5 thrVar
        {1, 5, 8, 2.8f, 14434.112, 9.65, 2.153, "000"},                       // 6.5 beyond 1.5 times; 7.84 below 0.85
        {1, 5, 8, 1.5f, 15137.890, 0.97 * 9.65 + 0.03 * 2.25, 2.153, "001"},  // 8 > 3.25 thrSpec; 2.25 below 0.25
        {1, 5, 0.2f, 3, 14556.184, 9.428 * 0.8 + 0.2 * 9, 2.153 * 0.8 + 0.2 * 2.15, "000"},
        {1, 5, 0.2f, 3, 14090.819, 9.3424 * 0.8 + 0.2 * 9, 2.1524 * 0.97 + 0.03 * 0.2, "000"},
    };
    Detector detector;
    int frames = 0;
    for (const auto& row : rows) {
        const Frame frame(row.level, row.band, row.deviation);
        for (int i = 0; i < row.frames; ++i) detector.decide(frame.mel.data(), frame.spec.data());
        frames += row.frames;
        const KelVADState_Aurora s = detector.state();
        EXPECT_NEAR(s.thrMel, row.thrMel, 1e-6 * row.thrMel) << frames;
        EXPECT_NEAR(s.thrVar, row.thrVar, 1e-6 * row.thrVar) << frames;
        EXPECT_NEAR(s.thrSpec, row.thrSpec, 1e-6 * row.thrSpec) << frames;
        EXPECT_EQ(std::to_string(s.melFlag) + std::to_string(s.varFlag) + std::to_string(s.specFlag), row.flags);
        EXPECT_EQ(s.startTrigger, frames >= 3);
        EXPECT_EQ(s.band, row.band);
        EXPECT_EQ(s.frameCount, frames);
        const double meanMel = frames == 1 ? 1.1 * e1 : 1.1 * (1.1 * e1 + e2) / 2;
        EXPECT_NEAR(s.meanMel, frames <= 2 ? meanMel : s.meanMel, 1e-6 * meanMel);
    }
}

TEST(VoiceActivity, BurstsInNoiseAreFoundByBothForms) {
    test::Random random(7);
    for (const double decibels : {30, 20, 15, 10}) {
        const double gain = std::pow(10, decibels / 20);
        Detector floats, integers;
        int wrong = 0;
        for (int t = 0; t < 1200; ++t) {
            const int phase = t % 300;
            const bool speech = phase >= 150 && phase < 250;
            Kel16s features[25 + 64];
            Kel32f same[25 + 64];
            for (int i = 0; i < 25 + 64; ++i) {
                const double level = 300 * random.uniform(0.5, 1.5) * (speech ? gain : 1);
                same[i] = features[i] = static_cast<Kel16s>(level);
            }
            const char decision = floats.decide(same, same + 25);
            ASSERT_EQ(integers.decide(features, features + 25), decision);
            const KelVADState_Aurora a = floats.state(), b = integers.state();
            ASSERT_EQ(std::memcmp(&a, &b, sizeof(a)), 0);
            // The first frames of a burst and the hangover after it are not judged.
            const bool settled = speech ? phase >= 154 : phase < 150 && t >= 10;
            wrong += settled && decision != (speech ? 'S' : 'n');
        }
        EXPECT_LE(wrong, 10) << decibels;
    }
}

TEST(VoiceActivity, StatesAndStatuses) {
    int sizes[2] = {};
    EXPECT_EQ(kelsVADGetBufSize_Aurora_32f(&sizes[0]), kelStatusOk);
    EXPECT_EQ(kelsVADGetBufSize_Aurora_16s(&sizes[1]), kelStatusOk);
    EXPECT_TRUE(sizes[0] == 64 && sizes[1] == 64);
    std::vector<Kel8u> expected(64), state(64, 9);
    std::fill_n(&expected[36], 4, 255);  // flushStop
    expected[40] = 23;                   // longHang
    EXPECT_EQ(kelsVADInit_Aurora_16s(state.data()), kelStatusOk);
    EXPECT_EQ(state, expected);
    EXPECT_EQ(kelsVADFlush_Aurora_32f(&sizes[0], state.data()), kelStatusOk);
    EXPECT_EQ(sizes[0], kelVadPending);
    test::expectNullChecks(kelsVADGetBufSize_Aurora_32f, kelsVADGetBufSize_Aurora_16s, kelsVADInit_Aurora_32f,
                           kelsVADInit_Aurora_16s, kelsVADDecision_Aurora_32f, kelsVADDecision_Aurora_16s,
                           kelsVADFlush_Aurora_32f, kelsVADFlush_Aurora_16s);
}

}  // namespace
