#include "adaptation.h"

namespace words {
namespace {

constexpr int kBlocks = 3;                 // cepstra, deltas, accelerations
constexpr double kFramesOfNoChange = 500;  // that speak against a transform ...
constexpr float kFramesOfOldMean = 100;    // ... and for the mean of one Gaussian as it was

// How far means move, by their block.
struct Transform {
    Matrix coefficients;  // a row a feature: what each mean of its block counts
    Vector offsets;

    Vector shift(const float* mean) const {
        const int block = coefficients.cols();
        Vector result(coefficients.rows());
        for (int first = 0; first < result.size(); first += block)
            check(kelsMatVecMul_32f_D2(coefficients.row(first), coefficients.step(), mean + first, block,
                                       result.data() + first, block),
                  "kelsMatVecMul_32f_D2");
        check(kelsAdd_32f_I(offsets.data(), result.data(), result.size()), "kelsAdd_32f_I");
        return result;
    }
};

// The normal equations of each feature: from the means of its block to how far it moves.
class Regression {
  public:
    explicit Regression(int width) : block_(width / kBlocks), terms_(block_ + 1) {
        products_.resize(size(width) * size(terms_) * size(terms_));
        targets_.resize(size(width) * size(terms_));
    }

    // So many frames were on average `sums` / occupation away from this mean.
    void add(const float* mean, const float* variance, float occupation, const float* sums) {
        frames_ += occupation;
        std::vector<double> terms(size(terms_), 1);  // the last one stays 1, for the offset
        for (int feature = 0; feature < block_ * kBlocks; ++feature) {
            std::copy_n(mean + feature / block_ * block_, block_, terms.begin());
            const double weight = 1 / static_cast<double>(variance[feature]);
            double* const product = products(feature);
            for (int i = 0; i < terms_; ++i) {
                targets(feature)[i] += weight * sums[feature] * terms[size(i)];
                for (int j = 0; j < terms_; ++j)
                    product[i * terms_ + j] += weight * occupation * terms[size(i)] * terms[size(j)];
            }
        }
    }

    // Leaves nothing of the sums.
    Transform solve() {
        Transform result{Matrix(block_ * kBlocks, block_), Vector(block_ * kBlocks)};
        std::vector<double> upper(size(terms_) * size(terms_)), x(size(terms_));
        for (int feature = 0; feature < block_ * kBlocks; ++feature) {
            double* const product = products(feature);
            for (int i = 0; i < terms_; ++i) product[i * terms_ + i] *= 1 + kFramesOfNoChange / frames_;
            check(kelsQRTransColumn_64f_D2(product, terms_, upper.data(), terms_, terms_, terms_),
                  "kelsQRTransColumn_64f_D2");
            check(kelsVecMatMul_64f_D2(targets(feature), terms_, product, terms_, x.data(), terms_),
                  "kelsVecMatMul_64f_D2");
            check(kelsSolveUpper_64f_D2(upper.data(), terms_, x.data(), x.data(), terms_), "kelsSolveUpper_64f_D2");
            std::copy_n(x.begin(), block_, result.coefficients.row(feature));
            result.offsets[feature] = static_cast<float>(x.back());
        }
        return result;
    }

  private:
    static std::size_t size(int count) { return static_cast<std::size_t>(count); }
    double* products(int feature) { return &products_[size(feature) * size(terms_) * size(terms_)]; }
    double* targets(int feature) { return &targets_[size(feature) * size(terms_)]; }

    int block_;
    int terms_;
    double frames_ = 0;
    std::vector<double> products_, targets_;
};

}  // namespace

void adaptMeans(std::vector<WordModel>& models, const Accumulators& sums) {
    Regression regression(models.front().hmm.width());
    sums.forEachGaussian(models, [&](Mixture& mixture, int i, float occupation, const float* meanSums) {
        if (occupation > 0) regression.add(mixture.mean(i), mixture.variance(i), occupation, meanSums);
    });
    const Transform transform = regression.solve();
    sums.forEachGaussian(models, [&](Mixture& mixture, int i, float occupation, const float* meanSums) {
        const Vector shift = transform.shift(mixture.mean(i));
        for (int k = 0; k < shift.size(); ++k) {
            const float rest = meanSums[k] - occupation * shift[k];  // what frames still differ by
            mixture.mean(i)[k] += shift[k] + rest / (occupation + kFramesOfOldMean);
        }
    });
}

}  // namespace words
