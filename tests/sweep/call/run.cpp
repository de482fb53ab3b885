// The call itself, and what must be as it was afterwards.
#include <xmmintrin.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "sweep/call/call.h"

namespace sweep {
namespace {

constexpr uint8_t kMarginByte = 0x5C;
constexpr unsigned kMxcsrControl = 0xFFC0;  // all but the exception flags

uint16_t x87Control() {
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}
void setX87Control(uint16_t word) {
    asm volatile("fldcw %0" : : "m"(word));
}

[[gnu::noinline]] void fillStack(int byte) {
    volatile char below[60000];
    std::memset(const_cast<char*>(below), byte, sizeof below);
}

}  // namespace

long Call::calls = 0;

// body(block, image) with all memory of an argument's objects and what it held when they were made.
template <class Body>
void Call::forBlocks(std::size_t a, Body body) const {
    const char* image = images_[a].data();
    for (const Object& object : objects_[a]) {
        for (const Block& block : object.blocks) body(block, std::exchange(image, image + block.size));
    }
}

void Call::restore(const Setting& setting) {
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        Array& array = arrays_[a];
        const bool given = !tables_[a].empty() || (argument.kind.empty() && !argument.scratch && argument.isInput());
        std::size_t at = 0;
        for (const Piece& piece : array.pieces) {
            if (given && piece.bytes > 0) std::memcpy(piece.at, &array.content[at], piece.bytes);
            if (!given) std::memset(piece.at, setting.fill, piece.bytes);
            if (piece.margin == Piece::Before) std::memset(piece.at - Memory::kMargin, kMarginByte, Memory::kMargin);
            if (piece.margin == Piece::Behind) std::memset(piece.at + piece.bytes, kMarginByte, Memory::kMargin);
            at += piece.bytes;
        }
        if (!array.table.at) {
            for (std::size_t r = 0; r + 1 < array.rows && array.step > array.row; ++r) {
                std::memset(array.pieces[0].at + r * array.step + array.row, setting.fill, array.step - array.row);
            }
        } else {
            for (std::size_t r = 0; r < array.rows; ++r) {
                std::memcpy(array.table.at + r * sizeof(void*), &array.pieces[r].at, sizeof(void*));
            }
        }
        forBlocks(a, [](const Block& block, const char* image) {
            if (std::memcmp(block.at, image, block.size) != 0) std::memcpy(block.at, image, block.size);
        });
    }
}

void Call::give(const Setting& setting) {
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        if (argument.scalar) {
            if (argument.type.kind == Kind::Float) values_[a].real = scalar_[a];
            if (argument.type.kind == Kind::Int) values_[a].integer = static_cast<int64_t>(scalar_[a]);
            continue;
        }
        const Array& array = arrays_[a == setting.alias ? setting.inPlaceOf : a];
        void* p = array.table.at != nullptr ? array.table.at : array.pieces.empty() ? nullptr : array.pieces[0].at;
        if (argument.isObject() && argument.shape.empty()) p = objects_[a].empty() ? nullptr : objects_[a][0].pointer;
        values_[a].pointer = null_[a] ? nullptr : p;
    }
}

std::string Call::bytesOf(std::size_t a) const {
    std::string bytes;
    for (const Piece& piece : arrays_[a].pieces) bytes.append(reinterpret_cast<const char*>(piece.at), piece.bytes);
    return bytes;
}

// Whether objects are as they were made.
bool Call::objectsStay(std::size_t a) const {
    bool same = true;
    forBlocks(a, [&](const Block& block, const char* image) {
        same = same && std::memcmp(block.at, image, block.size) == 0;
    });
    return same;
}

// Whether an array holds its content, or the filling if it has none; between its rows is always the filling.
bool Call::arrayStays(std::size_t a, bool given, int fill) const {
    const Array& array = arrays_[a];
    std::size_t at = 0;
    for (const Piece& piece : array.pieces) {
        for (std::size_t k = 0; k < piece.bytes; ++k, ++at) {
            const bool gap = array.step > array.row && k % array.step >= array.row;
            if (piece.at[k] != (given && !gap ? array.content[at] : static_cast<uint8_t>(fill))) return false;
        }
    }
    return true;
}

// What must not have changed: sources, what lies between rows and beside arrays.
std::string Call::gapsAndMargins(const Setting& setting) const {
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        const Array& array = arrays_[a];
        for (const Piece& piece : array.pieces) {
            const bool before = piece.margin == Piece::Before;
            const uint8_t* const margin = before ? piece.at - Memory::kMargin : piece.at + piece.bytes;
            if (piece.margin != Piece::Nowhere &&
                std::count(margin, margin + Memory::kMargin, kMarginByte) != Memory::kMargin) {
                return "wrote " + std::string(before ? "before " : "behind ") + argument.name;
            }
        }
        for (std::size_t r = 0; r < array.rows; ++r) {
            if (array.table.at != nullptr &&
                std::memcmp(array.table.at + r * sizeof(void*), &array.pieces[r].at, sizeof(void*)) != 0) {
                return "changed a row pointer of " + argument.name;
            }
            if (array.table.at != nullptr || array.step <= array.row || r + 1 == array.rows) continue;
            const uint8_t* const gap = array.pieces[0].at + r * array.step + array.row;
            const auto n = static_cast<std::ptrdiff_t>(array.step - array.row);
            if (std::count(gap, gap + n, static_cast<uint8_t>(setting.fill)) != n)
                return "wrote between rows of " + argument.name;
        }
        const bool source = !tables_[a].empty() || (argument.kind.empty() && argument.type.isConst);
        const bool changed = (source && a != setting.inPlaceOf && !arrayStays(a, true, setting.fill)) ||
                             (argument.type.isConst && !s_.notes("own") && !objectsStay(a));
        if (changed) return "changed " + argument.name;
    }
    return "";
}

