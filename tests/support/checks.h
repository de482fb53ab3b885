// Argument checks, tried on every argument of a kind.
#pragma once

#include <gtest/gtest.h>

#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "kels/types.h"

namespace test {

// visit(args with one pointer null, its place) for each pointer in turn.
template <class... A, class Visit>
void forEachNull(const std::tuple<A...>& args, Visit visit) {
    const auto tryOne = [&](auto index) {
        constexpr std::size_t i = index;
        if constexpr (std::is_pointer_v<std::tuple_element_t<i, std::tuple<A...>>>) {
            auto faulty = args;
            std::get<i>(faulty) = nullptr;
            visit(faulty, i);
        }
    };
    [&]<std::size_t... i>(std::index_sequence<i...>) {
        (tryOne(std::integral_constant<std::size_t, i>()), ...);
    }(std::index_sequence_for<A...>());
}

// Expects `status` from f(args...) with each pointer in turn null.
template <class... A>
void expectForEachNull(KelStatus (*f)(A...), std::type_identity_t<std::tuple<A...>> args, KelStatus status) {
    forEachNull(args, [&](const auto& faulty, std::size_t i) {
        EXPECT_EQ(std::apply(f, faulty), status) << "argument " << i << " null";
    });
}

// The checks of a function on a block: `args` are good ones, the ints at the places kStep (-1: none), kHeight and kWidth
// among them.  Every fault and every combination of faults gives the status that comes first in `order`.
template <int kStep, int kHeight, int kWidth, class... A>
void expectBlockChecks(KelStatus (*f)(A...), std::type_identity_t<std::tuple<A...>> args,
                       const std::vector<KelStatus>& order, int leastHeight = 1) {
    for (int faults = 0; faults < 8; ++faults) {
        const bool step = kStep >= 0 && (faults & 1), height = faults & 2, width = faults & 4;
        auto faulty = args;
        if (width) std::get<kWidth>(faulty) = 0;
        if (height) std::get<kHeight>(faulty) = leastHeight - 1;
        if constexpr (kStep >= 0) {
            if (step) std::get<kStep>(faulty) = std::get<kWidth>(faulty) - 1;
        }
        const auto first = [&](bool null) {
            for (const KelStatus status : order) {
                if (status == -8 ? null : status == -37 ? step : height || width) return status;
            }
            return KelStatus{0};
        };
        if (first(false) != 0) {
            EXPECT_EQ(std::apply(f, faulty), first(false)) << "faults " << faults;
        }
        forEachNull(faulty, [&](const auto& nulled, std::size_t i) {
            EXPECT_EQ(std::apply(f, nulled), first(true)) << "faults " << faults << ", argument " << i << " null";
        });
    }
}

}  // namespace test
