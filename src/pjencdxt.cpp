// pjencdxt.cpp - RGBA pixels to DXT1, DXT3 and DXT5 blocks, and YCoCg pixels to DXT5 blocks, in real time.
//
// There is no search: end-points come from the bounding box of the block, and indexes from comparisons of Manhattan
// distances. The 16 texels are worked on side by side, a channel in 16 bytes, in loops without branches.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjencdxt.h"

#include "pjdxtwalk.h"

namespace zmx {
namespace {

using Texels8 = Zmx8u[16];   // one value for each texel of a block
using Texels16 = Zmx16s[16]; // distances, up to 765

// The 16 interleaved pixels, a channel at a time.
template <int PixelBytes> struct Channels {
    Texels8 at[PixelBytes];

    explicit Channels(const Zmx8u* pBlock) {
        for (int i = 0; i < 16; ++i)
            for (int c = 0; c < PixelBytes; ++c) at[c][i] = pBlock[PixelBytes * i + c];
    }
};

struct Bounds {
    Zmx8u lo, hi;
};

inline Bounds boundsOf(const Texels8& v) {
    Bounds b{255, 0};
    for (int i = 0; i < 16; ++i) {
        b.lo = std::min(b.lo, v[i]);
        b.hi = std::max(b.hi, v[i]);
    }
    return b;
}

// The bounds drawn in by a sixteenth of their distance on each side.
inline Bounds inset(Bounds b) {
    const int by = (b.hi - b.lo) >> 4;
    return {saturate8u(b.lo + by), Zmx8u(b.hi - by)};
}

// The value of a 5-bit or 6-bit field, given in the top of its byte, with its top bits repeated below: what most
// decoders make of it. The decoder of this library does not: its plain shift and this differ on purpose.
inline Zmx8u repeat5(Zmx32u v) { return Zmx8u((v & ~7u) | v >> 5); }
inline Zmx8u repeat6(Zmx32u v) { return Zmx8u((v & ~3u) | v >> 6); }

// Fields are truncated, not rounded.
inline Zmx16u pack565(Zmx32u r, Zmx32u g, Zmx32u b) { return Zmx16u(r >> 3 << 11 | g >> 2 << 5 | b >> 3); }

// One channel of the four palette entries; the thirds are truncated.
struct Entries {
    Zmx8u value[4];
};
inline Entries entriesBetween(Zmx32u first, Zmx32u second) {
    return {{Zmx8u(first), Zmx8u(second), Zmx8u((2 * first + second) / 3), Zmx8u((first + 2 * second) / 3)}};
}

// Distances without a sign change: the greater less the smaller stays in a byte.
inline Zmx8u distance(Zmx8u a, Zmx8u b) { return Zmx8u(std::max(a, b) - std::min(a, b)); }

// Puts the low Bits bits of 8 bytes side by side: of neighbours, of pairs, of fours.
template <int Bits> inline Zmx32u squeeze8(const Zmx8u* values) {
    constexpr std::uint64_t one = 1, bytePair = 0x0001000100010001, bytesOfFour = 0x0000000100000001;
    auto v = loadLE<std::uint64_t>(values, 0);
    v = (v | v >> (8 - Bits)) & bytePair * ((one << 2 * Bits) - 1);
    v = (v | v >> (16 - 2 * Bits)) & bytesOfFour * ((one << 4 * Bits) - 1);
    return Zmx32u((v | v >> (32 - 4 * Bits)) & ((one << 8 * Bits) - 1));
}

inline void storeColourIndexes(const Texels8& index, Zmx8u* pOut) {
    storeLE(pOut, 0, Zmx16u(squeeze8<2>(index)));
    storeLE(pOut, 1, Zmx16u(squeeze8<2>(index + 8)));
}

// Bytes 0 to 7 of a DXT5 block: end-points a0 >= a1 and the 3-bit indexes of the eight-value mode.
inline void storeAlpha(const Texels8& alpha, Zmx32u a0, Zmx32u a1, Zmx8u* pOut) {
    // A threshold half-way above each value but the first, a0, which comes last; they are taken modulo 256.
    const Zmx16u half = Zmx16u((a0 - a1) / 14);
    Zmx8u threshold[8];
    for (Zmx32u k = 0; k < 8; ++k) threshold[k] = Zmx8u(Zmx16u(k * a0 + (7 - k) * a1) / 7 + half);

    Texels8 index;
    for (int i = 0; i < 16; ++i) {
        Zmx8u count = 1;
        for (int k = 0; k < 7; ++k) count = Zmx8u(count + (alpha[i] <= threshold[k]));
        // The order of the format: 0 is a0 and 1 is a1, and the values between follow.
        const Zmx8u r = count & 7;
        index[i] = Zmx8u(r ^ (r < 2));
    }
    pOut[0] = Zmx8u(a0);
    pOut[1] = Zmx8u(a1);
    const std::uint64_t bits = squeeze8<3>(index) | std::uint64_t(squeeze8<3>(index + 8)) << 24;
    storeLE(pOut, 1, Zmx16u(bits));
    storeLE(pOut, 1, Zmx32u(bits >> 16));
}

// The colour block of 8 bytes, the same in all three formats. Alpha takes no part in it.
inline void storeColours(const Channels<4>& pixels, Zmx8u* pOut) {
    const Texels8 &r = pixels.at[0], &g = pixels.at[1], &b = pixels.at[2];
    const Bounds rBox = inset(boundsOf(r)), gBox = inset(boundsOf(g)), bBox = inset(boundsOf(b));
    storeLE(pOut, 0, pack565(rBox.hi, gBox.hi, bBox.hi));
    storeLE(pOut, 1, pack565(rBox.lo, gBox.lo, bBox.lo));

    const Entries rEntries = entriesBetween(repeat5(rBox.hi), repeat5(rBox.lo)),
                  gEntries = entriesBetween(repeat6(gBox.hi), repeat6(gBox.lo)),
                  bEntries = entriesBetween(repeat5(bBox.hi), repeat5(bBox.lo));
    Texels16 d[4];
    for (int k = 0; k < 4; ++k)
        for (int i = 0; i < 16; ++i)
            d[k][i] = Zmx16s(distance(r[i], rEntries.value[k]) + distance(g[i], gEntries.value[k]) +
                             distance(b[i], bEntries.value[k]));
    Texels8 index;
    for (int i = 0; i < 16; ++i) {
        // Strict comparisons: ties go to the lower index.
        const bool b0 = (d[2][i] > d[3][i]) & (d[0][i] > d[3][i]);
        const bool b1 = ((d[1][i] > d[2][i]) & (d[0][i] > d[2][i])) | ((d[0][i] > d[3][i]) & (d[1][i] > d[3][i]));
        index[i] = Zmx8u(b0 | b1 << 1);
    }
    storeColourIndexes(index, pOut + 4);
}

// The bounds of scaled chroma, drawn in by a sixteenth of their distance less 7 sixteenths of a step, in unsigned
// arithmetic. The low one wraps where lo is 0 and the distance below 7: widened to a byte it is 255 then, and that
// stands, as it is required. The high one saturates.
struct ChromaBounds {
    Zmx32u lo, hi;
};
inline ChromaBounds chromaInset(Zmx32u lo, Zmx32u hi) {
    const Zmx32u range = hi - lo;
    return {(lo * 16 + range - 7) >> 4, std::min((hi * 16 - (range - 7)) >> 4, Zmx32u(255))};
}

// s times the difference from 128, modulo 256.
inline Zmx8u scaled(Zmx8u v, int s) { return Zmx8u(s * (v - 128) + 128); }

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                       Zmx8u* pDst) {
    return encodeSurface<4, 8>(pSrc, srcStep, roiSize, pDst, encode_block_rgba_dxt1);
}
ZmxStatus zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                       Zmx8u* pDst) {
    return encodeSurface<4, 16>(pSrc, srcStep, roiSize, pDst, encode_block_rgba_dxt3);
}
ZmxStatus zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                       Zmx8u* pDst) {
    return encodeSurface<4, 16>(pSrc, srcStep, roiSize, pDst, encode_block_rgba_dxt5);
}
ZmxStatus zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                        Zmx8u* pDst) {
    return encodeSurface<3, 16>(pSrc, srcStep, roiSize, pDst, encode_block_ycocg_dxt5);
}

