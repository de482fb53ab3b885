// The codebooks of the codec: one for each pair of features, kept in a file one behind the other.
#ifndef CODEC_BOOKS_H
#define CODEC_BOOKS_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "common/check.h"
#include "features.h"

namespace codec {

class Books {
  public:
    // Trains codebooks of 2^bits codevectors each.
    Books(const Features& training, int bits);
    // Reads those that bytes() has been written to; throws std::runtime_error for a file that holds none.
    explicit Books(const std::filesystem::path& file);

    std::string bytes() const;
    int rowBits() const { return rowBits_; }  // of a coded row

    std::vector<Kel8u> encode(const Features& features);
    // Throws std::runtime_error where the stream names codevectors that there are not.
    Features decode(const std::vector<Kel8u>& stream, int rows);

  private:
    void add(KelCdbk_32f* codebook);

    std::vector<std::unique_ptr<KelCdbk_32f, common::Release<kelsCdbkFree_32f>>> codebooks_;
    std::vector<KelCdbk_32f*> pointers_;
    int rowBits_ = 0;
};

// A coded recording in a file, which says which codebooks it takes.
std::string packStream(const Books& books, const std::vector<Kel8u>& stream, int rows);
struct Stream {
    std::vector<Kel8u> bytes;
    int rows;
};
Stream readStream(const Books& books, const std::filesystem::path& file);

}  // namespace codec

#endif
