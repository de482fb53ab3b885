// Recognition by hidden Markov models: the word whose model gives the frames the highest likelihood.
#ifndef WORDS_HMM_RECOGNISER_H
#define WORDS_HMM_RECOGNISER_H

#include "hmm.h"
#include "recogniser.h"

namespace words {

class HmmRecogniser : public Recogniser {
  public:
    std::string_view kind() const override { return kHmmKind; }
    FrontEndSettings frontEnd() const override;
    std::vector<FrontEndSettings> variants() const override;
    void train(std::vector<Example> examples, Team& team, std::ostream& log) override;
    std::vector<Candidate> recognise(const Matrix& features) const override;
    void save(ModelWriter& writer) const override;
    void load(ModelReader& reader, int featureCount) override;

  private:
    std::vector<WordModel> models_;  // sorted by word
};

}  // namespace words

#endif
