// dxt.cpp - each texel of a block is worked out alone, from the block's bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/dxt.h"

#include "tests/texture/model/palette.h"

namespace {

// Bit `at` of the block, counted from bit 0 of byte 0.
int bitAt(const Zmx8u* block, int at) { return block[at / 8] >> at % 8 & 1; }

int bitsAt(const Zmx8u* block, int at, int n) {
    int v = 0;
    for (int i = 0; i < n; ++i) v += bitAt(block, at + i) << i;
    return v;
}

} // namespace

namespace model {

Texels decodeDxt1(const Zmx8u* block) {
    const int c0 = bitsAt(block, 0, 16), c1 = bitsAt(block, 16, 16);
    Texels out{};
    for (int n = 0; n < 16; ++n) {
        const int index = bitsAt(block, 32 + 2 * n, 2);
        out[n] = dxt1Colour(c0, c1, index);
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
