// Presets and checks of a configuration.
#include "frontend/features/config.h"

#include <bit>
#include <cmath>

#include "frontend/window.h"

namespace kels::features {
namespace {

constexpr int kLeastRate = 1000, kLargestRate = 384000;
constexpr int kLongestFrame = 65536, kMostFilters = 1024, kWidestDelta = 64;

bool within(double value, double low, double high) {  // false for NaN
    return low <= value && value <= high;
}

bool isPositive(double value) {
    return value > 0 && std::isfinite(value);
}

// ---- faults --------------------------------------------------------------------------------------------------------

bool sizesAreGood(const KelFeatureConfig& c) {
    if (!isSampleRate(c.sampleRate)) return false;
    if (!within(c.frameLen, 1, kLongestFrame) || c.frameShift < 1) return false;
    if (!within(c.fftLen, 2, kLongestFrame) || c.fftLen % 2 != 0 || c.fftLen < c.frameLen) return false;
    if (hasBank(c) && !within(c.numFilters, 1, kMostFilters)) return false;
    if (c.output == kelFeatCepstra) {
        if (!within(c.numCeps, 0, c.numFilters - 1) || c.lifter < 0) return false;
        if (c.numCeps == 0 && (c.energy & (kelFeatC0 | kelFeatEnergy)) == 0) return false;
    }
    return within(c.deltaOrder, 0, 2) && (c.deltaOrder == 0 || within(c.deltaWin, 1, kWidestDelta));
}

bool frequenciesAreGood(const KelFeatureConfig& c) {
    if (!hasBank(c)) return true;
    const double high = highLimit(c);
    return 0 <= c.lowFreq && c.lowFreq < high && high <= c.sampleRate / 2.0;
}

bool spectrumIsGood(const KelFeatureConfig& c) {
    if (!within(c.edges & ~kelFeatDropLast, kelFeatSnip, kelFeatCentreReflect)) return false;
    if (!isWindow(c.window, c.windowParam)) return false;
    return within(c.removeMean, 0, 1) && within(c.preEmphasis, -1, 1) && std::isfinite(c.scale16s) && c.scale16s != 0 &&
           within(c.spectrum, kelFeatMagnitude, kelFeatPower);
}

bool bankIsGood(const KelFeatureConfig& c) {
    if (!hasBank(c)) return true;
    return within(c.melScale, kelFeatScaleMel, kelFeatScaleSlaney) &&
           within(c.triangles, kelFeatTriangleMel, kelFeatTriangleHz) &&
           within(c.bankNorm, kelFeatBankPeak, kelFeatBankArea);
}

bool logarithmIsGood(const KelFeatureConfig& c) {
    if (!within(c.logKind, kelFeatLogNone, kelFeatDecibel)) return false;
    if (!hasLogarithm(c)) return true;
    return isPositive(c.logFloor) && c.logRange >= 0 && std::isfinite(c.logRange) && std::isfinite(c.logOffset) &&
           std::isfinite(c.logScale);
}

bool rowIsGood(const KelFeatureConfig& c) {
    if (!within(c.output, kelFeatSpectrum, kelFeatCepstra)) return false;
    if (c.output == kelFeatCepstra && !within(c.dctScale, kelFeatDctPlain, kelFeatDctOrtho)) return false;
    const int flagsOfOutput = c.output == kelFeatCepstra ? kelFeatC0 | kelFeatEnergy
                              : c.output == kelFeatBank  ? kelFeatEnergy
                                                         : 0;
    if ((c.energy & ~flagsOfOutput) != 0) return false;
    if (c.energy != 0 && !within(c.energyPlace, kelFeatFirst, kelFeatLast)) return false;
    if ((c.energy & kelFeatEnergy) != 0 && !(within(c.energyRaw, 0, 1) && isPositive(c.energyFloor))) return false;
    if (c.deltaOrder > 0 && !within(c.deltaEdge, kelFeatDeltaOfDelta, kelFeatDeltaOfStatic)) return false;
    return within(c.norm, kelFeatNormNone, kelFeatNormMeanVar) && c.reserved == 0;
}

// ---- presets -------------------------------------------------------------------------------------------------------

// What all presets share: frames of 25 ms every 10 ms, and fields that none of them uses.
KelFeatureConfig commonConfig(int sampleRate) {
    KelFeatureConfig c = {};
    c.sampleRate = sampleRate;
    c.frameLen = static_cast<Kel32s>(int64_t{25} * sampleRate / 1000);
    c.frameShift = sampleRate / 100;
    c.fftLen = static_cast<Kel32s>(std::bit_ceil(static_cast<uint32_t>(c.frameLen)));
    c.energyRaw = 1;
    c.deltaWin = 2;
    c.scale16s = 1;
    c.logScale = 1;
    c.energyFloor = 0x1p-23;
    return c;
}

void setHtk(KelFeatureConfig& c) {
    c.window = kelWinHamming;
    c.preEmphasis = 0.97;
    c.numFilters = 26;
    c.logKind = kelFeatLn;
    c.logFloor = 1;
    c.output = kelFeatCepstra;
    c.numCeps = 12;
    c.lifter = 22;
    c.energy = kelFeatC0;
    c.energyPlace = kelFeatLast;
}

void setKaldiBank(KelFeatureConfig& c) {
    c.window = kelWinPovey;
    c.removeMean = 1;
    c.preEmphasis = 0.97;
    c.spectrum = kelFeatPower;
    c.numFilters = 80;
    c.lowFreq = 20;
    c.logKind = kelFeatLn;
    c.logFloor = 0x1p-23;
    c.output = kelFeatBank;
    c.deltaEdge = kelFeatDeltaOfStatic;
}

void setKaldiCepstra(KelFeatureConfig& c) {
    setKaldiBank(c);
    c.numFilters = 23;
    c.output = kelFeatCepstra;
    c.numCeps = 12;
    c.dctScale = kelFeatDctOrtho;
    c.lifter = 22;
    c.energy = kelFeatEnergy;
}

void setSlaneyBank(KelFeatureConfig& c) {
    c.window = kelWinHann + kelWinPeriodic;
    c.spectrum = kelFeatPower;
    c.melScale = kelFeatScaleSlaney;
    c.triangles = kelFeatTriangleHz;
    c.bankNorm = kelFeatBankArea;
    c.scale16s = 0x1p-15;
    c.logFloor = 1e-10;
}

void setLibrosa(KelFeatureConfig& c) {
    setSlaneyBank(c);
    c.frameLen = c.fftLen = 2048;
    c.frameShift = 512;
    c.edges = kelFeatCentreZero;
    c.numFilters = 128;
    c.logKind = kelFeatDecibel;
    c.logRange = 80;
    c.output = kelFeatCepstra;
    c.numCeps = 19;
    c.dctScale = kelFeatDctOrtho;
    c.energy = kelFeatC0;
}

void setWhisper(KelFeatureConfig& c) {
    setSlaneyBank(c);
    c.fftLen = c.frameLen + c.frameLen % 2;
    c.edges = kelFeatCentreReflect + kelFeatDropLast;
    c.numFilters = 80;
    c.logKind = kelFeatLog10;
    c.logRange = 8;
    c.logOffset = 4;
    c.logScale = 0.25;
    c.output = kelFeatBank;
}

}  // namespace

bool isSampleRate(int rate) {
    return rate >= kLeastRate && rate <= kLargestRate;
}

bool fillPreset(KelFeatureConfig& config, int sampleRate, int preset) {
    constexpr void (*kSetters[])(KelFeatureConfig&) = {setHtk, setKaldiCepstra, setKaldiBank, setLibrosa, setWhisper};
    if (preset < kelFeatHtkMfcc || preset > kelFeatWhisperMel) return false;
    config = commonConfig(sampleRate);
    kSetters[preset - kelFeatHtkMfcc](config);
    return true;
}

KelStatus configFault(const KelFeatureConfig& c) {
    if (!sizesAreGood(c)) return kelStatusSize;
    if (!frequenciesAreGood(c)) return kelStatusFBankFreq;
    const bool good = spectrumIsGood(c) && bankIsGood(c) && logarithmIsGood(c) && rowIsGood(c);
    return good ? kelStatusOk : kelStatusBadArg;
}

double highLimit(const KelFeatureConfig& c) {
    return c.highFreq <= 0 ? c.sampleRate / 2.0 + c.highFreq : c.highFreq;
}

}  // namespace kels::features
