// bc7.cpp - a BC7 block is read one bit at a time.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/bc7.h"

#include <cassert>

namespace {

// The subset of each texel, in raster order, for partitions 0 to 63.
const char* const kTwoSubsets[64] = {
    "0011001100110011", "0001000100010001", "0111011101110111", "0001001100110111", // 0
    "0000000100010011", "0011011101111111", "0001001101111111", "0000000100110111", // 4
    "0000000000010011", "0011011111111111", "0000000101111111", "0000000000010111", // 8
    "0001011111111111", "0000000011111111", "0000111111111111", "0000000000001111", // 12
    "0000100011101111", "0111000100000000", "0000000010001110", "0111001100010000", // 16
    "0011000100000000", "0000100011001110", "0000000010001100", "0111001100110001", // 20
    "0011000100010000", "0000100010001100", "0110011001100110", "0011011001101100", // 24
    "0001011111101000", "0000111111110000", "0111000110001110", "0011100110011100", // 28
    "0101010101010101", "0000111100001111", "0101101001011010", "0011001111001100", // 32
    "0011110000111100", "0101010110101010", "0110100101101001", "0101101010100101", // 36
    "0111001111001110", "0001001111001000", "0011001001001100", "0011101111011100", // 40
    "0110100110010110", "0011110011000011", "0110011010011001", "0000011001100000", // 44
    "0100111001000000", "0010011100100000", "0000001001110010", "0000010011100100", // 48
    "0110110010010011", "0011011011001001", "0110001110011100", "0011100111000110", // 52
    "0110110011001001", "0110001100111001", "0111111010000001", "0001100011100111", // 56
    "0000111100110011", "0011001111110000", "0010001011101110", "0100010001110111", // 60
};
const char* const kThreeSubsets[64] = {
    "0011001102212222", "0001001122112221", "0000200122112211", "0222002200110111", // 0
    "0000000011221122", "0011001100220022", "0022002211111111", "0011001122112211", // 4
    "0000000011112222", "0000111111112222", "0000111122222222", "0012001200120012", // 8
    "0112011201120112", "0122012201220122", "0011011211221222", "0011200122002220", // 12
    "0001001101121122", "0111001120012200", "0000112211221122", "0022002200221111", // 16
    "0111011102220222", "0001000122212221", "0000001101220122", "0000110022102210", // 20
    "0122012200110000", "0012001211222222", "0110122112210110", "0000011012211221", // 24
    "0022110211020022", "0110011020022222", "0011012201220011", "0000200022112221", // 28
    "0000000211221222", "0222002200120011", "0011001200220222", "0120012001200120", // 32
    "0000111122220000", "0120120120120120", "0120201212010120", "0011220011220011", // 36
    "0011112222000011", "0101010122222222", "0000000021212121", "0022112200221122", // 40
    "0022001100220011", "0220122102201221", "0101222222220101", "0000212121212121", // 44
    "0101010101012222", "0222011102220111", "0002111200021112", "0000211221122112", // 48
    "0222011101110222", "0002111211120002", "0110011001102222", "0000000021122112", // 52
    "0110011022222222", "0022001100110022", "0022112211220022", "0000000000002112", // 56
    "0002000100020001", "0222122202221222", "0101222222222222", "0111201122012220", // 60
};

// The texels whose index has one bit less, beside texel 0.
const int kAnchorOfTwo[64] = {
    15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, // 0
    15, 2,  8,  2,  2,  8,  8,  15, 2,  8,  2,  2,  8,  8,  2,  2,  // 16
    15, 15, 6,  8,  2,  8,  15, 15, 2,  8,  2,  2,  2,  15, 15, 6,  // 32
    6,  2,  6,  8,  15, 15, 2,  2,  15, 15, 15, 15, 15, 2,  2,  15, // 48
};
const int kAnchorsOfThree[64][2] = {
    {3, 15}, {3, 8},   {15, 8}, {15, 3},  {8, 15}, {3, 15},  {15, 3},  {15, 8},  // 0
    {8, 15}, {8, 15},  {6, 15}, {6, 15},  {6, 15}, {5, 15},  {3, 15},  {3, 8},   // 8
    {3, 15}, {3, 8},   {8, 15}, {15, 3},  {3, 15}, {3, 8},   {6, 15},  {10, 8},  // 16
    {5, 3},  {8, 15},  {8, 6},  {6, 10},  {8, 15}, {5, 15},  {15, 10}, {15, 8},  // 24
    {8, 15}, {15, 3},  {3, 15}, {5, 10},  {6, 10}, {10, 8},  {8, 9},   {15, 10}, // 32
    {15, 6}, {3, 15},  {15, 8}, {5, 15},  {15, 3}, {15, 6},  {15, 6},  {15, 8},  // 40
    {3, 15}, {15, 3},  {5, 15}, {5, 15},  {5, 15}, {8, 15},  {5, 15},  {10, 15}, // 48
    {5, 15}, {10, 15}, {8, 15}, {13, 15}, {15, 3}, {12, 15}, {3, 15},  {3, 8},   // 56
};

const int kWeights2[4] = {0, 21, 43, 64};
const int kWeights3[8] = {0, 9, 18, 27, 37, 46, 55, 64};
const int kWeights4[16] = {0, 4, 9, 13, 17, 21, 26, 30, 34, 38, 43, 47, 51, 55, 60, 64};

int weight(int bits, int index) {
    return bits == 2 ? kWeights2[index] : bits == 3 ? kWeights3[index] : kWeights4[index];
}

// The table of the modes in the format's own notation.
struct Mode {
    int subsets, partitionBits, rotationBits, selectorBits, colourBits, alphaBits;
    int pBits; // in the block: none, one for each subset, or one for each end-point
    int indexBits, secondIndexBits;
};
const Mode kModes[8] = {
    {3, 4, 0, 0, 4, 0, 6, 3, 0}, //
    {2, 6, 0, 0, 6, 0, 2, 3, 0}, //
    {3, 6, 0, 0, 5, 0, 0, 2, 0}, //
    {2, 6, 0, 0, 7, 0, 4, 2, 0}, //
    {1, 0, 2, 1, 5, 6, 0, 2, 3}, //
    {1, 0, 2, 0, 7, 8, 0, 2, 2}, //
    {1, 0, 0, 0, 7, 7, 2, 4, 0}, //
    {2, 6, 0, 0, 5, 5, 4, 2, 0},
};

class BlockReader {
    const Zmx8u* block;
    int at = 0;

public:
    explicit BlockReader(const Zmx8u* b) : block(b) {}
    int bit() {
        const int b = block[at / 8] >> at % 8 & 1;
        ++at;
        return b;
    }
    int bits(int n) {
        int v = 0;
        for (int i = 0; i < n; ++i) v += bit() << i;
        return v;
    }
    int position() const { return at; }
};

int subsetOf(int subsets, int partition, int texel) {
    if (subsets == 1) return 0;
    return (subsets == 2 ? kTwoSubsets : kThreeSubsets)[partition][texel] - '0';
}

bool isAnchor(int subsets, int partition, int texel) {
    if (texel == 0) return true;
    if (subsets == 2) return texel == kAnchorOfTwo[partition];
    if (subsets == 3) return texel == kAnchorsOfThree[partition][0] || texel == kAnchorsOfThree[partition][1];
    return false;
}

// The top bits are put back below.
int widened(int v, int bits) {
    const int high = v << (8 - bits);
    return high | high >> bits;
}

int between(int e0, int e1, int w) { return (e0 * (64 - w) + e1 * w + 32) >> 6; }

} // namespace

