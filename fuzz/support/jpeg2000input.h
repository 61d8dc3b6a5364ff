// jpeg2000input.h - a picture and the options of an encoder out of the bytes of an input.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"
#include "fuzz/support/input.h"

namespace fuzz {

namespace jpeg2000 = codecs::jpeg2000;

inline jpeg2000::EncodeOptions jpeg2000Options(Input& in) {
    jpeg2000::EncodeOptions o;
    o.threads = 1;
    const unsigned flags = in.byte();
    o.reversible = flags & 3;
    o.colourTransform = flags & 4;
    o.sop = flags & 8;
    o.eph = flags & 16;
    o.tilePartsByResolution = flags & 32;
    o.jp2 = flags & 64;
    o.levels = in.below(8);
    o.blockWidth = 4 << in.below(6);
    o.blockHeight = 4 << in.below(6);
    o.progression = jpeg2000::Progression(in.below(5));
    o.style = in.byte() & 63;
    o.packedHeaders = jpeg2000::PackedHeaders(in.below(3));
    if (flags & 128) o.tileWidth = 1 + unsigned(in.below(70)), o.tileHeight = 1 + unsigned(in.below(70));
    if (const int n = in.below(4); n > 1)
        for (int i = 0; i < n; ++i) {
            const int w = in.below(5), h = in.below(5);
            o.precincts.emplace_back(16 << w, 16 << h);
        }
    switch (in.below(6)) {
    case 0:
        o.rates = {0.5, 2};
        break;
    case 1:
        o.ratios = {20, 1};
        break;
    case 2:
        o.psnrs = {30};
        break;
    default:
        break;
    }
    if (in.below(6) == 0) o.region = jpeg2000::Window{1, 1, 1 + in.below(9), 1 + in.below(9)};
    return o;
}

inline jpeg2000::PlanarPicture planesOf(Input& in) {
    jpeg2000::PlanarPicture p;
    p.x0 = unsigned(in.below(9));
    p.y0 = unsigned(in.below(9));
    p.x1 = p.x0 + 1 + unsigned(in.below(64));
    p.y1 = p.y0 + 1 + unsigned(in.below(64));
    p.components.resize(std::size_t(1 + in.below(4)));
    const unsigned alike = in.byte();
    for (jpeg2000::Component& c : p.components) {
        if (&c != &p.components[0] && alike & 3)
            c = p.components[0];
        else {
            c.dx = 1 + in.below(3);
            c.dy = 1 + in.below(3);
            c.depth = 1 + in.below(16);
            c.isSigned = in.flag();
        }
        const auto side = [](unsigned from, unsigned to, int step) {
            const unsigned d = unsigned(step);
            return int((to + d - 1) / d - (from + d - 1) / d);
        };
        c.width = side(p.x0, p.x1, c.dx);
        c.height = side(p.y0, p.y1, c.dy);
    }
    const codecs::ByteView bytes = in.rest();
    std::size_t at = 0;
    for (jpeg2000::Component& c : p.components) {
        c.samples.resize(std::size_t(c.width) * std::size_t(c.height));
        for (std::int32_t& v : c.samples) {
            const int sample = bytes.empty() ? 0 : bytes[at % bytes.size()] * 257;
            v = (sample & ((1 << c.depth) - 1)) + c.smallest();
            ++at;
        }
    }
    return p;
}

// Whether a file made so holds every sample.
inline bool isLossless(const jpeg2000::EncodeOptions& o) {
    return o.reversible && o.rates.empty() && o.ratios.empty() && o.psnrs.empty();
}

// A picture, the options, which a target may narrow down, and the file that the encoder makes of them; none where the options
// do not go together.
struct Jpeg2000Input {
    jpeg2000::EncodeOptions options;
    jpeg2000::PlanarPicture picture;
    codecs::Bytes file;
};
inline std::optional<Jpeg2000Input> jpeg2000Input(const std::uint8_t* data, std::size_t size,
                                                  void (*narrow)(jpeg2000::EncodeOptions&) = nullptr) {
    Input in(data, size);
    Jpeg2000Input made{jpeg2000Options(in), {}, {}};
    if (narrow) narrow(made.options);
    made.picture = planesOf(in);
    try {
        made.file = jpeg2000::encode(made.picture, made.options);
    } catch (const codecs::Error&) {
        return {};
    }
    return made;
}

} // namespace fuzz
