// A codec for speech features: mel cepstra at 100 frames a second, cut into pairs, each pair replaced by the index of
// the nearest vector of a small codebook.  What goes over the line are those indices, packed bit by bit.
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "books.h"
#include "common/output_file.h"

namespace {

namespace fs = std::filesystem;
using namespace codec;

constexpr int kLeastBits = 2, kMostBits = 9;  // of an index

constexpr char kUsage[] = R"(usage: codec RECORDING.wav|FOLDER...
       codec train RECORDING.wav|FOLDER... -o BOOKS [--bits N]
       codec encode BOOKS RECORDING.wav CODED
       codec decode BOOKS CODED FEATURES.txt

Packs speech features, 12 mel cepstra and the energy at 100 frames a second, into a few thousand bits a second.
Without a command it tells what each rate costs: every second recording trains, the others are coded.

  train    writes codebooks of 2^N vectors, N = 2..9, 6 without --bits
  encode   writes the features of a recording, coded with such codebooks
  decode   writes the features that come back, a row of 13 numbers for each frame

Exit status: 0 if all is well, 1 if something failed (no file is then written), 2 if the command line is wrong.
)";

struct WrongUsage {};

// Sound files, and those below folders that are called .wav.
std::vector<fs::path> recordingsOf(const std::vector<std::string_view>& names) {
    std::vector<fs::path> files;
    for (const fs::path name : names) {
        if (!fs::exists(name)) throw std::runtime_error(name.string() + ": no such file or folder");
        const std::size_t before = files.size();
        if (!fs::is_directory(name)) files.push_back(name);
        if (files.size() > before) continue;
        for (const auto& entry : fs::directory_iterator(name)) {
            if (entry.path().extension() == ".wav") files.push_back(entry.path());
        }
        if (files.size() == before) throw std::runtime_error(name.string() + ": there is no recording in this folder");
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Calls use(file, number) for each, and says on a terminal how far that is.
template <class Use>
void forEach(const std::vector<fs::path>& files, const Use& use) {
    const bool terminal = isatty(STDERR_FILENO) == 1;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (terminal) std::fprintf(stderr, "\r\033[Kreading %zu of %zu", i + 1, files.size());
        use(files[i], i);
    }
    if (terminal) std::fprintf(stderr, "\r\033[K");
}

Books trained(const std::vector<std::string_view>& names, const Features& features, int bits) {
    const std::string named = std::string(names[0]) + (names.size() > 1 ? ", ...: " : ": ");
    if (features.rows() <= 1 << bits) throw std::runtime_error(named + "is too short to train so many codevectors");
    try {
        return Books(features, bits);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(named + error.what());
    }
}

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

// ---- commands ------------------------------------------------------------------------------------------------------

// Every second recording trains, the others are coded; a single one does both.
void compareRates(const std::vector<std::string_view>& names) {
    Features training, test;
    const auto files = recordingsOf(names);
    forEach(files, [&](const fs::path& file, std::size_t i) { appendFeatures(file, i % 2 == 0 ? training : test); });
    if (files.size() == 1) test = training;
    if (test.rows() < 1) throw std::runtime_error(files[1].string() + ": is too short");

    const bool terminal = isatty(STDOUT_FILENO) == 1;
    for (int bits = kLeastBits; bits <= kMostBits && (bits == kLeastBits || training.rows() > 2 << bits); ++bits) {
        Books books = trained(names, training, bits);
        const Features coded = books.decode(books.encode(test), test.rows());
        if (bits == kLeastBits) {
            std::printf("%d features a frame, %d frames to train, %d coded\n", kWidth, training.rows(), test.rows());
            std::printf("%s%11s %12s %12s %14s%s\n", terminal ? "\033[1m" : "", "codevectors", "bits/frame", "bits/s",
                        "distortion/dB", terminal ? "\033[0m" : "");
        }
        std::printf("%11d %12d %12d %14.1f\n", 1 << bits, books.rowBits(), books.rowBits() * kFramesPerSecond,
                    -signalToNoise(test, coded));
    }
}

void train(const std::vector<std::string_view>& arguments) {
    std::vector<std::string_view> names;
    fs::path file;
    int bits = 6;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const bool named = argument == "-o", rate = argument == "--bits";
        if (!named && !rate && argument.starts_with("-")) throw WrongUsage();
        if (!named && !rate) names.push_back(argument);
        if (!named && !rate) continue;
        if (++i == arguments.size()) throw WrongUsage();
        const std::string_view value = arguments[i];
        if (named) file = value;
        const char* const end = value.data() + value.size();
        if (rate && std::from_chars(value.data(), end, bits).ptr != end) throw WrongUsage();
    }
    if (names.empty() || file.empty() || bits < kLeastBits || bits > kMostBits) throw WrongUsage();
    const auto files = recordingsOf(names);
    for (const auto& input : files) common::refuseToOverwrite(input, file);
    common::OutputFile output(file);  // before the work: whether it can be written shows now
    Features features;
    forEach(files, [&](const fs::path& input, std::size_t) { appendFeatures(input, features); });
    const Books books = trained(names, features, bits);
    output.write(books.bytes());
    std::printf("%d frames, %d bits each\n", features.rows(), books.rowBits());
}

void encode(const std::vector<std::string_view>& arguments) {
    if (arguments.size() != 3) throw WrongUsage();
    const fs::path recording = arguments[1], coded = arguments[2];
    Books books{fs::path(arguments[0])};
    for (const fs::path input : {arguments[0], arguments[1]}) common::refuseToOverwrite(input, coded);
    Features features;
    appendFeatures(recording, features);
    if (features.rows() < 1) throw std::runtime_error(recording.string() + ": is shorter than a frame");
    common::writeFile(coded, packStream(books, books.encode(features), features.rows()));
}

void decode(const std::vector<std::string_view>& arguments) {
    if (arguments.size() != 3) throw WrongUsage();
    const fs::path coded = arguments[1], text = arguments[2];
    Books books{fs::path(arguments[0])};
    for (const fs::path input : {arguments[0], arguments[1]}) common::refuseToOverwrite(input, text);
    const Stream stream = readStream(books, coded);
    Features features;
    try {
        features = books.decode(stream.bytes, stream.rows);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(coded.string() + ": is damaged: " + error.what());
    }
    std::string lines;
    for (std::size_t i = 0; i < features.values.size(); ++i) {
        char number[32];
        std::snprintf(number, sizeof number, "%.6g%c", features.values[i], (i + 1) % kWidth == 0 ? '\n' : ' ');
        lines += number;
    }
    common::writeFile(text, lines);
}

void run(const std::vector<std::string_view>& arguments) {
    if (arguments.empty()) throw WrongUsage();
    const std::vector<std::string_view> rest(arguments.begin() + 1, arguments.end());
    if (arguments[0] == "train") return train(rest);
    if (arguments[0] == "encode") return encode(rest);
    if (arguments[0] == "decode") return decode(rest);
    if (arguments[0].starts_with("-")) throw WrongUsage();
    compareRates(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--help") {
        std::fputs(kUsage, stdout);
        return std::fflush(stdout) != 0;
    }
    try {
        run({argv + 1, argv + argc});
        if (std::fflush(stdout) != 0) throw std::runtime_error("standard output cannot be written");
    } catch (const WrongUsage&) {
        std::fputs(kUsage, stderr);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
}
