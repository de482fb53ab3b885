#include "corpus.h"

#include <map>
#include <sstream>

#include "parallel.h"
#include "progress.h"

namespace words {
namespace {

struct Prepared {
    Recording recording;
    std::size_t position = 0;  // in the folder
    Views views;
    std::vector<Sound> variants;
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
            result.views = analyse(result.recording, frontEnds.at(result.recording.rate));
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
        if (!recording.views.empty()) rates << recording.recording.rate << ' ';
    std::map<int, int> counts;
    for (const auto& member : team.gather(rates.str())) {
        std::istringstream text(member);
        for (int rate = 0; text >> rate;) ++counts[rate];
    }
    const auto best = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return best == counts.end() ? 0 : best->first;
}

std::shared_ptr<const Matrix> rowsOf(const Matrix& m, const std::vector<int>& rows) {
    auto part = std::make_shared<Matrix>(static_cast<int>(rows.size()), m.cols());
    for (int t = 0; t < part->rows(); ++t)
        check(kelsCopy_32f(m.row(rows[static_cast<std::size_t>(t)]), part->row(t), m.cols()), "kelsCopy_32f");
    return part;
}

// The recording in noise, as training hears it: where its word stands is known from the recording itself.
Sound hear(const Recording& recording, const Surroundings& surroundings, const FrameSpan& word,
           const std::vector<FrontEnd>& frontEnds) {
    constexpr int kApart = 5;   // of the frames around the word that many are alike, and one counts
    constexpr int kMargin = 3;  // frames that hold some of both
    const NoisyRecording noisy = withNoise(recording, surroundings);
    const auto frameAt = [&](int sample) {
        return static_cast<int>(static_cast<double>(sample) / recording.rate /
                                static_cast<double>(frontEnds.front().settings().stepSeconds));
    };
    Sound sound;
    for (const auto& view : analyse(noisy.recording, frontEnds)) {
        const int rows = view->rows(), first = frameAt(noisy.begin);
        std::vector<int> inside, around;
        for (int t = std::min(first + word.begin, rows - 1); t < std::min(rows, first + word.end); ++t)
            inside.push_back(t);
        for (int t = 0; t < rows; t += kApart)
            if (t < first - kMargin || t > frameAt(noisy.end)) around.push_back(t);
        sound.word.push_back(rowsOf(*view, inside));
        sound.around.push_back(rowsOf(*view, around));
    }
    return sound;
}

void addVariants(std::vector<Prepared>& recordings, int rate, const std::vector<Variant>& variants) {
    if (variants.empty()) return;
    std::vector<std::vector<FrontEnd>> frontEnds;
    for (const auto& variant : variants) frontEnds.push_back(frontEndsFor(rate, variant.frontEnds));
    const FrontEnd finder(rate);
    Progress progress("analysing variants", static_cast<int>(recordings.size()));
    forEachInParallel(static_cast<int>(recordings.size()), [&](int i) {
        Prepared& recording = recordings[static_cast<std::size_t>(i)];
        progress.advance();
        if (!recording.complaint.empty()) return;
        const Analysis analysis = finder.analyse(recording.recording);
        for (std::size_t v = 0; v < variants.size(); ++v) {
            const auto& all = variants[v].surroundings;
            // Steps without a common factor go through all of them.
            const Surroundings& surroundings = all[(7 * recording.position + 3 * v) % all.size()];
            recording.variants.push_back(
                hear(recording.recording, surroundings, {analysis.wordBegin, analysis.wordEnd}, frontEnds[v]));
        }
    });
}

}  // namespace

Corpus loadCorpus(const std::filesystem::path& folder, const Analyses& analyses, Team& team) {
    return loadCorpus(listRecordings(folder), analyses, team);
}

Corpus loadCorpus(std::vector<LabelledFile> all, const Analyses& analyses, Team& team) {
    const ProcessorTimer timer;
    std::vector<LabelledFile> files;
    std::vector<int> shares;
    std::vector<std::size_t> positions;
    int position = 0;
    for (auto& file : all) {
        const int share = shareOf(position++);
        if (!sharesOf(team).contains(share)) continue;
        files.push_back(std::move(file));
        shares.push_back(share);
        positions.push_back(static_cast<std::size_t>(position - 1));
    }
    std::vector<Prepared> recordings(files.size());
    {
        FrontEnds frontEnds(analyses.plain);
        Progress progress("reading", static_cast<int>(files.size()));
        forEachInParallel(static_cast<int>(files.size()), [&](int i) {
            const auto index = static_cast<std::size_t>(i);
            recordings[index] = prepare(files[index].path, frontEnds);
            recordings[index].position = positions[index];
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
        Example example{files[i].label.word, shares[i], std::move(recording.views), std::move(recording.variants)};
        corpus.utterances.push_back({std::move(files[i]), std::move(example), seconds,
                                     std::make_shared<const Recording>(std::move(recording.recording))});
    }
    return corpus;
}

}  // namespace words
