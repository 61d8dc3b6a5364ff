// markers.cpp - the marker segments that say how a codestream is coded. Every field is tested before it is used.
#include "codecs/jpeg2000/markers.h"

#include <algorithm>

namespace jpeg2000 {

namespace {

void need(bool good, const char* what) {
    if (!good) throw Error(what);
}

// Widths of the fields that hold a component's number: two bytes from 257 components on.
int componentBytes(std::size_t components) { return components < 257 ? 1 : 2; }

void readStyle(ByteReader& in, bool ownPrecincts, CodingStyle& style) {
    style.levels = in.u8();
    style.blockWidthLog = in.u8() + 2;
    style.blockHeightLog = in.u8() + 2;
    style.style = unsigned(in.u8());
    const int transform = in.u8();
    need(style.levels <= maxLevels, "more than 32 wavelet levels");
    need(style.blockWidthLog <= 10 && style.blockHeightLog <= 10 && style.blockWidthLog + style.blockHeightLog <= 12,
         "a code-block size that is not allowed");
    need(style.style < 64, "a code-block style that is not of Part 1");
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

Quantization readQuantization(ByteReader& in) {
    Quantization q;
    const int sqcd = in.u8();
    need((sqcd & 31) <= 2, "an unknown kind of quantisation");
    q.kind = Quantization::Kind(sqcd & 31);
    q.guardBits = sqcd >> 5;
    const int width = q.kind == Quantization::none ? 1 : 2;
    while (in.left() >= std::size_t(width) && q.steps.size() < 3 * maxLevels + 1) {
        const int v = int(in.number(width));
        q.steps.push_back(width == 1 ? StepSize{v >> 3, 0} : StepSize{v >> 11, v & 2047});
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

StepSize Quantization::step(int resolution, int band) const {
    if (kind == derived) return {std::max(steps[0].exponent - std::max(resolution - 1, 0), 0), steps[0].mantissa};
    const auto index = std::size_t(resolution == 0 ? 0 : 3 * (resolution - 1) + 1 + band);
    need(index < steps.size(), "a quantisation without a step size for each band");
    return steps[index];
}

ImageSize readSiz(Span content, std::size_t maxPixels) {
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
    need(s.x0 < s.x1 && s.y0 < s.y1 && s.x1 <= 0x7FFFFFFF && s.y1 <= 0x7FFFFFFF,
         "an image area that is empty or too large");
    need(s.tileWidth > 0 && s.tileHeight > 0 && s.tileX <= s.x0 && s.tileY <= s.y0 &&
             std::uint64_t(s.tileX) + s.tileWidth > s.x0 && std::uint64_t(s.tileY) + s.tileHeight > s.y0,
         "a grid of tiles that does not fit the image area");
    need(components >= 1 && components <= maxComponents, "no components, or more than 16384");
    const std::uint64_t across = std::uint64_t(s.tilesAcross()), down = std::uint64_t(s.tilesDown());
    need(across * down <= maxTiles, "more than 65535 tiles");
    need(across * down * std::uint64_t(components) <= 1u << 22, "too many tiles of too many components");
    std::uint64_t samples = 0;
    for (int c = 0; c < components; ++c) {
        SizComponent k;
        const int depth = in.u8();
        k.depth = (depth & 127) + 1;
        k.isSigned = depth >> 7;
        k.dx = in.u8();
        k.dy = in.u8();
        need(k.dx > 0 && k.dy > 0, "a component with a sampling of 0");
        need(k.depth <= 16, "a component of more than 16 bits");
        const auto extent = [](std::uint32_t a, std::uint32_t b, int d) {
            return (std::uint64_t(b) + unsigned(d) - 1) / unsigned(d) -
                   (std::uint64_t(a) + unsigned(d) - 1) / unsigned(d);
        };
        samples += extent(s.x0, s.x1, k.dx) * extent(s.y0, s.y1, k.dy);
        need(samples <= maxPixels, "more samples than allowed (--max-pixels)");
        s.components.push_back(k);
    }
    return s;
}

HeaderReader::HeaderReader(HeaderSet& headers)
    : set(headers), ownCoding(headers.coding.size()), ownQuant(headers.coding.size()) {}

void HeaderReader::take(int marker, Span content) {
    ByteReader in(content, "a marker segment");
    const std::size_t components = set.coding.size();
    const auto component = [&] {
        const std::size_t c = in.number(componentBytes(components));
        need(c < components, "a marker segment for a component that is not there");
        return c;
    };
    switch (marker) {
    case COD: {
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
        for (std::size_t c = 0; c < components; ++c)
            if (!ownCoding[c]) set.coding[c] = style;
        hasCoding = true;
        break;
    }
    case COC: {
        const std::size_t c = component();
        const int scoc = in.u8();
        readStyle(in, scoc & 1, set.coding[c]);
        ownCoding[c] = true;
        break;
    }
    case QCD: {
        const Quantization q = readQuantization(in);
        for (std::size_t c = 0; c < components; ++c)
            if (!ownQuant[c]) set.quant[c] = q;
        hasQuant = true;
        break;
    }
    case QCC: {
        const std::size_t c = component();
        set.quant[c] = readQuantization(in);
        ownQuant[c] = true;
        break;
    }
    case RGN: {
        const std::size_t c = component();
        need(in.u8() == 0, "a region of interest that is not of Part 1");
        set.roiShift[c] = in.u8();
        break;
    }
    case POC: {
        if (!hasChanges) set.changes.clear(); // those of the main header
        hasChanges = true;
        const int width = componentBytes(components);
        while (in.left() >= std::size_t(5 + 2 * width)) {
            ProgressionChange p;
            p.resolutionBegin = in.u8();
            p.componentBegin = int(in.number(width));
            p.layerEnd = in.u16();
            p.resolutionEnd = in.u8();
            p.componentEnd = int(in.number(width));
            if (p.componentEnd == 0) p.componentEnd = width == 1 ? 256 : maxComponents;
            p.order = progressionOf(in.u8());
            set.changes.push_back(p);
        }
        break;
    }
    default:
        break;
    }
}

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

void writeCod(ByteWriter& out, const TileStyle& tile, const CodingStyle& style) {
    const bool own = std::any_of(style.precincts.begin(), style.precincts.end(), [](int v) { return v != 0xFF; });
    out.u16(COD);
    out.u16(unsigned(12 + (own ? style.levels + 1 : 0)));
    out.u8(unsigned(own) | unsigned(tile.sop) << 1 | unsigned(tile.eph) << 2);
    out.u8(unsigned(tile.progression));
    out.u16(unsigned(tile.layers));
    out.u8(tile.colourTransform);
    out.u8(unsigned(style.levels));
    out.u8(unsigned(style.blockWidthLog - 2));
    out.u8(unsigned(style.blockHeightLog - 2));
    out.u8(style.style);
    out.u8(style.reversible);
    for (int r = 0; own && r <= style.levels; ++r) out.u8(style.precincts[std::size_t(r)]);
}

namespace {

int stepBytes(const Quantization& q) { return q.kind == Quantization::none ? 1 : 2; }

void writeSteps(ByteWriter& out, const Quantization& q) {
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

} // namespace jpeg2000
