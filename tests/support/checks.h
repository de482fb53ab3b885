// Argument checks, tried on functions of any signature.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "kels/types.h"

#include "support/allocation.h"
#include "support/forms.h"

namespace test {

// Places of arguments; -1: the function has none.
struct Places {
    int step = -1, height = -1, width = -1;
};

// Calls f with every combination of these faults: one of its pointers null, the int at places.step below the width, the
// one at places.height below leastHeight, the one at places.width 0.  All other ints are good and all floats -1.
// Expects the status that comes first in `order` (of kelStatusNullPtr, kelStatusStep and kelStatusSize), and that
// nothing is written.
template <Places places, class... A>
void expectChecks(const std::vector<KelStatus>& order, int leastHeight, KelStatus (*f)(A...)) {
    constexpr auto n = static_cast<int>(sizeof...(A));
    alignas(std::max_align_t) std::array<unsigned char, 64> memory;  // also for what a check reads of a structure
    for (int faults = 1; faults < 16; ++faults) {
        const bool step = places.step >= 0 && faults & 1, height = places.height >= 0 && faults & 2, width = faults & 4;
        for (int null = faults & 8 ? 0 : n; null < (faults & 8 ? n : n + 1); ++null) {
            bool anyNull = false;
            const auto value = [&]<class T>(int place, std::type_identity<T>) -> T {
                if constexpr (std::is_pointer_v<T>) {
                    anyNull |= place == null;
                    return place == null ? nullptr : reinterpret_cast<T>(memory.data());
                } else if constexpr (std::is_floating_point_v<T>) {
                    return -1;
                } else {
                    if (place == places.step) return (width ? 0 : 1) - (step ? 1 : 0);
                    if (place == places.height) return leastHeight - (height ? 1 : 0);
                    return place == places.width && width ? 0 : 1;
                }
            };
            memory.fill(0x55);
            const auto args = [&]<int... i>(std::integer_sequence<int, i...>) {
                return std::tuple<A...>{value(i, std::type_identity<A>())...};
            }
            (std::make_integer_sequence<int, n>());
            const auto expected = std::find_if(order.begin(), order.end(), [&](KelStatus status) {
                if (status == kelStatusNullPtr) return anyNull;
                return status == kelStatusStep ? step : height || width;
            });
            if (expected == order.end()) continue;
            EXPECT_EQ(std::apply(f, args), *expected) << "faults " << faults << ", null " << null;
            EXPECT_EQ(std::count(memory.begin(), memory.end(), 0x55), 64);
        }
    }
}
template <Places places, class... F>
void expectChecks(const std::vector<KelStatus>& order, int leastHeight, const F&... functions) {
    const auto check = [&](auto* f) { expectChecks<places>(order, leastHeight, f); };
    (forEachForm(functions, check), ...);
}

// The same for functions on vectors, whose length is the first int.
template <class... A>
void expectVectorChecks(const std::vector<KelStatus>& order, KelStatus (*f)(A...)) {
    constexpr bool ints[] = {std::is_same_v<A, int>...};
    constexpr auto length = static_cast<int>(std::find(ints, std::end(ints), true) - ints);
    expectChecks<Places{.width = length}>(order, 1, f);
}
template <class... F>
void expectVectorChecks(const std::vector<KelStatus>& order, const F&... functions) {
    const auto check = [&](auto* f) { expectVectorChecks(order, f); };
    (forEachForm(functions, check), ...);
}

// The same for functions that look at their pointers only, or first.
template <class... F>
void expectNullChecks(const F&... functions) {
    expectChecks<Places{}>({kelStatusNullPtr}, 1, functions...);
}

// Sets the argument of f at `place`, then expects the status.
struct Step {
    int place;
    double value;
    KelStatus status;
};

// The statuses of f while its arguments change; first they are `arguments`, among which pointers, all good, count.
// Nothing is written.
template <class... A>
void expectSteps(KelStatus (*f)(A...), std::array<double, sizeof...(A)> arguments, const std::vector<Step>& steps) {
    alignas(std::max_align_t) std::array<unsigned char, 64> memory;
    memory.fill(0x55);
    const auto value = [&]<class T>(std::size_t place, std::type_identity<T>) -> T {
        if constexpr (std::is_pointer_v<T>) return reinterpret_cast<T>(memory.data());
        if constexpr (!std::is_pointer_v<T>) return static_cast<T>(arguments[place]);
    };
    for (const Step& step : steps) {
        arguments[static_cast<std::size_t>(step.place)] = step.value;
        const auto status = [&]<std::size_t... i>(std::index_sequence<i...>) {
            return f(value(i, std::type_identity<A>())...);
        }
        (std::index_sequence_for<A...>());
        EXPECT_EQ(status, step.status) << "argument " << step.place << " = " << step.value;
    }
    EXPECT_EQ(std::count(memory.begin(), memory.end(), 0x55), 64);
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

// For objects whose release keeps their own small block: whichever allocation of make(&object) fails, the object is
// null (after the first) or `release` takes it, even twice; `released` sees it last.
template <class T, class Make, class Released>
void expectReleasable(Make make, KelStatus (*release)(T*), Released released) {
    failEachAllocation([&](int n, const AllocationWatch& watch) {
        auto* object = reinterpret_cast<T*>(&n);
        const KelStatus status = make(&object);
        EXPECT_EQ(status, watch.calls() > n ? kelStatusNoMemory : kelStatusOk);
        EXPECT_EQ(object == nullptr, n == 0);
        if (object == nullptr) return;
        for (int twice = 0; twice < 2; ++twice) {
            EXPECT_EQ(release(object), kelStatusOk);
            EXPECT_EQ(watch.unreleased(), 1);
        }
        released(object);
        kelsFree(object);
    });
}

}  // namespace test
