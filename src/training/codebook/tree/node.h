// A node of the tree of splits, as a codebook keeps it.
#pragma once

#include "training/codebook/codebook.h"

namespace kels::codebook {

template <class T>
struct TreeNode {
    NodeOf<T> node;
    const NodeOf<T>* children[2];  // of an inner node: left and right
    const T* grandchildren[4];     // of an inner node: their centroids; a leaf child's own stands there twice

    static const TreeNode& of(const NodeOf<T>* node) { return *reinterpret_cast<const TreeNode*>(node); }
};

}  // namespace kels::codebook
