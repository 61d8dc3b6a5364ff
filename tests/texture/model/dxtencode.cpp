// dxtencode.cpp - the decisions of the DXT encoders, one texel and one bit at a time.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/dxtencode.h"

#include <cstdlib>

namespace {

using model::Texel;
using model::Texels;

void putBits(Zmx8u* block, int at, int n, unsigned v) {
    for (int i = 0; i < n; ++i, ++at) {
        const int bit = int(v >> i & 1);
        block[at / 8] = Zmx8u((block[at / 8] & ~(1 << at % 8)) | bit << at % 8);
    }
}

struct Bounds {
    int lo, hi;
};

Bounds boundsOf(const Texels& texels, int channel) {
    Bounds b{255, 0};
    for (const Texel& t : texels) {
        b.lo = std::min<int>(b.lo, t[channel]);
        b.hi = std::max<int>(b.hi, t[channel]);
    }
    return b;
}

Bounds inset(Bounds b) {
    const int by = (b.hi - b.lo) / 16;
    return {std::min(b.lo + by, 255), b.hi - by};
}

// The byte's top bits are kept and put back below.
int replicated5(unsigned x) { return int(((x & ~7u) | x >> 5) % 256); }
int replicated6(unsigned x) { return int(((x & ~3u) | x >> 6) % 256); }

int packed565(int r, int g, int b) { return r / 8 * 2048 + g / 4 * 32 + b / 8; }

// Two colour words and sixteen indexes.
void putColours(const Texels& texels, Zmx8u* block) {
    Bounds box[3];
    int entry[4][3];
    for (int i = 0; i < 3; ++i) {
        box[i] = inset(boundsOf(texels, i));
        const auto wide = i == 1 ? replicated6 : replicated5;
        entry[0][i] = wide(unsigned(box[i].hi));
        entry[1][i] = wide(unsigned(box[i].lo));
        entry[2][i] = (2 * entry[0][i] + entry[1][i]) / 3;
        entry[3][i] = (entry[0][i] + 2 * entry[1][i]) / 3;
    }
    putBits(block, 0, 16, unsigned(packed565(box[0].hi, box[1].hi, box[2].hi)));
    putBits(block, 16, 16, unsigned(packed565(box[0].lo, box[1].lo, box[2].lo)));
    for (int n = 0; n < 16; ++n) {
        int d[4] = {};
        for (int k = 0; k < 4; ++k)
            for (int i = 0; i < 3; ++i) d[k] += std::abs(texels[n][i] - entry[k][i]);
        const bool bit0 = d[2] > d[3] && d[0] > d[3];
        const bool bit1 = (d[1] > d[2] && d[0] > d[2]) || (d[0] > d[3] && d[1] > d[3]);
        putBits(block, 32 + 2 * n, 2, unsigned(bit0) + 2 * unsigned(bit1));
    }
}

// Two end-points and sixteen indexes for one channel.
void putAlpha(const Texels& texels, int channel, int a0, int a1, Zmx8u* block) {
    const int h = (a0 - a1) / 14;
    int threshold[8] = {};
    threshold[1] = (a1 + h) % 256;
    for (int k = 2; k <= 7; ++k) threshold[k] = (((8 - k) * a0 + (k - 1) * a1) / 7 + h) % 256;
    block[0] = Zmx8u(a0);
    block[1] = Zmx8u(a1);
    for (int n = 0; n < 16; ++n) {
        int count = 0;
        for (int k = 1; k <= 7; ++k)
            if (texels[n][channel] <= threshold[k]) ++count;
        int index = (count + 1) % 8;
        if (index < 2) index = 1 - index;
        putBits(block, 16 + 3 * n, 3, unsigned(index));
    }
}

} // namespace

namespace model {

void encodeDxt1(const Texels& texels, Zmx8u* block) { putColours(texels, block); }

void encodeDxt3(const Texels& texels, Zmx8u* block) {
    for (int n = 0; n < 16; ++n) putBits(block, 4 * n, 4, texels[n][3] / 16u);
    putColours(texels, block + 8);
}

void encodeDxt5(const Texels& texels, Zmx8u* block) {
    const Bounds a = inset(boundsOf(texels, 3));
    putAlpha(texels, 3, a.hi, a.lo, block);
    putColours(texels, block + 8);
}

void encodeYCoCg(const Texels& texels, Zmx8u* block) {
    const Bounds y = boundsOf(texels, 0), co = boundsOf(texels, 1), cg = boundsOf(texels, 2);
    int m = 0;
    for (int bound : {co.lo, co.hi, cg.lo, cg.hi}) m = std::max(m, std::abs(bound - 128));
    const int scale = m < 32 ? 4 : m < 64 ? 2 : 1;
    const auto scaled = [=](int x) { return Zmx8u(scale * (x - 128) + 128); };

    Texels wide = texels;
    for (Texel& t : wide)
        for (int i = 1; i < 3; ++i) t[i] = scaled(t[i]);

    // In unsigned arithmetic: a low bound of 0 can wrap.
    const auto low = [=](Bounds b) {
        const unsigned lo = scaled(b.lo), hi = scaled(b.hi);
        return (lo * 16 + (hi - lo) - 7) >> 4;
    };
    const auto high = [=](Bounds b) {
        const unsigned lo = scaled(b.lo), hi = scaled(b.hi);
        return std::min((hi * 16 - (hi - lo - 7)) >> 4, 255u);
    };
    const int coLo = replicated5(low(co)), coHi = replicated5(high(co));
    int cgLo = replicated6(low(cg)), cgHi = replicated6(high(cg));

    const int coMid = (coLo + coHi + 1) / 2, cgMid = (cgLo + cgHi + 1) / 2;
    int across = 0;
    for (const Texel& t : wide)
        if ((t[1] >= coMid) != (t[2] >= cgMid)) ++across;
    if (across > 8) std::swap(cgLo, cgHi);

    putAlpha(texels, 0, y.hi, y.lo, block);
    putBits(block, 64, 16, unsigned(packed565(coHi, cgHi, 0) + scale - 1));
    putBits(block, 80, 16, unsigned(packed565(coLo, cgLo, 0) + scale - 1));
    const int entry[4][2] = {{coHi, cgHi},
                             {coLo, cgLo},
                             {(2 * coHi + coLo) / 3, (2 * cgHi + cgLo) / 3},
                             {(coHi + 2 * coLo) / 3, (cgHi + 2 * cgLo) / 3}};
    for (int n = 0; n < 16; ++n) {
        const Texel& t = wide[n];
        int d[4];
        for (int k = 0; k < 4; ++k) d[k] = std::abs(t[1] - entry[k][0]) + std::abs(t[2] - entry[k][1]);
        const bool x0 = d[1] > d[2] && d[0] > d[2];
        const bool x1 = d[0] > d[3] && d[1] > d[3];
        putBits(block, 96 + 2 * n, 2, 2 * unsigned(x0 || x1) + unsigned(x1)); // so 1 does not occur
    }
}

} // namespace model
