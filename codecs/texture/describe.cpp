// describe.cpp - what a DDS file holds, for people.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/dds.h"

namespace codecs::texture {
namespace {

std::string counted(int n, const std::string& what) { return std::to_string(n) + " " + what + (n > 1 ? "s" : ""); }

} // namespace

std::string describe(const Texture& t) {
    const auto side = [](int w, int h) { return std::to_string(w) + " x " + std::to_string(h); };
    std::string text = std::string(nameOf(t.format)) + ", " + side(t.width, t.height) +
                       (t.headerBytes > 128 ? ", DX10 header\n" : ", FourCC header\n");
    text += counted(t.layers, "layer") + (t.cube ? " of a cube map" : "") + ", " + counted(t.levels, "level") + "\n";
    // In the order in which they stand in the file: all levels of a layer, then the next layer.
    for (int layer = 0; layer < t.layers; ++layer)
        for (int i = 0; i < t.levels; ++i) {
            const Level l = t.level(layer, i);
            const std::string name = t.layerName(layer);
            text += "  layer " + std::to_string(layer) + (name.empty() ? "" : " (" + name + ")") + " level " +
                    std::to_string(i) + ": " + side(l.width, l.height) + ", " + std::to_string(l.size) + " bytes at " +
                    std::to_string(t.headerBytes + l.offset) + "\n";
        }
    return text;
}

} // namespace codecs::texture
