// A mixture of Gaussians with diagonal covariances: what the frames of one state of a word sound like.
#ifndef WORDS_MIXTURE_H
#define WORDS_MIXTURE_H

#include "kels_objects.h"

namespace words {

class Mixture {
  public:
    // Components of equal weight, their means 0 and their variances 1; for use, they have to be prepared.
    Mixture(int components, int width);

    int components() const { return means_.rows(); }
    int width() const { return means_.cols(); }
    float* mean(int component) { return means_.row(component); }
    const float* mean(int component) const { return means_.row(component); }
    float* variance(int component) { return variances_.row(component); }
    const float* variance(int component) const { return variances_.row(component); }
    Vector& weights() { return weights_; }
    const Vector& weights() const { return weights_; }

    // Derives from means, variances and weights what scoring takes.  To be called after they change.
    void prepare();

    // The log likelihood of every frame.
    void score(const Matrix& frames, float* scores) const;
    // The share that each component has in a frame's likelihood; room for all components.
    void posteriors(const float* frame, Vector& shares) const;
    // One component more: that of the largest weight becomes two, a little apart.
    Mixture split() const;

  private:
    Matrix means_;
    Matrix variances_;
    Vector weights_;
    Matrix inverses_;   // of the variances
    Vector constants_;  // of the log likelihoods, log weights included
};

}  // namespace words

#endif
