// Words in a long recording or a live stream.
#ifndef WORDS_LISTEN_H
#define WORDS_LISTEN_H

#include <iosfwd>
#include <string>

#include "model.h"

namespace words {

// Cuts speech out by voice activity and tells each word as soon as it is over: its time in seconds, its cost and that
// of the runner-up.  What is none of the words that the model knows is passed over.  `file` may be "-" for 16-bit
// samples of the model's rate on standard input.  Throws std::runtime_error with a message that names the file.
void listen(const Model& model, const std::string& file, std::ostream& out);

}  // namespace words

#endif