namespace zmx {

void encode_block_rgba_dxt1(const Zmx8u* pBlock, Zmx8u* pOut) { storeColours(Channels<4>(pBlock), pOut); }

void encode_block_rgba_dxt3(const Zmx8u* pBlock, Zmx8u* pOut) {
    const Channels<4> pixels(pBlock);
    Texels8 alpha;
    for (int i = 0; i < 16; ++i) alpha[i] = pixels.at[3][i] >> 4; // the top 4 bits, not rounded
    storeLE(pOut, 0, squeeze8<4>(alpha));
    storeLE(pOut, 1, squeeze8<4>(alpha + 8));
    storeColours(pixels, pOut + 8);
}

void encode_block_rgba_dxt5(const Zmx8u* pBlock, Zmx8u* pOut) {
    const Channels<4> pixels(pBlock);
    const Bounds ends = inset(boundsOf(pixels.at[3]));
    storeAlpha(pixels.at[3], ends.hi, ends.lo, pOut);
    storeColours(pixels, pOut + 8);
}

void encode_block_ycocg_dxt5(Zmx8u* pBlock, Zmx8u* pOut) {
    Channels<3> pixels(pBlock);
    Texels8 &y = pixels.at[0], &co = pixels.at[1], &cg = pixels.at[2];
    const Bounds yBox = boundsOf(y), coBox = boundsOf(co), cgBox = boundsOf(cg);

    // Small chroma ranges are scaled about 128 for the sake of the 5 and 6 bits; no value leaves its byte.
    const int reach = std::max(
        {std::abs(coBox.lo - 128), std::abs(coBox.hi - 128), std::abs(cgBox.lo - 128), std::abs(cgBox.hi - 128)});
    const int s = reach < 32 ? 4 : reach < 64 ? 2 : 1;
    for (int i = 0; i < 16; ++i) {
        co[i] = pBlock[3 * i + 1] = scaled(co[i], s);
        cg[i] = pBlock[3 * i + 2] = scaled(cg[i], s);
    }
    const ChromaBounds coEnds = chromaInset(scaled(coBox.lo, s), scaled(coBox.hi, s));
    const ChromaBounds cgEnds = chromaInset(scaled(cgBox.lo, s), scaled(cgBox.hi, s));
    const Zmx8u coLo = repeat5(coEnds.lo), coHi = repeat5(coEnds.hi);
    Zmx8u cgLo = repeat6(cgEnds.lo), cgHi = repeat6(cgEnds.hi);

    // Chroma that lies along the other diagonal of its box: exactly half the texels do not yet turn it.
    // Counted in two terms: in the place of one comparison of two others gcc 12 adds up something else, where it has
    // unrolled the loop and makes vectors of what that leaves.
    const Zmx8u coMid = Zmx8u((coLo + coHi + 1) >> 1), cgMid = Zmx8u((cgLo + cgHi + 1) >> 1);
    Zmx8u across = 0;
    for (int i = 0; i < 16; ++i)
        across = Zmx8u(across + ((co[i] >= coMid) & (cg[i] < cgMid)) + ((co[i] < coMid) & (cg[i] >= cgMid)));
    if (across > 8) std::swap(cgLo, cgHi);

    storeAlpha(y, yBox.hi, yBox.lo, pOut); // exact bounds: luma has no inset
    const Zmx32u scaleField = Zmx32u(s - 1) << 3;
    storeLE(pOut, 4, pack565(coHi, cgHi, scaleField));
    storeLE(pOut, 5, pack565(coLo, cgLo, scaleField));

    const Entries coEntries = entriesBetween(coHi, coLo), cgEntries = entriesBetween(cgHi, cgLo);
    Texels16 d[4];
    for (int k = 0; k < 4; ++k)
        for (int i = 0; i < 16; ++i)
            d[k][i] = Zmx16s(distance(co[i], coEntries.value[k]) + distance(cg[i], cgEntries.value[k]));
    Texels8 index;
    for (int i = 0; i < 16; ++i) {
        // Unlike the RGBA formats index 1 is never made: a texel nearest to colour 1 gets 0. Required as it stands.
        const bool x0 = (d[1][i] > d[2][i]) & (d[0][i] > d[2][i]);
        const bool x1 = (d[0][i] > d[3][i]) & (d[1][i] > d[3][i]);
        index[i] = Zmx8u(x1 | (x0 | x1) << 1);
    }
    storeColourIndexes(index, pOut + 12);
}

} // namespace zmx
