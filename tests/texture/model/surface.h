// surface.h - plain walks over a surface of 4x4 texture blocks, pixel by pixel.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

#include <algorithm>
#include <cstddef>

namespace model {

// The sixteen texels of a block in raster order, four channels each; the fourth is unused where there are
// three.
struct Texel {
    Zmx8u channel[4];
    Zmx8u& operator[](int c) { return channel[c]; }
    Zmx8u operator[](int c) const { return channel[c]; }
};
struct Texels {
    Texel texel[16];
    Texel& operator[](int n) { return texel[n]; }
    const Texel& operator[](int n) const { return texel[n]; }
    Texel* begin() { return texel; }
    Texel* end() { return texel + 16; }
    const Texel* begin() const { return texel; }
    const Texel* end() const { return texel + 16; }
};

inline int blocksOf(int length) { return (length + 3) / 4; }
inline std::size_t blocksOf(ZmxiSize roi) {
    return std::size_t(blocksOf(roi.width)) * std::size_t(blocksOf(roi.height));
}

// Block by block, so that of rows that overlap the later block's pixels stay.
template <class Decode>
void decodeSurface(const Zmx8u* blocks, int blockBytes, Decode decode, Zmx8u* dst, Zmx32u dstStep, ZmxiSize roi) {
    for (int by = 0; by < blocksOf(roi.height); ++by) {
        for (int bx = 0; bx < blocksOf(roi.width); ++bx) {
            const Texels texels = decode(blocks);
            blocks += blockBytes;
            for (int n = 0; n < 16; ++n) {
                const int x = 4 * bx + n % 4, y = 4 * by + n / 4;
                if (x >= roi.width || y >= roi.height) continue;
                for (int c = 0; c < 4; ++c)
                    dst[std::size_t(dstStep) * std::size_t(y) + std::size_t(4 * x + c)] = texels[n][c];
            }
        }
    }
}

// Beyond the region the last column and the last row are repeated.
template <class Encode>
void encodeSurface(const Zmx8u* src, int channels, Zmx32u srcStep, ZmxiSize roi, Encode encode, int blockBytes,
                   Zmx8u* blocks) {
    for (int by = 0; by < blocksOf(roi.height); ++by) {
        for (int bx = 0; bx < blocksOf(roi.width); ++bx) {
            Texels texels{};
            for (int n = 0; n < 16; ++n) {
                const int x = std::min(4 * bx + n % 4, roi.width - 1), y = std::min(4 * by + n / 4, roi.height - 1);
                for (int c = 0; c < channels; ++c)
                    texels[n][c] = src[std::size_t(srcStep) * std::size_t(y) + std::size_t(channels * x + c)];
            }
            encode(texels, blocks);
            blocks += blockBytes;
        }
    }
}

} // namespace model
