// The forms of a function: one name for what the interface offers for several types of elements.
//
//     constexpr auto dotProd = test::forms(kelsDotProd_32f, kelsDotProd_64f);
//
//     dotProd(x, y, n, &sum);              // calls the form that these arguments fit
//     dotProd.of<Kel64f>();                // that form itself: the one whose arrays hold doubles
//     dotProd.each([](auto* f) { ... });   // all forms in turn
//
// A test that is typed by its element type T thus names a function once and never asks which T it is.  Forms that
// differ in more than their arrays (constants, units, references) are described by a struct with named members, one
// object for each:
//
//     struct Form {
//         const char* name;
//         double unit;  // what integer 1 is worth
//         KelStatus (*run)(const Problem&);
//     };
//     const Form kForms[] = {
//         {.name = "Durbin", .unit = 0x1p-5, .run = [](const Problem& p) { return durbin(p.r, p.a, p.n); }},
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kels/types.h"

namespace test {

template <class... F>
class Forms {
  public:
    constexpr explicit Forms(F*... functions) : functions_(functions...) {}

    template <class... A>
    auto operator()(A&&... arguments) const {
        return std::get<only(fits<F, A...>...)>(functions_)(std::forward<A>(arguments)...);
    }

    // The same for families of which some forms, as a rule the integer ones, take a scale factor behind everything
    // else.
    template <class... A>
    auto scaled(int scaleFactor, A&&... arguments) const {
        if constexpr ((fits<F, A..., int> || ...)) {
            return (*this)(std::forward<A>(arguments)..., scaleFactor);
        } else {
            return (*this)(std::forward<A>(arguments)...);
        }
    }

    // The form that has arrays of all these elements, or of states of these types.
    template <class... Elements>
    constexpr auto of() const {
        return std::get<only(hasArrays<Elements...>(static_cast<F*>(nullptr))...)>(functions_);
    }

    template <class Action>
    void each(Action action) const {
        std::apply([&](F*... functions) { (action(functions), ...); }, functions_);
    }

  private:
    template <class Function, class... A>
    static constexpr bool fits = std::is_invocable_v<Function*, A...>;

    template <class... B>
    static consteval std::size_t only(B... chosen) {
        const std::array<bool, sizeof...(F)> choice = {chosen...};
        const auto place = std::find(choice.begin(), choice.end(), true);
        if (std::count(choice.begin(), choice.end(), true) != 1) throw "exactly one form has to fit";
        return static_cast<std::size_t>(place - choice.begin());
    }

    // What a pointer, or a pointer to pointers, leads to; any other argument itself.
    template <class P>
    static consteval auto pointed() {
        using Target = std::remove_const_t<std::remove_pointer_t<P>>;
        if constexpr (std::is_pointer_v<Target>) return pointed<Target>();
        if constexpr (!std::is_pointer_v<Target>) return std::type_identity<Target>();
    }
    template <class... Elements, class R, class... A>
    static consteval bool hasArrays(R (*)(A...)) {
        const auto holds = []<class Element>(std::type_identity<Element>) {
            return ((std::is_pointer_v<A> && std::is_same_v<decltype(pointed<A>()), std::type_identity<Element>>) ||
                    ...);
        };
        return (holds(std::type_identity<Elements>()) && ...);
    }

    std::tuple<F*...> functions_;
};

template <class... F>
constexpr Forms<F...> forms(F*... functions) {
    return Forms<F...>(functions...);
}

// Calls action with a function, or with each of its forms.
template <class R, class... A, class Action>
void forEachForm(R (*function)(A...), Action action) {
    action(function);
}
template <class... F, class Action>
void forEachForm(const Forms<F...>& functions, Action action) {
    functions.each(action);
}

// The in-place form f as one of a source and a destination.
template <auto f>
struct Apart;
template <class T, class... A, KelStatus (*f)(T*, int, A...)>
struct Apart<f> {
    static KelStatus call(const T* src, T* dst, int len, A... arguments) {
        std::copy_n(src, len, dst);
        return f(dst, len, arguments...);
    }
};
template <auto f>
constexpr auto apart = &Apart<f>::call;

}  // namespace test
