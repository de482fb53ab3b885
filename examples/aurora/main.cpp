// aurora: the front end as a program, from a sound file or a live stream to features or to cleaned speech.
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/aurora_stream.h"
#include "common/sample_input.h"
#include "common/sound_output.h"
#include "common/stream.h"
#include "common/text_output.h"

namespace {

constexpr const char* kUsage =
    R"(usage: aurora features IN [OUT]     39 values per 10 ms, a line a frame
       aurora clean IN [OUT]        the denoised waveform at 8 kHz
       aurora gains IN [OUT]        the noise filter's gains in 25 mel bands per 10 ms, a line each

IN is a mono sound file of 8, 11, 11.025 or 16 kHz, or - for 16-bit samples on standard input, as
`arecord -t raw -f S16_LE -r 8000` gives them, of the rate that --rate HZ says (8000 if it does not).  OUT is a text
file or a WAV file.  Without it, or with -, text or 16-bit samples go to standard output as soon as they are known.

Cleaned speech comes 40 ms late.  The features of a frame of 25 ms come 85 ms after its end: 45 ms of them are the noise
reduction's, 40 ms those of slopes and curvatures.  16 kHz adds 4 ms, 11 kHz 4 ms.  The first value that is written
belongs to the first sample all the same.
)";

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Standard output, or a file that appears when it is complete.
class SpeechOutput {
  public:
    explicit SpeechOutput(const std::string& name) {
        SF_INFO info{0, 8000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0};
        if (name != "-") output_.emplace(name, info);
    }
    void write(const float* samples, int count) {
        constexpr float kFullScale = 32768;
        const auto n = static_cast<std::size_t>(count);
        if (output_) {
            std::vector<float> scaled(samples, samples + n);
            for (float& x : scaled) x /= kFullScale;
            return output_->write(scaled.data(), count);
        }
        std::vector<Kel16s> integers(n);
        kelsConvert_32f16s_Sfs(samples, integers.data(), count, 1, 0);
        if (std::fwrite(integers.data(), sizeof(Kel16s), n, stdout) != n || std::fflush(stdout) != 0)
            throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
    }
    void finish() {
        if (output_) output_->finish();
    }

  private:
    std::optional<common::SoundOutput> output_;
};

// Everything that the input gives through the front end.
void process(common::SampleInput& input, common::AuroraStream::Listener listener) {
    constexpr std::size_t kPart = 800;
    constexpr Quality kForSpeech{"speech", 94, 512, 0.90F, 9};
    const int rate = input.rate();
    if (rate == 8000 || rate == 16000) {
        common::AuroraStream stream(rate, std::move(listener));
        while (!input.read(kPart).empty()) stream.feed(input.samples().data(), input.samples().size());
        return stream.finish();
    }
    if (rate != 11000 && rate != 11025) input.fail("is not sampled at 8, 11, 11.025 or 16 kHz");
    common::AuroraStream stream(8000, std::move(listener));
    const Resampler resampler(rate, 8000, kForSpeech);
    Channel channel(resampler);
    std::vector<float> resampled;
    std::size_t taken = 0, given = 0;
    const auto pass = [&](const float* samples, int count, std::size_t most) {
        resampled.clear();
        channel.feed(samples, count, resampled);
        const std::size_t n = std::min(resampled.size(), most);
        stream.feed(resampled.data(), n);
        given += n;
    };
    while (!input.read(kPart).empty()) {
        taken += input.samples().size();
        pass(input.samples().data(), static_cast<int>(input.samples().size()), resampled.max_size());
    }
    const std::size_t whole = taken * 8000 / static_cast<std::size_t>(rate);
    const std::vector<float> silence(kPart);
    while (given < whole) pass(silence.data(), static_cast<int>(kPart), whole - given);
    stream.finish();
}

void run(std::vector<std::string> arguments) {
    int rate = 8000;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] != "--rate") continue;
        if (i + 1 == arguments.size()) throw UsageError("--rate needs a value");
        const std::string& value = arguments[i + 1];
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), rate);
        if (error != std::errc() || end != value.data() + value.size()) throw UsageError("--rate: no number: " + value);
        arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(i), arguments.begin() + i + 2);
        break;
    }
    if (arguments.size() < 2 || arguments.size() > 3) throw UsageError("a command and one or two files are needed");
    const std::string in = arguments[1], out = arguments.size() == 3 ? arguments[2] : "-";
    const bool clean = arguments[0] == "clean", gains = arguments[0] == "gains";
    if (!clean && !gains && arguments[0] != "features") throw UsageError("unknown command " + arguments[0]);
    common::SampleInput input(in, rate);
    if (in != "-" && out != "-") common::refuseToOverwrite(in, out);
    if (clean) {
        SpeechOutput output(out);
        process(input, {[&](const float* samples, int count) { output.write(samples, count); }, {}, {}, {}});
        output.finish();
    } else {
        common::TextOutput output(out);
        const int columns = gains ? 25 : common::AuroraStream::kFeatures;
        common::AuroraStream::Listener listener;
        (gains ? listener.gains : listener.features) = [&](const float* row) {
            for (int i = 0; i < columns; ++i) {
                output.print("%.7g%c", static_cast<double>(row[i]), i + 1 < columns ? ' ' : '\n');
            }
            output.endLine();
        };
        process(input, listener);
        output.finish();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + (argc > 0), argv + argc);
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
        return std::fputs(kUsage, stdout) < 0 || std::fflush(stdout) != 0;
    }
    try {
        run(arguments);
    } catch (const UsageError& error) {
        std::fprintf(stderr, "aurora: %s\n\n%s", error.what(), kUsage);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "aurora: %s\n", error.what());
        return 1;
    }
}
