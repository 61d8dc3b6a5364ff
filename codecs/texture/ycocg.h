// ycocg.h - the colour space of YCoCg textures, 8 bits a channel, chroma about 128.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <algorithm>
#include <cstdint>

namespace codecs::texture {

struct Triple {
    std::uint8_t a, b, c;
};

inline std::uint8_t toByte(int v) { return std::uint8_t(std::clamp(v, 0, 255)); }

inline Triple toYCoCg(int r, int g, int b) {
    const int y = (r + 2 * g + b + 2) >> 2, co = (r - b + 1) >> 1, cg = (2 * g - r - b + 2) >> 2;
    return {toByte(y), toByte(co + 128), toByte(cg + 128)};
}

// A decoded texel of a YCoCg texture: red holds Co and green Cg, blue the scale less 1 in its top 5 bits, alpha Y.
inline Triple toRgb(int red, int green, int blue, int alpha) {
    const int scale = (blue >> 3) + 1;
    const auto unscaled = [scale](int chroma) {
        const int v = chroma - 128;
        return (v + (v < 0 ? -scale : scale) / 2) / scale;
    };
    // The encoder means its fields for decoders that repeat the top bits, which spreads 0..248 and 0..252 to 0..255.
    const int co = unscaled((red * 255 + 124) / 248), cg = unscaled((green * 255 + 126) / 252);
    return {toByte(alpha - cg + co), toByte(alpha + cg), toByte(alpha - cg - co)};
}

} // namespace codecs::texture
