#include "front_end.h"

#include <bit>
#include <cmath>
#include <map>

#include "signal.h"

namespace words {
namespace {

constexpr int kLowestRate = 2000;
constexpr double kNepersPerDb = 0.2302585;          // of energy; half as many of magnitude
constexpr double kLeastEnergy = 1;                  // of a frame in the range of 16-bit audio
constexpr float kLeastVariance = 1e-3F;             // keeps a constant column from being blown up
constexpr float kLargestPower = 10;                 // gives compressed spectra about the range of logarithms
constexpr int kDerivativeRows = 6;                  // the fewest that two windows of +-2 rows take
constexpr float kDerivativeScale = 1.0F / (2 * 5);  // regression over +-2 rows: 1 / (2 * (1*1 + 2*2))

float maximum(const float* values, int count) {
    Kel32f result = 0;
    check(kelsMax_32f(values, count, &result), "kelsMax_32f");
    return result;
}

// Takes a share of its mean over the loud frames off each of the first `cols` columns.  What stays the same through a
// recording (microphone, room) thereby cancels to a good part.
void takeMeansOff(Matrix& m, int cols, float share, const std::vector<bool>& loud) {
    Vector mean(cols);
    int count = 0;
    for (int t = 0; t < m.rows(); ++t) {
        if (!loud[static_cast<std::size_t>(t)]) continue;
        check(kelsAdd_32f_I(m.row(t), mean.data(), cols), "kelsAdd_32f_I");
        ++count;
    }
    check(kelsMulC_32f_I(share / static_cast<float>(count), mean.data(), cols), "kelsMulC_32f_I");
    for (int t = 0; t < m.rows(); ++t) check(kelsSub_32f_I(mean.data(), m.row(t), cols), "kelsSub_32f_I");
}

// Those within so many dB of the loudest one, by the logarithms of energies.
std::vector<bool> loudFrames(const float* logEnergies, int step, int frames, float spanDb) {
    float loudest = logEnergies[0];
    for (int t = 1; t < frames; ++t) loudest = std::max(loudest, logEnergies[t * step]);
    std::vector<bool> loud;
    for (int t = 0; t < frames; ++t)
        loud.push_back(logEnergies[t * step] >= loudest - static_cast<float>(kNepersPerDb) * spanDb);
    return loud;
}

// Gives each of the first `cols` columns, whose means are 0, the variance 1: what differs from speaker to speaker by a
// factor cancels.
void makeVariancesOne(Matrix& m, int cols) {
    Vector scale(cols);  // first the variance, then 1 / standard deviation
    Vector square(cols);
    for (int t = 0; t < m.rows(); ++t) {
        check(kelsMul_32f(m.row(t), m.row(t), square.data(), cols), "kelsMul_32f");
        check(kelsAdd_32f_I(square.data(), scale.data(), cols), "kelsAdd_32f_I");
    }
    check(kelsMulC_32f_I(1.0F / static_cast<float>(m.rows()), scale.data(), cols), "kelsMulC_32f_I");
    check(kelsSet_32f(kLeastVariance, square.data(), cols), "kelsSet_32f");
    check(kelsMaxEvery_32f_I(square.data(), scale.data(), cols), "kelsMaxEvery_32f_I");
    check(kelsRecSqrt_32f(scale.data(), cols, kLeastVariance), "kelsRecSqrt_32f");
    for (int t = 0; t < m.rows(); ++t) check(kelsMul_32f(scale.data(), m.row(t), m.row(t), cols), "kelsMul_32f");
}

// The rows with their deltas and accelerations appended.  A word of few frames holds its last one for a while.
Matrix withDerivatives(const Matrix& statics) {
    const int width = statics.cols();
    const int rows = std::max(statics.rows(), kDerivativeRows);
    Vector packed(rows * width);
    for (int t = 0; t < rows; ++t) {
        const float* const source = statics.row(std::min(t, statics.rows() - 1));
        check(kelsCopy_32f(source, packed.data() + t * width, width), "kelsCopy_32f");
    }
    Matrix features(rows, 3 * width);
    check(kelsDeltaDelta_Win2_32f_D2(packed.data(), width, features.row(0), features.step(), rows, kDerivativeScale,
                                     kDerivativeScale, kelDeltaBlockFirst | kelDeltaBlockLast),
          "kelsDeltaDelta_Win2_32f_D2");
    return features;
}

}  // namespace

FrontEnd::FrontEnd(int rate, const FrontEndSettings& settings)
    : settings_(settings),
      rate_(rate),
      analysisRate_(settings.denoise ? 8000 : rate),
      frameLength_(static_cast<int>(std::lround(settings.frameSeconds * static_cast<float>(analysisRate_)))),
      frameStep_(static_cast<int>(std::lround(settings.stepSeconds * static_cast<float>(analysisRate_)))),
      speechDetector_(analysisRate_, frameLength_, frameStep_) {
    if (analysisRate_ < kLowestRate || frameLength_ < 16 || frameStep_ < 1)
        throw std::runtime_error("a sample rate of " + std::to_string(rate) + " Hz is too low for speech");
    KelFeatureConfig config;
    // All frequencies are relative to the sample rate: with one so much lower they become so much higher.
    check(kelsFeaturePreset(&config, static_cast<int>(std::lround(static_cast<float>(analysisRate_) / settings.warp)),
                            kelFeatHtkMfcc),
          "kelsFeaturePreset");
    config.frameLen = frameLength_;
    config.frameShift = frameStep_;
    config.fftLen = static_cast<int>(std::bit_ceil(static_cast<unsigned>(frameLength_)));
    config.preEmphasis = settings.preEmphasis;
    config.numFilters = settings.filters;
    config.lowFreq = settings.lowHz;
    config.highFreq = std::min({settings.highHz, settings.highShare * static_cast<float>(analysisRate_) / 2,
                                static_cast<float>(config.sampleRate) / 2});
    config.output = kelFeatBank;
    config.logKind = kelFeatLogNone;
    config.energy = kelFeatEnergy;
    config.energyRaw = 0;
    config.energyFloor = kLeastEnergy;
    config.hint = kelHintFast;
    KelFeatureSpec_32f* spectra = nullptr;
    check(kelsFeatureInitAlloc_32f(&spectra, &config), "kelsFeatureInitAlloc_32f");
    spectra_.reset(spectra);
    KelDCTLifterState_32f* dct = nullptr;
    const float orthonormal = std::sqrt(2.0F / static_cast<float>(settings.filters));
    check(kelsDCTLifterInitAlloc_32f(&dct, settings.filters, settings.cepstra, settings.lifter, orthonormal),
          "kelsDCTLifterInitAlloc_32f");
    dct_.reset(dct);
}

float FrontEnd::centreHz(int filter) const {
    const int bins = static_cast<int>(std::bit_ceil(static_cast<unsigned>(frameLength_))) / 2 + 1;
    Matrix weights(settings_.filters, bins);
    check(kelsFeatureGetBank_32f_D2(weights.row(0), weights.step(), spectra_.get()), "kelsFeatureGetBank_32f_D2");
    Kel32f largest = 0;
    int bin = 0;
    check(kelsMaxIndx_32f(weights.row(filter), bins, &largest, &bin), "kelsMaxIndx_32f");
    return static_cast<float>(bin) * static_cast<float>(analysisRate_) / static_cast<float>(2 * (bins - 1));
}

void FrontEnd::requireFrames(const Recording& recording) const {
    if (recording.rate != rate_)
        throw std::runtime_error("is sampled at " + std::to_string(recording.rate) + " Hz, not at " +
                                 std::to_string(rate_) + " Hz");
    const auto frame = static_cast<int>(std::lround(settings_.frameSeconds * static_cast<float>(rate_)));
    if (recording.samples.size() < frame)
        throw std::runtime_error("is shorter than one frame of " + std::to_string(frame) + " samples");
}

VoiceActivity FrontEnd::detectSpeech(const Recording& recording) const {
    requireFrames(recording);
    return speechDetector_.detect(withoutOffset(recording.samples));
}

Analysis FrontEnd::analyse(const Recording& recording) const {
    requireFrames(recording);
    return wantsDenoised() ? analyse(recording, reduceNoise(recording, settings_.warp)) : analyseSpectra(recording);
}

Analysis FrontEnd::analyse(const Recording& recording, const Denoised& denoised) const {
    requireFrames(recording);
    if (settings_.basis == FrontEndSettings::Basis::aurora) return analyseAurora(denoised);
    return analyseSpectra(settings_.denoise ? denoised.recording : recording);
}

// The energy relative to the loudest frame, as with spectra.
Analysis FrontEnd::analyseAurora(const Denoised& denoised) const {
    constexpr int kCepstra = 12;
    Analysis analysis;
    analysis.features = denoised.features;
    Matrix& rows = analysis.features;
    if (rows.rows() == 0) throw std::runtime_error("is shorter than one frame");
    takeMeansOff(rows, kCepstra, settings_.meanShare,
                 loudFrames(rows.row(0) + kCepstra, rows.step(), rows.rows(), settings_.loudSpanDb));
    check(kelsNormEnergy_32f(rows.row(0) + kCepstra, rows.step(), rows.rows(), settings_.energySpanDb,
                             settings_.energyScale),
          "kelsNormEnergy_32f");
    analysis.wordEnd = rows.rows();
    return analysis;
}

Analysis FrontEnd::analyseSpectra(const Recording& recording) const {
    const Vector signal = withoutOffset(recording.samples);
    FrameSpan word;
    if (settings_.trim == Trim::detector) word = speechDetector_.detect(signal).word;
    Analysis analysis;
    analysis.spectra = spectra(signal);

    const Matrix& rows = analysis.spectra;
    float loudest = rows.row(0)[settings_.filters];
    for (int t = 1; t < rows.rows(); ++t) loudest = std::max(loudest, rows.row(t)[settings_.filters]);
    if (loudest <= std::log(kLeastEnergy)) throw std::runtime_error("holds no sound");
    if (settings_.trim == Trim::energy) {
        const auto loud = loudFrames(rows.row(0) + settings_.filters, rows.step(), rows.rows(), settings_.wordSpanDb);
        word.begin = static_cast<int>(std::find(loud.begin(), loud.end(), true) - loud.begin());
        word.end = static_cast<int>(loud.rend() - std::find(loud.rbegin(), loud.rend(), true));
    }
    if (word.begin == word.end) word = {0, rows.rows()};  // nothing found, or nothing to be cut off
    analysis.wordBegin = word.begin;
    analysis.wordEnd = word.end;
    analysis.features = withDerivatives(statics(rows, word.begin, word.end));
    return analysis;
}

Matrix FrontEnd::spectra(const Vector& signal) const {
    const int filters = settings_.filters;
    int height = 0, width = 0;
    check(kelsFeatureGetSize_32f(spectra_.get(), signal.size(), &height, &width), "kelsFeatureGetSize_32f");
    Matrix result(height, width);
    check(kelsFeature_32f_D2(signal.data(), signal.size(), result.row(0), result.step(), spectra_.get(), nullptr),
          "kelsFeature_32f_D2");
    float largest = 0;
    for (int t = 0; t < height; ++t) largest = std::max(largest, maximum(result.row(t), filters));
    const float span = std::exp(static_cast<float>(kNepersPerDb / 2) * settings_.spectrumSpanDb);
    for (int t = 0; t < height; ++t) {
        float* const row = result.row(t);
        check(kelsMaxEveryC_32f_I(std::max(largest / span, 1.0F), row, filters), "kelsMaxEveryC_32f_I");
        if (settings_.compression != 0) check(kelsMulC_32f_I(1 / largest, row, filters), "kelsMulC_32f_I");
        check(kelsLn_32f_I(row, filters), "kelsLn_32f_I");
        if (settings_.compression == 0) continue;
        check(kelsMulC_32f_I(settings_.compression, row, filters), "kelsMulC_32f_I");
        check(kelsExp_32f_I(row, filters), "kelsExp_32f_I");
        check(kelsMulC_32f_I(kLargestPower, row, filters), "kelsMulC_32f_I");
    }
    return result;
}

Matrix FrontEnd::statics(const Matrix& spectra, int begin, int end) const {
    const int cepstra = settings_.cepstra;
    Matrix result(end - begin, cepstra + 1);
    check(kelsDCTLifter_32f_D2(spectra.row(begin), spectra.step(), result.row(0), result.step(), result.rows(),
                               dct_.get()),
          "kelsDCTLifter_32f_D2");
    for (int t = begin; t < end; ++t) result.row(t - begin)[cepstra] = spectra.row(t)[settings_.filters];
    const auto loud = loudFrames(result.row(0) + cepstra, result.step(), result.rows(), settings_.loudSpanDb);
    takeMeansOff(result, cepstra, settings_.meanShare, loud);
    if (settings_.normaliseVariance) makeVariancesOne(result, cepstra);
    check(kelsNormEnergy_32f(result.row(0) + cepstra, result.step(), result.rows(), settings_.energySpanDb,
                             settings_.energyScale),
          "kelsNormEnergy_32f");
    return result;
}

std::vector<FrontEnd> frontEndsFor(int rate, const std::vector<FrontEndSettings>& settings) {
    std::vector<FrontEnd> result;
    for (const auto& one : settings) result.emplace_back(rate, one);
    return result;
}

Views analyse(const Recording& recording, const std::vector<FrontEnd>& frontEnds) {
    Views views;
    std::map<float, Denoised> denoised;  // by warp
    for (const auto& frontEnd : frontEnds) {
        Analysis analysis;
        if (frontEnd.wantsDenoised()) {
            // The warp makes a difference to the standard features alone.
            const float warp = frontEnd.settings().warp;
            if (!denoised.contains(warp)) denoised.emplace(warp, reduceNoise(recording, warp));
            analysis = frontEnd.analyse(recording, denoised.at(warp));
        } else {
            analysis = frontEnd.analyse(recording);
        }
        views.push_back(std::make_shared<const Matrix>(std::move(analysis.features)));
    }
    return views;
}

}  // namespace words
