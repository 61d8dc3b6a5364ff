// dxt.cpp - each texel of a block is worked out alone, from the block's bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/dxt.h"

namespace {

using model::Texel;
using model::Texels;

// Bit `at` of the block, counted from bit 0 of byte 0.
int bitAt(const Zmx8u* block, int at) { return block[at / 8] >> at % 8 & 1; }

int bitsAt(const Zmx8u* block, int at, int n) {
    int v = 0;
    for (int i = 0; i < n; ++i) v += bitAt(block, at + i) << i;
    return v;
}

// Channel 0 to 2 of a colour word, widened by a shift alone.
int channelOf(int word, int channel) {
    if (channel == 0) return (word >> 11 & 31) << 3;
    if (channel == 1) return (word >> 5 & 63) << 2;
    return (word & 31) << 3;
}

Texel fourColours(int c0, int c1, int index, int alpha) {
    Texel t{};
    for (int i = 0; i < 3; ++i) {
        const int x0 = channelOf(c0, i), x1 = channelOf(c1, i);
        const int v = index == 0 ? x0 : index == 1 ? x1 : index == 2 ? (2 * x0 + x1) / 3 : (x0 + 2 * x1) / 3;
        t[i] = Zmx8u(v);
    }
    t[3] = Zmx8u(alpha);
    return t;
}

// Index 2 is the mean, index 3 is opaque white.
Texel threeColours(int c0, int c1, int index) {
    if (index == 3) return {255, 255, 255, 255};
    if (index < 2) return fourColours(c0, c1, index, 255);
    Texel t{};
    for (int i = 0; i < 3; ++i) t[i] = Zmx8u((channelOf(c0, i) + channelOf(c1, i)) / 2);
    t[3] = 255;
    return t;
}

int alphaOf(int a0, int a1, int index) {
    if (index == 0) return a0;
    if (index == 1) return a1;
    if (a0 > a1) return ((8 - index) * a0 + (index - 1) * a1 + 3) / 7;
    if (index == 6) return 0;
    if (index == 7) return 255;
    return ((6 - index) * a0 + (index - 1) * a1 + 2) / 5;
}

} // namespace

namespace model {

Texels decodeDxt1(const Zmx8u* block) {
    const int c0 = bitsAt(block, 0, 16), c1 = bitsAt(block, 16, 16);
    Texels out{};
    for (int n = 0; n < 16; ++n) {
        const int index = bitsAt(block, 32 + 2 * n, 2);
        out[n] = c0 > c1 ? fourColours(c0, c1, index, 255) : threeColours(c0, c1, index);
    }
    return out;
}

Texels decodeDxt3(const Zmx8u* block) {
    const int c0 = bitsAt(block, 64, 16), c1 = bitsAt(block, 80, 16);
    Texels out{};
    for (int n = 0; n < 16; ++n)
        out[n] = fourColours(c0, c1, bitsAt(block, 96 + 2 * n, 2), bitsAt(block, 4 * n, 4) << 4);
    return out;
}

Texels decodeDxt5(const Zmx8u* block) {
    const int a0 = block[0], a1 = block[1];
    const int c0 = bitsAt(block, 64, 16), c1 = bitsAt(block, 80, 16);
    Texels out{};
    for (int n = 0; n < 16; ++n)
        out[n] = fourColours(c0, c1, bitsAt(block, 96 + 2 * n, 2), alphaOf(a0, a1, bitsAt(block, 16 + 3 * n, 3)));
    return out;
}

} // namespace model
