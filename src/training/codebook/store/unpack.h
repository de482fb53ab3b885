// From bytes to codebooks.
#pragma once

#include <algorithm>
#include <cstring>

#include "core/memory.h"
#include "training/codebook/build.h"
#include "training/codebook/clustering/splits.h"
#include "training/codebook/store/format.h"

namespace kels::codebook {

// A packed codebook, or what somebody takes for one.
template <class T>
class PackedCodebook {
  public:
    PackedCodebook(const Kel8u* block, int len) : block_(block), len_(len) {}

    // Whether every part is as pack() leaves it.  Nothing else may be called before that is known.
    bool isSound() {
        if (len_ < int64_t{sizeof(Header)}) return false;
        header_ = loadAt<Header>(block_);
        if (header_.magic != kMagic<T> || header_.version != kVersion || !isPossible(header_)) return false;
        places_ = Places(header_, sizeof(T));
        if (places_.end > len_ || places_.end != header_.bytes) return false;
        if (Checksum::of(block_, places_.checksum) != loadAt<uint64_t>(block_ + places_.checksum)) return false;
        for (Kel32s i = 0; i < header_.width; ++i) {
            if (loadAt<T>(weights() + toSize(i) * sizeof(T)) < T(0)) return false;
        }
        return !hasTree() || hasSoundTree();
    }

    const Header& header() const { return header_; }
    bool hasTree() const { return header_.kind != kelCdbkExhaustive; }
    const Kel8u* weights() const { return block_ + places_.weights; }
    const Kel8u* codevector(std::size_t i) const { return block_ + places_.codevectors + i * rowBytes(); }
    std::size_t rowBytes() const { return toSize(header_.width) * sizeof(T); }

    // The cluster that split k divided into itself and cluster k + 1.
    Kel32s divided(Kel32s k) const { return clusterAt(places_.splits, k); }
    PackedNode node(Kel32s i) const {
        return loadAt<PackedNode>(block_ + places_.nodes + i * int64_t{sizeof(PackedNode)});
    }

    // A leaf's neighbours, one after the other.
    struct Neighbours {
        const PackedCodebook& packed;
        int64_t at;

        Kel32s next() { return packed.clusterAt(packed.places_.neighbours, at++); }
    };
    Neighbours neighboursOf(Kel32s leaf) const { return {*this, int64_t{leaf} * header_.neighbours}; }

  private:
    Kel32s clusterAt(int64_t place, int64_t i) const {
        return loadAt<ClusterNumber>(block_ + place + i * int64_t{sizeof(ClusterNumber)});
    }
    bool hasSoundTree() const {
        for (Kel32s k = 0; k + 1 < header_.cdbkSize; ++k) {
            if (divided(k) > k) return false;
        }
        const int64_t listed = int64_t{header_.cdbkSize} * header_.neighbours;
        for (int64_t i = 0; i < listed; ++i) {
            if (clusterAt(places_.neighbours, i) >= header_.cdbkSize) return false;
        }
        return true;
    }

    const Kel8u* block_;
    int64_t len_;
    Header header_ = {};
    Places places_ = Places(header_, sizeof(T));
};

// The tree of a codebook that has its codevectors; false when memory is out.
template <class T>
bool unpackTree(const PackedCodebook<T>& packed, CodebookBuilder<T>& builder) {
    const Header& header = packed.header();
    Splits splits;
    void* const block = allocateArranged([&](Layout& layout) { splits.arrange(layout, header.cdbkSize); });
    if (block == nullptr) return false;
    splits.startWithOne();
    for (Kel32s k = 0; k + 1 < header.cdbkSize; ++k) splits.split(toSize(packed.divided(k)), toSize(k + 1));
    for (Kel32s i = 0; i < 2 * header.cdbkSize - 1; ++i) {
        const PackedNode node = packed.node(i);
        splits.node(toSize(i)).count = node.count;
        splits.node(toSize(i)).spread = node.spread;
    }
    const auto neighboursOf = [&](Kel32s leaf) { return packed.neighboursOf(leaf); };
    const bool done = builder.finishTree(splits.nodes(), header.neighbours, neighboursOf);
    kelsFree(block);
    return done;
}

// The codebook of a sound block; null when memory is out.
template <class T>
Codebook<T>* unpack(const PackedCodebook<T>& packed) {
    const Header& header = packed.header();
    CodebookBuilder<T> builder(packed.weights(), header.width, header.width, header.kind);
    if (builder.failed() || !builder.allocateVectors(header.cdbkSize)) return nullptr;
    for (std::size_t i = 0; i < toSize(header.cdbkSize); ++i) {
        std::memcpy(builder.codevector(i), packed.codevector(i), packed.rowBytes());
    }
    const NearestScope nearest;
    const bool done = packed.hasTree() ? unpackTree(packed, builder) : builder.finishExhaustive(header.hasGrid != 0);
    return done ? builder.handOver() : nullptr;
}

}  // namespace kels::codebook
