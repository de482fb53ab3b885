// Recursive descent to nested functions, a level of precedence a call.
#include "sweep/expression.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace sweep {
namespace {

using Term = std::function<double(Variables&, double)>;

struct Operator {
    const char* sign;
    double (*apply)(double, double);
};
const std::vector<Operator> kLevels[] = {
    {{"||", [](double a, double b) -> double { return a != 0 || b != 0; }}},
    {{"&&", [](double a, double b) -> double { return a != 0 && b != 0; }}},
    {{"==", [](double a, double b) -> double { return a == b; }},
     {"!=", [](double a, double b) -> double { return a != b; }},
     {"<=", [](double a, double b) -> double { return a <= b; }},
     {">=", [](double a, double b) -> double { return a >= b; }},
     {"<", [](double a, double b) -> double { return a < b; }},
     {">", [](double a, double b) -> double { return a > b; }}},
    {{"+", [](double a, double b) { return a + b; }}, {"-", [](double a, double b) { return a - b; }}},
    {{"//", [](double a, double b) { return std::floor(a / b); }},
     {"*", [](double a, double b) { return a * b; }},
     {"/", [](double a, double b) { return a / b; }},
     {"%", [](double a, double b) { return std::fmod(a, b); }}},
};
constexpr std::size_t kLevelCount = std::size(kLevels);
// Of one operand, or of two.
const Operator kFunctions[] = {
    {"min", [](double a, double b) { return std::fmin(a, b); }},
    {"max", [](double a, double b) { return std::fmax(a, b); }},
    {"floor", [](double a, double) { return std::floor(a); }},
    {"pow2", [](double a, double) { return std::exp2(a); }},
    {"up2", [](double a, double) { return a > 2 ? std::exp2(std::ceil(std::log2(a))) : 2; }},
};

class Parser {
  public:
    Parser(const std::string& text, const Expression::Lookup& lookup, std::vector<double>& numbers)
        : text_(text), at_(text_.c_str()), lookup_(lookup), numbers_(numbers) {}
    Term run() {
        Term whole = level(0);
        if (*skip() != 0) fail();
        return whole;
    }

  private:
    [[noreturn]] void fail() {
        std::fprintf(stderr, "bad expression '%s' at '%s'\n", text_.c_str(), at_);
        std::abort();
    }
    const char* skip() {
        while (*at_ == ' ') ++at_;
        return at_;
    }
    bool take(const char* sign) {
        const std::size_t n = std::strlen(sign);
        if (std::strncmp(skip(), sign, n) != 0) return false;
        at_ += n;
        return true;
    }
    Term closed(Term term, const char* bracket) {
        if (!take(bracket)) fail();
        return term;
    }
    const Operator* takeOne(const std::vector<Operator>& level) {
        for (const Operator& op : level) {
            if (take(op.sign)) return &op;
        }
        return nullptr;
    }
    static Term join(const Operator& op, const Term& a, const Term& b) {
        return [=, apply = op.apply](auto& v, double i) {
            const double first = a(v, i);
            return apply(first, b(v, i));
        };
    }
    Term level(std::size_t n) {
        if (n == kLevelCount) return unary();
        Term a = level(n + 1);
        while (const Operator* const op = takeOne(kLevels[n])) a = join(*op, a, level(n + 1));
        return a;
    }
    Term unary() {
        if (take("-")) return [a = unary()](auto& v, double i) { return -a(v, i); };
        if (*skip() == '!' && at_[1] != '=') {
            ++at_;
            return [a = unary()](auto& v, double i) -> double { return a(v, i) == 0; };
        }
        if (take("(")) return closed(level(0), ")");
        return std::isdigit(*skip()) != 0 ? number() : name();
    }
    Term number() {
        char* end;
        const char* const two = std::strstr(at_, "..");  // 1..40: not a fraction
        const std::string digits(at_, two == nullptr ? std::strlen(at_) : static_cast<std::size_t>(two - at_));
        const double value = std::strtod(digits.c_str(), &end);
        at_ += end - digits.c_str();
        numbers_.push_back(value);
        return [=](auto&, double) { return value; };
    }
    Term name() {
        const char* const begin = at_;
        while (std::isalnum(*at_) != 0 || *at_ == '_' || *at_ == '.') ++at_;
        const std::string word(begin, at_);
        if (word.empty()) fail();
        if (word == "i" && *at_ != '(' && *at_ != '[') return [](auto&, double i) { return i; };
        if (!take("(")) {
            const std::size_t variable = lookup_(word);
            if (!take("[")) return [=](auto& v, double) { return v.value(variable); };
            const Term place = closed(level(0), "]");
            return [=](auto& v, double i) { return v.element(variable, place(v, i)); };
        }
        if (word == "sum" || word == "null" || word == "size") {
            const char* const argument = skip();
            while (*at_ != ')' && *at_ != 0) ++at_;
            const std::string given(argument, at_);
            if (word == "size") return closed([=](auto& v, double) { return v.sizeBy(given); }, ")");
            const std::size_t variable = lookup_(given);
            if (word == "sum") return closed([=](auto& v, double) { return v.sum(variable); }, ")");
            return closed([=](auto& v, double) -> double { return v.isNull(variable); }, ")");
        }
        for (const Operator& function : kFunctions) {
            if (word != function.sign) continue;
            const Term a = level(0);
            return closed(join(function, a, take(",") ? level(0) : a), ")");
        }
        fail();
    }

    std::string text_;
    const char* at_;
    const Expression::Lookup& lookup_;
    std::vector<double>& numbers_;
};

}  // namespace

Expression::Expression(const std::string& text, const Lookup& lookup) : term_(Parser(text, lookup, numbers_).run()) {}

}  // namespace sweep
