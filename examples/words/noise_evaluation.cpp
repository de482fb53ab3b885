#include "noise_evaluation.h"

#include <cmath>
#include <iomanip>
#include <ostream>

#include "common/sound_output.h"
#include "parallel.h"
#include "progress.h"

namespace words {
namespace {

constexpr float kSnrsDb[] = {20, 15, 10, 5, 0};

std::vector<Surroundings> conditions() {
    std::vector<Surroundings> all(1);
    for (const NoiseKind kind : kNoiseKinds) {
        for (const float snrDb : kSnrsDb) {
            Surroundings one;
            one.kind = kind;
            one.snrDb = snrDb;
            all.push_back(one);
        }
    }
    return all;
}

// What speakers other than this one have said.
std::vector<const Recording*> othersThan(const std::string& speaker, const Corpus& corpus) {
    std::vector<const Recording*> others;
    for (const auto& utterance : corpus.utterances)
        if (utterance.file.label.speaker != speaker) others.push_back(utterance.recording.get());
    return others;
}

struct Interval {
    double low, high;
};
Interval wilson(int right, int all) {
    const double z = 1.96, n = all, share = right / n, middle = share + z * z / (2 * n);
    const double half = z * std::sqrt(share * (1 - share) / n + z * z / (4 * n * n)), whole = 1 + z * z / n;
    return {100 * (middle - half) / whole, 100 * (middle + half) / whole};
}

}  // namespace

void evaluateInNoise(const Corpus& corpus, const Split& split, const Choice& choice, const NoiseTest& test,
                     std::ostream& out) {
    const auto all = conditions();
    std::vector<std::atomic<int>> right(all.size());
    int count = 0;
    std::map<std::string, std::vector<const Recording*>> talkers;
    for (const auto& utterance : corpus.utterances) {
        const std::string& speaker = utterance.file.label.speaker;
        if (!talkers.contains(speaker)) talkers[speaker] = othersThan(speaker, corpus);
    }
    forEachFold(corpus, split, choice, [&](const auto& recogniser, const auto& tests, const auto&) {
        const auto frontEnds = frontEndsFor(corpus.rate, makeRecogniser(choice)->frontEnds());
        std::vector<const Utterance*> chosen;
        for (std::size_t i = 0; i < tests.size(); i += static_cast<std::size_t>(test.every)) chosen.push_back(tests[i]);
        count += static_cast<int>(chosen.size()) * test.draws;
        Progress progress("recognising in noise", static_cast<int>(chosen.size()));
        forEachInParallel(static_cast<int>(chosen.size()), [&](int i) {
            const Utterance& utterance = *chosen[static_cast<std::size_t>(i)];
            const Label& label = utterance.file.label;
            for (std::size_t c = 0; c < all.size(); ++c) {
                for (int draw = 0; draw < test.draws; ++draw) {
                    Surroundings surroundings = all[c];
                    surroundings.draw = static_cast<unsigned>(draw);
                    const auto noisy = withNoise(*utterance.recording, surroundings, talkers.at(label.speaker));
                    const auto finding = recogniser.recognise(analyse(noisy.recording, frontEnds));
                    if (finding.candidates.front().word == label.word) ++right[c];
                }
            }
            progress.advance();
        });
    });
    for (std::size_t c = 0; c < all.size(); ++c) {
        const Interval interval = wilson(right[c], count);
        const bool quiet = all[c].kind == NoiseKind::none;
        out << nameOf(all[c].kind) << ' ' << (quiet ? "-" : std::to_string(std::lround(all[c].snrDb))) << std::fixed
            << std::setprecision(1) << ' ' << 100.0 * right[c] / count << ' ' << interval.low << ' ' << interval.high
            << ' ' << right[c] << ' ' << count << '\n';
    }
}

void writeNoisy(const Corpus& corpus, const Surroundings& surroundings, int every,
                const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (std::size_t i = 0; i < corpus.utterances.size(); i += static_cast<std::size_t>(every)) {
        const Utterance& utterance = corpus.utterances[i];
        const auto others = othersThan(utterance.file.label.speaker, corpus);
        const NoisyRecording noisy = withNoise(*utterance.recording, surroundings, others);
        const auto file = folder / utterance.file.path.filename().replace_extension(".wav");
        common::refuseToOverwrite(utterance.file.path, file);
        SF_INFO info{0, noisy.recording.rate, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0};
        common::SoundOutput output(file, info);
        output.write(noisy.recording.samples.data(), noisy.recording.samples.size());
        output.finish();
    }
}

}  // namespace words
