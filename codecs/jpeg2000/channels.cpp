// channels.cpp - what the boxes say of the components: palette, order and meaning of channels, colour space.
#include "codecs/jpeg2000/boxes.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

void applyPalette(const Boxes& boxes, PlanarPicture& picture) {
    const auto& p = boxes.palette;
    const std::size_t columns = p.depths.size();
    std::vector<Component> out;
    for (const Boxes::Mapping& m : boxes.mappings) {
        if (std::size_t(m.component) >= picture.components.size() ||
            (m.type == 1 && std::size_t(m.column) >= columns) || out.size() >= columns + 4)
            throw Error("a component mapping that does not fit");
        Component c = picture.components[std::size_t(m.component)];
        if (m.type == 1) {
            const std::int32_t last = std::int32_t(p.entries.size() / columns) - 1;
            for (std::int32_t& v : c.samples)
                v = p.entries[std::size_t(std::clamp(v, 0, last)) * columns + std::size_t(m.column)];
            c.depth = (p.depths[std::size_t(m.column)] & 127) + 1;
            c.isSigned = p.depths[std::size_t(m.column)] >> 7;
        }
        out.push_back(std::move(c));
    }
    picture.components = std::move(out);
}

// Colour channels in the order of their associations, then opacity; what is neither stays behind.
void applyChannels(const Boxes& boxes, PlanarPicture& picture) {
    const std::size_t n = picture.components.size();
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
    std::vector<Component> out;
    for (const std::size_t i : place) {
        if (int(i) == alpha) picture.alpha = int(out.size());
        out.push_back(std::move(picture.components[i]));
    }
    picture.components = std::move(out);
}

} // namespace

void applyBoxes(const Boxes& boxes, PlanarPicture& picture) {
    picture.warnings.insert(picture.warnings.end(), boxes.warnings.begin(), boxes.warnings.end());
    try {
        if (!boxes.palette.entries.empty() && !boxes.mappings.empty()) applyPalette(boxes, picture);
        if (!boxes.channels.empty()) applyChannels(boxes, picture);
    } catch (const Error& e) {
        picture.warnings.push_back(e.what());
    }
    const std::uint32_t colour = boxes.enumeratedColour;
    picture.colour = colour == kEnumGrey   ? ColourSpace::grey
                     : colour == kEnumSYcc ? ColourSpace::sYcc
                     : colour == kEnumSRgb ? ColourSpace::sRgb
                                           : ColourSpace::unknown;
}

} // namespace codecs::jpeg2000
