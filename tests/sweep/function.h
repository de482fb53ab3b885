// A function of the library that is called without its type: its name, the types of its arguments, and a caller that
// takes them as a row of values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kels.h"

namespace sweep {

enum class Kind : uint8_t { Int, Float, Array, Rows };  // Rows: a pointer to pointers
enum class Element : uint8_t { Opaque, Integer, Float };

template <class T>
inline constexpr char kTag = 0;  // whose address stands for T

struct Type {
    Kind kind;
    Element element;  // of what is pointed to, or of the scalar; of complex numbers, their parts
    uint8_t size;     // of one element in bytes; 0 of structures, which only objects are
    uint8_t parts;    // 2 of complex numbers, otherwise 1
    bool isConst;     // what is pointed to
    const char* structure = nullptr;
};

union Value {
    void* pointer;
    int64_t integer;
    double real;
};

template <class T>
constexpr Type typeOf() {
    using Pointee = std::remove_pointer_t<T>;
    if constexpr (std::is_pointer_v<T> && std::is_pointer_v<Pointee>) {
        Type type = typeOf<Pointee>();
        type.kind = Kind::Rows;
        return type;
    } else if constexpr (std::is_pointer_v<T>) {
        using E = std::remove_const_t<Pointee>;
        constexpr bool isConst = std::is_const_v<Pointee>;
        if constexpr (std::is_same_v<E, Kel32fc>) {
            return {Kind::Array, Element::Float, sizeof(E), 2, isConst};
        } else if constexpr (std::is_same_v<E, Kel32sc>) {
            return {Kind::Array, Element::Integer, sizeof(E), 2, isConst};
        } else if constexpr (std::is_arithmetic_v<E>) {
            return {Kind::Array, std::is_integral_v<E> ? Element::Integer : Element::Float, sizeof(E), 1, isConst};
        } else {
            return {Kind::Array, Element::Opaque, 0, 1, isConst, &kTag<E>};
        }
    } else if constexpr (std::is_floating_point_v<T>) {
        return {Kind::Float, Element::Float, sizeof(T), 1, false};
    } else {
        return {Kind::Int, Element::Integer, sizeof(T), 1, false};
    }
}

template <class T>
T as(const Value& value) {
    if constexpr (std::is_pointer_v<T>) {
        return static_cast<T>(value.pointer);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value.real);
    } else {
        return static_cast<T>(value.integer);
    }
}

using Plain = void (*)();

template <class R, class... A>
struct Caller {
    static constexpr Type types[sizeof...(A) + 1] = {typeOf<A>()..., {}};
    template <std::size_t... I>
    static KelStatus apply(R (*f)(A...), [[maybe_unused]] const Value* values, std::index_sequence<I...>) {
        if constexpr (std::is_void_v<R>) {
            f(as<A>(values[I])...);
            return kelStatusOk;
        } else {
            return f(as<A>(values[I])...);
        }
    }
    static KelStatus call(Plain f, const Value* values) {
        return apply(reinterpret_cast<R (*)(A...)>(f), values, std::index_sequence_for<A...>());
    }
};

struct Function {
    template <class R, class... A>
    Function(const char* itsName, R (*f)(A...))
        : name(itsName),
          types(Caller<R, A...>::types),
          count(sizeof...(A)),
          returnsStatus(std::is_same_v<R, KelStatus>),
          plain(reinterpret_cast<Plain>(f)),
          caller(Caller<R, A...>::call) {}

    const char* name;
    const Type* types;
    std::size_t count;
    bool returnsStatus;
    Plain plain;
    KelStatus (*caller)(Plain, const Value*);
};

// A function of the table by its name: F(kelsAdd_32f_I).
#define F(name) ::sweep::Function(#name, &name)

// What several functions have in common.  The language of the three texts is described in rules.h.
struct Rule {
    const char* arguments;
    const char* checks;
    std::vector<Function> functions;
    const char* notes = "";
};

}  // namespace sweep
