// The controller beside its rules in extended precision, and what it makes of plain situations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "kels.h"
#include "support/random.h"

namespace {

using Real = long double;

struct Floats {
    using Real = Kel32f;
    using State = KelAECState_32f;
    static constexpr auto size = kelsControllerGetSizeAEC_32f;
    static constexpr auto init = kelsControllerInitAEC_32f;
    static constexpr auto control = kelsControllerUpdateAEC_32f;
};

struct Integers {
    using Real = Kel32s;
    using State = KelAECState_32s;
    static constexpr auto size = kelsControllerGetSizeAEC_32s;
    static constexpr auto init = kelsControllerInitAEC_32s;
    static constexpr auto control = kelsControllerUpdateAEC_32s;
};

// A controller in memory of the size that it asks for.
template <class Form>
class Controller {
  public:
    using T = typename Form::Real;
    int flag = -1;
    Kel32f factor = -1, forget = -1;

    Controller(int rate, int len) {
        int bytes = 0;
        EXPECT_EQ(Form::size(len, &bytes), 0);
        EXPECT_EQ(bytes % 8, 0);
        memory_.resize(bytes / 8);
        EXPECT_EQ(Form::init(rate, len, state()), 0);
    }
    int take(const std::vector<T>& x, const std::vector<T>& d, const std::vector<T>& e) {
        EXPECT_EQ(Form::control(x.data(), d.data(), e.data(), state(), &factor, &forget, &flag), 0);
        return flag;
    }

  private:
    typename Form::State* state() { return reinterpret_cast<typename Form::State*>(memory_.data()); }
    std::vector<int64_t> memory_;
};

// What the controller is to find.
class Rules {
  public:
    Rules(int rate, int len) : seconds_(Real(len) / rate) {
        const Real r = 125 * seconds_;
        slow_ = std::pow(0.96L, r);
        fast_ = std::pow(0.7L, r);
        persist_ = static_cast<int>(std::ceil(0.048L / seconds_ - 1e-12L));
        dead_ = static_cast<int>(std::ceil(0.5L / seconds_ - 1e-12L));
    }
    template <class V>
    int take(const V& x, const V& d, const V& e) {
        Real xx = 0, yy = 0, ee = 0, ey = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const Real y = Real(d[i]) - e[i];
            xx += Real(x[i]) * x[i] / x.size();
            yy += y * y / x.size();
            ee += Real(e[i]) * e[i] / x.size();
            ey += e[i] * y / x.size();
        }
        const auto smooth = [](Real keep, Real& mean, Real value) { mean = keep * mean + (1 - keep) * value; };
        smooth(fast_, sx, xx), smooth(fast_, fe, ee), smooth(fast_, fy, yy);
        smooth(slow_, sey, ey), smooth(slow_, syy, yy), smooth(slow_, see, ee);
        lx = std::max(sx, lx * std::pow(2.0L, -seconds_ / 8));
        n = n < 0 || fe < n ? fe : std::max(n * std::pow(2.0L, seconds_), 1e-4L * fe);
        if (sx <= 1e-6L * lx) return kelAECNoReference;
        const bool wrong = syy > 0 && std::fabs(sey) > 0.25L * syy && sey * sey > 0.1L * syy * see && wait == 0;
        wait = std::max(wait - 1, 0);
        count = wrong ? count + 1 : 0;
        if (count == persist_) {
            count = 0, leak = 1, sey = syy = see = 0, wait = dead_;
            return kelAECPathChange;
        }
        const bool talk = fe > 4 * (leak * fy + n);
        leak = fe < leak * fy ? leak + (1 - fast_) * (fe / fy - leak)
                              : std::min(1.0L, leak * std::pow(2.0L, seconds_ / 2));
        leak = std::max(leak, 1e-4L);
        return talk ? kelAECDoubleTalk : kelAECSingleTalk;
    }

