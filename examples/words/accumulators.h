// What training sums up over recordings, and the model that follows from the sums.
#ifndef WORDS_ACCUMULATORS_H
#define WORDS_ACCUMULATORS_H

#include <vector>

#include "hmm.h"
#include "team.h"

namespace words {

class Accumulators {
  public:
    // Zeros for models of this shape.
    explicit Accumulators(const std::vector<WordModel>& models);

    // A recording of a word whose frames belong to states as the path says.
    void add(const std::vector<WordModel>& models, int word, const Matrix& frames, const Path& path);
    void add(const Accumulators& other);
    void addUp(Team& team);

    // The likeliest parameters given the paths: means, variances above a floor, weights, steps.  The models must be
    // those that the sums were formed with.
    void update(std::vector<WordModel>& models, const Vector& varianceFloor) const;

    // visit(mixture, component, occupation, sums of what frames differ from its mean), for every Gaussian.
    template <class Visit>
    void forEachGaussian(std::vector<WordModel>& models, const Visit& visit) const {
        for (std::size_t word = 0; word < models.size(); ++word) {
            for (int i = 0; i < models[word].hmm.stateCount(); ++i) {
                const Place& at = place(static_cast<int>(word), i);
                for (std::size_t k = 0; k < at.components; ++k)
                    visit(models[word].hmm.state(i).mixture, static_cast<int>(k), sums_[at.occupations() + k],
                          &sums_[at.mean(k)]);
            }
        }
    }

    double logLikelihood() const { return totals_[0]; }
    double frames() const { return totals_[1]; }
    double logLikelihoodPerFrame() const { return logLikelihood() / frames(); }

  private:
    // Where the sums of one state begin: its steps, then occupation, mean and variance sums of each component.
    struct Place {
        std::size_t begin;
        std::size_t width;
        std::size_t components;
        std::size_t steps() const { return begin; }
        std::size_t occupations() const { return begin + kSteps; }
        std::size_t mean(std::size_t component) const { return occupations() + components + component * width; }
        std::size_t variance(std::size_t component) const { return mean(components) + component * width; }
        std::size_t end() const { return variance(components); }
    };
    const Place& place(int word, int state) const {
        return places_[static_cast<std::size_t>(word)][static_cast<std::size_t>(state)];
    }
    void updateMixture(Mixture& mixture, const Place& place, const Vector& varianceFloor) const;
    StepLogs updatedSteps(const Place& place) const;

    std::vector<std::vector<Place>> places_;  // by word and state
    std::vector<float> sums_;
    std::vector<double> totals_ = std::vector<double>(2);  // log likelihood and frames
};

}  // namespace words

#endif
