// format.h - what the segments of a JPEG file say (ITU-T T.81 Annex B), as reader and writer share it.
#pragma once

#include "codecs/jpeg/jpeg.h"
#include "zmxj.h"

#include <algorithm>
#include <array>

namespace jpeg {

// clang-format off
enum Marker : std::uint8_t {
    TEM = 0x01,
    SOF0 = 0xC0, SOF1 = 0xC1, SOF2 = 0xC2, SOF3 = 0xC3, SOF15 = 0xCF, // and others between them
    DHT = 0xC4, JPG = 0xC8, DAC = 0xCC,                               // which stand among the frame headers
    RST0 = 0xD0, RST7 = 0xD7,
    SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DQT = 0xDB, DNL = 0xDC, DRI = 0xDD,
    APP0 = 0xE0, APP14 = 0xEE, APP15 = 0xEF, COM = 0xFE
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
inline constexpr int kBlock = 64;                                           // coefficients

// How the components of a file make a colour.
enum class Model { Grey, YCbCr, Rgb, Ycck, Cmyk };
inline int channelsOf(Model model) {
    return model == Model::Grey ? 1 : model == Model::YCbCr || model == Model::Rgb ? 3 : 4;
}

// Chroma has tables of its own, for quantisation and for Huffman coding.
inline bool isChroma(Model model, int component) {
    return (model == Model::YCbCr || model == Model::Ycck) && (component == 1 || component == 2);
}

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

struct ScanComponent {
    int index;  // in Frame::components
    int dc, ac; // which Huffman tables
};

struct Scan {
    std::vector<ScanComponent> components;
    int first = 0, last = 63, high = 0, low = 0; // spectral selection and successive approximation
};

} // namespace jpeg
