// Forms that references have: one result an element, one from a whole row.
#pragma once

#include "problem.h"

namespace accuracy {

// d[i] = f(s[i]); of functions in place, from what d held.
template <class F>
auto each(F f) {
    return [f](Problem& p) {
        Rows& d = p.exact("d");
        for (std::size_t r = 0; r < d.size(); ++r) {
            const Row& s = p.all(p.has("s") ? "s" : "d")[r];
            for (std::size_t i = 0; i < d[r].size(); ++i) d[r][i] = f(s[i]);
        }
    };
}

// The same of two arrays, d itself the second of functions in place.
template <class F>
auto pairs(F f, const char* first = "s", const char* second = "t") {
    return [=](Problem& p) {
        Rows& d = p.exact("d");
        for (std::size_t r = 0; r < d.size(); ++r) {
            const Row &x = p.all(first)[r], &y = p.all(p.has(second) ? second : "d")[r];
            for (std::size_t i = 0; i < d[r].size(); ++i) d[r][i] = f(x[i], y[i]);
        }
    };
}

// With a scalar as well.
template <class F>
auto eachWith(const char* scalar, F f) {
    return [=](Problem& p) {
        const Exact c = p.number(scalar);
        each([&](const Exact& x) { return f(x, c); })(p);
    };
}

// r[0] = f(s)
template <class F>
auto whole(F f) {
    return [f](Problem& p) { p.exact("r")[0][0] = f(p.row("s")); };
}

}  // namespace accuracy
