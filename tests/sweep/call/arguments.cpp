// The arguments of a call: what is not pinned is chosen at random, as its rule says.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "sweep/call/call.h"

namespace sweep {
namespace {

double clampTo(const Type& type, double value) {
    if (type.kind == Kind::Float) return type.size == 4 ? static_cast<double>(static_cast<float>(value)) : value;
    const double half = std::exp2(8 * type.size - 1);
    return type.size == 1 ? std::clamp(value, 0.0, 255.0) : std::clamp(std::floor(value), -half, half - 1);
}

double special(Dice& dice, bool single) {
    constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    const double some[] = {0, -0.0, 1, -1, inf, -inf, nan, single ? 0x1p-149 : 0x1p-1074, single ? 3.4e38 : 1.7e308};
    return some[dice.between(0, 8)];
}

int64_t anyInteger(Dice& dice, int size) {
    const int64_t half = int64_t{1} << (8 * size - 2), most = half - 1 + half;
    const int64_t some[] = {most, size == 1 ? 0 : -most - 1, 0, 1, dice.between(-9, 9)};
    const auto kind = dice.between(0, 9);
    const int64_t v = kind < 5 ? some[kind] : static_cast<int64_t>(dice.bits()) >> (64 - 8 * size);
    return size == 1 ? v & 255 : v;
}

void store(uint8_t* at, const Type& type, double real, int64_t whole) {
    const int size = type.size / type.parts;
    const auto put = [at](auto v) { std::memcpy(at, &v, sizeof v); };
    if (type.element == Element::Float) {
        if (size == 4) put(static_cast<float>(real));
        if (size == 8) put(real);
    } else {
        if (size == 1) put(static_cast<uint8_t>(whole));
        if (size == 2) put(static_cast<int16_t>(whole));
        if (size == 4) put(static_cast<int32_t>(whole));
        if (size == 8) put(whole);
    }
}

// Memory for a structure is counted in bytes.
std::size_t sizeOf(const Argument& argument) {
    return std::max<std::size_t>(argument.type.size, 1);
}

}  // namespace

Call::Call(const Signature& signature, Memory& memory, Dice& dice, int largest)
    : s_(signature), memory_(memory), dice_(dice), largest_(largest) {
    const std::size_t n = s_.arguments.size();
    scalar_.resize(n);
    state_.resize(n);
    later_.resize(n);
    pinned_.resize(n);
    null_.resize(n);
    arrays_.resize(n);
    objects_.resize(n);
    tables_.resize(n);
    images_.resize(n);
    values_.resize(n);
}

Call::~Call() {
    for (std::size_t a = 0; a < objects_.size(); ++a) {
        for (Object& object : objects_[a]) releaseObject(s_.arguments[a], object);
    }
}

void Call::pin(std::size_t argument, double v) {
    scalar_[argument] = clampTo(s_.arguments[argument].type, v);
    pinned_[argument] = true;
}
void Call::pinBeyond(std::size_t argument, bool above) {
    const Argument& a = s_.arguments[argument];
    if (!a.low) return;
    later_[argument] = [this, &a, above] { return clampTo(a.type, above ? a.high(*this) + 1 : a.low(*this) - 1); };
}
void Call::pinBeside(std::size_t argument, std::size_t other, double difference) {
    later_[argument] = [this, argument, other, difference] {
        return clampTo(s_.arguments[argument].type, value(other) + difference);
    };
}
void Call::prefer(int size, int after) {
    preferred_ = size;
    before_ = after;
}
bool Call::takesPreferred() {
    return preferred_ > 0 && before_-- <= 0;
}
void Call::setNull(std::size_t argument) {
    null_[argument] = pinned_[argument] = true;
}

double Call::value(std::size_t variable) {
    if (variable < kFirstProperty - 1) {
        resolve(variable);
        return scalar_[variable];
    }
    if (variable == kFirstProperty - 1) return 0;
    const Property& property = s_.properties[variable - kFirstProperty];
    resolve(property.argument);
    double all = 0;
    for (const Object& object : objects_[property.argument]) {
        const auto found = object.properties.find(property.name);
        if (found == object.properties.end()) {
            std::fprintf(stderr, "%s: no property %s\n", s_.function.name, property.name.c_str());
            std::abort();
        }
        all += found->second;
    }
    return all;
}

double Call::element(std::size_t array, double index) {
    resolve(array);
    const Type& type = s_.arguments[array].type;
    const auto& content = arrays_[array].content;
    if (!(index >= 0) || index * type.size + type.size > static_cast<double>(content.size())) return 0;
    const uint8_t* const at = &content[static_cast<std::size_t>(index) * type.size];
    if (type.size == 1) return *at;
    int16_t v16;
    int32_t v32;
    std::memcpy(&v16, at, 2);
    if (type.size == 2) return v16;
    std::memcpy(&v32, at, 4);
    return v32;
}

double Call::sum(std::size_t array) {
    if (!s_.arguments[array].kind.empty()) return 0;
    resolve(array);
    double all = 0;
    for (std::size_t i = 0; (i + 1) * s_.arguments[array].type.size <= arrays_[array].content.size(); ++i) {
        all += element(array, static_cast<double>(i));
    }
    return all;
}

// Bytes that a function of the library reports in its last argument; one whose name ends in _ takes the end of this
// one's.
double Call::sizeBy(const std::string& function) {
    const std::string own = s_.function.name;
    const Signature& asked = signature(function + (function.back() == '_' ? own.substr(own.rfind('_') + 1) : ""));
    std::vector<Value> values(asked.arguments.size());
    int bytes = 0;
    for (std::size_t k = 0; k + 1 < values.size(); ++k) {
        for (std::size_t a = 0; a < s_.arguments.size(); ++a) {
            if (s_.arguments[a].name != asked.arguments[k].name) continue;
            if (s_.arguments[a].isObject()) {
                resolve(a);
                if (!objects_[a].empty()) values[k].pointer = objects_[a][0].pointer;
            }
            if (s_.arguments[a].type.kind == Kind::Float) values[k].real = value(a);
            if (s_.arguments[a].type.kind == Kind::Int) values[k].integer = static_cast<int64_t>(value(a));
        }
    }
    values.back().pointer = &bytes;
    return asked.function.caller(asked.function.plain, values.data()) == 0 ? bytes : std::nan("");
}

double Call::randomScalar(const Argument& argument) {
    const Type& type = argument.type;
    if (argument.name == "sf" && !argument.low) {
        return dice_.oneIn(4) ? static_cast<double>(anyInteger(dice_, type.size))
                              : static_cast<double>(dice_.between(-8, 40));
    }
    if (argument.low) {
        const double low = argument.low(*this), high = std::max(low, argument.high(*this));
        const bool wide = preferred_ >= low && preferred_ <= high && high > low + 20 && type.kind == Kind::Int;
        if (wide && takesPreferred()) return std::exchange(preferred_, 0);
        if (dice_.oneIn(6)) return clampTo(type, dice_.oneIn(2) ? low : high);
        if (type.kind == Kind::Float) return clampTo(type, low + dice_.uniform() * (high - low));
        return clampTo(
            type, static_cast<double>(dice_.between(static_cast<int64_t>(std::ceil(low)), static_cast<int64_t>(high))));
    }
    if (type.kind == Kind::Float) {
        return clampTo(type, argument.any && dice_.oneIn(3) ? special(dice_, type.size == 4) : dice_.ordinary());
    }
    if (argument.any || type.size < 4) return static_cast<double>(anyInteger(dice_, type.size));
    if (takesPreferred()) return std::exchange(preferred_, 0);
    if (dice_.oneIn(3)) return static_cast<double>(dice_.between(1, std::min(largest_, 9)));
    if (largest_ <= 64 || dice_.oneIn(2)) return static_cast<double>(dice_.between(1, std::min(largest_, 80)));
    return static_cast<double>(dice_.between(1, largest_));
}

void Call::resolve(std::size_t a) {
    tooLarge_ |= state_[a] == 1;  // chosen by one that is chosen by it: it is 0 for the moment
    if (state_[a] != 0) return;
    state_[a] = 1;
    const Argument& argument = s_.arguments[a];
    if (argument.scalar) {
        if (!pinned_[a]) scalar_[a] = later_[a] ? later_[a]() : randomScalar(argument);
    } else {
        if (argument.nullable && !pinned_[a]) null_[a] = dice_.oneIn(4);
        if (argument.isObject() && !argument.released) {
            const double wanted = argument.shape.empty() ? 1 : argument.shape[0](*this);
            for (int k = 0; k < std::clamp(wanted, 0.0, 12.0); ++k) {
                objects_[a].push_back(makeObject(argument, dice_, dice_.oneIn(2) ? 0xFF : 0x5A));
            }
            tooLarge_ |= wanted > 12;
        }
        place(a);
    }
    state_[a] = 2;
}

// Finds a place for an array and makes up what it holds.
void Call::place(std::size_t a) {
    const Argument& argument = s_.arguments[a];
    Array& array = arrays_[a];
    if (argument.isObject() && argument.shape.empty()) return;
    if (argument.isObject()) {
        for (const Object& object : objects_[a]) tables_[a].push_back(object.pointer);
    }
    const bool pointers = argument.created || argument.isObject();
    if (pointers) array.rows = 1, array.row = sizeof(void*) * (argument.created ? 1 : tables_[a].size());
    if (!pointers && argument.shape.size() == 2) placeRows(a);
    if (!pointers && argument.shape.size() != 2) measure(a);
    if (array.table.at == nullptr) {
        const std::size_t bytes = array.rows == 0 ? 0 : array.step * (array.rows - 1) + array.row;
        const bool end = !dice_.oneIn(4);
        const std::size_t alignment = argument.type.size == 0 ? 16 : 1;  // of structures
        const std::size_t from = (Memory::kSlotBytes - bytes) / alignment * alignment;
        array.pieces.push_back({memory_.slot(a) + (end ? from : 0), bytes, end ? Piece::Before : Piece::Behind});
    }
    std::size_t all = 0;
    for (const Piece& piece : array.pieces) all += piece.bytes;
    array.content.resize(all);
    if (!tables_[a].empty()) std::memcpy(array.content.data(), tables_[a].data(), all);
    if (argument.kind.empty() && !argument.scratch && argument.isInput()) fillContent(a);
}

// Whether an array of so many bytes can be had.  If not, something small takes its place, and nothing is called unless
// a check refuses it.
bool Call::fits(double bytes) {
    const double most = largest_ <= 20 ? 20000 : Memory::kSlotBytes - 2 * Memory::kMargin;
    const bool good = bytes >= 0 && bytes <= most;
    tooLarge_ |= !good;
    return good;
}

// The size of one row, or of rows with a step.
void Call::measure(std::size_t a) {
    const Argument& argument = s_.arguments[a];
    Array& array = arrays_[a];
    const auto size = static_cast<double>(sizeOf(argument));
    double extent[3] = {1, 0, 0};
    for (std::size_t k = 0; k < argument.shape.size(); ++k) extent[k] = argument.shape[k](*this);
    const bool stepped = argument.shape.size() == 3;
    const bool good = fits(extent[0] < 0 ? -1 : size * (stepped ? (extent[0] - 1) * extent[1] + extent[2] : extent[0]));
    const auto bytes = [=](double elements) { return static_cast<std::size_t>(size * std::floor(elements)); };
    array.rows = 1;
    if (!good) {
        array.row = bytes(8);
    } else if (stepped && extent[1] >= extent[2] && extent[2] >= 0) {
        array.rows = static_cast<std::size_t>(extent[0]);
        array.row = bytes(extent[2]);
        array.step = array.rows == 1 ? array.row : bytes(extent[1]);
    } else {  // also for a faulty step
        array.row = bytes(stepped ? (extent[0] - 1) * extent[1] + extent[2] : extent[0]);
    }
}

// Rows apart from each other, as many as there are places for, with a table of their addresses.
void Call::placeRows(std::size_t a) {
    const Argument& argument = s_.arguments[a];
    Array& array = arrays_[a];
    const double rows = argument.shape[0](*this), size = static_cast<double>(sizeOf(argument));
    std::vector<double> lengths;
    double bytes = 0;
    for (int r = 0; r < std::clamp(rows, 0.0, 4096.0); ++r) {
        lengths.push_back(argument.shape[1](*this, r));
        bytes = lengths.back() >= 0 ? bytes + size * lengths.back() : NAN;
    }
    if (!fits(bytes) || !fits(rows > 4096 ? -1 : rows * sizeof(void*))) lengths.assign(3, 1), bytes = 3 * size;
    array.rows = lengths.size();
    array.table = {nullptr, array.rows * sizeof(void*), Piece::Before};
    array.table.at = memory_.slot(a) + Memory::kSlotBytes - array.table.bytes;
    uint8_t* next = memory_.rest(a) + Memory::kSlotBytes - static_cast<std::size_t>(bytes);
    for (std::size_t r = 0; r < array.rows; ++r) {
        const auto length = static_cast<std::size_t>(size * lengths[r]);
        const bool apart = r < Memory::kRows && length + 2 * Memory::kMargin < Memory::kRowBytes;
        if (apart) array.pieces.push_back({memory_.row(a, r) + Memory::kRowBytes - length, length, Piece::Before});
        if (!apart) array.pieces.push_back({next, length, Piece::Nowhere});
        next += length;
    }
}

void Call::fillContent(std::size_t a) {
    const Argument& argument = s_.arguments[a];
    const Type& type = argument.type;
    const int part = type.size / type.parts;
    auto& content = arrays_[a].content;
    Dice dice(dice_.bits());
    const auto kind = dice.between(0, 11);
    const double constant = dice.ordinary();
    for (std::size_t at = 0, i = 0; at + static_cast<std::size_t>(part) <= content.size();
         at += static_cast<std::size_t>(part), ++i) {
        double real = 0;
        int64_t whole = 0;
        if (argument.low) {
            const auto index = static_cast<double>(i);
            const double low = argument.low(*this, index), high = std::max(low, argument.high(*this, index));
            real = dice.oneIn(9) ? (dice.oneIn(2) ? low : high) : low + dice.uniform() * (high - low);
            if (type.element == Element::Integer) {
                whole = std::clamp(static_cast<int64_t>(std::floor(real + 0.5)), static_cast<int64_t>(std::ceil(low)),
                                   static_cast<int64_t>(high));
            }
        } else if (type.element == Element::Float) {
            real = kind < 6 || kind > 9 ? dice.ordinary()
                   : kind == 6          ? constant
                   : kind == 7          ? static_cast<double>(dice.between(-2, 2))
                                        : 0;
            if ((kind == 8 && !dice.oneIn(3)) || kind == 9)
                real = dice.oneIn(3) ? special(dice, part == 4) : dice.ordinary();
        } else {
            whole = kind < 6    ? anyInteger(dice, part)
                    : kind < 9  ? dice.between(part == 1 ? 0 : -200, 200)
                    : kind == 9 ? 0
                                : dice.between(0, 3);
        }
        Type one = type;
        one.size = static_cast<uint8_t>(part);
        one.parts = 1;
        store(&content[at], one, real, whole);
    }
}

bool Call::prepare() {
    for (std::size_t a = 0; a < s_.arguments.size(); ++a) resolve(a);
    for (std::size_t a = 0; a < s_.arguments.size(); ++a) {
        images_[a].clear();
        for (const Object& object : objects_[a]) {
            for (const auto& block : object.blocks) images_[a].append(static_cast<char*>(block.at), block.size);
        }
    }
    return !tooLarge_ || (expected() != 0 && !s_.notes("reads"));
}

KelStatus Call::expected() {
    for (const Check& check : s_.checks) {
        bool fault = false;
        if (check.expression) {
            fault = check.expression(*this) != 0;
        } else {
            for (std::size_t a = 0; a < s_.arguments.size(); ++a) fault |= null_[a] && !s_.arguments[a].nullable;
        }
        if (fault) return check.status;
    }
    return 0;
}

}  // namespace sweep
