// dds.h - DDS texture files: the header, and where each picture's blocks stand.
//
// Legacy FourCC headers and DX10 ones are read; FourCC ones are written. A file holds one layer, or one for each face
// of a cube map or element of an array; a layer is a chain of levels, each half as wide and high as the one before.
//
// YCoCg pictures are DXT5 files for other programs. What tells them is two of the header's reserved words:
// dwReserved1[0] (byte 32) holds "ZMXT" and dwReserved1[1] (byte 36) holds "YCG2", scaled YCoCg.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <string>

namespace codecs::texture {

enum class Format : std::uint8_t { dxt1, dxt3, dxt5, ycocgDxt5, bc7 };

const char* nameOf(Format format); // as the command line spells it
Format formatNamed(const std::string& name);
int blockBytes(Format format);

constexpr int kMaxSide = 1 << 15; // of a picture, in pixels

// One picture of a file.
struct Level {
    int width, height;
    std::uint64_t offset, size; // of its blocks behind the header
};

struct Texture {
    Format format = Format::dxt1;
    int width = 0, height = 0;
    int levels = 1, layers = 1;
    bool cube = false;
    unsigned faces = 0;            // of a legacy cube map: bit 0 is +x, then -x, +y, -y, +z, -z
    std::uint32_t headerBytes = 0; // 128, or 148 with a DX10 header

    Level level(int layer, int index) const;
    std::uint64_t layerBytes() const;
    std::string layerName(int layer) const; // "face +x", "element 2", or empty where there is but one
};

// Reads the header at the front of a file, and checks that the file holds all that it promises.
Texture readHeader(ByteSource& file);

// A line for the file, one for what it holds, and one for each picture.
std::string describe(const Texture& texture);

// The FourCC header of a texture with one layer.
Bytes headerOf(const Texture& texture);

// How many levels a picture has down to 1 by 1.
int fullChain(int width, int height);

} // namespace codecs::texture
