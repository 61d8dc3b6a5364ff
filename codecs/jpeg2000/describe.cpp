// describe.cpp - the boxes and headers of a file in words.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/codestream.h"

#include <cstdarg>
#include <cstdio>

namespace codecs::jpeg2000 {

namespace {

// Formatted text behind what is there; a line is never longer than this.
__attribute__((format(printf, 2, 3))) void print(std::string& text, const char* format, ...) {
    char line[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    text += line;
}

// Words for the codes of marker segments.
const char* nameOf(Progression p) {
    static const char* const names[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
    return names[int(p)];
}

const char* nameOf(int marker) {
    switch (marker) {
    case COD:
        return "COD";
    case COC:
        return "COC";
    case QCD:
        return "QCD";
    case QCC:
        return "QCC";
    case RGN:
        return "RGN";
    case POC:
        return "POC";
    case TLM:
        return "TLM";
    case PLM:
        return "PLM";
    case PPM:
        return "PPM";
    case CRG:
        return "CRG";
    case COM:
        return "COM";
    default:
        return "other";
    }
}

// One line on how a component is coded.
void describeComponent(std::string& text, const Codestream& s, std::size_t c) {
    const SizComponent& k = s.size.components[c];
    const CodingStyle& style = s.main.coding[c];
    const Quantization& q = s.main.quant[c];
    print(text, "component %zu: %d bits %s, sampling %d,%d, %s wavelet of %d levels, blocks %d x %d, style 0x%02x, ", c,
          k.depth, k.isSigned ? "signed" : "unsigned", k.dx, k.dy, style.reversible ? "5/3" : "9/7", style.levels,
          1 << style.blockWidthLog, 1 << style.blockHeightLog, style.style);
    static const char* const kinds[] = {"no quantisation", "derived steps", "expounded steps"};
    print(text, "%s, %d guard bits", kinds[q.kind], q.guardBits);
    if (s.main.roiShift[c] != 0) print(text, ", region of interest shifted by %d", s.main.roiShift[c]);
    text += '\n';
}

} // namespace

std::string describe(ByteView file) {
    std::string text;
    const Boxes boxes = readBoxes(file);
    if (boxes.jp2)
        print(text, "JP2 file: enumerated colour space %u, %zu palette entries, %zu channel definitions\n",
              boxes.enumeratedColour,
              boxes.palette.depths.empty() ? 0 : boxes.palette.entries.size() / boxes.palette.depths.size(),
              boxes.channels.size());
    Codestream s = readMainHeader(boxes.codestream);
    // All tile-parts one by one, whatever TLM segments say.
    findTileParts(s, {s.size.x0, s.size.y0, s.size.x1, s.size.y1});
    const ImageSize& z = s.size;
    print(text, "image area %u,%u to %u,%u; %d x %d tiles of %u x %u from %u,%u; %zu components\n", z.x0, z.y0, z.x1,
          z.y1, z.tilesAcross(), z.tilesDown(), z.tileWidth, z.tileHeight, z.tileX, z.tileY, z.components.size());
    print(text, "%s, %d layers, %s component transform%s%s\n", nameOf(s.main.tile.progression), s.main.tile.layers,
          s.main.tile.colourTransform ? "with" : "no", s.main.tile.sop ? ", SOP" : "", s.main.tile.eph ? ", EPH" : "");
    // A file may have thousands of components that are all alike.
    for (std::size_t c = 0; c < z.components.size() && c < 32; ++c) describeComponent(text, s, c);
    for (const Segment& m : s.mainSegments) print(text, "%s: %zu bytes\n", nameOf(m.marker), m.content.size());
    for (const auto& [index, tile] : s.tiles) {
        std::size_t bytes = 0;
        for (const ByteView& b : tile.bodies) bytes += b.size();
        print(text, "tile %d: %zu tile-parts, %zu bytes of packets\n", index, tile.bodies.size(), bytes);
    }
    for (const std::string& w : s.warnings) text += "warning: " + w + '\n';
    return text;
}

} // namespace codecs::jpeg2000
