// The Aurora front end, joined from the library's blocks: a stream of speech, 10 ms at a time, becomes denoised speech,
// cepstra and decisions between speech and noise.
#ifndef COMMON_AURORA_CHAIN_H
#define COMMON_AURORA_CHAIN_H

#include <kels.h>

#include <array>
#include <memory>
#include <vector>

namespace common {

class AuroraChain {
  public:
    static constexpr int kStatics = 14;        // c1 .. c12, c0, logarithm of the energy
    static constexpr int kShift = 80;          // samples of 10 ms at 8 kHz
    static constexpr int kDenoisedDelay = 4;   // blocks from a sample's to its denoised one's
    static constexpr int kStaticsDelay = 6;    // blocks from a frame's first to the one that brings its statics
    static constexpr int kDecisionDelay = 12;  // the same for its decision

    // Of 8 or 16 kHz.  `warp` moves the mel bands of the cepstra as a vocal tract shorter by this factor would.
    explicit AuroraChain(int rate, float warp = 1);
    AuroraChain(AuroraChain&&) noexcept;
    ~AuroraChain();

    int blockLength() const { return wide_ ? 2 * kShift : kShift; }

    // What a block has brought out; null where it is too early.
    struct Output {
        const float* denoised = nullptr;  // kShift samples at 8 kHz; of 16 kHz the lower half
        const float* statics = nullptr;
        int decision = kelVadPending;
    };
    // Samples in the range of 16-bit integers.
    Output take(const float* samples);
    // The decisions that are owed at the end, one a call; then kelVadPending.
    int flush();
    void restart();

    // Gains of 25 mel bands in the second stage, the last ones.
    const float* gains() const { return secondMel_; }

  private:
    static constexpr int kFrame = 200, kFft = 256, kBins = 65, kMel = 25, kTaps = 17, kBuffer = 4 * kShift;
    static constexpr int kLowBands = 23, kBands = 26, kHigh = 3;

    template <auto... steps>
    struct Free {
        template <class T>
        void operator()(T* p) const {
            (static_cast<void>(steps(p)), ...);
        }
    };
    struct Stage {
        float in[kBuffer], spec[kBins], noise[kBins], denoised[kBins], mean[kBins], gain[kBins];
        int frame;
    };
    template <int n>
    using Line = std::array<std::array<float, n>, 3>;  // of three frames, the oldest first

    void transform(const float* samples, const float* window);
    void hear(Stage& stage);
    void designGains(Stage& stage, int vad, float* mel);
    void filter(Stage& stage, const float* mel, float* out);
    void hearHighBand();
    void firstStage(float* out);
    void cepstra();
    void addHighBands(float* logs, double& energy);

    bool wide_;
    std::unique_ptr<KelFFTSpec_R_32f, Free<kelsFFTFree_R_32f>> fft_;
    std::unique_ptr<KelFilterBank_32f, Free<kelsFBankFree_32f, kelsFree>> lowBank_, melBank_, highBank_;
    std::unique_ptr<KelDCTLifterState_32f, Free<kelsDCTLifterFree_32f, kelsFree>> dct_;
    float hann_[kFrame], hamming_[kFrame];
    std::vector<Kel8u> nest_, factor_, vad_, split_, highState_;

    int block_ = 0, decision_ = kelVadPending;
    Stage first_, second_;
    float out_[kBuffer], high_[kBuffer + 2 * kShift], statics_[kStatics], bias_[12];
    float firstMel_[kMel], secondMel_[kMel], spectrum_[kFft + 2], power_[kFft / 2 + 1];
    float lastIn_, lastOut_;  // of the offset compensation
    Line<kHigh> references_, highBands_;
    Line<kHigh * kHigh> codes_;
};

}  // namespace common

#endif
