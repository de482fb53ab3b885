// Writing a file so that nothing is lost: what is read is never written over, and an older file of the same name stays
// as it is until the new one is complete.
#ifndef COMMON_OUTPUT_FILE_H
#define COMMON_OUTPUT_FILE_H

#include <filesystem>
#include <string>
#include <string_view>

namespace common {

// Throws std::runtime_error when both names mean the same file, also through a link.
void refuseToOverwrite(const std::filesystem::path& input, const std::filesystem::path& output);

// A new file beside the one that it is to become.  finish() puts it there; without it the new file vanishes.  A device
// or a pipe is written as it is.  What goes wrong is thrown as a std::runtime_error that names the file.
class OutputFile {
  public:
    explicit OutputFile(std::filesystem::path file);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& path() const { return written_; }  // what the program opens, writes and closes
    void finish();
    void write(std::string_view bytes);  // all of it, and finishes
    [[noreturn]] void fail(const std::string& why) const;

  private:
    std::filesystem::path file_;    // as the user calls it
    std::filesystem::path target_;  // empty for a device
    std::string written_;
};

// The same for a file whose contents are at hand.
void writeFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace common

#endif
