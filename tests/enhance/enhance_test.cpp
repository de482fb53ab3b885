// Noise estimates and gains beside their formulas in extended precision.
#include <climits>

#include "kels.h"
#include "support/elements.h"
#include "support/forms.h"

namespace {

using test::Guarded;
using test::Near;
using Real = long double;

// ---- noise estimate ------------------------------------------------------------------------------------------------

// The functions, for spectra of floats and of integers.
constexpr auto init = test::forms(kelsInitMCRA_32f, kelsInitMCRA_32s);
constexpr auto altInit = test::forms(kelsAltInitMCRA_32f, kelsAltInitMCRA_32s);
constexpr auto update = test::forms(kelsUpdateNoisePSDMCRA_32f_I, kelsUpdateNoisePSDMCRA_32s_I);
template <class T>
constexpr auto sizeOf = std::is_same_v<T, Kel32f> ? kelsGetSizeMCRA_32f : kelsGetSizeMCRA_32s;
template <class T>
using State = std::conditional_t<std::is_same_v<T, Kel32f>, KelMCRAState_32f, KelMCRAState_32s>;
template <class T>
constexpr Real kUnit = std::is_same_v<T, Kel32f> ? 0 : 1;  // what results are rounded to

// Memory of the reported size, up to the next pointer.  Both structures begin with eight words of the same meaning.
template <class T>
struct Mcra : Guarded<void*> {
    explicit Mcra(int fftLen) : Guarded<void*>((bytes(fftLen) + sizeof(void*) - 1) / sizeof(void*)) {}
    State<T>* state() { return reinterpret_cast<State<T>*>(data()); }
    Kel32s word(int i) { return reinterpret_cast<Kel32s*>(data())[i]; }
    static int bytes(int fftLen) {
        int size = 0;
        EXPECT_EQ(sizeOf<T>(fftLen, &size), 0);
        return size;
    }
};

template <class T>
class McraForms : public ::testing::Test {};
using BothForms = ::testing::Types<Kel32f, Kel32s>;
TYPED_TEST_SUITE(McraForms, BothForms);

TYPED_TEST(McraForms, SizesAndConstants) {
    using T = TypeParam;
    for (const int fftLen : {8, 9, 100, 256, 8191, 8192}) {
        const int half = fftLen / 2, bits = static_cast<int>(std::log2(half)) + 1;
        EXPECT_EQ(Mcra<T>::bytes(fftLen), 16 * half + 84 + 4 * static_cast<int>(sizeof(void*) - 4));
        for (const int rate : {8000, 11025, 48000}) {
            Mcra<T> m(fftLen);
            ASSERT_EQ(init(rate, fftLen, m.state()), 0);
            const Kel32s words[] = {rate, fftLen, bits, 0, half, rate / (1 << (bits - 1)), 0, 1};
            for (int i = 0; i < 8; ++i) EXPECT_EQ(m.word(i), words[i]) << "word " << i;
            ASSERT_EQ(altInit(rate, fftLen, half / 2, m.state()), 0);
            EXPECT_TRUE(m.word(4) == half / 2 && std::fabs(m.word(5) - 1.0 * rate / (half / 2)) <= 1);
            const Real r = 125.0L * (half / 2) / rate,
                       exact[] = {std::pow(0.7L, r), std::pow(0.2L, r), std::pow(0.8L, r), 5};
            for (int i = 0; i < 4; ++i) {
                const Real fixed = std::ldexp(exact[i], i < 3 ? 30 : 28);
                EXPECT_TRUE(kUnit<T> == 0 ? test::ulpError(std::bit_cast<Kel32f>(m.word(8 + i)), exact[i]) < 0.51
                                          : std::fabs(m.word(8 + i) - fixed) < 0.51)
                    << "word " << 8 + i;
            }
        }
    }
}

// One bin of the recursion.
struct Bin {
    Real s, least, next, p = 0, noise;

