#include <algorithm>
#include <climits>
#include <cmath>
#include <span>
#include <tuple>

#include "kels.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;
using Real = long double;

// ---- noise estimate ------------------------------------------------------------------------------------------------

// The forms under one name.
struct Float {
    using Element = Kel32f;
    using State = KelMCRAState_32f;
    static constexpr auto size = kelsGetSizeMCRA_32f;
    static constexpr auto init = kelsInitMCRA_32f;
    static constexpr auto altInit = kelsAltInitMCRA_32f;
    static constexpr auto update = kelsUpdateNoisePSDMCRA_32f_I;
    static constexpr Real unit = 0;  // to which results are rounded
};
struct Integer {
    using Element = Kel32s;
    using State = KelMCRAState_32s;
    static constexpr auto size = kelsGetSizeMCRA_32s;
    static constexpr auto init = kelsInitMCRA_32s;
    static constexpr auto altInit = kelsAltInitMCRA_32s;
    static constexpr auto update = kelsUpdateNoisePSDMCRA_32s_I;
    static constexpr Real unit = 1;
};

// Memory of the reported size, up to the next pointer.
template <class Form>
class Mcra {
  public:
    explicit Mcra(int fftLen) : memory_((bytes(fftLen) + sizeof(void*) - 1) / sizeof(void*)) {}
    typename Form::State* state() { return reinterpret_cast<typename Form::State*>(memory_.data()); }
    // Both structures begin with eight words of the same meaning.
    Kel32s word(int i) { return reinterpret_cast<Kel32s*>(memory_.data())[i]; }
    static int bytes(int fftLen) {
        int size = 0;
        EXPECT_EQ(Form::size(fftLen, &size), 0);
        return size;
    }

  private:
    Guarded<void*> memory_;
};

template <class Form>
class McraForms : public ::testing::Test {};
using BothForms = ::testing::Types<Float, Integer>;
TYPED_TEST_SUITE(McraForms, BothForms);

TYPED_TEST(McraForms, SizesAndConstants) {
    using Form = TypeParam;
    const int pointers = 4 * (sizeof(void*) - 4);
    for (const int fftLen : {8, 9, 100, 256, 8191, 8192}) {
        EXPECT_EQ(Form::size(fftLen, nullptr), kelStatusNullPtr);
        EXPECT_EQ(Mcra<Form>::bytes(fftLen), 16 * (fftLen / 2) + 84 + pointers);
        for (const int rate : {8000, 11025, 16000, 48000}) {
            Mcra<Form> m(fftLen);
            const int half = fftLen / 2;
            ASSERT_EQ(Form::init(rate, fftLen, m.state()), 0);
            const int bits = static_cast<int>(std::log2(half)) + 1;
            const std::vector<Kel32s> words = {rate, fftLen, bits, 0, half, rate / (1 << (bits - 1)), 0, 1};
            for (int i = 0; i < 8; ++i) EXPECT_EQ(m.word(i), words[i]) << "word " << i;
            ASSERT_EQ(Form::altInit(rate, fftLen, half / 2, m.state()), 0);
            EXPECT_EQ(m.word(4), half / 2);
            EXPECT_NEAR(m.word(5), static_cast<double>(rate) / (half / 2), 1);
            const Real r = 125.0L * (half / 2) / rate;
            for (const auto& [place, base, unit] :
                 {std::tuple(8, 0.7L, 30), {9, 0.2L, 30}, {10, 0.8L, 30}, {11, 0.0L, 28}}) {
                const Real exact = base == 0 ? 5 : std::pow(base, r);
                if constexpr (Form::unit == 0) {
                    EXPECT_LE(test::ulpError(std::bit_cast<Kel32f>(m.word(place)), exact), 0.51);
                } else {
                    EXPECT_LE(std::fabs(m.word(place) - std::ldexp(exact, unit)), 0.51L);
                }
            }
        }
    }
}

