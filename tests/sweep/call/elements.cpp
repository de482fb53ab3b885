// The arrays of a call as numbers.
#include <cstring>

#include "sweep/call/call.h"

namespace sweep {
namespace {

template <class T>
double loadAs(const uint8_t* at) {
    T v;
    std::memcpy(&v, at, sizeof v);
    return static_cast<double>(v);
}
template <class T>
void storeAs(uint8_t* at, double v) {
    const T one = static_cast<T>(v);
    std::memcpy(at, &one, sizeof one);
}

template <class Use>
void withType(const Type& type, Use use) {
    const int size = type.size / type.parts;
    if (type.element == Element::Float) {
        if (size == 4) use(float{});
        if (size == 8) use(double{});
    } else {
        if (size == 1) use(uint8_t{});
        if (size == 2) use(int16_t{});
        if (size == 4) use(int32_t{});
        if (size == 8) use(int64_t{});
    }
}

}  // namespace

// Where the rows begin, in what is given or in the memory of the call.
std::vector<const uint8_t*> Call::rowsOf(std::size_t a, bool given) const {
    const Array& array = arrays_[a];
    std::vector<const uint8_t*> rows;
    std::size_t at = 0;
    for (std::size_t r = 0; r < array.rows; ++r) {
        const bool apart = array.table.at != nullptr;
        const uint8_t* const memory = apart ? array.pieces[r].at : array.pieces[0].at + at;
        rows.push_back(given ? array.content.data() + at : memory);
        at += apart ? array.pieces[r].bytes : array.step;
    }
    return rows;
}

Call::Elements Call::elements(std::size_t a, bool given) const {
    const Array& array = arrays_[a];
    Elements all;
    for (const uint8_t* const row : rowsOf(a, given)) {
        const std::size_t bytes = array.table.at != nullptr ? array.pieces[all.size()].bytes : array.row;
        all.emplace_back();
        withType(s_.arguments[a].type, [&](auto type) {
            for (std::size_t at = 0; at + sizeof type <= bytes; at += sizeof type) {
                all.back().push_back(loadAs<decltype(type)>(row + at));
            }
        });
    }
    return all;
}

void Call::setGiven(std::size_t a, const std::function<double(std::size_t, std::size_t)>& element) {
    const Array& array = arrays_[a];
    const auto rows = rowsOf(a, true);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const std::size_t bytes = array.table.at != nullptr ? array.pieces[r].bytes : array.row;
        uint8_t* const row = arrays_[a].content.data() + (rows[r] - array.content.data());
        withType(s_.arguments[a].type, [&](auto type) {
            for (std::size_t i = 0; (i + 1) * sizeof type <= bytes; ++i) {
                storeAs<decltype(type)>(row + i * sizeof type, element(r, i));
            }
        });
    }
}

KelStatus Call::callOnce() {
    restore({});
    give({});
    return plainCall();
}

}  // namespace sweep
