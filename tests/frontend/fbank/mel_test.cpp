// Conversions between frequencies and mel.
#include "kels/fbank.h"

#include "support/support.h"

namespace {

using namespace test;

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
    enum { kMelMul = 3, kMelDiv };
    expectVectorChecks({kelStatusNullPtr, kelStatusSize}, kelsLinearToMel_32f, kelsMelToLinear_32f);
    for (const auto convert : {kelsLinearToMel_32f, kelsMelToLinear_32f}) {
        expectSteps(convert, {0, 0, 1, 1, 1},
                    {{kMelDiv, NAN, kelStatusSize}, {kMelMul, 0, kelStatusSize}, {kMelDiv, 700, kelStatusSize}});
    }
}

}  // namespace
