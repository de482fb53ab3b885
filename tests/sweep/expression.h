// Expressions of the rules: sizes, ranges and conditions over the arguments of a call.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace sweep {

// What an expression is about.
class Variables {
  public:
    virtual double value(std::size_t variable) = 0;               // a scalar
    virtual double element(std::size_t array, double index) = 0;  // of an array of integers
    virtual double sum(std::size_t array) = 0;
    virtual bool isNull(std::size_t argument) = 0;
    virtual double sizeBy(const std::string& function) = 0;

  protected:
    ~Variables() = default;
};

// Numbers, names, + - * / // (whole quotient) % < <= > >= == != ! && ||, brackets, min(a,b), max(a,b), floor(a),
// pow2(a), up2(a) (the power of 2 from 2 on that holds a), name[i] and sum(name) of arrays, null(name), size(function):
// what that function says for the arguments of its names.  All values are doubles, true is 1.
class Expression {
  public:
    using Lookup = std::function<std::size_t(const std::string&)>;
    Expression() = default;
    Expression(const std::string& text, const Lookup& lookup);
    explicit operator bool() const { return term_ != nullptr; }
    double operator()(Variables& variables, double index = 0) const { return term_(variables, index); }
    const std::vector<double>& numbers() const { return numbers_; }  // that the text names

  private:
    std::vector<double> numbers_;
    std::function<double(Variables&, double index)> term_;
};

}  // namespace sweep
