// Products, sums and decompositions of matrices beside OpenBLAS, LAPACK and Eigen on one thread, plain loops with
// double sums, and the speed at which memory is read and written.  Arguments: rows x columns; blocks have 1000 rows.
#include <benchmark/benchmark.h>
#include <kels.h>

#include <cstring>
#include <random>
#include <vector>

#ifdef HAVE_EIGEN
#include <Eigen/Dense>
#endif
#ifdef HAVE_OPENBLAS
#include <cblas.h>
extern "C" void openblas_set_num_threads(int);
extern "C" void dgesdd_(const char*, const int*, const int*, double*, const int*, double*, double*, const int*, double*,
                        const int*, double*, const int*, int*, int*, std::size_t);
extern "C" void dgeqrf_(const int*, const int*, double*, const int*, double*, double*, const int*, int*);
extern "C" void dorgqr_(const int*, const int*, const int*, double*, const int*, const double*, double*, const int*,
                        int*);
#endif

namespace {

constexpr int kRows = 1000;

template <class T>
struct Problem {
    Problem(int h, int w)
        : height(h),
          width(w),
          a(std::size_t(h) * w),
          work(a),
          frames(std::size_t(kRows) * w),
          out(std::size_t(kRows) * h) {
        std::mt19937 engine(3);
        std::normal_distribution<double> values;
        x.resize(std::size_t(h) + w);
        y.resize(x.size());
        for (auto* v : {&a, &frames, &x}) {
            for (auto& value : *v) value = static_cast<T>(values(engine));
        }
        u.resize(std::size_t(h) * w);
        v.resize(std::size_t(w) * w);
    }
    int height, width;
    std::vector<T> a, work, frames, out, x, y, u, v;
};

template <class T, class Call>
void add(const char* name, std::initializer_list<std::pair<int, int>> shapes, Call call) {
    auto* const b = benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
#ifdef HAVE_OPENBLAS
        openblas_set_num_threads(1);
#endif
        Problem<T> p(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
        for (auto _ : state) {
            call(p);
            benchmark::ClobberMemory();
        }
    });
    for (const auto& [h, w] : shapes) b->Args({h, w});
}

// ---- plain loops
// -----------------------------------------------------------------------------------------------------

template <class T>
[[gnu::noinline]] void plainMatVec(const T* a, const T* x, T* y, int height, int width) {
    for (int i = 0; i < height; ++i) {
        double sum = 0;
        for (int j = 0; j < width; ++j) sum += double(a[i * width + j]) * x[j];
        y[i] = static_cast<T>(sum);
    }
}
template <class T>
[[gnu::noinline]] void plainVecMat(const T* a, const T* x, T* y, int height, int width) {
    std::vector<double> sums(static_cast<std::size_t>(width));
    for (int i = 0; i < height; ++i) {
        for (int j = 0; j < width; ++j) sums[static_cast<std::size_t>(j)] += double(x[i]) * a[i * width + j];
    }
    for (int j = 0; j < width; ++j) y[j] = static_cast<T>(sums[static_cast<std::size_t>(j)]);
}

// ---- what there is for each type
// -------------------------------------------------------------------------------------

template <class T>
constexpr bool isFloat = std::is_same_v<T, float>;
template <class T, class F, class D>
constexpr auto choose(F f, D d) {
    if constexpr (isFloat<T>) return f;
    if constexpr (!isFloat<T>) return d;
}

template <class T>
std::string named(const char* operation, const char* who) {
    return std::string("BM_") + operation + (isFloat<T> ? "32_" : "64_") + who;
}

