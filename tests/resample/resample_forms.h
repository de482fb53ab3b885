// What the tests of resampling share: the functions by the type of their samples, filters, and the sum that an output
// is.
#pragma once

#include <memory>
#include <numeric>
#include <tuple>

#include "kels/resample.h"
#include "support/forms.h"
#include "support/support.h"

namespace test {

inline const Real kPi = std::acos(-1.0L);

// The functions, for samples that are floats and 16-bit integers.
constexpr auto initAlloc = forms(kelsResamplePolyphaseInitAlloc_32f, kelsResamplePolyphaseInitAlloc_16s);
constexpr auto runGeneral = forms(kelsResamplePolyphase_32f, kelsResamplePolyphase_16s);
constexpr auto release = forms(kelsResamplePolyphaseFree_32f, kelsResamplePolyphaseFree_16s);
constexpr auto fixedInitAlloc = forms(kelsResamplePolyphaseFixedInitAlloc_32f, kelsResamplePolyphaseFixedInitAlloc_16s);
constexpr auto fixedInit = forms(kelsResamplePolyphaseFixedInit_32f, kelsResamplePolyphaseFixedInit_16s);
constexpr auto runFixed = forms(kelsResamplePolyphaseFixed_32f, kelsResamplePolyphaseFixed_16s);
constexpr auto setFilter = forms(kelsResamplePolyphaseSetFixedFilter_32f, kelsResamplePolyphaseSetFixedFilter_16s);
constexpr auto getFilter = forms(kelsResamplePolyphaseGetFixedFilter_32f, kelsResamplePolyphaseGetFixedFilter_16s);
constexpr auto fixedRelease = forms(kelsResamplePolyphaseFixedFree_32f, kelsResamplePolyphaseFixedFree_16s);
template <class T>
constexpr auto fixedSizeOf =
    std::is_same_v<T, Kel32f> ? kelsResamplePolyphaseFixedGetSize_32f : kelsResamplePolyphaseFixedGetSize_16s;

// Their states.
template <class T>
using General = std::conditional_t<sizeof(T) == 2, KelResamplePolyphase_16s, KelResamplePolyphase_32f>;
template <class T>
using Fixed = std::conditional_t<sizeof(T) == 2, KelResamplePolyphaseFixed_16s, KelResamplePolyphaseFixed_32f>;
template <class T>
constexpr bool kInteger = std::is_integral_v<T>;
template <class T>
constexpr Real kUnit = kInteger<T> ? 0x1p-15L : 1;  // of the weights

struct Filter {
    Kel32f window;
    int nStep;
    Kel32f rollf, alpha;
};
struct FixedFilter {
    int in, out, len;
    Kel32f rollf = 0.9f, alpha = 6;
};
template <class T>
auto make(const Filter& f, int hint = 0) {
    General<T>* state = nullptr;
    EXPECT_EQ(initAlloc(&state, f.window, f.nStep, f.rollf, f.alpha, hint), 0);
    return std::unique_ptr<General<T>, KelStatus (*)(General<T>*)>(state, release.of<General<T>>());
}
template <class T>
auto make(const FixedFilter& f) {
    Fixed<T>* state = nullptr;
    EXPECT_EQ(fixedInitAlloc(&state, f.in, f.out, f.len, f.rollf, f.alpha, 0), 0);
    return std::unique_ptr<Fixed<T>, KelStatus (*)(Fixed<T>*)>(state, fixedRelease.of<Fixed<T>>());
}

// One filter weight in units of the samples, and what its storage may be off by.
inline Real windowedSinc(Real x, Real rollf, Real alpha, Real reach) {
    const Real sinc = x == 0 ? rollf : sinl(kPi * rollf * x) / (kPi * x);
    return sinc * std::cyl_bessel_il(0, alpha * sqrtl(std::max(0.0L, 1 - x * x / (reach * reach)))) /
           std::cyl_bessel_il(0, alpha);
}
template <class T>
void expectTap(T got, Real exact) {
    if (kInteger<T>) exact = std::min(32768 * exact, 32767.0L);
    ASSERT_TRUE(near(got, exact, kInteger<T> ? 0.5L + 1e-9L : fabsl(exact) * 0x1p-24L + 1e-15L));
}
// Runs `run(x, len, y, &count)` on a signal with nothing but the promised samples before and behind it, and compares
// each output with gain times the sum of w x[j]; weight(i, j) gives w and something of at least its size.
template <class T, class Run, class Weight>
void expectSums(Random& random, int history, int len, int outputs, Real gain, Run run, Weight weight) {
    const Guarded<T> guarded(random.vector<T>(history + len, 2), Edge(history > 0 && random.between(0, 1)));
    const T* const x = guarded.data() + history;
    Guarded<T> y(outputs);
    int n = -1;
    ASSERT_EQ(run(x, len, y.data(), &n), 0);
    ASSERT_EQ(n, outputs);
    for (int i = 0; i < n; ++i) {
        Real sum = 0, parts = 0, terms = 0;
        for (int j = -history; j < len; ++j) {
            const auto [w, magnitude] = weight(i, j);
            sum += gain * w * x[j];
            parts += gain * magnitude * fabsl(x[j]);
            terms += magnitude > 0;
        }
        if (kInteger<T>) sum = std::clamp(sum, -32768.0L, 32767.0L);
        ASSERT_TRUE(near(y[i], sum, (2 * terms + 8) * 0x1p-24L * parts + (kInteger<T> ? 0.5L : 0))) << i;
    }
}

// Cases of both forms.
inline const Filter kFilters[] = {{16, 32, 0.9f, 6},   {7.5f, 16, 1, 1},     {2.0f / 16, 16, 0.5f, 3},
                                  {10.3f, 7, 0.8f, 2}, {3, 1, 0.95f, 1.5f},  {40, 100, 0.95f, 10},
                                  {1, 5, 1, 4},        {2.0f / 41, 41, 1, 1}};

inline const FixedFilter kFixedCases[] = {{1, 1, 8},          {8000, 16000, 33},  {16000, 8000, 48}, {48000, 16000, 91},
                                          {44100, 48000, 32}, {48000, 44100, 35}, {7, 5, 1},         {3, 70, 20},
                                          {50, 3, 7},         {2, 3, 2},          {1, 2, 190},       {1, 2, 1},
                                          {1, 2, 2}};

}  // namespace test
