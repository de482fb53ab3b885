// Shortlists of Gaussians and sign tables.
#include "kels/select.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/guarded.h"
#include "support/random.h"

namespace {

enum class Kind { Rows, Columns, Signs };

// All six functions by the names of the sizes: `lists` lists of numbers below `bound`, each number or list being a row.
struct Call {
    const Kel32s *numbers, *counts;
    int n, bound, lists, step, offset, width;
    Kel8u **rows, *dst;
    const Kel8u** constRows() const { return const_cast<const Kel8u**>(rows); }
};
KelStatus fillRows(const Call& c) {
    return kelsFillShortlist_Row_1u(c.numbers, c.bound, c.n, c.rows, c.lists, c.step, c.offset);
}
KelStatus fillRowsVar(const Call& c) {
    return kelsFillShortlist_RowVar_1u(c.numbers, c.bound, c.counts, c.rows, c.lists, c.step, c.offset);
}
KelStatus fillColumns(const Call& c) {
    return kelsFillShortlist_Column_1u(c.numbers, c.n, c.rows, c.bound, c.step, c.offset, c.lists);
}
KelStatus fillColumnsVar(const Call& c) {
    return kelsFillShortlist_ColumnVar_1u(c.numbers, c.counts, c.rows, c.bound, c.step, c.offset, c.lists);
}
KelStatus buildSigns(const Call& c) {
    return kelsBuildSignTable_8u1u(c.numbers, c.n, c.constRows(), c.bound, c.step, c.offset, c.dst, c.lists, c.width);
}
KelStatus buildSignsVar(const Call& c) {
    return kelsBuildSignTable_Var_8u1u(c.numbers, c.counts, c.constRows(), c.bound, c.step, c.offset, c.dst, c.lists,
                                       c.width);
}

struct Form {
    const char* name;
    Kind kind;
    bool variable;  // a count for every list
    KelStatus (*run)(const Call&);
};
const Form kForms[] = {
    {.name = "FillShortlist_Row_1u", .kind = Kind::Rows, .variable = false, .run = fillRows},
    {.name = "FillShortlist_RowVar_1u", .kind = Kind::Rows, .variable = true, .run = fillRowsVar},
    {.name = "FillShortlist_Column_1u", .kind = Kind::Columns, .variable = false, .run = fillColumns},
    {.name = "FillShortlist_ColumnVar_1u", .kind = Kind::Columns, .variable = true, .run = fillColumnsVar},
    {.name = "BuildSignTable_8u1u", .kind = Kind::Signs, .variable = false, .run = buildSigns},
    {.name = "BuildSignTable_Var_8u1u", .kind = Kind::Signs, .variable = true, .run = buildSignsVar},
};
void PrintTo(const Form& form, std::ostream* out) {
    *out << form.name;
}

// A problem with random lists and random bits in all rows, which end at the last byte that may be touched.
struct Problem {
    std::vector<int> counts;
    std::vector<Kel32s> numbers;
    int rowBits, rowBytes;
    test::Guarded<Kel8u> table, dst;
    std::vector<Kel8u*> rows;
    Call call;

    Problem(const Form& form, test::Random& random, int lists, int bound, int n, int width, int offset)
        : rowBits(form.kind == Kind::Rows      ? bound
                  : form.kind == Kind::Columns ? lists
                                               : width),
          rowBytes((offset + rowBits + 7) / 8),
          table((form.kind == Kind::Rows ? lists : bound) * rowBytes),
          dst(std::vector<Kel8u>(lists * ((width + 7) / 8), 0xa5)) {
        for (int i = 0; i < lists; ++i) counts.push_back(form.variable ? random.between(1, n) : n);
        for (const int count : counts) {
            for (int k = 0; k < count; ++k) numbers.push_back(random.between(0, bound - 1));
        }
        // A sign that any row sets by accident would hide one that is lost.
        for (std::size_t i = 0; i < table.size(); ++i) {
            table[i] = static_cast<Kel8u>(random.between(0, 255) & random.between(0, 255));
        }
        for (Kel8u* row = table + table.size(); row != table; rows.push_back(row)) row -= rowBytes;
        call = {numbers.data(), counts.data(), n, bound, lists, rowBytes, offset, width, rows.data(), dst.data()};
    }
};

class Selection : public ::testing::TestWithParam<Form> {};
INSTANTIATE_TEST_SUITE_P(Forms, Selection, ::testing::ValuesIn(kForms),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(Selection, SetsExactlyTheBitsOfTheLists) {
    test::Random random(7);
    const Form& form = GetParam();
    for (int round = 0; round < 600; ++round) {
        const int lists = random.between(1, 20), bound = random.between(1, 40), n = random.between(1, 6);
        const int offset = random.between(0, 19), width = round % 4 ? random.between(1, 41) : 8 * random.between(1, 9);
        Problem p(form, random, lists, bound, n, width, offset);
        auto table = p.table.vector(), dst = p.dst.vector();
        if (form.kind == Kind::Signs) std::fill(dst.begin(), dst.end(), Kel8u{0});
        const auto mask = [](std::size_t bit) { return static_cast<Kel8u>(128 >> bit % 8); };
        const Kel32s* number = p.numbers.data();
        for (int i = 0; i < lists; ++i) {
            for (int k = 0; k < p.counts[i]; ++k, ++number) {
                const Kel8u* const row = p.rows[form.kind == Kind::Rows ? i : *number];
                const std::size_t first = 8 * (row - p.table.data()) + offset;
                const std::size_t flipped = first + (form.kind == Kind::Rows ? *number : i);
                if (form.kind != Kind::Signs) table[flipped / 8] ^= mask(flipped);
                for (int j = 0; form.kind == Kind::Signs && j < width; ++j) {
                    if (table[(first + j) / 8] & mask(first + j)) dst[i * ((width + 7) / 8) + j / 8] |= mask(j);
                }
            }
        }
        ASSERT_EQ(form.run(p.call), 0);
        ASSERT_EQ(p.table.vector(), table);
        ASSERT_EQ(p.dst.vector(), dst);
    }
}

TEST_P(Selection, RefusesNumbersOutside) {
    test::Random random(3);
    for (const int bad : {-1, 19}) {
        Problem p(GetParam(), random, 17, 19, 3, 20, 5);
        const auto table = p.table.vector(), dst = p.dst.vector();
        p.numbers[bad < 0 ? 0 : p.numbers.size() - 1] = bad;
        EXPECT_EQ(GetParam().run(p.call), kelStatusBadArg);
        p.counts.back() = p.call.n = 0;
        EXPECT_EQ(GetParam().run(p.call), kelStatusSize);
        EXPECT_TRUE(p.table.vector() == table && p.dst.vector() == dst);
    }
}

}  // namespace
