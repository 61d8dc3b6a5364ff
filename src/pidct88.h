// pidct88.h - what the integer transforms share: eight vectors side by side, one to a lane.
//
// A pass transforms the eight columns of a block at once, element k of lane i being in[8 k + i]: plain loops over the
// lanes that the compiler turns into vector code. A pass over the rows is the same between two transpositions.
#pragma once

#include "pjwrap.h"

// A block of 64 elements that a pass reads or writes.
struct alignas(32) Block16s {
    Zmx16s at[64];
};

// Transposes a block: three perfect shuffles of 64 elements turn the index rrrccc into cccrrr.
inline void shuffle(const Zmx16s* __restrict in, Zmx16s* __restrict out) {
    for (int i = 0; i < 32; ++i) {
        out[2 * i] = in[i];
        out[2 * i + 1] = in[i + 32];
    }
}
inline void transpose(const Zmx16s* in, Zmx16s* out) {
    Block16s a, b;
    shuffle(in, a.at);
    shuffle(a.at, b.at);
    shuffle(b.at, out);
}

// 32-bit sums and products that wrap; the product of an element and a constant of 16 bits each cannot.
using Wrapping = Zmx32u;
constexpr Wrapping product(Zmx16s x, Zmx16s constant) { return Wrapping(x * constant); }
// The same with a constant of up to 17 bits: a wider one goes in two steps, for vectors have products of 16 by 16 bits.
template <Zmx32u Constant> constexpr Wrapping times(Zmx16s v) {
    if constexpr (Constant < 32768) return product(v, Constant);
    else return 2 * product(v, Constant / 2) + Wrapping(int(Constant % 2) * v);
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
constexpr Wrapping timesRoot2(Wrapping v) { return Wrapping(shiftRight(v + 2048, 12)) * 5793; }

// Results keep their 16 low bits: nothing saturates.
template <class Pass> constexpr Zmx16s ended(Wrapping v) { return wrap16s(shiftRight(v + Pass::half, Pass::shift)); }
