#include "configuration.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>

#include "common/check.h"

namespace features {
namespace {

constexpr std::string_view kPresets[] = {"htk-mfcc", "kaldi-mfcc", "kaldi-fbank", "librosa-mfcc", "whisper-mel"};

struct Word {
    std::string_view name;
    int value;
};
constexpr Word kEdges[] = {{"snip", kelFeatSnip},
                           {"mirror", kelFeatMirror},
                           {"centre-zero", kelFeatCentreZero},
                           {"centre-reflect", kelFeatCentreReflect},
                           {"drop-last", kelFeatDropLast}};
constexpr Word kWindows[] = {{"rect", kelWinRect},        {"hann", kelWinHann},     {"hamming", kelWinHamming},
                             {"povey", kelWinPovey},      {"kaiser", kelWinKaiser}, {"blackman", kelWinBlackman},
                             {"periodic", kelWinPeriodic}};
constexpr Word kSpectra[] = {{"magnitude", kelFeatMagnitude}, {"power", kelFeatPower}};
constexpr Word kScales[] = {{"mel", kelFeatScaleMel}, {"slaney", kelFeatScaleSlaney}};
constexpr Word kTriangles[] = {{"mel", kelFeatTriangleMel}, {"hz", kelFeatTriangleHz}};
constexpr Word kBankNorms[] = {{"peak", kelFeatBankPeak}, {"area", kelFeatBankArea}};
constexpr Word kLogarithms[] = {
    {"log-none", kelFeatLogNone}, {"ln", kelFeatLn}, {"log10", kelFeatLog10}, {"decibel", kelFeatDecibel}};
constexpr Word kOutputs[] = {{"spectrum", kelFeatSpectrum}, {"bank", kelFeatBank}, {"cepstra", kelFeatCepstra}};
constexpr Word kDctScales[] = {{"plain", kelFeatDctPlain}, {"ortho", kelFeatDctOrtho}};
constexpr Word kEnergies[] = {{"none", 0}, {"c0", kelFeatC0}, {"energy", kelFeatEnergy}};
constexpr Word kPlaces[] = {{"first", kelFeatFirst}, {"last", kelFeatLast}};
constexpr Word kDeltaEdges[] = {{"of-delta", kelFeatDeltaOfDelta}, {"of-static", kelFeatDeltaOfStatic}};
constexpr Word kNorms[] = {{"none", kelFeatNormNone}, {"mean", kelFeatNormMean}, {"mean-var", kelFeatNormMeanVar}};
constexpr Word kHints[] = {{"none", kelHintNone}, {"fast", kelHintFast}};

using Config = KelFeatureConfig;
struct Field {
    std::string_view name;
    Kel32s Config::*integer;
    Kel64f Config::*real;
    std::span<const Word> words;

