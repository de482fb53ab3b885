// Voice activity detection: decisions over runs of frames, and the noise levels that follow them.
#include "kels/vad.h"

#include <cstring>

#include "support/support.h"

namespace {

using namespace test;

using State = KelVADState_Aurora;

Kel8u* bytes(State& s) {
    return reinterpret_cast<Kel8u*>(&s);
}

// A frame of given mel values (all alike, but for the low band) and variance.
template <class T>
struct Frame {
    Guarded<T> mel = Guarded<T>(25), spec = Guarded<T>(64);

    Frame(int level, int band, int deviation) {
        for (int i = 0; i < 25; ++i) mel[i] = static_cast<T>(i >= 1 && i <= 3 ? band : level);
        for (int i = 0; i < 64; ++i) spec[i] = static_cast<T>(500 + (i % 2 == 0 ? deviation : -deviation));
    }
};

// Runs of frames, by turns not active and active, the first not, then nine flushes: letters times their counts.
TEST(VoiceActivity, RunsAndHangovers) {
    const struct {
        std::vector<int> runs;
        const char* expected;
    } rows[] = {
        {{20, 2, 1, 2, 72}, ".10 n93 .3 "},
        // A run of three stays in the history for five frames, and the short hangover lasts four more.
        {{20, 3, 70}, ".10 n12 S9 n68 .3 "},
        // A run of four stays for four frames, the first of which makes the hangover of the others 40.
        {{20, 4, 70}, ".10 n12 S45 n33 .3 "},
        {{32, 4, 70}, ".10 n24 S28 n50 .3 "},  // the fourth is frame 36
        {{31, 4, 70}, ".10 n23 S45 n33 .3 "},  // it is 35, and frame 36 takes the longer one
        {{40, 3, 6, 4}, ".10 n32 S17 .3 "},
        // Flushing: six decisions over a turning history; none before frame 11.
        {{40, 3}, ".10 n32 S7 .3 "},
        {{40, 4, 22}, ".10 n32 S28 n2 .3 "},
        {{40, 3, 7}, ".10 n32 S9 n5 .3 "},
        {{7}, ".10 n3 .3 "},
    };
    const Frame<Kel32f> quiet(100, 100, 10);
    for (const auto& row : rows) {
        State state;
        EXPECT_EQ(kelsVADInit_Aurora_32f(bytes(state)), kelStatusOk);
        std::string all, brief;
        int result = 0, count = 0;
        const auto tell = [&](KelStatus status) {
            EXPECT_EQ(status, kelStatusOk);
            all += result == kelVadSpeech ? 'S' : result == kelVadNoise ? 'n' : '.';
        };
        for (std::size_t i = 0; i < row.runs.size(); ++i) {
            const int active = 4 + i % 2;
            for (int k = 0; k < row.runs[i]; ++k) {
                tell(kelsVADDecision_Aurora_32f(quiet.mel.data(), quiet.spec.data(), active, &result, bytes(state)));
            }
        }
        for (const auto flush : {kelsVADFlush_Aurora_16s, kelsVADFlush_Aurora_32f, kelsVADFlush_Aurora_16s}) {
            for (int i = 0; i < 3; ++i) tell(flush(&result, bytes(state)));
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            ++count;
            if (all[i] == all[i + 1]) continue;
            brief += all[i] + std::to_string(std::exchange(count, 0)) + ' ';
        }
        EXPECT_EQ(brief, row.expected);
    }
}

// Of both forms, whose states are the same, that of integers at an odd address.
TEST(VoiceActivity, NoiseLevelsFollow) {
    const auto e = [](double level, double band) { return std::pow(22 * level + 3 * band, 2) - 3; };  // the energy
    const double first = e(50, 20), rising = 0.8 * first + 0.2 * e(50, 29);
    const double later = 0.8 * rising + 0.2 * e(50, 20), last = 0.8 * later + 0.2 * e(50, 80);
    const struct {
        int frames;  // alike
        int level, band, deviation;
        double thrMel, thrVar, thrSpec;
        const char* flags;  // of energy, variance and low band
    } rows[] = {
        // The largest values count until frame 15, those of energies until speech begins: above 2.5 times the mean.
        {1, 45, 10, 20, e(45, 10), 400, 7.5, "000"},
        {1, 50, 20, 30, first, 900, 17.5, "000"},
        {1, 400, 20, 30, first, 900, 20, "100"},
        {11, 50, 20, 30, first, 900, 20, "000"},
        // Values within 1.5 times the level move it by a fifth, those far below by 0.03, others not.
        {1, 50, 29, 35, rising, 965, 20 * 0.8 + 0.2 * 26.75, "000"},
        {1, 50, 20, 40, later, 965, 21.35 * 0.8 + 0.2 * 22.25, "010"},  // 1600 > 1.65 thrVar > 1.5 thrVar
        {1, 50, 80, 28, last, 965, 21.53, "000"},                       // 65 beyond 1.5 times; 784 below 0.85
        {1, 50, 80, 15, 0.8 * last + 0.2 * e(50, 80), 0.97 * 965 + 0.03 * 225, 21.53, "001"},  // 80 > 3.25 thrSpec
        {1, 90, 2, 30, 0.8 * last + 0.2 * e(50, 80), 942.8 * 0.8 + 0.2 * 900, 21.53 * 0.8 + 0.2 * 21.5, "100"},
        {1, 5, 2, 30, 0.97 * (0.8 * last + 0.2 * e(50, 80)) + 0.03 * e(5, 2), 934.24 * 0.8 + 0.2 * 900,
         21.524 * 0.97 + 0.03 * 2, "000"},
    };
    State s;
    Guarded<Kel8u> odd(sizeof(s) + 1);
    EXPECT_EQ(kelsVADInit_Aurora_32f(bytes(s)), kelStatusOk);
    EXPECT_EQ(kelsVADInit_Aurora_16s(odd + 1), kelStatusOk);
    EXPECT_TRUE(s.flushStop == -1 && s.longHang == 23 && s.history[0] == 0);
    int frames = 0, result = 0, result16 = 0;
    for (const auto& row : rows) {
        const Frame<Kel32f> floats(row.level, row.band, row.deviation);
        const Frame<Kel16s> integers(row.level, row.band, row.deviation);
        for (int i = 0; i < row.frames; ++i, ++frames) {
            kelsVADDecision_Aurora_32f(floats.mel.data(), floats.spec.data(), 0, &result, bytes(s));
            kelsVADDecision_Aurora_16s(integers.mel.data(), integers.spec.data(), 0, &result16, odd + 1);
            EXPECT_TRUE(result == result16 && std::memcmp(&s, odd + 1, sizeof(s)) == 0);
        }
        EXPECT_NEAR(s.thrMel, row.thrMel, 1e-6 * row.thrMel) << frames;
        EXPECT_NEAR(s.thrVar, row.thrVar, 1e-6 * row.thrVar) << frames;
        EXPECT_NEAR(s.thrSpec, row.thrSpec, 1e-6 * row.thrSpec) << frames;
        EXPECT_TRUE(s.band == row.band && s.prevBand == row.band) << s.band << " " << s.prevBand;
        EXPECT_EQ(std::to_string(s.melFlag) + std::to_string(s.varFlag) + std::to_string(s.specFlag), row.flags);
        EXPECT_EQ(s.history[s.histIdx], frames > 10 && std::strchr(row.flags, '1') != nullptr);
    }
}

}  // namespace
