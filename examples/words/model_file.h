// Model files: a checksum over everything, and reading that checks every bound.
#ifndef WORDS_MODEL_FILE_H
#define WORDS_MODEL_FILE_H

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace words {

struct DamagedModel : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Collects the contents of a model; numbers are stored in little-endian order.
class ModelWriter {
  public:
    void putCount(std::size_t value);
    void putText(std::string_view text);
    void putFloats(const float* values, int count);
    const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

// Takes the contents apart again.  Every function throws DamagedModel rather than read past the end.
class ModelReader {
  public:
    explicit ModelReader(std::string bytes) : bytes_(std::move(bytes)) {}
    std::size_t getCount(std::size_t largest);
    std::string getText();
    void getFloats(float* values, int count);    // finite ones only
    void expectFloats(std::size_t count) const;  // throws unless so many can follow
    void expectEnd() const;

  private:
    const unsigned char* take(std::size_t count);
    std::string bytes_;
    std::size_t position_ = 0;
};

// The contents with header and checksum around them.  Throws std::runtime_error with a message that names the file,
// which then is as it was.
void writeModelFile(const std::filesystem::path& file, const ModelWriter& writer);
// Throws DamagedModel with a message that names the file if it is not a whole model file of this version.
ModelReader readModelFile(const std::filesystem::path& file);

}  // namespace words

#endif
