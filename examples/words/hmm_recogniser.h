// Recognition by hidden Markov models: the word whose models give the frames the highest likelihood.
//
// There are several models of a word, one for each front end.  These differ in what they make of the recording: where
// one trusts the spectrum as it came, another evens out what microphones, rooms and voices do to it, and loses some of
// what tells vowels apart.  Their errors differ too, so that together they make fewer.
//
// Words are not cut out.  Before and after the word a path goes through a model of what surrounds words, quiet or
// noisy, and where it changes from one to the other is part of what is the likeliest.
#ifndef WORDS_HMM_RECOGNISER_H
#define WORDS_HMM_RECOGNISER_H

#include "hmm.h"
#include "recogniser.h"

namespace words {

class HmmRecogniser : public Recogniser {
  public:
    explicit HmmRecogniser(const Choice& choice = {}) : choice_(choice) {}
    std::string_view kind() const override { return kHmmKind; }
    std::vector<FrontEndSettings> frontEnds() const override;
    std::vector<Variant> variants() const override;
    void train(std::vector<Example> examples, Team& team, std::ostream& log) override;
    void adapt(const std::vector<Example>& examples) override;
    Finding recognise(const Views& views) const override;
    void save(ModelWriter& writer) const override;
    void load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) override;

  private:
    struct Judgement;
    Judgement judge(const Views& views) const;
    void estimateLimits(const std::vector<Example>& examples, Team& team);

    Choice choice_;
    std::vector<std::vector<WordModel>> models_;  // by front end; then sorted by word, the same words for each
    std::vector<WordModel> surroundings_;         // by front end: what is heard before and after a word
    std::vector<Vector> variances_;               // by front end: mean of those of all words
    float mostMisfit_ = 0;                        // that a word may have
    float leastMargin_ = 0;                       // to the runner-up
};

}  // namespace words

#endif
