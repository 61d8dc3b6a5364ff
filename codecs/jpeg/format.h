// format.h - what the segments of a JPEG file say (ITU-T T.81 Annex B), as reader and writer share it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/error.h"
#include "zmxj.h"

#include <algorithm>
#include <array>
#include <vector>

namespace codecs::jpeg {

// Throws an Error that names the place in the file.
[[noreturn]] inline void fail(std::uint64_t offset, const std::string& what) {
    throw Error("byte " + std::to_string(offset) + ": " + what);
}

// clang-format off
enum Marker : std::uint8_t {
    TEM = 0x01,
    SOF0 = 0xC0, SOF1 = 0xC1, SOF2 = 0xC2, SOF3 = 0xC3, SOF15 = 0xCF, // and others between them
    DHT = 0xC4, JPG = 0xC8, DAC = 0xCC,                               // which stand among the frame headers
    RST0 = 0xD0, RST7 = 0xD7,
    SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DQT = 0xDB, DNL = 0xDC, DRI = 0xDD,
    APP0 = 0xE0, APP1 = 0xE1, APP2 = 0xE2, APP14 = 0xEE, APP15 = 0xEF, COM = 0xFE
};
// clang-format on
inline bool isRestart(int marker) { return marker >= RST0 && marker <= RST7; }
// A frame header, of whatever mode.
inline bool isFrame(int marker) {
    return marker >= SOF0 && marker <= SOF15 && marker != DHT && marker != JPG && marker != DAC;
}

inline constexpr int kMaxComponents = 4;
inline constexpr int kMaxFactor = 4;                                        // of sampling, in either direction
inline constexpr int kMaxBlocks = kMaxComponents * kMaxFactor * kMaxFactor; // in the MCU of a frame
inline constexpr int kMaxScanUnits = 10; // in the MCU of a scan of several components (B.2.3)
inline constexpr int kBlock = 64;        // coefficients

// How the components of a file make a colour.
enum class Model { grey, yCbCr, rgb, ycck, cmyk };
inline int channelsOf(Model model) {
    return model == Model::grey ? 1 : model == Model::yCbCr || model == Model::rgb ? 3 : 4;
}

// Chroma has tables of its own, for quantisation and for Huffman coding.
inline bool isChroma(Model model, int component) {
    return (model == Model::yCbCr || model == Model::ycck) && (component == 1 || component == 2);
}

// The most bytes of a coded block: 64 codes of 16 bits with up to 16 more each, and those of a long run with a thousand
// correction bits ahead of it; all bytes 0xFF with their stuffing, and a few that are read or cleared ahead.
inline constexpr std::size_t kWorstBlock = 2 * (64 * 4 + 1024 / 8 + 16);

// Of a coded difference of a lossless file: a code of 16 bits and 16 more, all bytes 0xFF with their stuffing.
inline constexpr std::size_t kWorstDifference = 2 * 4;

using QuantTable = std::array<std::uint16_t, 64>; // in zig-zag order

struct HuffmanTable {
    std::array<std::uint8_t, 16> bits{};  // how many codes of each length
    std::array<std::uint8_t, 256> vals{}; // the symbols in the order of their codes
};

struct Component {
    int id = 0;
    int h = 1, v = 1; // sampling factors
    int quant = 0;    // which quantisation table
};

inline int divUp(int a, int b) { return a / b + (a % b != 0); }

struct Frame {
    int sof = SOF0;
    int precision = 8, width = 0, height = 0;
    std::vector<Component> components;
    int hMax = 1, vMax = 1;

    bool lossless() const { return sof == SOF3; }
    bool progressive() const { return sof == SOF2; }
    // The side of a data unit in samples: a block, or in lossless files one sample.
    int unit() const { return lossless() ? 1 : 8; }
    int mcuColumns() const { return divUp(width, unit() * hMax); }
    int mcuRows() const { return divUp(height, unit() * vMax); }
    // Units that hold samples of the picture: what a scan of this component alone codes.
    int blockColumns(const Component& c) const { return divUp(divUp(width * c.h, hMax), unit()); }
    int blockRows(const Component& c) const { return divUp(divUp(height * c.v, vMax), unit()); }
    int blocksInMcu() const {
        int n = 0;
        for (const Component& c : components) n += c.h * c.v;
        return n;
    }
    void setMaxima() {
        hMax = vMax = 1;
        for (const Component& c : components) hMax = std::max(hMax, c.h), vMax = std::max(vMax, c.v);
    }
};

// Room for the blocks of an MCU.
struct McuBlocks {
    alignas(32) Zmx16s coefficients[kMaxBlocks * kBlock];

    std::array<Zmx16s*, kMaxBlocks> pointers() {
        std::array<Zmx16s*, kMaxBlocks> blocks;
        for (std::size_t i = 0; i < kMaxBlocks; ++i) blocks[i] = coefficients + i * kBlock;
        return blocks;
    }
};

struct ScanComponent {
    int index;  // in Frame::components
    int dc, ac; // which Huffman tables
};

struct Scan {
    std::vector<ScanComponent> components;
    int first = 0, last = 63, high = 0, low = 0; // spectral selection and successive approximation
};

} // namespace codecs::jpeg