  private:
    Real seconds_, slow_, fast_;
    int persist_, dead_, count = 0, wait = 0;
    Real leak = 1, sx = 0, lx = 0, sey = 0, syy = 0, see = 0, fe = 0, fy = 0, n = -1;
};

std::vector<Kel32s> noise(test::Random& random, int len, double level) {
    std::vector<Kel32s> v(len);
    for (Kel32s& s : v) s = static_cast<Kel32s>(std::lrint(random.uniform(-level, level)));
    return v;
}
std::vector<Kel32f> floats(const std::vector<Kel32s>& v) {
    return {v.begin(), v.end()};
}

// Silence, far end alone, both ends, a wrong prediction: in turn at random.  Both forms agree with the rules.
TEST(EchoController, FollowsItsRules) {
    std::set<int> found;
    for (const auto& [rate, len] : {std::pair(8000, 128), {8000, 33}, {16000, 256}, {44100, 512}, {48000, 4096}}) {
        test::Random random(static_cast<unsigned>(len));
        Controller<Floats> f(rate, len);
        Controller<Integers> s(rate, len);
        Rules rules(rate, len);
        double reference = 0, near = 0, wrong = 0;
        for (int block = 0; block < 1500; ++block) {
            if (random.between(0, 15 + 2000 / len) == 0) {
                reference = random.between(0, 3) ? random.uniform(1000, 20000) : random.between(0, 1);
                near = random.between(0, 1) ? 10 : random.uniform(10, 20000);
                wrong = random.between(0, 2) ? random.uniform(-0.01, 0.01) : random.uniform(-1, 1);
            }
            const auto x = noise(random, len, reference);
            auto e = noise(random, len, near), d = e;
            for (int i = 0; i < len; ++i) {
                e[i] += static_cast<Kel32s>(wrong * x[i]);
                d[i] = e[i] + x[i] / 2;
            }
            const int flag = rules.take(x, d, e);
            ASSERT_EQ(f.take(floats(x), floats(d), floats(e)), flag) << "block " << block << " of " << len;
            ASSERT_EQ(s.take(x, d, e), flag) << "block " << block << " of " << len;
            const double r = 125.0 * len / rate;
            const Kel32f forget = flag == kelAECSingleTalk ? static_cast<Kel32f>(1 - std::pow(0.9998, r)) : 0;
            ASSERT_TRUE(f.factor == (flag == kelAECDoubleTalk ? 0.5F : 1) && std::fabs(f.forget - forget) <= 1e-10F);
            ASSERT_TRUE(s.factor == f.factor && s.forget == f.forget);
            found.insert(flag);
        }
    }
    EXPECT_EQ(found.size(), 4U) << "all of the flags occur";
}

TEST(EchoController, SilenceAndUnpluggedMicrophone) {
    Controller<Floats> silent(8000, 128), unplugged(8000, 128);
    const std::vector<Kel32f> zeros(128), ones(128, 1), minus(128, -1);
    for (int call = 1; call <= 80; ++call) {
        EXPECT_EQ(silent.take(zeros, zeros, zeros), kelAECNoReference);
        const int flag = unplugged.take(ones, zeros, minus);
        EXPECT_EQ(flag == kelAECPathChange, call == 3 || call == 38 || call == 73) << "call " << call;
    }
}

// A copy of the state goes on as the original does; differences of integers do not overflow.
TEST(EchoController, CopiesAndExtremes) {
    Controller<Integers> original(16000, 256);
    test::Random random(5);
    const std::vector<Kel32s> high(256, INT32_MAX), low(256, INT32_MIN);
    for (int block = 0; block < 20; ++block) original.take(noise(random, 256, 900), high, low);
    Controller<Integers> copy(original);
    for (int block = 0; block < 60; ++block) {
        const auto x = noise(random, 256, 900), d = noise(random, 256, 900), e = noise(random, 256, 300);
        EXPECT_EQ(original.take(x, d, e), copy.take(x, d, e));
    }
}

}  // namespace
