// Adds noise to recordings, lets the denoise program take it out, and compares the segmental signal-to-noise ratio
// before and after: the mean over frames of 32 ms with speech in them, each held to -10..35 dB.
//
// usage: denoise_test PROGRAM FOLDER RECORDING...      in a folder that may be written to
//
// The recordings are played one after the other with pauses of half a second.  Exit status 1 when in white noise a
// ratio falls, when silence does not stay silent, or when a file of another length comes out.  Babble, the sum of eight
// others talking, is too unsteady for a noise estimate to be of much use; what it does there is shown.
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

using Signal = std::vector<float>;

Signal read(const std::string& name, int& rate) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(name.c_str(), SFM_READ, &info);
    if (!file) return {};
    Signal v(static_cast<std::size_t>(info.frames * info.channels));
    sf_readf_float(file, v.data(), info.frames);
    sf_close(file);
    rate = info.samplerate;
    return v;
}
void write(const std::string& name, const Signal& v, int rate) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* const file = sf_open(name.c_str(), SFM_WRITE, &info);
    sf_writef_float(file, v.data(), static_cast<sf_count_t>(v.size()));
    sf_close(file);
}

double energy(const float* v, std::size_t n) {
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i) sum += static_cast<double>(v[i]) * v[i];
    return sum;
}

double segmentalRatio(const Signal& clean, const Signal& heard, int rate) {
    const auto n = static_cast<std::size_t>(rate * 32 / 1000);
    double loudest = 0, sum = 0;
    for (std::size_t i = 0; i + n <= clean.size(); i += n) loudest = std::max(loudest, energy(&clean[i], n));
    int frames = 0;
    for (std::size_t i = 0; i + n <= clean.size(); i += n) {
        const double speech = energy(&clean[i], n);
        if (speech < 1e-4 * loudest) continue;
        double error = 1e-20;
        for (std::size_t k = i; k < i + n; ++k) error += std::pow(static_cast<double>(heard[k]) - clean[k], 2);
        sum += std::clamp(10 * std::log10(speech / error), -10.0, 35.0);
        ++frames;
    }
    return sum / frames;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    const std::string program = argv[1], folder = argv[2];
    int rate = 0, failures = 0;
    std::vector<Signal> recordings;
    for (int i = 3; i < argc; ++i) recordings.push_back(read(argv[i], rate));
    Signal clean;
    for (const Signal& r : recordings) {
        clean.insert(clean.end(), static_cast<std::size_t>(rate / 2), 0.0f);
        clean.insert(clean.end(), r.begin(), r.end());
    }

    const auto denoised = [&](const Signal& noisy) {
        write(folder + "/noisy.wav", noisy, rate);
        const std::string command = program + " " + folder + "/noisy.wav " + folder + "/denoised.wav";
        Signal result;
        if (std::system(command.c_str()) == 0) result = read(folder + "/denoised.wav", rate);
        if (result.size() == noisy.size()) return result;
        std::printf("FAILED: %zu samples from %zu\n", result.size(), noisy.size());
        std::exit(1);
    };

    Signal white(clean.size()), babble(clean.size());
    std::mt19937 engine(1);
    std::normal_distribution<float> normal;
    for (float& x : white) x = normal(engine);
    for (int voice = 0; voice < 8; ++voice) {  // each says all recordings without a pause, from another one on
        std::size_t at = 0;
        for (std::size_t next = static_cast<std::size_t>(voice) * 5 + 1; at < babble.size(); ++next) {
            for (const float x : recordings[next * 7 % recordings.size()]) {
                if (at < babble.size()) babble[at++] += x;
            }
        }
    }

    // Levels are those of the speech without its pauses.
    double speech = 0, samples = 0;
    for (const Signal& r : recordings) speech += energy(r.data(), r.size()), samples += static_cast<double>(r.size());
    const std::pair<const char*, const Signal*> noises[] = {{"white", &white}, {"babble", &babble}};
    for (const auto& [name, noise] : noises) {
        for (const int ratio : {0, 5, 10}) {
            const double noisePower = energy(noise->data(), noise->size()) / static_cast<double>(noise->size());
            const double factor = std::sqrt(speech / samples / noisePower * std::pow(10, -ratio / 10.0));
            Signal noisy = clean;
            for (std::size_t i = 0; i < noisy.size(); ++i) noisy[i] += static_cast<float>(factor) * (*noise)[i];
            const double before = segmentalRatio(clean, noisy, rate),
                         after = segmentalRatio(clean, denoised(noisy), rate);
            std::printf("%-6s %2d dB: segmental %6.2f dB before, %6.2f dB after, %+.2f dB\n", name, ratio, before,
                        after, after - before);
            failures += noise == &babble || after > before ? 0 : 1;
        }
    }
    const Signal silence = denoised(Signal(12345));
    failures += energy(silence.data(), silence.size()) == 0 ? 0 : 1;
    const Signal nothing = denoised({});
    std::printf("%d failures\n", failures);
    return failures == 0 ? 0 : 1;
}
