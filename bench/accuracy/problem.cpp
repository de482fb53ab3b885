// Makes problems up and compares results.
#include "problem.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace accuracy {
namespace {

constexpr int kLargest = 90;        // size
constexpr double kIntegers = 1000;  // times the range, of arrays of integers

std::map<std::string, Range> parse(const std::string& text) {
    std::map<std::string, Range> ranges;
    for (const std::string& word : wordsOf(text)) {
        const std::size_t equals = word.find('='), dots = word.find("..");
        const double low = std::atof(word.c_str() + equals + 1);
        const double high = dots == std::string::npos ? low : std::atof(word.c_str() + dots + 2);
        ranges[word.substr(0, equals)] = {low, high};
    }
    return ranges;
}

Rows toRows(const sweep::Call::Elements& elements) {
    Rows rows;
    for (const auto& row : elements) rows.emplace_back(row.begin(), row.end());
    return rows;
}

}  // namespace

double draw(Range range, sweep::Dice& dice) {
    if (range.low != 0 || range.high == 0) return range.low + dice.uniform() * (range.high - range.low);
    return std::ldexp(range.high * (0.5 + dice.uniform() / 2), -static_cast<int>(dice.between(0, 29)));
}

Problem::Problem(const sweep::Signature& s, sweep::Memory& memory, uint64_t seed,
                 const std::map<std::string, Range>& ranges)
    : signature_(s), dice_(seed), call_(s, memory, dice_, kLargest) {
    const auto rangeOf = [&](const sweep::Argument& argument) {
        const auto found = ranges.find(argument.name);
        return found == ranges.end() ? nullptr : &found->second;
    };
    for (std::size_t a = 0; a < s.arguments.size(); ++a) {
        const sweep::Argument& argument = s.arguments[a];
        const Range* const range = rangeOf(argument);
        if (!argument.scalar || (range == nullptr && (argument.type.kind == sweep::Kind::Int || argument.low)))
            continue;
        const Range used = range == nullptr ? Range{} : *range;
        if (argument.type.kind == sweep::Kind::Float) call_.pin(a, draw(used, dice_));
        if (argument.type.kind == sweep::Kind::Int) {
            call_.pin(
                a, static_cast<double>(dice_.between(static_cast<int64_t>(used.low), static_cast<int64_t>(used.high))));
        }
    }
    ready_ = call_.prepare() && call_.expected() == 0;
    for (std::size_t a = 0; ready_ && a < s.arguments.size(); ++a) {
        const sweep::Argument& argument = s.arguments[a];
        const Range* const range = rangeOf(argument);
        const bool floats = argument.type.element == sweep::Element::Float;
        if (argument.scalar || !argument.kind.empty() || !argument.isInput() || call_.null(a)) continue;
        if (range == nullptr && (argument.low || !floats)) continue;
        const Range used = range == nullptr ? Range{} : *range;
        call_.setGiven(a, [&](std::size_t, std::size_t) { return draw(used, dice_) * (floats ? 1 : kIntegers); });
    }
}

std::size_t Problem::at(const char* name) const {
    for (std::size_t a = 0; a < signature_.arguments.size(); ++a) {
        if (signature_.arguments[a].name == name) return a;
    }
    std::fprintf(stderr, "%s has no argument %s\n", signature_.function.name, name);
    std::abort();
}
bool Problem::has(const char* name) const {
    for (std::size_t a = 0; a < signature_.arguments.size(); ++a) {
        if (signature_.arguments[a].name == name) return !call_.null(a);
    }
    return false;
}
const Rows& Problem::all(const char* array) {
    const auto [found, isNew] = given_.try_emplace(at(array));
    if (isNew) found->second = toRows(call_.given(at(array)));
    return found->second;
}
const Rows& Problem::result(const char* array) {
    const auto [found, isNew] = left_.try_emplace(at(array));
    if (isNew) found->second = toRows(call_.left(at(array)));
    return found->second;
}
bool Problem::isCalled(const char* part) const {
    return std::strstr(signature_.function.name, part) != nullptr;
}
Real Problem::number(const char* scalar) const {
    return call_.scalar(at(scalar));
}
Real Problem::property(const char* object, const char* name, std::size_t k) const {
    return call_.objects(at(object))[k].properties.at(name);
}
void Problem::set(const char* array, const std::function<double(std::size_t, std::size_t)>& element) {
    call_.setGiven(at(array), element);
    given_.erase(at(array));
}
bool Problem::call() {
    return call_.callOnce() >= 0;
}

