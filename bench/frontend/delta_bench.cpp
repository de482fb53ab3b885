// Deltas, sign changes and offset compensation beside the loops one would write instead, compiled with -O3 for the same
// processor as the benchmark program.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "kels/delta.h"
#include "kels/frame.h"

namespace {

constexpr int kWidth = 13;
constexpr int kStep = 3 * kWidth;
volatile int runtimeWidth = kWidth, runtimeScale = 15;  // the plain loop is for any, too

template <class T>
std::vector<T> noise(std::size_t n) {
    std::mt19937 engine(1);
    std::uniform_int_distribution<int> value(-8000, 8000);
    std::vector<T> x(n);
    for (auto& v : x) v = static_cast<T>(value(engine));
    return x;
}

Kel32f store(Kel32f product, int) {
    return product;
}
Kel16s store(int64_t product, int sf) {
    return static_cast<Kel16s>(std::clamp<int64_t>(product >> sf, -32768, 32767));
}

// Statics, deltas and accelerations over +-2 rows of a whole stream.
template <class T, class Wide>
void plainDeltaDelta(const T* __restrict x, T* __restrict y, int height, T val, int sf) {
    const int width = runtimeWidth, step = 3 * width;
    const auto derive = [=](int t, int c) {
        const auto row = [=](int r) { return y + std::clamp(r, 0, height - 1) * step + c; };
        const T *a = row(t - 2), *b = row(t - 1), *d = row(t + 1), *e = row(t + 2);
        T* const out = y + t * step + c + width;
        for (int i = 0; i < width; ++i) {
            out[i] = store((Wide(d[i]) - Wide(b[i]) + 2 * (Wide(e[i]) - Wide(a[i]))) * Wide(val), sf);
        }
    };
    for (int t = 0; t < height; ++t) std::copy_n(x + t * width, width, y + t * step);
    for (int t = 0; t < height; ++t) derive(t, 0);
    for (int t = 0; t < height; ++t) derive(t, width);
}

template <class T, class Run>
void deltaDelta(benchmark::State& state, Run run) {
    const auto height = static_cast<int>(state.range(0));
    const auto x = noise<T>(static_cast<std::size_t>(height * kWidth));
    std::vector<T> y(static_cast<std::size_t>(height * kStep));
    for (auto _ : state) {
        run(x.data(), y.data(), height);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * height * 2 * kWidth);
}
void BM_DeltaDeltaWin2_32f_kels(benchmark::State& state) {
    deltaDelta<Kel32f>(state, [](const Kel32f* x, Kel32f* y, int height) {
        kelsDeltaDelta_Win2_32f_D2(x, kWidth, y, kStep, height, 0.1f, 0.1f, kelDeltaBlockFirst | kelDeltaBlockLast);
    });
}
void BM_DeltaDeltaWin2_32f_plain(benchmark::State& state) {
    deltaDelta<Kel32f>(
        state, [](const Kel32f* x, Kel32f* y, int height) { plainDeltaDelta<Kel32f, Kel32f>(x, y, height, 0.1f, 0); });
}
void BM_DeltaDeltaWin2_16s_kels(benchmark::State& state) {
    deltaDelta<Kel16s>(state, [](const Kel16s* x, Kel16s* y, int height) {
        kelsDeltaDelta_Win2_16s_D2Sfs(x, kWidth, y, kStep, height, 3277, 3277, kelDeltaBlockFirst | kelDeltaBlockLast,
                                      15);
    });
}
void BM_DeltaDeltaWin2_16s_plain(benchmark::State& state) {
    deltaDelta<Kel16s>(state, [](const Kel16s* x, Kel16s* y, int height) {
        plainDeltaDelta<Kel16s, int64_t>(x, y, height, 3277, runtimeScale);
    });
}
BENCHMARK(BM_DeltaDeltaWin2_32f_kels)->Arg(20)->Arg(100)->Arg(1000)->Arg(20000);
BENCHMARK(BM_DeltaDeltaWin2_32f_plain)->Arg(20)->Arg(100)->Arg(1000)->Arg(20000);
BENCHMARK(BM_DeltaDeltaWin2_16s_kels)->Arg(100)->Arg(1000);
BENCHMARK(BM_DeltaDeltaWin2_16s_plain)->Arg(100)->Arg(1000);

template <class T, class Run>
void overSamples(benchmark::State& state, Run run) {
    const auto len = static_cast<int>(state.range(0));
    const auto x = noise<T>(static_cast<std::size_t>(len));
    std::vector<T> y(x.size());
    for (auto _ : state) {
        run(x.data(), y.data(), len);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * len);
}

void BM_SignChangeRate_16s_kels(benchmark::State& state) {
    overSamples<Kel16s>(state, [](const Kel16s* x, Kel16s*, int len) {
        Kel32s count;
        kelsSignChangeRate_16s(x, len, &count);
        benchmark::DoNotOptimize(count);
    });
}
void BM_SignChangeRate_16s_plain(benchmark::State& state) {
    overSamples<Kel16s>(state, [](const Kel16s* x, Kel16s*, int len) {
        int count = 0;
        for (int n = 0; n + 1 < len; ++n) count += x[n] * x[n + 1] < 0;
        benchmark::DoNotOptimize(count);
    });
}
void BM_SignChangeRateCount0_32f_kels(benchmark::State& state) {
    overSamples<Kel32f>(state, [](const Kel32f* x, Kel32f*, int len) {
        Kel32f count;
        kelsSignChangeRate_Count0_32f(x, len, &count);
        benchmark::DoNotOptimize(count);
    });
}
void BM_SignChangeRateCount0_32f_plain(benchmark::State& state) {
    overSamples<Kel32f>(state, [](const Kel32f* x, Kel32f*, int len) {
        const auto sgn = [](Kel32f v) { return (v > 0) - (v < 0); };
        int steps = 0;
        for (int n = 0; n + 1 < len; ++n) steps += std::abs(sgn(x[n + 1]) - sgn(x[n]));
        benchmark::DoNotOptimize(steps);
    });
}
BENCHMARK(BM_SignChangeRate_16s_kels)->Arg(200)->Arg(4000);
BENCHMARK(BM_SignChangeRate_16s_plain)->Arg(200)->Arg(4000);
BENCHMARK(BM_SignChangeRateCount0_32f_kels)->Arg(200)->Arg(4000);
BENCHMARK(BM_SignChangeRateCount0_32f_plain)->Arg(200)->Arg(4000);

// Unfused, as the library's.
__attribute__((optimize("fp-contract=off"))) void plainOffset(const Kel32f* x, Kel32f* y, int len) {
    y[0] = x[0];
    for (int n = 1; n < len; ++n) y[n] = 0.999f * y[n - 1] + (x[n] - x[n - 1]);
}
void BM_CompensateOffset_32f_kels(benchmark::State& state) {
    overSamples<Kel32f>(state, [](const Kel32f* x, Kel32f* y, int len) {
        Kel32f last = 0;
        kelsCompensateOffset_32f(x, y, len, &last, 0, 0.999f);
    });
}
void BM_CompensateOffset_32f_plain(benchmark::State& state) {
    overSamples<Kel32f>(state, plainOffset);
}
void BM_CompensateOffset_16s_kels(benchmark::State& state) {
    overSamples<Kel16s>(state, [](const Kel16s* x, Kel16s* y, int len) {
        Kel16s last = 0;
        kelsCompensateOffset_16s(x, y, len, &last, 0, 0.999f);
    });
}
void BM_CompensateOffset_16s_plain(benchmark::State& state) {
    overSamples<Kel16s>(state, [](const Kel16s* x, Kel16s* y, int len) {
        y[0] = x[0];
        for (int n = 1; n < len; ++n) {
            const Kel32f v = 0.999f * y[n - 1] + static_cast<Kel32f>(x[n] - x[n - 1]);
            y[n] = static_cast<Kel16s>(std::clamp(v + (v < 0 ? -0.5f : 0.5f), -32768.0f, 32767.0f));
        }
    });
}
void BM_CompensateOffsetQ15_16s_kels(benchmark::State& state) {
    overSamples<Kel16s>(state, [](const Kel16s* x, Kel16s* y, int len) {
        Kel16s last = 0;
        kelsCompensateOffsetQ15_16s(x, y, len, &last, 0, 32735);
    });
}
void BM_CompensateOffsetQ15_16s_plain(benchmark::State& state) {
    overSamples<Kel16s>(state, [](const Kel16s* x, Kel16s* y, int len) {
        y[0] = x[0];
        for (int n = 1; n < len; ++n) {
            const int64_t v = ((x[n] - x[n - 1]) * int64_t{32768} + y[n - 1] * 32735) / 32768;
            y[n] = static_cast<Kel16s>(std::clamp<int64_t>(v, -32768, 32767));
        }
    });
}
BENCHMARK(BM_CompensateOffset_32f_kels)->Arg(200);
BENCHMARK(BM_CompensateOffset_32f_plain)->Arg(200);
BENCHMARK(BM_CompensateOffset_16s_kels)->Arg(200);
BENCHMARK(BM_CompensateOffset_16s_plain)->Arg(200);
BENCHMARK(BM_CompensateOffsetQ15_16s_kels)->Arg(200);
BENCHMARK(BM_CompensateOffsetQ15_16s_plain)->Arg(200);

}  // namespace
