// One block after the other, as the standard numbers them; times are counted in blocks of 80 samples at 8 kHz.
#include "aurora_chain.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

#include "common/check.h"

namespace common {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr float kOffsetPole = 0.9990234375F, kPreEmphasis = 0.9F, kLeastPower = 4.539993e-5F;

void append(float* buffer, int length, const float* block, int count) {
    std::copy(buffer + count, buffer + length, buffer);
    std::copy_n(block, count, buffer + length - count);
}

template <class Line>
void push(Line& line, const typename Line::value_type& entry) {
    line = {line[1], line[2], entry};
}

std::vector<Kel8u> stateOf(KelStatus (*getSize)(int*)) {
    int bytes = 0;
    check(getSize(&bytes));
    return std::vector<Kel8u>(static_cast<std::size_t>(bytes));
}

}  // namespace

AuroraChain::AuroraChain(int rate, float warp)
    : wide_(rate == 16000),
      nest_(stateOf(kelsVADNestGetBufSize_Aurora_32f)),
      factor_(stateOf(kelsGainFactorizationGetBufSize_Aurora_32f)),
      vad_(stateOf(kelsVADGetBufSize_Aurora_32f)),
      split_(stateOf(kelsLowHighFilterGetBufSize_Aurora_32f)),
      highState_(stateOf(kelsHighBandGetBufSize_Aurora_32f)) {
    if (rate != 8000 && rate != 16000) throw std::runtime_error("the front end takes 8 or 16 kHz");
    KelFFTSpec_R_32f* fft = nullptr;
    check(kelsFFTInitAlloc_R_32f(&fft, 8, kelFftNoDiv, kelHintNone));
    fft_.reset(fft);
    KelFilterBank_32f* bank = nullptr;
    check(kelsMelFBankInitAllocLow_Aurora_32f(&bank));
    lowBank_.reset(bank);
    check(kelsMelFBankInitAllocHigh_Aurora_32f(&bank));
    highBank_.reset(bank);
    int order = 0;
    check(kelsMelFBankInitAlloc_32f(&bank, &order, kFft, 8000, 64 * warp, std::min(4000 * warp, 4000.0F), kLowBands,
                                    1127, 700 * warp, kelFBankWeightBin));
    melBank_.reset(bank);
    KelDCTLifterState_32f* dct = nullptr;
    const std::vector<float> ones(12, 1);
    check(kelsDCTLifterInitAlloc_MulC0_32f(&dct, wide_ ? kBands : kLowBands, ones.data(), 12));
    dct_.reset(dct);
    for (int n = 0; n < kFrame; ++n) {
        const double wave = std::cos(2 * kPi * (n + 0.5) / kFrame);
        hann_[n] = static_cast<float>(0.5 - 0.5 * wave);
        hamming_[n] = static_cast<float>(0.54 - 0.46 * wave);
    }
    restart();
}

AuroraChain::AuroraChain(AuroraChain&&) noexcept = default;
AuroraChain::~AuroraChain() = default;

void AuroraChain::restart() {
    check(kelsVADNestInit_Aurora_32f(nest_.data()));
    check(kelsGainFactorizationInit_Aurora_32f(factor_.data()));
    check(kelsVADInit_Aurora_32f(vad_.data()));
    check(kelsLowHighFilterInit_Aurora_32f(split_.data()));
    check(kelsHighBandInit_Aurora_32f(highState_.data()));
    block_ = 0;
    first_ = second_ = {};
    std::fill(std::begin(out_), std::end(out_), 0.0F);
    std::fill(std::begin(high_), std::end(high_), 0.0F);
    std::fill(std::begin(bias_), std::end(bias_), 0.0F);
    std::fill(std::begin(secondMel_), std::end(secondMel_), 1.0F);
    lastIn_ = lastOut_ = 0;
    references_ = highBands_ = {};
    codes_ = {};
}

AuroraChain::Output AuroraChain::take(const float* samples) {
    float low[kShift], high[kShift], between[kShift], clean[kShift];
    ++block_;
    if (wide_) {
        check(kelsLowHighFilter_Aurora_32f(samples, low, high, 2 * kShift, split_.data()));
        append(high_, kBuffer + 2 * kShift, high, kShift);
    }
    append(first_.in, kBuffer, wide_ ? low : samples, kShift);
    Output output;
    if (block_ < 3) return output;
    firstStage(between);
    output.decision = decision_;
    append(second_.in, kBuffer, between, kShift);
    if (block_ < 5) return output;

    hear(second_);
    designGains(second_, kelVadPending, secondMel_);
    check(kelsGainFactorization_Aurora_32f(second_.noise, kBins, secondMel_, secondMel_, kMel, factor_.data()));
    filter(second_, secondMel_, clean);
    if (wide_) hearHighBand();
    check(kelsCompensateOffset_32f(clean, between, kShift, &lastIn_, lastOut_, kOffsetPole));
    lastOut_ = between[kShift - 1];
    // A sample that is not a number must not stay in the recursion.
    if (std::isnan(lastIn_)) lastIn_ = 0;
    if (std::isnan(lastOut_)) lastOut_ = 0;
    append(out_, kBuffer, between, kShift);
    output.denoised = out_ + kBuffer - kShift;
    if (block_ < 7) return output;
    cepstra();
    output.statics = statics_;
    return output;
}

