#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;

// One input of every kind that could round or saturate wrongly at the given scale.
template <class F, class I>
std::vector<F> roundingInputs(int scale) {
    constexpr auto low = static_cast<double>(std::numeric_limits<I>::min());
    constexpr auto high = static_cast<double>(std::numeric_limits<I>::max());
    std::vector<double> results = {0.0, -0.0, 0.5, 1.5, 2.5, -0.5, -1.5, -2.5, 0.49999997, 2.7, -2.7, 1e30, -1e30};
    for (const double edge : {low, high}) {
        for (const double step : {-1.5, -1.0, -0.75, -0.5, -0.25, 0.0, 0.25, 0.5, 0.75, 1.0, 1.5})
            results.push_back(edge + step);
    }
    std::vector<F> inputs;
    for (const double r : results) {
        const auto x = static_cast<F>(std::ldexp(r, scale));
        inputs.insert(inputs.end(), {x, std::nextafter(x, F(INFINITY)), std::nextafter(x, F(-INFINITY))});
    }
    const auto infinity = std::numeric_limits<F>::infinity();
    inputs.insert(inputs.end(), {infinity, -infinity, std::numeric_limits<F>::quiet_NaN(),
                                 std::numeric_limits<F>::denorm_min(), std::numeric_limits<F>::max()});
    test::Random random(7);
    for (int i = 0; i < 100; ++i) inputs.push_back(std::ldexp(random.value<F>(17), scale));
    return inputs;
}

// The exact product is a long double for every input and scale in use.
template <class F, class I>
I expectedInt(F x, int rndMode, int scale) {
    const long double exact = std::ldexp(static_cast<long double>(x), std::min(std::max(-scale, -150), 128));
    const long double rounded = rndMode == 1 ? std::nearbyint(exact) : std::trunc(exact);
    if (!(rounded > std::numeric_limits<I>::min())) return std::numeric_limits<I>::min();
    if (rounded >= std::numeric_limits<I>::max()) return std::numeric_limits<I>::max();
    return static_cast<I>(rounded);
}

template <class F, class I>
void checkToInt(KelStatus (*convert)(const F*, I*, int, int, int)) {
    for (const int scale : {0, 1, -1, 3, -7, 15, -15, 40, -40, 126, -126, 130, -127, -128, 150, 200, INT32_MAX}) {
        const std::vector<F> inputs = roundingInputs<F, I>(std::min(scale, 120));
        for (const int rndMode : {0, 1, 2}) {
            std::vector<I> expected(inputs.size());
            std::transform(inputs.begin(), inputs.end(), expected.begin(),
                           [=](F x) { return expectedInt<F, I>(x, rndMode, std::max(scale, -1000)); });
            test::inEveryRoundingMode([&] {
                std::vector<I> got(inputs.size());
                EXPECT_EQ(convert(inputs.data(), got.data(), static_cast<int>(inputs.size()), rndMode, scale),
                          kelStatusOk);
                EXPECT_EQ(got, expected) << "scale " << scale << " mode " << rndMode;
            });
        }
    }
    const Guarded<F> src(roundingInputs<F, I>(0));  // every length and so every alignment, between guard pages
    for (std::size_t len = 1; len <= 40; ++len) {
        const F* const from = src.data() + src.size() - len;
        Guarded<I> dst(len);
        EXPECT_EQ(convert(from, dst, static_cast<int>(len), 1, 0), kelStatusOk);
        for (std::size_t i = 0; i < len; ++i) EXPECT_EQ(dst[i], (expectedInt<F, I>(from[i], 1, 0)));
    }
}

TEST(Convert, FloatsToIntegers) {
    checkToInt<Kel32f, Kel16s>(kelsConvert_32f16s_Sfs);
    checkToInt<Kel32f, Kel32s>(kelsConvert_32f32s_Sfs);
    checkToInt<Kel64f, Kel32s>(kelsConvert_64f32s_Sfs);
}

std::vector<Kel32s> edgesOf32Bits() {
    test::Random random(3);
    std::vector<Kel32s> v = random.vector<Kel32s>(500);
    for (int bit = 0; bit < 31; ++bit) {
        for (const int near : {-1, 0, 1}) v.insert(v.end(), {(1 << bit) + near, -(1 << bit) + near});
    }
    for (int i = -3; i <= 3; ++i)
        v.insert(v.end(), {INT32_MAX - std::abs(i), INT32_MIN + std::abs(i), 32767 + i, -32768 + i});
    return v;
}

std::vector<Kel16s> all16Bits() {
    std::vector<Kel16s> v(65536);
    std::iota(v.begin(), v.end(), static_cast<Kel16s>(-32768));
    return v;
}

