// A trained model: the front end that its features come from and the recogniser that knows them.
#ifndef WORDS_MODEL_H
#define WORDS_MODEL_H

#include "front_end.h"
#include "recogniser.h"

namespace words {

struct Model {
    std::vector<FrontEnd> frontEnds;  // of one sample rate, at least one
    std::unique_ptr<Recogniser> recogniser;
};

void saveModel(const Model& model, const std::filesystem::path& file);
// Throws std::runtime_error with a message that names the file.
Model loadModel(const std::filesystem::path& file);

}  // namespace words

#endif
