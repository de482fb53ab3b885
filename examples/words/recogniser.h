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
    // The features of one recording; then those of its variants, of which a recogniser may learn, too.
    std::vector<std::shared_ptr<const Matrix>> features;
};

struct Candidate {
    std::string word;
    float cost = 0;
};

class Recogniser {
  public:
    virtual ~Recogniser() = default;

    virtual std::string_view kind() const = 0;
    // The features that it is made for.
    virtual FrontEndSettings frontEnd() const = 0;
    // How recordings are to be analysed once more each for training: as if others had spoken, or elsewhere.
    virtual std::vector<FrontEndSettings> variants() const { return {}; }

    // Forgets what was learned before.  Tells the log how it gets on.
    virtual void train(std::vector<Example> examples, Team& team, std::ostream& log) = 0;
    // All words that it knows, the best first.  May be called from several threads at once.
    virtual std::vector<Candidate> recognise(const Matrix& features) const = 0;
    virtual void save(ModelWriter& writer) const = 0;
    // Throws DamagedModel if what it reads cannot have come from save() for features of this many columns.
    virtual void load(ModelReader& reader, int featureCount) = 0;
};

inline constexpr std::string_view kHmmKind = "hidden Markov models";
inline constexpr std::string_view kTemplatesKind = "templates";

// Throws std::runtime_error for a kind that does not exist.
std::unique_ptr<Recogniser> makeRecogniser(std::string_view kind);

}  // namespace words

#endif
