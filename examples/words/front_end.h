// From samples to feature vectors: mel-frequency cepstra and the frame's energy, with first and second derivatives.
#ifndef WORDS_FRONT_END_H
#define WORDS_FRONT_END_H

#include <memory>
#include <vector>

#include "audio.h"
#include "kels_objects.h"
#include "noise_reduction.h"
#include "voice_activity.h"

namespace words {

// How the beginning and the end of the word are found.
enum class Trim { energy, detector, none };

// What decides the features besides the sample rate.
struct FrontEndSettings {
    // What the features are made of: spectra, or the standard features of the Aurora front end.
    enum class Basis { spectra, aurora } basis = Basis::spectra;
    bool denoise = false;  // spectra of the waveform that the Aurora front end has cleaned
    float frameSeconds = 0.025F;
    float stepSeconds = 0.010F;
    float preEmphasis = 0.97F;
    float lowHz = 100;
    float highHz = 8000;
    float highShare = 1;  // of half the sample rate, where that is lower than highHz
    // All frequencies of the filter bank, edges included, are this much higher: a vocal tract so much shorter.
    float warp = 1;
    int filters = 24;
    int cepstra = 14;
    int lifter = 22;
    Trim trim = Trim::energy;
    // By energy: frames before the first and after the last that reach this level below the loudest frame are not part
    // of the word.
    float wordSpanDb = 30;
    // Filter outputs further than this below the largest of the recording count as background.
    float spectrumSpanDb = 70;
    // 0: logarithms of filter outputs.  Otherwise a power of them, relative to the largest of the recording, so that
    // what noise does to the quiet parts counts little.
    float compression = 0;
    // How much of each cepstrum's mean over the word is taken off, and whether its variance is made 1.
    float meanShare = 1;
    // Frames further below the loudest one do not count for the mean.
    float loudSpanDb = 1000;
    bool normaliseVariance = true;
    float energySpanDb = 50;
    // What a change of energy by a factor e weighs beside cepstra of unit variance.
    float energyScale = 0.5F;
};

// The stages that are worth a look.
struct Analysis {
    Matrix spectra;     // a row a frame: natural logarithm (or the power) of the filter outputs, then of the energy
    int wordBegin = 0;  // the frames that belong to the word: wordBegin .. wordEnd - 1
    int wordEnd = 0;
    Matrix features;  // a row a frame of the word: cepstra c1..cM and energy, their deltas, their accelerations
};

// The features of one recording from several front ends, in their order.
using Views = std::vector<std::shared_ptr<const Matrix>>;

// Computes the features of recordings of one sample rate.  One front end may serve several threads at once.
class FrontEnd {
  public:
    // Throws std::runtime_error if the settings do not make sense at this rate.
    explicit FrontEnd(int rate, const FrontEndSettings& settings = {});

    // Throws std::runtime_error when the recording has another rate, is shorter than a frame or holds no sound.
    Analysis analyse(const Recording& recording) const;
    // The same of a recording that the Aurora front end has heard with the warp of the settings.
    Analysis analyse(const Recording& recording, const Denoised& denoised) const;
    bool wantsDenoised() const { return settings_.denoise || settings_.basis == FrontEndSettings::Basis::aurora; }
    // Throws likewise.
    VoiceActivity detectSpeech(const Recording& recording) const;

    int rate() const { return rate_; }
    const FrontEndSettings& settings() const { return settings_; }
    int featureCount() const {
        return settings_.basis == FrontEndSettings::Basis::aurora ? 39 : 3 * (settings_.cepstra + 1);
    }
    // The frequency at which filter 0..filters-1 peaks, in Hz.
    float centreHz(int filter) const;

  private:
    void requireFrames(const Recording& recording) const;
    Analysis analyseSpectra(const Recording& recording) const;
    Analysis analyseAurora(const Denoised& denoised) const;
    Matrix spectra(const Vector& signal) const;
    Matrix statics(const Matrix& spectra, int begin, int end) const;

    FrontEndSettings settings_;
    int rate_;
    int analysisRate_;
    int frameLength_;
    int frameStep_;
    FeatureSpec spectra_;
    DctLifter dct_;
    SpeechDetector speechDetector_;
};

// A front end for each of the settings.
std::vector<FrontEnd> frontEndsFor(int rate, const std::vector<FrontEndSettings>& settings);
// Throws what the front ends throw.
Views analyse(const Recording& recording, const std::vector<FrontEnd>& frontEnds);

}  // namespace words

#endif
