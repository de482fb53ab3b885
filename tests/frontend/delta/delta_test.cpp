#include "kels/delta.h"

#include "support/support.h"

namespace {

using namespace test;

enum Kind { kStream, kAurora, kWhole };

// One function; scalar forms take their multipliers from v[0] and v[1].
template <class T>
struct Form {
    Kind kind;
    int half, orders;
    bool mul;
    KelStatus (*run)(const T* x, const T* v, int width, T* y, int step, int height, int mode, int sf);

    int history() const { return kind == kAurora ? 8 : (orders + 1) * half; }
    int inputs(int width) const { return kind == kAurora ? 14 : width; }
    // The columns in front of the statics.
    int offset(int width, int step) const { return kind == kWhole ? step - 2 * width : 0; }
    // The row that stands k rows from row t.
    int row(int t, int k, int rows) const {
        if (kind != kWhole) return std::clamp(t + k, 0, rows - 1);
        if (k < 0) return t < half ? 0 : t + k;
        return t >= rows - half ? rows - 1 : t + k;
    }
};

// Where the functions on whole arrays take statics from.
template <class T>
int place(const T* x, int width, T* y, int step, int height) {
    const int offset = step - 2 * width;
    for (int t = 0; t < height; ++t) std::copy_n(x + t * width, width, y + t * step + offset);
    return offset;
}

// The 16-bit forms take a scale factor besides, but for the copies.
template <class F, class... A>
KelStatus call(F* f, [[maybe_unused]] int sf, A... arguments) {
    if constexpr (std::is_invocable_v<F, A..., int>) return f(arguments..., sf);
    if constexpr (!std::is_invocable_v<F, A..., int>) return f(arguments...);
}

// clang-format off
#define FORM(kind, half, orders, mul, floats, integers, ...) \
    {kind, half, orders, mul, [](const T* x, [[maybe_unused]] const T* v, [[maybe_unused]] int width, T* y, int step, \
                                 int height, [[maybe_unused]] int mode, int sf) { \
         return call(std::get<std::is_integral_v<T>>(std::tuple(&floats, &integers)), sf, __VA_ARGS__); \
     }}
// Both windows, by the part of the names before the window's number; of floats also an older one.
#define STREAMS(orders, mul, name, older, ...) \
    FORM(kStream, 1, orders, mul, name##1_32f_D2, name##1_16s_D2Sfs, __VA_ARGS__), \
    FORM(kStream, 2, orders, mul, name##2_32f_D2, name##2_16s_D2Sfs, __VA_ARGS__), \
    FORM(kStream, 1, orders, mul, older##1_32f_D2, name##1_16s_D2Sfs, __VA_ARGS__), \
    FORM(kStream, 2, orders, mul, older##2_32f_D2, name##2_16s_D2Sfs, __VA_ARGS__)
#define ROWS(kind, half, orders, mul, name, ...) \
    FORM(kind, half, orders, mul, name##_32f_D2, name##_16s_D2Sfs, __VA_ARGS__)

template <class T>
const std::vector<Form<T>> kForms = {
    STREAMS(1, false, kelsDelta_Win, kelsDeltaW, x, width, y, step, height, v[0], mode),
    STREAMS(2, false, kelsDeltaDelta_Win, kelsDeltaDeltaW, x, width, y, step, height, v[0], v[1], mode),
    STREAMS(1, true, kelsDeltaMul_Win, kelsDeltaMul_Win, x, v, width, y, step, height, mode),
    STREAMS(2, true, kelsDeltaDeltaMul_Win, kelsDeltaDeltaMul_Win, x, v, width, y, step, height, mode),
    FORM(kStream, 0, 0, false, kelsCopyColumn_32f_D2, kelsCopyColumn_16s_D2, x, width, y, step, height),
    FORM(kStream, 0, 0, false, kelsCopyCol_32f_D2, kelsCopyColumn_16s_D2, x, width, y, step, height),
    ROWS(kWhole, 3, 1, false, kelsEvalDelta, y, height, step, width, place(x, width, y, step, height), 3, v[0]),
    ROWS(kWhole, 4, 1, true, kelsEvalDeltaMul, y, v, height, step, width, place(x, width, y, step, height), 4),
    ROWS(kAurora, 4, 2, false, kelsDeltaDelta_Aurora, x, y, step, height, mode),
    ROWS(kAurora, 4, 2, true, kelsDeltaDeltaMul_Aurora, x, v, y, step, height, mode),
};
// clang-format on

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

// The rows of a stream cut into blocks of the given heights, history rows handed on as a caller does.  Every block lies
// against a guard page.  16-bit forms run in every rounding mode.
template <class T>
std::vector<T> stream(const Form<T>& form, const std::vector<T>& x, const std::vector<T>& v, int width, int step,
                      const std::vector<int>& heights, int sf) {
    const Guarded<T> values(v);
    std::vector<T> all;
    auto next = x.begin();
    for (std::size_t b = 0; b < heights.size(); ++b) {
        const int mode = (b == 0 ? kelDeltaBlockFirst : 0) | (b + 1 == heights.size() ? kelDeltaBlockLast : 0);
        const auto block = next;
        next += heights[b] * form.inputs(width);
        const Guarded<T> in(std::vector<T>(block, next));
        std::vector<T> rows(all.end() - (b == 0 ? 0 : form.history() * step), all.end());
        all.resize(all.size() - rows.size());
        rows.resize(rows.size() + heights[b] * step, kUnwritten);
        Guarded<T> out(rows, Edge(b % 2));
        inRoundingModes(std::is_integral_v<T>, [&] {
            EXPECT_EQ(form.run(in.data(), values.data(), width, out, step, heights[b], mode, sf), kelStatusOk);
        });
        all.insert(all.end(), out.data(), out.data() + out.size());
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
        for (int width = 1; width <= 150 && form.kind != kAurora; width += width < 40 ? 1 : 37) {
            const int rows = std::max(form.history() + random.between(0, 90) * (width % 4 != 0), 1);
            const int step = (form.orders + 1) * width + random.between(0, 2), sf = kScaleFactors[width % 13];
            const auto x = random.vector<T>(rows * width);
            const auto v = random.vector<T>((form.orders + 1) * width + 2);
            const auto expected = reference(form, x, v, width, step, rows, sf);
            EXPECT_TRUE(stream(form, x, v, width, step, {rows}, sf) == expected) << width << " sf " << sf;
            if (form.kind == kWhole) continue;
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
    const Form<T>&mul = kForms<T>.back(), &plain = *(&mul - 1);
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

TYPED_TEST(Delta, StatusesInOrder) {
    using T = TypeParam;
    for (const Form<T>& form : kForms<T>) {
        if (form.kind == kWhole || form.orders == 0) continue;
        const int least = form.history(), tight = (form.orders + 1) * 13;
        const std::vector<T> x(14 * 8), v(39), untouched(39 * 8, kUnwritten);
        auto y = untouched;
        const auto run = [&](int width, int step, int height, int mode) {
            return form.run(x.data(), v.data(), width, y.data(), step, height, mode, 0);
        };
        EXPECT_EQ(form.run(nullptr, v.data(), 13, y.data(), 1, -1, 1, 0), kelStatusNullPtr);
        EXPECT_EQ(form.run(x.data(), v.data(), 13, nullptr, 1, -1, 1, 0), kelStatusNullPtr);
        EXPECT_TRUE(!form.mul || form.run(x.data(), nullptr, 13, y.data(), 1, -1, 1, 0) == kelStatusNullPtr);
        EXPECT_EQ(run(13, tight - 1, -1, 2), kelStatusSize);
        EXPECT_EQ(run(13, tight - 1, 0, 1), kelStatusSize);
        EXPECT_EQ(run(13, tight - 1, least - 1, 1), kelStatusStep);
        EXPECT_EQ(run(13, tight, least - 1, 1), kelStatusSize);
        EXPECT_TRUE(form.kind == kAurora || run(0, -1, 8, 3) == kelStatusSize);
        EXPECT_TRUE(form.kind == kAurora || run(INT_MAX, 19, 8, 3) == kelStatusStep);
        EXPECT_EQ(y, untouched);
    }
}

TEST(DeltaStatus, WholeArraysAndCopies) {
    expectChecks<Places{2, 1, 3}>({-8, -6, -37}, 2, kelsEvalDelta_32f_D2, kelsEvalDelta_16s_D2Sfs);
    expectChecks<Places{3, 2, 4}>({-8, -6, -37}, 2, kelsEvalDeltaMul_32f_D2, kelsEvalDeltaMul_16s_D2Sfs);
    expectChecks<Places{3, 4, 1}>({-8, -6, -37}, 1, kelsCopyColumn_32f_D2, kelsCopyCol_32f_D2, kelsCopyColumn_16s_D2);
    // Arguments: array, 1 height, 2 step, 3 width, 4 offset, 5 winHalf.
    expectSteps(
        kelsEvalDelta_32f_D2, {0, 2, 5, 2, 2, 1},
        {{5, 0, -6}, {5, 2, -6}, {5, INT_MAX, -6}, {5, 1, -37}, {4, -1, -6}, {4, INT_MAX, -37}, {3, INT_MAX, -37}});
}

}  // namespace
