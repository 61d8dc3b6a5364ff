// pjdecdxt1.cpp - BC7 blocks (BPTC) to RGBA pixels.
//
// The table of the modes, as the format publishes it, is the parameter of one decoder, which the compiler turns into
// straight-line code for each mode: every field is at a fixed place of the block's two 64-bit words. A mode ends in
// one of the interpolations, which make a palette of pixels for each subset and look the texels up in it.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjdecdxt1.h"

#include "pjdecdxt1tbl.h"
#include "pjdxtwalk.h"

namespace zmx {
namespace {

using Word = std::uint64_t;

enum PBits { none, onePerSubset, onePerEnd };

// What the block of a mode holds, in bits. The fields stand in the order of the members: the mode's prefix, the
// partition, the rotation, the selector, all red end-points, all green, all blue, all alpha, the P-bits, the indexes.
struct Mode {
    int number, subsets, partition, rotation, selector;
    int colour, alpha; // of one end-point in one channel
    PBits pBits;
    int index, index2; // of one texel

    constexpr int ends() const { return 2 * subsets; }
    constexpr int partitionAt() const { return number + 1; }
    constexpr int rotationAt() const { return partitionAt() + partition; }
    constexpr int selectorAt() const { return rotationAt() + rotation; }
    constexpr int channelAt(int c) const { return selectorAt() + selector + c * ends() * colour; }
    constexpr int pBitsAt() const { return channelAt(3) + ends() * alpha; }
    constexpr int pBitsSize() const { return pBits == onePerEnd ? ends() : pBits == onePerSubset ? subsets : 0; }
    constexpr int indexAt() const { return pBitsAt() + pBitsSize(); }
    constexpr int indexSize() const { return 16 * index - subsets; } // each anchor lacks a bit
    constexpr int index2At() const { return indexAt() + indexSize(); }
    constexpr int index2Size() const { return index2 ? 16 * index2 - 1 : 0; }
};

// Khronos Data Format Specification 1.3, table "Mode-dependent BPTC parameters".
// clang-format off
constexpr Mode kModes[8] = {
    // mode, subsets, partition, rotation, selector, colour, alpha, P-bits, index, second index
    {0,      3,       4,         0,        0,        4,      0,     onePerEnd,    3, 0},
    {1,      2,       6,         0,        0,        6,      0,     onePerSubset, 3, 0},
    {2,      3,       6,         0,        0,        5,      0,     none,         2, 0},
    {3,      2,       6,         0,        0,        7,      0,     onePerEnd,    2, 0},
    {4,      1,       0,         2,        1,        5,      6,     none,         2, 3},
    {5,      1,       0,         2,        0,        7,      8,     none,         2, 2},
    {6,      1,       0,         0,        0,        7,      7,     onePerEnd,    4, 0},
    {7,      2,       6,         0,        0,        5,      5,     onePerEnd,    2, 0},
};
// clang-format on
static_assert(std::all_of(kModes, kModes + 8, [](Mode m) { return m.index2At() + m.index2Size() == 128; }),
              "the fields of every mode fill its block");

// A block in two words; bit 0 is bit 0 of its first byte.
struct Bits {
    Word lo, hi;

    explicit Bits(const Zmx8u* pBlock) : lo(loadLE<Word>(pBlock, 0)), hi(loadLE<Word>(pBlock, 1)) {}

