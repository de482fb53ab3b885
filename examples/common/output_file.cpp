// Files that appear when they are complete, by way of a name of their own beside the final one.
#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace common {
namespace {

namespace fs = std::filesystem;

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// The permissions of the file that is replaced, or those that any new file gets.
mode_t permissionsFor(const fs::path& target) {
    struct stat old {};
    if (stat(target.c_str(), &old) == 0) return old.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

void refuseToOverwrite(const fs::path& input, const fs::path& output) {
    std::error_code missing;
    if (fs::equivalent(input, output, missing)) throw std::runtime_error(output.string() + ": is the file to read");
}

OutputFile::OutputFile(fs::path file) : file_(std::move(file)), written_(file_.string()) {
    std::error_code ignored;
    const auto there = fs::status(file_, ignored);
    if (fs::exists(there) && !fs::is_regular_file(there)) {
        if (fs::is_directory(there)) fail("is a folder");
        return;
    }
    // A link stays, and what it points to is replaced.
    const fs::path target = fs::exists(there) ? fs::canonical(file_) : file_;
    if (fs::exists(there) && access(target.c_str(), W_OK) != 0) fail(std::strerror(errno));
    written_ = target.string() + ".XXXXXX";
    Descriptor made(mkstemp(written_.data()));  // which opens it to its owner only
    if (made.get() < 0) fail(std::strerror(errno));
    target_ = target;
    if (fchmod(made.get(), permissionsFor(target)) == 0) return;
    const int reason = errno;
    unlink(written_.c_str());
    fail(std::strerror(reason));
}

OutputFile::~OutputFile() {
    if (!target_.empty()) unlink(written_.c_str());
}

// The data reach the disk before the name does, so that a crash leaves the one file or the other.
void OutputFile::finish() {
    if (target_.empty()) return;
    Descriptor written(open(written_.c_str(), O_WRONLY | O_CLOEXEC));
    if (written.get() < 0 || fsync(written.get()) != 0 || !written.close() ||
        rename(written_.c_str(), target_.c_str()) != 0)
        fail(std::strerror(errno));
    target_.clear();
}

void OutputFile::fail(const std::string& why) const {
    throw std::runtime_error(file_.string() + ": cannot be written: " + why);
}

void OutputFile::write(std::string_view bytes) {
    Descriptor written(open(written_.c_str(), O_WRONLY | O_CLOEXEC));
    if (written.get() < 0 || !writeAll(written.get(), bytes) || !written.close()) fail(std::strerror(errno));
    finish();
}

void writeFile(const fs::path& file, std::string_view bytes) {
    OutputFile(file).write(bytes);
}

}  // namespace common
