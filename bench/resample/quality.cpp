// Measures what resamplers do to pure tones: how much of the output is neither the tone nor as loud as it, how wide the
// pass band is, and what is left of tones beyond it.  The figures of docs/accuracy.md are this program's output.
// usage: resample-quality [WINDOW NSTEP ROLLF ALPHA]   one filter instead of those of the header's table and the peers
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "kels/resample.h"
#include "settings.h"
#if defined(HAVE_SOXR)
#include <soxr.h>
#endif
#if defined(HAVE_SPEEXDSP)
#include <speex/speex_resampler.h>
#endif
#if defined(HAVE_SAMPLERATE)
#include <samplerate.h>
#endif

namespace {

constexpr double kPi = 3.14159265358979323846;
using Signal = std::vector<float>;

struct Rates {
    double in, out;
    bool fixed() const { return in == std::floor(in) && out == std::floor(out); }
    double slowNyquist() const { return std::min(in, out) / 2; }
};
using Converter = std::function<Signal(const Signal&, Rates)>;

using Setting = ResampleSetting;

Signal withHistory(const Signal& x, std::size_t history) {
    Signal padded(history, 0.0f);
    padded.insert(padded.end(), x.begin(), x.end());
    return padded;
}

Signal general(const Signal& x, Rates rates, const Setting& setting) {
    KelResamplePolyphase_32f* state = nullptr;
    if (kelsResamplePolyphaseInitAlloc_32f(&state, setting.window, setting.nStep, setting.rollf, setting.alpha, 0) != 0)
        return {};
    const double factor = rates.out / rates.in;
    const auto history = static_cast<std::size_t>(setting.window / std::min(1.0, factor)) + 2;
    const Signal padded = withHistory(x, history);
    Signal y(static_cast<std::size_t>(static_cast<double>(x.size()) * factor) + 16);
    double time = 0;
    int n = 0;
    kelsResamplePolyphase_32f(state, padded.data() + history, static_cast<int>(x.size()), y.data(), factor, 1, &time,
                              &n);
    kelsResamplePolyphaseFree_32f(state);
    y.resize(static_cast<std::size_t>(n));
    return y;
}

Signal fixed(const Signal& x, Rates rates, const Setting& setting) {
    if (!rates.fixed()) return {};
    KelResamplePolyphaseFixed_32f* state = nullptr;
    const double stretch = std::max(1.0, rates.in / rates.out);
    const int len = static_cast<int>(setting.window * stretch);
    if (kelsResamplePolyphaseFixedInitAlloc_32f(&state, static_cast<int>(rates.in), static_cast<int>(rates.out), len,
                                                setting.rollf, setting.alpha, 0) != 0)
        return {};
    const auto history = static_cast<std::size_t>(len);
    const Signal padded = withHistory(x, history);
    Signal y(static_cast<std::size_t>(static_cast<double>(x.size()) * rates.out / rates.in) + 16);
    double time = 0;
    int n = 0;
    kelsResamplePolyphaseFixed_32f(state, padded.data() + history, static_cast<int>(x.size()), y.data(), 1, &time, &n);
    kelsResamplePolyphaseFixedFree_32f(state);
    y.resize(static_cast<std::size_t>(n));
    return y;
}

Signal roomFor(const Signal& x, Rates rates) {
    return Signal(static_cast<std::size_t>(static_cast<double>(x.size()) * rates.out / rates.in) + 1000);
}

#if defined(HAVE_SOXR)
Signal soxrHq(const Signal& x, Rates rates) {
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    Signal y = roomFor(x, rates);
    std::size_t read = 0, written = 0;
    soxr_oneshot(rates.in, rates.out, 1, x.data(), x.size(), &read, y.data(), y.size(), &written, nullptr, &quality,
                 nullptr);
    y.resize(written);
    return y;
}
#endif

#if defined(HAVE_SPEEXDSP)
Signal speex10(const Signal& x, Rates rates) {
    if (!rates.fixed()) return {};
    int error = 0;
    SpeexResamplerState* const state =
        speex_resampler_init(1, static_cast<spx_uint32_t>(rates.in), static_cast<spx_uint32_t>(rates.out), 10, &error);
    Signal y = roomFor(x, rates);
    auto read = static_cast<spx_uint32_t>(x.size()), written = static_cast<spx_uint32_t>(y.size());
    speex_resampler_process_float(state, 0, x.data(), &read, y.data(), &written);
    speex_resampler_destroy(state);
    y.resize(written);
    return y;
}
#endif

#if defined(HAVE_SAMPLERATE)
Signal sincBest(const Signal& x, Rates rates) {
    Signal y = roomFor(x, rates);
    SRC_DATA data{};
    data.data_in = x.data();
    data.data_out = y.data();
    data.input_frames = static_cast<long>(x.size());
    data.output_frames = static_cast<long>(y.size());
    data.src_ratio = rates.out / rates.in;
    src_simple(&data, SRC_SINC_BEST_QUALITY, 1);
    y.resize(static_cast<std::size_t>(data.output_frames_gen));
    return y;
}
#endif

struct Levels {
    double tone, rest;  // dB of the input's tone
};

// Fits the tone that must come out and takes what is left; the ends of the output are left out.
Levels measure(const Converter& convert, Rates rates, double frequency) {
    constexpr int kLength = 1 << 15;
    constexpr double kAmplitude = 0.9;
    Signal x(kLength);
    for (int i = 0; i < kLength; ++i)
        x[static_cast<std::size_t>(i)] = static_cast<float>(kAmplitude * std::sin(2 * kPi * frequency / rates.in * i));
    const Signal y = convert(x, rates);
    const std::size_t begin = y.size() / 4, end = y.size() - y.size() / 4;
    const double w = 2 * kPi * frequency / rates.out;
    double cc = 0, ss = 0, cs = 0, yc = 0, ys = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const double c = std::cos(w * static_cast<double>(i)), s = std::sin(w * static_cast<double>(i));
        cc += c * c, ss += s * s, cs += c * s, yc += c * y[i], ys += s * y[i];
    }
    const double det = cc * ss - cs * cs;
    const double a = (yc * ss - ys * cs) / det, b = (ys * cc - yc * cs) / det;
    double rest = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const double e = y[i] - a * std::cos(w * static_cast<double>(i)) - b * std::sin(w * static_cast<double>(i));
        rest += e * e;
    }
    const double power = kAmplitude * kAmplitude / 2;
    return {10 * std::log10((a * a + b * b) / 2 / power),
            10 * std::log10(rest / static_cast<double>(end - begin) / power + 1e-30)};
}

