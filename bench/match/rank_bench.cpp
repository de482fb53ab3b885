// The N-th largest beside std::nth_element, on data that selection by partition finds easy and hard; the kernel
// functions beside loops over the C library's functions, in double precision and in float.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using Data = std::vector<float>;

Data scores(int len, unsigned seed) {
    Data v(len);
    std::mt19937 engine(seed);
    std::normal_distribution<float> score(-60, 6);
    for (float& x : v) x = score(engine);
    return v;
}
Data sorted(int len, unsigned seed) {
    Data v = scores(len, seed);
    std::sort(v.begin(), v.end());
    return v;
}
Data organPipe(int len, unsigned seed) {
    Data v = sorted(len, seed);
    std::reverse(v.begin() + len / 2, v.end());
    return v;
}
Data constant(int len, unsigned) {
    return Data(len, 3.0f);
}
using Maker = Data (*)(int, unsigned);

// Ever other data, as in use: the processor would learn the branches of a short vector by heart.
template <class Call>
void nth(benchmark::State& state, Maker make, Call call) {
    const int len = static_cast<int>(state.range(0));
    std::vector<Data> all;
    for (int i = 0; i < 1 + 100000 / len; ++i) all.push_back(make(len, static_cast<unsigned>(i)));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(call(all[next]));
        next = next + 1 == all.size() ? 0 : next + 1;
    }
}
void nthKels(benchmark::State& state, Maker make) {
    nth(state, make, [](const Data& v) {
        float result;
        kelsNthMaxElement_32f(v.data(), static_cast<int>(v.size()), static_cast<int>(v.size() / 3), &result);
        return result;
    });
}
void nthStd(benchmark::State& state, Maker make) {
    Data copy;
    nth(state, make, [&](const Data& v) {
        copy = v;
        const auto place = copy.begin() + static_cast<std::ptrdiff_t>(v.size() / 3);
        std::nth_element(copy.begin(), place, copy.end(), std::greater<float>());
        return *place;
    });
}

template <class T, class Call>
void elements(benchmark::State& state, double bound, Call call) {
    const int len = static_cast<int>(state.range(0));
    std::vector<T> src(len), dst(len);
    std::mt19937 engine(2);
    std::uniform_real_distribution<T> x(static_cast<T>(-bound), static_cast<T>(bound));
    for (T& v : src) v = x(engine);
    for (auto _ : state) {
        call(src.data(), dst.data(), len);
        benchmark::ClobberMemory();
    }
}
template <class Call>
void integers(benchmark::State& state, Call call) {
    const int len = static_cast<int>(state.range(0));
    std::vector<int> src(len), dst(len);
    std::mt19937 engine(3);
    for (int& v : src) v = static_cast<int>(engine() >> 1) | 1;
    for (auto _ : state) {
        call(src.data(), dst.data(), len);
        benchmark::ClobberMemory();
    }
}
template <class T, class Function>
auto each(Function function) {
    return [=](const T* src, T* dst, int len) {
        for (int i = 0; i < len; ++i) dst[i] = function(src[i]);
    };
}

template <class... Arguments>
void add(const std::string& name, const std::vector<int>& lengths, Arguments... arguments) {
    auto* const b = benchmark::RegisterBenchmark(("BM_" + name).c_str(), arguments...);
    for (const int len : lengths) b->Arg(len);
}

const bool registered = [] {
    const std::vector<int> lengths = {16, 100, 1000, 30000, 1000000};
    const std::pair<const char*, Maker> kinds[] = {
        {"Scores", scores}, {"Sorted", sorted}, {"OrganPipe", organPipe}, {"Constant", constant}};
    for (const auto& [kind, make] : kinds) {
        add(std::string("NthMax") + kind + "_kels", lengths, nthKels, make);
        add(std::string("NthMax") + kind + "_std", lengths, nthStd, make);
    }

    const std::vector<int> vectors = {16, 1024, 65536};
    const auto sinc64 = [](double x) { return x == 0 ? 1 : std::sin(x) / x; };
    const auto sinc32 = [](float x) { return x == 0 ? 1 : static_cast<float>(std::sin(static_cast<double>(x))) / x; };
    const auto sinc32f = [](float x) { return x == 0 ? 1 : std::sin(x) / x; };
    const auto gauss64 = [](double x) { return std::exp(-x * x); };
    const auto gauss32 = [](float x) { return static_cast<float>(std::exp(-static_cast<double>(x * x))); };
    const auto gauss32f = [](float x) { return std::exp(-x * x); };
    add("SinC32_kels", vectors, elements<float, decltype(&kelsSinC_32f)>, 30, &kelsSinC_32f);
    add("SinC32_libm", vectors, elements<float, decltype(each<float>(sinc32))>, 30, each<float>(sinc32));
    add("SinC32_libmf", vectors, elements<float, decltype(each<float>(sinc32f))>, 30, each<float>(sinc32f));
    add("SinC64_kels", vectors, elements<double, decltype(&kelsSinC_64f)>, 30, &kelsSinC_64f);
    add("SinC64_libm", vectors, elements<double, decltype(each<double>(sinc64))>, 30, each<double>(sinc64));
    add("ExpNegSqr32_kels", vectors, elements<float, decltype(&kelsExpNegSqr_32f)>, 4, &kelsExpNegSqr_32f);
    add("ExpNegSqr32_libm", vectors, elements<float, decltype(each<float>(gauss32))>, 4, each<float>(gauss32));
    add("ExpNegSqr32_libmf", vectors, elements<float, decltype(each<float>(gauss32f))>, 4, each<float>(gauss32f));
    add("ExpNegSqr64_kels", vectors, elements<double, decltype(&kelsExpNegSqr_64f)>, 4, &kelsExpNegSqr_64f);
    add("ExpNegSqr64_libm", vectors, elements<double, decltype(each<double>(gauss64))>, 4, each<double>(gauss64));
    const auto ln = [](const int* src, int* dst, int len) { kelsLn_32s_Sfs(src, dst, len, -20); };
    const auto lnLibm = each<int>([](int x) { return static_cast<int>(std::lrint(std::log(x) * 0x1p20)); });
    add("Ln32s_kels", vectors, integers<decltype(ln)>, ln);
    add("Ln32s_libm", vectors, integers<decltype(lnLibm)>, lnLibm);
    return true;
}();

}  // namespace
