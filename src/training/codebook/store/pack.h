// From codebooks to bytes.
#pragma once

#include <algorithm>
#include <cstring>

#include "training/codebook/store/format.h"
#include "training/codebook/tree/node.h"

namespace kels::codebook {

// The leaf on the left border below a node: its cluster is the one that the node's splits divided.
template <class Node>
const Node* leftmostLeaf(const Node* node) {
    while (!node->isLeaf) node = node->left;
    return node;
}

// The header of a codebook, all but how many bytes it takes.
template <class T>
Header headerOf(const Codebook<T>& codebook) {
    const bool hasTree = codebook.kind != kelCdbkExhaustive;
    return {.magic = kMagic<T>,
            .version = kVersion,
            .bytes = 0,
            .kind = codebook.kind,
            .width = codebook.width,
            .cdbkSize = codebook.cdbkSize,
            .hasGrid = codebook.grid != nullptr,
            .neighbours = hasTree ? leftmostLeaf(codebook.treeRoot)->neighbourCount : 0};
}

// More than an int where that cannot hold it.
template <class T>
int64_t packedBytes(const Codebook<T>& codebook) {
    return Places(headerOf<T>(codebook), sizeof(T)).end;
}

template <class T>
void packTree(const Codebook<T>& codebook, const Places& places, Kel8u* block) {
    const auto* const nodes = &TreeNode<T>::of(codebook.treeRoot);
    const Kel32s count = 2 * codebook.cdbkSize - 1;
    Kel8u* split = block + places.splits;
    Kel8u* packed = block + places.nodes;
    for (Kel32s i = 0; i < count; ++i, packed += sizeof(PackedNode)) {
        const NodeOf<T>& node = nodes[i].node;
        storeAt(packed, PackedNode{node.count, node.spread});
        if (i % 2 == 1) {  // the left one of a pair
            storeAt(split, static_cast<ClusterNumber>(leftmostLeaf(&node)->index));
            split += sizeof(ClusterNumber);
        }
        if (!node.isLeaf) continue;
        Kel8u* neighbour = block + places.neighbours;
        neighbour += int64_t{node.index} * node.neighbourCount * int64_t{sizeof(ClusterNumber)};
        for (Kel32s k = 0; k < node.neighbourCount; ++k, neighbour += sizeof(ClusterNumber)) {
            storeAt(neighbour, static_cast<ClusterNumber>(node.neighbours[k]->index));
        }
    }
}

// The block has room for packedBytes().
template <class T>
void pack(const Codebook<T>& codebook, Kel8u* block) {
    Header header = headerOf<T>(codebook);
    const Places places(header, sizeof(T));
    header.bytes = static_cast<uint32_t>(places.end);
    storeAt(block, header);
    const std::size_t rowBytes = toSize(codebook.width) * sizeof(T);
    std::memcpy(block + places.weights, codebook.weights, rowBytes);
    const auto codevectors = codevectorsOf(codebook);
    Kel8u* row = block + places.codevectors;
    for (Kel32s i = 0; i < codebook.cdbkSize; ++i, row += rowBytes) std::memcpy(row, codevectors[i], rowBytes);
    if (codebook.kind != kelCdbkExhaustive) packTree<T>(codebook, places, block);
    storeAt(block + places.checksum, Checksum::of(block, places.checksum));
}

}  // namespace kels::codebook