TYPED_TEST(McraForms, Checks) {
    using Form = TypeParam;
    using Element = typename Form::Element;
    Mcra<Form> m(8192);
    int size = 7;
    for (const int fftLen : {7, 8193, 0, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(Form::size(fftLen, &size), kelStatusSize);
        EXPECT_EQ(Form::init(16000, fftLen, m.state()), kelStatusSize);
    }
    for (const int rate : {7999, 48001, 0, -8000}) {
        EXPECT_EQ(Form::init(rate, 7, m.state()), kelStatusOutOfRange);
        EXPECT_EQ(Form::altInit(rate, 256, 100, m.state()), kelStatusOutOfRange);
    }
    for (const int hop : {0, -1, 129, INT_MAX})
        EXPECT_EQ(Form::altInit(16000, 256, hop, m.state()), kelStatusOutOfRange);
    EXPECT_EQ(Form::altInit(16000, 6, 4, m.state()), kelStatusOutOfRange);
    EXPECT_EQ(Form::altInit(16000, 6, 3, m.state()), kelStatusSize);
    EXPECT_EQ(Form::altInit(16000, 8194, 3, m.state()), kelStatusSize);
    EXPECT_EQ(Form::init(0, 0, nullptr), kelStatusNullPtr);
    EXPECT_EQ(Form::altInit(0, 0, 0, nullptr), kelStatusNullPtr);
    EXPECT_TRUE(size == 7 && m.word(0) == 0 && m.word(7) == 0);

    Element power[5] = {1, 2, 3, 4, 5}, noise[5] = {};
    ASSERT_EQ(Form::init(8000, 8, m.state()), 0);
    EXPECT_EQ(Form::update(nullptr, m.state(), noise), kelStatusNullPtr);
    EXPECT_EQ(Form::update(power, nullptr, noise), kelStatusNullPtr);
    EXPECT_EQ(Form::update(power, m.state(), nullptr), kelStatusNullPtr);
    EXPECT_TRUE(noise[0] == 0 && m.word(7) == 1);
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
    using Form = TypeParam;
    using Element = typename Form::Element;
    test::Random random(1);
    for (const auto& [rate, fftLen, hop] :
         {std::tuple(8000, 8, 4), {8000, 71, 35}, {16000, 256, 128}, {44100, 200, 70}}) {
        const int bins = fftLen / 2 + 1;
        Mcra<Form> m(fftLen);
        ASSERT_EQ(Form::altInit(rate, fftLen, hop, m.state()), 0);
        const int period = m.word(5);
        const Real r = 125.0L * hop / rate;
        // Presence next to 1 is known to 2^-24; that share of a loud frame enters the noise, in 15 frames on end.
        const Real loudest = 6e7L;
        // Rounded steps add up to this while each keeps a share of the error before; presence is in between.
        const Real steady = Form::unit * 0.5L / (1 - std::pow(0.8L, r));
        std::vector<Bin> expected;  // from the first frame on
        Guarded<Element> noise(bins);
        Real worst = 0, presence = 0;
        for (int frame = 0, count = 0; frame < 2 * period + 40; ++frame, ++count) {
            Guarded<Element> power(bins);
            const bool loud = frame % 60 > 45;
            for (auto& x : std::span(power.data(), bins)) {
                x = static_cast<Element>(1e6 * (loud ? 30 : 1) * random.uniform(1, 2));
            }
            if (frame == 0) expected = {power.data(), power.data() + bins};
            ASSERT_EQ(Form::update(power.data(), m.state(), noise), 0);
            for (int k = 0; k < bins; ++k) {
                if (frame > 0) expected[k].update(power[k], count == period, r);
                const Real tolerance = 1e-6L * expected[k].noise + loudest * 0x1p-24L * 15 + 4 * steady;
                worst = std::max(worst, std::fabs(noise[k] - expected[k].noise) / tolerance);
                presence = std::max(presence, expected[k].p);
            }
            if (count == period) count = 0;
        }
        EXPECT_LE(worst, 1) << rate << ", " << fftLen;
        EXPECT_GT(presence, 0.9L) << "speech is found";
    }
}

TYPED_TEST(McraForms, ConstantPowerIsTheNoiseToTheBit) {
    using Form = TypeParam;
    using Element = typename Form::Element;
    Mcra<Form> m(64);
    ASSERT_EQ(Form::init(8000, 64, m.state()), 0);
    test::Random random(2);
    std::vector<Element> power(33), noise(33, Element(-1));
    for (auto& x : power) x = static_cast<Element>(std::exp(random.uniform(0, 21)));
    for (int frame = 0; frame < 600; ++frame) {
        ASSERT_EQ(Form::update(power.data(), m.state(), noise.data()), 0);
        ASSERT_EQ(noise, power);
    }
}

// ---- gains ---------------------------------------------------------------------------------------------------------

constexpr Real kUnitSnr = 0x1p-15L, kUnitGain = 0x1p31L;

TEST(Wiener, GainsAndNegativeRatios) {
    test::Random random(3);
    for (int len = 1; len <= 300; len += len < 40 ? 1 : 37) {
        std::vector<Kel32f> f(len);
        for (auto& x : f) x = std::fabs(random.value<Kel32f>(20));
        std::vector<Kel32s> s(len);
        for (auto& x : s) x = random.value<Kel32s>() & INT_MAX;
        const bool negative = len % 2 == 0;
        if (negative) f[len / 2] = -1e-45f, s[len - 1] = -1;
        const Guarded<Kel32f> snr(f);
        const Guarded<Kel32s> snr32(s);
        Guarded<Kel32f> gain(len), both(f);
        Guarded<Kel32s> gain32(len);
        ASSERT_EQ(kelsFilterUpdateWiener_32f(snr.data(), gain, len), negative ? kelStatusBadArg : kelStatusOk);
        ASSERT_EQ(kelsFilterUpdateWiener_32f(both, both, len), negative ? kelStatusBadArg : kelStatusOk);
        ASSERT_EQ(kelsFilterUpdateWiener_32s(snr32.data(), gain32, len), negative ? kelStatusBadArg : kelStatusOk);
        for (int i = 0; i < len; ++i) {
            const Real x = std::max(f[i], 0.0f), y = std::max(s[i], 0) * kUnitSnr;
            ASSERT_LE(test::ulpError(gain[i], x / (1 + x)), 1.5);  // a sum and a quotient
            ASSERT_LE(std::fabs(gain32[i] - y / (1 + y) * kUnitGain), 0.5L + 0x1p-20L);
            ASSERT_EQ(both[i], gain[i]);
        }
    }
}

// e^-x In(x), n = 0 or 1: where the exponentials would overflow, by the asymptotic series.
Real scaledBessel(int n, Real x) {
    if (x < 500) return std::exp(-x) * std::cyl_bessel_i(static_cast<Real>(n), x);
    Real sum = 1, term = 1;
    for (int k = 1; k < 8; ++k) sum += term *= -(4.0L * n * n - (2 * k - 1) * (2 * k - 1)) / (k * 8 * x);
    return sum / std::sqrt(2 * std::acos(-1.0L) * x);
}
Real ephraimMalah(Real prior, Real post) {
    const Real v = prior / (1 + prior) * post, half = std::sqrt(std::acos(-1.0L)) / 2;
    return half * std::sqrt(v) / post * ((1 + v) * scaledBessel(0, v / 2) + v * scaledBessel(1, v / 2));
}

TEST(EphraimMalah, FloatGainsFollowTheFormula) {
    std::vector<Kel32f> prior, post;
    for (double x = -60; x <= 60; x += 1.25) {
        for (double g = -60; g <= 60; g += 0.75) {
            prior.push_back(static_cast<Kel32f>(std::pow(10, x / 10)));
            post.push_back(static_cast<Kel32f>(std::pow(10, g / 10)));
        }
    }
    const int len = static_cast<int>(prior.size());
    ASSERT_LE(len, 65535);
    const Guarded<Kel32f> x(prior), g(post);
    Guarded<Kel32f> gain(len), both(post);
    ASSERT_EQ(kelsFilterUpdateEMNS_32f(x.data(), g.data(), gain, len), 0);
    ASSERT_EQ(kelsFilterUpdateEMNS_32f(x.data(), both, both, len), 0);
    Real worst = 0;
    for (int i = 0; i < len; ++i) {
        worst = std::max(worst, std::fabs(gain[i] / ephraimMalah(prior[i], post[i]) - 1));
        ASSERT_EQ(both[i], gain[i]);
    }
    EXPECT_LE(worst, 1e-6L);
}

TEST(EphraimMalah, StaysFiniteAtTheEnds) {
    const Kel32f inf = INFINITY, least = 1e-45f, tiny = 1.1754943508222875e-38f, most = 3.4028235e38f;
    for (const Kel32f x : {0.0f, least, tiny, 1e-20f, 1.0f, 1e20f, most, inf}) {
        for (const Kel32f g : {0.0f, least, tiny, 1e-20f, 1.0f, 1e20f, most, inf}) {
            Kel32f gain = -1;
            ASSERT_EQ(kelsFilterUpdateEMNS_32f(&x, &g, &gain, 1), 0);
            const Real held = std::clamp<Real>(g, tiny, most), prior = std::min(x, most);
            const Real exact = prior == 0 ? 0 : ephraimMalah(prior, held);
            EXPECT_LE(std::fabs(gain - exact), 1e-6L * exact + 1e-45L) << x << ", " << g;
        }
    }
    for (int len = 1; len < 40; ++len) {  // what follows the end of an array is no one's business
        const Guarded<Kel32f> ones(std::vector<Kel32f>(len, 1.0f));
        Guarded<Kel32f> gain(len);
        ASSERT_EQ(kelsFilterUpdateEMNS_32f(ones.data(), ones.data(), gain, len), 0);
        for (int i = 0; i < len; ++i) ASSERT_EQ(gain[i], gain[0]);
    }
}

TEST(EphraimMalah, IntegerGainsAreTheSameInFixedPoint) {
    test::Random random(4);
    std::vector<Kel32s> prior, post;
    for (int i = 0; i < 3000; ++i) {
        prior.push_back(static_cast<Kel32s>(std::exp(random.uniform(0, 21.4))));
        post.push_back(static_cast<Kel32s>(std::exp(random.uniform(0, 21.4))));
    }
    prior[0] = 0, post[1] = 0, prior[2] = post[2] = INT_MAX, post[3] = 3276800, post[4] = 3276801;
    const int len = static_cast<int>(prior.size());
    const Guarded<Kel32s> x(prior), g(post);
    Guarded<Kel32s> gain(len);
    test::inEveryRoundingMode([&] { ASSERT_EQ(kelsFilterUpdateEMNS_32s(x.data(), g.data(), gain, len), 0); });
    int saturated = 0;
    for (int i = 0; i < len; ++i) {
        const Real held = std::clamp(post[i], 1, 3276800) * kUnitSnr, ratio = prior[i] * kUnitSnr;
        const Real exact = prior[i] == 0 ? 0 : ephraimMalah(ratio, held) * kUnitGain;
        ASSERT_LE(std::fabs(gain[i] - std::min<Real>(exact, INT_MAX)), 0.5L + 1e-6L * exact)
            << prior[i] << ", " << post[i];
        saturated += gain[i] == INT_MAX ? 1 : 0;
    }
    EXPECT_TRUE(saturated > 100 && saturated < len * 2 / 3) << saturated;
}

TEST(Gains, ChecksInOrder) {
    Kel32f f[] = {1, -1}, gain[] = {7, 7};
    Kel32s s[] = {1, -1}, gain32[] = {7, 7};
    const auto both = [&](KelStatus first, KelStatus second, KelStatus expected) {
        EXPECT_EQ(first, expected);
        EXPECT_EQ(second, expected);
    };
    both(kelsFilterUpdateWiener_32f(nullptr, gain, 0), kelsFilterUpdateWiener_32s(nullptr, gain32, 0),
         kelStatusNullPtr);
    both(kelsFilterUpdateWiener_32f(f, nullptr, 0), kelsFilterUpdateWiener_32s(s, nullptr, 0), kelStatusNullPtr);
    both(kelsFilterUpdateEMNS_32f(nullptr, f, gain, 0), kelsFilterUpdateEMNS_32s(nullptr, s, gain32, 0),
         kelStatusNullPtr);
    both(kelsFilterUpdateEMNS_32f(f, nullptr, gain, 0), kelsFilterUpdateEMNS_32s(s, nullptr, gain32, 0),
         kelStatusNullPtr);
    both(kelsFilterUpdateEMNS_32f(f, f, nullptr, 0), kelsFilterUpdateEMNS_32s(s, s, nullptr, 0), kelStatusNullPtr);
    for (const int len : {0, -1, 65536, INT_MAX}) {
        both(kelsFilterUpdateWiener_32f(f, gain, len), kelsFilterUpdateWiener_32s(s, gain32, len),
             kelStatusLengthRange);
        both(kelsFilterUpdateEMNS_32f(f, f, gain, len), kelsFilterUpdateEMNS_32s(s, s, gain32, len),
             kelStatusLengthRange);
    }
    const Kel32f one[] = {1, 1};
    const Kel32s one32[] = {1, 1};
    both(kelsFilterUpdateEMNS_32f(f, one, gain, 2), kelsFilterUpdateEMNS_32s(s, one32, gain32, 2), kelStatusOutOfRange);
    both(kelsFilterUpdateEMNS_32f(one, f, gain, 2), kelsFilterUpdateEMNS_32s(one32, s, gain32, 2), kelStatusOutOfRange);
    EXPECT_TRUE(gain[0] == 7 && gain[1] == 7 && gain32[0] == 7 && gain32[1] == 7);
    const std::vector<Kel32f> most(65535, 1.0f);
    std::vector<Kel32f> result(65535);
    EXPECT_EQ(kelsFilterUpdateWiener_32f(most.data(), result.data(), 65535), 0);
    EXPECT_EQ(result.back(), 0.5f);
}

}  // namespace
