#include <algorithm>
#include <climits>
#include <cmath>
#include <span>
#include <tuple>

#include "kels.h"
#include "support/checks.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;
using Real = long double;

// ---- noise estimate ------------------------------------------------------------------------------------------------

// The forms under one name; `unit` is what results are rounded to.
#define FORM(NAME, TYPE, SUFFIX, UNIT)                                      \
    struct NAME {                                                           \
        using Element = TYPE;                                               \
        using State = KelMCRAState_##SUFFIX;                                \
        static constexpr auto size = kelsGetSizeMCRA_##SUFFIX;              \
        static constexpr auto init = kelsInitMCRA_##SUFFIX;                 \
        static constexpr auto altInit = kelsAltInitMCRA_##SUFFIX;           \
        static constexpr auto update = kelsUpdateNoisePSDMCRA_##SUFFIX##_I; \
        static constexpr Real unit = UNIT;                                  \
    };
FORM(Float, Kel32f, 32f, 0)
FORM(Integer, Kel32s, 32s, 1)
#undef FORM

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
    for (const int fftLen : {8, 9, 100, 256, 8191, 8192}) {
        const int half = fftLen / 2, bits = static_cast<int>(std::log2(half)) + 1;
        EXPECT_EQ(Mcra<Form>::bytes(fftLen), 16 * half + 84 + 4 * static_cast<int>(sizeof(void*) - 4));
        for (const int rate : {8000, 11025, 48000}) {
            Mcra<Form> m(fftLen);
            ASSERT_EQ(Form::init(rate, fftLen, m.state()), 0);
            const Kel32s words[] = {rate, fftLen, bits, 0, half, rate / (1 << (bits - 1)), 0, 1};
            for (int i = 0; i < 8; ++i) EXPECT_EQ(m.word(i), words[i]) << "word " << i;
            ASSERT_EQ(Form::altInit(rate, fftLen, half / 2, m.state()), 0);
            EXPECT_EQ(m.word(4), half / 2);
            EXPECT_NEAR(m.word(5), static_cast<double>(rate) / (half / 2), 1);
            const Real r = 125.0L * (half / 2) / rate,
                       exact[] = {std::pow(0.7L, r), std::pow(0.2L, r), std::pow(0.8L, r), 5};
            for (int i = 0; i < 4; ++i) {
                const Kel32s word = m.word(8 + i);
                const double error = Form::unit == 0 ? test::ulpError(std::bit_cast<Kel32f>(word), exact[i])
                                                     : std::fabs(word - std::ldexp(exact[i], i < 3 ? 30 : 28));
                EXPECT_LE(error, 0.51) << "word " << 8 + i;
            }
        }
    }
}

