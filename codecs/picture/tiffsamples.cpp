// tiffsamples.cpp - bits, words and floating point into samples; palettes, inverse scales and alpha.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tiffsamples.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace codecs {
namespace {

template <class Out> void put(std::uint8_t* to, std::size_t at, unsigned v) {
    const auto sample = Out(v);
    std::memcpy(to + at * sizeof sample, &sample, sizeof sample);
}

// The number that begins at any bit, the high bits first.
template <class Out>
void gatherBits(const std::uint8_t* packed, std::size_t first, std::size_t count, int bits, std::uint8_t* to,
                std::size_t stride) {
    const auto width = std::size_t(bits);
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t at = (first + i) * width;
        unsigned v = 0;
        for (std::size_t left = width; left > 0;) {
            const std::size_t here = std::min(left, 8 - at % 8);
            v = v << here | (packed[at / 8] >> (8 - at % 8 - here) & ((1u << here) - 1));
            at += here;
            left -= here;
        }
        put<Out>(to, i * stride, v);
    }
}

template <class Sample>
void gatherWhole(const std::uint8_t* packed, std::size_t first, std::size_t count, int, std::uint8_t* to,
                 std::size_t stride) {
    packed += first * sizeof(Sample);
    if (stride == 1) {
        std::memcpy(to, packed, count * sizeof(Sample));
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(to + i * stride * sizeof(Sample), packed + i * sizeof(Sample), sizeof(Sample));
}

void gatherLong(const std::uint8_t* packed, std::size_t first, std::size_t count, int, std::uint8_t* to,
                std::size_t stride) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t v;
        std::memcpy(&v, packed + (first + i) * sizeof v, sizeof v);
        put<std::uint16_t>(to, i * stride, unsigned((std::uint64_t(v) + 32768) / 65537));
    }
}

// A number of `bits` with a sign, an exponent and the rest a fraction (IEEE 754, and 24 bits in the same manner).
double fromFields(std::uint32_t v, int exponentBits, int fractionBits) {
    const auto bias = (1 << (exponentBits - 1)) - 1, most = (1 << exponentBits) - 1;
    const int exponent = int(v >> fractionBits) & most;
    const double fraction = std::ldexp(double(v & ((1u << fractionBits) - 1)), -fractionBits);
    const double size = exponent == 0      ? std::ldexp(fraction, 1 - bias)
                        : exponent == most ? HUGE_VAL
                                           : std::ldexp(1 + fraction, exponent - bias);
    return v >> (exponentBits + fractionBits) & 1 ? -size : size;
}

double floatAt(const std::uint8_t* packed, std::size_t i, int bits) {
    if (bits == 64) {
        double v;
        std::memcpy(&v, packed + 8 * i, sizeof v);
        return v;
    }
    if (bits == 32) {
        float v;
        std::memcpy(&v, packed + 4 * i, sizeof v);
        return double(v);
    }
    if (bits == 16) {
        std::uint16_t v;
        std::memcpy(&v, packed + 2 * i, sizeof v);
        return fromFields(v, 5, 10);
    }
    // Three bytes in this machine's order.
    const std::uint8_t* p = packed + 3 * i;
    const std::uint16_t order = 1;
    std::uint8_t low;
    std::memcpy(&low, &order, 1);
    return fromFields(low ? p[0] | unsigned(p[1]) << 8 | unsigned(p[2]) << 16
                          : p[2] | unsigned(p[1]) << 8 | unsigned(p[0]) << 16,
                      7, 16);
}

// 0 to 1 becomes 0 to 65535; what is not between, and what is no number, goes to the nearer end.
void gatherFloat(const std::uint8_t* packed, std::size_t first, std::size_t count, int bits, std::uint8_t* to,
                 std::size_t stride) {
    for (std::size_t i = 0; i < count; ++i) {
        const double v = floatAt(packed, first + i, bits);
        put<std::uint16_t>(to, i * stride, v > 0 ? unsigned(std::min(v, 1.0) * 65535 + 0.5) : 0);
    }
}

// The colours of a palette, three words each.
using Palette = std::array<std::array<std::uint16_t, 3>, 256>;

Palette readPalette(const TiffFile& file, TiffLayout& h) {
    const std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    if (!TIFFGetField(file.get(), TIFFTAG_COLORMAP, &red, &green, &blue)) file.fail("a palette without colours");
    Palette colours{};
    const int count = 1 << h.bits;
    bool asBytes = true, low = true;
    for (int i = 0; i < count; ++i) {
        colours[std::size_t(i)] = {red[i], green[i], blue[i]};
        for (unsigned v : colours[std::size_t(i)]) {
            asBytes &= v % 256 == 0 || v % 257 == 0;
            low &= v < 256;
        }
    }
    // Colours of 16 bits by TIFF 6.0: some programs mean 8 bits nevertheless, and most widen 8 bits in either way.
    h.shape.maxval = asBytes || low ? 255 : 65535;
    if (asBytes && !low)
        for (auto& colour : colours)
            for (std::uint16_t& v : colour) v >>= 8;
    return colours;
}

template <class Out> UnpackRow paletteRow(const Palette& colours, int width) {
    return [colours, width](const std::uint8_t* raw, std::uint8_t* out) {
        for (int x = 0; x < width; ++x)
            for (std::size_t c = 0; c < 3; ++c) put<Out>(out, std::size_t(x) * 3 + c, colours[raw[x]][c]);
    };
}

// Inverse scales, colours multiplied by alpha, channels that are left out.
template <class Sample> UnpackRow pixelRow(const TiffLayout& h) {
    return [shape = h.shape, channels = h.channels, inverted = h.inverted,
            premultiplied = h.premultiplied](const std::uint8_t* raw, std::uint8_t* out) {
        const auto* from = reinterpret_cast<const Sample*>(raw);
        auto* to = reinterpret_cast<Sample*>(out);
        const int colours = shape.colours();
        const auto most = unsigned(shape.maxval);
        for (int x = 0; x < shape.width; ++x, from += channels, to += shape.channels) {
            const unsigned alpha = premultiplied ? from[colours] : most;
            for (int c = 0; c < colours; ++c) {
                unsigned v = from[c];
                if (alpha != most)
                    v = alpha ? unsigned(std::min<std::uint64_t>((std::uint64_t(v) * most + alpha / 2) / alpha, most))
                              : 0;
                to[c] = Sample(inverted ? most - v : v);
            }
            if (shape.alpha) to[colours] = from[colours];
        }
    };
}

} // namespace

GatherSamples gatherOf(const TiffLayout& h) {
    if (h.isFloat) return gatherFloat;
    if (h.bits == 32) return gatherLong;
    if (h.bits == 16) return gatherWhole<std::uint16_t>;
    if (h.bits == 8) return gatherWhole<std::uint8_t>;
    return h.bits > 8 ? gatherBits<std::uint16_t> : gatherBits<std::uint8_t>;
}

UnpackRow finishOf(const TiffFile& file, TiffLayout& h) {
    if (h.colour == TiffColour::palette) {
        const Palette colours = readPalette(file, h);
        return h.shape.wide() ? paletteRow<std::uint16_t>(colours, h.shape.width)
                              : paletteRow<std::uint8_t>(colours, h.shape.width);
    }
    if (!h.inverted && !h.premultiplied && h.channels == h.shape.channels) return {};
    return h.shape.wide() ? pixelRow<std::uint16_t>(h) : pixelRow<std::uint8_t>(h);
}

} // namespace codecs
