// From a folder of recordings to a model file: what `words train` does, and each process of a team.
#ifndef WORDS_LEARN_H
#define WORDS_LEARN_H

#include <iosfwd>
#include <optional>

#include "corpus.h"
#include "model.h"

namespace words {

// The corpus as a recogniser of this kind takes it, or with words cut out in another way.
Corpus loadCorpusFor(const Choice& choice, const std::filesystem::path& folder, Team& team,
                     std::optional<Trim> trim = std::nullopt);

// Learns the words and saves the model; the first of the team writes the file and the log.  Recordings that are of no
// use are named on standard error.  Returns whether all could be used; throws std::runtime_error if no model came of
// it, and the file is then as it was.  The model never takes the place of a recording of the folder.
bool learn(const Choice& choice, const std::filesystem::path& folder, const std::filesystem::path& modelFile,
           Team& team, std::ostream& log);

}  // namespace words

#endif
