#include "lp_spectrogram.h"

#include <cmath>

#include "signal.h"

namespace words {
namespace {

constexpr int kFftOrder = 8;             // 129 frequencies
constexpr int kHzPerCoefficient = 1000;  // a pair of poles a formant, a formant a kilohertz ...
constexpr int kExtraCoefficients = 2;    // ... and the glottis
constexpr float kWhiteNoise = 1e-5F;     // of the energy: keeps the predictor of a pure tone stable
constexpr double kDbPerNeper = 8.6858896;
constexpr float kLeastDb = -40;

}  // namespace

Matrix lpSpectrogram(const Recording& recording, const FrontEnd& frontEnd) {
    const FrontEndSettings& settings = frontEnd.settings();
    const auto samples = [&](float seconds) {
        return static_cast<int>(std::lround(seconds * static_cast<float>(recording.rate)));
    };
    const int length = samples(settings.frameSeconds);
    const int step = samples(settings.stepSeconds);
    const int order = recording.rate / kHzPerCoefficient + kExtraCoefficients;
    constexpr int kBins = (1 << kFftOrder) / 2 + 1;
    Vector signal = withoutOffset(recording.samples);
    check(kelsPreEmphasis_32f_I(signal.data(), signal.size(), settings.preEmphasis, nullptr), "kelsPreEmphasis_32f_I");
    const Vector window = hammingWindow(length);
    Vector frame(length);
    Vector lags(order + 1);
    Vector filter(order + 1);  // 1, a1, a2 ...
    Vector spectrum(1 << kFftOrder);

    Matrix result(1 + (signal.size() - length) / step, kBins);
    for (int t = 0; t < result.rows(); ++t) {
        check(kelsMul_32f(signal.data() + t * step, window.data(), frame.data(), length), "kelsMul_32f");
        check(kelsAutoCorr_32f(frame.data(), length, lags.data(), order + 1), "kelsAutoCorr_32f");
        lags[0] += kWhiteNoise * lags[0] + 1;
        Kel32f error = 0;
        check(kelsDurbin_32f(lags.data(), filter.data() + 1, order, &error), "kelsDurbin_32f");
        filter[0] = 1;
        check(kelsLPToSpectrum_32f(filter.data(), order + 1, spectrum.data(), kFftOrder, 0), "kelsLPToSpectrum_32f");
        const double gain = std::sqrt(static_cast<double>(error));
        for (int k = 0; k < kBins; ++k)
            result.row(t)[k] = std::max(kLeastDb, static_cast<float>(kDbPerNeper * std::log(gain * spectrum[k])));
    }
    return result;
}

}  // namespace words
