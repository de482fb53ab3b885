// The rules of arguments: for every function of the library, what its arguments are for, how large its arrays are, and
// in which order faults are seen.  The sweep, the threads' test and the fuzzer try what the rules tell of.
//
// To add functions, add a rule to the file of their family in rules/ (a new file is listed at the end of this one):
//
//     {"s[n] d[n]|s n (sf)", "NullPtr; Size: n<1", {F(kelsAbs_64f), F(kelsLn_32s_Sfs)}},
//
// Arguments, in order, a blank between two, no blanks within.  One in brackets is there only in some of the functions.
// The types come from the functions themselves: const pointers are sources, others are destinations.
//
//     n               a scalar; an int is a size from 1 on, a float any ordinary number
//     mode=0..3       a scalar from a range;   hint=any  a scalar of any value;   sf  a scale factor, any int
//     s[n]            an array of n elements, with any contents;   s[n]=0..9  with contents from a range (i: the index)
//     s[h,step,w]     h rows of w elements, step from row to row; what is between rows is neither read nor written;
//                     of a function that takes row pointers, h rows of w elements
//     s[h,w]          row pointers to h rows of w elements
//     +d[n]           read and written;   ~b[n]  scratch, whose contents afterwards mean nothing
//     p?[n]           may be null
//     d[n]|s|t        may be the same array as s, or as t (sizes are then the same, too)
//     spec@FFT        an object of a kind (objects.cpp), whose properties are written spec.n;  books[k]@Cdbk: an array;
//                     Cdbk:8 is made with a number, and Cdbk: with that which the name of the function ends with
//     pp>FFT          where a new object is stored;   spec<FFT  an object that the call releases
//     mel!            a scalar that is trusted: a fault in it has no defined result
//
// Checks, in the order in which they are made: the name of the status and the condition under which it is returned,
// if the function has all the arguments that it is about.
// NullPtr alone means: any pointer that must not be null.  Conditions are those of expression.h.
//
// Notes: what is not so for most functions.
//     may:NAME        an error that depends on the contents of arrays; nothing is written then
//     writes          ... or outputs may be written all the same
//     memory:NAME     the status when memory is out, if not NoMemory
//     mode            integers may depend on the rounding mode, as floats may;  floatmode  if made from floats
//     anymode         floats, too, are the same in every rounding mode
//     own             its object serves one thread at a time, const or not
//     order           in place, float results may differ from those apart (sums in another order)
//     shared          an object that is not const serves several threads at a time all the same
//     unfinished      outputs may be written before memory is found to be out
//     addresses       outputs hold addresses of their own
//     nonull          pointers are not tested
//     leaks           a call that fails for want of memory keeps some
//     reads           checks read arrays; without arrays of the right sizes nothing is tried
#pragma once

#include <map>
#include <string>
#include <vector>

#include "sweep/expression.h"
#include "sweep/function.h"

namespace sweep {

struct Argument {
    std::string name, kind;  // kind: of an object
    Type type;
    bool optional = false;  // in the rule
    bool scalar = false, nullable = false, readToo = false, scratch = false, trusted = false, any = false;
    bool created = false, released = false;
    std::vector<Expression> shape;  // none of a scalar; one, two or three extents
    Expression low, high;
    std::vector<std::size_t> aliases;  // arguments whose array this one may be
    bool isObject() const { return !kind.empty() && !created; }
    bool isInput() const { return scalar || type.isConst || readToo; }
};

struct Check {
    KelStatus status;
    std::string condition;
    Expression expression;  // none: any null pointer
};

struct Property {
    std::size_t argument;
    std::string name;
};

// A function with its rule, read.
struct Signature {
    explicit Signature(const Function& function, const Rule& rule);
    bool notes(const char* word) const {
        return (" " + noteText + " ").find(std::string(" ") + word + " ") != std::string::npos;
    }

    bool roundsByMode() const;

    Function function;
    std::vector<Argument> arguments;
    std::vector<Property> properties;  // variables from kFirstProperty on
    std::vector<Check> checks;
    std::vector<KelStatus> may;
    KelStatus memory = -9;
    std::string noteText;
};
constexpr std::size_t kFirstProperty = 100;

// All functions that have a rule, by name.
const std::vector<Signature>& signatures();
const Signature& signature(const std::string& name);

// Exported functions that have tests of their own and no rule.
const std::vector<std::string>& apart();

KelStatus statusOf(const std::string& name);

// ---- the table, a function a file of rules/ -------------------------------------------------------------------------
using Rules = std::vector<Rule>;
Rules vectorRules();
Rules frontendRules();
Rules predictionRules();
Rules scoreRules();
Rules mixtureRules();
Rules trainingRules();
Rules matrixRules();
Rules codebookRules();
Rules matchRules();
Rules enhanceRules();
Rules resampleRules();
Rules auroraRules();
Rules echoRules();
Rules featureRules();
Rules pitchRules();

}  // namespace sweep
