#include "evaluate.h"

#include <iomanip>
#include <ostream>
#include <set>
#include <sstream>

#include "parallel.h"
#include "progress.h"
#include "recogniser.h"

namespace words {
namespace {

constexpr std::size_t kMatrixWords = 20;  // more words do not fit side by side
constexpr std::size_t kListedConfusions = 20;
constexpr int kCell = 7;

struct Tally {
    int right = 0;
    int all = 0;
    void count(bool isRight) {
        right += isRight ? 1 : 0;
        ++all;
    }
    double percent() const { return all == 0 ? 0 : 100.0 * right / all; }
};

std::string fixed(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

// At most `width` characters of it, with blanks before or after.
std::string cell(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text.substr(0, width);
}
std::string label(const std::string& text, std::size_t width) {
    return text.substr(0, width) + std::string(width - std::min(width, text.size()), ' ');
}

std::size_t longest(const std::set<std::string>& texts, std::size_t atLeast) {
    for (const auto& text : texts) atLeast = std::max(atLeast, std::min<std::size_t>(text.size(), 20));
    return atLeast;
}

}  // namespace

void forEachFold(const Corpus& corpus, const Split& split, const Choice& choice, const FoldTest& test) {
    std::set<std::string> speakers;
    for (const auto& utterance : corpus.utterances) speakers.insert(utterance.file.label.speaker);
    const auto run = [&](const auto& isTest) {
        std::vector<Example> examples;
        std::vector<const Utterance*> tests;
        std::set<std::string> known;
        for (const Utterance& utterance : corpus.utterances) {
            if (isTest(utterance.file.label)) {
                tests.push_back(&utterance);
            } else {
                examples.push_back(utterance.example);
                known.insert(utterance.file.label.word);
            }
        }
        if (tests.empty()) throw std::runtime_error("no recording is chosen for the test");
        if (known.size() < 2) throw std::runtime_error("the recordings left for training hold fewer than two words");
        const auto recogniser = makeRecogniser(choice);
        Team alone;
        std::ostringstream unread;
        recogniser->train(std::move(examples), alone, unread);
        if (split.adapt > 0) {
            if (tests.size() <= static_cast<std::size_t>(split.adapt))
                throw std::runtime_error("too few recordings to adapt to a speaker and test");
            const auto rest = tests.begin() + split.adapt;
            std::stable_sort(tests.begin(), tests.end(), [](const Utterance* a, const Utterance* b) {
                return a->file.label.index < b->file.label.index;
            });
            std::vector<Example> heard;
            for (auto one = tests.begin(); one != rest; ++one) heard.push_back((*one)->example);
            recogniser->adapt(heard);
            tests.erase(tests.begin(), rest);
        }
        test(*recogniser, tests, known);
    };
    if (split.testIndex) {
        const auto [first, last] = *split.testIndex;
        return run([&](const Label& l) { return l.index >= first && l.index <= last; });
    }
    if (split.speaker && !speakers.contains(*split.speaker))
        throw std::runtime_error("there is no recording of the speaker \"" + *split.speaker + "\"");
    if (speakers.size() < 2)
        throw std::runtime_error(
            "leaving a speaker out takes recordings of two speakers at least; with one, use --test-index");
    for (const auto& speaker : speakers)
        if (!split.speaker || speaker == *split.speaker) run([&](const Label& l) { return l.speaker == speaker; });
}

Evaluation::Evaluation(const Corpus& corpus, const Split& split, const Choice& choice) {
    forEachFold(corpus, split, choice, [&](const auto& recogniser, const auto& tests, const auto& known) {
        std::vector<std::string> recognised(tests.size());
        Progress progress("recognising", static_cast<int>(tests.size()));
        const ProcessorTimer timer;
        forEachInParallel(static_cast<int>(tests.size()), [&](int i) {
            const auto index = static_cast<std::size_t>(i);
            recognised[index] = recogniser.recognise(tests[index]->example.views).candidates.front().word;
            progress.advance();
        });
        spentSeconds_ += timer.seconds();
        for (std::size_t i = 0; i < tests.size(); ++i) {
            const Label& spoken = tests[i]->file.label;
            trials_.push_back({spoken.speaker, spoken.word, recognised[i]});
            if (!known.contains(spoken.word)) unknownWords_.push_back(spoken.word);
            testedSeconds_ += tests[i]->seconds;
            spentSeconds_ += corpus.preparation * tests[i]->seconds / corpus.seconds;
        }
    });
}

void Evaluation::print(std::ostream& out) const {
    printAccuracy(out);
    printConfusions(out);
    for (const auto& word : std::set(unknownWords_.begin(), unknownWords_.end()))
        out << "note: \"" << word << "\" was tested where no recording of it was left for training\n";

    Tally total;
    for (const auto& trial : trials_) total.count(trial.right());
    out << "speed: " << fixed(testedSeconds_ / spentSeconds_, 0) << " times real time on one processor ("
        << fixed(testedSeconds_, 1) << " s of speech took " << fixed(spentSeconds_, 2) << " s of processor time)\n"
        << "accuracy: " << fixed(total.percent(), 1) << " % (" << total.right << " of " << total.all << ")\n";
}

// A table of percentages: a row a word, a column a speaker.
void Evaluation::printAccuracy(std::ostream& out) const {
    std::set<std::string> words;
    std::set<std::string> speakers;
    std::map<std::pair<std::string, std::string>, Tally> tallies;
    const std::string all;  // no speaker and no word is called so
    for (const auto& trial : trials_) {
        words.insert(trial.word);
        speakers.insert(trial.speaker);
        for (const auto& word : {trial.word, all})
            for (const auto& speaker : {trial.speaker, all}) tallies[{word, speaker}].count(trial.right());
    }
    const std::size_t first = longest(words, 9);
    const std::size_t width = longest(speakers, 6) + 2;
    const auto row = [&](const std::string& name, const std::string& word) {
        out << label(name, first);
        for (const auto& speaker : speakers) {
            const auto tally = tallies.find({word, speaker});
            out << cell(tally == tallies.end() ? "-" : fixed(tally->second.percent(), 1), width);
        }
        out << cell(fixed(tallies[{word, all}].percent(), 1), kCell + 2) << '\n';
    };
    out << "Words recognised, in per cent\n\n" << label("word", first);
    for (const auto& speaker : speakers) out << cell(speaker.empty() ? "-" : speaker, width);
    out << cell("all", kCell + 2) << '\n';
    for (const auto& word : words) row(word, word);
    row("all words", all);
    out << '\n';
}

void Evaluation::printConfusions(std::ostream& out) const {
    std::set<std::string> words;
    std::map<std::pair<std::string, std::string>, int> counts;
    for (const auto& trial : trials_) {
        words.insert({trial.word, trial.recognised});
        ++counts[{trial.word, trial.recognised}];
    }
    if (words.size() <= kMatrixWords) {
        const std::size_t first = longest(words, 6);
        out << "Confusions: rows were spoken, columns recognised\n\n" << label("", first);
        for (const auto& word : words) out << cell(word, kCell);
        out << '\n';
        for (const auto& spoken : words) {
            out << label(spoken, first);
            for (const auto& recognised : words) {
                const auto count = counts.find({spoken, recognised});
                out << cell(count == counts.end() ? "." : std::to_string(count->second), kCell);
            }
            out << '\n';
        }
    } else {
        std::vector<std::pair<int, std::string>> confusions;
        for (const auto& [pair, count] : counts)
            if (pair.first != pair.second) confusions.emplace_back(-count, pair.first + " taken for " + pair.second);
        std::sort(confusions.begin(), confusions.end());
        if (confusions.size() > kListedConfusions) confusions.resize(kListedConfusions);
        out << "Most frequent confusions\n\n";
        for (const auto& [count, text] : confusions) out << cell(std::to_string(-count), kCell) << "  " << text << '\n';
    }
    out << '\n';
}

}  // namespace words
