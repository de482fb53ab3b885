// Recognition by stored templates: the word whose best templates are nearest under dynamic time warping.
#ifndef WORDS_TEMPLATES_H
#define WORDS_TEMPLATES_H

#include "recogniser.h"

namespace words {

class TemplateRecogniser : public Recogniser {
  public:
    std::string_view kind() const override { return kTemplatesKind; }
    std::vector<FrontEndSettings> frontEnds() const override { return {FrontEndSettings()}; }
    void train(std::vector<Example> examples, Team& team, std::ostream& log) override;
    void adapt(const std::vector<Example>& examples) override;
    Finding recognise(const Views& views) const override;
    void save(ModelWriter& writer) const override;
    void load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) override;

  private:
    struct Template {
        std::string word;
        std::shared_ptr<const Matrix> features;
    };
    std::vector<Template> templates_;  // sorted by word
};

}  // namespace words

#endif