    constexpr Field(std::string_view n, Kel32s Config::*i, std::span<const Word> w = {})
        : name(n), integer(i), real(nullptr), words(w) {}
    constexpr Field(std::string_view n, Kel64f Config::*r) : name(n), integer(nullptr), real(r) {}
};
constexpr Field kFields[] = {{"sampleRate", &Config::sampleRate},
                             {"frameLen", &Config::frameLen},
                             {"frameShift", &Config::frameShift},
                             {"fftLen", &Config::fftLen},
                             {"edges", &Config::edges, kEdges},
                             {"window", &Config::window, kWindows},
                             {"removeMean", &Config::removeMean},
                             {"spectrum", &Config::spectrum, kSpectra},
                             {"melScale", &Config::melScale, kScales},
                             {"triangles", &Config::triangles, kTriangles},
                             {"bankNorm", &Config::bankNorm, kBankNorms},
                             {"numFilters", &Config::numFilters},
                             {"logKind", &Config::logKind, kLogarithms},
                             {"output", &Config::output, kOutputs},
                             {"numCeps", &Config::numCeps},
                             {"dctScale", &Config::dctScale, kDctScales},
                             {"lifter", &Config::lifter},
                             {"energy", &Config::energy, kEnergies},
                             {"energyPlace", &Config::energyPlace, kPlaces},
                             {"energyRaw", &Config::energyRaw},
                             {"deltaOrder", &Config::deltaOrder},
                             {"deltaWin", &Config::deltaWin},
                             {"deltaEdge", &Config::deltaEdge, kDeltaEdges},
                             {"norm", &Config::norm, kNorms},
                             {"hint", &Config::hint, kHints},
                             {"windowParam", &Config::windowParam},
                             {"preEmphasis", &Config::preEmphasis},
                             {"scale16s", &Config::scale16s},
                             {"lowFreq", &Config::lowFreq},
                             {"highFreq", &Config::highFreq},
                             {"logFloor", &Config::logFloor},
                             {"logRange", &Config::logRange},
                             {"logOffset", &Config::logOffset},
                             {"logScale", &Config::logScale},
                             {"energyFloor", &Config::energyFloor}};

const Field* find(std::string_view name) {
    return std::find_if(std::begin(kFields), std::end(kFields), [&](const Field& f) { return f.name == name; });
}

bool parseWords(std::span<const Word> words, std::string_view text, double& value) {
    int sum = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('+', begin), text.size());
        const auto isWord = [&](const Word& w) { return w.name == text.substr(begin, end - begin); };
        const auto word = std::find_if(words.begin(), words.end(), isWord);
        if (word == words.end()) return false;
        sum |= word->value;
        begin = end + 1;
    }
    value = sum;
    return true;
}

bool parseNumber(bool integer, std::string_view text, double& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return false;
    constexpr double kMost = std::numeric_limits<Kel32s>::max();
    return !integer || (value == std::trunc(value) && std::fabs(value) <= kMost);
}

}  // namespace

void Choices::setPreset(std::string_view name) {
    const auto* const place = std::find(std::begin(kPresets), std::end(kPresets), name);
    if (place == std::end(kPresets)) throw UsageError("there is no preset \"" + std::string(name) + "\"");
    preset_ = kelFeatHtkMfcc + static_cast<int>(place - kPresets);
}

std::string_view Choices::preset() const {
    return kPresets[preset_ - kelFeatHtkMfcc];
}

bool Choices::isField(std::string_view name) {
    return find(name) != std::end(kFields);
}

void Choices::set(std::string_view name, std::string_view text) {
    const Field* const field = find(name);
    double value = 0;
    if (!parseWords(field->words, text, value) && !parseNumber(field->integer != nullptr, text, value)) {
        throw UsageError("--" + std::string(name) + " does not take \"" + std::string(text) + "\"");
    }
    fields_.emplace_back(static_cast<std::size_t>(field - kFields), value);
}

int Choices::rateFor(int recorded) const {
    constexpr int kWhisperRate = 16000;  // what its models have learned from
    int rate = preset_ == kelFeatWhisperMel ? kWhisperRate : recorded;
    for (const auto& [field, value] : fields_) {
        if (kFields[field].integer == &Config::sampleRate) rate = static_cast<int>(value);
    }
    return rate;
}

KelFeatureConfig Choices::at(int rate) const {
    KelFeatureConfig config;
    common::check(kelsFeaturePreset(&config, rate, preset_), "the sampling rate");
    for (const auto& [field, value] : fields_) {
        if (kFields[field].integer != nullptr) {
            config.*kFields[field].integer = static_cast<Kel32s>(value);
        } else {
            config.*kFields[field].real = value;
        }
    }
    return config;
}

std::string Choices::help() {
    std::string text = "presets:";
    for (const std::string_view preset : kPresets) text.append(" ").append(preset);
    text += "\nfields:";
    for (const Field& field : kFields) {
        text.append("\n  ").append(field.name);
        if (!field.words.empty()) text.append(16 - std::min<std::size_t>(field.name.size(), 15), ' ');
        for (const Word& word : field.words) text.append(" ").append(word.name);
    }
    return text + "\n";
}

}  // namespace features
