// The bank in the caller's memory, and the conversions between frequencies and mel.

#include "kels/fbank.h"
#include "support/support.h"

namespace {

using namespace test;

struct Shape {
    int fftLen, sampFreq, low, high, nFilter, melMul, melDiv;
};

// At the end of a page but for `rest` bytes, which must stay as they are.
struct FixedBank {
    Shape s;
    int size = -1, order = -1;
    Guarded<Kel8u> memory;

    FixedBank(const Shape& shape, int rest) : s(shape), memory(std::vector<Kel8u>(bytes() + rest, 0xA5)) {
        EXPECT_EQ(kelsMelFBankInit_32s(memory, &order, s.fftLen, s.sampFreq, s.low, s.high, s.nFilter, s.melMul << 15,
                                       s.melDiv << 15, kelFBankWeightBin),
                  kelStatusOk);
        EXPECT_EQ(std::count(memory + size, memory + size + rest, 0xA5), rest);
    }
    int bytes() {
        EXPECT_EQ(kelsMelFBankGetSize_32s(s.fftLen, s.nFilter, kelFBankWeightBin, &size), kelStatusOk);
        return size;
    }
    std::vector<Kel32s> evaluate(const std::vector<Kel32s>& spectrum, int scaleFactor) {
        const Guarded<Kel32s> src(spectrum);
        Guarded<Kel32s> dst(s.nFilter);
        auto* const bank = reinterpret_cast<KelFilterBank_32s*>(memory.data());
        EXPECT_EQ(kelsEvalFBank_32s_Sfs(src.data(), dst, bank, scaleFactor), kelStatusOk);
        return dst.vector();
    }
    // weights()[i][m]: impulses of 2^30 read them out exactly.
    std::vector<std::vector<Kel32s>> weights() {
        std::vector<std::vector<Kel32s>> w;
        std::vector<Kel32s> impulse((std::size_t{1} << order) / 2 + 1);
        for (auto& bin : impulse) {
            bin = 1 << 30;
            w.push_back(evaluate(impulse, 0));
            bin = 0;
        }
        return w;
    }
};

TEST(FixedBank, WeightsFollowTheFormulasAtEveryAlignment) {
    const Shape shapes[] = {{512, 16000, 64, 8000, 26, 1127, 700},
                            {32, 8000, 0, 4000, 16, 1127, 700},
                            {1000, 48000, 1, 24000, 40, 2595, 700},
                            {256, 8000, 300, 24000, 12, 32767, 8191},
                            {2048, 44100, 20, 20000, 3, 17, 17}};
    for (const Shape& s : shapes) {
        for (const int rest : {0, 1, 8, 31}) {
            FixedBank bank(s, rest);
            const auto w = bank.weights();
            const int bins = static_cast<int>(w.size());
            const Real binScale = static_cast<Real>(1 << bank.order) / s.sampFreq;
            const auto mel = [&](Real f) { return std::log(1 + f / s.melDiv); };
            std::vector<int> c;
            for (int k = 0; k < s.nFilter + 2; ++k) {
                const Real m = mel(s.low) + k * (mel(s.high) - mel(s.low)) / (s.nFilter + 1);
                const Real hertz = s.melDiv * (std::exp(m) - 1);
                c.push_back(static_cast<int>(std::min<Real>(std::nearbyint(hertz * binScale), bins - 1)));
            }
            for (int m = 0; m < s.nFilter; ++m) {
                for (int i = 0; i < bins; ++i) {
                    int64_t exact = 0;
                    if (i >= c[m] && i <= c[m + 1]) exact = (int64_t{i - c[m] + 1} << 30) / (c[m + 1] - c[m] + 1);
                    if (i > c[m + 1] && i <= c[m + 2]) {
                        exact = (int64_t{c[m + 2] + 1 - i} << 30) / (c[m + 2] - c[m + 1] + 1);
                    }
                    ASSERT_EQ(w[i][m], exact) << s.fftLen << ": " << m << " " << i;
                }
            }
        }
    }
}

TEST(FixedBank, SumsScaleRoundAndSaturate) {
    Random random;
    FixedBank bank({512, 16000, 64, 8000, 26, 1127, 700}, 0), wide({8192, 8000, 1, 4000, 1, 8000, 8000}, 0);
    const auto w = bank.weights();
    for (int scaleFactor = -31; scaleFactor <= 31; ++scaleFactor) {
        auto spectrum = random.vector<Kel32s>(w.size());
        for (auto& bin : spectrum) bin >>= scaleFactor % 3 == 0 ? 20 : 0;
        const auto got = bank.evaluate(spectrum, scaleFactor);
        for (std::size_t m = 0; m < got.size(); ++m) {
            int64_t sum = 0;
            for (std::size_t i = 0; i < w.size(); ++i) sum += (static_cast<int64_t>(w[i][m]) * spectrum[i]) >> 8;
            const Real shifted = std::floor(scaled(static_cast<Real>(sum), scaleFactor));
            EXPECT_EQ(got[m], saturated<Kel32s>(std::floor(scaled(shifted, 22) + 0.5L))) << scaleFactor;
        }
    }
    // All bins at full scale in one wide filter: the sum itself reaches 64 bits.
    for (const Kel32s end : {INT32_MAX, INT32_MIN}) EXPECT_EQ(wide.evaluate(std::vector<Kel32s>(4097, end), 0)[0], end);
}

TEST(FixedBank, StatusesInOrder) {
    expectNullChecks(kelsMelFBankGetSize_32s, kelsMelFBankInit_32s, kelsEvalFBank_32s_Sfs);
    // Arguments: fftLen, nFilter, flag.
    expectSteps(
        kelsMelFBankGetSize_32s, {512, 999, 1, 0},
        {{1, 0, -6}, {1, 999, -70}, {0, 31, -6}, {0, 8193, -6}, {0, 512, -70}, {2, 6, -70}, {2, 2, -6}, {1, 257, -6}});
    // Arguments: buffer, order, 2 fftLen, 3 sampFreq, 4 lowFreq, 5 highFreq, 6 nFilter, 7 melMul, 8 melDiv, 9 flag.
    expectSteps(kelsMelFBankInit_32s, {0, 0, 512, 0, -1, 1, 999, 0, 0, 0},
                {{6, 0, -6},       {6, 999, -70},    {5, 0, -6},          {5, 1, -70},      {2, 31, -6},
                 {2, 8193, -6},    {2, 512, -70},    {9, 3, -70},         {9, 2, -6},       {4, 2, -6},
                 {3, 48001, -6},   {3, 8000, -71},   {4, -1, -6},         {4, 0, -5},       {4, 1, -71},
                 {5, 24001, -71},  {5, 3, -5},       {8, 1 << 20, -5},    {7, 0x80000, -5}, {7, 0x40000000, -5},
                 {7, 1 << 20, -6}, {8, 0x80000, -5}, {8, 0x10000000, -5}, {8, 1 << 20, -6}, {6, 258, -6}});
    expectSteps(kelsEvalFBank_32s_Sfs, {}, {{3, 32, -5}, {3, -32, -5}});
    int size = 0, order = 0;
    EXPECT_EQ(kelsMelFBankGetSize_32s(300, 256, 2, &size), 0);
    EXPECT_EQ(size, 4 * 256 + 96 + 18 * 516 + 2 * 516 * 265 + 2 * 516 * 256 + 64);
    std::vector<Kel8u> enough(600000);
    EXPECT_EQ(kelsMelFBankInit_32s(enough.data(), &order, 512, 8000, 2, 3, 257, 1 << 20, 1 << 20, 2), 0);
}

TEST(Mel, ConvertsBothWays) {
    Random random;
    Guarded<Kel32f> hertz(99), mel(99), back(99);
    for (int i = 0; i < 99; ++i) hertz[i] = static_cast<float>(random.uniform(0, 24000));
    ASSERT_EQ(kelsLinearToMel_32f(hertz, mel, 99, 1127, 700), kelStatusOk);
    ASSERT_EQ(kelsMelToLinear_32f(mel, back, 99, 1127, 700), kelStatusOk);
    for (int i = 0; i < 99; ++i) {
        // Three roundings in the argument of the logarithm, and two after it; exp(mel / melMul) likewise.
        const Real exactMel = 1127 * std::log1p(hertz[i] / 700.0L);
        EXPECT_TRUE(near(mel[i], exactMel, 3 * 1127 * 0x1p-24L + 2 * exactMel * 0x1p-24L));
        const Real exactBack = 700 * std::expm1(mel[i] / 1127.0L);
        EXPECT_TRUE(near(back[i], exactBack, (exactBack + 700) * (2 * mel[i] / 1127 + 4) * 0x1p-24L));
    }
    expectVectorChecks({-8, -6}, kelsLinearToMel_32f, kelsMelToLinear_32f);
    for (const auto convert : {kelsLinearToMel_32f, kelsMelToLinear_32f}) {
        expectSteps(convert, {0, 0, 1, 1, 1}, {{4, NAN, -6}, {3, 0, -6}, {4, 700, -6}});
    }
}

}  // namespace
