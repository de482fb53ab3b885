// Deltas and accelerations of streams in any blocks, of whole arrays, and of the Aurora front-end.
#include "kels/delta.h"

#include "support/forms.h"
#include "support/support.h"

namespace {

using namespace test;

// ---- the functions -------------------------------------------------------------------------------------------------

constexpr auto deltaWin1 = forms(kelsDelta_Win1_32f_D2, kelsDelta_Win1_16s_D2Sfs);
constexpr auto deltaWin2 = forms(kelsDelta_Win2_32f_D2, kelsDelta_Win2_16s_D2Sfs);
constexpr auto deltaDeltaWin1 = forms(kelsDeltaDelta_Win1_32f_D2, kelsDeltaDelta_Win1_16s_D2Sfs);
constexpr auto deltaDeltaWin2 = forms(kelsDeltaDelta_Win2_32f_D2, kelsDeltaDelta_Win2_16s_D2Sfs);
constexpr auto deltaMulWin1 = forms(kelsDeltaMul_Win1_32f_D2, kelsDeltaMul_Win1_16s_D2Sfs);
constexpr auto deltaMulWin2 = forms(kelsDeltaMul_Win2_32f_D2, kelsDeltaMul_Win2_16s_D2Sfs);
constexpr auto deltaDeltaMulWin1 = forms(kelsDeltaDeltaMul_Win1_32f_D2, kelsDeltaDeltaMul_Win1_16s_D2Sfs);
constexpr auto deltaDeltaMulWin2 = forms(kelsDeltaDeltaMul_Win2_32f_D2, kelsDeltaDeltaMul_Win2_16s_D2Sfs);
constexpr auto evalDelta = forms(kelsEvalDelta_32f_D2, kelsEvalDelta_16s_D2Sfs);
constexpr auto evalDeltaMul = forms(kelsEvalDeltaMul_32f_D2, kelsEvalDeltaMul_16s_D2Sfs);
constexpr auto aurora = forms(kelsDeltaDelta_Aurora_32f_D2, kelsDeltaDelta_Aurora_16s_D2Sfs);
constexpr auto auroraMul = forms(kelsDeltaDeltaMul_Aurora_32f_D2, kelsDeltaDeltaMul_Aurora_16s_D2Sfs);
constexpr auto copyColumn = forms(kelsCopyColumn_32f_D2, kelsCopyColumn_16s_D2);
// The short names are for floats alone.
constexpr auto deltaW1 = forms(kelsDeltaW1_32f_D2, kelsDelta_Win1_16s_D2Sfs);
constexpr auto deltaW2 = forms(kelsDeltaW2_32f_D2, kelsDelta_Win2_16s_D2Sfs);
constexpr auto deltaDeltaW1 = forms(kelsDeltaDeltaW1_32f_D2, kelsDeltaDelta_Win1_16s_D2Sfs);
constexpr auto deltaDeltaW2 = forms(kelsDeltaDeltaW2_32f_D2, kelsDeltaDelta_Win2_16s_D2Sfs);
constexpr auto copyCol = forms(kelsCopyCol_32f_D2, kelsCopyColumn_16s_D2);

// The arguments of a call, of which each function takes what it has; scalar forms take their multipliers from v[0] and
// v[1].
template <class T>
struct Call {
    const T* x;
    const T* v;
    int width;
    T* y;
    int step, height, mode, sf;
};

enum class Kind { Stream, Aurora, Whole };

template <class T>
struct Form {
    Kind kind = Kind::Stream;
    int half, orders;
    bool mul = false;
    KelStatus (*run)(const Call<T>&);

