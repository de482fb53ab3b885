#include "hmm_recogniser.h"

#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <ostream>
#include <sstream>

#include "adaptation.h"
#include "parallel.h"
#include "quiet.h"
#include "trainer.h"

namespace words {
namespace {

// The ends of the filter bank move by this factor, as do the resonances of shorter and longer vocal tracts.
constexpr float kWarps[] = {0.88F, 0.94F, 1, 1.06F, 1.12F};
constexpr float kMeanShare = 0.4F;  // of cepstra over the loud frames, taken off
constexpr float kLoudSpanDb = 15;
constexpr float kEnergySpanDb = 20;  // what is quieter counts as equally quiet: noise fills it, and voices differ in it

// Training hears each recording with each warp in quiet, some of them cut closely, and in noise.
constexpr float kTrainingSnrsDb[] = {20, 15, 10, 5, 0};

const TrainingSettings kWordTraining{12, {{1, 4}, {2, 4}, {4, 6}}, 0.5F};
const TrainingSettings kSurroundingsTraining{1, {{1, 1}, {2, 2}, {4, 2}, {8, 4}}, 0.2F};
// What is none of the words fits worse than so many standard deviations of what was learned, or is less clear than this
// share of the mean margin to another word.
constexpr double kMisfitDeviations = 4, kMarginShare = 0.1;

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
    FrontEndSettings plain;
    plain.trim = Trim::none;
    plain.normaliseVariance = false;
    plain.meanShare = 0;
    if (choice_.frontEnd == "mfcc") return {plain};
    if (choice_.frontEnd == "mfcc-mean") {
        plain.meanShare = 1;
        return {plain};
    }
    FrontEndSettings aurora = plain;
    aurora.basis = FrontEndSettings::Basis::aurora;
    aurora.meanShare = kMeanShare;
    aurora.loudSpanDb = kLoudSpanDb;
    if (choice_.frontEnd == "aurora") return {aurora};
    if (choice_.frontEnd != "mel" && choice_.frontEnd != "combined")
        throw std::runtime_error("there is no front end \"" + choice_.frontEnd + "\"");
    FrontEndSettings logarithms = plain;
    logarithms.highShare = 1 / 1.12F;  // leaves room for the highest warp
    logarithms.preEmphasis = 0;
    logarithms.meanShare = kMeanShare;
    logarithms.loudSpanDb = kLoudSpanDb;
    logarithms.energySpanDb = kEnergySpanDb;
    logarithms.denoise = choice_.frontEnd == "combined";
    // Without pre-emphasis the vowels' first resonances count, with it, from 300 Hz on, what is above them.
    FrontEndSettings powers = logarithms;
    powers.compression = 0.2F;
    FrontEndSettings highPowers = powers;
    highPowers.preEmphasis = 0.97F;
    highPowers.lowHz = 300;
    if (choice_.frontEnd == "mel") return {logarithms, powers, highPowers};
    return {logarithms, powers, highPowers, aurora};
}

std::vector<Variant> HmmRecogniser::variants() const {
    Surroundings quiet;
    quiet.secondsBefore = 0.4F;  // time for noise estimates to settle
    quiet.secondsAfter = 0.25F;
    Surroundings cut = quiet;  // closely, as many recordings are: there noise estimates hear the word alone
    cut.secondsBefore = cut.secondsAfter = 0;
    std::vector<Surroundings> noisy;
    for (const float snrDb : kTrainingSnrsDb) {
        for (const NoiseKind kind : kNoiseKinds) {
            noisy.push_back(quiet);
            noisy.back().kind = kind;
            noisy.back().snrDb = snrDb;
        }
    }
    std::vector<Variant> result;
    for (const bool inNoise : {false, true}) {
        for (const float warp : kWarps) {
            if (inNoise && !choice_.inNoise) continue;
            auto settings = frontEnds();
            for (auto& one : settings) one.warp = warp;
            result.push_back({std::move(settings), inNoise ? noisy : std::vector{quiet, cut}});
            for (auto& surroundings : result.back().surroundings)
                surroundings.draw = static_cast<unsigned>(1000 + result.size());
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
    surroundings_.clear();
    const std::size_t views = frontEnds().size();
    for (std::size_t view = 0; view < views; ++view) {
        std::vector<TrainingExample> training, around;
        for (const auto& example : examples) {
            for (const auto& variant : example.variants) {
                training.push_back({indices[example.word], example.share, variant.word[view]});
                if (variant.around[view]->rows() > 0) around.push_back({0, example.share, variant.around[view]});
            }
        }
        log << "models for front end " << view + 1 << " of " << views << '\n';
        models_.push_back(Trainer(kWordTraining, team, log).train(words, training));
        std::ostringstream unread;
        surroundings_.push_back(Trainer(kSurroundingsTraining, team, unread).train({""}, around).front());
    }
    variances_.clear();
    for (const auto& models : models_) variances_.push_back(meanVariance(models));
    estimateLimits(examples, team);
}

void HmmRecogniser::adapt(const std::vector<Example>& examples) {
    constexpr int kPasses = 2;
    Team alone;
    std::ostringstream unread;
    Trainer trainer(kWordTraining, alone, unread);
    for (std::size_t view = 0; view < models_.size(); ++view) {
        auto& models = models_[view];
        std::vector<TrainingExample> heard;
        for (const auto& example : examples) {
            const auto word = std::find_if(models.begin(), models.end(),
                                           [&](const WordModel& model) { return model.word == example.word; });
            if (word == models.end()) throw std::runtime_error("the word \"" + example.word + "\" is not known");
            for (const auto& variant : example.variants)
                heard.push_back({static_cast<int>(word - models.begin()), example.share, variant.word[view]});
        }
        for (int pass = 0; pass < kPasses; ++pass) adaptMeans(models, trainer.sum(models, heard));
    }
}

// What the front ends together say about a recording, word by word.
struct HmmRecogniser::Judgement {
    std::vector<float> scores;   // log likelihoods, the sum over front ends
    std::vector<float> misfits;  // likewise, what frames of the word would score better as any other sound

    std::size_t best() const {
        return static_cast<std::size_t>(std::max_element(scores.begin(), scores.end()) - scores.begin());
    }
    float margin() const {
        std::vector<float> sorted = scores;
        std::sort(sorted.rbegin(), sorted.rend());
        return sorted.size() > 1 ? sorted[0] - sorted[1] : 0;
    }
};

HmmRecogniser::Judgement HmmRecogniser::judge(const Views& views) const {
    const std::size_t words = models_.front().size();
    Judgement judgement{std::vector<float>(words), std::vector<float>(words)};
    for (std::size_t view = 0; view < models_.size(); ++view) {
        const Matrix& features = *views[view];
        const int frames = features.rows();
        StateScores surroundings = surroundings_[view].hmm.score(features);
        float* const around = surroundings.frames.row(0);
        if (hasQuiet(features)) {
            Vector quiet(frames);
            quietOf(features, variances_[view]).score(features, quiet.data());
            check(kelsMaxEvery_32f_I(quiet.data(), around, frames), "kelsMaxEvery_32f_I");
        }
        Vector anySound(frames);
        check(kelsSet_32f(-1e30F, anySound.data(), frames), "kelsSet_32f");
        std::vector<SpottedWord> spotted;
        for (const auto& word : models_[view]) {
            const StateScores states = word.hmm.score(features);
            for (int i = 0; i < states.frames.rows(); ++i)
                check(kelsMaxEvery_32f_I(states.frames.row(i), anySound.data(), frames), "kelsMaxEvery_32f_I");
            spotted.push_back(bestWithin(states, around));
        }
        for (std::size_t i = 0; i < words; ++i) {
            const SpottedWord& word = spotted[i];
            float gap = -word.logLikelihood;
            for (int t = 0; t < frames; ++t) gap += t >= word.begin && t < word.end ? anySound[t] : around[t];
            judgement.scores[i] += word.logLikelihood;
            judgement.misfits[i] += gap / static_cast<float>(word.end - word.begin);
        }
    }
    return judgement;
}

// From the recordings that were learned: few misfit as badly, and few are as close to another word.
void HmmRecogniser::estimateLimits(const std::vector<Example>& examples, Team& team) {
    std::vector<Judgement> judgements(examples.size());
    forEachInParallel(static_cast<int>(examples.size()), [&](int i) {
        const auto index = static_cast<std::size_t>(i);
        judgements[index] = judge(examples[index].variants.front().word);
    });
    std::vector<double> sums(4);  // how many; of misfits, of their squares, of margins
    for (const Judgement& judgement : judgements) {
        const double misfit = judgement.misfits[judgement.best()];
        ++sums[0];
        sums[1] += misfit;
        sums[2] += misfit * misfit;
        sums[3] += judgement.margin();
    }
    team.sum(sums);
    const double mean = sums[1] / sums[0], variance = sums[2] / sums[0] - mean * mean;
    mostMisfit_ = static_cast<float>(mean + kMisfitDeviations * std::sqrt(std::max(variance, 1e-6)));
    leastMargin_ = static_cast<float>(kMarginShare * sums[3] / sums[0]);
}

Finding HmmRecogniser::recognise(const Views& views) const {
    const Judgement judgement = judge(views);
    const auto perFrame = static_cast<float>(views.front()->rows()) * static_cast<float>(models_.size());
    Finding finding;
    for (std::size_t i = 0; i < judgement.scores.size(); ++i)
        finding.candidates.push_back({models_.front()[i].word, -judgement.scores[i] / perFrame});
    std::stable_sort(finding.candidates.begin(), finding.candidates.end(),
                     [](const auto& a, const auto& b) { return a.cost < b.cost; });
    finding.isWord = judgement.misfits[judgement.best()] <= mostMisfit_ && judgement.margin() >= leastMargin_;
    return finding;
}

void HmmRecogniser::save(ModelWriter& writer) const {
    writer.putText(choice_.frontEnd);
    writer.putCount(choice_.inNoise ? 1 : 0);
    writer.putCount(models_.front().size());
    writer.putFloats(&mostMisfit_, 1);
    writer.putFloats(&leastMargin_, 1);
    for (std::size_t view = 0; view < models_.size(); ++view) {
        for (const auto& model : models_[view]) saveWord(writer, model);
        saveWord(writer, surroundings_[view]);
    }
}

void HmmRecogniser::load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) {
    choice_.frontEnd = reader.getText();
    choice_.inNoise = reader.getCount(1) == 1;
    if (this->frontEnds().size() != frontEnds.size()) throw DamagedModel("front ends that do not go together");
    std::vector<std::vector<WordModel>> models(frontEnds.size());
    const std::size_t count = reader.getCount(kMaxWords);
    if (count == 0) throw DamagedModel("no words");
    reader.getFloats(&mostMisfit_, 1);
    reader.getFloats(&leastMargin_, 1);
    std::vector<WordModel> surroundings;
    for (std::size_t view = 0; view < models.size(); ++view) {
        for (std::size_t i = 0; i < count; ++i) {
            models[view].push_back(loadWord(reader, frontEnds[view].featureCount()));
            if (models[view][i].word != models[0][i].word) throw DamagedModel("front ends with different words");
        }
        surroundings.push_back(loadWord(reader, frontEnds[view].featureCount()));
        if (surroundings.back().hmm.stateCount() != 1) throw DamagedModel("surroundings of several states");
    }
    models_ = std::move(models);
    surroundings_ = std::move(surroundings);
    variances_.clear();
    for (const auto& view : models_) variances_.push_back(meanVariance(view));
}

}  // namespace words