// The level of everything that a tone beyond the output's half rate leaves.
double alias(const Converter& convert, Rates rates, double frequency) {
    constexpr int kLength = 1 << 14;
    Signal x(kLength);
    for (int i = 0; i < kLength; ++i)
        x[static_cast<std::size_t>(i)] = static_cast<float>(0.9 * std::sin(2 * kPi * frequency / rates.in * i));
    const Signal y = convert(x, rates);
    const std::size_t begin = y.size() / 4, end = y.size() - y.size() / 4;
    double power = 0;
    for (std::size_t i = begin; i < end; ++i) power += static_cast<double>(y[i]) * y[i];
    return 10 * std::log10(power / static_cast<double>(end - begin) / 0.405 + 1e-30);
}

void report(const char* who, const Converter& convert, Rates rates) {
    if (convert(Signal(4096), rates).empty()) return;
    // Tones at steps that share no period with the rates.
    double worst = -400, sum = 0;
    int tones = 0;
    for (double f = 0.0131; f < 0.9; f += 0.0293, ++tones) {
        const Levels levels = measure(convert, rates, f * rates.slowNyquist());
        worst = std::max(worst, levels.rest - levels.tone);
        sum += std::pow(10, (levels.rest - levels.tone) / 10);
    }
    const auto bandAt = [&](double level) {
        double low = 0.5, high = 1.1;
        for (int i = 0; i < 12; ++i) {
            const double middle = (low + high) / 2;
            const bool passes = middle < rates.in / 2 / rates.slowNyquist() &&
                                measure(convert, rates, middle * rates.slowNyquist()).tone > level;
            (passes ? low : high) = middle;
        }
        return low;
    };
    // Down: what tones from the output's half rate on leave.  Up: what appears besides tones up to the input's half
    // rate.
    double leak = -400;
    for (const double f : {0.004, 0.011, 0.023, 0.037, 0.061, 0.083}) {
        leak = std::max(leak, rates.out < rates.in ? alias(convert, rates, (1 + f) * rates.slowNyquist())
                                                   : measure(convert, rates, (1 - f) * rates.slowNyquist()).rest);
    }
    std::printf("| %.0f to %.0f | %s | %.1f | %.1f | %.1f %% | %.1f %% | %.1f |\n", rates.in, rates.out, who, -worst,
                -10 * std::log10(sum / tones), 100 * bandAt(-0.1), 100 * bandAt(-3), leak);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<Setting> settings{kFast, kSpeech, kLikeSoxr, kLikeSpeex, kLikeSrc};
    if (argc >= 5) {
        settings = {{"given", static_cast<float>(std::atof(argv[1])), std::atoi(argv[2]),
                     static_cast<float>(std::atof(argv[3])), static_cast<float>(std::atof(argv[4]))}};
    }
    std::printf(
        "| rates | converter | SNR, least | SNR, mean | -0.1 dB at | -3 dB at | leak, dB |\n"
        "|---|---|---:|---:|---:|---:|---:|\n");
    for (const Rates rates : {Rates{48000, 16000}, Rates{44100, 48000}, Rates{8000, 16000},
                              Rates{44100, 44100 * std::sqrt(1.2)}, Rates{44100, 44100 / std::sqrt(1.2)}}) {
        for (const Setting& setting : settings) {
            const std::string name = setting.name;
            report(("fixed, " + name).c_str(), [&](const Signal& x, Rates r) { return fixed(x, r, setting); }, rates);
            report(("general, " + name).c_str(), [&](const Signal& x, Rates r) { return general(x, r, setting); },
                   rates);
        }
        if (argc >= 5) continue;
#if defined(HAVE_SOXR)
        report("soxr HQ", soxrHq, rates);
#endif
#if defined(HAVE_SPEEXDSP)
        report("speexdsp, quality 10", speex10, rates);
#endif
#if defined(HAVE_SAMPLERATE)
        report("libsamplerate, best", sincBest, rates);
#endif
    }
}
