// Lines of text on standard output, or in a file that appears when it is complete.
#ifndef COMMON_TEXT_OUTPUT_H
#define COMMON_TEXT_OUTPUT_H

#include <cstdio>
#include <memory>
#include <string>

#include "output_file.h"

namespace common {

// What goes wrong is thrown as a std::runtime_error that names the file.
class TextOutput {
  public:
    explicit TextOutput(const std::string& name);  // "-": standard output
    ~TextOutput();
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;

    template <class... A>
    void print(const char* format, A... arguments) {
        std::fprintf(file_, format, arguments...);
    }
    // Standard output gets lines as soon as they are complete.
    void endLine();
    void finish();

  private:
    [[noreturn]] void fail();

    std::unique_ptr<OutputFile> output_;
    std::FILE* file_ = stdout;
};

}  // namespace common

#endif