// After an error: what must not have changed either.
std::string Call::untouched(const Setting& setting, const Result& result) const {
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        if (argument.scalar || argument.scratch || (argument.type.isConst && argument.kind.empty())) continue;
        if ((argument.created || s_.notes("unfinished")) && result.status == s_.memory)
            continue;  // may hold what is not finished
        const bool given = !tables_[a].empty() || (argument.kind.empty() && argument.isInput());
        if (!arrayStays(a, given, setting.fill)) return "wrote " + argument.name + " in spite of an error";
        if (!s_.notes("own") && !objectsStay(a)) return "changed " + argument.name + " in spite of an error";
    }
    return "";
}

Call::Result Call::run(const Setting& setting) {
    Result result;
    restore(setting);
    give(setting);
    test::AllocationWatch watch;
    int given = 0;  // blocks of objects that the call is to release
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        if (!s_.arguments[a].released || null_[a]) continue;
        objects_[a] = {makeObject(s_.arguments[a], dice_, setting.fill)};
        given += static_cast<int>(objects_[a][0].blocks.size());
        values_[a].pointer = objects_[a][0].pointer;
    }
    // Other garbage than in outputs, where it would pass for what has not been written.
    watch.restart(setting.failAt, kLargestBlock, setting.fill ^ 0x33);
    fillStack(setting.fill ^ 0x66);
    const unsigned mxcsr = _mm_getcsr();
    const uint16_t x87 = x87Control();
    setX87Control(setting.x87);
    _mm_setcsr(setting.mxcsr);
    result.status = s_.function.caller(s_.function.plain, values_.data());
    const unsigned mxcsrAfter = _mm_getcsr();
    const uint16_t x87After = x87Control();
    _mm_setcsr(mxcsr);
    setX87Control(x87);
    ++calls;
    result.allocations = watch.calls();
    result.refusals = watch.refusals();
    watch.restart(-1);

    if ((mxcsrAfter & kMxcsrControl) != (setting.mxcsr & kMxcsrControl))
        result.wrong = "changed the control word of the SSE unit";
    if (x87After != setting.x87) result.wrong = "changed the control word of the x87 unit";
    if (result.wrong.empty()) result.wrong = gapsAndMargins(setting);
    const bool mayWrite = s_.notes("writes") && std::count(s_.may.begin(), s_.may.end(), result.status) != 0;
    if (result.wrong.empty() && result.status < 0 && !mayWrite && setting.alias == SIZE_MAX)
        result.wrong = untouched(setting, result);

    result.written.resize(arrays_.size());
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        if (argument.scalar || argument.scratch || argument.created || argument.type.isConst) continue;
        if (a != setting.alias) result.written[a] = bytesOf(a);
        forBlocks(a, [&](const Block& block, const char*) {
            if (!argument.released) result.written[a].append(static_cast<char*>(block.at), block.size);
        });
    }
    if (setting.alias != SIZE_MAX) result.written[setting.alias] = bytesOf(setting.inPlaceOf);

    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        if (argument.created && !null_[a]) {
            void* made;
            void* before;
            std::memcpy(&made, arrays_[a].pieces[0].at, sizeof made);
            std::memset(&before, setting.fill, sizeof before);
            const bool something = made != before && made != nullptr;
            if (something) objectKind(argument).release(made);
            if (!something && result.status >= 0 && result.wrong.empty()) result.wrong = "made no " + argument.name;
        }
        if (argument.released && !objects_[a].empty()) {
            Object& object = objects_[a][0];
            if (result.status >= 0) objectKind(argument).discard(object.pointer), object = {};
            releaseObject(argument, object);
            objects_[a].clear();
        }
    }
    if (s_.notes("leaks") && result.refusals > 0) {
        while (!watch.blocks().empty()) std::free(watch.blocks().back().at);
    }
    if (result.wrong.empty() && watch.unreleased() + given != 0) {
        result.wrong = "left " + std::to_string(watch.unreleased() + given) + " blocks on the heap";
    }
    return result;
}

bool Call::allowed(KelStatus status) const {
    // Sizes that memory may be refused for without being asked for.
    double largest = 1, second = 1;
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        if (!s_.arguments[a].scalar) continue;
        second = std::max(second, std::min(largest, scalar_[a]));
        largest = std::max(largest, scalar_[a]);
    }
    const bool huge = largest > 60000 || largest * second > 1e8;
    return status >= 0 || std::count(s_.may.begin(), s_.may.end(), status) != 0 || (huge && status == s_.memory);
}

std::string Call::compare(const Result& a, const Result& b, const Setting& first, const Setting& second,
                          bool floats) const {
    if (a.status != b.status && !floats && a.status >= 0 && b.status >= 0) return "";  // warnings follow the results
    if (a.status != b.status) return "status " + std::to_string(b.status) + " instead of " + std::to_string(a.status);
    for (std::size_t k = 0; k < arrays_.size(); ++k) {
        const Argument& argument = s_.arguments[k];
        if (!floats && (argument.type.element != Element::Integer || argument.isObject())) continue;
        const std::string &x = a.written[k], &y = b.written[k];
        for (std::size_t i = 0; i < std::min(x.size(), y.size()); ++i) {
            if (x[i] == y[i]) continue;
            const bool neither = x[i] == static_cast<char>(first.fill) && y[i] == static_cast<char>(second.fill);
            if (!neither) return "other results in " + argument.name + " at byte " + std::to_string(i);
        }
    }
    return "";
}

}  // namespace sweep
