// Measures the largest error of every function with results in floating point against references in extended precision.
// usage: accuracy [PART]        the rows, of functions whose names hold PART
//        accuracy --check FILE  compares them with those of FILE and fails where one of this build has grown
//        accuracy --update FILE writes the figures of this build into the table of FILE
#include <cstdio>
#include <cstring>

#include "table.h"

namespace {

using namespace accuracy;

References allReferences() {
    References all;
    for (const auto family : {vectorReferences, frontendReferences, predictionReferences, scoreReferences,
                              trainingReferences, matrixReferences, matchReferences, enhanceReferences,
                              resampleReferences, pitchReferences, auroraReferences, featureReferences}) {
        const References some = family();
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

bool hasFloatResults(const sweep::Signature& s) {
    for (const sweep::Argument& a : s.arguments) {
        const bool written = !a.scalar && !a.type.isConst && !a.scratch && !a.isObject() && !a.created;
        if (written && a.type.element == sweep::Element::Float) return true;
    }
    return false;
}

// The functions by their stems, each with the reference that knows it.
Table measure(const char* part) {
    std::map<std::string, const Reference*> byStem;
    const References references = allReferences();
    for (const Reference& reference : references) {
        for (const std::string& stem : wordsOf(reference.stems)) byStem[stem] = &reference;
    }
    Table table;
    for (const sweep::Signature& s : sweep::signatures()) {
        const std::string name = s.function.name;
        const auto found = byStem.find(stemOf(name));
        if (name.find(part) == std::string::npos) continue;
        if (found == byStem.end()) {
            if (hasFloatResults(s)) table.missing.push_back(name);
            continue;
        }
        if (!hasFloatResults(s)) continue;
        const Reference& reference = *found->second;
        table.rows[name] = {describe(s, reference), reference.unit, largestError(s, reference)};
    }
    return table;
}

}  // namespace

int main(int argc, char** argv) {
    const bool check = argc == 3 && std::strcmp(argv[1], "--check") == 0;
    const bool update = argc == 3 && std::strcmp(argv[1], "--update") == 0;
    const Table table = measure(argc == 2 ? argv[1] : "");
    for (const std::string& name : table.missing) std::printf("%s has no reference\n", name.c_str());
    if (check) return compare(table, argv[2]) || !table.missing.empty();
    if (update) return !write(table, argv[2]);
    for (const auto& [name, row] : table.rows)
        std::printf("%-52s %10.4g %s\n", name.c_str(), row.error, text(row.unit));
    return 0;
}
