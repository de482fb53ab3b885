#include "mixture.h"

#include <cmath>

namespace words {
namespace {

constexpr float kSplitDeviations = 0.2F;  // how far the halves move from where the whole was, in its deviations

}  // namespace

Mixture::Mixture(int components, int width)
    : means_(components, width),
      variances_(components, width),
      weights_(components),
      inverses_(components, width),
      constants_(components) {
    for (int i = 0; i < components; ++i) check(kelsSet_32f(1, variance(i), width), "kelsSet_32f");
    check(kelsSet_32f(1.0F / static_cast<float>(components), weights_.data(), components), "kelsSet_32f");
}

void Mixture::prepare() {
    Vector logWeights(components());
    for (int i = 0; i < components(); ++i) {
        check(kelsSet_32f(1, inverses_.row(i), width()), "kelsSet_32f");
        check(kelsDiv_32f(variance(i), inverses_.row(i), inverses_.row(i), width()), "kelsDiv_32f");
        check(kelsUpdateGConst_DirectVar_32f(variance(i), width(), &constants_[i]), "kelsUpdateGConst_DirectVar_32f");
        logWeights[i] = std::log(weights_[i]);
    }
    check(kelsOutProbPreCalc_32f_I(logWeights.data(), constants_.data(), components()), "kelsOutProbPreCalc_32f_I");
}

void Mixture::score(const Matrix& frames, float* scores) const {
    check(kelsLogGauss_32f_D2(frames.row(0), frames.step(), mean(0), inverses_.row(0), width(), scores, frames.rows(),
                              constants_[0]),
          "kelsLogGauss_32f_D2");
    for (int i = 1; i < components(); ++i)
        check(kelsLogGaussAdd_32f_D2(frames.row(0), frames.step(), mean(i), inverses_.row(i), width(), scores,
                                     frames.rows(), constants_[i]),
              "kelsLogGaussAdd_32f_D2");
}

void Mixture::posteriors(const float* frame, Vector& shares) const {
    const int count = components();
    check(kelsCopy_32f(constants_.data(), shares.data(), count), "kelsCopy_32f");
    check(kelsLogGaussMultiMix_32f_D2(means_.row(0), inverses_.row(0), means_.step(), frame, width(), shares.data(),
                                      count),
          "kelsLogGaussMultiMix_32f_D2");
    Kel32f largest = 0;
    check(kelsMax_32f(shares.data(), count, &largest), "kelsMax_32f");
    float sum = 0;
    for (int i = 0; i < count; ++i) sum += shares[i] = std::exp(shares[i] - largest);
    check(kelsMulC_32f_I(1 / sum, shares.data(), count), "kelsMulC_32f_I");
}

Mixture Mixture::split() const {
    const int count = components();
    Mixture result(count + 1, width());
    for (int i = 0; i < count; ++i) {
        check(kelsCopy_32f(mean(i), result.mean(i), width()), "kelsCopy_32f");
        check(kelsCopy_32f(variance(i), result.variance(i), width()), "kelsCopy_32f");
        result.weights_[i] = weights_[i];
    }
    Kel32f weight = 0;
    int heaviest = 0;
    check(kelsMaxIndx_32f(weights_.data(), count, &weight, &heaviest), "kelsMaxIndx_32f");
    check(kelsGaussianSplit_32f(result.mean(heaviest), result.variance(heaviest), result.mean(count),
                                result.variance(count), width(), kSplitDeviations),
          "kelsGaussianSplit_32f");
    result.weights_[heaviest] = result.weights_[count] = weight / 2;
    result.prepare();
    return result;
}

}  // namespace words
