// The bank in the caller's memory.
#include "kels/fbank.h"

#include "support/support.h"

namespace {

using namespace test;

struct Shape {
    int fftLen, sampFreq, low, high, nFilter, melMul, melDiv;
};

struct FixedBank {
    Shape s;
    int size = -1, order = -1;
    std::vector<Kel8u> memory;

    explicit FixedBank(const Shape& shape) : s(shape), memory(bytes()) {
        EXPECT_EQ(kelsMelFBankInit_32s(memory.data(), &order, s.fftLen, s.sampFreq, s.low, s.high, s.nFilter,
                                       s.melMul << 15, s.melDiv << 15, kelFBankWeightBin),
                  kelStatusOk);
    }
    int bytes() {
        EXPECT_EQ(kelsMelFBankGetSize_32s(s.fftLen, s.nFilter, kelFBankWeightBin, &size), kelStatusOk);
        return size;
    }
    std::vector<Kel32s> evaluate(const std::vector<Kel32s>& spectrum, int scaleFactor) {
        std::vector<Kel32s> dst(s.nFilter);
        auto* const bank = reinterpret_cast<KelFilterBank_32s*>(memory.data());
        EXPECT_EQ(kelsEvalFBank_32s_Sfs(spectrum.data(), dst.data(), bank, scaleFactor), kelStatusOk);
        return dst;
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

TEST(FixedBank, WeightsFollowTheFormulas) {
    const Shape shapes[] = {{512, 16000, 64, 8000, 26, 1127, 700},
                            {32, 8000, 0, 4000, 16, 1127, 700},
                            {1000, 48000, 1, 24000, 40, 2595, 700},
                            {256, 8000, 300, 24000, 12, 32767, 8191},
                            {2048, 44100, 20, 20000, 3, 17, 17}};
    for (const Shape& s : shapes) {
        FixedBank bank(s);
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

TEST(FixedBank, SumsScaleRoundAndSaturate) {
    Random random;
    FixedBank bank({512, 16000, 64, 8000, 26, 1127, 700});
    FixedBank wide({8192, 8000, 1, 4000, 1, 8000, 8000});
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

// Init takes one filter more than GetSize; the formula of the size is part of the interface.
TEST(FixedBank, SizesAtTheirEnds) {
    int size = 0, order = 0;
    EXPECT_EQ(kelsMelFBankGetSize_32s(300, 256, kelFBankWeightBin, &size), kelStatusOk);
    EXPECT_EQ(size, 4 * 256 + 96 + 18 * 516 + 2 * 516 * 265 + 2 * 516 * 256 + 64);
    std::vector<Kel8u> enough(600000);
    EXPECT_EQ(kelsMelFBankInit_32s(enough.data(), &order, 512, 8000, 2, 3, 257, 1 << 20, 1 << 20, kelFBankWeightBin),
              kelStatusOk);
}

}  // namespace
