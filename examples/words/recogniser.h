// What every kind of word recogniser offers.  A new kind derives from Recogniser and is added to makeRecogniser().
#ifndef WORDS_RECOGNISER_H
#define WORDS_RECOGNISER_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kels_objects.h"
#include "model_file.h"

namespace words {

struct Example {
    std::string word;
    std::shared_ptr<const Matrix> features;
};

struct Candidate {
    std::string word;
    float cost = 0;
};

class Recogniser {
  public:
    virtual ~Recogniser() = default;

    virtual std::string_view kind() const = 0;
    // Forgets what was learned before.
    virtual void train(std::vector<Example> examples) = 0;
    // All words that it knows, the best first.  May be called from several threads at once.
    virtual std::vector<Candidate> recognise(const Matrix& features) const = 0;
    virtual void save(ModelWriter& writer) const = 0;
    // Throws DamagedModel if what it reads cannot have come from save() for features of this many columns.
    virtual void load(ModelReader& reader, int featureCount) = 0;
};

// Throws std::runtime_error for a kind that does not exist.
std::unique_ptr<Recogniser> makeRecogniser(std::string_view kind = "templates");

}  // namespace words

#endif