int AuroraChain::flush() {
    int decision = kelVadPending;
    check(kelsVADFlush_Aurora_32f(&decision, vad_.data()));
    return decision;
}

void AuroraChain::transform(const float* samples, const float* window) {
    check(kelsMul_32f(samples, window, spectrum_, kFrame));
    std::fill(spectrum_ + kFrame, spectrum_ + kFft, 0.0F);
    check(kelsFFTFwd_RToCCS_32f(spectrum_, spectrum_, fft_.get(), nullptr));
}

void AuroraChain::hear(Stage& stage) {
    transform(stage.in + 60, hann_);
    check(kelsSmoothedPowerSpectrumAurora_32f(spectrum_, stage.spec, stage.mean, kBins));
}

void AuroraChain::designGains(Stage& stage, int vad, float* mel) {
    check(kelsNoiseSpectrumUpdate_Aurora_32f(stage.mean, stage.noise, kBins, ++stage.frame, vad));
    check(kelsWienerFilterDesign_Aurora_32f(stage.spec, stage.mean, stage.noise, stage.denoised, stage.gain, kBins));
    check(kelsEvalFBank_32f(stage.gain, mel, lowBank_.get()));
}

void AuroraChain::filter(Stage& stage, const float* mel, float* out) {
    float taps[kTaps];
    check(kelsTabsCalculation_Aurora_32f(mel, taps));
    check(kelsResidualFilter_Aurora_32f(stage.in + kShift - kTaps / 2, taps, out, kShift));
}

void AuroraChain::firstStage(float* out) {
    int vad = 0, count = 0;
    hear(first_);
    check(kelsVADNestDecision_Aurora_32f(first_.in + kShift, kShift, &vad, &count, nest_.data()));
    designGains(first_, vad, firstMel_);
    check(kelsGainFactorizationUpdate_Aurora_32f(first_.denoised, kBins, factor_.data()));
    check(kelsVADDecision_Aurora_32f(firstMel_, first_.gain, count, &decision_, vad_.data()));
    filter(first_, firstMel_, out);
    if (!wide_) return;
    std::array<float, kHigh> reference;
    check(kelsHighBandCodingRef_Aurora_32f(first_.spec, reference.data()));
    push(references_, reference);
}

void AuroraChain::hearHighBand() {
    constexpr float kAreas[kHigh] = {13.5F, 15.5F, 18.5F};  // of the filters: their means become energies
    transform(high_ + kShift, hann_);
    check(kelsPowerSpectrum_Aurora_32f(spectrum_, power_, kBins));
    std::array<float, kHigh> energies;
    check(kelsEvalFBank_32f(power_, energies.data(), highBank_.get()));
    check(kelsMul_32f(energies.data(), kAreas, energies.data(), kHigh));
    std::array<float, kHigh * kHigh> codes;
    check(kelsHighBandCoding_Aurora_32f(references_[0].data(), energies.data(), codes.data()));
    push(codes_, codes);
    check(kelsHighBandSpectralSubtraction_Aurora_32f(energies.data(), energies.data(), highState_.data()));
    push(highBands_, energies);
}

void AuroraChain::cepstra() {
    float weighted[kFrame + 1], logs[kBands];
    weighted[0] = out_[kShift - 1];
    check(kelsWaveProcessing_Aurora_32f(out_ + kShift, weighted + 1, kFrame));
    double energy = 0;
    check(kelsDotProd_32f64f(weighted + 1, weighted + 1, kFrame, &energy));
    float emphasised[kFrame];
    for (int n = 0; n < kFrame; ++n) emphasised[n] = weighted[n + 1] - kPreEmphasis * weighted[n];
    transform(emphasised, hamming_);
    for (int b = 0; b <= kFft / 2; ++b) {
        power_[b] = spectrum_[2 * b] * spectrum_[2 * b] + spectrum_[2 * b + 1] * spectrum_[2 * b + 1];
    }
    check(kelsEvalFBank_32f(power_, logs, melBank_.get()));
    for (int k = 0; k < kLowBands; ++k) logs[k] = logs[k] > kLeastPower ? std::log(logs[k]) : -10;
    if (wide_) addHighBands(logs, energy);
    check(kelsDCTLifter_32f(logs, statics_, dct_.get()));
    const float logEnergy = energy > std::exp(-50.0) ? static_cast<float>(std::log(energy)) : -50;
    statics_[kStatics - 1] = logEnergy;
    check(kelsBlindEqualization_Aurora_32f(statics_, statics_, logEnergy, bias_));
}

void AuroraChain::addHighBands(float* logs, double& energy) {
    float coded[kHigh], added = 0;
    check(kelsHighBandDecodingRef_Aurora_32f(power_, coded));
    check(kelsHighBandDecoding_Aurora_32f(coded, codes_[0].data(), coded));
    check(kelsHighBandMerge_Aurora_32f(coded, highBands_[0].data(), logs, &added));
    energy += added;
}

}  // namespace common