Rows& Problem::exact(const char* array) {
    const std::size_t argument = at(array);
    for (Output& output : outputs_) {
        if (output.argument == argument) return output.exact;
    }
    const sweep::Type& type = signature_.arguments[argument].type;
    Rows exact = result(array);
    for (Row& row : exact) row.assign(row.size(), {0, -1});
    outputs_.push_back({argument, type.size / type.parts == 4 ? 24 : 53, exact, result(array)});
    return outputs_.back().exact;
}

namespace {

// 2^-digits of the binade of `exact`, of subnormal results the least number.
Real ulpOf(Real exact, int digits) {
    const int least = digits == 24 ? -125 : -1021;
    int exponent = least;
    if (exact != 0) std::frexp(exact, &exponent);
    return std::ldexp(1.0L, std::max(exponent, least) - digits);
}

double errorOf(const Output& output, Unit unit) {
    Real worst = 0, peak = 0;
    for (const Row& row : output.exact) {
        for (const Exact& e : row) peak = std::max(peak, e.magnitude < 0 ? 0 : std::fabs(e.value));
    }
    for (std::size_t r = 0; r < output.exact.size(); ++r) {
        for (std::size_t i = 0; i < output.exact[r].size(); ++i) {
            const Exact& exact = output.exact[r][i];
            const Real difference = std::fabs(output.got[r][i].value - exact.value);
            if (exact.magnitude < 0 || difference == 0) continue;
            const Real least = std::ldexp(1.0L, output.digits == 24 ? -149 : -1074);
            const Real scale = unit == Unit::Ulp   ? ulpOf(exact.value, output.digits)
                               : unit == Unit::Sum ? std::max(std::ldexp(exact.magnitude, -output.digits), least)
                                                   : std::max(std::ldexp(peak, -output.digits), least);
            const Real error = difference / scale;
            worst = error >= 0 ? std::max(worst, error) : HUGE_VALL;
        }
    }
    return static_cast<double>(worst);
}

}  // namespace

double largestError(const sweep::Signature& signature, const Reference& reference) {
    static sweep::Memory* const memory = new sweep::Memory;
    const auto ranges = parse(reference.ranges);
    double worst = 0;
    if (reference.results) {
        for (const Output& output : reference.results(signature.function.name)) {
            worst = std::max(worst, errorOf(output, reference.unit));
        }
        return worst;
    }
    int done = 0;
    for (int k = 0; k < reference.times; ++k) {
        Problem problem(signature, *memory, static_cast<uint64_t>(k) + 1, ranges);
        if (!problem.ready()) continue;
        if (reference.prepare) reference.prepare(problem);
        if (!problem.call()) continue;
        reference.exact(problem);
        ++done;
        for (const Output& output : problem.outputs()) worst = std::max(worst, errorOf(output, reference.unit));
    }
    return done > 0 ? worst : HUGE_VAL;
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

std::string rangeText(const sweep::Argument& argument, const std::string& ranges) {
    const bool floats = argument.type.element == sweep::Element::Float;
    if (!argument.kind.empty() || !argument.isInput()) return "";
    const auto all = parse(ranges);
    const auto found = all.find(argument.name);
    if (found == all.end()) return floats && !argument.low ? "-9..9" : "";
    const double scale = floats || argument.scalar ? 1 : kIntegers;
    std::ostringstream out;
    out << found->second.low * scale;
    if (found->second.high != found->second.low) out << ".." << found->second.high * scale;
    return out.str();
}

std::string stemOf(const std::string& function) {
    std::istringstream in(function);
    std::string stem;
    for (std::string part; std::getline(in, part, '_');) {
        const bool typed = std::isdigit(static_cast<unsigned char>(part[0])) != 0 && part.back() != 'i';
        if (typed) return stem;  // 32f, 16s32f, 32fc; but 2i is part of a name
        stem += (stem.empty() ? "" : "_") + part;
    }
    return stem;
}

}  // namespace accuracy
