// Mel cepstra by the library's filter bank and cosine transform.
#include "features.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "common/check.h"
#include "common/sound_input.h"

namespace codec {

using common::check, common::Release;
using FilterBank = std::unique_ptr<KelFilterBank_32f, Release<kelsFBankFree_32f>>;
using Cosine = std::unique_ptr<KelDCTLifterState_32f, Release<kelsDCTLifterFree_32f>>;

void appendFeatures(const std::filesystem::path& file, Features& features) {
    common::SoundInput input(file);
    const SF_INFO& info = input.info();
    if (info.channels != 1 || info.samplerate < 4000 || info.frames > 1 << 26)
        input.fail("is not one channel of at least 4 kHz and a sane length");
    std::vector<float> samples(static_cast<std::size_t>(info.frames));
    samples.resize(static_cast<std::size_t>(input.read(samples.data(), info.frames)));

    const int frame = info.samplerate / 40, step = info.samplerate / kFramesPerSecond;
    constexpr int filters = 23;
    KelFilterBank_32f* bank = nullptr;
    int order = 0;
    check(kelsMelFBankInitAlloc_32f(&bank, &order, frame, static_cast<float>(info.samplerate), 64,
                                    static_cast<float>(info.samplerate) / 2, filters, 1127, 700,
                                    kelFBankWeightMel + kelFBankOwnFFT),
          "kelsMelFBankInitAlloc_32f");
    const FilterBank ownedBank(bank);
    KelDCTLifterState_32f* cosine = nullptr;
    check(kelsDCTLifterInitAlloc_32f(&cosine, filters, kCepstra, 22, 1), "kelsDCTLifterInitAlloc_32f");
    const Cosine ownedCosine(cosine);

    std::vector<float> padded(std::size_t{1} << order);
    for (int begin = 0; begin + frame <= static_cast<int>(samples.size()); begin += step) {
        double energy = 1;
        for (int i = 0; i < frame; ++i) {
            const float sample = 32768 * samples[static_cast<std::size_t>(begin + i)];
            const double window = 0.54 - 0.46 * std::cos(2 * std::numbers::pi * i / (frame - 1));
            energy += double{sample} * sample;
            padded[static_cast<std::size_t>(i)] = static_cast<float>(sample * window);
        }
        float mel[filters], row[kWidth];
        check(kelsEvalFBank_32f(padded.data(), mel, bank), "kelsEvalFBank_32f");
        for (float& m : mel) m = std::log(std::max(m, 1.0F));
        check(kelsDCTLifter_32f(mel, row, cosine), "kelsDCTLifter_32f");
        row[kCepstra] = static_cast<float>(std::log(energy));
        features.values.insert(features.values.end(), row, row + kWidth);
    }
}

}  // namespace codec
