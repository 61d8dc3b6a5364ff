// road.h - the numbers in which a tile-component goes through colour transform and wavelet.
//
// The reversible road needs integers alone: 16 bits hold samples of up to 12 bits with all that the transforms add to
// them, and go through the filters twice as fast as 32. On the irreversible road samples carry fraction bits. The
// filter in fixed point has factors of 16 bits, which would blur samples of more than 12; those go in floating point.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstdint>
#include <type_traits>

namespace codecs::jpeg2000 {

enum class Road : std::uint8_t {
    narrow, // 5/3 in 16 bits
    wide,   // 5/3 in 32 bits
    fixed,  // 9/7 in 32 bits, kFractionBits of them a fraction
    precise // 9/7 in floating point
};

constexpr bool isReversible(Road road) { return road == Road::narrow || road == Road::wide; }

constexpr int kFractionBits = 13;
constexpr int fractionBits(Road road) { return road == Road::fixed ? kFractionBits : 0; }

// The RCT takes one bit more. The 5/3 filter makes at most 2^3.2 of the largest number in two directions, and the
// lowest band grows no further from level to level.
constexpr Road roadOf(bool reversible, int depth, bool colourTransform) {
    if (reversible) return depth + int(colourTransform) <= 12 ? Road::narrow : Road::wide;
    return depth <= 12 ? Road::fixed : Road::precise;
}

template <Road R>
using Number =
    std::conditional_t<R == Road::narrow, std::int16_t, std::conditional_t<R == Road::precise, float, std::int32_t>>;

// Calls use.template operator()<road>(): code for each road, chosen here.
template <class Use> decltype(auto) onRoad(Road road, Use use) {
    switch (road) {
    case Road::narrow:
        return use.template operator()<Road::narrow>();
    case Road::wide:
        return use.template operator()<Road::wide>();
    case Road::fixed:
        return use.template operator()<Road::fixed>();
    default:
        return use.template operator()<Road::precise>();
    }
}

} // namespace codecs::jpeg2000
