// Recognition by stored templates: the word whose best templates are nearest under dynamic time warping.
#ifndef WORDS_TEMPLATES_H
#define WORDS_TEMPLATES_H

#include "recogniser.h"

namespace words {

class TemplateRecogniser : public Recogniser {
  public:
    static constexpr std::string_view kKind = "templates";

    std::string_view kind() const override { return kKind; }
    void train(std::vector<Example> examples) override;
    std::vector<Candidate> recognise(const Matrix& features) const override;
    void save(ModelWriter& writer) const override;
    void load(ModelReader& reader, int featureCount) override;

  private:
    std::vector<Example> templates_;  // sorted by word
};

}  // namespace words

#endif
