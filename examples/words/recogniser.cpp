#include "recogniser.h"

#include "hmm_recogniser.h"
#include "templates.h"

namespace words {

std::unique_ptr<Recogniser> makeRecogniser(const Choice& choice) {
    if (choice.kind == kHmmKind) return std::make_unique<HmmRecogniser>(choice);
    if (choice.kind == kTemplatesKind) return std::make_unique<TemplateRecogniser>();
    throw std::runtime_error("there is no recogniser of the kind \"" + choice.kind + "\"");
}

}  // namespace words
