#include "front_end.h"

#include <cmath>
#include <map>

#include "signal.h"

namespace words {
namespace {

constexpr float kMelMul = 1127;
constexpr float kMelDiv = 700;
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
      window_(hammingWindow(frameLength_)),
      speechDetector_(analysisRate_, frameLength_, frameStep_) {
    const auto rateHz = static_cast<float>(analysisRate_);
    if (frameLength_ < 16 || frameStep_ < 1 || rateHz < 4 * settings.lowHz)
        throw std::runtime_error("a sample rate of " + std::to_string(rate) + " Hz is too low for speech");
    KelFilterBank_32f* bank = nullptr;
    const float highHz = std::min(settings.highHz, settings.highShare * rateHz / 2);
    check(kelsMelFBankInitAlloc_32f(&bank, &fftOrder_, frameLength_, rateHz, settings.lowHz * settings.warp,
                                    std::min(highHz * settings.warp, rateHz / 2), settings.filters, kMelMul,
                                    kMelDiv * settings.warp, kelFBankWeightMel),
          "kelsMelFBankInitAlloc_32f");
    filterBank_.reset(bank);
    KelFFTSpec_R_32f* fft = nullptr;
    check(kelsFFTInitAlloc_R_32f(&fft, fftOrder_, kelFftNoDiv, kelHintNone), "kelsFFTInitAlloc_R_32f");
    fft_.reset(fft);
    KelDCTLifterState_32f* dct = nullptr;
    const float orthonormal = std::sqrt(2.0F / static_cast<float>(settings.filters));
    check(kelsDCTLifterInitAlloc_32f(&dct, settings.filters, settings.cepstra, settings.lifter, orthonormal),
          "kelsDCTLifterInitAlloc_32f");
    dct_.reset(dct);
}

float FrontEnd::centreHz(int filter) const {
    std::vector<int> centres(static_cast<std::size_t>(settings_.filters) + 2);
    check(kelsFBankGetCenters_32f(filterBank_.get(), centres.data()), "kelsFBankGetCenters_32f");
    const int bin = centres[static_cast<std::size_t>(filter) + 1];
    return static_cast<float>(bin) * static_cast<float>(analysisRate_) / static_cast<float>(1 << fftOrder_);
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
    Vector signal = withoutOffset(recording.samples);
    FrameSpan word;
    if (settings_.trim == Trim::detector) word = speechDetector_.detect(signal).word;
    preEmphasise(signal, settings_.preEmphasis);
    Spectra s = spectra(signal);

    const int frames = s.logMel.rows();
    if (maximum(s.logEnergies.data(), frames) <= std::log(kLeastEnergy)) throw std::runtime_error("holds no sound");
    if (settings_.trim == Trim::energy) word = wordByEnergy(s.logEnergies);
    if (word.begin == word.end) word = {0, frames};  // nothing found, or nothing to be cut off
    Analysis analysis;
    analysis.wordBegin = word.begin;
    analysis.wordEnd = word.end;
    analysis.features = withDerivatives(statics(s, word.begin, word.end));
    analysis.logMel = std::move(s.logMel);
    return analysis;
}

FrameSpan FrontEnd::wordByEnergy(const Vector& logEnergies) const {
    const float loudest = maximum(logEnergies.data(), logEnergies.size());
    const float quietest = loudest - static_cast<float>(kNepersPerDb) * settings_.wordSpanDb;
    FrameSpan word{0, logEnergies.size()};
    while (logEnergies[word.begin] < quietest) ++word.begin;
    while (logEnergies[word.end - 1] < quietest) --word.end;
    return word;
}

FrontEnd::Spectra FrontEnd::spectra(const Vector& signal) const {
    const int frames = 1 + (signal.size() - frameLength_) / frameStep_;
    const int fftLength = 1 << fftOrder_;
    const int bins = fftLength / 2 + 1;
    const int filters = settings_.filters;
    Vector frame(frameLength_);
    Vector padded(fftLength);
    Vector spectrum(2 * bins);
    Vector magnitude(bins);
    int bufferBytes = 0;
    check(kelsFFTGetBufSize_R_32f(fft_.get(), &bufferBytes), "kelsFFTGetBufSize_R_32f");
    Vector fftBuffer(bufferBytes / 4 + 4);  // the size stated and 15 bytes for alignment

    Spectra result{Matrix(frames, filters), Vector(frames)};
    float largest = 0;
    for (int t = 0; t < frames; ++t) {
        check(kelsMul_32f(signal.data() + t * frameStep_, window_.data(), frame.data(), frameLength_), "kelsMul_32f");
        Kel64f energy = 0;
        check(kelsDotProd_32f64f(frame.data(), frame.data(), frameLength_, &energy), "kelsDotProd_32f64f");
        result.logEnergies[t] = static_cast<float>(std::log(std::max(energy, kLeastEnergy)));

        check(kelsCopyWithPadding_32f(frame.data(), frameLength_, padded.data(), fftLength), "kelsCopyWithPadding_32f");
        check(kelsFFTFwd_RToCCS_32f(padded.data(), spectrum.data(), fft_.get(),
                                    reinterpret_cast<Kel8u*>(fftBuffer.data())),
              "kelsFFTFwd_RToCCS_32f");
        check(kelsMagnitude_32fc(reinterpret_cast<const Kel32fc*>(spectrum.data()), magnitude.data(), bins),
              "kelsMagnitude_32fc");
        check(kelsEvalFBank_32f(magnitude.data(), result.logMel.row(t), filterBank_.get()), "kelsEvalFBank_32f");
        largest = std::max(largest, maximum(result.logMel.row(t), filters));
    }

    const float span = std::exp(static_cast<float>(kNepersPerDb / 2) * settings_.spectrumSpanDb);
    Vector floor(filters);
    check(kelsSet_32f(std::max(largest / span, 1.0F), floor.data(), filters), "kelsSet_32f");
    for (int t = 0; t < frames; ++t) {
        float* const row = result.logMel.row(t);
        check(kelsMaxEvery_32f_I(floor.data(), row, filters), "kelsMaxEvery_32f_I");
        if (settings_.compression == 0) {
            for (int i = 0; i < filters; ++i) row[i] = std::log(row[i]);
        } else {
            check(kelsMulC_32f_I(1 / largest, row, filters), "kelsMulC_32f_I");
            for (int i = 0; i < filters; ++i) row[i] = kLargestPower * std::pow(row[i], settings_.compression);
        }
    }
    return result;
}

Matrix FrontEnd::statics(const Spectra& spectra, int begin, int end) const {
    const int cepstra = settings_.cepstra;
    Matrix result(end - begin, cepstra + 1);
    for (int t = begin; t < end; ++t) {
        float* const row = result.row(t - begin);
        check(kelsDCTLifter_32f(spectra.logMel.row(t), row, dct_.get()), "kelsDCTLifter_32f");
        row[cepstra] = spectra.logEnergies[t];
    }
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
