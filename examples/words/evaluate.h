// How well words are recognised: trains on a part of the recordings, recognises the rest and counts.
#ifndef WORDS_EVALUATE_H
#define WORDS_EVALUATE_H

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "corpus.h"

namespace words {

// Which recordings are recognised; the others train.
struct Split {
    std::optional<std::pair<int, int>> testIndex;  // those whose index is in this range, both ends included
    std::optional<std::string> speaker;            // those of this speaker
    // Neither: each speaker in turn.
    int adapt = 0;  // with so many recordings of the speaker left out, the first takes; the rest is recognised
};

// Learns from the one part and hands the other to test(recogniser, recordings, words that were learned), fold by fold.
// Throws std::runtime_error if the split leaves nothing to train on or nothing to recognise.
using FoldTest =
    std::function<void(const Recogniser&, const std::vector<const Utterance*>&, const std::set<std::string>& known)>;
void forEachFold(const Corpus& corpus, const Split& split, const Choice& choice, const FoldTest& test);

class Evaluation {
  public:
    Evaluation(const Corpus& corpus, const Split& split, const Choice& choice);
    // Accuracy by speaker and word, confusions, speed; the last line is the accuracy of all.
    void print(std::ostream& out) const;

  private:
    struct Trial {
        std::string speaker, word, recognised;
        bool right() const { return word == recognised; }
    };
    void printAccuracy(std::ostream& out) const;
    void printConfusions(std::ostream& out) const;

    std::vector<Trial> trials_;
    std::vector<std::string> unknownWords_;  // that some fold had no training for
    double testedSeconds_ = 0;               // of speech
    double spentSeconds_ = 0;                // of processor time on recognising it, reading and analysis included
};

}  // namespace words

#endif
