// How block-diagonal matrices lie in memory.
#include "scoring/block_matrix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "kels/core.h"

using namespace kels;
using namespace kels::scoring;

namespace {

template <class T>
void expectMatrix(BlockMatrix<T>* (*alloc)(const Kel32s*, int), std::ptrdiff_t rowBytes3) {
    const Kel32s sizes[] = {3, 2};
    BlockMatrix<T>* const m = alloc(sizes, 2);
    ASSERT_NE(m, nullptr);
    EXPECT_TRUE(m->blockCount == 2 && m->rowCount == 5 && m->rawBlock == m);
    EXPECT_TRUE(std::equal(sizes, sizes + 2, m->blockSizes));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(reinterpret_cast<uintptr_t>(m->rowPointers[i]) % 16, 0u);
        std::memset(m->rowPointers[i], 0, static_cast<std::size_t>(i < 3 ? 3 : 2) * sizeof(T));
    }
    EXPECT_EQ(reinterpret_cast<char*>(m->rowPointers[1]) - reinterpret_cast<char*>(m->rowPointers[0]), rowBytes3);
    EXPECT_EQ(reinterpret_cast<char*>(m->rowPointers[4]) - reinterpret_cast<char*>(m->rowPointers[3]), 16);
    kelsFree(m->rawBlock);

    const Kel32s faulty[] = {3, 0};
    EXPECT_EQ(alloc(faulty, 2), nullptr);
    std::vector<Kel32s> tooMany(32767, 1);  // with a row more than can be counted
    tooMany[0] = 2;
    EXPECT_EQ(alloc(tooMany.data(), 32767), nullptr);
}

TEST(BlockMatrix, RowsArePaddedAlignedAndInOrder) {
    expectMatrix<Kel16s>(allocMatrix_16s, 16);
    expectMatrix<Kel32f>(allocMatrix_32f, 16);
    expectMatrix<Kel64f>(allocMatrix_64f, 32);
}

}  // namespace
