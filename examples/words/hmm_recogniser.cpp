#include "hmm_recogniser.h"

#include <limits>
#include <map>
#include <ostream>
#include <sstream>

#include "trainer.h"

namespace words {
namespace {

// The ends of the filter bank move by this factor, as do the resonances of shorter and longer vocal tracts.
constexpr float kWarps[] = {0.88F, 0.94F, 1, 1.06F, 1.12F};
// Recordings are cut as closely as careless detectors of words do, and as ours does.
constexpr float kWordSpansDb[] = {15, 30};
constexpr int kFewRecordings = 3;

constexpr std::size_t kMaxWords = 100'000;
constexpr std::size_t kMaxStates = 1000;
constexpr std::size_t kMaxComponents = 1000;

// How many recordings of each word the team has.
std::map<std::string, int> countWords(const std::vector<Example>& examples, Team& team) {
    std::map<std::string, int> mine;
    for (const auto& example : examples) ++mine[example.word];
    std::ostringstream text;
    for (const auto& [word, count] : mine) text << count << ' ' << word << '\n';
    std::map<std::string, int> counts;
    for (const auto& member : team.gather(text.str())) {
        std::istringstream lines(member);
        int count = 0;
        for (std::string word; lines >> count && lines.ignore() && std::getline(lines, word);) counts[word] += count;
    }
    return counts;
}

void saveMixture(ModelWriter& writer, const Mixture& mixture) {
    writer.putCount(static_cast<std::size_t>(mixture.components()));
    writer.putFloats(mixture.weights().data(), mixture.components());
    for (int i = 0; i < mixture.components(); ++i) {
        writer.putFloats(mixture.mean(i), mixture.width());
        writer.putFloats(mixture.variance(i), mixture.width());
    }
}

void getPositive(ModelReader& reader, float* values, int count) {
    reader.getFloats(values, count);
    for (int i = 0; i < count; ++i)
        if (!(values[i] >= std::numeric_limits<float>::min()))
            throw DamagedModel("a weight or variance is not positive");
}

Mixture loadMixture(ModelReader& reader, int width) {
    const std::size_t components = reader.getCount(kMaxComponents);
    if (components == 0) throw DamagedModel("a state without Gaussians");
    reader.expectFloats(components * (1 + 2 * static_cast<std::size_t>(width)));
    Mixture mixture(static_cast<int>(components), width);
    getPositive(reader, mixture.weights().data(), mixture.components());
    for (int i = 0; i < mixture.components(); ++i) {
        reader.getFloats(mixture.mean(i), width);
        getPositive(reader, mixture.variance(i), width);
    }
    mixture.prepare();
    return mixture;
}

void saveWord(ModelWriter& writer, const WordModel& model) {
    writer.putText(model.word);
    writer.putCount(static_cast<std::size_t>(model.hmm.stateCount()));
    for (int i = 0; i < model.hmm.stateCount(); ++i) {
        writer.putFloats(model.hmm.state(i).logSteps.data(), kSteps);
        saveMixture(writer, model.hmm.state(i).mixture);
    }
}

WordModel loadWord(ModelReader& reader, int width) {
    std::string word = reader.getText();
    const std::size_t count = reader.getCount(kMaxStates);
    if (count == 0) throw DamagedModel("a word without states");
    std::vector<State> states;
    for (std::size_t i = 0; i < count; ++i) {
        StepLogs logSteps{};
        reader.getFloats(logSteps.data(), kSteps);
        states.push_back({loadMixture(reader, width), logSteps});
    }
    return {std::move(word), Hmm(std::move(states))};
}

}  // namespace

std::vector<FrontEndSettings> HmmRecogniser::frontEnds() const {
    // Without pre-emphasis the vowels' first resonances count, with it, from 300 Hz on, what is above them.
    FrontEndSettings logarithms;
    logarithms.highShare = 1 / 1.12F;  // leaves room for the highest warp
    logarithms.preEmphasis = 0;
    logarithms.meanShare = 0.4F;
    logarithms.normaliseVariance = false;
    FrontEndSettings powers = logarithms;
    powers.compression = 0.2F;
    FrontEndSettings highPowers = powers;
    highPowers.preEmphasis = 0.97F;
    highPowers.lowHz = 300;
    return {logarithms, powers, highPowers};
}

std::vector<std::vector<FrontEndSettings>> HmmRecogniser::variants() const {
    std::vector<std::vector<FrontEndSettings>> result;
    for (const float warp : kWarps) {
        for (const float span : kWordSpansDb) {
            auto settings = frontEnds();
            if (warp == settings[0].warp && span == settings[0].wordSpanDb) continue;
            for (auto& one : settings) {
                one.warp = warp;
                one.wordSpanDb = span;
            }
            result.push_back(std::move(settings));
        }
    }
    return result;
}

void HmmRecogniser::train(std::vector<Example> examples, Team& team, std::ostream& log) {
    std::vector<std::string> words;
    std::map<std::string, int> indices;
    for (const auto& [word, count] : countWords(examples, team)) {
        if (count < kFewRecordings)
            log << "note: only " << count << (count == 1 ? " recording" : " recordings") << " of \"" << word
                << "\": too few to learn it well\n";
        indices[word] = static_cast<int>(words.size());
        words.push_back(word);
    }
    models_.clear();
    const std::size_t views = frontEnds().size();
    for (std::size_t view = 0; view < views; ++view) {
        std::vector<TrainingExample> training;
        for (const auto& example : examples)
            for (const auto& variant : example.variants)
                training.push_back({indices[example.word], example.share, variant[view]});
        log << "models for front end " << view + 1 << " of " << views << '\n';
        models_.push_back(Trainer({}, team, log).train(words, training));
    }
}

std::vector<Candidate> HmmRecogniser::recognise(const Views& views) const {
    std::vector<Candidate> candidates;
    for (std::size_t word = 0; word < models_.front().size(); ++word) {
        float cost = 0;
        for (std::size_t view = 0; view < models_.size(); ++view) {
            const Matrix& features = *views[view];
            cost -= models_[view][word].hmm.logLikelihood(features) / static_cast<float>(features.rows());
        }
        candidates.push_back({models_.front()[word].word, cost / static_cast<float>(models_.size())});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.cost < b.cost; });
    return candidates;
}

void HmmRecogniser::save(ModelWriter& writer) const {
    writer.putCount(models_.front().size());
    for (const auto& models : models_)
        for (const auto& model : models) saveWord(writer, model);
}

void HmmRecogniser::load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) {
    std::vector<std::vector<WordModel>> models(frontEnds.size());
    const std::size_t count = reader.getCount(kMaxWords);
    if (count == 0) throw DamagedModel("no words");
    for (std::size_t view = 0; view < models.size(); ++view) {
        for (std::size_t i = 0; i < count; ++i) {
            models[view].push_back(loadWord(reader, frontEnds[view].featureCount()));
            if (models[view][i].word != models[0][i].word) throw DamagedModel("front ends with different words");
        }
    }
    models_ = std::move(models);
}

}  // namespace words