// convert(src, dst, len) against the correctly rounded scaled value.
template <class S, class D, class Convert>
void checkFromInt(const std::vector<S>& all, int exponent, Convert convert) {
    const Guarded<S> src(all);
    Guarded<D> dst(all.size());
    const auto call = [&] { EXPECT_EQ(convert(src.data(), dst.data(), static_cast<int>(all.size())), kelStatusOk); };
    test::inEveryRoundingMode(call, [&] {
        for (std::size_t i = 0; i < all.size(); ++i) {
            ASSERT_EQ(dst[i], std::ldexp(static_cast<D>(all[i]), exponent)) << all[i] << " exponent " << exponent;
        }
    });
}

TEST(Convert, IntegersToFloats) {
    const std::vector<Kel32s> wide = edgesOf32Bits();
    const std::vector<Kel16s> narrow = all16Bits();
    std::vector<Kel8u> bytes(256);
    std::iota(bytes.begin(), bytes.end(), Kel8u{0});
    const auto atScale = [](auto convert, int scale) {
        return [=](auto src, auto dst, int len) { return convert(src, dst, len, scale); };
    };
    Kel32f f[256];
    kelsConvert_8u32f(bytes.data(), f, 256);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(f[i], i);

    for (const int scale : {0, 1, -3, 15, 97, 112, 113, 5000, -100, -126, -127, -5000}) {
        const auto within = [=](int lowest, int highest) { return std::min(std::max(-scale, lowest), highest); };
        checkFromInt<Kel16s, Kel32f>(narrow, within(-112, 126), atScale(kelsConvert_16s32f_Sfs, scale));
        checkFromInt<Kel32s, Kel32f>(wide, within(-96, 126), atScale(kelsConvert_32s32f_Sfs, scale));
        checkFromInt<Kel16s, Kel64f>(narrow, within(-1008, 1022), atScale(kelsConvert_16s64f_Sfs, scale));
    }
    checkFromInt<Kel16s, Kel32f>(narrow, 0, kelsConvert_16s32f);
    checkFromInt<Kel32s, Kel32f>(wide, 0, kelsConvert_32s32f);
}

TEST(Convert, IntegersToNarrowerIntegers) {
    const std::vector<Kel32s> inputs = edgesOf32Bits();
    for (int scale = -40; scale <= 40; ++scale) {
        const Guarded<Kel32s> src(inputs);
        Guarded<Kel16s> dst(inputs.size());
        EXPECT_EQ(kelsConvert_32s16s_Sfs(src.data(), dst, static_cast<int>(inputs.size()), scale), kelStatusOk);
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            const double rounded = std::nearbyint(std::ldexp(static_cast<double>(inputs[i]), -scale));
            ASSERT_EQ(dst[i], std::min(std::max(rounded, -32768.0), 32767.0)) << inputs[i] << " scale " << scale;
        }
    }
    const Kel32s values[] = {5, -5, 0};
    Kel16s out[3];
    kelsConvert_32s16s_Sfs(values, out, 3, INT32_MIN);
    EXPECT_TRUE(out[0] == 32767 && out[1] == -32768 && out[2] == 0);
    kelsConvert_32s16s_Sfs(values, out, 3, INT32_MAX);
    EXPECT_TRUE(out[0] == 0 && out[1] == 0 && out[2] == 0);
}

TEST(Convert, DoublesToFloats) {
    constexpr Kel32f largest = std::numeric_limits<Kel32f>::max();
    const Guarded<Kel64f> src({NAN, 1e300, -1e300, INFINITY, -INFINITY, 3.4028234663852887e38, 0.1, -0.0, 1e-60});
    Guarded<Kel32f> dst(src.size());
    EXPECT_EQ(kelsConvert_64f32f(src.data(), dst, static_cast<int>(src.size())), kelStatusOk);
    const std::vector<Kel32f> expected = {-largest, largest, -largest, largest, -largest, largest, 0.1f, -0.0f, 0.0f};
    EXPECT_TRUE(test::sameBits(dst, expected));
}

TEST(Convert, ChecksPointersBeforeLength) {
    Kel32f f[2] = {1, 2};
    Kel32s s[2] = {7, 7};
    EXPECT_EQ(kelsConvert_32f32s_Sfs(nullptr, s, 0, 1, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsConvert_32f32s_Sfs(f, nullptr, 0, 1, 0), kelStatusNullPtr);
    EXPECT_EQ(kelsConvert_32f32s_Sfs(f, s, 0, 1, 0), kelStatusSize);
    EXPECT_EQ(kelsConvert_32f32s_Sfs(f, s, -1, 1, 0), kelStatusSize);
    EXPECT_EQ(s[0], 7);
}

}  // namespace
