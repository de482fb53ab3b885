// All scorers of diagonal Gaussians from one table: single vectors, frames under a Gaussian, a vector under Gaussians.
#include <kels.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

#include "support/allocation.h"
#include "support/guarded.h"
#include "support/numeric.h"
#include "support/random.h"

namespace {

using test::Guarded;
using test::Random;
using Quad = __float128;

// One call of any of the functions.  Item g is made of `one`, row g of `rows` and row g of `weights`, or in frames of the
// only row of weights.
template <class T, class R>
struct Args {
    const T* rows;
    const T* weights;
    const T** rowList;
    const T** weightList;
    const T* one;
    int step, width, height;
    R* out;
    R constant;
    int scale;
};

enum Shape { Single, UnitSingle, Frames, FrameList, UnitFrames, UnitFrameList, Gaussians, GaussianList };
enum Variance { Inverse, Unit, Wrapped, Direct };
enum Finish { Score, Dist, Wrap };

template <class T, class R>
struct Member {
    const char* name;
    Shape shape;
    Variance variance;
    Finish finish;
    bool scaled;
    KelStatus (*call)(const Args<T, R>& a);

    bool single() const { return shape <= UnitSingle; }
    bool frames() const { return shape >= Frames && shape <= UnitFrameList; }
    bool lists() const { return shape == FrameList || shape == UnitFrameList || shape == GaussianList; }
    bool weighted() const { return variance == Inverse || variance == Direct; }
};
template <class T, class R>
using Members = std::vector<Member<T, R>>;

#define ARGS_Single a.rows, a.one, a.weights, a.width, a.out
#define ARGS_UnitSingle a.rows, a.one, a.width, a.out
#define ARGS_Frames a.rows, a.step, a.one, a.weights, a.width, a.out, a.height
#define ARGS_UnitFrames a.rows, a.step, a.one, a.width, a.out, a.height
#define ARGS_FrameList a.rowList, a.one, a.weights, a.width, a.out, a.height
#define ARGS_UnitFrameList a.rowList, a.one, a.width, a.out, a.height
#define ARGS_Gaussians a.rows, a.weights, a.step, a.one, a.width, a.out, a.height
#define ARGS_GaussianList a.rowList, a.weightList, a.one, a.width, a.out, a.height
#define CASE(function, shape, variance, finish, ...)                                                                \
    {                                                                                                               \
#function, shape, variance, finish, std::string_view(#__VA_ARGS__).find("scale") != std::string_view::npos, \
            [](const auto& a) { return function(ARGS_##shape __VA_OPT__(, ) __VA_ARGS__); }                         \
    }

const Members<Kel64f, Kel64f> kDouble = {
    CASE(kelsLogGaussSingle_64f, Single, Inverse, Score, a.constant),
    CASE(kelsLogGaussSingle_IdVar_64f, UnitSingle, Unit, Score, a.constant),
    CASE(kelsLogGaussSingle_DirectVar_64f, Single, Direct, Score, a.constant),
    CASE(kelsMahDistSingle_64f, Single, Inverse, Dist),
    CASE(kelsLogGauss_64f_D2, Frames, Inverse, Score, a.constant),
    CASE(kelsLogGauss_64f_D2L, FrameList, Inverse, Score, a.constant),
    CASE(kelsLogGauss1_64f_D2, Frames, Inverse, Score, a.constant),
    CASE(kelsLogGauss1_64f_D2L, FrameList, Inverse, Score, a.constant),
    CASE(kelsLogGauss_IdVar_64f_D2, UnitFrames, Unit, Score, a.constant),
    CASE(kelsLogGauss_IdVar_64f_D2L, UnitFrameList, Unit, Score, a.constant),
    CASE(kelsMahDist_64f_D2, Frames, Inverse, Dist),
    CASE(kelsMahDist_64f_D2L, FrameList, Inverse, Dist),
    CASE(kelsMahDist1_64f_D2, Frames, Inverse, Dist),
    CASE(kelsMahDist1_64f_D2L, FrameList, Inverse, Dist),
    CASE(kelsLogGaussMultiMix_64f_D2, Gaussians, Inverse, Score),
    CASE(kelsLogGaussMultiMix_64f_D2L, GaussianList, Inverse, Score),
    CASE(kelsLogGauss2_64f_D2, Gaussians, Inverse, Score),
    CASE(kelsLogGauss2_64f_D2L, GaussianList, Inverse, Score),
    CASE(kelsMahDistMultiMix_64f_D2, Gaussians, Inverse, Dist),
    CASE(kelsMahDistMultiMix_64f_D2L, GaussianList, Inverse, Dist),
    CASE(kelsMahDist2_64f_D2, Gaussians, Inverse, Dist),
    CASE(kelsMahDist2_64f_D2L, GaussianList, Inverse, Dist),
};

const Members<Kel32f, Kel32f> kSingle = {
    CASE(kelsLogGaussSingle_32f, Single, Inverse, Score, a.constant),
    CASE(kelsLogGaussSingle_IdVar_32f, UnitSingle, Unit, Score, a.constant),
    CASE(kelsLogGaussSingle_DirectVar_32f, Single, Direct, Score, a.constant),
    CASE(kelsMahDistSingle_32f, Single, Inverse, Dist),
    CASE(kelsLogGauss_32f_D2, Frames, Inverse, Score, a.constant),
    CASE(kelsLogGauss_32f_D2L, FrameList, Inverse, Score, a.constant),
    CASE(kelsLogGauss1_32f_D2, Frames, Inverse, Score, a.constant),
    CASE(kelsLogGauss1_32f_D2L, FrameList, Inverse, Score, a.constant),
    CASE(kelsLogGauss_IdVar_32f_D2, UnitFrames, Unit, Score, a.constant),
    CASE(kelsLogGauss_IdVar_32f_D2L, UnitFrameList, Unit, Score, a.constant),
    CASE(kelsMahDist_32f_D2, Frames, Inverse, Dist),
    CASE(kelsMahDist_32f_D2L, FrameList, Inverse, Dist),
    CASE(kelsMahDist1_32f_D2, Frames, Inverse, Dist),
    CASE(kelsMahDist1_32f_D2L, FrameList, Inverse, Dist),
    CASE(kelsLogGaussMultiMix_32f_D2, Gaussians, Inverse, Score),
    CASE(kelsLogGaussMultiMix_32f_D2L, GaussianList, Inverse, Score),
    CASE(kelsLogGauss2_32f_D2, Gaussians, Inverse, Score),
    CASE(kelsLogGauss2_32f_D2L, GaussianList, Inverse, Score),
    CASE(kelsMahDistMultiMix_32f_D2, Gaussians, Inverse, Dist),
    CASE(kelsMahDistMultiMix_32f_D2L, GaussianList, Inverse, Dist),
    CASE(kelsMahDist2_32f_D2, Gaussians, Inverse, Dist),
    CASE(kelsMahDist2_32f_D2L, GaussianList, Inverse, Dist),
};

const Members<Kel32f, Kel64f> kMixed = {
    CASE(kelsLogGaussSingle_32f64f, Single, Inverse, Score, a.constant),
    CASE(kelsLogGaussSingle_IdVar_32f64f, UnitSingle, Unit, Score, a.constant),
    CASE(kelsLogGaussSingle_DirectVar_32f64f, Single, Direct, Score, a.constant),
    CASE(kelsMahDistSingle_32f64f, Single, Inverse, Dist),
};

const Members<Kel16s, Kel32f> kShort = {
    CASE(kelsLogGaussSingle_16s32f, Single, Inverse, Score, a.constant),
    CASE(kelsLogGaussSingle_Scaled_16s32f, Single, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGaussSingle_Low_16s32f, Single, Inverse, Score, a.constant),
    CASE(kelsLogGaussSingle_LowScaled_16s32f, Single, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGaussSingle_IdVar_16s32f, UnitSingle, Unit, Score, a.constant),
    CASE(kelsLogGaussSingle_IdVarScaled_16s32f, UnitSingle, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGaussSingle_IdVarLow_16s32f, UnitSingle, Unit, Score, a.constant),
    CASE(kelsLogGaussSingle_IdVarLowScaled_16s32f, UnitSingle, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGaussSingle_DirectVar_16s32f, Single, Direct, Score, a.constant),
    CASE(kelsLogGaussSingle_DirectVarScaled_16s32f, Single, Direct, Score, a.constant, a.scale),
    CASE(kelsMahDistSingle_16s32f, Single, Inverse, Dist),
    CASE(kelsLogGauss_Scaled_16s32f_D2, Frames, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGauss_Scaled_16s32f_D2L, FrameList, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGauss_LowScaled_16s32f_D2, Frames, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGauss_LowScaled_16s32f_D2L, FrameList, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGauss_IdVarScaled_16s32f_D2, UnitFrames, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGauss_IdVarScaled_16s32f_D2L, UnitFrameList, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGauss_IdVarLowScaled_16s32f_D2, UnitFrames, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGauss_IdVarLowScaled_16s32f_D2L, UnitFrameList, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGauss_16s32f_D2, Frames, Inverse, Score, a.constant),
    CASE(kelsLogGauss_16s32f_D2L, FrameList, Inverse, Score, a.constant),
    CASE(kelsLogGauss_Low_16s32f_D2, Frames, Inverse, Score, a.constant),
    CASE(kelsLogGauss_Low_16s32f_D2L, FrameList, Inverse, Score, a.constant),
    CASE(kelsLogGauss_IdVar_16s32f_D2, UnitFrames, Unit, Score, a.constant),
    CASE(kelsLogGauss_IdVar_16s32f_D2L, UnitFrameList, Unit, Score, a.constant),
    CASE(kelsLogGauss_IdVarLow_16s32f_D2, UnitFrames, Unit, Score, a.constant),
    CASE(kelsLogGauss_IdVarLow_16s32f_D2L, UnitFrameList, Unit, Score, a.constant),
    CASE(kelsLogGaussMultiMix_Scaled_16s32f_D2, Gaussians, Inverse, Score, a.scale),
    CASE(kelsLogGaussMultiMix_Scaled_16s32f_D2L, GaussianList, Inverse, Score, a.scale),
    CASE(kelsLogGaussMultiMix_16s32f_D2, Gaussians, Inverse, Score),
    CASE(kelsLogGaussMultiMix_16s32f_D2L, GaussianList, Inverse, Score),
};

const Members<Kel16s, Kel32s> kInteger = {
    CASE(kelsLogGaussSingle_16s32s_Sfs, Single, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGaussSingle_Low_16s32s_Sfs, Single, Inverse, Wrap, a.constant, a.scale),
    CASE(kelsLogGaussSingle_IdVar_16s32s_Sfs, UnitSingle, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGaussSingle_IdVarLow_16s32s_Sfs, UnitSingle, Wrapped, Wrap, a.constant, a.scale),
    CASE(kelsLogGaussSingle_DirectVar_16s32s_Sfs, Single, Direct, Score, a.constant, a.scale),
    CASE(kelsMahDistSingle_16s32s_Sfs, Single, Inverse, Dist, a.scale),
    CASE(kelsLogGauss_16s32s_D2Sfs, Frames, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGauss_16s32s_D2LSfs, FrameList, Inverse, Score, a.constant, a.scale),
    CASE(kelsLogGauss_Low_16s32s_D2Sfs, Frames, Inverse, Wrap, a.constant, a.scale),
    CASE(kelsLogGauss_Low_16s32s_D2LSfs, FrameList, Inverse, Wrap, a.constant, a.scale),
    CASE(kelsLogGauss_IdVar_16s32s_D2Sfs, UnitFrames, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGauss_IdVar_16s32s_D2LSfs, UnitFrameList, Unit, Score, a.constant, a.scale),
    CASE(kelsLogGauss_IdVarLow_16s32s_D2Sfs, UnitFrames, Wrapped, Wrap, a.constant, a.scale),
    CASE(kelsLogGauss_IdVarLow_16s32s_D2LSfs, UnitFrameList, Wrapped, Wrap, a.constant, a.scale),
    CASE(kelsLogGaussMultiMix_16s32s_D2Sfs, Gaussians, Inverse, Score, a.scale),
    CASE(kelsLogGaussMultiMix_16s32s_D2LSfs, GaussianList, Inverse, Score, a.scale),
    CASE(kelsLogGaussMultiMix_Low_16s32s_D2Sfs, Gaussians, Inverse, Wrap, a.scale),
    CASE(kelsLogGaussMultiMix_Low_16s32s_D2LSfs, GaussianList, Inverse, Wrap, a.scale),
};

// Runs `body(member)` for each function of every table.
template <class Body>
void forEachMember(Body body) {
    const auto all = [&](const auto& members) {
        for (const auto& member : members) {
            SCOPED_TRACE(member.name);
            body(member);
        }
    };
    all(kDouble);
    all(kSingle);
    all(kMixed);
    all(kShort);
    all(kInteger);
}

// Arrays for the calls: the last row ends at a guarded page, what lies between the rows poisons every sum, and lists
// name the rows from the last to the first.
template <class T, class R>
struct Problem {
    Problem(Random& random, int width, int height, int gap, bool reversed)
        : step(width + gap),
          rows(count(width, height)),
          weights(count(width, height)),
          one(static_cast<std::size_t>(width)),
          out(static_cast<std::size_t>(height)),
          args{rows, weights, nullptr, nullptr, one, step, width, height, out, R(), 0} {
        for (auto* const block : {&rows, &weights}) {
            for (int i = 0; i < static_cast<int>(block->size()); ++i) {
                const bool inside = i % step < width;
                (*block)[i] = inside                  ? random.value<T>(3)
                              : std::is_integral_v<T> ? T(12345)
                                                      : std::numeric_limits<T>::quiet_NaN();
                if (block == &weights && (*block)[i] == 0) (*block)[i] = 1;
            }
        }
        for (int i = 0; i < width; ++i) one[i] = random.value<T>(3);
        for (int g = 0; g < height; ++g) {
            const int from = reversed ? height - 1 - g : g;
            rowList.push_back(rows.data() + from * step);
            weightList.push_back(weights.data() + from * step);
            constants.push_back(random.value<R>(6));
        }
        args.rowList = rowList.data();
        args.weightList = weightList.data();
        args.constant = constants[0];
    }
    std::size_t count(int width, int height) const { return static_cast<std::size_t>((height - 1) * step + width); }

    KelStatus run(const Member<T, R>& member) {
        std::copy(constants.begin(), constants.end(), out.data());
        if (!member.single()) return member.call(args);
        KelStatus status = kelStatusOk;
        for (int g = 0; g < args.height; ++g) {
            auto a = args;
            a.rows = rowList[static_cast<std::size_t>(g)];
            a.weights = weightList[static_cast<std::size_t>(g)];
            a.out = args.out + g;
            a.constant = constants[static_cast<std::size_t>(g)];
            status = std::max(status, member.call(a));
        }
        return status;
    }
    const T* weightsOf(const Member<T, R>& member, int g) const {
        return member.frames() ? weights.data() : weightList[static_cast<std::size_t>(g)];
    }
    R constantOf(const Member<T, R>& member, int g) const {
        return member.frames() ? constants[0] : constants[static_cast<std::size_t>(g)];
    }

    int step;
    Guarded<T> rows, weights, one;
    Guarded<R> out;
    std::vector<const T*> rowList, weightList;
    std::vector<R> constants;
    Args<T, R> args;
};

// S and the sum of the magnitudes of its terms.
struct Sum {
    Quad value = 0, magnitude = 0;
};
template <class T, class R>
Sum exactSum(const Member<T, R>& member, const Problem<T, R>& p, int g) {
    const T* const row = p.rowList[static_cast<std::size_t>(g)];
    const T* const weights = p.weightsOf(member, g);
    Sum sum;
    for (int i = 0; i < p.args.width; ++i) {
        const Quad d = Quad(p.one[i]) - Quad(row[i]);
        Quad term = d * d;
        if (member.variance == Inverse) term *= weights[i];
        if (member.variance == Direct) term /= weights[i];
        if (member.variance == Wrapped && term >= 0x1p31) term -= 0x1p32;
        sum.value += term;
        sum.magnitude += term < 0 ? -term : term;
    }
    return sum;
}

// sum * 2^-scale, toward minus infinity; sums of whole numbers.
long double floorScaled(Quad sum, int64_t scale) {
    return std::floor(
        std::ldexp(static_cast<long double>(sum), static_cast<int>(-std::clamp<int64_t>(scale, -999, 999))));
}

template <class T, class R>
void expectScore(const Member<T, R>& member, const Problem<T, R>& p, int g) {
    const Sum sum = exactSum(member, p, g);
    const int scale = member.scaled ? p.args.scale : 0;
    const R constant = p.constantOf(member, g);
    const R got = p.out[g];
    if constexpr (std::is_integral_v<R>) {
        const long double shifted = floorScaled(sum.value, member.finish == Dist ? scale : int64_t{scale} + 1);
        if (member.finish == Wrap) {
            const auto low = static_cast<uint32_t>(static_cast<int64_t>(std::fmod(shifted, 0x1p32L)));
            EXPECT_EQ(got, static_cast<R>(static_cast<uint32_t>(constant) - low)) << "scale " << scale;
        } else {
            const long double score = member.finish == Dist ? shifted : constant - shifted;
            EXPECT_EQ(got, static_cast<R>(std::clamp<long double>(score, INT32_MIN, INT32_MAX))) << "scale " << scale;
        }
    } else {
        const Quad factor = member.finish == Dist ? 1 : std::ldexp(0.5L, -std::clamp(scale, -128, 150));
        const Quad exact = member.finish == Dist ? sum.value : constant - sum.value * factor;
        const Quad error = got > exact ? got - exact : exact - got;
        // The roundings of a term and of the additions that it passes through; then that of the result.
        const Quad rounding = std::is_same_v<R, Kel64f> ? 0x1p-64 : 0x1p-24;
        const Quad last = std::numeric_limits<R>::epsilon() / 2 * (1 + 0x1p-9L) * (exact < 0 ? -exact : exact);
        EXPECT_LE(error, (p.args.width / 4 + 10) * rounding * sum.magnitude * factor + last)
            << static_cast<double>(got) << " instead of " << static_cast<double>(exact) << ", scale " << scale;
    }
}

TEST(Gauss, ScoresFollowTheFormulaAtEveryWidth) {
    forEachMember([]<class T, class R>(const Member<T, R>& member) {
        Random random(3);
        std::vector<int> widths = {63, 64, 65, 100, 1000};
        for (int width = 1; width <= 41; ++width) widths.push_back(width);
        for (const int width : widths) {
            const int height = width == 39 ? 70 : 1 + width % 9;
            Problem<T, R> p(random, width, height, width % 3, member.lists());
            p.args.scale = std::is_integral_v<R> ? 20 + width % 20 : width % 40 - 10;
            ASSERT_EQ(p.run(member), kelStatusOk);
            for (int g = 0; g < height; ++g) expectScore(member, p, g);
            ASSERT_FALSE(testing::Test::HasFailure()) << "width " << width;
        }
    });
}

// Differences, weights and their products beyond what a double holds, in sums and scores that it does hold.
TEST(Gauss, DoubleScoresHoldWhereProductsLeaveTheRange) {
    using Limits = std::numeric_limits<Kel64f>;
    const struct {
        Kel64f difference, weight, constant;
    } cases[] = {{1e200, 1e-300, -3},
                 {1e-200, 1e300, -1e-101},
                 {0x1p-537, 0x1p1000, 0},
                 {1e150, 1e8, 0},
                 {0x1.3p511, 1, 0},
                 {0x1.9p511, 2, 1e308},
                 {1e-170, 1, 0},
                 {Limits::infinity(), 1, 0},
                 {Limits::max(), 2, 0},
                 {3, Limits::infinity(), 0},
                 {1, Limits::quiet_NaN(), 0},
                 {1, 1, -Limits::infinity()}};
    for (const auto& c : cases) {
        for (const int place : {0, 3, 8}) {
            Kel64f x[9] = {}, mean[9] = {}, ivar[9] = {}, score = 77;
            x[place] = c.difference;
            ivar[place] = c.weight;
            ASSERT_EQ(kelsLogGaussSingle_64f(x, mean, ivar, 9, &score, c.constant), kelStatusOk);
            long double sum = 0;
            for (int i = 0; i < 9; ++i) sum += static_cast<long double>(x[i]) * x[i] * ivar[i];
            const auto expected = static_cast<Kel64f>(c.constant - 0.5L * sum);
            EXPECT_TRUE(test::sameBits(score, expected)) << score << " instead of " << expected;
        }
    }
}

TEST(Gauss, IntegerScoresShiftByAnyScaleInAnyRoundingMode) {
    for (const auto& member : kInteger) {
        SCOPED_TRACE(member.name);
        Random random(5);
        for (const int scale :
             {INT32_MIN, -70, -64, -33, -32, -31, -17, -2, -1, 0, 1, 15, 31, 32, 46, 63, 64, INT32_MAX}) {
            if (!member.scaled) break;
            Problem<Kel16s, Kel32s> p(random, 13, 5, 0, member.lists());
            p.args.scale = scale;
            test::inEveryRoundingMode([&] { p.run(member); },
                                      [&] {
                                          for (int g = 0; g < 5; ++g) expectScore(member, p, g);
                                      });
        }
    }
}

TEST(Gauss, AVectorAtTheMeanScoresTheConstantAtAnyScale) {
    forEachMember([]<class T, class R>(const Member<T, R>& member) {
        Random random(7);
        for (const int scale : {INT32_MIN, -300, -1, 0, 300, INT32_MAX}) {
            Problem<T, R> p(random, 21, 1, 0, false);
            p.args.scale = scale;
            for (int i = 0; i < 21; ++i) p.rows[i] = p.one[i];
            ASSERT_EQ(p.run(member), kelStatusOk);
            EXPECT_EQ(p.out[0], member.finish == Dist ? R(0) : p.constants[0]);
        }
    });
}

// Faults that two functions may report differently: step first for blocks, pointers first for single vectors.
TEST(Gauss, TheFirstFaultIsReportedAndNothingWritten) {
    enum Fault { NullRows = 1, NullWeights = 2, NullOne = 4, NullOut = 8, Width = 16, Height = 32, Step = 64 };
    forEachMember([]<class T, class R>(const Member<T, R>& member) {
        Random random(9);
        Problem<T, R> p(random, 5, 1, 2, false);
        const auto good = p.args;
        for (int faults = 1; faults < 128; ++faults) {
            auto a = good;
            if (faults & NullRows) a.rows = nullptr, a.rowList = nullptr;
            if (faults & NullWeights) a.weights = nullptr, a.weightList = nullptr;
            if (faults & NullOne) a.one = nullptr;
            if (faults & NullOut) a.out = nullptr;
            if (faults & Width) a.width = 0;
            if (faults & Height) a.height = 0;
            if (faults & Step) a.step = faults & Width ? -1 : 4;
            const bool step = (faults & Step) && !member.single() && !member.lists();
            const bool null = faults & (NullRows | NullOne | NullOut | (member.weighted() ? NullWeights : 0));
            const bool size = faults & (member.single() ? Width : Width | Height);
            if (!step && !null && !size) continue;
            p.out[0] = R(77);
            EXPECT_EQ(member.call(a), step ? kelStatusStep : null ? kelStatusNullPtr : kelStatusSize) << faults;
            EXPECT_EQ(p.out[0], R(77)) << faults;
        }
    });
}

TEST(Gauss, AFaultyVarianceIsAWarningThatTheFormsAnswerDifferently) {
    const Kel32f x[] = {3, 1, 2}, m[] = {1, 1, 1};
    const Kel64f xd[] = {3, 1, 2}, md[] = {1, 1, 1};
    const Kel16s xs[] = {3, 1, 2}, ms[] = {1, 1, 1}, vs[] = {1, 1, 0};
    for (const Kel32f faulty : {0.0f, -0.0f, std::numeric_limits<Kel32f>::quiet_NaN()}) {
        const Kel32f v[] = {1, 1, faulty};
        const Kel64f vd[] = {1, 1, faulty};
        Kel32f single = 77, shortScore = 77;
        Kel64f wide = 77, mixed = 77;
        Kel32s integer = 77;
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_32f(x, m, v, 3, &single, 5), kelStatusDivByZero);
        EXPECT_EQ(single, -std::numeric_limits<Kel32f>::infinity());
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_64f(xd, md, vd, 3, &wide, 5), kelStatusDivByZero);
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_32f64f(x, m, v, 3, &mixed, 5), kelStatusDivByZero);
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_16s32f(xs, ms, vs, 3, &shortScore, 5), kelStatusDivByZero);
        EXPECT_EQ(wide + mixed + shortScore, 3 * 77);
        EXPECT_EQ(kelsLogGaussSingle_DirectVar_16s32s_Sfs(xs, ms, vs, 3, &integer, 5, 0), kelStatusDivByZero);
        EXPECT_EQ(integer, INT32_MIN);
    }
}

