// Objects that calls take: built by the library, at random, and described by the sizes that rules ask for.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/allocation.h"
#include "support/guarded.h"
#include "sweep/call/dice.h"
#include "sweep/rules.h"

namespace sweep {

struct Object {
    void* pointer = nullptr;
    std::map<std::string, double> properties;
    std::shared_ptr<test::Guarded<Kel8u>> memory;      // of an object in the caller's memory
    std::vector<test::AllocationWatch::Block> blocks;  // all the memory it is made of
    std::shared_ptr<void> support = {};                // what it refers to and does not own
};

struct ObjectKind {
    const char* structure;                      // its type: kinds of one name differ in it
    Object (*make)(Dice& dice, int parameter);  // the number behind the name, as in Cdbk:8, or 0
    void (*release)(void* pointer);             // with all that it owns
    void (*discard)(void* pointer);             // what the library's own Free leaves to the caller
};

// The kind that an argument is of.
const ObjectKind& objectKind(const Argument& argument);

// An object whose blocks are known.
Object makeObject(const Argument& argument, Dice& dice, int fill);
void releaseObject(const Argument& argument, Object& object);

}  // namespace sweep
