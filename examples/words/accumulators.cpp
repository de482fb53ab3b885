#include "accumulators.h"

#include <cmath>

namespace words {
namespace {

constexpr float kLeastPosterior = 1e-4F;  // a component that a frame belongs to less than this gets nothing of it
constexpr float kLeastOccupation = 10;    // frames that it takes to estimate a component anew
constexpr float kLeastWeight = 0.01F;     // of a component in its mixture
constexpr float kPriorSteps = 1;          // added to the number of each kind of step, as few are seen of some

}  // namespace

Accumulators::Accumulators(const std::vector<WordModel>& models) {
    std::size_t end = 0;
    for (const auto& [word, hmm] : models) {
        auto& places = places_.emplace_back();
        for (int i = 0; i < hmm.stateCount(); ++i) {
            const Mixture& mixture = hmm.state(i).mixture;
            places.push_back(
                {end, static_cast<std::size_t>(mixture.width()), static_cast<std::size_t>(mixture.components())});
            end = places.back().end();
        }
    }
    sums_.resize(end);
}

void Accumulators::add(const std::vector<WordModel>& models, int word, const Matrix& frames, const Path& path) {
    const Hmm& hmm = models[static_cast<std::size_t>(word)].hmm;
    totals_[0] += path.logLikelihood;
    totals_[1] += frames.rows();
    Vector posteriors;
    for (int t = 0; t < frames.rows(); ++t) {
        const auto frame = static_cast<std::size_t>(t);
        const int state = path.states[frame];
        const int next = t + 1 < frames.rows() ? path.states[frame + 1] : hmm.stateCount();
        const Place& at = place(word, state);
        if (const int step = next - state; step < kSteps) sums_[at.steps() + static_cast<std::size_t>(step)] += 1;

        const Mixture& mixture = hmm.state(state).mixture;
        if (posteriors.size() != mixture.components()) posteriors = Vector(mixture.components());
        mixture.posteriors(frames.row(t), posteriors);
        for (int i = 0; i < mixture.components(); ++i) {
            if (posteriors[i] < kLeastPosterior) continue;
            const auto component = static_cast<std::size_t>(i);
            sums_[at.occupations() + component] += posteriors[i];
            check(kelsMeanVarAcc_32f(frames.row(t), mixture.mean(i), &sums_[at.mean(component)],
                                     &sums_[at.variance(component)], mixture.width(), posteriors[i]),
                  "kelsMeanVarAcc_32f");
        }
    }
}

void Accumulators::add(const Accumulators& other) {
    check(kelsAdd_32f_I(other.sums_.data(), sums_.data(), static_cast<int>(sums_.size())), "kelsAdd_32f_I");
    for (std::size_t i = 0; i < totals_.size(); ++i) totals_[i] += other.totals_[i];
}

void Accumulators::addUp(Team& team) {
    team.sum(sums_);
    team.sum(totals_);
}

void Accumulators::update(std::vector<WordModel>& models, const Vector& varianceFloor) const {
    for (std::size_t word = 0; word < models.size(); ++word) {
        Hmm& hmm = models[word].hmm;
        for (int i = 0; i < hmm.stateCount(); ++i) {
            const Place& at = place(static_cast<int>(word), i);
            updateMixture(hmm.state(i).mixture, at, varianceFloor);
            hmm.state(i).logSteps = updatedSteps(at);
        }
    }
}

void Accumulators::updateMixture(Mixture& mixture, const Place& at, const Vector& varianceFloor) const {
    const int width = mixture.width();
    float frames = 0;
    for (int i = 0; i < mixture.components(); ++i) {
        const auto component = static_cast<std::size_t>(i);
        const float occupation = sums_[at.occupations() + component];
        frames += occupation;
        if (occupation < kLeastOccupation) continue;
        const float* const mean = &sums_[at.mean(component)];
        check(kelsUpdateMean_32f(mean, mixture.mean(i), width, occupation), "kelsUpdateMean_32f");
        check(kelsUpdateVar_32f(mean, &sums_[at.variance(component)], varianceFloor.data(), mixture.variance(i), width,
                                occupation, occupation),
              "kelsUpdateVar_32f");
    }
    if (frames > 0) {
        Kel32f sum = 0;
        Vector& weights = mixture.weights();
        check(
            kelsUpdateWeight_32f(&sums_[at.occupations()], weights.data(), weights.size(), &sum, frames, kLeastWeight),
            "kelsUpdateWeight_32f");
        check(kelsDivC_32f_I(sum, weights.data(), weights.size()), "kelsDivC_32f_I");
    }
    mixture.prepare();
}

StepLogs Accumulators::updatedSteps(const Place& at) const {
    StepLogs logs{};
    float all = 0;
    for (std::size_t step = 0; step < kSteps; ++step) all += sums_[at.steps() + step] + kPriorSteps;
    for (std::size_t step = 0; step < kSteps; ++step)
        logs[step] = std::log((sums_[at.steps() + step] + kPriorSteps) / all);
    return logs;
}

}  // namespace words