    int history() const { return kind == Kind::Aurora ? 8 : (orders + 1) * half; }
    int inputs(int width) const { return kind == Kind::Aurora ? 14 : width; }
    // The columns in front of the statics.
    int offset(int width, int step) const { return kind == Kind::Whole ? step - 2 * width : 0; }
    // The row that stands k rows from row t.
    int row(int t, int k, int rows) const {
        if (kind != Kind::Whole) return std::clamp(t + k, 0, rows - 1);
        if (k < 0) return t < half ? 0 : t + k;
        return t >= rows - half ? rows - 1 : t + k;
    }
};

// Copies the source to where the functions on whole arrays take statics from; the columns in front of them.
template <class T>
int place(const Call<T>& a) {
    const int offset = a.step - 2 * a.width;
    for (int t = 0; t < a.height; ++t) std::copy_n(a.x + t * a.width, a.width, a.y + t * a.step + offset);
    return offset;
}

// How each kind of function takes the arguments of a call.
template <class T, const auto& f>
KelStatus oneMultiplier(const Call<T>& a) {
    return f.scaled(a.sf, a.x, a.width, a.y, a.step, a.height, a.v[0], a.mode);
}
template <class T, const auto& f>
KelStatus twoMultipliers(const Call<T>& a) {
    return f.scaled(a.sf, a.x, a.width, a.y, a.step, a.height, a.v[0], a.v[1], a.mode);
}
template <class T, const auto& f>
KelStatus columnMultipliers(const Call<T>& a) {
    return f.scaled(a.sf, a.x, a.v, a.width, a.y, a.step, a.height, a.mode);
}
template <class T, const auto& f>
KelStatus copies(const Call<T>& a) {
    return f(a.x, a.width, a.y, a.step, a.height);
}
template <class T>
KelStatus wholeArray(const Call<T>& a) {
    return evalDelta.scaled(a.sf, a.y, a.height, a.step, a.width, place(a), 3, a.v[0]);
}
template <class T>
KelStatus wholeArrayMul(const Call<T>& a) {
    return evalDeltaMul.scaled(a.sf, a.y, a.v, a.height, a.step, a.width, place(a), 4);
}
template <class T>
KelStatus auroraPlain(const Call<T>& a) {
    return aurora.scaled(a.sf, a.x, a.y, a.step, a.height, a.mode);
}
template <class T>
KelStatus auroraTimes(const Call<T>& a) {
    return auroraMul.scaled(a.sf, a.x, a.v, a.y, a.step, a.height, a.mode);
}

template <class T>
const Form<T> kAurora = {.kind = Kind::Aurora, .half = 4, .orders = 2, .run = auroraPlain<T>};
template <class T>
const Form<T> kAuroraMul = {.kind = Kind::Aurora, .half = 4, .orders = 2, .mul = true, .run = auroraTimes<T>};

// All the others.
template <class T>
const std::vector<Form<T>> kForms = {
    {.half = 1, .orders = 1, .run = oneMultiplier<T, deltaWin1>},
    {.half = 1, .orders = 1, .run = oneMultiplier<T, deltaW1>},
    {.half = 1, .orders = 2, .run = twoMultipliers<T, deltaDeltaWin1>},
    {.half = 1, .orders = 2, .run = twoMultipliers<T, deltaDeltaW1>},
    {.half = 1, .orders = 1, .mul = true, .run = columnMultipliers<T, deltaMulWin1>},
    {.half = 1, .orders = 2, .mul = true, .run = columnMultipliers<T, deltaDeltaMulWin1>},
    {.half = 2, .orders = 1, .run = oneMultiplier<T, deltaWin2>},
    {.half = 2, .orders = 1, .run = oneMultiplier<T, deltaW2>},
    {.half = 2, .orders = 2, .run = twoMultipliers<T, deltaDeltaWin2>},
    {.half = 2, .orders = 2, .run = twoMultipliers<T, deltaDeltaW2>},
    {.half = 2, .orders = 1, .mul = true, .run = columnMultipliers<T, deltaMulWin2>},
    {.half = 2, .orders = 2, .mul = true, .run = columnMultipliers<T, deltaDeltaMulWin2>},
    {.half = 0, .orders = 0, .run = copies<T, copyColumn>},
    {.half = 0, .orders = 0, .run = copies<T, copyCol>},
    {.kind = Kind::Whole, .half = 3, .orders = 1, .run = wholeArray<T>},
    {.kind = Kind::Whole, .half = 4, .orders = 1, .mul = true, .run = wholeArrayMul<T>},
};

// ---- references ----------------------------------------------------------------------------------------------------

// What a product is stored as; those of integers come exact, in long double.
Kel32f stored(Kel32f v, int) {
    return v;
}
Kel16s stored(long double v, int sf) {
    return saturated<Kel16s>(std::floor(scaled(v, sf)));
}
template <class T>
using Number = std::conditional_t<std::is_same_v<T, Kel32f>, Kel32f, long double>;

constexpr int kUnwritten = -7777;

// The rows of a stream cut into blocks of the given heights, history rows handed on as a caller does.  16-bit forms run
// in every rounding mode.
template <class T>
std::vector<T> stream(const Form<T>& form, const std::vector<T>& x, const std::vector<T>& v, int width, int step,
                      const std::vector<int>& heights, int sf) {
    std::vector<T> all;
    const T* block = x.data();
    for (std::size_t b = 0; b < heights.size(); block += heights[b++] * form.inputs(width)) {
        const int mode = (b == 0 ? kelDeltaBlockFirst : 0) | (b + 1 == heights.size() ? kelDeltaBlockLast : 0);
        std::vector<T> rows(all.end() - (b == 0 ? 0 : form.history() * step), all.end());
        all.resize(all.size() - rows.size());
        rows.resize(rows.size() + heights[b] * step, kUnwritten);
        const Call<T> call = {block, v.data(), width, rows.data(), step, heights[b], mode, sf};
        inRoundingModes(std::is_integral_v<T>, [&] { EXPECT_EQ(form.run(call), kelStatusOk); });
        all.insert(all.end(), rows.begin(), rows.end());
    }
    return all;
}

// The whole output by the formulas.
template <class T>
std::vector<T> reference(const Form<T>& form, const std::vector<T>& x, const std::vector<T>& v, int width, int step,
                         int rows, int sf) {
    std::vector<T> out(rows * step, kUnwritten);
    for (int i = 0; i < width; ++i) {
        const int first = form.offset(width, step) + i;
        const auto at = [&](int t, int order) -> T& { return out[t * step + first + order * width]; };
        for (int t = 0; t < rows; ++t) {
            at(t, 0) = form.mul ? stored(Number<T>(x[t * width + i]) * v[i], sf) : x[t * width + i];
        }
        for (int order = 1; order <= form.orders; ++order) {
            for (int t = 0; t < rows; ++t) {
                Number<T> sum = 0;
                for (int k = 1; k <= form.half; ++k) {
                    const T ahead = at(form.row(t, k, rows), order - 1), back = at(form.row(t, -k, rows), order - 1);
                    sum += Number<T>(k) * (Number<T>(ahead) - back);
                }
                at(t, order) = stored(sum * v[form.mul ? order * width + i : order - 1], sf);
            }
        }
    }
    return out;
}

// A first block of at least `least` rows, then blocks of any height; some streams end with an empty one.
std::vector<int> cut(Random& random, int rows, int least) {
    std::vector<int> heights;
    for (int left = rows; left > 0; left -= heights.back()) {
        heights.push_back(std::min(left, heights.empty() ? least + random.between(1, 3) : random.between(1, 40)));
    }
    if (least > 0 && random.between(0, 1) == 0) heights.push_back(0);
    return heights;
}

const int kScaleFactors[] = {-3, 0, 1, 9, 15, 18, 22, 33, 64, -31, -64, INT_MAX, INT_MIN};

template <class T>
class Delta : public ::testing::Test {};
using Types = ::testing::Types<Kel32f, Kel16s>;
TYPED_TEST_SUITE(Delta, Types);

TYPED_TEST(Delta, OutputsInAnyBlocksAreTheFormulas) {
    using T = TypeParam;
    Random random(3);
    for (const Form<T>& form : kForms<T>) {
        for (int width = 1; width <= 150; width += width < 40 ? 1 : 37) {
            const int rows = std::max(form.history() + random.between(0, 90) * (width % 4 != 0), 1);
            const int step = (form.orders + 1) * width + random.between(0, 2), sf = kScaleFactors[width % 13];
            const auto x = random.vector<T>(rows * width);
            const auto v = random.vector<T>((form.orders + 1) * width + 2);
            const auto expected = reference(form, x, v, width, step, rows, sf);
            EXPECT_TRUE(stream(form, x, v, width, step, {rows}, sf) == expected) << width << " sf " << sf;
            if (form.kind == Kind::Whole) continue;
            const auto heights = cut(random, rows, form.history());
            EXPECT_TRUE(stream(form, x, v, width, step, heights, sf) == expected) << width << " in blocks";
        }
    }
}

// The sum of weights (times 1 / unit) and values: of floats within the roundings of a sum in any order, 16-bit exact.
template <class T, std::size_t n>
void expectWeighted(T got, const int (&weight)[n], const T (&s)[n], int unit, int sf) {
    long double sum = 0, size = 0;
    for (std::size_t k = 0; k < n; ++k) {
        sum += static_cast<long double>(weight[k]) * s[k];
        size += std::fabs(weight[k] / static_cast<long double>(unit)) * (std::fabs(s[k]) + std::fabs(s[n / 2]));
    }
    if constexpr (std::is_integral_v<T>) {
        EXPECT_EQ(got, stored(sum / unit, sf));
    } else {
        EXPECT_TRUE(near(got, sum / unit, 8.1L * 0x1p-24L * size));
    }
}

TYPED_TEST(Delta, AuroraFollowsItsWeights) {
    using T = TypeParam;
    const int slope[9] = {-4, -3, -2, -1, 0, 1, 2, 3, 4};
    const int curve[9] = {1000000, 250000, -285714, -607143, -714286, -607143, -285714, 250000, 1000000};
    Random random(4);
    const Form<T>&plain = kAurora<T>, &mul = kAuroraMul<T>;
    for (int rows = 8; rows < 80; rows += random.between(1, 9)) {
        auto x = random.vector<T>(rows * 14, 3);
        const bool still = rows == 8;  // the first row again and again
        for (std::size_t i = 14; still && i < x.size(); ++i) x[i] = x[i - 14];
        const auto v = random.vector<T>(13, 2);
        const int sf = kScaleFactors[rows % 7], step = 39 + random.between(0, 1);
        const auto y = stream(plain, x, v, 13, step, {rows}, sf), scaled = stream(mul, x, v, 13, step, {rows}, sf);
        EXPECT_TRUE(stream(plain, x, v, 13, step, cut(random, rows, 8), sf) == y);
        EXPECT_TRUE(stream(mul, x, v, 13, step, cut(random, rows, 8), sf) == scaled);
        for (int t = 0; t < rows; ++t) {
            EXPECT_TRUE(std::equal(&y[t * step], &y[t * step + 12], &x[t * 14]));
            expectWeighted(y[t * step + 12], {3, 46}, {x[t * 14 + 12], x[t * 14 + 13]}, 115, 0);
            for (int i = 0; i < 13; ++i) {
                EXPECT_EQ(scaled[t * step + i], stored(Number<T>(y[t * step + i]) * v[i], sf));
                for (const auto& out : {y, scaled}) {
                    T s[9];
                    for (int k = 0; k < 9; ++k) s[k] = out[std::clamp(t + k - 4, 0, rows - 1) * step + i];
                    expectWeighted(out[t * step + 13 + i], slope, s, 4, sf);
                    expectWeighted(out[t * step + 26 + i], curve, s, 1000000, sf);
                    EXPECT_TRUE(!still || (out[t * step + 13 + i] == 0 && out[t * step + 26 + i] == 0));
                }
            }
        }
    }
}

}  // namespace
