// Reads and writes the table of errors.
#include "table.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "kels.h"

namespace accuracy {
namespace {

constexpr const char* kBuilds[] = {"i386", "x86-64", "x86-64-v3", "x86-64-v4"};
constexpr const char* kHead =
    "| function | arguments | unit | i386 | x86-64 | x86-64-v3 | x86-64-v4 |\n|---|---|---|---:|---:|---:|---:|\n";

std::size_t thisBuild() {
    for (std::size_t b = 0; b < std::size(kBuilds); ++b) {
        if (kBuilds[b] == std::string(kelsrGetTargetName())) return b;
    }
    std::abort();
}

// The cells of a row; of any other line none.
std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    if (line.rfind("| `kels", 0) != 0) return cells;
    for (std::size_t at = 1, bar; (bar = line.find('|', at)) != std::string::npos; at = bar + 1) {
        const std::size_t first = line.find_first_not_of(' ', at), last = line.find_last_not_of(' ', bar - 1);
        cells.push_back(first >= bar ? "" : line.substr(first, last + 1 - first));
    }
    if (cells.size() != 3 + std::size(kBuilds)) cells.clear();
    return cells;
}
std::string nameIn(const std::vector<std::string>& cells) {
    return cells[0].substr(1, cells[0].size() - 2);
}

std::string number(double error) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3g", error);
    return text;
}

// The order in which sums are taken is the library's choice: their errors vary more.
bool hasGrown(const TableRow& row, double before) {
    return !(row.error <= before * (row.unit == Unit::Ulp ? 1.05 : 1.3) + 1e-3);
}

}  // namespace

const char* text(Unit unit) {
    return unit == Unit::Ulp ? "ulp" : unit == Unit::Sum ? "sum" : "peak";
}

std::string describe(const sweep::Signature& s, const Reference& reference) {
    if (reference.results) return reference.ranges;
    std::map<std::string, std::string> namesOf;  // by their range
    for (const sweep::Argument& a : s.arguments) {
        const std::string range = rangeText(a, reference.ranges);
        if (!range.empty()) namesOf[range] += (namesOf[range].empty() ? "" : ", ") + a.name;
    }
    std::string all;
    for (const auto& [range, names] : namesOf) all += (all.empty() ? "" : "; ") + names + " " + range;
    return all;
}

bool compare(const Table& table, const char* path) {
    std::ifstream in(path);
    std::map<std::string, double> before;
    for (std::string line; std::getline(in, line);) {
        const auto cells = cellsOf(line);
        if (!cells.empty()) before[nameIn(cells)] = std::strtod(cells[3 + thisBuild()].c_str(), nullptr);
    }
    bool bad = false;
    for (const auto& [name, row] : table.rows) {
        const auto found = before.find(name);
        if (found != before.end() && !hasGrown(row, found->second)) continue;
        bad = true;
        if (found == before.end()) std::printf("%s is not in the table\n", name.c_str());
        if (found != before.end()) std::printf("%s: %.4g instead of %.4g\n", name.c_str(), row.error, found->second);
    }
    return bad;
}

bool write(const Table& table, const char* path) {
    std::ifstream in(path);
    std::string text;
    std::map<std::string, std::vector<std::string>> all;
    for (std::string line; std::getline(in, line);) {
        const auto cells = cellsOf(line);
        if (cells.empty()) text += line + "\n";
        if (!cells.empty() && table.rows.count(nameIn(cells)) != 0) all[nameIn(cells)] = cells;
    }
    in.close();
    const std::size_t head = text.find(kHead);
    if (head == std::string::npos) return false;
    std::string lines;
    for (const auto& [name, row] : table.rows) {
        auto& cells = all[name];
        cells.resize(3 + std::size(kBuilds));
        cells[0] = "`" + name + "`";
        cells[1] = row.arguments;
        cells[2] = accuracy::text(row.unit);
        cells[3 + thisBuild()] = number(row.error);
        for (const std::string& cell : cells) lines += "| " + cell + " ";
        lines += "|\n";
    }
    text.insert(head + std::string(kHead).size(), lines);
    std::ofstream(path) << text;
    return true;
}

}  // namespace accuracy
