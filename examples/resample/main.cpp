// resample: converts a sound file to another sampling rate.  The usage text below says the rest.
#include <sndfile.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/progress_bar.h"
#include "common/sound_input.h"
#include "common/stream.h"

namespace {

constexpr std::string_view kUsage =
    R"(usage: resample IN OUT --rate HZ [--quality fast|good|best]

Converts the sound file IN to the sampling rate HZ and writes it to OUT with the same channels, in the same format and
as long as it was.  Samples beyond full scale are clipped and counted.

  fast   passes 79 % of the slower rate's band, keeps what lies beyond 68 dB down
  good   93 %, 127 dB (the default)
  best   95 %, 138 dB

Exit status: 0 if all is well, 1 if something failed (OUT is then left as it was), 2 if the command line is wrong.
)";

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Job {
    std::string in, out;
    int rate = 0;
    Quality quality = kQualities[1];
};

Job parse(int argc, char** argv) {
    Job job;
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool option = argument == "--rate" || argument == "--quality";
        if (argument.starts_with("-") && argument != "-" && !option)
            throw UsageError("unknown option " + std::string(argument));
        if (!option) {
            files.emplace_back(argument);
            continue;
        }
        if (++i == argc) throw UsageError(std::string(argument) + " needs a value");
        const std::string_view value = argv[i];
        if (argument == "--rate") {
            const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), job.rate);
            if (error != std::errc() || end != value.data() + value.size() || job.rate < 1)
                throw UsageError("\"" + std::string(value) + "\" is not a sampling rate in Hz");
        } else {
            const auto* const quality = std::find_if(std::begin(kQualities), std::end(kQualities),
                                                     [&](const Quality& q) { return q.name == value; });
            if (quality == std::end(kQualities)) throw UsageError("there is no quality \"" + std::string(value) + "\"");
            job.quality = *quality;
        }
    }
    if (files.size() != 2) throw UsageError("one file to read and one to write are needed");
    if (job.rate == 0) throw UsageError("--rate is missing");
    job.in = files[0];
    job.out = files[1];
    return job;
}

void convert(const Job& job) {
    common::SoundInput input(job.in);
    SF_INFO info = input.info();
    const int inRate = info.samplerate, channels = info.channels;
    common::refuseToOverwrite(job.in, job.out);

    const Resampler resampler(inRate, job.rate, job.quality);
    std::vector<Channel> signal(static_cast<std::size_t>(channels), Channel(resampler));
    const sf_count_t headerFrames = info.frames;
    info.samplerate = job.rate;
    common::SoundOutput output(job.out, info);

    constexpr int block = 8192;
    std::vector<float> frames(static_cast<std::size_t>(block) * signal.size()), one(block), interleaved;
    std::vector<std::vector<float>> results(signal.size());
    sf_count_t readFrames = 0, writtenFrames = 0, clipped = 0;

    // Passes n frames on, and of the results at most `limit`.
    const auto pass = [&](sf_count_t n, sf_count_t limit) {
        for (std::size_t c = 0; c < signal.size(); ++c) {
            for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) one[i] = frames[i * signal.size() + c];
            results[c].clear();
            signal[c].feed(one.data(), static_cast<int>(n), results[c]);
        }
        const auto count =
            static_cast<std::size_t>(std::min<sf_count_t>(limit, static_cast<sf_count_t>(results[0].size())));
        interleaved.resize(count * signal.size());
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t c = 0; c < signal.size(); ++c) {
                interleaved[i * signal.size() + c] = results[c][i];
                clipped += std::fabs(results[c][i]) > 1;
            }
        output.write(interleaved.data(), static_cast<sf_count_t>(count));
        writtenFrames += static_cast<sf_count_t>(count);
    };
    {
        common::ProgressBar progress(headerFrames);
        constexpr sf_count_t all = std::numeric_limits<sf_count_t>::max();
        while (const sf_count_t n = input.read(frames.data(), block)) {
            pass(n, all);
            readFrames += n;
            progress.at(readFrames);
        }
        // Silence behind the end, until the output is as long as the input was.
        const auto wanted =
            static_cast<sf_count_t>(std::llround(static_cast<long double>(readFrames) * job.rate / inRate));
        std::fill(frames.begin(), frames.end(), 0.0F);
        while (writtenFrames < wanted) pass(block, wanted - writtenFrames);
    }
    output.finish();
    const bool floats =
        (info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT || (info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_DOUBLE;
    if (clipped > 0 && !floats) std::cerr << "resample: " << clipped << " samples were clipped\n";
}

}  // namespace

int main(int argc, char** argv) {
    try {
        for (int i = 1; i < argc; ++i) {
            if (std::string_view(argv[i]) == "--help" || std::string_view(argv[i]) == "-h") {
                std::cout << kUsage << std::flush;
                return std::cout ? 0 : 1;
            }
        }
        convert(parse(argc, argv));
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "resample: " << error.what() << "\n\n" << kUsage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "resample: " << error.what() << '\n';
        return 1;
    }
}
