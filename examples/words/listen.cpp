#include "listen.h"

#include <iomanip>
#include <optional>
#include <ostream>

#include "common/aurora_stream.h"
#include "common/sample_input.h"

namespace words {
namespace {

constexpr float kFullScale = 32768;
constexpr double kShiftSeconds = 0.01;
constexpr std::size_t kFramesBefore = 30, kFramesAfter = 10;  // that are heard with a stretch of speech
constexpr std::size_t kLongest = 400;                         // frames in one stretch: no word takes longer
constexpr std::size_t kShortest = 8;

// Keeps the samples that may still be needed while decisions come in.
class Listener {
  public:
    Listener(const Model& model, std::ostream& out)
        : model_(model), out_(out), shift_(static_cast<std::size_t>(model.frontEnds.front().rate() / 100)) {}

    void keep(const std::vector<float>& samples) { kept_.insert(kept_.end(), samples.begin(), samples.end()); }
    // About the next frame.
    void decide(bool speech) {
        ++frame_;
        if (speech && !begin_) begin_ = frame_ - 1;
        if (begin_ && (!speech || frame_ - *begin_ >= kLongest)) tell();
        const std::size_t needed = (begin_ ? *begin_ : frame_) - std::min(begin_ ? *begin_ : frame_, kFramesBefore);
        forgetBefore(needed * shift_);
    }
    void finish() {
        if (begin_) tell();
    }

  private:
    void forgetBefore(std::size_t sample) {
        if (sample <= first_) return;
        kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(sample - first_));
        first_ = sample;
    }
    void tell() {
        const std::size_t begin = *begin_, end = frame_;
        begin_.reset();
        if (end - begin < kShortest) return;
        const std::size_t from = std::max(first_, (begin - std::min(begin, kFramesBefore)) * shift_);
        const std::size_t to = std::min(first_ + kept_.size(), (end + kFramesAfter) * shift_);
        Recording recording;
        recording.rate = model_.frontEnds.front().rate();
        recording.samples = Vector(static_cast<int>(to - from));
        check(kelsMulC_32f(&kept_[from - first_], 1 / kFullScale, recording.samples.data(), recording.samples.size()),
              "kelsMulC_32f");
        const Finding finding = model_.recogniser->recognise(analyse(recording, model_.frontEnds));
        if (!finding.isWord) return;
        const auto& candidates = finding.candidates;
        out_ << std::fixed << std::setprecision(2) << static_cast<double>(begin) * kShiftSeconds
             << " s: " << candidates[0].word << "  (cost " << candidates[0].cost;
        if (candidates.size() > 1) out_ << ", next " << candidates[1].word << ' ' << candidates[1].cost;
        out_ << ")" << std::endl;  // at once: somebody waits for it
    }

    const Model& model_;
    std::ostream& out_;
    std::size_t shift_;
    std::vector<float> kept_;
    std::size_t first_ = 0;  // the place in the stream of kept_[0]
    std::size_t frame_ = 0;  // decisions so far
    std::optional<std::size_t> begin_;
};

}  // namespace

void listen(const Model& model, const std::string& file, std::ostream& out) {
    const int rate = model.frontEnds.front().rate();
    common::SampleInput input(file, rate);
    if (input.rate() != rate)
        input.fail("is sampled at " + std::to_string(input.rate()) + " Hz, not at " + std::to_string(rate) + " Hz");
    if (rate != 8000 && rate != 16000) input.fail("listening takes a model of 8 or 16 kHz");
    Listener listener(model, out);
    common::AuroraStream stream(rate, {{}, {}, [&](bool speech) { listener.decide(speech); }, {}});
    while (!input.read(static_cast<std::size_t>(rate) / 20).empty()) {
        listener.keep(input.samples());
        stream.feed(input.samples().data(), input.samples().size());
    }
    stream.finish();
    listener.finish();
}

}  // namespace words
