// Argument checks, tried on every argument of a kind.
#pragma once

#include <gtest/gtest.h>

#include <tuple>
#include <type_traits>
#include <utility>

#include "kels/types.h"

namespace test {

// Expects `status` from f(args...) with each pointer in turn null.
template <class... A>
void expectForEachNull(KelStatus (*f)(A...), std::type_identity_t<std::tuple<A...>> args, KelStatus status) {
    const auto tryOne = [&](auto index) {
        constexpr std::size_t i = index;
        if constexpr (std::is_pointer_v<std::tuple_element_t<i, std::tuple<A...>>>) {
            auto faulty = args;
            std::get<i>(faulty) = nullptr;
            EXPECT_EQ(std::apply(f, faulty), status) << "argument " << i << " null";
        }
    };
    [&]<std::size_t... i>(std::index_sequence<i...>) {
        (tryOne(std::integral_constant<std::size_t, i>()), ...);
    }
    (std::index_sequence_for<A...>());
}

}  // namespace test
