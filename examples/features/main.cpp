// features: from sound files to files of features, as the toolkits compute them.  The usage text below says the rest.
#include <kels.h>

#include <atomic>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "common/check.h"
#include "common/output_file.h"
#include "common/parallel.h"
#include "common/progress_bar.h"
#include "common/sound_input.h"
#include "common/stream.h"
#include "configuration.h"
#include "feature_file.h"
#include "picture.h"

namespace {

namespace fs = std::filesystem;
using namespace features;
using common::check;

constexpr std::string_view kUsage =
    R"(usage: features IN OUT [--preset NAME] [--FIELD VALUE]... [--format npy|csv|htk] [--picture FILE]

Writes the features of the sound file IN to OUT, a row for each frame: a NumPy array, comma-separated values or an HTK
parameter file, as OUT ends in .npy, .csv or .htk, or as --format says.  Where IN is a folder, so is OUT: all sound
files below IN go there under their names, on all processors (--format npy unless another is named).

  --preset NAME    whose features; kaldi-mfcc by default
  --FIELD VALUE    sets a field of the configuration after the preset has filled it: --deltaOrder 2 --window hann
                   Lengths are in samples.  Choices take numbers or words, joined by +: --edges centre-zero+drop-last
  --sampleRate HZ  resamples what is recorded at another rate; whisper-mel does so to 16000 unless told otherwise
  --picture FILE   draws the features, too: a .png or .svg

Channels are averaged.  kels/features.h says what the fields mean, and what the presets make of them.

Exit status: 0 if all is well, 1 if something failed (the other files of a folder are written), 2 if the command line is
wrong.

)";

struct Job {
    fs::path in, out, picture;
    std::optional<Format> format;
    Choices choices;
};

Job parse(int argc, char** argv) {
    Job job;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (!argument.starts_with("-") || argument == "-") {
            files.emplace_back(argument);
            continue;
        }
        const std::string_view name = argument.substr(argument.starts_with("--") ? 2 : 1);
        const bool option = name == "preset" || name == "format" || name == "picture";
        if (!argument.starts_with("--") || (!option && !Choices::isField(name))) {
            throw UsageError("unknown option " + std::string(argument));
        }
        if (++i == argc) throw UsageError(std::string(argument) + " needs a value");
        const std::string_view value = argv[i];
        if (name == "preset") {
            job.choices.setPreset(value);
        } else if (name == "format") {
            job.format = formatNamed(value);
        } else if (name == "picture") {
            job.picture = value;
        } else {
            job.choices.set(name, value);
        }
    }
    if (files.size() != 2) throw UsageError("one file or folder to read and one to write are needed");
    job.in = files[0];
    job.out = files[1];
    const fs::path ending = job.picture.extension();
    if (!job.picture.empty() && ending != ".png" && ending != ".svg") {
        throw UsageError(job.picture.string() + " is neither a .png nor a .svg");
    }
    return job;
}

// ---- one file ------------------------------------------------------------------------------------------------------

// The mean of all channels, of full scale 1.
std::vector<float> readMono(common::SoundInput& input) {
    constexpr sf_count_t kBlock = 8192;
    constexpr std::size_t kMost = 1 << 30;
    const auto channels = static_cast<std::size_t>(input.info().channels);
    std::vector<float> block(static_cast<std::size_t>(kBlock) * channels), samples;
    while (const sf_count_t got = input.read(block.data(), kBlock)) {
        if (samples.size() + static_cast<std::size_t>(got) > kMost) input.fail("is too long");
        for (std::size_t i = 0; i < static_cast<std::size_t>(got); ++i) {
            float sum = 0;
            for (std::size_t c = 0; c < channels; ++c) sum += block[i * channels + c];
            samples.push_back(sum / static_cast<float>(channels));
        }
    }
    return samples;
}

std::vector<float> atRate(std::vector<float> samples, int from, int to) {
    if (from == to) return samples;
    const Resampler resampler(from, to, kQualities[1]);
    Channel channel(resampler);
    std::vector<float> result;
    const auto wanted =
        static_cast<std::size_t>(std::llround(static_cast<double>(samples.size()) * static_cast<double>(to) / from));
    channel.feed(samples.data(), static_cast<int>(samples.size()), result);
    const std::vector<float> silence(8192);
    while (result.size() < wanted) channel.feed(silence.data(), static_cast<int>(silence.size()), result);
    result.resize(wanted);
    return result;
}

