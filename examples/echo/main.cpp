// echo: takes the loudspeaker's sound out of what the microphone heard, block by block as a call would deliver it.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

#include "common/echo_canceller.h"
#include "common/echo_suppressor.h"
#include "common/sound_input.h"
#include "common/sound_output.h"

namespace {

using common::Signal;

constexpr const char* kUsage =
    R"(usage: echo [OPTION]... FAR MICROPHONE OUT
FAR is what the loudspeaker played, MICROPHONE what was heard meanwhile: mono sound files of one rate, 8 to 48 kHz.  OUT
becomes a WAV file as long as MICROPHONE.
  --tail MS     length of the filter, 16 to 2000 ms: echo of the room and delay between the two (200)
  --suppress    also turn down what is left of the echo; --report then still tells of the filter alone
  --part N      samples that come at a time; what comes out does not depend on it (160)
  --report      a line a second: echo return loss in dB, blocks without reference, of single and double talk, changes
)";

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct Options {
    int tail = 200, part = 160;
    bool suppress = false, report = false;
    std::vector<std::string> files;
};

int number(const std::string& option, const std::string& text, int low, int high) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < low || value > high)
        throw UsageError(option + ": not a number from " + std::to_string(low) + " to " + std::to_string(high));
    return value;
}

Options read(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& a = arguments[i];
        const std::string value = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (a == "--tail") {
            options.tail = number(a, value, 16, 2000), ++i;
        } else if (a == "--part") {
            options.part = number(a, value, 1, 1 << 20), ++i;
        } else if (a == "--suppress") {
            options.suppress = true;
        } else if (a == "--report") {
            options.report = true;
        } else if (a.rfind("--", 0) == 0) {
            throw UsageError("unknown option " + a);
        } else {
            options.files.push_back(a);
        }
    }
    if (options.files.size() != 3) throw UsageError("three files are needed");
    return options;
}

// Echo return loss and the controller's flags, a second a line.
class Report {
  public:
    explicit Report(int rate) : rate_(rate) {}
    void add(const float* microphone, const float* error, int n, int flag) {
        for (int i = 0; i < n; ++i) heard_ += microphone[i] * microphone[i], left_ += error[i] * error[i];
        ++flags_[flag];
        samples_ += n;
        if (samples_ < (second_ + 1) * rate_) return;
        std::printf("%4ld s %6.1f dB   none %3d   single %3d   double %3d   change %3d\n", ++second_,
                    10 * std::log10((heard_ + 1e-12) / (left_ + 1e-12)), flags_[0], flags_[1], flags_[2], flags_[3]);
        heard_ = left_ = 0;
        std::fill_n(flags_, 4, 0);
    }

  private:
    int rate_, flags_[4] = {};
    long samples_ = 0, second_ = 0;
    double heard_ = 0, left_ = 0;
};

// A stream cut into parts of any length, cleaned block by block.
class Call {
  public:
    Call(int rate, const Options& options, common::SoundOutput& output) : canceller_(rate, options.tail), out_(output) {
        if (options.suppress) suppressor_.emplace(canceller_), late_ = canceller_.n;
        if (options.report) report_.emplace(rate);
    }
    void feed(const Signal& far, const Signal& microphone) {
        owed_ += static_cast<long>(microphone.size());
        push(far, microphone);
    }
    // What is owed comes out after silence.
    void finish() {
        const Signal silence(static_cast<std::size_t>(canceller_.n));
        while (owed_ > 0) push(silence, silence);
    }

  private:
    void push(const Signal& far, const Signal& microphone) {
        far_.insert(far_.end(), far.begin(), far.end());
        microphone_.insert(microphone_.end(), microphone.begin(), microphone.end());
        const auto n = static_cast<std::size_t>(canceller_.n);
        std::size_t done = 0;
        for (; microphone_.size() - done >= n; done += n) block(&far_[done], &microphone_[done]);
        far_.erase(far_.begin(), far_.begin() + static_cast<std::ptrdiff_t>(done));
        microphone_.erase(microphone_.begin(), microphone_.begin() + static_cast<std::ptrdiff_t>(done));
    }
    void block(const float* far, const float* microphone) {
        const int flag = canceller_.process(far, microphone);
        const float* const error = &canceller_.error[static_cast<std::size_t>(canceller_.n)];
        if (report_) report_->add(microphone, error, canceller_.n, flag);
        const float* const cleaned = suppressor_ ? suppressor_->process(flag) : error;
        const long count = std::min<long>(canceller_.n, owed_);
        if (std::exchange(late_, 0) > 0) return;  // what comes first belongs to the time before the stream
        out_.write(cleaned, count);
        owed_ -= count;
    }
    common::Canceller canceller_;
    std::optional<common::Suppressor> suppressor_;
    std::optional<Report> report_;
    common::SoundOutput& out_;
    Signal far_, microphone_;
    long owed_ = 0;  // samples that are to come out
    int late_ = 0;   // samples that the suppressor is late
};

void run(const Options& options) {
    common::SoundInput far(options.files[0]), microphone(options.files[1]);
    const int rate = microphone.info().samplerate;
    for (const common::SoundInput* input : {&far, &microphone})
        if (input->info().channels != 1) input->fail("has more channels than one");
    if (far.info().samplerate != rate) far.fail("has another rate than " + options.files[1]);
    if (rate < 8000 || rate > 48000) microphone.fail("is not sampled at 8 to 48 kHz");
    for (int i = 0; i < 2; ++i) common::refuseToOverwrite(options.files[i], options.files[2]);
    common::SoundOutput output(options.files[2], {0, rate, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0});
    Call call(rate, options, output);
    const auto part = static_cast<std::size_t>(options.part);
    Signal x, d;
    const auto get = [&](common::SoundInput& input, Signal& v) {
        v.assign(part, 0);
        return static_cast<std::size_t>(input.read(v.data(), static_cast<sf_count_t>(part)));
    };
    for (bool more = true;;) {  // a far end that is over is silent
        d.resize(get(microphone, d));
        if (d.empty()) break;
        x.assign(part, 0);
        if (more) more = get(far, x) > 0;
        x.resize(d.size());
        call.feed(x, d);
    }
    call.finish();
    output.finish();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + (argc > 0), argv + argc);
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h"))
        return std::fputs(kUsage, stdout) < 0 || std::fflush(stdout) != 0;
    try {
        run(read(arguments));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "echo: %s\n\n%s", error.what(), kUsage);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "echo: %s\n", error.what());
        return 1;
    }
}
