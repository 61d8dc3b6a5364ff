// palette.h - plain models of what an index means in the DXT blocks, a texel at a time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/texture/model/surface.h"

namespace model {

// Channel 0 to 2 of a colour word, widened by a shift alone.
inline int channelOf(int word, int channel) {
    if (channel == 0) return (word >> 11 & 31) << 3;
    if (channel == 1) return (word >> 5 & 63) << 2;
    return (word & 31) << 3;
}

inline Texel fourColours(int c0, int c1, int index, int alpha) {
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
inline Texel threeColours(int c0, int c1, int index) {
    if (index == 3) return {255, 255, 255, 255};
    if (index < 2) return fourColours(c0, c1, index, 255);
    Texel t{};
    for (int i = 0; i < 3; ++i) t[i] = Zmx8u((channelOf(c0, i) + channelOf(c1, i)) / 2);
    t[3] = 255;
    return t;
}

// DXT1 tells by the order of its ends which palette holds.
inline Texel dxt1Colour(int c0, int c1, int index) {
    return c0 > c1 ? fourColours(c0, c1, index, 255) : threeColours(c0, c1, index);
}

inline int alphaOf(int a0, int a1, int index) {
    if (index == 0) return a0;
    if (index == 1) return a1;
    if (a0 > a1) return ((8 - index) * a0 + (index - 1) * a1 + 3) / 7;
    if (index == 6) return 0;
    if (index == 7) return 255;
    return ((6 - index) * a0 + (index - 1) * a1 + 2) / 5;
}

} // namespace model
