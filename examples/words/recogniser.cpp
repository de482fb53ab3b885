#include "recogniser.h"

#include "hmm_recogniser.h"
#include "templates.h"

namespace words {

std::unique_ptr<Recogniser> makeRecogniser(std::string_view kind) {
    if (kind == kHmmKind) return std::make_unique<HmmRecogniser>();
    if (kind == kTemplatesKind) return std::make_unique<TemplateRecogniser>();
    throw std::runtime_error("there is no recogniser of the kind \"" + std::string(kind) + "\"");
}

}  // namespace words
