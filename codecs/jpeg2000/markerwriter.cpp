// markerwriter.cpp - the marker segments of a header, from parameters.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/markers.h"

#include <algorithm>

namespace codecs::jpeg2000 {

// A.5.1. The capabilities are those of the standard without restriction.
void writeSiz(ByteWriter& out, const ImageSize& s) {
    out.u16(SIZ);
    out.u16(unsigned(38 + 3 * s.components.size()));
    out.u16(0);
    for (const std::uint32_t v : {s.x1, s.y1, s.x0, s.y0, s.tileWidth, s.tileHeight, s.tileX, s.tileY}) out.u32(v);
    out.u16(unsigned(s.components.size()));
    for (const SizComponent& c : s.components) {
        out.u8(unsigned(c.depth - 1) | unsigned(c.isSigned) << 7);
        out.u8(unsigned(c.dx));
        out.u8(unsigned(c.dy));
    }
}

namespace {

// SPcod and SPcoc (Table A.15), and how many bytes they take.
bool ownPrecincts(const CodingStyle& style) {
    return std::any_of(style.precincts.begin(), style.precincts.end(), [](int v) { return v != 0xFF; });
}
int styleBytes(const CodingStyle& style) { return 5 + (ownPrecincts(style) ? style.levels + 1 : 0); }

void writeStyle(ByteWriter& out, const CodingStyle& style) {
    out.u8(unsigned(style.levels));
    // Logarithms less 2, as no code block is narrower than 4 (Table A.18).
    out.u8(unsigned(style.blockWidthLog - 2));
    out.u8(unsigned(style.blockHeightLog - 2));
    out.u8(style.style);
    // The code of the 5/3 filter is 1 (Table A.20).
    out.u8(style.reversible);
    for (int r = 0; ownPrecincts(style) && r <= style.levels; ++r) out.u8(style.precincts[std::size_t(r)]);
}

} // namespace

void writeCod(ByteWriter& out, const TileStyle& tile, const CodingStyle& style) {
    out.u16(COD);
    out.u16(unsigned(7 + styleBytes(style)));
    // Scod (Table A.13).
    out.u8(unsigned(ownPrecincts(style)) | unsigned(tile.sop) << 1 | unsigned(tile.eph) << 2);
    out.u8(unsigned(tile.progression));
    out.u16(unsigned(tile.layers));
    out.u8(tile.colourTransform);
    writeStyle(out, style);
}

void writeCoc(ByteWriter& out, const CodingStyle& style, std::size_t component, std::size_t components) {
    const int width = componentBytes(components);
    out.u16(COC);
    out.u16(unsigned(3 + width + styleBytes(style)));
    out.number(std::uint32_t(component), width);
    out.u8(ownPrecincts(style));
    writeStyle(out, style);
}

void writeRgn(ByteWriter& out, int shift, std::size_t component, std::size_t components) {
    const int width = componentBytes(components);
    out.u16(RGN);
    out.u16(unsigned(4 + width));
    out.number(std::uint32_t(component), width);
    out.u8(0); // max shift, the only kind
    out.u8(unsigned(shift));
}

namespace {

// Sqcd and SPqcd, in a byte or two for each band (Table A.28).
int stepBytes(const Quantization& q) { return q.kind == Quantization::none ? 1 : 2; }

void writeSteps(ByteWriter& out, const Quantization& q) {
    // Guard bits stand in the upper three bits of Sqcd.
    out.u8(unsigned(q.kind) | unsigned(q.guardBits) << 5);
    for (const StepSize& s : q.steps)
        out.number(unsigned(q.kind == Quantization::none ? s.exponent << 3 : s.exponent << 11 | s.mantissa),
                   stepBytes(q));
}

} // namespace

void writeQcd(ByteWriter& out, const Quantization& q) {
    out.u16(QCD);
    out.u16(unsigned(3 + std::size_t(stepBytes(q)) * q.steps.size()));
    writeSteps(out, q);
}

void writeQcc(ByteWriter& out, const Quantization& q, std::size_t component, std::size_t components) {
    const int width = componentBytes(components);
    out.u16(QCC);
    out.u16(unsigned(3 + std::size_t(width) + std::size_t(stepBytes(q)) * q.steps.size()));
    out.number(std::uint32_t(component), width);
    writeSteps(out, q);
}

// A.6.6. One segment holds all changes.
void writePoc(ByteWriter& out, const std::vector<ProgressionChange>& changes, std::size_t components) {
    const int width = componentBytes(components);
    out.u16(POC);
    out.u16(unsigned(2 + (5 + 2 * std::size_t(width)) * changes.size()));
    for (const ProgressionChange& p : changes) {
        out.u8(unsigned(p.resolutionBegin));
        out.number(unsigned(p.componentBegin), width);
        out.u16(unsigned(p.layerEnd));
        out.u8(unsigned(p.resolutionEnd));
        out.number(unsigned(p.componentEnd), width);
        out.u8(unsigned(p.order));
    }
}

} // namespace codecs::jpeg2000
