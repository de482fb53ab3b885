// Core vector kernels beside what a user would pick instead, and beside plain loops at -O3.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#ifdef HAVE_VOLK
#include <volk/volk.h>
#endif
#ifdef HAVE_OPENBLAS
#include <cblas.h>
#endif
#ifdef HAVE_EIGEN
#include <Eigen/Core>
#endif

namespace {

// Two inputs and an output of the benchmark's length, 64-byte aligned as the peers like them.
template <class T>
struct Arrays {
    explicit Arrays(benchmark::State& state)
        : n(static_cast<std::size_t>(state.range(0))), a(make(1)), b(make(2)), d(make(3)) {}
    ~Arrays() {
        for (T* p : {a, b, d}) std::free(p);
    }
    T* make(unsigned seed) const {
        auto* const p = static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64));
        std::mt19937 engine(seed);
        std::uniform_real_distribution<double> values(-1000, 1000);
        for (std::size_t i = 0; i < n; ++i) p[i] = static_cast<T>(values(engine));
        return p;
    }
    int len() const { return static_cast<int>(n); }

    std::size_t n;
    T *a, *b, *d;
};

template <class T, class Call>
void run(benchmark::State& state, int arraysTouched, Call call) {
    Arrays<T> v(state);
    for (auto _ : state) {
        call(v);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * arraysTouched * static_cast<int64_t>(sizeof(T)));
}

template <class T, class Call>
void add(const char* name, int arraysTouched, Call call) {
    auto* const b =
        benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { run<T>(state, arraysTouched, call); });
    for (const int n : {16, 39, 256, 1024, 4096, 65536, 1000000}) b->Arg(n);
}

template <class R, class Call>
auto reducing(Call call) {
    return [=](auto& v) {
        R result = call(v);
        benchmark::DoNotOptimize(result);
    };
}

// A vectorised sum in double precision: the limit for sums that have to be better than single precision.
__attribute__((optimize("O3", "associative-math", "no-signed-zeros", "no-trapping-math"))) double doubleDot(
    const float* a, const float* b, std::size_t n) {
    double s = 0;
    for (std::size_t i = 0; i < n; ++i) s += double{a[i]} * b[i];
    return s;
}
__attribute__((optimize("O3", "associative-math", "no-signed-zeros", "no-trapping-math"))) double doubleDot(
    const double* a, const double* b, std::size_t n) {
    double s = 0;
    for (std::size_t i = 0; i < n; ++i) s += a[i] * b[i];
    return s;
}
__attribute__((optimize("O3", "associative-math", "no-signed-zeros", "no-trapping-math"))) double doubleSum(
    const float* a, std::size_t n) {
    double s = 0;
    for (std::size_t i = 0; i < n; ++i) s += a[i];
    return s;
}

using F = Arrays<float>;
using D = Arrays<double>;

