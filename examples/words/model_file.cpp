#include "model_file.h"

#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "common/output_file.h"

namespace words {
namespace {

// A model file: this text, then length of the contents and their checksum (8 bytes each), then the contents.
constexpr std::string_view kMagic = "kels words model 5\n";
constexpr std::size_t kNumber = 8;
constexpr std::size_t kMaxText = 4096;

void appendLittleEndian(std::string& bytes, std::uint64_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

std::uint64_t fromLittleEndian(const unsigned char* bytes, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = count; i-- > 0;) value = value << 8 | bytes[i];
    return value;
}

// FNV-1a, 64 bits: any change of a single byte changes it.
std::uint64_t checksum(std::string_view bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    return hash;
}

}  // namespace

void ModelWriter::putCount(std::size_t value) {
    appendLittleEndian(bytes_, value, kNumber);
}

void ModelWriter::putText(std::string_view text) {
    putCount(text.size());
    bytes_.append(text);
}

void ModelWriter::putFloats(const float* values, int count) {
    for (int i = 0; i < count; ++i) appendLittleEndian(bytes_, std::bit_cast<std::uint32_t>(values[i]), sizeof(float));
}

const unsigned char* ModelReader::take(std::size_t count) {
    if (count > bytes_.size() - position_) throw DamagedModel("it ends too early");
    const auto* const start = reinterpret_cast<const unsigned char*>(bytes_.data()) + position_;
    position_ += count;
    return start;
}

std::size_t ModelReader::getCount(std::size_t largest) {
    const std::uint64_t value = fromLittleEndian(take(kNumber), kNumber);
    if (value > largest) throw DamagedModel("a count is out of range");
    return static_cast<std::size_t>(value);
}

std::string ModelReader::getText() {
    const std::size_t length = getCount(kMaxText);
    return {reinterpret_cast<const char*>(take(length)), length};
}

void ModelReader::getFloats(float* values, int count) {
    for (int i = 0; i < count; ++i) {
        const auto bits = static_cast<std::uint32_t>(fromLittleEndian(take(sizeof(float)), sizeof(float)));
        values[i] = std::bit_cast<float>(bits);
        if (!std::isfinite(values[i])) throw DamagedModel("a number is not finite");
    }
}

void ModelReader::expectFloats(std::size_t count) const {
    if (count > (bytes_.size() - position_) / sizeof(float)) throw DamagedModel("it ends too early");
}

void ModelReader::expectEnd() const {
    if (position_ != bytes_.size()) throw DamagedModel("more follows than it should");
}

void writeModelFile(const std::filesystem::path& file, const ModelWriter& writer) {
    std::string bytes(kMagic);
    appendLittleEndian(bytes, writer.bytes().size(), kNumber);
    appendLittleEndian(bytes, checksum(writer.bytes()), kNumber);
    common::writeFile(file, bytes.append(writer.bytes()));
}

ModelReader readModelFile(const std::filesystem::path& file) {
    std::ifstream input(file, std::ios::binary);
    if (!input) throw std::runtime_error(file.string() + ": cannot be opened: " + std::strerror(errno));
    // The header first, so that a large file of another kind is not read to its end.
    std::array<char, kMagic.size() + 2 * kNumber> header{};
    input.read(header.data(), header.size());
    if (std::string_view(header.data(), kMagic.size()) != kMagic)
        throw DamagedModel(file.string() + ": is not a model of this program's version");
    const auto* const numbers = reinterpret_cast<const unsigned char*>(header.data()) + kMagic.size();
    std::string bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
    if (input.bad() || bytes.size() != fromLittleEndian(numbers, kNumber) ||
        checksum(bytes) != fromLittleEndian(numbers + kNumber, kNumber))
        throw DamagedModel(file.string() + ": is damaged");
    return ModelReader(std::move(bytes));
}

}  // namespace words
