// What is tried with a call.
#include <algorithm>
#include <cstdio>

#include "sweep/call/call.h"

namespace sweep {
namespace {

std::string number(double v) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", v);
    return text;
}

}  // namespace

std::string Call::tryFault() {
    const KelStatus status = expected();
    Setting setting;
    const Result result = run(setting);
    if (result.refusals > 0 && result.status == s_.memory) return result.wrong;  // sizes beyond all reason
    if (result.status == status && status > 0 && result.wrong.empty()) return untouched(setting, result);
    if (result.status != status)
        return "status " + std::to_string(result.status) + " instead of " + std::to_string(status);
    return result.wrong;
}

// A good call returns 0, a warning or an error that its rule names; it changes nothing but its outputs, and these are
// the same to the bit whatever lies in memory that is not the function's to read.
std::string Call::tryGood() {
    Setting setting;
    setting.fill = 0xFF;
    const Result first = run(setting);
    if (first.refusals > 0 && first.status == s_.memory) return first.wrong;
    if (!allowed(first.status)) return "status " + std::to_string(first.status);
    if (!first.wrong.empty()) return first.wrong;
    Setting other;
    other.fill = 0x41;
    const Result second = run(other);
    if (!second.wrong.empty()) return second.wrong;
    const std::string difference = compare(first, second, setting, other, true);
    return difference.empty() ? "" : "over other garbage: " + difference;
}

// A call that does without memory that it asked for leaves what it usually leaves.
std::string Call::tryFailingAllocations() {
    const Result usual = run({});
    for (int n = 0; n < 60; ++n) {
        Setting setting;
        setting.failAt = n;
        const Result result = run(setting);
        std::string wrong = result.wrong;
        if (wrong.empty() && result.status != s_.memory && !allowed(result.status)) {
            wrong = "status " + std::to_string(result.status);
        }
        if (wrong.empty() && result.status >= 0) wrong = compare(usual, result, setting, setting, true);
        if (!wrong.empty()) return "allocation " + std::to_string(n) + " failing: " + wrong;
        if (result.allocations <= n) return "";
    }
    return "";
}

std::string Call::tryRoundingModes() {
    Setting setting;
    const Result usual = run(setting);
    for (unsigned mode = 1; mode < 6; ++mode) {
        Setting other;
        other.mxcsr = mode < 4 ? 0x1F80 | mode << 13 : mode == 4 ? 0x9FC0 : 0xFFC0;  // 4, 5: flushing to zero
        other.x87 = static_cast<uint16_t>(mode < 4 ? 0x037F | mode << 10 : mode == 4 ? 0x027F : 0x0F7F);
        const Result result = run(other);
        if (!result.wrong.empty()) return "rounding mode " + std::to_string(mode) + ": " + result.wrong;
        if (mode > 3 || s_.roundsByMode()) continue;
        const std::string difference = compare(usual, result, setting, other, s_.notes("anymode"));
        if (!difference.empty()) return "rounding mode " + std::to_string(mode) + ": " + difference;
    }
    return "";
}

std::string Call::tryInPlace() {
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        for (const std::size_t source : s_.arguments[a].aliases) {
            Array &to = arrays_[a], &from = arrays_[source];
            if (null_[a] || null_[source] || to.rows != from.rows || to.row > from.row || to.step != from.step)
                continue;
            if (to.pieces.size() != from.pieces.size()) continue;
            if (s_.arguments[a].readToo && to.row == from.row) to.content = from.content;
            Setting apart, together;
            together.alias = a;
            together.inPlaceOf = source;
            const Result first = run(apart), second = run(together);
            if (first.status < 0 && first.status == second.status) continue;  // nothing is written
            const std::string wrong =
                !second.wrong.empty() ? second.wrong : compare(first, second, apart, apart, !s_.notes("order"));
            if (!wrong.empty())
                return "with " + s_.arguments[a].name + " in place of " + s_.arguments[source].name + ": " + wrong;
        }
    }
    return "";
}

// ---- threads --------------------------------------------------------------------------------------------------------

bool Call::reusable() const {
    return std::none_of(s_.arguments.begin(), s_.arguments.end(),
                        [](const Argument& a) { return a.created || a.released; });
}
void Call::shareWith(const Call& first) {
    restore({});
    give({});
    if (&first == this) return;
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        const bool own = argument.isObject() ? s_.notes("own") || (!argument.type.isConst && !s_.notes("shared"))
                                             : !argument.type.isConst;
        if (!argument.scalar && !own) values_[a] = first.values_[a];
    }
}
KelStatus Call::plainCall() {
    return s_.function.caller(s_.function.plain, values_.data());
}
std::string Call::outputs() {
    std::string bytes;
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        const bool addresses = argument.type.size == 0 || s_.notes("addresses");  // of its own inside
        if (!argument.scalar && !argument.scratch && !argument.type.isConst && !addresses) bytes += bytesOf(a);
    }
    return bytes;
}

std::string Call::text() {
    std::string all = std::string(s_.function.name) + "(";
    for (std::size_t a = 0; a < arrays_.size(); ++a) {
        const Argument& argument = s_.arguments[a];
        if (a > 0) all += ", ";
        all += argument.name + "=";
        if (argument.scalar)
            all += number(scalar_[a]);
        else if (null_[a])
            all += "null";
        else {
            all += "{";
            if (!objects_[a].empty()) {
                for (const auto& [name, v] : objects_[a][0].properties) all += name + " " + number(v) + ", ";
            }
            std::size_t bytes = 0;
            for (const Piece& piece : arrays_[a].pieces) bytes += piece.bytes;
            all += std::to_string(bytes) + " bytes}";
        }
    }
    return all + ")";
}

}  // namespace sweep
