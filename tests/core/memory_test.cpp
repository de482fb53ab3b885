// The allocator, tables of rows, and the version record.
#include "core/row_table.h"

#include <cstring>
#include <string>

#include "core/layout.h"
#include "support/allocation.h"
#include "support/numeric.h"

using namespace kels;

namespace {

bool alignedTo(const void* p, std::size_t n) {
    return reinterpret_cast<uintptr_t>(p) % n == 0;
}

TEST(Memory, BlocksAreAlignedWritableAndReleased) {
    const test::AllocationWatch watch;
    for (int n = 1; n < 200; ++n) {
        Kel64f* const p = kelsMalloc_64f(n);
        ASSERT_TRUE(alignedTo(p, 32));
        std::fill_n(p, n, 1.0);
        const auto gap = reinterpret_cast<char*>(p) - reinterpret_cast<char**>(p)[-1];
        EXPECT_TRUE(gap >= static_cast<int>(sizeof(void*)) && gap <= static_cast<int>(31 + sizeof(void*)));
        kelsFree(p);
    }
    kelsFree(nullptr);
    EXPECT_EQ(watch.unreleased(), 0);
}

TEST(Memory, WhatCannotBeHadIsNull) {
    {
        const test::AllocationWatch watch(0);
        EXPECT_EQ(kelsMalloc_8u(0), nullptr);
        EXPECT_EQ(kelsMalloc_16s(-1), nullptr);
        EXPECT_EQ(kelsMalloc_32s(INT32_MIN), nullptr);
        EXPECT_EQ(kelsMalloc_64f(0), nullptr);
        EXPECT_EQ(watch.calls(), 0);
        EXPECT_EQ(kelsMalloc_32f(10), nullptr);
    }
    if (sizeof(void*) == 4) {
        EXPECT_EQ(kelsMalloc_64f(INT32_MAX), nullptr);  // 16 GiB would wrap to a small request
        EXPECT_EQ(kelsMalloc_32f(0x40000001), nullptr);
    }
    EXPECT_EQ(Alloc2_32f(1 << 20, 1 << 20), nullptr);
}

TEST(Memory, RowsArePaddedAlignedAndInsideTheBlock) {
    for (const int cols : {1, 7, 8, 9, 39}) {
        for (const int rows : {1, 2, 13}) {
            Kel32f** const a = Alloc2_32f(rows, cols);
            const std::ptrdiff_t length = (cols + 7) / 8 * 8;
            EXPECT_GE(reinterpret_cast<char*>(a[0]), reinterpret_cast<char*>(a + rows));
            EXPECT_LT(reinterpret_cast<char*>(a[0]) - reinterpret_cast<char*>(a + rows), 32);
            for (int i = 0; i < rows; ++i) {
                EXPECT_TRUE(alignedTo(a[i], 32));
                EXPECT_EQ(a[i] - a[0], i * length);
                std::memset(a[i], 0, static_cast<std::size_t>(length) * sizeof(Kel32f));
            }
            Free2(a);
        }
    }
    EXPECT_EQ(RLsAlloc2(0, 4), nullptr);
    EXPECT_EQ(RLsAlloc2(4, 0), nullptr);
    Kel32s** const none = Alloc2_32s(0, 4);
    EXPECT_NE(none, nullptr);
    Free2d(none);
}

// Arrays of any alignment lie in order and do not overlap, and the measured size holds them wherever the block begins.
TEST(Memory, LayoutsPlaceWhatTheyMeasure) {
    for (const std::size_t blockAlignment : {1, 8, 32, 64}) {
        Kel8u *small = nullptr, *end = nullptr;
        Kel64f *line = nullptr, *vectors = nullptr;
        const auto arrange = [&](Layout& layout) {
            small = layout.take<Kel8u>(5, 1);
            line = layout.take<Kel64f>(3, 128);
            vectors = layout.take<Kel64f>(7);
            end = layout.take<Kel8u>(1, 1);
        };
        Layout measured;
        arrange(measured);
        EXPECT_EQ(small, nullptr);
        const int64_t bytes = measured.bytes(blockAlignment);
        alignas(128) Kel8u memory[1024];
        for (std::size_t start = blockAlignment; start < 256; start += blockAlignment) {
            Layout places(memory + start);
            arrange(places);
            EXPECT_TRUE(alignedTo(line, 128) && alignedTo(vectors, 32));
            EXPECT_EQ(small, memory + start);
            EXPECT_LE(small + 5, reinterpret_cast<Kel8u*>(line));
            EXPECT_LE(line + 3, vectors);
            EXPECT_EQ(end, reinterpret_cast<Kel8u*>(vectors + 7));
            EXPECT_EQ(places.bytes(), end + 1 - small);
            EXPECT_LE(places.bytes(), bytes);
        }
    }
    Layout endless;
    endless.take<Kel64f>(INT64_MAX);
    endless.take<Kel64f>(INT64_MAX / 16);
    EXPECT_EQ(allocate<Kel8u>(endless.bytes()), nullptr);
}

TEST(Version, IsOneConstantRecord) {
    const KelLibVersion* const v = kelsrGetLibVersion();
    EXPECT_EQ(v, kelsrGetLibVersion());
    EXPECT_TRUE(v->major == 4 && v->minor == 1 && v->majorBuild == 12 && v->build == 5);
    EXPECT_EQ(std::memcmp(v->targetCpu, "a6\0", 4), 0);
    EXPECT_EQ(std::string(v->name), "libkelsra6.so");
    EXPECT_EQ(std::string(v->version), "v4.1");
    EXPECT_EQ(std::string(v->buildDate), "Jul 23 2004");
}

}  // namespace
