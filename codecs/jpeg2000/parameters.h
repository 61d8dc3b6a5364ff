// parameters.h - what the marker segments of a codestream say (ISO/IEC 15444-1, annex A), once they are read and
// before they are written.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"

#include <array>
#include <optional>

namespace codecs::jpeg2000 {

enum Marker : int {
    SOC = 0xFF4F,
    SOT = 0xFF90,
    SOD = 0xFF93,
    EOC = 0xFFD9,
    SIZ = 0xFF51,
    COD = 0xFF52,
    COC = 0xFF53,
    RGN = 0xFF5E,
    QCD = 0xFF5C,
    QCC = 0xFF5D,
    POC = 0xFF5F,
    TLM = 0xFF55,
    PLM = 0xFF57,
    PLT = 0xFF58,
    PPM = 0xFF60,
    PPT = 0xFF61,
    SOP = 0xFF91,
    EPH = 0xFF92,
    CRG = 0xFF63,
    COM = 0xFF64
};

constexpr int kMaxComponents = 16384, kMaxLevels = 32, kMaxTiles = 65535, kMaxLayers = 65535;
constexpr int kMaxBitPlanes = 30; // of a code block here: the library's 31, less a plane for midpoints

struct SizComponent {
    int depth = 8;
    bool isSigned = false;
    int dx = 1, dy = 1;
};

struct ImageSize {
    std::uint32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;                      // image area
    std::uint32_t tileX = 0, tileY = 0, tileWidth = 0, tileHeight = 0; // grid of tiles
    std::vector<SizComponent> components;

    int tilesAcross() const { return int((std::uint64_t(x1) - tileX + tileWidth - 1) / tileWidth); }
    int tilesDown() const { return int((std::uint64_t(y1) - tileY + tileHeight - 1) / tileHeight); }
    int tiles() const { return tilesAcross() * tilesDown(); }
};

// The part of COD and COC that is a component's own.
struct CodingStyle {
    int levels = 0;
    int blockWidthLog = 6, blockHeightLog = 6;
    unsigned style = 0; // BlockStyle
    bool reversible = true;
    std::array<std::uint8_t, kMaxLevels + 1> precincts; // low half: log of the width, high half: of the height

    CodingStyle() { precincts.fill(0xFF); }
    bool operator==(const CodingStyle&) const = default;
};

// The part of COD that all components share.
struct TileStyle {
    bool sop = false, eph = false;
    Progression progression = Progression::LRCP;
    int layers = 1;
    bool colourTransform = false;
};

struct StepSize {
    int exponent = 0, mantissa = 0;
    bool operator==(const StepSize&) const = default;
};

struct Quantization {
    enum Kind { none, derived, expounded } kind = none;
    int guardBits = 2;
    std::vector<StepSize> steps; // by band: LL, then HL, LH, HH from the lowest resolution up; one if derived

    StepSize step(int resolution, int bandInResolution) const;
    bool operator==(const Quantization&) const = default;
};

// What the markers of one header say. A tile's set starts as a copy of the main header's.
struct HeaderSet {
    TileStyle tile;
    std::vector<CodingStyle> coding; // by component
    std::vector<Quantization> quant; // by component
    std::vector<int> roiShift;       // by component
    std::vector<ProgressionChange> changes;
};

} // namespace codecs::jpeg2000
