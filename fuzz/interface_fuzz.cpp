// A fuzzer of the whole interface: the input chooses a function, what is tried with it, faults, sizes and modes, by the
// rules in tests/sweep/; contents are random.  It stops at the first call that does not do what its rule says.
//
// A length at which one function is wrong is rare among random bytes.  So three inputs of four are plans from a list of
// every function with every length up to 70 and with every fault that the sweep knows, in random order; the others are
// mutations of inputs that reached something new.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sweep/call/choices.h"

using namespace sweep;

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

// The beginning of an input; what follows decides the rest of the arguments.
struct Plan {
    enum Attempt : uint8_t { Good, Long, Fault, TwoFaults, Allocations, Modes, InPlace, kAttempts };
    uint16_t function;
    uint8_t attempt;
    uint8_t size, which;    // of a size that may be any, unless 0; the which-th of them
    uint8_t choice, other;  // of faults
    uint8_t seed[5];
};
constexpr int kSizes = 70, kLargest = 90;

struct Known {
    const Signature* signature;
    std::vector<Choice> choices;
};
const std::vector<Known>& functions() {
    static const std::vector<Known> all = [] {
        std::vector<Known> known;
        for (const Signature& s : signatures()) {
            if (!s.arguments.empty()) known.push_back({&s, choices(s)});
        }
        return known;
    }();
    return all;
}

// Every function with every length for each of its sizes, and with every fault, in random order.
std::vector<Plan> everyPlan(Dice& dice) {
    std::vector<Plan> all;
    for (uint16_t f = 0; f < functions().size(); ++f) {
        const Known& known = functions()[f];
        int sizes = 0;
        for (const Argument& a : known.signature->arguments)
            sizes += a.scalar && a.type.kind == Kind::Int && !a.any && !a.low;
        for (uint8_t which = 0; which < std::clamp(sizes, 1, 3); ++which) {
            for (uint8_t size = 1; size <= kSizes; ++size) all.push_back({f, Plan::Good, size, which, 0, 0, {}});
        }
        for (std::size_t c = 0; c < known.choices.size(); ++c) {
            all.push_back({f, Plan::Fault, 0, 0, static_cast<uint8_t>(c), 0, {}});
        }
    }
    for (std::size_t i = all.size(); i > 1; --i) std::swap(all[i - 1], all[dice.bits() % i]);
    return all;
}
Plan nextPlan(Dice& dice) {
    static const std::vector<Plan> all = everyPlan(dice);
    static std::size_t next = 0;
    Plan plan = all[next++ % all.size()];
    for (uint8_t& byte : plan.seed) byte = static_cast<uint8_t>(dice.bits());
    return plan;
}

void report() {
    std::fprintf(stderr, "%ld calls of the library\n", Call::calls);
}

std::string attempt(Call& call, int kind) {
    if (call.expected() != 0) return call.tryFault();
    if (kind == Plan::Allocations) return call.tryFailingAllocations();
    if (kind == Plan::Modes) return call.tryRoundingModes();
    if (kind == Plan::InPlace) return call.tryInPlace();
    return call.tryGood();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::atexit(report);
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed) {
    static Dice dice(seed);
    if (maxSize < sizeof(Plan) || dice.oneIn(4)) return LLVMFuzzerMutate(data, size, maxSize);
    const Plan plan = nextPlan(dice);
    std::memcpy(data, &plan, sizeof plan);
    return sizeof plan;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Memory* const memory = new Memory;
    Kel8u byte;
    if (size < 2) return kelsZero_8u(&byte, 1);  // the first input, a single byte, must reach the library
    Plan plan = {};
    std::memcpy(&plan, data, std::min(size, sizeof plan));
    const Known& known = functions()[plan.function % functions().size()];
    const int kind = plan.attempt % Plan::kAttempts;
    Dice dice(data, size, std::min(size, sizeof plan));
    Call call(*known.signature, *memory, dice, kind == Plan::Long ? 3000 : kLargest);
    if (plan.size > 0)
        call.prefer(kind == Plan::Long ? plan.size * 11 : 1 + (plan.size - 1) % kLargest, plan.which % 3);
    if (!known.choices.empty() && (kind == Plan::Fault || kind == Plan::TwoFaults)) {
        known.choices[plan.choice % known.choices.size()].apply(call);
        if (kind == Plan::TwoFaults) known.choices[plan.other % known.choices.size()].apply(call);
    }
    if (!call.prepare()) return -1;  // not worth keeping
    const std::string wrong = attempt(call, kind);
    if (wrong.empty()) return 0;
    std::fprintf(stderr, "%s: %s\n", call.text().c_str(), wrong.c_str());
    std::abort();
}
