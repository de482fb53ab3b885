// Matching: time warping, codebooks, vectors from tables.
#include <type_traits>

#include "forms.h"

namespace accuracy {
namespace {

Exact euclidean(const Row& a, const Row& b) {
    return sqrt(sum(a.size(), [&](std::size_t i) { return square(a[i] - b[i]); }));
}

// The longer sequence is walked row by row, in the other one the path stays or goes on by one or two.
void timeWarping(Problem& p) {
    const Rows *outer = &p.all("a"), *inner = &p.all("b");
    if (inner->size() > outer->size()) std::swap(outer, inner);
    Row costs;
    for (const Row& x : *outer) {
        Row next;
        for (std::size_t j = 0; j < inner->size(); ++j) {
            Exact best = costs.empty() ? Exact() : costs[j];
            for (std::size_t back = 1; back <= std::min<std::size_t>(j, 2) && !costs.empty(); ++back) {
                best = std::min(best, costs[j - back]);
            }
            next.push_back(best + euclidean(x, (*inner)[j]));
        }
        costs = next;
    }
    p.exact("r")[0][0] = *std::min_element(costs.begin(), costs.end());
}

Rows codevectorsOf(KelCdbk_32f* book, std::size_t width) {
    int size;
    kelsGetCdbkSize_32f(book, &size);
    std::vector<Kel32f> all(static_cast<std::size_t>(size) * width);
    kelsGetCodebook_32f(book, all.data(), static_cast<int>(width));
    Rows rows;
    for (std::size_t i = 0; i < all.size(); i += width) rows.emplace_back(&all[i], &all[i] + width);
    return rows;
}
// Distances from the codevectors that were chosen.
void distances(Problem& p) {
    const Rows books = codevectorsOf(p.object<KelCdbk_32f>("b"), p.all("s")[0].size());
    Row& d = p.exact("d")[0];
    const std::size_t found = p.has("r") ? static_cast<std::size_t>(p.result("r")[0][0].value) : d.size();
    for (std::size_t i = 0; i < found; ++i) {
        const auto index = static_cast<std::size_t>(p.result("x")[0][i].value);
        d[i] = euclidean(p.all("s")[i % p.all("s").size()], books[index]);
    }
}

// The codevectors that indices name, one behind the other; packed indices have as many bits as each book needs.
void vectorsOfBooks(Problem& p) {
    Rows& d = p.exact("d");
    const bool packed = p.isCalled("_1u");
    for (std::size_t r = 0; r < d.size(); ++r) {
        std::size_t at = 0, bit = packed ? r * static_cast<std::size_t>(p.whole("step")) : 0;
        for (std::size_t k = 0; at < d[r].size(); ++k) {
            const auto width = static_cast<std::size_t>(p.property("b", "width", k));
            std::size_t index = 0;
            for (int bits = static_cast<int>(p.property("b", "bits", k)); packed && bits > 0; --bits, ++bit) {
                index = 2 * index + (static_cast<std::size_t>(p.row("s")[bit / 8].value) >> (7 - bit % 8) & 1);
            }
            if (!packed) index = static_cast<std::size_t>(p.all("s")[r][k].value);
            const Row vector = codevectorsOf(p.object<KelCdbk_32f>("b", k), width)[index];
            std::copy(vector.begin(), vector.end(), d[r].begin() + static_cast<std::ptrdiff_t>(at));
            at += width;
        }
    }
}
void vectorsOfTables(Problem& p) {
    Row& d = p.exact("d")[0];
    std::size_t at = 0;
    for (const char* const indices : {"x", "y", "u", "v"}) {
        for (std::size_t k = 0; p.has(indices) && k < p.row(indices).size(); ++k) {
            const auto from = static_cast<std::size_t>(p.row(indices)[k].value * p.row("st")[k].value);
            for (std::size_t i = 0; i < static_cast<std::size_t>(p.row("ww")[k].value); ++i) {
                d[at++] = p.all("tables")[k][from + i];
            }
        }
    }
}

}  // namespace

References matchReferences() {
    return {
        {"kelsDTW_L2", "w=1..20 h=1..20 k=1..20 delta=90 beam=1e6", Unit::Sum, timeWarping, nullptr, 60},
        {"kelsVQDist kelsVQDistSingle_Sort kelsVQDistSingle_Thresh", "s=-256..256", Unit::Sum, distances, nullptr, 60},
        {"kelsFormVectorVQ", "", Unit::Ulp, vectorsOfBooks, nullptr, 60},
        {"kelsFormVector kelsFormVector_2i kelsFormVector_4i", "", Unit::Ulp, vectorsOfTables},
    };
}

}  // namespace accuracy
