// settings.cpp - options tested and turned into parameters; step sizes chosen.
#include "codecs/jpeg2000/settings.h"

#include "codecs/jpeg2000/markers.h"
#include "codecs/jpeg2000/norms.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace codecs::jpeg2000 {

namespace {

int logOf(int v, int least, int most, const char* what) {
    need(v >= 1 << least && v <= 1 << most && std::has_single_bit(unsigned(v)), what);
    return std::bit_width(unsigned(v)) - 1;
}

bool canTransform(const ImageSize& s) {
    const auto same = [](const SizComponent& a, const SizComponent& b) {
        return a.dx == b.dx && a.dy == b.dy && a.depth == b.depth && a.isSigned == b.isSigned;
    };
    return s.components.size() >= 3 && same(s.components[0], s.components[1]) && same(s.components[0], s.components[2]);
}

CodingStyle styleOf(const EncodeOptions& o) {
    CodingStyle s;
    need(o.levels >= 0 && o.levels <= kMaxLevels, "wavelet levels are 0 to 32");
    need(o.style < 64, "an unknown code-block style");
    s.levels = o.levels;
    s.blockWidthLog = logOf(o.blockWidth, 2, 10, "the sides of a code block are powers of 2 from 4 to 1024");
    s.blockHeightLog = logOf(o.blockHeight, 2, 10, "the sides of a code block are powers of 2 from 4 to 1024");
    need(s.blockWidthLog + s.blockHeightLog <= 12, "a code block has at most 4096 samples");
    s.style = o.style;
    s.reversible = o.reversible;
    for (std::size_t i = 0; !o.precincts.empty() && i <= std::size_t(o.levels); ++i) {
        const auto [w, h] = o.precincts[std::min(i, o.precincts.size() - 1)];
        constexpr const char* what = "the sides of a precinct are powers of 2 from 2 to 32768";
        s.precincts[std::size_t(o.levels) - i] = std::uint8_t(logOf(w, 1, 15, what) | logOf(h, 1, 15, what) << 4);
    }
    return s;
}

// The step for what is asked: 1 serves up to 46 dB, and each further 6 dB want half of it.
double baseStepOf(const EncodeOptions& o) {
    if (o.baseStep > 0) return o.baseStep;
    const double most = o.psnrs.empty() ? 0 : *std::max_element(o.psnrs.begin(), o.psnrs.end());
    return std::clamp(std::exp2((46 - most) / 6), 1.0 / 64, 1.0);
}

// Step sizes that give each band's errors the same weight in the picture.
Quantization quantizationOf(const EncodeOptions& o, int depth) {
    Quantization q;
    q.kind = o.reversible ? Quantization::none : Quantization::expounded;
    for (int r = 0; r <= o.levels; ++r)
        for (const Orientation band : r == 0 ? std::vector{LL} : std::vector{HL, LH, HH}) {
            const int range = depth + (band == LL ? 0 : band == HH ? 2 : 1); // R of E-4
            if (o.reversible) {
                q.steps.push_back({range, 0});
                continue;
            }
            const double step = std::ldexp(baseStepOf(o), depth - 8) / bandNorm(false, o.levels, r, band);
            const int power = int(std::floor(std::log2(step)));
            const int mantissa = std::min(int((std::ldexp(step, -power) - 1) * 2048 + 0.5), 2047);
            q.steps.push_back({std::clamp(range - power, 0, 31), mantissa});
        }
    return q;
}

} // namespace

ImageSize sizeOf(const Rect& area, const std::vector<SizComponent>& components, const EncodeOptions& o) {
    constexpr std::int64_t most = 0x7FFFFFFF;
    need(!area.empty() && area.x0 >= 0 && area.y0 >= 0 && area.x1 <= most && area.y1 <= most,
         "an image area that is empty or too large");
    ImageSize s;
    s.x0 = std::uint32_t(area.x0);
    s.y0 = std::uint32_t(area.y0);
    s.x1 = std::uint32_t(area.x1);
    s.y1 = std::uint32_t(area.y1);
    s.tileX = o.tileX;
    s.tileY = o.tileY;
    s.tileWidth = o.tileWidth > 0 ? o.tileWidth : s.x1 - o.tileX;
    s.tileHeight = o.tileHeight > 0 ? o.tileHeight : s.y1 - o.tileY;
    s.components = components;
    need(!components.empty() && components.size() <= std::size_t(kMaxComponents), "no components, or more than 16384");
    // What the decoder refuses, the encoder does not write.
    Bytes bytes;
    ByteWriter out(bytes);
    writeSiz(out, s);
    readSiz(ByteView(bytes).subspan(4), ~std::size_t(0));
    return s;
}

HeaderSet headersOf(const ImageSize& size, const EncodeOptions& o) {
    const std::size_t layers = std::max({o.rates.size(), o.psnrs.size(), std::size_t(1)});
    need(layers <= std::size_t(kMaxLayers), "more than 65535 layers");
    need(o.baseStep == 0 || (o.baseStep >= 1.0 / 64 && o.baseStep <= 64), "a step size that is not 1/64 to 64");
    need(o.changes.size() <= 1000, "too many progression changes");
    HeaderSet headers;
    headers.tile = {o.sop, o.eph, o.progression, int(layers), o.colourTransform && canTransform(size)};
    headers.coding.assign(size.components.size(), styleOf(o));
    for (const SizComponent& c : size.components) headers.quant.push_back(quantizationOf(o, c.depth));
    headers.roiShift.resize(size.components.size());
    headers.changes = o.changes;
    return headers;
}

} // namespace codecs::jpeg2000
