// A fuzzer of the whole interface: the input chooses a function, what is tried with it, faults, sizes and modes, by the
// rules in tests/sweep/; contents are random.  It stops at the first call that does not do what its rule says.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "sweep/call/call.h"

using namespace sweep;

namespace {

void report() {
    std::fprintf(stderr, "%ld calls of the library\n", Call::calls);
}

void pinSome(Call& call, const Signature& s, Dice& dice) {
    constexpr double kValues[] = {0, -1, 1, -0x1p31, 0x1p31 - 1, 0x1p16, 0x1p30 + 1, 0x1p15, 0.5, -0.5};
    for (int64_t n = dice.between(1, 2); n > 0; --n) {
        const auto a = static_cast<std::size_t>(dice.between(0, static_cast<int64_t>(s.arguments.size()) - 1));
        const Argument& argument = s.arguments[a];
        if (argument.trusted) continue;
        if (!argument.scalar) {
            if (!s.notes("nonull")) call.setNull(a);
        } else if (argument.low && dice.oneIn(2)) {
            call.pinBeyond(a, dice.oneIn(2));
        } else {
            call.pin(a, kValues[dice.between(0, 9)]);
        }
    }
}

std::string attempt(Call& call, Dice& dice) {
    switch (dice.between(0, 7)) {
        case 0:
            return call.tryFailingAllocations();
        case 1:
            return call.tryRoundingModes();
        case 2:
            return call.tryInPlace();
        default:
            return call.tryGood();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::atexit(report);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Memory* const memory = new Memory;
    Kel8u byte;
    if (size < 2) return kelsZero_8u(&byte, 1);  // the first input, a single byte, must reach the library
    const auto& all = signatures();
    Dice dice(data, size);
    const Signature& s = all[dice.bits() % all.size()];
    if (s.arguments.empty()) return 0;
    const int largest = dice.oneIn(3) ? 3000 : 90;
    Call call(s, *memory, dice, largest);
    if (dice.oneIn(6)) pinSome(call, s, dice);
    if (!call.prepare()) return 0;
    const std::string wrong = call.expected() != 0 ? call.tryFault() : attempt(call, dice);
    if (wrong.empty()) return 0;
    std::fprintf(stderr, "%s: %s\n", call.text().c_str(), wrong.c_str());
    std::abort();
}
