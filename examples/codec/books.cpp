// Split quantisation with codebooks in files.
#include "books.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace codec {
namespace {

namespace fs = std::filesystem;
using common::check;

constexpr int kParts[] = {2, 2, 2, 2, 2, 2, 1};  // how a row is cut
constexpr int kStreams = static_cast<int>(std::size(kParts));
constexpr int kLongest = 1 << 28;  // file that is read

[[noreturn]] void fail(const fs::path& file, const std::string& why) {
    throw std::runtime_error(file.string() + ": " + why);
}

std::string readFile(const fs::path& file) {
    if (!fs::exists(file)) fail(file, "no such file");
    if (fs::is_directory(file)) fail(file, "is a folder");
    std::ifstream in(file, std::ios::binary);
    std::string bytes;
    for (char block[4096]; in.read(block, sizeof block), in.gcount() > 0;) {
        bytes.append(block, static_cast<std::size_t>(in.gcount()));
        if (bytes.size() > kLongest) fail(file, "is too long");
    }
    if (in.bad() || !in.eof()) fail(file, "cannot be read");
    if (bytes.empty()) fail(file, "is empty");
    return bytes;
}

std::size_t bytesOf(int rows, int rowBits) {
    return static_cast<std::size_t>((int64_t{rows} * rowBits + 7) / 8);
}

// The beginning of a coded recording.
struct StreamHeader {
    char magic[8];
    int32_t rows;
    uint32_t books;  // tells the codebooks from others
};
constexpr char kMagic[] = {'K', 'E', 'L', 'C', 'O', 'D', 'E', '\n'};

// FNV-1a.
uint32_t hashOf(const std::string& bytes) {
    uint32_t hash = 2166136261U;
    for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return hash;
}

}  // namespace

Books::Books(const Features& training, int bits) {
    int column = 0;
    for (const int width : kParts) {
        std::vector<float> part;
        for (int r = 0; r < training.rows(); ++r) {
            const float* const begin = training.values.data() + r * kWidth + column;
            part.insert(part.end(), begin, begin + width);
        }
        KelCdbk_32f* codebook = nullptr;
        const KelStatus status = kelsCdbkInitAlloc_L2_32f(&codebook, part.data(), width, width, training.rows(),
                                                          1 << bits, kelCdbkSplitWidest);
        if (status == kelStatusBadArg) throw std::runtime_error("sounds too much alike all along to train codebooks");
        check(status, "kelsCdbkInitAlloc_L2_32f");
        add(codebook);
        column += width;
    }
}

Books::Books(const fs::path& file) {
    const std::string bytes = readFile(file);
    const auto* next = reinterpret_cast<const Kel8u*>(bytes.data());
    auto left = static_cast<int>(bytes.size());
    for (const int width : kParts) {
        KelCdbk_32f* codebook = nullptr;
        const KelStatus status = left > 0 ? kelsCdbkUnpackAlloc_32f(&codebook, next, left) : kelStatusBadArg;
        if (status == kelStatusBadArg) fail(file, "holds no codebooks of this program, or is cut or damaged");
        check(status, file.string());
        add(codebook);
        int size = 0;
        check(kelsCdbkGetPackedSize_32f(codebook, &size), "kelsCdbkGetPackedSize_32f");
        if (codebook->width != width) fail(file, "holds codebooks for other vectors");
        next += size;
        left -= size;
    }
    if (left != 0) fail(file, "holds more than the codebooks of this program");
}

void Books::add(KelCdbk_32f* codebook) {
    codebooks_.emplace_back(codebook);
    pointers_.push_back(codebook);
    rowBits_ += codebook->indexBits;
}

std::string Books::bytes() const {
    std::string all;
    for (const auto& codebook : codebooks_) {
        int size = 0;
        check(kelsCdbkGetPackedSize_32f(codebook.get(), &size), "kelsCdbkGetPackedSize_32f");
        const std::size_t begin = all.size();
        all.resize(begin + static_cast<std::size_t>(size));
        check(kelsCdbkPack_32f(codebook.get(), reinterpret_cast<Kel8u*>(&all[begin]), size), "kelsCdbkPack_32f");
    }
    return all;
}

std::vector<Kel8u> Books::encode(const Features& features) {
    std::vector<Kel8u> stream(bytesOf(features.rows(), rowBits_));
    check(kelsSplitVQ_32f1u(features.values.data(), kWidth, stream.data(), rowBits_, features.rows(), pointers_.data(),
                            kStreams),
          "kelsSplitVQ_32f1u");
    return stream;
}

Features Books::decode(const std::vector<Kel8u>& stream, int rows) {
    Features features{std::vector<float>(static_cast<std::size_t>(rows) * kWidth)};
    check(kelsFormVectorVQ_1u32f(stream.data(), rowBits_, features.values.data(), kWidth, rows, pointers_.data(),
                                 kStreams),
          "kelsFormVectorVQ_1u32f");
    return features;
}

std::string packStream(const Books& books, const std::vector<Kel8u>& stream, int rows) {
    StreamHeader header = {{}, rows, hashOf(books.bytes())};
    std::memcpy(header.magic, kMagic, sizeof kMagic);
    std::string packed(reinterpret_cast<const char*>(&header), sizeof header);
    return packed.append(stream.begin(), stream.end());
}

Stream readStream(const Books& books, const fs::path& file) {
    const std::string packed = readFile(file);
    StreamHeader header{};
    if (packed.size() >= sizeof header) std::memcpy(&header, packed.data(), sizeof header);
    if (std::memcmp(header.magic, kMagic, sizeof kMagic) != 0) fail(file, "is no coded recording");
    if (header.books != hashOf(books.bytes())) fail(file, "was coded with other codebooks");
    if (header.rows < 1 || packed.size() - sizeof header != bytesOf(header.rows, books.rowBits()))
        fail(file, "is cut or damaged");
    return {{packed.begin() + sizeof header, packed.end()}, header.rows};
}

}  // namespace codec
