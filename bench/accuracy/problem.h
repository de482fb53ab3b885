// One call of a function of the library, with arguments made up by its rule in tests/sweep/, and its exact results.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "exact.h"
#include "sweep/call/call.h"

namespace accuracy {

struct Range {
    double low = -9, high = 9;
};

// Numbers from a range: evenly spread, with full mantissas; of 30 binades if it begins at 0.
double draw(Range range, sweep::Dice& dice);

struct Output {
    std::size_t argument;
    int digits;  // of the mantissa
    Rows exact, got;
};

class Problem {
  public:
    // Ranges of arguments by name, a thousand times wider for arrays of integers; of those without one, -9..9, or, of
    // integers and where the rule has a range, what the rule says.
    Problem(const sweep::Signature& signature, sweep::Memory& memory, uint64_t seed,
            const std::map<std::string, Range>& ranges);

    // Before the call: what a reference wants other than random, s[n] or s[h,w] element by element.
    bool ready() const { return ready_; }
    void set(const char* array, const std::function<double(std::size_t row, std::size_t place)>& element);
    bool call();  // false where the call fails

    // The arguments: as they were before the call, and as it has left them.
    bool has(const char* name) const;
    const Rows& all(const char* array);
    const Row& row(const char* array) { return all(array)[0]; }
    const Exact& one(const char* array) { return row(array)[0]; }
    const Row& source() { return row(has("s") ? "s" : "d"); }  // of functions in place, what is to be changed
    Real number(const char* scalar) const;
    int whole(const char* scalar) const { return static_cast<int>(number(scalar)); }
    Real property(const char* object, const char* name, std::size_t k = 0) const;
    template <class T>
    T* object(const char* name, std::size_t k = 0) const {
        return static_cast<T*>(call_.objects(at(name))[k].pointer);
    }
    bool isSingle(const char* array) const { return signature_.arguments[at(array)].type.size == 4; }
    bool isCalled(const char* part) const;  // the function's name holds it
    const Rows& result(const char* array);
    sweep::Dice& dice() { return dice_; }

    // What the results should be; elements that are not set are not looked at.
    Rows& exact(const char* array);

    std::deque<Output>& outputs() { return outputs_; }

  private:
    std::size_t at(const char* name) const;
    const sweep::Signature& signature_;
    sweep::Dice dice_;
    sweep::Call call_;
    bool ready_ = false;
    std::map<std::size_t, Rows> given_, left_;
    std::deque<Output> outputs_;
};

enum class Unit {
    Ulp,   // of the exact result
    Sum,   // 2^-24 or 2^-53 of the sum of the magnitudes of the terms
    Peak,  // 2^-24 or 2^-53 of the largest exact result of the call
};

// How accurate some functions are found to be.
struct Reference {
    std::string stems;   // names up to their types: kelsAdd is kelsAdd_32f_I and kelsAdd_64f_I
    std::string ranges;  // s=-9..9 v=0.1..9
    Unit unit;
    std::function<void(Problem&)> exact;              // sets what the results should be
    std::function<void(Problem&)> prepare = nullptr;  // sets what is given
    int times = 300;
    // Instead of all this: functions that take several calls, and what comes out of them.
    std::function<std::vector<Output>(const std::string& function)> results = nullptr;
};
using References = std::vector<Reference>;

// The largest error of a function in the unit of its reference.
double largestError(const sweep::Signature& signature, const Reference& reference);

std::vector<std::string> wordsOf(const std::string& text);

// The range that an argument's numbers are drawn from, given ranges as of a Reference: -9..9.  Empty where the rule has
// its way, and of what is no number.
std::string rangeText(const sweep::Argument& argument, const std::string& ranges);

// kelsAdd of kelsAdd_32f_I.
std::string stemOf(const std::string& function);

// The families, a file each.
References vectorReferences();
References scoreReferences();
References trainingReferences();
References matrixReferences();
References frontendReferences();
References predictionReferences();
References featureReferences();
References auroraReferences();
References enhanceReferences();
References matchReferences();
References resampleReferences();
References pitchReferences();

}  // namespace accuracy
