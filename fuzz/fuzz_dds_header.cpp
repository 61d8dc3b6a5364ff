// The headers of DDS files, without decoding: what is accepted says no more than the file holds, every level lies within
// it, and a header that is written says the same.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/dds.h"
#include "fuzz/support/input.h"

#include <algorithm>
#include <cstring>

namespace {

namespace texture = codecs::texture;
using fuzz::require;

// A header of our own for the first layer, with room for its blocks.
void writeAndRead(texture::Texture t) {
    if (t.format == texture::Format::bc7) return; // is read, not written
    t.cube = false;
    t.layers = 1;
    codecs::Bytes file = texture::headerOf(t);
    const std::size_t head = file.size();
    if (t.layerBytes() > 1 << 16) return;
    file.resize(head + std::size_t(t.layerBytes()));
    codecs::MemorySource source(file);
    const texture::Texture again = texture::readHeader(source);
    require(again.format == t.format && again.width == t.width && again.height == t.height);
    require(again.levels == t.levels && again.layers == 1 && again.headerBytes == head);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    codecs::MemorySource file({data, size});
    try {
        const texture::Texture t = texture::readHeader(file);
        require(t.width >= 1 && t.width <= texture::kMaxSide && t.height >= 1 && t.height <= texture::kMaxSide);
        require(t.layers >= 1 && t.levels >= 1 && t.levels <= texture::fullChain(t.width, t.height));
        for (int layer : {0, t.layers - 1})
            for (int i = 0; i < t.levels; ++i) {
                const texture::Level place = t.level(layer, i);
                require(place.width == std::max(1, t.width >> i) && place.height == std::max(1, t.height >> i));
                require(t.headerBytes + place.offset + place.size <= size);
            }
        require(t.layerName(0).find('\n') == std::string::npos);
        writeAndRead(t);
    } catch (const codecs::Error& e) {
        require(std::strchr(e.what(), '\n') == nullptr);
    }
    return 0;
}
