// A folder of labelled recordings, read and analysed.
#ifndef WORDS_CORPUS_H
#define WORDS_CORPUS_H

#include <memory>
#include <string>
#include <vector>

#include "front_end.h"
#include "recogniser.h"

namespace words {

struct Utterance {
    LabelledFile file;
    Example example;
    double seconds = 0;  // of speech
    std::shared_ptr<const Recording> recording;
};

struct Corpus {
    int rate = 0;  // Hz, of all utterances
    std::vector<Utterance> utterances;
    double seconds = 0;                   // of speech in all
    double preparation = 0;               // seconds of processor time that reading and one analysis took
    std::vector<std::string> complaints;  // a message for each file that could not be used
};

// How recordings are analysed: for recognition, and in which other ways for training.
struct Analyses {
    std::vector<FrontEndSettings> plain;
    std::vector<Variant> variants;
};

// The recordings of the folder's most frequent sample rate; those of other rates are complained about.  A member of a
// team gets its shares of them.
// Throws std::runtime_error if there is no such folder; it may hold nothing of use.
Corpus loadCorpus(const std::filesystem::path& folder, const Analyses& analyses, Team& team);
// The same of a list of files.
Corpus loadCorpus(std::vector<LabelledFile> all, const Analyses& analyses, Team& team);

}  // namespace words

#endif
