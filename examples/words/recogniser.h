// What every kind of word recogniser offers.  A new kind derives from Recogniser and is added to makeRecogniser().
#ifndef WORDS_RECOGNISER_H
#define WORDS_RECOGNISER_H

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "front_end.h"
#include "model_file.h"
#include "team.h"

namespace words {

struct Example {
    std::string word;
    int share = 0;  // of the training, below kShares
    // The views of one recording; then those of its variants, of which a recogniser may learn, too.
    std::vector<Views> variants;
    const Views& views() const { return variants.front(); }
};

struct Candidate {
    std::string word;
    float cost = 0;
};

class Recogniser {
  public:
    virtual ~Recogniser() = default;

    virtual std::string_view kind() const = 0;
    // The front ends through which it looks at a recording, one at least.
    virtual std::vector<FrontEndSettings> frontEnds() const = 0;
    // Front ends for training to look through once more each: as if others had spoken, or elsewhere.
    virtual std::vector<std::vector<FrontEndSettings>> variants() const { return {}; }

    // Forgets what was learned before.  Tells the log how it gets on.
    virtual void train(std::vector<Example> examples, Team& team, std::ostream& log) = 0;
    // All words that it knows, the best first.  May be called from several threads at once.
    virtual std::vector<Candidate> recognise(const Views& views) const = 0;
    virtual void save(ModelWriter& writer) const = 0;
    // Throws DamagedModel if what it reads cannot have come from save() for these front ends.
    virtual void load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) = 0;
};

inline constexpr std::string_view kHmmKind = "hidden Markov models";
inline constexpr std::string_view kTemplatesKind = "templates";

// Throws std::runtime_error for a kind that does not exist.
std::unique_ptr<Recogniser> makeRecogniser(std::string_view kind);

}  // namespace words

#endif
