// Recursive descent to the steps of a stack machine.
#include "sweep/expression.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace sweep {

// Recursive descent, one level of precedence a call, to steps of a stack machine.
class Parser {
  public:
    using Step = Expression::Step;
    Parser(const std::string& text, const Expression::Lookup& lookup, Expression& out)
        : text_(text), at_(text_.c_str()), lookup_(lookup), out_(out) {}
    void run() {
        level(0);
        if (*skip() != 0) fail();
    }

  private:
    struct Operator {
        const char* sign;
        Step::Code code;
    };
    static constexpr Operator kLevels[][6] = {
        {{"||", Step::Or}},
        {{"&&", Step::And}},
        {{"==", Step::Equal},
         {"!=", Step::NotEqual},
         {"<=", Step::LessEqual},
         {">=", Step::GreaterEqual},
         {"<", Step::Less},
         {">", Step::Greater}},
        {{"+", Step::Add}, {"-", Step::Subtract}},
        {{"//", Step::Quotient}, {"*", Step::Multiply}, {"/", Step::Divide}, {"%", Step::Remainder}},
    };
    static constexpr std::size_t kLevelCount = std::size(kLevels);

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
    void expect(const char* sign) {
        if (!take(sign)) fail();
    }
    void emit(Step::Code code, double number = 0, std::size_t variable = 0, const std::string& function = "") {
        out_.steps_.push_back({code, number, variable, function});
    }
    void level(std::size_t n) {
        if (n == kLevelCount) return unary();
        level(n + 1);
        for (bool again = true; again;) {
            again = false;
            for (const Operator& op : kLevels[n]) {
                if (op.sign == nullptr || !take(op.sign)) continue;
                level(n + 1);
                emit(op.code);
                again = true;
                break;
            }
        }
    }
    void unary() {
        if (take("-")) return unary(), emit(Step::Negative);
        if (*skip() == '!' && at_[1] != '=') return ++at_, unary(), emit(Step::Not);
        if (take("(")) return level(0), expect(")");
        if (std::isdigit(*skip()) != 0) return number();
        name();
    }
    void number() {
        char* end;
        const char* const two = std::strstr(at_, "..");  // 1..40: not a fraction
        std::string digits(at_, two == nullptr ? std::strlen(at_) : static_cast<std::size_t>(two - at_));
        const double value = std::strtod(digits.c_str(), &end);
        at_ += end - digits.c_str();
        out_.numbers_.push_back(value);
        emit(Step::Number, value);
    }
    void name() {
        const char* const begin = at_;
        while (std::isalnum(*at_) != 0 || *at_ == '_' || *at_ == '.') ++at_;
        const std::string word(begin, at_);
        if (word.empty()) fail();
        static constexpr Operator kFunctions[] = {{"min", Step::Min},
                                                  {"max", Step::Max},
                                                  {"floor", Step::Floor},
                                                  {"pow2", Step::Power2},
                                                  {"up2", Step::UpToPower2}};
        if (word == "i" && *at_ != '(' && *at_ != '[') return emit(Step::Index);
        if (!take("(")) {
            const std::size_t variable = lookup_(word);
            if (!take("[")) return emit(Step::Name, 0, variable);
            level(0);
            expect("]");
            return emit(Step::Element, 0, variable);
        }
        if (word == "sum" || word == "null" || word == "size") {
            const char* const argument = skip();
            while (*at_ != ')' && *at_ != 0) ++at_;
            const std::string given(argument, at_);
            if (word == "size") emit(Step::Size, 0, 0, given);
            if (word != "size") emit(word == "sum" ? Step::Sum : Step::Null, 0, lookup_(given));
            return expect(")");
        }
        for (const Operator& function : kFunctions) {
            if (word != function.sign) continue;
            level(0);
            if (take(",")) level(0);
            expect(")");
            return emit(function.code);
        }
        fail();
    }

    std::string text_;
    const char* at_;
    const Expression::Lookup& lookup_;
    Expression& out_;
};

Expression::Expression(const std::string& text, const Lookup& lookup) {
    Parser(text, lookup, *this).run();
}

double Expression::operator()(Variables& variables, double index) const {
    double stack[17];  // the first place stays unused
    double* top = stack;
    for (const Step& step : steps_) {
        const bool binary = step.code >= Step::Add && step.code <= Step::Max;
        const double b = binary ? *top-- : 0;
        double* const a = top;
        switch (step.code) {
            case Step::Number:
                *++top = step.number;
                break;
            case Step::Name:
                *++top = variables.value(step.variable);
                break;
            case Step::Index:
                *++top = index;
                break;
            case Step::Element:
                *a = variables.element(step.variable, *a);
                break;
            case Step::Sum:
                *++top = variables.sum(step.variable);
                break;
            case Step::Null:
                *++top = variables.isNull(step.variable);
                break;
            case Step::Size:
                *++top = variables.sizeBy(step.function);
                break;
            case Step::Negative:
                *a = -*a;
                break;
            case Step::Not:
                *a = *a == 0;
                break;
            case Step::Add:
                *a += b;
                break;
            case Step::Subtract:
                *a -= b;
                break;
            case Step::Multiply:
                *a *= b;
                break;
            case Step::Divide:
                *a /= b;
                break;
            case Step::Quotient:
                *a = std::floor(*a / b);
                break;
            case Step::Remainder:
                *a = std::fmod(*a, b);
                break;
            case Step::Less:
                *a = *a < b;
                break;
            case Step::LessEqual:
                *a = *a <= b;
                break;
            case Step::Greater:
                *a = *a > b;
                break;
            case Step::GreaterEqual:
                *a = *a >= b;
                break;
            case Step::Equal:
                *a = *a == b;
                break;
            case Step::NotEqual:
                *a = *a != b;
                break;
            case Step::And:
                *a = *a != 0 && b != 0;
                break;
            case Step::Or:
                *a = *a != 0 || b != 0;
                break;
            case Step::Min:
                *a = std::fmin(*a, b);
                break;
            case Step::Max:
                *a = std::fmax(*a, b);
                break;
            case Step::Floor:
                *a = std::floor(*a);
                break;
            case Step::UpToPower2:
                *a = *a > 2 ? std::exp2(std::ceil(std::log2(*a))) : 2;
                break;
            case Step::Power2:
                *a = std::exp2(*a);
                break;
        }
    }
    return *top;
}

}  // namespace sweep
