// Estimates the models of words from recordings of them.
#ifndef WORDS_TRAINER_H
#define WORDS_TRAINER_H

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "accumulators.h"

namespace words {

struct TrainingSettings {
    int states = 12;  // of every word
    // Components of a state: passes over all recordings with one, then each is split, and so on.
    struct Stage {
        int components;
        int passes;
    };
    std::vector<Stage> stages{{1, 4}, {2, 4}, {4, 6}};
    float varianceFloor = 0.5F;  // share of the variance of all frames below which no variance falls
};

struct TrainingExample {
    int word = 0;   // in the list of words
    int share = 0;  // below kShares
    std::shared_ptr<const Matrix> features;
};

class Trainer {
  public:
    // The log gets a line for every pass: the log likelihood per frame, and whether it fell.
    Trainer(const TrainingSettings& settings, Team& team, std::ostream& log)
        : settings_(settings), team_(team), log_(log) {}

    // Every member of the team passes the same words and the examples of its own shares.
    std::vector<WordModel> train(const std::vector<std::string>& words, const std::vector<TrainingExample>& examples);
    // Of examples aligned to models.
    Accumulators sum(const std::vector<WordModel>& models, const std::vector<TrainingExample>& examples) {
        return sum(models, examples, Align::best);
    }

  private:
    enum class Align { uniformly, best };
    Accumulators sum(const std::vector<WordModel>& models, const std::vector<TrainingExample>& examples, Align align);
    Mixture average(const std::vector<TrainingExample>& examples);
    void report(int pass, int components, double logLikelihood);

    TrainingSettings settings_;
    Team& team_;
    std::ostream& log_;
    double last_ = 0;
};

}  // namespace words

#endif
