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
#include "noise.h"
#include "team.h"

namespace words {

// A recording as training hears it once: the word, and what surrounds it.
struct Sound {
    Views word;
    Views around;  // some of the frames before and after the word
};

struct Example {
    std::string word;
    int share = 0;  // of the training, below kShares
    Views views;    // of the recording as it is
    std::vector<Sound> variants;
};

// Another way to hear recordings in training: as if others had spoken, or elsewhere.
struct Variant {
    std::vector<FrontEndSettings> frontEnds;
    std::vector<Surroundings> surroundings;  // recordings take them in turn
};

struct Candidate {
    std::string word;
    float cost = 0;
};

struct Finding {
    std::vector<Candidate> candidates;  // all words that are known, the best first
    bool isWord = true;                 // whether the best fits well enough to be one of them
};

// What is learned, and how.
inline constexpr std::string_view kHmmKind = "hidden Markov models";
inline constexpr std::string_view kTemplatesKind = "templates";
struct Choice {
    std::string kind{kHmmKind};
    std::string frontEnd = "combined";  // one of kFrontEndNames
    bool inNoise = true;                // how words sound in noise, too
};
inline constexpr std::string_view kFrontEndNames[] = {"mfcc", "mfcc-mean", "mel", "aurora", "combined"};

class Recogniser {
  public:
    virtual ~Recogniser() = default;

    virtual std::string_view kind() const = 0;
    // The front ends through which it looks at a recording, one at least.
    virtual std::vector<FrontEndSettings> frontEnds() const = 0;
    virtual std::vector<Variant> variants() const { return {}; }

    // Forgets what was learned before.  Tells the log how it gets on.
    virtual void train(std::vector<Example> examples, Team& team, std::ostream& log) = 0;
    // Moves what was learned towards one speaker, by recordings of words that are known.
    virtual void adapt(const std::vector<Example>& examples) = 0;
    // May be called from several threads at once.
    virtual Finding recognise(const Views& views) const = 0;
    virtual void save(ModelWriter& writer) const = 0;
    // Throws DamagedModel if what it reads cannot have come from save() for these front ends.
    virtual void load(ModelReader& reader, const std::vector<FrontEnd>& frontEnds) = 0;
};

// Throws std::runtime_error for what does not exist.
std::unique_ptr<Recogniser> makeRecogniser(const Choice& choice);

}  // namespace words

#endif