const bool kRegistered = [] {
    add<float>("BM_Copy_kels", 2, [](F& v) { kelsCopy_32f(v.a, v.d, v.len()); });
    add<float>("BM_Copy_memcpy", 2, [](F& v) { std::memcpy(v.d, v.a, v.n * sizeof(float)); });
    add<float>("BM_Set_kels", 1, [](F& v) { kelsSet_32f(1.5f, v.d, v.len()); });
    add<float>("BM_Set_memset", 1, [](F& v) { std::memset(v.d, 7, v.n * sizeof(float)); });

    add<float>("BM_Add_kels", 3, [](F& v) { kelsAdd_32f_I(v.a, v.d, v.len()); });
    add<float>("BM_Mul_kels", 3, [](F& v) { kelsMul_32f(v.a, v.b, v.d, v.len()); });
    add<float>("BM_MulC_kels", 2, [](F& v) { kelsMulC_32f(v.a, 1.0001f, v.d, v.len()); });
    add<float>("BM_Div_kels", 3, [](F& v) { kelsDiv_32f(v.a, v.b, v.d, v.len()); });
    add<float>("BM_DotProd_kels", 2, reducing<float>([](F& v) {
                   float r;
                   kelsDotProd_32f(v.a, v.b, v.len(), &r);
                   return r;
               }));
    add<float>("BM_DotProd_double", 2, reducing<double>([](F& v) { return doubleDot(v.a, v.b, v.n); }));
    add<float>("BM_DotProdWide_kels", 2, reducing<double>([](F& v) {
                   double r;
                   kelsDotProd_32f64f(v.a, v.b, v.len(), &r);
                   return r;
               }));
    add<double>("BM_DotProd64_kels", 2, reducing<double>([](D& v) {
                    double r;
                    kelsDotProd_64f(v.a, v.b, v.len(), &r);
                    return r;
                }));
    add<double>("BM_DotProd64_double", 2, reducing<double>([](D& v) { return doubleDot(v.a, v.b, v.n); }));
    add<float>("BM_Sum_kels", 1, reducing<float>([](F& v) {
                   float r;
                   kelsSum_32f(v.a, v.len(), &r, 0);
                   return r;
               }));
    add<float>("BM_SumFast_kels", 1, reducing<float>([](F& v) {
                   float r;
                   kelsSum_32f(v.a, v.len(), &r, 1);
                   return r;
               }));
    add<float>("BM_Sum_double", 1, reducing<double>([](F& v) { return doubleSum(v.a, v.n); }));
    add<float>("BM_MaxIndx_kels", 1, reducing<int>([](F& v) {
                   float m;
                   int i;
                   kelsMaxIndx_32f(v.a, v.len(), &m, &i);
                   return i;
               }));
    add<float>("BM_Convert32f16s_kels", 1,
               [](F& v) { kelsConvert_32f16s_Sfs(v.a, reinterpret_cast<Kel16s*>(v.d), v.len(), 1, 0); });
    add<float>("BM_Convert16s32f_kels", 1,
               [](F& v) { kelsConvert_16s32f(reinterpret_cast<Kel16s*>(v.a), v.d, v.len()); });
    add<float>("BM_Magnitude_kels", 1,
               [](F& v) { kelsMagnitude_32fc(reinterpret_cast<Kel32fc*>(v.a), v.d, v.len() / 2); });
#ifdef HAVE_VOLK
    add<float>("BM_Add_volk", 3, [](F& v) { volk_32f_x2_add_32f(v.d, v.a, v.d, static_cast<unsigned>(v.n)); });
    add<float>("BM_Mul_volk", 3, [](F& v) { volk_32f_x2_multiply_32f(v.d, v.a, v.b, static_cast<unsigned>(v.n)); });
    add<float>("BM_Div_volk", 3, [](F& v) { volk_32f_x2_divide_32f(v.d, v.b, v.a, static_cast<unsigned>(v.n)); });
    add<float>("BM_DotProd_volk", 2, reducing<float>([](F& v) {
                   float r;
                   volk_32f_x2_dot_prod_32f(&r, v.a, v.b, static_cast<unsigned>(v.n));
                   return r;
               }));
    add<float>("BM_Sum_volk", 1, reducing<float>([](F& v) {
                   float r;
                   volk_32f_accumulator_s32f(&r, v.a, static_cast<unsigned>(v.n));
                   return r;
               }));
    add<float>("BM_MaxIndx_volk", 1, reducing<int>([](F& v) {
                   uint32_t i;
                   volk_32f_index_max_32u(&i, v.a, static_cast<unsigned>(v.n));
                   return static_cast<int>(i);
               }));
    add<float>("BM_Convert32f16s_volk", 1, [](F& v) {
        volk_32f_s32f_convert_16i(reinterpret_cast<int16_t*>(v.d), v.a, 1.0f, static_cast<unsigned>(v.n));
    });
    add<float>("BM_Convert16s32f_volk", 1, [](F& v) {
        volk_16i_s32f_convert_32f(v.d, reinterpret_cast<int16_t*>(v.a), 1.0f, static_cast<unsigned>(v.n));
    });
    add<float>("BM_Magnitude_volk", 1, [](F& v) {
        volk_32fc_magnitude_32f(v.d, reinterpret_cast<lv_32fc_t*>(v.a), static_cast<unsigned>(v.n / 2));
    });
#endif
#ifdef HAVE_OPENBLAS
    add<float>("BM_Add_openblas", 3, [](F& v) { cblas_saxpy(v.len(), 1.0f, v.a, 1, v.d, 1); });
    add<float>("BM_DotProd_openblas", 2, reducing<float>([](F& v) { return cblas_sdot(v.len(), v.a, 1, v.b, 1); }));
    add<float>("BM_MaxIndx_openblas", 1,
               reducing<int>([](F& v) { return static_cast<int>(cblas_isamax(v.len(), v.a, 1)); }));
    add<double>("BM_DotProd64_openblas", 2, reducing<double>([](D& v) { return cblas_ddot(v.len(), v.a, 1, v.b, 1); }));
#endif
#ifdef HAVE_EIGEN
    using Map = Eigen::Map<Eigen::ArrayXf>;
    add<float>("BM_Add_eigen", 3, [](F& v) { Map(v.d, v.len()) += Map(v.a, v.len()); });
    add<float>("BM_Mul_eigen", 3, [](F& v) { Map(v.d, v.len()) = Map(v.a, v.len()) * Map(v.b, v.len()); });
    add<float>("BM_DotProd_eigen", 2,
               reducing<float>([](F& v) { return Map(v.a, v.len()).matrix().dot(Map(v.b, v.len()).matrix()); }));
    add<float>("BM_MaxIndx_eigen", 1, reducing<int>([](F& v) {
                   int i;
                   Map(v.a, v.len()).maxCoeff(&i);
                   return i;
               }));
#endif
    return true;
}();

}  // namespace
