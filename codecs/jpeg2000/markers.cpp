// markers.cpp - the marker segments that say how a codestream is coded. Every field is tested before it is used.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/markers.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

// SPcod and SPcoc (Table A.20): what a component may have of its own.
void readStyle(ByteReader& in, bool ownPrecincts, CodingStyle& style) {
    style.levels = in.u8();
    style.blockWidthLog = in.u8() + 2;
    style.blockHeightLog = in.u8() + 2;
    style.style = unsigned(in.u8());
    const int transform = in.u8();
    need(style.levels <= kMaxLevels, "more than 32 wavelet levels");
    need(style.blockWidthLog <= 10 && style.blockHeightLog <= 10 && style.blockWidthLog + style.blockHeightLog <= 12,
         "a code-block size that is not allowed");
    need(style.style < 64, "a code-block style that is not of Part 1");
    // Part 2 has transforms of its own; without them the colours would be wrong.
    need(transform <= 1, "a wavelet that is not of Part 1");
    style.reversible = transform == 1;
    style.precincts.fill(0xFF);
    if (!ownPrecincts) return;
    for (int r = 0; r <= style.levels; ++r) {
        const int v = in.u8();
        need(r == 0 || ((v & 15) != 0 && v >> 4 != 0), "a precinct of one sample above the lowest resolution");
        style.precincts[std::size_t(r)] = std::uint8_t(v);
    }
}

// Sqcd and SPqcd (Tables A.28 to A.30). There may be steps for more levels than there are.
Quantization readQuantization(ByteReader& in) {
    Quantization q;
    const int sqcd = in.u8();
    need((sqcd & 31) <= 2, "an unknown kind of quantisation");
    q.kind = Quantization::Kind(sqcd & 31);
    q.guardBits = sqcd >> 5;
    // Without quantisation a step is an exponent of five bits, else one of five and a mantissa of eleven.
    const int width = q.kind == Quantization::none ? 1 : 2;
    while (in.left() >= std::size_t(width) && q.steps.size() < 3 * kMaxLevels + 1) {
        const int v = int(in.number(width));
        // Without quantisation an exponent alone, in the upper five bits (Table A.29); else 11 bits of mantissa.
        q.steps.push_back(width == 1 ? StepSize{v >> 3, 0} : StepSize{v >> 11, v & 2047});
        // Steps of other bands follow from that of LL.
        if (q.kind == Quantization::derived) break;
    }
    need(!q.steps.empty(), "a quantisation without step sizes");
    return q;
}

Progression progressionOf(int v) {
    need(v <= 4, "an unknown progression order");
    return Progression(v);
}

} // namespace

// Derived steps have the exponent of LL less one for each level up (E-5).
StepSize Quantization::step(int resolution, int band) const {
    if (kind == derived) return {std::max(steps[0].exponent - std::max(resolution - 1, 0), 0), steps[0].mantissa};
    const auto index = std::size_t(resolution == 0 ? 0 : 3 * (resolution - 1) + 1 + band);
    need(index < steps.size(), "a quantisation without a step size for each band");
    return steps[index];
}

namespace {

// Ssiz, XRsiz and YRsiz (Table A.11).
SizComponent readSizComponent(ByteReader& in) {
    SizComponent k;
    const int depth = in.u8();
    k.depth = (depth & 127) + 1;
    k.isSigned = depth >> 7;
    k.dx = in.u8();
    k.dy = in.u8();
    need(k.dx > 0 && k.dy > 0, "a component with a sampling of 0");
    need(k.depth <= 16, "a component of more than 16 bits");
    return k;
}

} // namespace

