// pjtable.h - constant tables that a rule makes, computed by the compiler.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <array>
#include <cstddef>

namespace zmx {

// A table of N entries: entry i is rule(i). Follow it with a static_assert on entries known from elsewhere.
template <std::size_t N, class Rule> constexpr auto tableOf(Rule rule) {
    std::array<decltype(rule(0)), N> t{};
    for (std::size_t i = 0; i < N; ++i) t[i] = rule(int(i));
    return t;
}

} // namespace zmx