// Features of samples of full scale 1, in the toolkit's unit: what 16-bit samples would become.
Rows featuresOf(std::vector<float> samples, const KelFeatureConfig& config) {
    KelFeatureSpec_32f* made = nullptr;
    check(kelsFeatureInitAlloc_32f(&made, &config), "the configuration is not accepted");
    const std::unique_ptr<KelFeatureSpec_32f, common::Release<kelsFeatureFree_32f>> spec(made);
    for (float& x : samples) x = static_cast<float>(32768.0 * x * config.scale16s);
    Rows rows;
    const int count = static_cast<int>(samples.size());
    check(kelsFeatureGetSize_32f(made, count, &rows.height, &rows.width), "kelsFeatureGetSize_32f");
    if (rows.height == 0) throw std::runtime_error("is shorter than a frame");
    rows.values.resize(static_cast<std::size_t>(rows.height) * static_cast<std::size_t>(rows.width));
    check(kelsFeature_32f_D2(samples.data(), count, rows.values.data(), rows.width, made, nullptr),
          "kelsFeature_32f_D2");
    return rows;
}

void convert(const Job& job, const fs::path& in, const fs::path& out, Format format) {
    common::SoundInput input(in);
    common::refuseToOverwrite(in, out);
    if (!job.picture.empty()) common::refuseToOverwrite(in, job.picture);
    const int recorded = input.info().samplerate, rate = job.choices.rateFor(recorded);
    std::string bytes, picture;
    try {
        const KelFeatureConfig config = job.choices.at(rate);
        const Rows rows = featuresOf(atRate(readMono(input), recorded, rate), config);
        bytes = fileOf(format, rows, config);
        if (!job.picture.empty()) {
            const std::string title = in.filename().string() + ", " + std::string(job.choices.preset());
            picture = pictureOf(rows, config, title, job.picture.extension() == ".svg");
        }
    } catch (const std::runtime_error& error) {
        const std::string what = error.what();
        if (what.starts_with(in.string())) throw;
        input.fail(what);
    }
    common::writeFile(out, bytes);
    if (!job.picture.empty()) common::writeFile(job.picture, picture);
}

// ---- a folder ------------------------------------------------------------------------------------------------------

bool isSound(const fs::path& file) {
    constexpr std::string_view kEndings[] = {".wav", ".flac", ".ogg", ".opus", ".mp3", ".aif", ".aiff",
                                             ".au",  ".snd",  ".sph", ".nist", ".caf", ".w64", ".rf64"};
    std::string ending = file.extension().string();
    for (char& c : ending) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

// What is to be written, and what it is made of.
std::map<fs::path, fs::path> filesOf(const Job& job, Format format) {
    std::map<fs::path, fs::path> sources;
    for (const auto& entry : fs::recursive_directory_iterator(job.in)) {
        if (!entry.is_regular_file() || entry.path().filename().string().starts_with('.') || !isSound(entry.path())) {
            continue;
        }
        fs::path out = job.out / entry.path().lexically_relative(job.in);
        out.replace_extension(extensionOf(format));
        const auto [place, isNew] = sources.emplace(out, entry.path());
        if (!isNew) {
            throw std::runtime_error(entry.path().string() + " and " + place->second.string() + " would both become " +
                                     out.string());
        }
    }
    if (sources.empty()) throw std::runtime_error(job.in.string() + ": holds no sound file");
    return sources;
}

void convertFolder(const Job& job) {
    if (!job.picture.empty()) throw UsageError("--picture is for one recording");
    const Format format = job.format.value_or(Format::npy);
    const auto sources = filesOf(job, format);
    const std::vector<std::pair<fs::path, fs::path>> files(sources.begin(), sources.end());
    for (const auto& [out, in] : files) fs::create_directories(out.parent_path());

    const int count = static_cast<int>(files.size());
    std::atomic<int> done = 0;
    std::vector<std::string> complaints(files.size());
    {
        common::ProgressBar bar(count);
        common::forEachInParallel(count, [&](int i) {
            const auto place = static_cast<std::size_t>(i);
            try {
                convert(job, files[place].second, files[place].first, format);
            } catch (const std::exception& error) {
                complaints[place] = error.what();
            }
            bar.at(++done);
        });
    }
    int failures = 0;
    for (const std::string& complaint : complaints) {
        if (complaint.empty()) continue;
        std::cerr << "features: " << complaint << '\n';
        ++failures;
    }
    if (failures > 0) {
        throw std::runtime_error(std::to_string(failures) + " of " + std::to_string(count) + " files failed");
    }
}

void run(const Job& job) {
    if (fs::is_directory(job.in)) return convertFolder(job);
    std::string ending = job.out.extension().string();
    if (!ending.empty()) ending.erase(0, 1);
    convert(job, job.in, job.out, job.format ? *job.format : formatNamed(ending));
}

}  // namespace

int main(int argc, char** argv) {
    try {
        for (int i = 1; i < argc; ++i) {
            if (std::string_view(argv[i]) == "--help" || std::string_view(argv[i]) == "-h") {
                std::cout << kUsage << Choices::help() << std::flush;
                return std::cout ? 0 : 1;
            }
        }
        run(parse(argc, argv));
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "features: " << error.what() << "\n\n" << kUsage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "features: " << error.what() << '\n';
        return 1;
    }
}
