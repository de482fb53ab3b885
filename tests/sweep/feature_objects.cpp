// Configurations, specifications and streams of features: small ones, of every choice.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <string>
#include <utility>

#include "sweep/making.h"

namespace sweep {
namespace {

KelFeatureConfig featureConfig(Dice& dice) {
    const auto draw = [&dice](int low, int high) { return static_cast<Kel32s>(dice.between(low, high)); };
    KelFeatureConfig c;
    MAKE(kelsFeaturePreset(&c, 8000, draw(kelFeatHtkMfcc, kelFeatWhisperMel)));
    const bool drops = dice.oneIn(3), periodic = dice.oneIn(2), ranged = dice.oneIn(4);
    c.frameLen = draw(1, 40);
    c.frameShift = draw(1, dice.oneIn(4) ? 1 : 30);
    c.fftLen = dice.oneIn(2) ? 64 : 2 * draw(std::max((c.frameLen + 1) / 2, 1), 40);
    c.edges = draw(kelFeatSnip, kelFeatCentreReflect) + (drops ? kelFeatDropLast : 0);
    c.window = draw(kelWinRect, kelWinKaiser) + (periodic ? kelWinPeriodic : 0);
    c.windowParam = 5;
    c.removeMean = draw(0, 1);
    c.spectrum = draw(kelFeatMagnitude, kelFeatPower);
    c.numFilters = draw(1, 12);
    c.logKind = draw(kelFeatLogNone, kelFeatDecibel);
    c.logRange = ranged ? 8 : 0;
    c.output = draw(kelFeatSpectrum, kelFeatCepstra);
    c.numCeps = draw(0, c.numFilters - 1);
    c.energy = c.output == kelFeatCepstra ? draw(c.numCeps == 0, 3) : c.output == kelFeatBank ? 2 * draw(0, 1) : 0;
    c.energyPlace = draw(kelFeatFirst, kelFeatLast);
    c.energyRaw = draw(0, 1);
    c.deltaOrder = draw(0, 2);
    c.deltaWin = draw(1, 3);
    c.deltaEdge = draw(kelFeatDeltaOfDelta, kelFeatDeltaOfStatic);
    c.norm = dice.oneIn(2) ? kelFeatNormNone : draw(kelFeatNormMean, kelFeatNormMeanVar);
    c.hint = draw(kelHintNone, kelHintFast);
    return c;
}

#define FIELD(name) \
    { #name, &KelFeatureConfig::name }
constexpr std::pair<const char*, Kel32s KelFeatureConfig::*> kIntegers[] = {
    FIELD(sampleRate),  FIELD(frameLen),  FIELD(frameShift), FIELD(fftLen),    FIELD(edges),     FIELD(window),
    FIELD(removeMean),  FIELD(spectrum),  FIELD(melScale),   FIELD(triangles), FIELD(bankNorm),  FIELD(numFilters),
    FIELD(logKind),     FIELD(output),    FIELD(numCeps),    FIELD(dctScale),  FIELD(lifter),    FIELD(energy),
    FIELD(energyPlace), FIELD(energyRaw), FIELD(deltaOrder), FIELD(deltaWin),  FIELD(deltaEdge), FIELD(norm),
    FIELD(hint),        FIELD(reserved)};
constexpr std::pair<const char*, Kel64f KelFeatureConfig::*> kReals[] = {
    FIELD(windowParam), FIELD(preEmphasis), FIELD(scale16s),  FIELD(lowFreq),  FIELD(highFreq),
    FIELD(logFloor),    FIELD(logRange),    FIELD(logOffset), FIELD(logScale), FIELD(energyFloor)};
#undef FIELD

// Values at and beyond the ends of what fields take, and far from it.
void setAnyField(Dice& dice, KelFeatureConfig& config) {
    constexpr Kel32s kLeast = std::numeric_limits<Kel32s>::min(), kMost = std::numeric_limits<Kel32s>::max();
    constexpr Kel32s integers[] = {kLeast, -17, -1, 0,  1,   2,    3,    4,    5,     6,     15,     16,     19,   20,
                                   21,     22,  64, 65, 999, 1000, 1024, 1025, 65537, 65538, 384000, 384001, kMost};
    constexpr Kel64f reals[] = {-HUGE_VAL, -5000, -4000, -1.001, -1,   -1e-9, 0,    1e-300, 0.5,      1,
                                1.001,     8,     700,   700.5,  3999, 4000,  4001, 1e10,   HUGE_VAL, NAN};
    const auto one = [&dice](const auto& all) {
        return all[static_cast<std::size_t>(dice.between(0, static_cast<int64_t>(std::size(all)) - 1))];
    };
    if (dice.oneIn(3)) {
        config.*one(kReals).second = one(reals);
    } else {
        config.*one(kIntegers).second = one(integers);
    }
}

// Where the frames lie: a signal of n samples has (n + plus) // shift of them, less those that are dropped; the first
// `reach` samples hold the first frame, and from `need` on it is known what stands to the left of them.
std::map<std::string, double> framesOf(const KelFeatureConfig& c) {
    const int kind = c.edges % kelFeatDropLast, half = c.frameLen / 2;
    const int first = kind == kelFeatSnip ? 0 : (kind == kelFeatMirror ? c.frameShift / 2 : 0) - half;
    const int plus = kind == kelFeatSnip     ? c.frameShift - c.frameLen
                     : kind == kelFeatMirror ? c.frameShift / 2
                                             : c.frameShift;
    const int need = kind == kelFeatMirror ? -first : kind == kelFeatCentreReflect ? 1 - first : 0;
    return {{"shift", c.frameShift},       {"plus", plus}, {"drop", c.edges >= kelFeatDropLast},
            {"reach", first + c.frameLen}, {"need", need}, {"ahead", c.deltaOrder * c.deltaWin}};
}

Object featuresBy(const KelFeatureConfig& c) {
    KelFeatureSpec_32f* spec;
    MAKE(kelsFeatureInitAlloc_32f(&spec, &c));
    Object object;
    object.pointer = spec;
    object.properties = framesOf(c);
    int height, width;
    MAKE(kelsFeatureGetSize_32f(spec, 0, &height, &width));
    const bool bank = c.output != kelFeatSpectrum, ranged = c.logKind != kelFeatLogNone && c.logRange > 0;
    object.properties["width"] = width;
    object.properties["filters"] = bank ? c.numFilters : 0;
    object.properties["bins"] = c.fftLen / 2 + 1;
    object.properties["whole"] = ranged || c.norm != kelFeatNormNone;
    return object;
}

}  // namespace

// Every third one has a field or two of any value, good or not.
Object featureConfiguration(Dice& dice, int) {
    KelFeatureConfig config = featureConfig(dice);
    if (dice.oneIn(3)) {
        setAnyField(dice, config);
        if (dice.oneIn(3)) setAnyField(dice, config);
    }
    Object object = inMemory(sizeof config);
    std::memcpy(object.pointer, &config, sizeof config);
    for (const auto& [name, field] : kIntegers) object.properties[name] = config.*field;
    for (const auto& [name, field] : kReals) object.properties[name] = config.*field;
    return object;
}

Object features(Dice& dice, int) {
    return featuresBy(featureConfig(dice));
}

// A stream with some samples behind it.
Object featureStream(Dice& dice, int) {
    KelFeatureConfig c = featureConfig(dice);
    c.logRange = 0;
    c.norm = kelFeatNormNone;
    Object object = featuresBy(c);
    const auto spec = static_cast<KelFeatureSpec_32f*>(object.pointer);
    object.support = {spec, kelsFeatureFree_32f};
    KelFeatureStream_32f* stream;
    MAKE(kelsFeatureStreamInitAlloc_32f(&stream, spec));
    object.pointer = stream;
    const int pushed = dice.oneIn(4) ? 0 : static_cast<int>(dice.between(0, 90));
    int given, flush;
    MAKE(kelsFeatureStreamGetSize_32f(stream, pushed, &given, &flush));
    const int width = static_cast<int>(object.properties["width"]);
    std::vector<Kel32f> rows(static_cast<std::size_t>((given + 1) * width));
    const std::vector<Kel32f> samples = values<Kel32f>(dice, pushed + 1);
    MAKE(kelsFeatureStream_32f_D2(samples.data(), pushed, rows.data(), width, given, &given, stream));
    for (const char* const name : {"reach", "need"}) object.properties[name] -= pushed;  // of those to come
    object.properties["plus"] += pushed;
    object.properties["given"] = given;
    object.properties["flush"] = flush;
    return object;
}

}  // namespace sweep
