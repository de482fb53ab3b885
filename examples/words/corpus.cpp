#include "corpus.h"

#include <map>

#include "parallel.h"
#include "progress.h"

namespace words {
namespace {

struct Prepared {
    std::shared_ptr<const Matrix> features;
    int rate = 0;
    double seconds = 0;
    std::string complaint;
};

// One front end for each sample rate that turns up.
class FrontEnds {
  public:
    explicit FrontEnds(const FrontEndSettings& settings) : settings_(settings) {}
    const FrontEnd& at(int rate) {
        const std::lock_guard lock(guard_);
        return frontEnds_.try_emplace(rate, rate, settings_).first->second;
    }

  private:
    FrontEndSettings settings_;
    std::mutex guard_;
    std::map<int, FrontEnd> frontEnds_;
};

Prepared prepare(const std::filesystem::path& file, FrontEnds& frontEnds) {
    Prepared result;
    try {
        const Recording recording = readRecording(file);
        result.rate = recording.rate;
        result.seconds = recording.seconds();
        try {
            Matrix features = frontEnds.at(recording.rate).analyse(recording).features;
            result.features = std::make_shared<const Matrix>(std::move(features));
        } catch (const std::runtime_error& error) {
            result.complaint = file.string() + ": " + error.what();
        }
    } catch (const std::runtime_error& error) {
        result.complaint = error.what();
    }
    return result;
}

int mostFrequentRate(const std::vector<Prepared>& recordings) {
    std::map<int, int> counts;
    for (const auto& recording : recordings)
        if (recording.features) ++counts[recording.rate];
    const auto best = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return best == counts.end() ? 0 : best->first;
}

}  // namespace

Corpus loadCorpus(const std::filesystem::path& folder, const FrontEndSettings& settings) {
    const ProcessorTimer timer;
    std::vector<LabelledFile> files = listRecordings(folder);
    std::vector<Prepared> recordings(files.size());
    {
        FrontEnds frontEnds(settings);
        Progress progress("reading", static_cast<int>(files.size()));
        forEachInParallel(static_cast<int>(files.size()), [&](int i) {
            const auto index = static_cast<std::size_t>(i);
            recordings[index] = prepare(files[index].path, frontEnds);
            progress.advance();
        });
    }

    Corpus corpus;
    corpus.rate = mostFrequentRate(recordings);
    for (std::size_t i = 0; i < files.size(); ++i) {
        Prepared& recording = recordings[i];
        if (recording.features && recording.rate != corpus.rate) {
            recording.complaint = files[i].path.string() + ": is sampled at " + std::to_string(recording.rate) +
                                  " Hz, most others at " + std::to_string(corpus.rate) + " Hz";
        }
        if (!recording.complaint.empty()) {
            corpus.complaints.push_back(recording.complaint);
            continue;
        }
        corpus.seconds += recording.seconds;
        corpus.utterances.push_back({std::move(files[i]), std::move(recording.features), recording.seconds});
    }
    corpus.preparation = timer.seconds();
    return corpus;
}

}  // namespace words
