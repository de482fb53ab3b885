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

void save(ModelWriter& writer, const Mixture& mixture) {
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

}  // namespace

FrontEndSettings HmmRecogniser::frontEnd() const {
    FrontEndSettings settings;
    settings.highShare = 1 / 1.12F;  // leaves room for the highest warp
    settings.compression = 0.2F;
    settings.meanShare = 0.8F;
    settings.normaliseVariance = false;
    return settings;
}

std::vector<FrontEndSettings> HmmRecogniser::variants() const {
    std::vector<FrontEndSettings> result;
    for (const float warp : kWarps) {
        for (const float span : kWordSpansDb) {
            FrontEndSettings settings = frontEnd();
            if (warp == settings.warp && span == settings.wordSpanDb) continue;
            settings.warp = warp;
            settings.wordSpanDb = span;
            result.push_back(settings);
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
    std::vector<TrainingExample> training;
    for (const auto& example : examples)
        for (const auto& features : example.features)
            training.push_back({indices[example.word], example.share, features});
    models_ = Trainer({}, team, log).train(words, training);
}

std::vector<Candidate> HmmRecogniser::recognise(const Matrix& features) const {
    std::vector<Candidate> candidates;
    for (const auto& [word, hmm] : models_)
        candidates.push_back({word, -hmm.logLikelihood(features) / static_cast<float>(features.rows())});
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.cost < b.cost; });
    return candidates;
}

void HmmRecogniser::save(ModelWriter& writer) const {
    writer.putCount(models_.size());
    for (const auto& [word, hmm] : models_) {
        writer.putText(word);
        writer.putCount(static_cast<std::size_t>(hmm.stateCount()));
        for (int i = 0; i < hmm.stateCount(); ++i) {
            writer.putFloats(hmm.state(i).logSteps.data(), kSteps);
            words::save(writer, hmm.state(i).mixture);
        }
    }
}

void HmmRecogniser::load(ModelReader& reader, int featureCount) {
    std::vector<WordModel> models;
    const std::size_t count = reader.getCount(kMaxWords);
    for (std::size_t i = 0; i < count; ++i) {
        std::string word = reader.getText();
        const std::size_t stateCount = reader.getCount(kMaxStates);
        if (stateCount == 0) throw DamagedModel("a word without states");
        std::vector<State> states;
        for (std::size_t state = 0; state < stateCount; ++state) {
            StepLogs logSteps{};
            reader.getFloats(logSteps.data(), kSteps);
            states.push_back({loadMixture(reader, featureCount), logSteps});
        }
        models.push_back({std::move(word), Hmm(std::move(states))});
    }
    if (models.empty()) throw DamagedModel("no words");
    models_ = std::move(models);
}

}  // namespace words
