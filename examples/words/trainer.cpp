#include "trainer.h"

#include <iomanip>
#include <limits>
#include <ostream>

#include "parallel.h"
#include "progress.h"

namespace words {
namespace {

constexpr float kLeastVariance = 1e-6F;  // of a feature that is always the same

// The sum of parts[begin .. end - 1], by halves.
const Accumulators& sumByHalves(std::vector<Accumulators>& parts, std::size_t begin, std::size_t end) {
    if (end - begin > 1) {
        const std::size_t middle = begin + (end - begin) / 2;
        sumByHalves(parts, begin, middle);
        parts[begin].add(sumByHalves(parts, middle, end));
    }
    return parts[begin];
}

}  // namespace

std::vector<WordModel> Trainer::train(const std::vector<std::string>& words,
                                      const std::vector<TrainingExample>& examples) {
    const Mixture whole = average(examples);
    Vector floor(whole.width());
    check(kelsMulC_32f(whole.variance(0), settings_.varianceFloor, floor.data(), whole.width()), "kelsMulC_32f");

    std::vector<WordModel> models;
    for (const auto& word : words) models.push_back({word, Hmm(settings_.states, whole)});
    sum(models, examples, Align::uniformly).update(models, floor);
    last_ = -std::numeric_limits<double>::infinity();
    int pass = 0;
    for (const auto& [components, passes] : settings_.stages) {
        for (auto& [word, hmm] : models)
            for (int i = 0; i < hmm.stateCount(); ++i)
                while (hmm.state(i).mixture.components() < components)
                    hmm.state(i).mixture = hmm.state(i).mixture.split();
        for (int i = 0; i < passes; ++i) {
            const Accumulators sums = sum(models, examples, Align::best);
            sums.update(models, floor);
            report(++pass, components, sums.logLikelihoodPerFrame());
        }
    }
    return models;
}

// Mean and variance of all frames.
Mixture Trainer::average(const std::vector<TrainingExample>& examples) {
    std::vector<double> width{examples.empty() ? 0.0 : examples.front().features->cols()};
    std::vector<double> members{examples.empty() ? 0.0 : 1.0};  // that have examples
    team_.sum(width);
    team_.sum(members);
    if (members[0] == 0) throw std::runtime_error("there is nothing to train with");
    Mixture whole(1, static_cast<int>(width[0] / members[0]));
    whole.prepare();
    std::vector<WordModel> single{{"", Hmm(1, whole)}};
    std::vector<TrainingExample> ofOneWord = examples;
    for (auto& example : ofOneWord) example.word = 0;
    Vector leastVariance(whole.width());
    check(kelsSet_32f(kLeastVariance, leastVariance.data(), whole.width()), "kelsSet_32f");
    sum(single, ofOneWord, Align::uniformly).update(single, leastVariance);
    return single.front().hmm.state(0).mixture;
}

Accumulators Trainer::sum(const std::vector<WordModel>& models, const std::vector<TrainingExample>& examples,
                          Align align) {
    const ShareRange mine = sharesOf(team_);
    std::vector<std::vector<const TrainingExample*>> byShare(static_cast<std::size_t>(mine.end - mine.begin));
    for (const auto& example : examples)
        byShare[static_cast<std::size_t>(example.share - mine.begin)].push_back(&example);
    std::vector<Accumulators> sums(byShare.size(), Accumulators(models));
    Progress progress("training", static_cast<int>(examples.size()));
    forEachInParallel(static_cast<int>(byShare.size()), [&](int i) {
        const auto share = static_cast<std::size_t>(i);
        for (const TrainingExample* example : byShare[share]) {
            const Matrix& frames = *example->features;
            const Hmm& hmm = models[static_cast<std::size_t>(example->word)].hmm;
            const Path path = align == Align::best ? hmm.align(frames) : uniformPath(frames.rows(), hmm.stateCount());
            sums[share].add(models, example->word, frames, path);
            progress.advance();
        }
    });
    Accumulators all(models);
    if (!sums.empty()) all.add(sumByHalves(sums, 0, sums.size()));
    all.addUp(team_);
    return all;
}

void Trainer::report(int pass, int components, double logLikelihood) {
    log_ << "pass " << std::setw(2) << pass << ", " << components
         << (components == 1 ? " component: " : " components: ") << std::fixed << std::setprecision(4) << logLikelihood
         << " per frame";
    if (logLikelihood < last_) log_ << " (fell)";
    log_ << '\n' << std::flush;
    last_ = logLikelihood;
}

}  // namespace words
