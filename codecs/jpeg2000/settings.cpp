// settings.cpp - options tested and turned into parameters; step sizes chosen.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/settings.h"

#include "codecs/jpeg2000/markers.h"
#include "codecs/jpeg2000/norms.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace codecs::jpeg2000 {

namespace {

// The logarithm of a side that must be a power of two.
int logOf(int v, int least, int most, const char* what) {
    need(v >= 1 << least && v <= 1 << most && std::has_single_bit(unsigned(v)), what);
    return std::bit_width(unsigned(v)) - 1;
}

// How a component is coded, given what it has of its own.
CodingStyle styleOf(const EncodeOptions& o, const ComponentOptions& own) {
    CodingStyle s;
    s.levels = own.levels.value_or(o.levels);
    s.reversible = own.reversible.value_or(o.reversible);
    s.style = o.style;
    need(s.levels >= 0 && s.levels <= kMaxLevels, "wavelet levels are 0 to 32");
    need(o.style < 64, "an unknown code-block style");
    constexpr const char* sides = "the sides of a code block are powers of 2 from 4 to 1024";
    s.blockWidthLog = logOf(own.blockWidth.value_or(o.blockWidth), 2, 10, sides);
    s.blockHeightLog = logOf(own.blockHeight.value_or(o.blockHeight), 2, 10, sides);
    // xcb and ycb are bound together, too (Table A.18).
    need(s.blockWidthLog + s.blockHeightLog <= 12, "a code block has at most 4096 samples");
    for (std::size_t i = 0; !o.precincts.empty() && i <= std::size_t(s.levels); ++i) {
        const auto [w, h] = o.precincts[std::min(i, o.precincts.size() - 1)];
        constexpr const char* what = "the sides of a precinct are powers of 2 from 2 to 32768";
        s.precincts[std::size_t(s.levels) - i] = std::uint8_t(logOf(w, 1, 15, what) | logOf(h, 1, 15, what) << 4);
    }
    return s;
}

CodingStyle styleOf(const EncodeOptions& o, std::size_t component) {
    for (const ComponentOptions& own : o.own)
        if (own.component == int(component)) return styleOf(o, own);
    return styleOf(o, ComponentOptions{});
}

// RCT and ICT want three components of one shape and one wavelet.
bool canTransform(const ImageSize& s, const std::vector<CodingStyle>& coding) {
    if (s.components.size() < 3) return false;
    const auto same = [&](std::size_t c) {
        const SizComponent &a = s.components[c], &b = s.components[0];
        return a.dx == b.dx && a.dy == b.dy && a.depth == b.depth && a.isSigned == b.isSigned &&
               coding[c].reversible == coding[0].reversible;
    };
    return same(1) && same(2);
}

// The step for what is asked: 1 serves up to 46 dB, and each further 6 dB want half of it.
double baseStepOf(const EncodeOptions& o) {
    if (o.baseStep > 0) return o.baseStep;
    const double most = o.psnrs.empty() ? 0 : *std::max_element(o.psnrs.begin(), o.psnrs.end());
    return std::clamp(std::exp2((46 - most) / 6), 1.0 / 64, 1.0);
}

// Step sizes that give each band's errors the same weight in the picture.
Quantization quantizationOf(const EncodeOptions& o, const CodingStyle& style, int depth) {
    Quantization q;
    q.kind = style.reversible ? Quantization::none : Quantization::expounded;
    for (int r = 0; r <= style.levels; ++r)
        for (const Orientation band : r == 0 ? std::vector{LL} : std::vector{HL, LH, HH}) {
            const int range = depth + (band == LL ? 0 : band == HH ? 2 : 1); // R of E-4
            if (style.reversible) {
                q.steps.push_back({range, 0});
                continue;
            }
            // A mantissa of 2048 would be the next power of two; the one before is close enough.
            const double step = std::ldexp(baseStepOf(o), depth - 8) / bandNorm(false, style.levels, r, band);
            const int power = int(std::floor(std::log2(step)));
            const int mantissa = std::min(int((std::ldexp(step, -power) - 1) * 2048 + 0.5), 2047);
            q.steps.push_back({std::clamp(range - power, 0, 31), mantissa});
        }
    return q;
}

// A shift that lifts a region of interest above all else (H.2): by the bit planes of the largest band, and one more
// for a third guard bit where there is room.
int shiftFor(const Quantization& quant) {
    int most = 0;
    for (const StepSize& s : quant.steps) most = std::max(most, s.exponent);
    const int planes = most + 1, shift = std::min(planes + 1, kMaxBitPlanes - planes);
    need(shift >= planes, "a region of interest in samples of so many bits; a larger step may help");
    return shift;
}

// What layers are to hold: above 0, and not less than the layer before. Not a number is neither.
void checkRising(const std::vector<double>& values, const char* what) {
    double last = 0;
    for (const double v : values) {
        need(v > 0, (std::string("a ") + what + " that is not above 0").c_str());
        need(v >= last, (std::string(what) + "s of layers that fall").c_str());
        last = v;
    }
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
    // Without tiles one of them reaches from its origin to the end of the area.
    s.tileWidth = o.tileWidth > 0 ? o.tileWidth : s.x1 - o.tileX;
    s.tileHeight = o.tileHeight > 0 ? o.tileHeight : s.y1 - o.tileY;
    s.components = components;
    need(!components.empty() && components.size() <= std::size_t(kMaxComponents), "no components, or more than 16384");
    // What the decoder refuses, the encoder does not write.
    Bytes bytes;
    ByteWriter out(bytes);
    writeSiz(out, s);
    readSiz(ByteView(bytes).subspan(4));
    return s;
}

HeaderSet headersOf(const ImageSize& size, const EncodeOptions& o) {
    check(o);
    HeaderSet headers;
    for (const ComponentOptions& own : o.own)
        need(own.component < int(size.components.size()), "options for a component that is not there");
    for (std::size_t c = 0; c < size.components.size(); ++c) {
        headers.coding.push_back(styleOf(o, c));
        headers.quant.push_back(quantizationOf(o, headers.coding[c], size.components[c].depth));
        headers.roiShift.push_back(o.region ? shiftFor(headers.quant[c]) : 0);
    }
    // At most one of them is given.
    const std::size_t layers = std::max({o.rates.size(), o.psnrs.size(), o.ratios.size(), std::size_t(1)});
    headers.tile = {o.sop, o.eph, o.progression, int(layers), o.colourTransform && canTransform(size, headers.coding)};
    headers.changes = o.changes;
    return headers;
}

void check(const EncodeOptions& o) {
    styleOf(o, ComponentOptions{});
    for (const ComponentOptions& own : o.own) {
        styleOf(o, own);
        need(own.component >= 0, "options for a component below 0");
    }
    checkRising(o.rates, "rate");
    checkRising(o.psnrs, "PSNR");
    for (std::size_t i = 0; i < o.ratios.size(); ++i) {
        need(o.ratios[i] >= 1, "a ratio that is not 1 or more");
        need(i == 0 || o.ratios[i] <= o.ratios[i - 1], "ratios of layers that rise");
    }
    need(int(!o.rates.empty()) + int(!o.psnrs.empty()) + int(!o.ratios.empty()) <= 1,
         "layers by more than one of rate, PSNR and ratio");
    // Errors of coefficients outside the region say little of samples while it comes first.
    need(!o.region || o.psnrs.empty(), "layers by PSNR with a region of interest");
    need(std::max({o.rates.size(), o.psnrs.size(), o.ratios.size()}) <= std::size_t(kMaxLayers),
         "more than 65535 layers");
    need(o.baseStep == 0 || (o.baseStep >= 1.0 / 64 && o.baseStep <= 64), "a step size that is not 1/64 to 64");
    need(o.changes.size() <= 1000, "too many progression changes");
    need(o.samplingX >= 1 && o.samplingX <= 255 && o.samplingY >= 1 && o.samplingY <= 255,
         "a sampling that is not 1 to 255");
}

} // namespace codecs::jpeg2000
