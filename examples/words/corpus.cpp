#include "corpus.h"

#include <map>
#include <sstream>

#include "parallel.h"
#include "progress.h"

namespace words {
namespace {

struct Prepared {
    Recording recording;
    std::vector<Views> variants;
    std::string complaint;
};

// Front ends for each sample rate that turns up.
class FrontEnds {
  public:
    explicit FrontEnds(const std::vector<FrontEndSettings>& settings) : settings_(settings) {}
    const std::vector<FrontEnd>& at(int rate) {
        const std::lock_guard lock(guard_);
        auto& frontEnds = frontEnds_[rate];
        if (frontEnds.empty()) frontEnds = frontEndsFor(rate, settings_);
        return frontEnds;
    }

  private:
    std::vector<FrontEndSettings> settings_;
    std::mutex guard_;
    std::map<int, std::vector<FrontEnd>> frontEnds_;
};

Prepared prepare(const std::filesystem::path& file, FrontEnds& frontEnds) {
    Prepared result;
    try {
        result.recording = readRecording(file);
        try {
            result.variants.push_back(analyse(result.recording, frontEnds.at(result.recording.rate)));
        } catch (const std::runtime_error& error) {
            result.complaint = file.string() + ": " + error.what();
        }
    } catch (const std::runtime_error& error) {
        result.complaint = error.what();
    }
    return result;
}

// Of all that the team has.
int mostFrequentRate(const std::vector<Prepared>& recordings, Team& team) {
    std::ostringstream rates;
    for (const auto& recording : recordings)
        if (!recording.variants.empty()) rates << recording.recording.rate << ' ';
    std::map<int, int> counts;
    for (const auto& member : team.gather(rates.str())) {
        std::istringstream text(member);
        for (int rate = 0; text >> rate;) ++counts[rate];
    }
    const auto best = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return best == counts.end() ? 0 : best->first;
}

void addVariants(std::vector<Prepared>& recordings, int rate,
                 const std::vector<std::vector<FrontEndSettings>>& variants) {
    std::vector<std::vector<FrontEnd>> frontEnds;
    for (const auto& settings : variants) frontEnds.push_back(frontEndsFor(rate, settings));
    Progress progress("analysing variants", static_cast<int>(recordings.size()));
    forEachInParallel(static_cast<int>(recordings.size()), [&](int i) {
        Prepared& recording = recordings[static_cast<std::size_t>(i)];
        if (recording.complaint.empty())
            for (const auto& variant : frontEnds) recording.variants.push_back(analyse(recording.recording, variant));
        progress.advance();
    });
}

}  // namespace

Corpus loadCorpus(const std::filesystem::path& folder, const Analyses& analyses, Team& team) {
    const ProcessorTimer timer;
    std::vector<LabelledFile> files;
    std::vector<int> shares;
    int position = 0;
    for (auto& file : listRecordings(folder)) {
        const int share = shareOf(position++);
        if (!sharesOf(team).contains(share)) continue;
        files.push_back(std::move(file));
        shares.push_back(share);
    }
    std::vector<Prepared> recordings(files.size());
    {
        FrontEnds frontEnds(analyses.plain);
        Progress progress("reading", static_cast<int>(files.size()));
        forEachInParallel(static_cast<int>(files.size()), [&](int i) {
            const auto index = static_cast<std::size_t>(i);
            recordings[index] = prepare(files[index].path, frontEnds);
            progress.advance();
        });
    }

    Corpus corpus;
    corpus.preparation = timer.seconds();
    corpus.rate = mostFrequentRate(recordings, team);
    for (std::size_t i = 0; i < files.size(); ++i) {
        Prepared& recording = recordings[i];
        if (recording.complaint.empty() && recording.recording.rate != corpus.rate) {
            recording.complaint = files[i].path.string() + ": is sampled at " +
                                  std::to_string(recording.recording.rate) + " Hz, most others at " +
                                  std::to_string(corpus.rate) + " Hz";
        }
        if (!recording.complaint.empty()) corpus.complaints.push_back(recording.complaint);
    }
    if (corpus.rate != 0) addVariants(recordings, corpus.rate, analyses.variants);
    for (std::size_t i = 0; i < files.size(); ++i) {
        Prepared& recording = recordings[i];
        if (!recording.complaint.empty()) continue;
        const double seconds = recording.recording.seconds();
        corpus.seconds += seconds;
        Example example{files[i].label.word, shares[i], std::move(recording.variants)};
        corpus.utterances.push_back({std::move(files[i]), std::move(example), seconds});
    }
    return corpus;
}

}  // namespace words
