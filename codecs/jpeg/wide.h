// wide.h - colour arithmetic on samples of 12 bits, for which the library has none.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

inline constexpr int kWideMax = 4095, kWideMiddle = 2048;

// A sum of products with 16 fractional bits, to the nearest sample.
inline Zmx16u wideSample(int v) { return Zmx16u(std::clamp((v + 32768) >> 16, 0, kWideMax)); }

// RGB, or CMYK of which the first three are taken as complements of RGB, to YCbCr and back in place (ITU-T T.871,
// clause 7, with 12-bit constants). Other models stay as they are.
inline void wideFromPixel(Model model, Zmx16u* s) {
    if (!isChroma(model, 1)) return;
    if (model == Model::ycck)
        for (int c = 0; c < 3; ++c) s[c] = Zmx16u(kWideMax - s[c]);
    const int r = s[0], g = s[1], b = s[2], middle = kWideMiddle << 16;
    s[0] = wideSample(19595 * r + 38470 * g + 7471 * b);
    s[1] = wideSample(-11059 * r - 21709 * g + 32768 * b + middle);
    s[2] = wideSample(32768 * r - 27439 * g - 5329 * b + middle);
}
inline void wideToPixel(Model model, Zmx16u* s) {
    if (!isChroma(model, 1)) return;
    const int y = s[0] << 16, cb = s[1] - kWideMiddle, cr = s[2] - kWideMiddle;
    s[0] = wideSample(y + 91881 * cr);
    s[1] = wideSample(y - 22554 * cb - 46802 * cr);
    s[2] = wideSample(y + 116130 * cb);
    if (model == Model::ycck)
        for (int c = 0; c < 3; ++c) s[c] = Zmx16u(kWideMax - s[c]);
}

} // namespace codecs::jpeg
