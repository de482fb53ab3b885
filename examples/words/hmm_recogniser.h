// Recognition by hidden Markov models: the word whose models give the frames the highest likelihood.
//
// There are several models of a word, one for each front end.  These differ in what they make of the recording: where one
// trusts the spectrum as it came, another evens out what microphones, rooms and voices do to it, and loses some of what
// tells vowels apart.  Their errors differ too, so that together they make fewer.
#ifndef WORDS_HMM_RECOGNISER_H
#define WORDS_HMM_RECOGNISER_H

#include "hmm.h"
#include "recogniser.h"

namespace words {

class HmmRecogniser : public Recogniser {
  public:
    std::string_view kind() const override { return kHmmKind; }
    std::vector<FrontEndSettings> frontEnds() const override;
    std::vector<std::vector<FrontEndSettings>> variants() const override;
    void train(std::vector<Example> examples, Team& team, std::ostream& log) override;
    std::vector<Candidate> recognise(const Views& views) const override;
    void save(ModelWriter& writer) const override;
    void load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) override;

  private:
    std::vector<std::vector<WordModel>> models_;  // by front end; then sorted by word, the same words for each
};

}  // namespace words

#endif
