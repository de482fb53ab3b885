// The configuration of a front end: presets, and which values of its fields make sense together.
#pragma once

#include "kels/features.h"

namespace kels::features {

// Whether presets and configurations take this rate.
bool isSampleRate(int rate);

// False for an unknown preset.
bool fillPreset(KelFeatureConfig& config, int sampleRate, int preset);

// The status of a configuration: ok, sizes, frequencies, or other fields.  Fields without effect are not looked at.
KelStatus configFault(const KelFeatureConfig& config);

// The upper limit of the filter bank in Hz.
double highLimit(const KelFeatureConfig& config);

inline bool hasBank(const KelFeatureConfig& c) {
    return c.output == kelFeatBank || c.output == kelFeatCepstra;
}
inline bool hasLogarithm(const KelFeatureConfig& c) {
    return c.logKind != kelFeatLogNone;
}
inline bool hasRange(const KelFeatureConfig& c) {
    return hasLogarithm(c) && c.logRange > 0;
}
inline int edgeKind(const KelFeatureConfig& c) {
    return c.edges & ~kelFeatDropLast;
}
inline bool dropsLast(const KelFeatureConfig& c) {
    return (c.edges & kelFeatDropLast) != 0;
}

}  // namespace kels::features