TEST(Gauss, ScratchForVariancesThatCannotBeHadIsReported) {
    const Kel32f x[] = {1, 2}, v[] = {1, 2};
    const Kel16s xs[] = {1, 2};
    test::failEachAllocation([&](int failing, const test::AllocationWatch& watch) {
        Kel32f single = 77;
        Kel32s integer = 77;
        const KelStatus first = kelsLogGaussSingle_DirectVar_32f(x, x, v, 2, &single, 5);
        const KelStatus second = kelsLogGaussSingle_DirectVar_16s32s_Sfs(xs, xs, xs, 2, &integer, 5, 0);
        EXPECT_EQ(first, failing == 0 ? kelStatusAllocError : kelStatusOk);
        EXPECT_EQ(second, failing == 1 ? kelStatusAllocError : kelStatusOk);
        EXPECT_EQ(single, failing == 0 ? 77 : 5);
        EXPECT_EQ(integer, failing == 1 ? 77 : 5);
        EXPECT_EQ(watch.unreleased(), 0);
    });
}

// More terms of one sign at the ends of the range than 53 bits hold.
TEST(Gauss, IntegerSumsStayExactOverLongRowsOfExtremes) {
    constexpr int kLength = 30001;
    const std::vector<Kel16s> low(kLength, -32768), high(kLength, 32767);
    Kel32s score = 0;
    const int64_t sum = int64_t{kLength} * 65535 * 65535 * -32768;
    ASSERT_EQ(kelsLogGaussSingle_Low_16s32s_Sfs(high.data(), low.data(), low.data(), kLength, &score, 9, -1),
              kelStatusOk);
    EXPECT_EQ(score, static_cast<Kel32s>(static_cast<uint32_t>(9 - sum)));
    ASSERT_EQ(kelsLogGaussSingle_16s32s_Sfs(high.data(), low.data(), low.data(), kLength, &score, 9, 33), kelStatusOk);
    EXPECT_EQ(score, 9 - (sum >> 34));
}

}  // namespace
