// dds.h - DDS texture files: the header, and where each picture's blocks stand.
//
// Legacy FourCC headers and DX10 ones are read; FourCC ones are written. A file holds one layer, or one for each face
// of a cube map or element of an array; a layer is a chain of levels, each half as wide and high as the one before.
//
// YCoCg pictures are DXT5 files for other programs. What tells them is two of the header's reserved words:
// dwReserved1[0] (byte 32) holds "ZMXT" and dwReserved1[1] (byte 36) holds "YCG2", scaled YCoCg.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace dds {

enum class Format { dxt1, dxt3, dxt5, ycocgDxt5, bc7 };

const char* nameOf(Format format); // as the command line spells it
Format formatNamed(const std::string& name);
int blockBytes(Format format);

constexpr int kMaxSide = 1 << 15; // of a picture, in pixels

// One picture of a file.
struct Level {
    int width, height;
    std::size_t offset, size; // of its blocks within Texture::blocks
};

struct Texture {
    Format format = Format::dxt1;
    int width = 0, height = 0;
    int levels = 1, layers = 1;
    bool cube = false;
    unsigned faces = 0;               // of a legacy cube map: bit 0 is +x, then -x, +y, -y, +z, -z
    std::size_t headerBytes = 128;    // 148 with a DX10 header
    std::vector<std::uint8_t> blocks; // layer by layer, in each the largest level first

    Level level(int layer, int index) const;
    std::size_t layerBytes() const;
    std::string layerName(int layer) const; // "face +x", "element 2", or empty where there is but one
};

// A file that cannot be read or written; what() says which one, what and where, in one line.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Takes a file apart, and checks that it holds all that its header promises. `name` is for messages.
Texture parse(std::span<const std::uint8_t> file, const std::string& name);
Texture read(const std::string& path);

// A FourCC file of a texture with one layer.
std::vector<std::uint8_t> serialise(const Texture& texture);
void write(const std::string& path, const Texture& texture);

// How many levels a picture has down to 1 by 1.
int fullChain(int width, int height);

} // namespace dds
