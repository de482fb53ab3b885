#include "text_output.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace common {

TextOutput::TextOutput(const std::string& name) {
    if (name == "-") return;
    output_ = std::make_unique<OutputFile>(name);
    file_ = std::fopen(output_->path().c_str(), "w");
    if (file_ == nullptr) output_->fail(std::strerror(errno));
}

TextOutput::~TextOutput() {
    if (output_ && file_ != nullptr) std::fclose(file_);
}

void TextOutput::endLine() {
    if (std::ferror(file_) != 0 || (!output_ && std::fflush(file_) != 0)) fail();
}

void TextOutput::finish() {
    if (!output_) return;
    if (std::fclose(std::exchange(file_, nullptr)) != 0) fail();
    output_->finish();
}

void TextOutput::fail() {
    if (output_) output_->fail(std::strerror(errno));
    throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
}

}  // namespace common
