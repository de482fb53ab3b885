// Objects that calls take: built by the library, at random, and described by the sizes that rules ask for.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/allocation.h"
#include "support/guarded.h"
#include "sweep/call/dice.h"

namespace sweep {

struct Object {
    void* pointer = nullptr;
    std::map<std::string, double> properties;
    std::shared_ptr<test::Guarded<Kel8u>> memory;      // of an object in the caller's memory
    std::vector<test::AllocationWatch::Block> blocks;  // all the memory it is made of
    std::shared_ptr<void> support = {};                // what it refers to and does not own
};

struct ObjectKind {
    Object (*make)(Dice& dice, int parameter);  // the number behind the kind, as in Cdbk_32f:8, or 0
    void (*release)(void* pointer);             // with all that it owns
    void (*discard)(void* pointer);             // what the library's own Free leaves to the caller
};

const ObjectKind& objectKind(const std::string& name);

// An object whose blocks are known.
Object makeObject(const std::string& kind, Dice& dice, int fill);
void releaseObject(const std::string& kind, Object& object);

}  // namespace sweep
