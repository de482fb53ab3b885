// Recordings: reading them, and what their file names say.
#ifndef WORDS_AUDIO_H
#define WORDS_AUDIO_H

#include <filesystem>
#include <string>
#include <vector>

#include "kels_objects.h"

namespace words {

struct Recording {
    Vector samples;  // mono, full scale is +-1
    int rate = 0;    // Hz
    double seconds() const { return static_cast<double>(samples.size()) / rate; }
};

// Reads any file that libsndfile reads and mixes its channels down to one.  Throws std::runtime_error with a message
// that names the file when it is missing, not audio, empty, damaged or too long.
Recording readRecording(const std::filesystem::path& file);

// "seven_anna_12.wav" is the word "seven", spoken by "anna", take 12.
struct Label {
    std::string word;
    std::string speaker;
    int index = -1;  // -1 when the name has no number at its end
};
Label labelOf(const std::filesystem::path& file);

struct LabelledFile {
    std::filesystem::path path;
    Label label;
};

// The files of a folder (hidden ones aside), sorted by name with numbers in numeric order.
std::vector<LabelledFile> listRecordings(const std::filesystem::path& folder);

}  // namespace words

#endif
