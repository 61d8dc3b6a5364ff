// channels.cpp - palette, order and meaning of channels, colour space, from the boxes of a file.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/channels.h"

#include <algorithm>
#include <string_view>

namespace codecs::jpeg2000 {

namespace {

// A column of the palette for all samples of a component; those behind the last entry count as it.
Channel lookedUp(const Boxes::Palette& palette, std::size_t column, const SizComponent& k, std::size_t component) {
    const std::size_t columns = palette.depths.size(), entries = palette.entries.size() / columns;
    Channel c{component, (palette.depths[column] & 127) + 1, bool(palette.depths[column] >> 7), {}};
    const std::int32_t smallest = c.isSigned ? -(1 << (c.depth - 1)) : 0;
    const std::int32_t first = k.isSigned ? 1 << (k.depth - 1) : 0; // the sample that stands for index 0
    for (std::int32_t v = 0; v < 1 << k.depth; ++v) {
        const auto entry = std::size_t(std::clamp(v - first, 0, std::int32_t(entries) - 1));
        c.palette.push_back(Sample(palette.entries[entry * columns + column] - smallest));
    }
    return c;
}

// Channels as the component mapping makes them of components (I.5.3.5).
void applyPalette(const Boxes& boxes, const ImageSize& size, ChannelMap& map) {
    const std::size_t columns = boxes.palette.depths.size();
    std::vector<Channel> out;
    for (const Boxes::Mapping& m : boxes.mappings) {
        const auto component = std::size_t(m.component);
        if (component >= map.channels.size() || (m.type == 1 && std::size_t(m.column) >= columns) ||
            out.size() >= columns + 4)
            throw Error("a component mapping that does not fit");
        out.push_back(m.type == 1
                          ? lookedUp(boxes.palette, std::size_t(m.column), size.components[component], component)
                          : map.channels[component]);
    }
    map.channels = std::move(out);
}

// Colour channels in the order of their associations, then opacity; what is neither stays behind.
void applyDefinitions(const Boxes& boxes, ChannelMap& map) {
    const std::size_t n = map.channels.size();
    constexpr std::size_t nobody = ~std::size_t(0);
    std::vector<std::size_t> place(n, nobody); // which channel comes here
    std::vector<bool> used(n);
    int alpha = -1;
    for (const Boxes::Channel& c : boxes.channels) {
        const auto channel = std::size_t(c.channel);
        if (channel >= n) throw Error("a channel definition that does not fit");
        if (c.type == 0 && c.association >= 1 && std::size_t(c.association) <= n) {
            std::size_t& at = place[std::size_t(c.association) - 1];
            if (used[channel] || at != nobody) throw Error("two channel definitions for one channel");
            at = channel;
            used[channel] = true;
        }
        if (c.type == 1 && c.association == 0) alpha = c.channel;
    }
    std::size_t next = 0;
    for (std::size_t& at : place)
        if (at == nobody) {
            while (used[next]) ++next;
            at = next++;
        }
    std::vector<Channel> out;
    for (const std::size_t i : place) {
        if (int(i) == alpha) map.alpha = int(out.size());
        out.push_back(std::move(map.channels[i]));
    }
    map.channels = std::move(out);
}

// Whether a colour profile is about these colours (ISO 15076-1, 7.2.8).
bool isProfileOf(const Bytes& icc, std::string_view colours) {
    return icc.size() >= 20 && std::equal(colours.begin(), colours.end(), icc.begin() + 16);
}

} // namespace

ChannelMap channelsOf(const Boxes& boxes, const ImageSize& size, int component) {
    if (component >= int(size.components.size()))
        throw Error("no component " + std::to_string(component) + " among " + std::to_string(size.components.size()));
    ChannelMap map;
    map.warnings = boxes.warnings;
    map.metadata = boxes.metadata;
    for (std::size_t c = 0; c < size.components.size(); ++c)
        if (component < 0 || std::size_t(component) == c)
            map.channels.push_back({c, size.components[c].depth, size.components[c].isSigned, {}});
    if (component >= 0) {
        map.metadata.icc.clear(); // which is of all of them
        return map;
    }
    try {
        if (!boxes.palette.entries.empty() && !boxes.mappings.empty()) applyPalette(boxes, size, map);
        if (!boxes.channels.empty()) applyDefinitions(boxes, map);
    } catch (const Error& e) {
        map.warnings.push_back(e.what());
    }
    const std::uint32_t colour = boxes.enumeratedColour;
    map.colour = colour == kEnumGrey                                            ? ColourSpace::grey
                 : colour == kEnumSYcc                                          ? ColourSpace::sYcc
                 : colour == kEnumSRgb                                          ? ColourSpace::sRgb
                 : colour == kEnumCmyk || isProfileOf(map.metadata.icc, "CMYK") ? ColourSpace::cmyk
                                                                                : ColourSpace::unknown;
    return map;
}

} // namespace codecs::jpeg2000