template <class T>
void addProducts() {
    const auto blocks = {std::pair(39, 39), std::pair(39, 117), std::pair(39, 351), std::pair(13, 39)};
    const auto matrices = {std::pair(39, 39), std::pair(39, 117), std::pair(39, 351), std::pair(500, 200)};
    add<T>(named<T>("MatVecMulRows", "kels").c_str(), blocks, [](Problem<T>& p) {
        choose<T>(kelsMatVecMulRows_32f_D2, kelsMatVecMulRows_64f_D2)(
            p.frames.data(), p.width, p.a.data(), p.width, nullptr, p.out.data(), p.height, p.width, p.height, kRows);
    });
    add<T>(named<T>("MatVecMul", "kels").c_str(), matrices, [](Problem<T>& p) {
        choose<T>(kelsMatVecMul_32f_D2, kelsMatVecMul_64f_D2)(p.a.data(), p.width, p.x.data(), p.width, p.y.data(),
                                                              p.height);
    });
    add<T>(named<T>("MatVecMul", "plain").c_str(), matrices,
           [](Problem<T>& p) { plainMatVec(p.a.data(), p.x.data(), p.y.data(), p.height, p.width); });
    add<T>(named<T>("VecMatMul", "kels").c_str(), matrices, [](Problem<T>& p) {
        choose<T>(kelsVecMatMul_32f_D2, kelsVecMatMul_64f_D2)(p.x.data(), p.height, p.a.data(), p.width, p.y.data(),
                                                              p.width);
    });
    add<T>(named<T>("VecMatMul", "plain").c_str(), matrices,
           [](Problem<T>& p) { plainVecMat(p.a.data(), p.x.data(), p.y.data(), p.height, p.width); });
    // Blocks of frames: columns summed and normalised, beside a plain copy.
    add<T>(named<T>("SumColumn", "kels").c_str(), blocks, [](Problem<T>& p) {
        choose<T>(kelsSumColumn_32f_D2, kelsSumColumn_64f_D2)(p.frames.data(), p.width, kRows, p.y.data(), p.width);
    });
    add<T>(named<T>("SumColumn", "plain").c_str(), blocks, [](Problem<T>& p) {
        static const std::vector<T> ones(kRows, T(1));
        plainVecMat(p.frames.data(), ones.data(), p.y.data(), kRows, p.width);
    });
    add<T>(named<T>("NormalizeColumn", "kels").c_str(), blocks, [](Problem<T>& p) {
        static std::vector<T> out(std::size_t(kRows) * 512);
        choose<T>(kelsNormalizeColumn_32f_D2, kelsNormalizeColumn_64f_D2)(
            p.frames.data(), p.width, p.v.data(), p.v.data(), out.data(), p.width, p.width, kRows);
    });
    add<T>(named<T>("NormalizeColumn", "copy").c_str(), blocks, [](Problem<T>& p) {
        static std::vector<T> out(std::size_t(kRows) * 512);
        std::memcpy(out.data(), p.frames.data(), p.frames.size() * sizeof(T));
    });
#ifdef HAVE_OPENBLAS
    add<T>(named<T>("MatVecMulRows", "OpenBLAS").c_str(), blocks, [](Problem<T>& p) {
        choose<T>(cblas_sgemm, cblas_dgemm)(CblasRowMajor, CblasNoTrans, CblasTrans, kRows, p.height, p.width, T(1),
                                            p.frames.data(), p.width, p.a.data(), p.width, T(0), p.out.data(),
                                            p.height);
    });
    add<T>(named<T>("MatVecMul", "OpenBLAS").c_str(), matrices, [](Problem<T>& p) {
        choose<T>(cblas_sgemv, cblas_dgemv)(CblasRowMajor, CblasNoTrans, p.height, p.width, T(1), p.a.data(), p.width,
                                            p.x.data(), 1, T(0), p.y.data(), 1);
    });
    add<T>(named<T>("VecMatMul", "OpenBLAS").c_str(), matrices, [](Problem<T>& p) {
        choose<T>(cblas_sgemv, cblas_dgemv)(CblasRowMajor, CblasTrans, p.height, p.width, T(1), p.a.data(), p.width,
                                            p.x.data(), 1, T(0), p.y.data(), 1);
    });
#endif
#ifdef HAVE_EIGEN
    using Matrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    add<T>(named<T>("MatVecMulRows", "Eigen").c_str(), blocks, [](Problem<T>& p) {
        Eigen::Map<Matrix>(p.out.data(), kRows, p.height).noalias() =
            Eigen::Map<Matrix>(p.frames.data(), kRows, p.width) *
            Eigen::Map<Matrix>(p.a.data(), p.height, p.width).transpose();
    });
#endif
}

// LAPACK works on columns: the row-major matrix is its transpose, taller than wide.
[[maybe_unused]] const bool registered = [] {
    addProducts<float>();
    addProducts<double>();
    using P = Problem<double>;
    const auto shapes = {std::pair(39, 39), std::pair(117, 39), std::pair(500, 200)};
    add<double>("BM_SVD_kels", shapes, [](P& p) {
        kelsSVD_64f_D2(p.a.data(), p.width, p.u.data(), p.width, p.y.data(), p.v.data(), p.width, p.width, p.height);
    });
    add<double>("BM_QRTransColumn_kels", shapes, [](P& p) {
        p.work = p.a;
        kelsQRTransColumn_64f_D2(p.work.data(), p.width, p.v.data(), p.width, p.width, p.height);
    });
#ifdef HAVE_OPENBLAS
    add<double>("BM_SVD_LAPACK", shapes, [](P& p) {
        static std::vector<double> scratch(1 << 20);
        static std::vector<int> order(8 * 512);
        p.work = p.a;
        const int size = 1 << 20;
        int info;
        dgesdd_("S", &p.height, &p.width, p.work.data(), &p.height, p.y.data(), p.u.data(), &p.height, p.v.data(),
                &p.width, scratch.data(), &size, order.data(), &info, 1);
    });
    static std::vector<double> scratch(1 << 20);
    add<double>("BM_QRTransColumn_dgeqrf", shapes, [](P& p) {
        p.work = p.a;
        const int size = 1 << 20;
        int info;
        dgeqrf_(&p.height, &p.width, p.work.data(), &p.height, p.y.data(), scratch.data(), &size, &info);
    });
    add<double>("BM_QRTransColumn_dgeqrf+dorgqr", shapes, [](P& p) {
        p.work = p.a;
        const int size = 1 << 20;
        int info;
        dgeqrf_(&p.height, &p.width, p.work.data(), &p.height, p.y.data(), scratch.data(), &size, &info);
        dorgqr_(&p.height, &p.width, &p.width, p.work.data(), &p.height, p.y.data(), scratch.data(), &size, &info);
    });
#endif
#ifdef HAVE_EIGEN
    add<double>("BM_SVD_Eigen", shapes, [](P& p) {
        const Eigen::Map<Eigen::MatrixXd> a(p.a.data(), p.height, p.width);
        benchmark::DoNotOptimize(
            Eigen::BDCSVD<Eigen::MatrixXd>(a, Eigen::ComputeThinU | Eigen::ComputeThinV).singularValues().data());
    });
#endif
    return true;
}();

}  // namespace
