// pjencwalk.h - which coefficients of a block are not zero, in zig-zag order.
#pragma once

#include "pjzigzag.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

// Entry [i][flags]: the zig-zag positions of those of the four natural positions from 4i on whose flag is set, as a set
// of bits.
inline constexpr auto zigzagSets = tableOf<16>([](int i) {
    std::array<std::uint64_t, 16> sets{};
    for (unsigned flags = 0; flags < 16; ++flags)
        for (int n = 0; n < 4; ++n)
            if (flags >> n & 1) sets[flags] |= std::uint64_t(1) << zigzag_index_Fwd[std::size_t(4 * i + n)];
    return sets;
});
static_assert(zigzagSets[0][15] == (1u | 1u << 1 | 1u << 5 | 1u << 6));

// Bit k of the result: the coefficient at zig-zag position k is not zero. Asking all 64 at once has no branches to
// mispredict, and costs less than walking over the zeros.
inline std::uint64_t nonZeroSet(const Zmx16s* block) {
    Zmx8u flags[64];
    for (int i = 0; i < 64; ++i) flags[i] = block[i] != 0;
    static_assert(std::endian::native == std::endian::little, "flag i of a row is byte i of its word");
    std::uint64_t set = 0;
    for (std::size_t row = 0; row < 8; ++row) {
        std::uint64_t word;
        std::memcpy(&word, flags + 8 * row, sizeof word);
        // Byte i of the factor is 2^(7-i): the top byte of the product has flag i in bit i.
        const std::uint64_t bits = word * 0x0102040810204080u >> 56;
        set |= zigzagSets[2 * row][bits & 15] | zigzagSets[2 * row + 1][bits >> 4];
    }
    return set;
}
