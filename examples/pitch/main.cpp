// pitch: the fundamental frequency of speech, every 10 ms.  The usage text below says the rest.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/output_file.h"
#include "common/progress_bar.h"
#include "common/sample_input.h"
#include "common/text_output.h"
#include "picture.h"
#include "tracker.h"

namespace {

namespace fs = std::filesystem;
using namespace pitch;

constexpr const char* kUsage =
    R"(usage: pitch IN [OUT] [--lowest HZ] [--highest HZ] [--rate HZ] [--picture FILE]

Tells the fundamental frequency of the speech in IN, a line every 10 ms: the time in seconds, the frequency in Hz, which
is 0 where there is no voice, and the strength of the voice from 0 to 1.

  IN               a mono sound file of 6 to 192 kHz, or - for 16-bit samples on standard input, as
                   `arecord -t raw -f S16_LE -r 16000` gives them
  OUT              a text file; without it, or with -, lines go to standard output as soon as they are known, 0.5 s
                   after their moment at most
  --lowest HZ      of the frequencies that are looked for, 25 to 500; 60 if it is not given
  --highest HZ     up to 1000; 400 if it is not given
  --rate HZ        of standard input; 16000 if it is not given
  --picture FILE   draws the waveform, the candidates and the track, too: a .png or .svg

Exit status: 0 if all is well, 1 if something failed (OUT is then left as it was), 2 if the command line is wrong.
)";

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Job {
    std::string in, out = "-";
    fs::path picture;
    int rate = 16000;
    Range range;
};

template <class T>
T numberIn(const std::string& option, const std::string& text, T least, T greatest) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) throw UsageError(option + ": no number: " + text);
    if (!(value >= least && value <= greatest)) throw UsageError(option + ": out of range: " + text);
    return value;
}

Job parse(const std::vector<std::string>& arguments) {
    Job job;
    std::vector<std::string> files;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& option = arguments[i];
        if (option.empty() || option[0] != '-' || option == "-") {
            files.push_back(option);
            continue;
        }
        if (option != "--lowest" && option != "--highest" && option != "--rate" && option != "--picture") {
            throw UsageError("unknown option " + option);
        }
        if (++i == arguments.size()) throw UsageError(option + " needs a value");
        const std::string& value = arguments[i];
        if (option == "--lowest") job.range.lowest = numberIn(option, value, 25.0F, 500.0F);
        if (option == "--highest") job.range.highest = numberIn(option, value, 50.0F, 1000.0F);
        if (option == "--rate") job.rate = numberIn(option, value, 6000, 192000);
        if (option == "--picture") job.picture = value;
    }
    if (files.empty() || files.size() > 2) throw UsageError("one file to read, and at most one to write, are needed");
    if (job.range.highest < 1.25F * job.range.lowest) throw UsageError("--highest is too close to --lowest");
    const fs::path ending = job.picture.extension();
    if (!job.picture.empty() && ending != ".png" && ending != ".svg") {
        throw UsageError(job.picture.string() + " is neither a .png nor a .svg");
    }
    job.in = files[0];
    if (files.size() == 2) job.out = files[1];
    return job;
}

void run(const Job& job) {
    constexpr std::size_t kPart = 400, kMostDrawn = 1 << 26;
    common::SampleInput input(job.in, job.rate);
    if (input.rate() < 6000 || input.rate() > 192000) input.fail("is not sampled at 6 to 192 kHz");
    for (const fs::path& written : {fs::path(job.out), job.picture}) {
        if (job.in != "-" && written != "-" && !written.empty()) common::refuseToOverwrite(job.in, written);
    }
    const bool draw = !job.picture.empty();
    Wave wave{{}, input.rate()};
    std::vector<Frame> frames;

    common::TextOutput output(job.out);
    common::ProgressBar bar(job.out == "-" && !draw ? 0 : input.length());
    Tracker tracker(input.rate(), job.range, draw, [&](const Frame& frame) {
        const double frequency = static_cast<double>(frame.frequency), strength = static_cast<double>(frame.strength);
        output.print("%.2f %.2f %.3f\n", frame.time, frequency, strength);
        output.endLine();
        if (draw) frames.push_back(frame);
    });
    std::int64_t taken = 0;
    while (!input.read(kPart).empty()) {
        const std::vector<float>& samples = input.samples();
        tracker.feed(samples.data(), samples.size());
        bar.at(taken += static_cast<std::int64_t>(samples.size()));
        if (!draw) continue;
        wave.samples.insert(wave.samples.end(), samples.begin(), samples.end());
        if (wave.samples.size() > kMostDrawn) input.fail("is too long to draw");
    }
    tracker.finish();
    if (draw) {
        if (frames.empty()) input.fail("has nothing to draw");
        const std::string title = job.in == "-" ? "standard input" : fs::path(job.in).filename().string();
        common::writeFile(job.picture, pictureOf(wave, frames, job.range, title, job.picture.extension() == ".svg"));
    }
    output.finish();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + (argc > 0), argv + argc);
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
        return std::fputs(kUsage, stdout) < 0 || std::fflush(stdout) != 0;
    }
    try {
        run(parse(arguments));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "pitch: %s\n\n%s", error.what(), kUsage);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pitch: %s\n", error.what());
        return 1;
    }
}
