#include "learn.h"

#include <iostream>
#include <set>
#include <sstream>

#include "common/output_file.h"

namespace words {
namespace {

// The number of different words that the team has recordings of.
std::size_t countWords(const Corpus& corpus, Team& team) {
    std::ostringstream mine;
    for (const auto& utterance : corpus.utterances) mine << utterance.file.label.word << '\n';
    std::set<std::string> words;
    for (const auto& member : team.gather(mine.str())) {
        std::istringstream lines(member);
        for (std::string word; std::getline(lines, word);) words.insert(word);
    }
    return words.size();
}

}  // namespace

Corpus loadCorpusFor(const Choice& choice, const std::filesystem::path& folder, Team& team, std::optional<Trim> trim) {
    const auto recogniser = makeRecogniser(choice);
    Analyses analyses{recogniser->frontEnds(), recogniser->variants()};
    if (trim)
        for (auto& frontEnd : analyses.plain) frontEnd.trim = *trim;
    return loadCorpus(folder, analyses, team);
}

bool learn(const Choice& choice, const std::filesystem::path& folder, const std::filesystem::path& modelFile,
           Team& team, std::ostream& log) {
    for (const auto& file : listRecordings(folder)) common::refuseToOverwrite(file.path, modelFile);
    if (team.leads()) common::OutputFile{modelFile};  // whether it can be written shows before the work; it vanishes
    Corpus corpus = loadCorpusFor(choice, folder, team);
    for (const auto& complaint : corpus.complaints) std::cerr << "words: " << complaint << '\n';
    std::vector<double> counts{static_cast<double>(corpus.utterances.size()),
                               static_cast<double>(corpus.complaints.size())};
    team.sum(counts);
    const std::size_t words = countWords(corpus, team);
    if (words == 0) throw std::runtime_error(folder.string() + ": holds no usable recordings");
    if (words < 2) throw std::runtime_error(folder.string() + ": holds recordings of fewer than two words");

    auto recogniser = makeRecogniser(choice);
    Model model{frontEndsFor(corpus.rate, recogniser->frontEnds()), std::move(recogniser)};
    std::vector<Example> examples;
    for (auto& utterance : corpus.utterances) examples.push_back(std::move(utterance.example));
    std::ostringstream unread;
    model.recogniser->train(std::move(examples), team, team.leads() ? log : unread);
    if (team.leads()) {
        saveModel(model, modelFile);
        log << modelFile.string() << ": " << words << " words from " << static_cast<long>(counts[0])
            << " recordings at " << corpus.rate << " Hz\n";
    }
    return counts[1] == 0;
}

}  // namespace words