TYPED_TEST(McraForms, Checks) {
    using Form = TypeParam;
    Mcra<Form> m(8192);
    int size = 7;
    EXPECT_EQ(Form::size(0, nullptr), kelStatusNullPtr);
    for (const int fftLen : {7, 8193, 0, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(Form::size(fftLen, &size), kelStatusSize);
        EXPECT_EQ(Form::init(16000, fftLen, m.state()), kelStatusSize);
    }
    for (const int rate : {7999, 48001, 0, -8000}) {
        EXPECT_EQ(Form::init(rate, 7, m.state()), kelStatusOutOfRange);
        EXPECT_EQ(Form::altInit(rate, 256, 100, m.state()), kelStatusOutOfRange);
    }
    for (const auto& [fftLen, hop, status] : {std::tuple(256, 0, kelStatusOutOfRange),
                                              {256, -1, kelStatusOutOfRange},
                                              {256, 129, kelStatusOutOfRange},
                                              {256, INT_MAX, kelStatusOutOfRange},
                                              {6, 4, kelStatusOutOfRange},
                                              {6, 3, kelStatusSize},
                                              {8194, 3, kelStatusSize}}) {
        EXPECT_EQ(Form::altInit(16000, fftLen, hop, m.state()), status) << fftLen << ", " << hop;
    }
    EXPECT_EQ(Form::init(0, 0, nullptr), kelStatusNullPtr);
    EXPECT_EQ(Form::altInit(0, 0, 0, nullptr), kelStatusNullPtr);
    EXPECT_TRUE(size == 7 && m.word(0) == 0 && m.word(7) == 0);
    test::expectNullChecks(Form::update);
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
            const double level = frame % 60 > 45 ? 3e7 : 1e6;
            for (auto& x : std::span(power.data(), bins)) x = static_cast<Element>(level * random.uniform(1, 2));
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
        std::vector<Kel32f> f = random.vector<Kel32f>(len, 20);
        std::vector<Kel32s> s = random.vector<Kel32s>(len);
        for (auto& x : f) x = std::fabs(x);
        for (auto& x : s) x &= INT_MAX;
        const KelStatus status = len % 2 == 0 ? kelStatusBadArg : kelStatusOk;
        if (status != kelStatusOk) f[len / 2] = -1e-45f, s[len - 1] = -1;
        const Guarded<Kel32f> snr(f);
        const Guarded<Kel32s> snr32(s);
        Guarded<Kel32f> gain(len), both(f);
        Guarded<Kel32s> gain32(len);
        ASSERT_EQ(kelsFilterUpdateWiener_32f(snr.data(), gain, len), status);
        ASSERT_EQ(kelsFilterUpdateWiener_32f(both, both, len), status);
        ASSERT_EQ(kelsFilterUpdateWiener_32s(snr32.data(), gain32, len), status);
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
    if (prior == 0) return 0;
    const Real v = prior / (1 + prior) * post, half = std::sqrt(std::acos(-1.0L)) / 2;
    return half * std::sqrt(v) / post * ((1 + v) * scaledBessel(0, v / 2) + v * scaledBessel(1, v / 2));
}

TEST(EphraimMalah, FloatGainsFollowTheFormula) {
    const Kel32f tiny = 1.1754943508222875e-38f, most = 3.4028235e38f;
    std::vector<Kel32f> prior, post;
    const auto grid = [&](const std::vector<Kel32f>& xs, const std::vector<Kel32f>& gs) {
        for (const Kel32f x : xs) {
            prior.insert(prior.end(), gs.size(), x);
            post.insert(post.end(), gs.begin(), gs.end());
        }
    };
    const auto decibels = [](double step) {
        std::vector<Kel32f> v;
        for (double x = -60; x <= 60; x += step) v.push_back(static_cast<Kel32f>(std::pow(10, x / 10)));
        return v;
    };
    const std::vector<Kel32f> ends = {0, 1e-45f, tiny, 1e-20f, 1, 1e20f, most, INFINITY};
    grid(decibels(1.25), decibels(0.75));
    grid(ends, ends);
    std::vector<Kel32f> whole;
    for (int len = static_cast<int>(prior.size()); len > 0; len = std::min(len - 1, 40)) {
        prior.resize(len), post.resize(len);
        const Guarded<Kel32f> x(prior), g(post);
        Guarded<Kel32f> gain(len), both(post);
        ASSERT_EQ(kelsFilterUpdateEMNS_32f(x.data(), g.data(), gain, len), 0);
        ASSERT_EQ(kelsFilterUpdateEMNS_32f(x.data(), both, both, len), 0);
        ASSERT_EQ(both.vector(), gain.vector());
        for (int i = 0; i < len; ++i) {
            const Real exact = ephraimMalah(std::min(prior[i], most), std::clamp(post[i], tiny, most));
            ASSERT_LE(std::fabs(gain[i] - exact), 1e-6L * exact + 1e-45L) << prior[i] << ", " << post[i];
        }
    }
}

TEST(EphraimMalah, IntegerGainsAreTheSameInFixedPoint) {
    test::Random random(4);
    std::vector<Kel32s> prior(3000), post(3000);
    for (auto* v : {&prior, &post}) {
        for (auto& x : *v) x = static_cast<Kel32s>(std::exp(random.uniform(0, 21.4)));
    }
    prior[0] = 0, post[1] = 0, prior[2] = post[2] = INT_MAX, post[3] = 3276800, post[4] = 3276801;
    const Guarded<Kel32s> x(prior), g(post);
    Guarded<Kel32s> gain(3000);
    test::inEveryRoundingMode([&] { ASSERT_EQ(kelsFilterUpdateEMNS_32s(x.data(), g.data(), gain, 3000), 0); });
    int saturated = 0;
    for (int i = 0; i < 3000; ++i) {
        const Real exact = ephraimMalah(prior[i] * kUnitSnr, std::clamp(post[i], 1, 3276800) * kUnitSnr) * kUnitGain;
        ASSERT_LE(std::fabs(gain[i] - std::min<Real>(exact, INT_MAX)), 0.5L + 1e-6L * exact)
            << prior[i] << ", " << post[i];
        saturated += gain[i] == INT_MAX ? 1 : 0;
    }
    EXPECT_TRUE(saturated > 100 && saturated < 2000) << saturated;
}

template <class T>
void checkLengthsAndSigns(KelStatus (*wiener)(const T*, T*, int), KelStatus (*emns)(const T*, const T*, T*, int)) {
    test::expectVectorChecks({-8, kelStatusLengthRange}, wiener, emns);
    const T ones[] = {1, 1}, mixed[] = {1, -1};
    T gain[] = {7, 7};
    for (const int len : {-1, 65536, INT_MAX}) {
        EXPECT_EQ(wiener(mixed, gain, len), kelStatusLengthRange);
        EXPECT_EQ(emns(mixed, ones, gain, len), kelStatusLengthRange);
    }
    EXPECT_EQ(emns(mixed, ones, gain, 2), kelStatusOutOfRange);
    EXPECT_EQ(emns(ones, mixed, gain, 2), kelStatusOutOfRange);
    EXPECT_TRUE(gain[0] == 7 && gain[1] == 7);
    const std::vector<T> most(65535, 1);
    std::vector<T> result(65535);
    EXPECT_EQ(wiener(most.data(), result.data(), 65535), 0);
    EXPECT_EQ(emns(most.data(), most.data(), result.data(), 65535), 0);
}
TEST(Gains, ChecksInOrder) {
    checkLengthsAndSigns(kelsFilterUpdateWiener_32f, kelsFilterUpdateEMNS_32f);
    checkLengthsAndSigns(kelsFilterUpdateWiener_32s, kelsFilterUpdateEMNS_32s);
}

}  // namespace
