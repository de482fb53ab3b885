// Mel cepstra by the library's front end.
#include "features.h"

#include <memory>

#include "common/check.h"
#include "common/sound_input.h"

namespace codec {

using common::check, common::Release;

void appendFeatures(const std::filesystem::path& file, Features& features) {
    common::SoundInput input(file);
    const SF_INFO& info = input.info();
    if (info.channels != 1 || info.samplerate < 4000 || info.frames > 1 << 26)
        input.fail("is not one channel of at least 4 kHz and a sane length");
    std::vector<float> samples(static_cast<std::size_t>(info.frames));
    samples.resize(static_cast<std::size_t>(input.read(samples.data(), info.frames)));
    for (float& sample : samples) sample *= 32768;

    KelFeatureConfig config;
    check(kelsFeaturePreset(&config, info.samplerate, kelFeatHtkMfcc), "kelsFeaturePreset");
    config.frameShift = info.samplerate / kFramesPerSecond;
    config.preEmphasis = 0;
    config.numFilters = 23;
    config.lowFreq = 64;
    config.numCeps = kCepstra;
    config.energy = kelFeatEnergy;
    config.energyFloor = 1;
    KelFeatureSpec_32f* spec = nullptr;
    check(kelsFeatureInitAlloc_32f(&spec, &config), "kelsFeatureInitAlloc_32f");
    const std::unique_ptr<KelFeatureSpec_32f, Release<kelsFeatureFree_32f>> owned(spec);

    const int count = static_cast<int>(samples.size());
    int height = 0, width = 0;
    check(kelsFeatureGetSize_32f(spec, count, &height, &width), "kelsFeatureGetSize_32f");
    if (height == 0) return;
    const std::size_t before = features.values.size();
    features.values.resize(before + static_cast<std::size_t>(height) * kWidth);
    check(kelsFeature_32f_D2(samples.data(), count, features.values.data() + before, kWidth, spec, nullptr),
          "kelsFeature_32f_D2");
}

}  // namespace codec
