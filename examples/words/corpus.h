// A folder of labelled recordings, read and analysed.
#ifndef WORDS_CORPUS_H
#define WORDS_CORPUS_H

#include <memory>
#include <string>
#include <vector>

#include "front_end.h"

namespace words {

struct Utterance {
    LabelledFile file;
    std::shared_ptr<const Matrix> features;
    double seconds = 0;  // of speech
};

struct Corpus {
    int rate = 0;  // Hz, of all utterances
    std::vector<Utterance> utterances;
    double seconds = 0;                   // of speech in all
    double preparation = 0;               // seconds of processor time that reading and analysis took
    std::vector<std::string> complaints;  // a message for each file that could not be used
};

// The recordings of the folder's most frequent sample rate; those of other rates are complained about.
// Throws std::runtime_error if there is no such folder; it may hold nothing of use.
Corpus loadCorpus(const std::filesystem::path& folder, const FrontEndSettings& settings = {});

}  // namespace words

#endif
