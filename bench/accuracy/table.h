// The table of errors, in memory and in docs/accuracy.md: a row a function, a column a build.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "problem.h"

namespace accuracy {

struct TableRow {
    std::string arguments;  // what was tried
    Unit unit;
    double error;
};
struct Table {
    std::map<std::string, TableRow> rows;
    std::vector<std::string> missing;  // functions without a reference
};

const char* text(Unit unit);

// The ranges of the arguments, as a row tells of them.
std::string describe(const sweep::Signature& signature, const Reference& reference);

// Says which rows of this build have grown, and which are not in the file; true if there are any.
bool compare(const Table& table, const char* path);

// Puts this build's figures into the table of the file; false where the file has no table.
bool write(const Table& table, const char* path);

}  // namespace accuracy
