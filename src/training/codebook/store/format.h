// How a codebook stands in bytes, at any address.
//
// A header, the weights and the codevectors without what is between rows; of a split codebook the cluster that each
// split divided, count and spread of each node of the tree, and each leaf's neighbours; a checksum.  Integers and
// floats stand with their low byte first.  Whatever follows from the rest is not stored: whether any weight is other
// than 1, the centroids of inner nodes, the cells of a grid.  Neighbours do follow from the codevectors, but rounding
// may choose among them in another build.
#pragma once

#include <array>
#include <bit>
#include <cstring>
#include <limits>

#include "training/codebook/check.h"
#include "training/codebook/codebook.h"

namespace kels::codebook {

static_assert(std::endian::native == std::endian::little);

// No text begins like that, and what turns line ends destroys it.
template <class T>
inline constexpr std::array<Kel8u, 8> kMagic = {
    0x8b, 'K', 'C', 'B', sizeof(T) == 2 ? '1' : '3', sizeof(T) == 2 ? '6' : '2', '\r', '\n'};
inline constexpr uint32_t kVersion = 1;

struct Header {
    std::array<Kel8u, 8> magic;
    uint32_t version, bytes;  // of the whole
    Kel32s kind, width, cdbkSize, hasGrid, neighbours;
};
static_assert(sizeof(Header) == 36);

struct PackedNode {
    Kel32s count;
    Kel32f spread;
};

// Names clusters, of which split codebooks have no more.
using ClusterNumber = uint16_t;
static_assert(kMostCodevectors <= std::numeric_limits<ClusterNumber>::max());

// Where the parts begin, in bytes from the start of the block.
struct Places {
    int64_t weights, codevectors, splits, nodes, neighbours, checksum, end;

    Places(const Header& header, std::size_t elementSize) {
        const int64_t element = static_cast<int64_t>(elementSize), width = header.width;
        const int64_t clusters = header.kind == kelCdbkExhaustive ? 0 : header.cdbkSize;
        weights = sizeof(Header);
        codevectors = weights + width * element;
        splits = codevectors + header.cdbkSize * width * element;
        nodes = splits + (clusters > 0 ? clusters - 1 : 0) * int64_t{sizeof(ClusterNumber)};
        neighbours = nodes + (clusters > 0 ? 2 * clusters - 1 : 0) * int64_t{sizeof(PackedNode)};
        checksum = neighbours + clusters * header.neighbours * int64_t{sizeof(ClusterNumber)};
        end = checksum + int64_t{sizeof(uint64_t)};
    }
};

// Whether a codebook can be as a header says.
inline bool isPossible(const Header& header) {
    const bool isSplit = header.kind != kelCdbkExhaustive;
    if (!isKnown(header.kind) || header.width < 1 || header.cdbkSize < 1) return false;
    if (int64_t{header.width} * header.cdbkSize > std::numeric_limits<Kel32s>::max()) return false;
    if (isSplit && header.cdbkSize > kMostCodevectors) return false;
    if (header.hasGrid < 0 || header.hasGrid > (!isSplit && header.width <= 2)) return false;
    return header.neighbours >= 0 && header.neighbours <= (isSplit ? header.cdbkSize - 1 : 0);
}

template <class T>
T loadAt(const Kel8u* place) {
    T value;
    std::memcpy(&value, place, sizeof(T));
    return value;
}
template <class T>
void storeAt(Kel8u* place, const T& value) {
    std::memcpy(place, &value, sizeof(T));
}

// The cyclic redundancy check of ECMA-182 in its reflected form, with all bits inverted before and after.
class Checksum {
  public:
    static uint64_t of(const Kel8u* bytes, int64_t count) {
        uint64_t sum = ~uint64_t{0};
        for (int64_t i = 0; i < count; ++i) {
            const auto low = static_cast<Kel8u>(sum ^ bytes[i]);
            sum = kTable[low] ^ (sum >> 8);
        }
        return ~sum;
    }

  private:
    static constexpr std::array<uint64_t, 256> table() {
        std::array<uint64_t, 256> sums{};
        for (unsigned byte = 0; byte < 256; ++byte) {
            uint64_t sum = byte;
            for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1 ? 0xc96c5795d7870f42u : 0);
            sums[byte] = sum;
        }
        return sums;
    }
    static const std::array<uint64_t, 256> kTable;
};
inline constexpr std::array<uint64_t, 256> Checksum::kTable = Checksum::table();

}  // namespace kels::codebook