ImageSize readSiz(ByteView content) {
    ByteReader in(content, "SIZ");
    ImageSize s;
    in.u16(); // capabilities
    s.x1 = in.u32();
    s.y1 = in.u32();
    s.x0 = in.u32();
    s.y0 = in.u32();
    s.tileWidth = in.u32();
    s.tileHeight = in.u32();
    s.tileX = in.u32();
    s.tileY = in.u32();
    const int components = in.u16();
    // Coordinates are computed in 64 bits, but shown in signed ones of 32.
    need(s.x0 < s.x1 && s.y0 < s.y1 && s.x1 <= 0x7FFFFFFF && s.y1 <= 0x7FFFFFFF,
         "an image area that is empty or too large");
    need(s.tileWidth > 0 && s.tileHeight > 0 && s.tileX <= s.x0 && s.tileY <= s.y0 &&
             std::uint64_t(s.tileX) + s.tileWidth > s.x0 && std::uint64_t(s.tileY) + s.tileHeight > s.y0,
         "a grid of tiles that does not fit the image area");
    need(components >= 1 && components <= kMaxComponents, "no components, or more than 16384");
    const std::uint64_t across = std::uint64_t(s.tilesAcross()), down = std::uint64_t(s.tilesDown());
    // Isot has 16 bits, of which 65535 is not used (Table A.5).
    need(across * down <= kMaxTiles, "more than 65535 tiles");
    // Each tile keeps account of each component, even of one without samples.
    need(across * down * std::uint64_t(components) <= 1u << 22, "too many tiles of too many components");
    for (int c = 0; c < components; ++c) s.components.push_back(readSizComponent(in));
    return s;
}

HeaderReader::HeaderReader(HeaderSet& headers)
    : set(headers), ownCoding(headers.coding.size()), ownQuant(headers.coding.size()) {}

std::size_t HeaderReader::component(ByteReader& in) const {
    // A byte for up to 256 components, else two (Table A.22).
    const std::size_t c = in.number(componentBytes(set.coding.size()));
    need(c < set.coding.size(), "a marker segment for a component that is not there");
    return c;
}

// The style of all components, and what is common to a tile (A.6.1).
void HeaderReader::takeCod(ByteReader& in) {
    const int scod = in.u8();
    set.tile.sop = scod & 2;
    set.tile.eph = scod & 4;
    set.tile.progression = progressionOf(in.u8());
    set.tile.layers = in.u16();
    const int transform = in.u8();
    need(set.tile.layers >= 1, "a COD segment without layers");
    need(transform <= 1, "a component transform that is not of Part 1");
    set.tile.colourTransform = transform == 1;
    CodingStyle style;
    readStyle(in, scod & 1, style);
    for (std::size_t c = 0; c < set.coding.size(); ++c)
        if (!ownCoding[c]) set.coding[c] = style;
    hasCoding = true;
}

// The quantisation of all components that have none of their own (A.6.4).
void HeaderReader::takeQcd(ByteReader& in) {
    const Quantization q = readQuantization(in);
    for (std::size_t c = 0; c < set.quant.size(); ++c)
        if (!ownQuant[c]) set.quant[c] = q;
    hasQuant = true;
}

// Several segments of one header go on from each other (A.6.6).
void HeaderReader::takePoc(ByteReader& in) {
    if (!hasChanges) set.changes.clear(); // those of the main header
    hasChanges = true;
    const int width = componentBytes(set.coding.size());
    while (in.left() >= std::size_t(5 + 2 * width)) {
        ProgressionChange p;
        p.resolutionBegin = in.u8();
        p.componentBegin = int(in.number(width));
        p.layerEnd = in.u16();
        p.resolutionEnd = in.u8();
        p.componentEnd = int(in.number(width));
        // CEpoc of one byte cannot say 256, and of two bytes 16384 is 0 too (Table A.32).
        if (p.componentEnd == 0) p.componentEnd = width == 1 ? 256 : kMaxComponents;
        p.order = progressionOf(in.u8());
        set.changes.push_back(p);
    }
}

void HeaderReader::take(int marker, ByteView content) {
    ByteReader in(content, "a marker segment");
    if (marker == COD) takeCod(in);
    if (marker == QCD) takeQcd(in);
    if (marker == POC) takePoc(in);
    // The others begin with the number of the component that they are about (A.6.2, A.6.3, A.6.5).
    if (marker != COC && marker != QCC && marker != RGN) return;
    const std::size_t c = component(in);
    if (marker == COC) {
        const int scoc = in.u8();
        readStyle(in, scoc & 1, set.coding[c]);
        ownCoding[c] = true;
    } else if (marker == QCC) {
        set.quant[c] = readQuantization(in);
        ownQuant[c] = true;
    } else {
        need(in.u8() == 0, "a region of interest that is not of Part 1");
        set.roiShift[c] = in.u8();
    }
}

} // namespace codecs::jpeg2000