    template <int At, int Count> Word get() const {
        constexpr Word mask = Count == 64 ? ~Word(0) : (Word(1) << (Count % 64)) - 1;
        if constexpr (Count == 0)
            return 0;
        else if constexpr (At >= 64)
            return hi >> (At - 64) & mask;
        else if constexpr (At == 0 || At + Count <= 64)
            return lo >> At & mask;
        else
            return (lo >> At | hi << (64 - At)) & mask;
    }
};

// Opens a gap for the top bit that the index of an anchor texel lacks. Anchors are taken in order of texels.
template <int IndexBits> Word widenAnchor(Word set, int texel) {
    const Word below = (Word(1) << (IndexBits * texel + IndexBits - 1)) - 1;
    return set + (set & ~below);
}

// An index set with all its indexes equally wide.
template <int IndexBits, int Subsets> Word widenAnchors(Word set, Zmx32u partition) {
    set = widenAnchor<IndexBits>(set, 0);
    if constexpr (Subsets == 2) set = widenAnchor<IndexBits>(set, anchorOfTwoSubsets[idxFixupTwoSubsetMap[partition]]);
    if constexpr (Subsets == 3)
        for (int texel : anchorsOfThreeSubsets[idxFixupThreeSubsetMap[partition]])
            set = widenAnchor<IndexBits>(set, texel);
    return set;
}

template <int IndexBits> void splitIndexes(Word set, Zmx32u* pIndexes, int first = 0) {
    for (int i = first; i < 16; ++i) pIndexes[i] = Zmx32u(set >> IndexBits * i & ((1 << IndexBits) - 1));
}

// The weights of each palette entry, one for each of its four channels.
template <int IndexBits>
constexpr auto kLaneWeights = tableOf<(4 << IndexBits)>([](int i) { return interW[IndexBits - 2][i / 4]; });

// The pixels of one subset, whose end-points stand at [0] and [1]; the sum of the weights is 64, 32 rounds.
template <int IndexBits>
void makePalette(const Zmx32u* pR, const Zmx32u* pG, const Zmx32u* pB, const Zmx32u* pA, Zmx32u* palette) {
    const Zmx32u* const ends[4] = {pR, pG, pB, pA};
    Zmx16u start[8], slope[8]; // two pixels at once; slopes wrap, and the sums do not
    for (int l = 0; l < 8; ++l) {
        start[l] = Zmx16u(64 * ends[l % 4][0] + 32);
        slope[l] = Zmx16u(ends[l % 4][1] - ends[l % 4][0]);
    }
    for (int i = 0; i < 4 << IndexBits; i += 8) {
        Zmx8u pixels[8];
        for (int l = 0; l < 8; ++l)
            pixels[l] = Zmx8u(Zmx16u(start[l] + slope[l] * kLaneWeights<IndexBits>[i + l]) >> 6);
        std::memcpy(palette + i / 4, pixels, 8);
    }
}

// Pixels by the subsets' palettes, which stand one behind the other.
template <int IndexBits, int Subsets>
void interpolate(const Zmx32u* pIndexes, const Zmx32u* pR, const Zmx32u* pG, const Zmx32u* pB, const Zmx32u* pA,
                 const Zmx32u* pSubsets, Zmx8u* pOut, std::size_t outStep) {
    Zmx32u palette[Subsets << IndexBits];
    for (int s = 0; s < Subsets; ++s)
        makePalette<IndexBits>(pR + 2 * s, pG + 2 * s, pB + 2 * s, pA + 2 * s, palette + (s << IndexBits));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            const Zmx32u base = Subsets == 1 ? 0 : pSubsets[4 * y + x] << IndexBits;
            store(pOut + outStep * std::size_t(y), x, palette[base + pIndexes[4 * y + x]]);
        }
}

template <int BitsA, int BitsB>
void interpolateRotated(const Zmx32u* pIndexesA, const Zmx32u* pIndexesB, const Zmx32u* const ends[4], int channelB,
                        Zmx8u* pOut, std::size_t outStep) {
    Zmx32u paletteA[1 << BitsA], paletteB[1 << BitsB];
    makePalette<BitsA>(ends[0], ends[1], ends[2], ends[3], paletteA);
    makePalette<BitsB>(ends[0], ends[1], ends[2], ends[3], paletteB);
    const Zmx32u maskB = littleEndian(0xFFu << 8 * channelB); // palettes hold bytes in memory order
    for (Zmx32u& p : paletteA) p &= ~maskB;
    for (Zmx32u& p : paletteB) p &= maskB;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            store(pOut + outStep * std::size_t(y), x, paletteA[pIndexesA[4 * y + x]] | paletteB[pIndexesB[4 * y + x]]);
}

// The end-points of channel c (3 is alpha) with their P-bits, widened to 8 bits by repeating the top ones.
template <Mode M, int C> void readEnds(Bits bits, Zmx32u* ends) {
    constexpr int width = C == 3 ? M.alpha : M.colour, n = width + (M.pBits != none);
    const Word run = bits.get<M.channelAt(C), M.ends() * width>();
    const Word p = bits.get<M.pBitsAt(), M.pBitsSize()>();
    for (int e = 0; e < M.ends(); ++e) {
        Zmx32u v = Zmx32u(run >> width * e) & ((1u << width) - 1);
        if (M.pBits == onePerEnd) v = v << 1 | Zmx32u(p >> e & 1);
        if (M.pBits == onePerSubset) v = v << 1 | Zmx32u(p >> e / 2 & 1);
        v <<= 8 - n;
        ends[e] = v | v >> n;
    }
}

template <Mode M> void decodeMode(const Zmx8u* pBlock, Zmx8u* pOut, std::size_t outStep) {
    const Bits bits(pBlock);
    const Zmx32u partition = Zmx32u(bits.get<M.partitionAt(), M.partition>());
    Zmx32u r[M.ends()], g[M.ends()], b[M.ends()], a[M.ends()];
    readEnds<M, 0>(bits, r);
    readEnds<M, 1>(bits, g);
    readEnds<M, 2>(bits, b);
    if constexpr (M.alpha > 0)
        readEnds<M, 3>(bits, a);
    else
        std::fill(a, a + M.ends(), 255);

    const Word set = bits.get<M.indexAt(), M.indexSize()>();
    Zmx32u indexes[16];
    if constexpr (M.subsets == 2 && M.index == 2) {
        indexes[0] = set & 1; // an anchor
        indexes[1] = set >> 1 & 3;
        auxParseMode37(pBlock, indexes, partition);
    } else {
        splitIndexes<M.index>(widenAnchors<M.index, M.subsets>(set, partition), indexes);
    }

    if constexpr (M.index2 > 0) {
        const Word set2 = bits.get<M.index2At(), M.index2Size()>();
        Zmx32u indexes2[16];
        splitIndexes<M.index2>(widenAnchors<M.index2, 1>(set2, 0), indexes2);
        const int rotation = int(bits.get<M.rotationAt(), M.rotation>());
        // The selector of mode 4 gives colour the second set, the one of 3 bits, and alpha the first.
        if (bits.get<M.selectorAt(), M.selector>())
            block_interpolate_one_subset_rotate_rgba(indexes2, indexes, r, g, b, a, rotation, M.index2, M.index, pOut,
                                                     outStep);
        else
            block_interpolate_one_subset_rotate_rgba(indexes, indexes2, r, g, b, a, rotation, M.index, M.index2, pOut,
                                                     outStep);
    } else if constexpr (M.subsets == 1) {
        block_interpolate_one_subset_rgba(indexes, r, g, b, a, pOut, outStep);
    } else {
        const SubsetTable& table = M.subsets == 2 ? subset_index_two_subsets : subset_index_three_subsets;
        const Zmx32u* const subsets = table[partition].data();
        if constexpr (M.alpha > 0)
            block_interpolate_multi_subsets_rgba(indexes, r, g, b, a, 2, subsets, pOut, outStep);
        else
            interpolate<M.index, M.subsets>(indexes, r, g, b, a, subsets, pOut, outStep);
    }
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep, ZmxiSize roiSize) {
    return decodeSurface<16>(pSrc, pDst, dstStep, roiSize, decode_block_bc7_rgba);
}

namespace zmx {

const Zmx8u* decode_block_bc7_rgba(const Zmx8u* pBlock, Zmx8u* pOut, std::size_t outStep) {
    switch (modeMap[pBlock[0]]) {
    case 0:
        decodeMode<kModes[0]>(pBlock, pOut, outStep);
        break;
    case 1:
        decodeMode<kModes[1]>(pBlock, pOut, outStep);
        break;
    case 2:
        decodeMode<kModes[2]>(pBlock, pOut, outStep);
        break;
    case 3:
        decodeMode<kModes[3]>(pBlock, pOut, outStep);
        break;
    case 4:
        decodeMode<kModes[4]>(pBlock, pOut, outStep);
        break;
    case 5:
        decodeMode<kModes[5]>(pBlock, pOut, outStep);
        break;
    case 6:
        decodeMode<kModes[6]>(pBlock, pOut, outStep);
        break;
    case 7:
        decodeMode<kModes[7]>(pBlock, pOut, outStep);
        break;
    default: // no mode: not an error, but transparent black
        for (std::size_t y = 0; y < 4; ++y) std::memset(pOut + outStep * y, 0, 16);
    }
    return pBlock + 16;
}

void auxParseMode37(const Zmx8u* pBlock, Zmx32u* pIndexes, Zmx32u partition) {
    constexpr Mode mode3 = kModes[3], mode7 = kModes[7];
    static_assert(mode3.indexAt() == mode7.indexAt() && mode3.index == mode7.index);
    const Word set = Bits(pBlock).get<mode3.indexAt(), mode3.indexSize()>();
    splitIndexes<2>(widenAnchors<2, 2>(set, partition), pIndexes, 2);
}

void block_interpolate_one_subset_rgba(const Zmx32u* pIndexes, const Zmx32u* pR, const Zmx32u* pG, const Zmx32u* pB,
                                       const Zmx32u* pA, Zmx8u* pOut, std::size_t outStep) {
    interpolate<4, 1>(pIndexes, pR, pG, pB, pA, nullptr, pOut, outStep);
}

void block_interpolate_one_subset_rotate_rgba(const Zmx32u* pIndexesA, const Zmx32u* pIndexesB, const Zmx32u* pR,
                                              const Zmx32u* pG, const Zmx32u* pB, const Zmx32u* pA, int rotation,
                                              int bitsA, int bitsB, Zmx8u* pOut, std::size_t outStep) {
    // Rotation comes ahead of the interpolation: the two channels change end-points, and the index set with them.
    const Zmx32u* ends[4] = {pR, pG, pB, pA};
    const int channelB = rotation ? rotation - 1 : 3;
    std::swap(ends[channelB], ends[3]);
    const auto run = bitsA == 3   ? interpolateRotated<3, 2>
                     : bitsB == 3 ? interpolateRotated<2, 3>
                                  : interpolateRotated<2, 2>;
    run(pIndexesA, pIndexesB, ends, channelB, pOut, outStep);
}

void block_interpolate_multi_subsets_rgba(const Zmx32u* pIndexes, const Zmx32u* pR, const Zmx32u* pG, const Zmx32u* pB,
                                          const Zmx32u* pA, int /*reserved*/, const Zmx32u* pSubsets, Zmx8u* pOut,
                                          std::size_t outStep) {
    interpolate<2, 2>(pIndexes, pR, pG, pB, pA, pSubsets, pOut, outStep);
}

} // namespace zmx
