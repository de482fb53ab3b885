// One call of a function: its arguments, made up from its rule, and what must hold before and after it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "sweep/call/memory.h"
#include "sweep/objects.h"
#include "sweep/rules.h"

namespace sweep {

class Call : private Variables {
  public:
    // Sizes are at most `largest`.
    Call(const Signature& signature, Memory& memory, Dice& dice, int largest);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    // Instead of a random value: this one; one next to its range; one next to another argument's.
    void pin(std::size_t argument, double value);
    void pinBeyond(std::size_t argument, bool above);
    void pinBeside(std::size_t argument, std::size_t other, double difference);
    void setNull(std::size_t argument);
    void prefer(int size, int after = 0);  // for a size that may be any: the first one, or the one after so many
    // Makes up the rest; false where the arrays would not fit, or could not be given in spite of a fault.
    bool prepare();

    // The status of the first check that does not pass; 0 if all pass.
    KelStatus expected();

    // What is wrong with the call, if anything.  Of a faulty one: another status, or anything written.  Of a good one:
    // see call.cpp.
    std::string tryFault();
    std::string tryGood();
    std::string tryFailingAllocations();
    std::string tryRoundingModes();
    std::string tryInPlace();

    // Calls from several threads: each has a Call made from the same dice, of which all but the first then take what is
    // only read from the first; `outputs` are the bytes that are written.
    bool reusable() const;  // without objects made or released
    void shareWith(const Call& first);
    KelStatus plainCall();
    std::string outputs();

    std::string text();  // the arguments, to be read

    // For those who look at numbers: what is given to the call and what it leaves, row by row, complex numbers as two.
    using Elements = std::vector<std::vector<double>>;
    Elements given(std::size_t argument) const { return elements(argument, true); }
    Elements left(std::size_t argument) const { return elements(argument, false); }
    void setGiven(std::size_t argument, const std::function<double(std::size_t row, std::size_t place)>& element);
    double scalar(std::size_t argument) const { return scalar_[argument]; }
    bool null(std::size_t argument) const { return null_[argument]; }
    const std::vector<Object>& objects(std::size_t argument) const { return objects_[argument]; }
    KelStatus callOnce();

    static long calls;  // made so far

  private:
    using Block = test::AllocationWatch::Block;
    struct Piece {
        uint8_t* at;
        std::size_t bytes;
        enum {
            Before,
            Behind,
            Nowhere
        } margin;  // what is watched: the bytes before it (a guard page is behind it), ...
    };
    struct Array {
        std::vector<Piece> pieces;
        Piece table{};  // of row pointers
        std::vector<uint8_t> content;
        std::size_t rows = 0, row = 0, step = 0;  // in bytes
    };
    struct Setting {
        int fill = 0xAA;  // of what is not the function's to read
        int failAt = -1;  // number of the allocation that fails
        unsigned mxcsr = 0x1F80;
        uint16_t x87 = 0x037F;
        std::size_t alias = SIZE_MAX, inPlaceOf = SIZE_MAX;
    };
    struct Result {
        KelStatus status = 0;
        int allocations = 0, refusals = 0;
        std::vector<std::string> written;  // an entry an argument
        std::string wrong;
    };
    static constexpr std::size_t kLargestBlock = std::size_t{1} << 24;

    double value(std::size_t variable) override;
    double element(std::size_t array, double index) override;
    double sum(std::size_t array) override;
    bool isNull(std::size_t argument) override { return null_[argument]; }
    double sizeBy(const std::string& function) override;

    void resolve(std::size_t argument);
    double randomScalar(const Argument& argument);
    bool takesPreferred();
    void place(std::size_t argument);
    void placeRows(std::size_t argument);
    void measure(std::size_t argument);
    bool fits(double bytes);
    void fillContent(std::size_t argument);
    void restore(const Setting& setting);
    void give(const Setting& setting);
    std::string bytesOf(std::size_t argument) const;
    template <class Body>
    void forBlocks(std::size_t argument, Body body) const;
    bool objectsStay(std::size_t argument) const;
    bool arrayStays(std::size_t argument, bool given, int fill) const;
    Elements elements(std::size_t argument, bool given) const;
    std::vector<const uint8_t*> rowsOf(std::size_t argument, bool given) const;
    std::string untouched(const Setting& setting, const Result& result) const;
    std::string gapsAndMargins(const Setting& setting) const;
    Result run(const Setting& setting);
    bool allowed(KelStatus status) const;
    std::string compare(const Result& a, const Result& b, const Setting& first, const Setting& second,
                        bool floats) const;

    const Signature& s_;
    Memory& memory_;
    Dice& dice_;
    int largest_, preferred_ = 0, before_ = 0;
    std::vector<double> scalar_;
    std::vector<char> state_;  // of each argument: 0 open, 1 being resolved, 2 done
    std::vector<bool> pinned_, null_;
    std::vector<std::function<double()>> later_;  // pinned to what is not known before
    std::vector<Array> arrays_;
    std::vector<std::vector<Object>> objects_;
    std::vector<std::vector<void*>> tables_;  // of objects
    std::vector<std::string> images_;
    std::vector<Value> values_;
    bool tooLarge_ = false;
};

}  // namespace sweep
