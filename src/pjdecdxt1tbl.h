// pjdecdxt1tbl.h - the constant tables of BC7: modes, partitions, anchors and weights, as the format publishes them
// (Khronos Data Format Specification 1.3, BPTC).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjtable.h"
#include "zmxj.h"

#include <bit>

namespace zmx {

// The mode of a block by its first byte: the number of zeros below its lowest set bit, and 8, no mode, for 0.
inline constexpr auto modeMap = tableOf<256>([](int i) { return i ? Zmx32u(std::countr_zero(unsigned(i))) : 8u; });
static_assert(modeMap[0] == 8 && modeMap[1] == 0 && modeMap[0x80] == 7 && modeMap[0xC0] == 6);

// The subset of each texel, a row of 64 for the 64 partitions.
using SubsetTable = std::array<std::array<Zmx32u, 16>, 64>;

// Reads 64 runs of 16 digits.
constexpr SubsetTable subsetsOf(const char (&digits)[64 * 16 + 1]) {
    SubsetTable t{};
    for (std::size_t i = 0; i < 64 * 16; ++i) t[i / 16][i % 16] = Zmx32u(digits[i] - '0');
    return t;
}

// clang-format off
// Modes 1, 3 and 7.
inline constexpr SubsetTable subset_index_two_subsets = subsetsOf(
    "0011001100110011" "0001000100010001" "0111011101110111" "0001001100110111" // 0
    "0000000100010011" "0011011101111111" "0001001101111111" "0000000100110111" // 4
    "0000000000010011" "0011011111111111" "0000000101111111" "0000000000010111" // 8
    "0001011111111111" "0000000011111111" "0000111111111111" "0000000000001111" // 12
    "0000100011101111" "0111000100000000" "0000000010001110" "0111001100010000" // 16
    "0011000100000000" "0000100011001110" "0000000010001100" "0111001100110001" // 20
    "0011000100010000" "0000100010001100" "0110011001100110" "0011011001101100" // 24
    "0001011111101000" "0000111111110000" "0111000110001110" "0011100110011100" // 28
    "0101010101010101" "0000111100001111" "0101101001011010" "0011001111001100" // 32
    "0011110000111100" "0101010110101010" "0110100101101001" "0101101010100101" // 36
    "0111001111001110" "0001001111001000" "0011001001001100" "0011101111011100" // 40
    "0110100110010110" "0011110011000011" "0110011010011001" "0000011001100000" // 44
    "0100111001000000" "0010011100100000" "0000001001110010" "0000010011100100" // 48
    "0110110010010011" "0011011011001001" "0110001110011100" "0011100111000110" // 52
    "0110110011001001" "0110001100111001" "0111111010000001" "0001100011100111" // 56
    "0000111100110011" "0011001111110000" "0010001011101110" "0100010001110111"); // 60

// Modes 0 and 2; mode 0 has the first 16 alone.
inline constexpr SubsetTable subset_index_three_subsets = subsetsOf(
    "0011001102212222" "0001001122112221" "0000200122112211" "0222002200110111" // 0
    "0000000011221122" "0011001100220022" "0022002211111111" "0011001122112211" // 4
    "0000000011112222" "0000111111112222" "0000111122222222" "0012001200120012" // 8
    "0112011201120112" "0122012201220122" "0011011211221222" "0011200122002220" // 12
    "0001001101121122" "0111001120012200" "0000112211221122" "0022002200221111" // 16
    "0111011102220222" "0001000122212221" "0000001101220122" "0000110022102210" // 20
    "0122012200110000" "0012001211222222" "0110122112210110" "0000011012211221" // 24
    "0022110211020022" "0110011020022222" "0011012201220011" "0000200022112221" // 28
    "0000000211221222" "0222002200120011" "0011001200220222" "0120012001200120" // 32
    "0000111122220000" "0120120120120120" "0120201212010120" "0011220011220011" // 36
    "0011112222000011" "0101010122222222" "0000000021212121" "0022112200221122" // 40
    "0022001100220011" "0220122102201221" "0101222222220101" "0000212121212121" // 44
    "0101010101012222" "0222011102220111" "0002111200021112" "0000211221122112" // 48
    "0222011101110222" "0002111211120002" "0110011001102222" "0000000021122112" // 52
    "0110011022222222" "0022001100110022" "0022112211220022" "0000000000002112" // 56
    "0002000100020001" "0222122202221222" "0101222222222222" "0111201122012220"); // 60
// clang-format on

// An anchor is the texel of a subset whose index has one bit less; that of subset 0 is always texel 0. The anchors
// of the others are folded into classes, since a reader needs only the texels, in order, not their subsets.

// Two subsets: the class of the anchor of subset 1, for each partition.
inline constexpr Zmx32u idxFixupTwoSubsetMap[64] = {
    3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, // 0
    3, 0, 2, 0, 0, 2, 2, 3, 0, 2, 0, 0, 2, 2, 0, 0, // 16
    3, 3, 1, 2, 0, 2, 3, 3, 0, 2, 0, 0, 0, 3, 3, 1, // 32
    1, 0, 1, 2, 3, 3, 0, 0, 3, 3, 3, 3, 3, 0, 0, 3, // 48
};

// The texel of each class.
inline constexpr Zmx8u anchorOfTwoSubsets[4] = {2, 6, 8, 15};

// Three subsets: the class of the pair of anchors of subsets 1 and 2, without order, for each partition.
inline constexpr Zmx32u idxFixupThreeSubsetMap[64] = {
    2,  1, 10, 2, 10, 2,  2, 10, 10, 10, 7,  7,  7,  4,  2,  1,  // 0
    2,  1, 10, 2, 2,  1,  7, 9,  0,  10, 5,  6,  10, 4,  11, 10, // 16
    10, 2, 2,  3, 6,  9,  8, 11, 7,  2,  10, 4,  2,  7,  7,  10, // 32
    2,  2, 4,  4, 4,  10, 4, 11, 4,  11, 10, 13, 2,  12, 2,  1,  // 48
};

// The two texels of each class, the lower one first.
inline constexpr Zmx8u anchorsOfThreeSubsets[14][2] = {
    {3, 5},  {3, 8}, {3, 15}, {5, 10}, {5, 15},  {6, 8},   {6, 10},  // 0
    {6, 15}, {8, 9}, {8, 10}, {8, 15}, {10, 15}, {12, 15}, {13, 15}, // 7
};

// Each anchor lies in its own subset, in every partition.
constexpr bool anchorsFit() {
    for (std::size_t p = 0; p < 64; ++p) {
        const auto& pair = anchorsOfThreeSubsets[idxFixupThreeSubsetMap[p]];
        const auto& three = subset_index_three_subsets[p];
        if (subset_index_two_subsets[p][anchorOfTwoSubsets[idxFixupTwoSubsetMap[p]]] != 1) return false;
        if (three[pair[0]] * three[pair[1]] != 2) return false; // one in subset 1, the other in subset 2
    }
    return true;
}
static_assert(anchorsFit());

// The share of the second end-point, in 64ths, by index: for indexes of 2, 3 and 4 bits.
inline constexpr Zmx16u interW2[4] = {0, 21, 43, 64};
inline constexpr Zmx16u interW3[8] = {0, 9, 18, 27, 37, 46, 55, 64};
inline constexpr Zmx16u interW4[16] = {0, 4, 9, 13, 17, 21, 26, 30, 34, 38, 43, 47, 51, 55, 60, 64};
inline constexpr const Zmx16u* interW[3] = {interW2, interW3, interW4}; // by the bits of the index, less 2

} // namespace zmx
