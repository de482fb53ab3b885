#include "voice_activity.h"

#include <array>
#include <cstring>
#include <numeric>

#include "signal.h"

namespace words {
namespace {

constexpr int kMel = 25;   // what the detector takes of a frame: filter outputs ...
constexpr int kSpec = 64;  // ... and the spectrum in so many parts
constexpr float kLowestHz = 64;
constexpr float kMelMul = 1127;
constexpr float kMelDiv = 700;
constexpr int kLag = 6;           // frames by which decisions come late
constexpr int kFirstFrames = 20;  // heard before the recording; the first ten of them get no decision
constexpr int kQuietShare = 10;   // one frame of so many counts as quiet
constexpr int kLeastQuiet = 5;
constexpr int kSoundFrames = 3;  // active frames in a row that make a sound

// The quietest frames of a recording in the order of time.
std::vector<int> quietest(const Vector& energies) {
    const int frames = energies.size();
    std::vector<int> quiet(static_cast<std::size_t>(frames));
    std::iota(quiet.begin(), quiet.end(), 0);
    const int count = std::min(frames, std::max(kLeastQuiet, frames / kQuietShare));
    std::partial_sort(quiet.begin(), quiet.begin() + count, quiet.end(),
                      [&](int a, int b) { return energies[a] < energies[b]; });
    quiet.resize(static_cast<std::size_t>(count));
    std::sort(quiet.begin(), quiet.end());
    return quiet;
}

// Runs of at least `shortest` frames.
std::vector<FrameSpan> runs(const std::vector<bool>& frames, int shortest) {
    std::vector<FrameSpan> spans;
    const auto end = frames.end();
    for (auto from = std::find(frames.begin(), end, true); from != end;) {
        const auto to = std::find(from, end, false);
        if (to - from >= shortest)
            spans.push_back({static_cast<int>(from - frames.begin()), static_cast<int>(to - frames.begin())});
        from = std::find(to, end, true);
    }
    return spans;
}

// The state of the detector for one recording.
class Stream {
  public:
    Stream() {
        int size = 0;
        check(kelsVADGetBufSize_Aurora_32f(&size), "kelsVADGetBufSize_Aurora_32f");
        state_.resize(static_cast<std::size_t>(size));
        check(kelsVADInit_Aurora_32f(state_.data()), "kelsVADInit_Aurora_32f");
    }
    bool hear(const float* mel, const float* spec) {
        int decision = kelVadPending;
        check(kelsVADDecision_Aurora_32f(mel, spec, 0, &decision, state_.data()), "kelsVADDecision_Aurora_32f");
        return decision == kelVadSpeech;
    }
    bool flush() {
        int decision = kelVadPending;
        check(kelsVADFlush_Aurora_32f(&decision, state_.data()), "kelsVADFlush_Aurora_32f");
        return decision == kelVadSpeech;
    }
    // What the three detectors said about the last frame.
    bool active() const {
        KelVADState_Aurora state;
        std::memcpy(&state, state_.data(), sizeof(state));
        return state.melFlag != 0 || state.specFlag != 0 || state.varFlag != 0;
    }

  private:
    std::vector<Kel8u> state_;
};

}  // namespace

SpeechDetector::SpeechDetector(int rate, int frameLength, int frameStep)
    : frameLength_(frameLength), frameStep_(frameStep), window_(hammingWindow(frameLength)) {
    const auto rateHz = static_cast<float>(rate);
    KelFilterBank_32f* bank = nullptr;
    check(kelsMelFBankInitAlloc_32f(&bank, &fftOrder_, std::max(frameLength, 2 * kSpec), rateHz, kLowestHz, rateHz / 2,
                                    kMel, kMelMul, kMelDiv, kelFBankWeightMel),
          "kelsMelFBankInitAlloc_32f");
    filterBank_.reset(bank);
    KelFFTSpec_R_32f* fft = nullptr;
    check(kelsFFTInitAlloc_R_32f(&fft, fftOrder_, kelFftNoDiv, kelHintNone), "kelsFFTInitAlloc_R_32f");
    fft_.reset(fft);
}

VoiceActivity SpeechDetector::detect(const Vector& signal) const {
    const int frames = 1 + (signal.size() - frameLength_) / frameStep_;
    const int fftLength = 1 << fftOrder_;
    const int share = fftLength / 2 / kSpec;
    Vector spectrum(fftLength + 2);
    Vector energies(frames);
    Matrix mel(frames, kMel);
    Matrix spec(frames, kSpec);
    for (int t = 0; t < frames; ++t) {
        check(kelsZero_32f(spectrum.data(), fftLength), "kelsZero_32f");
        check(kelsMul_32f(signal.data() + t * frameStep_, window_.data(), spectrum.data(), frameLength_),
              "kelsMul_32f");
        check(kelsFFTFwd_RToCCS_32f(spectrum.data(), spectrum.data(), fft_.get(), nullptr), "kelsFFTFwd_RToCCS_32f");
        check(kelsMagnitude_32fc(reinterpret_cast<const Kel32fc*>(spectrum.data()), spectrum.data(), fftLength / 2 + 1),
              "kelsMagnitude_32fc");
        check(kelsEvalFBank_32f(spectrum.data(), mel.row(t), filterBank_.get()), "kelsEvalFBank_32f");
        for (int i = 0; i < kSpec; ++i)
            check(kelsSum_32f(spectrum.data() + i * share, share, &spec.row(t)[i], kelHintFast), "kelsSum_32f");
        check(kelsSum_32f(mel.row(t), kMel, &energies[t], kelHintFast), "kelsSum_32f");
    }

    Stream stream;
    const std::vector<int> quiet = quietest(energies);
    for (std::size_t i = 0; i < kFirstFrames; ++i) {
        const int t = quiet[i % quiet.size()];
        stream.hear(mel.row(t), spec.row(t));
    }
    VoiceActivity result;
    std::vector<bool> speech;  // decisions, each about the frame kLag earlier
    for (int t = 0; t < frames; ++t) {
        speech.push_back(stream.hear(mel.row(t), spec.row(t)));
        result.active.push_back(stream.active());
    }
    for (int i = 0; i < kLag; ++i) speech.push_back(stream.flush());
    speech.erase(speech.begin(), speech.begin() + kLag);
    result.regions = runs(speech, 1);
    const auto sounds = runs(result.active, kSoundFrames);
    if (!sounds.empty()) result.word = {sounds.front().begin, sounds.back().end};
    return result;
}

}  // namespace words
