// pjdecdxt.cpp - DXT1, DXT3 and DXT5 blocks (BC1, BC2, BC3) to RGBA pixels.
//
// A block becomes a palette of four pixels, and each texel is a look-up in it. The three channels of a colour are
// worked on together, in lanes of one 64-bit word.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjdecdxt.h"

#include "pjdxtwalk.h"

namespace zmx {
namespace {

// Red, green and blue at bits 0, 21 and 42: room for three times a byte times 683 in each.
using Lanes = std::uint64_t;

// A 5:6:5 colour, each field shifted to the top of its byte. The low bits stay zero: no repetition of the top
// bits here, unlike the palette of the encoder.
inline Lanes widened(Zmx32u c) {
    return Lanes(c >> 11 << 3) | Lanes(c >> 5 & 63) << (21 + 2) | Lanes(c & 31) << (42 + 3);
}

// The low byte of each lane, without alpha.
inline Zmx32u pixelOf(Lanes v) {
    return Zmx32u(v & 0xFF) | Zmx32u(v >> (21 - 8) & 0xFF00) | Zmx32u(v >> (42 - 16) & 0xFF0000);
}

// Each lane over 3, truncated: exact for sums below 2048. What slips from one lane into the top of the next lower
// one lies above its low byte.
inline Lanes third(Lanes sum) { return sum * 683 >> 11; }

struct Palette {
    Zmx32u entry[4];
};

// The four-colour palette, with alpha 0.
inline Palette fourColours(const Zmx8u* colours) {
    const Lanes x0 = widened(loadLE<Zmx16u>(colours, 0)), x1 = widened(loadLE<Zmx16u>(colours, 1));
    return {{pixelOf(x0), pixelOf(x1), pixelOf(third(2 * x0 + x1)), pixelOf(third(x0 + 2 * x1))}};
}

// DXT1's palette, opaque. Where colour 0 is not above colour 1, entry 2 is the mean, and entry 3, the format's
// transparent one, is opaque white: required here. Made without a branch, which would often be guessed wrong.
inline Palette dxt1Colours(const Zmx8u* colours) {
    const Zmx32u c0 = loadLE<Zmx16u>(colours, 0), c1 = loadLE<Zmx16u>(colours, 1);
    const Zmx32u three = Zmx32u(0) - Zmx32u(c0 <= c1); // all bits set for three colours
    const Zmx32u mean = pixelOf((widened(c0) + widened(c1)) >> 1);
    Palette p = fourColours(colours);
    p.entry[2] = (p.entry[2] & ~three) | (mean & three);
    p.entry[3] |= three;
    for (Zmx32u& e : p.entry) e |= 0xFF000000;
    return p;
}

// The eight alpha values of DXT5, rounded by the constants ahead of the divisions.
inline void alphaValues(Zmx32u a0, Zmx32u a1, Zmx32u value[8]) {
    value[0] = a0;
    value[1] = a1;
    if (a0 <= a1) {
        for (Zmx32u k = 2; k < 6; ++k) value[k] = ((6 - k) * a0 + (k - 1) * a1 + 2) / 5;
        value[6] = 0;
        value[7] = 255;
    } else {
        for (Zmx32u k = 2; k < 8; ++k) value[k] = ((8 - k) * a0 + (k - 1) * a1 + 3) / 7;
    }
}

// The block decoders with a step between the rows that they write.

inline void decodeDxt1(const Zmx8u* pBlock, Zmx8u* pOut, std::size_t outStep) {
    const Palette palette = dxt1Colours(pBlock);
    Zmx32u index = loadLE<Zmx32u>(pBlock, 1);
    for (int y = 0; y < 4; ++y, pOut += outStep)
        for (int x = 0; x < 4; ++x, index >>= 2) storeLE(pOut, x, palette.entry[index & 3]);
}

inline void decodeDxt3(const Zmx8u* pBlock, Zmx8u* pOut, std::size_t outStep) {
    const Palette palette = fourColours(pBlock + 8);
    Zmx32u index = loadLE<Zmx32u>(pBlock, 3);
    for (int y = 0; y < 4; ++y, pOut += outStep) {
        const Zmx32u alpha = loadLE<Zmx16u>(pBlock, y);
        // 4 bits shifted to the top of the byte: 15 gives 240, and nothing is quite opaque.
        for (int x = 0; x < 4; ++x, index >>= 2)
            storeLE(pOut, x, palette.entry[index & 3] | (alpha >> 4 * x & 15) << 28);
    }
}

inline void decodeDxt5(const Zmx8u* pBlock, Zmx8u* pOut, std::size_t outStep) {
    const Palette palette = fourColours(pBlock + 8);
    Zmx32u alpha[8];
    alphaValues(pBlock[0], pBlock[1], alpha);
    std::uint64_t alphaIndex = loadLE<std::uint64_t>(pBlock, 0) >> 16;
    Zmx32u index = loadLE<Zmx32u>(pBlock, 3);
    for (int y = 0; y < 4; ++y, pOut += outStep)
        for (int x = 0; x < 4; ++x, index >>= 2, alphaIndex >>= 3)
            storeLE(pOut, x, palette.entry[index & 3] | alpha[alphaIndex & 7] << 24);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep, ZmxiSize roiSize) {
    return decodeSurface<8>(pSrc, pDst, dstStep, roiSize, decodeDxt1);
}
ZmxStatus zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep, ZmxiSize roiSize) {
    return decodeSurface<16>(pSrc, pDst, dstStep, roiSize, decodeDxt3);
}
ZmxStatus zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep, ZmxiSize roiSize) {
    return decodeSurface<16>(pSrc, pDst, dstStep, roiSize, decodeDxt5);
}

namespace zmx {

void decode_block_dxt1_rgba(const Zmx8u* pBlock, Zmx8u* pOut) { decodeDxt1(pBlock, pOut, 16); }
void decode_block_dxt3_rgba(const Zmx8u* pBlock, Zmx8u* pOut) { decodeDxt3(pBlock, pOut, 16); }
void decode_block_dxt5_rgba(const Zmx8u* pBlock, Zmx8u* pOut) { decodeDxt5(pBlock, pOut, 16); }

} // namespace zmx
