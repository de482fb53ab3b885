// A codec for speech features: mel cepstra at 100 frames a second, cut into pairs, each pair replaced by the index of
// the nearest vector of a small codebook.  What goes over the line are those indices, packed bit by bit.
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/sound_input.h"
#include "kels.h"

namespace {

constexpr int kCepstra = 12;
constexpr int kWidth = kCepstra + 1;             // and the logarithm of the energy
constexpr int kParts[] = {2, 2, 2, 2, 2, 2, 1};  // how a row is cut
constexpr int kStreams = static_cast<int>(std::size(kParts));
constexpr int kFramesPerSecond = 100;
constexpr int kLeastBits = 2, kMostBits = 9;  // of an index

void check(KelStatus status, const char* function) {
    if (status < 0) throw std::runtime_error(std::string(function) + " failed with status " + std::to_string(status));
}

template <auto Free>
struct Release {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};
using FilterBank = std::unique_ptr<KelFilterBank_32f, Release<kelsFBankFree_32f>>;
using Cosine = std::unique_ptr<KelDCTLifterState_32f, Release<kelsDCTLifterFree_32f>>;
using Codebook = std::unique_ptr<KelCdbk_32f, Release<kelsCdbkFree_32f>>;

// Rows of kWidth features, one behind the other.
struct Features {
    std::vector<float> values;
    int rows() const { return static_cast<int>(values.size()) / kWidth; }
};

// ---- features ------------------------------------------------------------------------------------------------------

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

std::vector<std::filesystem::path> recordingsOf(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::exists(argv[i]))
            throw std::runtime_error(std::string(argv[i]) + ": no such file or folder");
        if (!std::filesystem::is_directory(argv[i])) {
            files.emplace_back(argv[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            if (entry.path().extension() == ".wav") files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) throw std::runtime_error("there is no recording");
    return files;
}

// ---- codec ---------------------------------------------------------------------------------------------------------

class Codec {
  public:
    Codec(const Features& training, int bits) {
        int column = 0;
        for (const int width : kParts) {
            std::vector<float> part;
            for (int r = 0; r < training.rows(); ++r) {
                const float* const begin = training.values.data() + r * kWidth + column;
                part.insert(part.end(), begin, begin + width);
            }
            KelCdbk_32f* codebook = nullptr;
            check(kelsCdbkInitAlloc_L2_32f(&codebook, part.data(), width, width, training.rows(), 1 << bits,
                                           kelCdbkSplitWidest),
                  "kelsCdbkInitAlloc_L2_32f");
            codebooks_.emplace_back(codebook);
            pointers_.push_back(codebook);
            rowBits_ += codebook->indexBits;
            column += width;
        }
    }
    int rowBits() const { return rowBits_; }

    std::vector<Kel8u> encode(const Features& features) {
        std::vector<Kel8u> stream((static_cast<std::size_t>(features.rows()) * static_cast<std::size_t>(rowBits_) + 7) /
                                  8);
        check(kelsSplitVQ_32f1u(features.values.data(), kWidth, stream.data(), rowBits_, features.rows(),
                                pointers_.data(), kStreams),
              "kelsSplitVQ_32f1u");
        return stream;
    }
    Features decode(const std::vector<Kel8u>& stream, int rows) {
        Features features{std::vector<float>(static_cast<std::size_t>(rows) * kWidth)};
        check(kelsFormVectorVQ_1u32f(stream.data(), rowBits_, features.values.data(), kWidth, rows, pointers_.data(),
                                     kStreams),
              "kelsFormVectorVQ_1u32f");
        return features;
    }

  private:
    std::vector<Codebook> codebooks_;
    std::vector<KelCdbk_32f*> pointers_;
    int rowBits_ = 0;
};

// The power of each component's variation over that of its error, in dB, averaged over the components.
double signalToNoise(const Features& exact, const Features& coded) {
    double sum = 0;
    for (int k = 0; k < kWidth; ++k) {
        double mean = 0, signal = 0, noise = 0;
        for (std::size_t i = static_cast<std::size_t>(k); i < exact.values.size(); i += kWidth) mean += exact.values[i];
        mean /= exact.rows();
        for (std::size_t i = static_cast<std::size_t>(k); i < exact.values.size(); i += kWidth) {
            signal += std::pow(exact.values[i] - mean, 2);
            noise += std::pow(exact.values[i] - coded.values[i], 2);
        }
        sum += 10 * std::log10((signal + 1e-9) / (noise + 1e-9));
    }
    return sum / kWidth;
}

void run(int argc, char** argv) {
    const auto files = recordingsOf(argc, argv);
    // Every second recording trains, the others are coded; a single one does both.
    Features training, test;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (isatty(STDERR_FILENO)) std::fprintf(stderr, "\r\033[Kreading %zu of %zu", i + 1, files.size());
        appendFeatures(files[i], i % 2 == 0 ? training : test);
    }
    if (isatty(STDERR_FILENO)) std::fprintf(stderr, "\r\033[K");
    if (files.size() == 1) test = training;
    if (training.rows() <= 1 << kLeastBits || test.rows() < 1) throw std::runtime_error("the recordings are too short");

    const bool terminal = isatty(STDOUT_FILENO) == 1;
    std::printf("%d features a frame, %d frames to train, %d coded\n", kWidth, training.rows(), test.rows());
    std::printf("%s%11s %12s %12s %14s%s\n", terminal ? "\033[1m" : "", "codevectors", "bits/frame", "bits/s",
                "distortion/dB", terminal ? "\033[0m" : "");
    for (int bits = kLeastBits; bits <= kMostBits && training.rows() > 2 << bits; ++bits) {
        Codec codec(training, bits);
        const Features coded = codec.decode(codec.encode(test), test.rows());
        std::printf("%11d %12d %12d %14.1f\n", 1 << bits, codec.rowBits(), codec.rowBits() * kFramesPerSecond,
                    -signalToNoise(test, coded));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bool help = argc == 2 && std::string_view(argv[1]) == "--help";
    if (argc < 2 || argv[1][0] == '-') {
        std::fprintf(help ? stdout : stderr, "usage: codec RECORDING.wav|FOLDER...\n");
        return !help ? 2 : std::fflush(stdout) != 0;
    }
    try {
        run(argc, argv);
        if (std::fflush(stdout) != 0) throw std::runtime_error("standard output cannot be written");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
}
