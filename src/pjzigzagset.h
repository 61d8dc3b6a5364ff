// pjzigzagset.h - coefficients of a block as a set of bits in zig-zag order, for coders that look at few of them.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjrows.h"
#include "pjzigzag.h"

#include <array>
#include <bit>
#include <cstdint>

namespace zmx::zigzag {

// Entry [i][flags]: the zig-zag positions of those of the four natural positions from 4i on whose flag is
// set, as a set of bits.
inline constexpr auto sets = tableOf<16>([](int i) {
    std::array<std::uint64_t, 16> ofFlags{};
    for (unsigned flags = 0; flags < 16; ++flags)
        for (int n = 0; n < 4; ++n)
            if (flags >> n & 1) ofFlags[flags] |= std::uint64_t(1) << zigzag_index_Fwd[std::size_t(4 * i + n)];
    return ofFlags;
});
static_assert(sets[0][15] == (1u | 1u << 1 | 1u << 5 | 1u << 6));

// Bit k of the result: the coefficient at zig-zag position k is one that is wanted. Asking for all 64 at once
// has no branches to mispredict, and costs less than walking over the zeros.
template <class Wanted> std::uint64_t setOf(const Zmx16s* block, Wanted wanted) {
    Zmx8u flags[64];
    for (int i = 0; i < 64; ++i) flags[i] = wanted(block[i]);
    std::uint64_t set = 0;
    for (std::size_t row = 0; row < 8; ++row) {
        const auto word = loadLE<std::uint64_t>(flags, std::ptrdiff_t(row)); // flag i of the row is byte i
        // Byte i of the factor is 2^(7-i): the top byte of the product has flag i in bit i.
        const std::uint64_t bits = word * 0x0102040810204080u >> 56;
        set |= sets[2 * row][bits & 15] | sets[2 * row + 1][bits >> 4];
    }
    return set;
}

// The positions from first to last.
inline std::uint64_t positions(int first, int last) {
    return ~std::uint64_t(0) << first & ~std::uint64_t(0) >> (63 - last);
}

// Calls visit(k) for the positions of a set from the lowest upward, until it returns a status other than 0.
template <class Visit> int forEach(std::uint64_t set, Visit visit) {
    int status = 0;
    for (; set != 0 && status == 0; set &= set - 1) status = visit(std::countr_zero(set));
    return status;
}

} // namespace zmx::zigzag