    explicit Bin(Real power) : s(power), least(power), next(power), noise(power) {}
    void update(Real power, bool renew, Real r) {
        const Real d = std::pow(0.7L, r);
        s = std::pow(0.8L, r) * s + (1 - std::pow(0.8L, r)) * power;
        least = std::min(renew ? next : least, s);
        next = renew ? s : std::min(next, s);
        p = std::pow(0.2L, r) * p + (s > 5 * least ? 1 - std::pow(0.2L, r) : 0);
        const Real a = d + (1 - d) * p;
        noise = a * noise + (1 - a) * power;
    }
};

TYPED_TEST(McraForms, FollowTheRecursion) {
    using T = TypeParam;
    test::Random random(1);
    for (const auto& [rate, fftLen, hop] :
         {std::tuple(8000, 8, 4), {8000, 71, 35}, {16000, 256, 128}, {44100, 200, 70}}) {
        const int bins = fftLen / 2 + 1;
        Mcra<T> m(fftLen);
        ASSERT_EQ(altInit(rate, fftLen, hop, m.state()), 0);
        const int period = m.word(5);
        const Real r = 125.0L * hop / rate;
        // Presence next to 1 is known to 2^-24; that share of a loud frame enters the noise, in 15 frames on end.
        // Rounded steps add up while each keeps a share of the error before; presence is in between.
        const Real bound = 6e7L * 0x1p-24L * 15 + kUnit<T> * 2 / (1 - std::pow(0.8L, r));
        std::vector<Bin> expected;
        Guarded<T> noise(bins);
        Guarded<T> power(bins);
        Real presence = 0;
        for (int frame = 0, count = 0; frame < 2 * period + 60; ++frame, ++count) {
            const double level = frame % 60 > 45 ? 3e7 : 1e6;
            for (int k = 0; k < bins && (frame == 0 || frame > 40); ++k) {
                power[k] = static_cast<T>(level * random.uniform(1, 2));
            }
            if (frame == 0) expected = {power.data(), power.data() + bins};
            ASSERT_EQ(update(power.data(), m.state(), noise.data()), 0);
            for (int k = 0; k < bins; ++k) {
                if (frame > 0) expected[k].update(power[k], count == period, r);
                // A power that does not change is the noise to the bit.
                const Near good = {frame > 40 ? expected[k].noise : power[k],
                                   frame > 40 ? 1e-6L * expected[k].noise + bound : 0};
                ASSERT_TRUE(test::agrees(noise[k], good)) << "frame " << frame;
                presence = std::max(presence, expected[k].p);
            }
            if (count == period) count = 0;
        }
        EXPECT_GT(presence, 0.9L) << "speech is found";
    }
}

// A step of the recursion from what the state holds, where powers rise and fall by up to 60 dB: the formula in single
// precision rounds twice, and once more each share that is not exact.
TEST(McraFloat, FallingPowersLoseNoAccuracy) {
    test::Random random(2);
    for (const auto& [fftLen, hop] : {std::pair(64, 8), {256, 128}, {1024, 512}, {8192, 4096}}) {
        const int bins = fftLen / 2 + 1;
        Mcra<Kel32f> m(fftLen);
        ASSERT_EQ(altInit(8000, fftLen, hop, m.state()), 0);
        KelMCRAState_32f& state = *m.state();
        Guarded<Kel32f> power(bins), noise(bins);
        for (int frame = 0; frame < 40; ++frame) {
            for (int k = 0; k < bins; ++k) power[k] = static_cast<Kel32f>(std::pow(10, random.uniform(-3, 3)));
            const std::vector<Kel32f> s(state.smoothed, state.smoothed + bins),
                p(state.presence, state.presence + bins), n = noise.vector();
            ASSERT_EQ(update(power.data(), &state, noise.data()), 0);
            for (int k = 0; frame > 0 && k < bins; ++k) {
                const Real smoothed = state.alphaS * Real{s[k]} + (1 - Real{state.alphaS}) * power[k];
                ASSERT_LE(test::ulpError(state.smoothed[k], smoothed), 2.5) << s[k] << " to " << power[k];
                const bool speech = state.smoothed[k] > state.delta * state.minimum[k];
                const Real presence = state.alphaP * Real{p[k]} + (speech ? 1 - Real{state.alphaP} : 0);
                ASSERT_LE(test::ulpError(state.presence[k], presence), 2.5) << p[k] << (speech ? " up" : " down");
                const Real a = state.alphaD + (1 - Real{state.alphaD}) * state.presence[k];
                ASSERT_LE(test::ulpError(noise[k], a * n[k] + (1 - a) * power[k]), 3.5) << n[k] << " to " << power[k];
            }
        }
    }
}

// ---- gains ---------------------------------------------------------------------------------------------------------

constexpr Real kUnitSnr = 0x1p-15L, kUnitGain = 0x1p31L;

// Ratios over all decades, their ends, and now and then one below 0.
template <int kNegativePercent>
double ratio(test::Random& random, double) {
    const double ends[] = {0, 1e-45, 1.1754943508222875e-38, 1e-20, 1, 100, 1e20, 3.4028235e38};
    if (random.between(0, 99) < kNegativePercent) return -1;
    return random.between(0, 3) ? std::pow(10, random.uniform(-6, 6)) : ends[random.between(0, 7)];
}
template <int kNegativePercent>
double fixedRatio(test::Random& random, double) {
    return std::min(std::trunc(ratio<kNegativePercent>(random, 0) * 32768), 2147483647.0);
}

TEST(Wiener, Gains) {
    const auto gain = [](Real x) { return std::max(x, 0.0L) / (1 + std::max(x, 0.0L)); };
    const auto fixed = [=](Kel32s x, auto...) { return Near{gain(x * kUnitSnr) * kUnitGain, 0.5L + 0x1p-20L}; };
    test::expectElements(fixed, {{1}, {kelStatusOk, kelStatusBadArg}, fixedRatio<2>}, kelsFilterUpdateWiener_32s);
}

// e^-x In(x), n = 0 or 1: where the exponentials would overflow, by the asymptotic series.
Real scaledBessel(int n, Real x) {
    if (x < 500) return std::exp(-x) * std::cyl_bessel_i(static_cast<Real>(n), x);
    Real sum = 1, term = 1;
    for (int k = 1; k < 8; ++k) sum += term *= -(4.0L * n * n - (2 * k - 1) * (2 * k - 1)) / (k * 8 * x);
    return sum / std::sqrt(2 * std::acos(-1.0L) * x);
}
Real ephraimMalah(Real prior, Real post) {
    if (prior == 0) return 0;
    const Real v = prior / (1 + prior) * post, half = std::sqrt(std::acos(-1.0L)) / 2;
    return half * std::sqrt(v) / post * ((1 + v) * scaledBessel(0, v / 2) + v * scaledBessel(1, v / 2));
}

TEST(EphraimMalah, GainsFollowTheFormula) {
    const auto fixed = [](Kel32s prior, Kel32s post, auto...) {
        const Real exact = ephraimMalah(prior * kUnitSnr, std::clamp(post, 1, 3276800) * kUnitSnr) * kUnitGain;
        return Near{std::min<Real>(exact, INT_MAX), 0.5L + 1e-6L * exact};
    };
    test::expectElements(fixed, {{1}, {kelStatusOk}, fixedRatio<0>}, kelsFilterUpdateEMNS_32s);
}

constexpr auto wiener = test::forms(kelsFilterUpdateWiener_32f, kelsFilterUpdateWiener_32s);
constexpr auto ephraimMalahGain = test::forms(kelsFilterUpdateEMNS_32f, kelsFilterUpdateEMNS_32s);

TYPED_TEST(McraForms, GainsOfRatiosBelowZero) {
    using T = TypeParam;
    for (const int place : {0, 39, 40}) {
        std::vector<T> ones(41, 1), mixed = ones, gain(41, 7);
        mixed[place] = -1;
        EXPECT_EQ(wiener(mixed.data(), gain.data(), 41), kelStatusBadArg);
        gain[0] = 7;
        EXPECT_EQ(ephraimMalahGain(mixed.data(), ones.data(), gain.data(), 41), kelStatusOutOfRange);
        EXPECT_EQ(ephraimMalahGain(ones.data(), mixed.data(), gain.data(), 41), kelStatusOutOfRange);
        EXPECT_EQ(gain[0], 7);
    }
}

}  // namespace