namespace model {

Texels decodeBc7(const Zmx8u* block) {
    Texels out{};
    BlockReader in(block);
    int number = 0;
    while (number < 8 && in.bit() == 0) ++number;
    if (number == 8) return out; // no mode: all bytes zero
    const Mode& mode = kModes[number];

    const int partition = in.bits(mode.partitionBits);
    const int rotation = in.bits(mode.rotationBits);
    const int selector = in.bits(mode.selectorBits);

    const int ends = 2 * mode.subsets;
    int end[6][4];
    for (int channel = 0; channel < 4; ++channel)
        for (int e = 0; e < ends; ++e) end[e][channel] = in.bits(channel < 3 ? mode.colourBits : mode.alphaBits);
    int pBit[6] = {};
    for (int i = 0; i < mode.pBits; ++i) pBit[i] = in.bit();

    for (int e = 0; e < ends; ++e) {
        for (int channel = 0; channel < 4; ++channel) {
            int bits = channel < 3 ? mode.colourBits : mode.alphaBits;
            if (bits == 0) {
                end[e][channel] = 255;
                continue;
            }
            if (mode.pBits > 0) {
                end[e][channel] = 2 * end[e][channel] + pBit[mode.pBits == ends ? e : e / 2];
                ++bits;
            }
            end[e][channel] = widened(end[e][channel], bits);
        }
    }

    int first[16], second[16] = {};
    for (int n = 0; n < 16; ++n) first[n] = in.bits(mode.indexBits - (isAnchor(mode.subsets, partition, n) ? 1 : 0));
    if (mode.secondIndexBits > 0)
        for (int n = 0; n < 16; ++n) second[n] = in.bits(mode.secondIndexBits - (n == 0 ? 1 : 0));
    assert(in.position() == 128); // the fields of every mode fill the block

    for (int n = 0; n < 16; ++n) {
        const int* e0 = end[2 * subsetOf(mode.subsets, partition, n)];
        const int* e1 = end[2 * subsetOf(mode.subsets, partition, n) + 1];
        const int w1 = weight(mode.indexBits, first[n]);
        const int w2 = mode.secondIndexBits > 0 ? weight(mode.secondIndexBits, second[n]) : w1;
        const int colour = selector == 0 ? w1 : w2, alpha = selector == 0 ? w2 : w1;
        int pixel[4];
        for (int channel = 0; channel < 4; ++channel)
            pixel[channel] = between(e0[channel], e1[channel], channel < 3 ? colour : alpha);
        if (rotation > 0) {
            const int kept = pixel[rotation - 1];
            pixel[rotation - 1] = pixel[3];
            pixel[3] = kept;
        }
        for (int channel = 0; channel < 4; ++channel) out[n][channel] = Zmx8u(pixel[channel]);
    }
    return out;
}

} // namespace model
