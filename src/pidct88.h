// pidct88.h - what the integer transforms share: eight vectors side by side, one to a lane.
//
// A pass transforms the eight columns of a block at once, element k of lane i being in[8 k + i]: plain loops over the
// lanes that the compiler turns into vector code. A pass over the rows is the same between two transpositions.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pidctmul.h"
#include "pjtranspose.h"
#include "pjwrap.h"

#include <cstdint>
#include <cstring>

namespace zmx {

using Block16s = Block<Zmx16s>;

// 32-bit sums and products that wrap; the product of an element and a constant of 16 bits each cannot.
using Wrapping = Zmx32u;
constexpr Wrapping product(Zmx16s x, Zmx16s constant) { return Wrapping(x * constant); }
// The same with a constant of up to 17 bits: a wider one goes in two steps, for vectors have products of 16 by 16 bits.
template <Zmx32u Constant> constexpr Wrapping times(Zmx16s v) {
    if constexpr (Constant < 32768)
        return product(v, Constant);
    else
        return 2 * product(v, Constant / 2) + Wrapping(int(Constant % 2) * v);
}
constexpr Zmx32s shiftRight(Wrapping v, int n) { return Zmx32s(v) >> n; }

// How a pass ends: the first leaves three fraction bits, the second none.
template <int Shift> struct Ending {
    static constexpr Wrapping half = 1 << (Shift - 1);
    static constexpr int shift = Shift;
};
using First = Ending<12>;
using Second = Ending<21>;

// The root of two with 12 fraction bits: its operand is rounded ahead of the product, in all transforms and passes.
constexpr Wrapping timesRoot2(Wrapping v) { return Wrapping(shiftRight(v + 2048, 12)) * dct::kRoot2With12; }

// Results keep their 16 low bits: nothing saturates.
template <class Pass> constexpr Zmx16s ended(Wrapping v) { return wrap16s(shiftRight(v + Pass::half, Pass::shift)); }

// Whether nothing but zeros stands outside of a corner of a block that most blocks of photographs keep to.
constexpr int kSmallRows = 6, kSmallColumns = 4;
inline bool isSmall(const Zmx16s* block) {
    std::uint64_t outside = 0; // four elements at a time
    for (int k = 0; k < 64; k += 4) {
        if (k / 8 < kSmallRows && k % 8 < kSmallColumns) continue;
        std::uint64_t four;
        std::memcpy(&four, block + k, sizeof four);
        outside |= four;
    }
    return outside == 0;
}

// The core of the inverse transform; small: what isSmall says of the source. The source may be the destination, which
// is written last.
void dct_8x8_inv_16s(const Zmx16s* src, Zmx16s* dst, bool small);

} // namespace zmx
