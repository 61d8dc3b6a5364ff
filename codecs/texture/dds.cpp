// dds.cpp - DDS headers, taken apart and put together.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/dds.h"

#include <algorithm>
#include <bit>
#include <cctype>

namespace codecs::texture {
namespace {

using std::uint32_t;
using std::uint8_t;

constexpr uint32_t fourCC(const char (&s)[5]) {
    uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = v << 8 | uint8_t(s[i]);
    return v;
}

// Where the 32-bit fields stand in a file, all little-endian.
enum Field : std::size_t {
    atMagic = 0,
    atSize = 4, // of the header itself: 124
    atFlags = 8,
    atHeight = 12,
    atWidth = 16,
    atLinearSize = 20,
    atDepth = 24,
    atLevels = 28,
    atMark = 32, // dwReserved1[0] and [1]
    atMarkKind = 36,
    atPixelFormatSize = 76, // 32
    atPixelFormatFlags = 80,
    atFourCC = 84,
    atCaps = 108,
    atCaps2 = 112,
    legacyBytes = 128,
    atDxgiFormat = 128, // the DX10 header
    atDimension = 132,
    atMiscFlag = 136,
    atArraySize = 140,
    dx10Bytes = 148,
};

constexpr uint32_t kFlagsTexture = 0x1 | 0x2 | 0x4 | 0x1000; // caps, height, width, pixel format
constexpr uint32_t kFlagLevels = 0x20000, kFlagLinearSize = 0x80000;
constexpr uint32_t kPixelFormatFourCC = 0x4;
constexpr uint32_t kCapsTexture = 0x1000, kCapsComplex = 0x8, kCapsLevels = 0x400000;
constexpr uint32_t kCaps2Cube = 0x200, kCaps2FirstFace = 0x400, kCaps2Volume = 0x200000;
constexpr uint32_t kDimension2d = 3; // 1D is 2, 3D is 4
constexpr uint32_t kMiscCube = 0x4;
constexpr uint32_t kMark = fourCC("ZMXT"), kMarkYCoCg = fourCC("YCG2");
constexpr uint32_t kMaxArray = 2048;

struct Known {
    Format format;
    const char* name;
    int blockBytes;
    uint32_t fourCC;    // 0: DX10 headers only
    uint32_t firstDxgi; // typeless, then UNORM, then UNORM_SRGB; 0: none
};
// The FourCC is what legacy headers say, the DXGI number what DX10 ones do.
constexpr Known kKnown[] = {
    {Format::dxt1, "dxt1", 8, fourCC("DXT1"), 70},
    {Format::dxt3, "dxt3", 16, fourCC("DXT3"), 73},
    {Format::dxt5, "dxt5", 16, fourCC("DXT5"), 76},
    {Format::ycocgDxt5, "ycocg-dxt5", 16, fourCC("DXT5"), 0},
    {Format::bc7, "bc7", 16, 0, 97},
};
template <class Test> const Known& known(Test test) {
    const Known* k = std::find_if(std::begin(kKnown), std::end(kKnown), test);
    if (k == std::end(kKnown)) throw Error("no such texture format");
    return *k;
}
const Known& known(Format format) {
    return known([=](const Known& k) { return k.format == format; });
}

// The fields of one file, and what to say when one of them is wrong.
class Header {
public:
    explicit Header(ByteView bytes) : file(bytes) {}

    [[noreturn]] void fail(const std::string& what) const { throw Error(what); }
    [[noreturn]] void failAt(std::size_t at, const std::string& what) const {
        fail("byte " + std::to_string(at) + ": " + what);
    }
    void holds(std::size_t bytes, const char* what) const {
        if (file.size() < bytes)
            fail("the file ends at byte " + std::to_string(file.size()) + ", in the " + what + " of " +
                 std::to_string(bytes) + " bytes");
    }
    uint32_t at(std::size_t field) const {
        uint32_t v = 0;
        for (std::size_t i = 4; i-- > 0;) v = v << 8 | file[field + i];
        return v;
    }
    int atMost(std::size_t field, uint32_t max, const char* what) const {
        const uint32_t v = at(field);
        if (v < 1 || v > max)
            failAt(field, std::string(what) + " " + std::to_string(v) + ", not 1 to " + std::to_string(max));
        return int(v);
    }
    void mustBe(std::size_t field, uint32_t expected, const char* what) const {
        const uint32_t v = at(field);
        if (v != expected)
            failAt(field, std::string(what) + " " + std::to_string(v) + ", not " + std::to_string(expected));
    }

private:
    ByteView file;
};

// A FourCC as text where it is text.
std::string printable(uint32_t code) {
    std::string text;
    for (int i = 0; i < 4; ++i) text += char(code >> 8 * i & 0xFF);
    const bool isText = std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isprint(c); });
    return isText ? "\"" + text + "\"" : std::to_string(code);
}

Format formatOf(const Header& header, bool dx10) {
    const uint32_t code = header.at(dx10 ? atDxgiFormat : atFourCC);
    for (const Known& k : kKnown) {
        if (dx10 && k.firstDxgi && code >= k.firstDxgi && code < k.firstDxgi + 3) return k.format;
        if (!dx10 && k.fourCC && code == k.fourCC) {
            const bool marked = header.at(atMark) == kMark && header.at(atMarkKind) == kMarkYCoCg;
            return k.format == Format::dxt5 && marked ? Format::ycocgDxt5 : k.format;
        }
    }
    if (dx10) header.failAt(atDxgiFormat, "DXGI format " + std::to_string(code) + " is not BC1, BC2, BC3 or BC7");
    header.failAt(atFourCC, "pixel format " + printable(code) + " is not DXT1, DXT3, DXT5 or DX10");
}

void readLayersDx10(const Header& header, Texture& t) {
    header.mustBe(atDimension, kDimension2d, "resource dimension");
    t.headerBytes = dx10Bytes;
    t.cube = header.at(atMiscFlag) & kMiscCube;
    t.layers = header.atMost(atArraySize, kMaxArray, "array size") * (t.cube ? 6 : 1);
    t.faces = t.cube ? 0x3F : 0;
}

void readLayersLegacy(const Header& header, Texture& t) {
    const uint32_t caps2 = header.at(atCaps2);
    if (caps2 & kCaps2Volume) header.failAt(atCaps2, "volume textures are not supported");
    t.cube = caps2 & kCaps2Cube;
    if (!t.cube) return;
    t.faces = caps2 / kCaps2FirstFace & 0x3F;
    t.layers = std::popcount(t.faces);
    if (!t.faces) header.failAt(atCaps2, "a cube map without faces");
}

// The picture in which a file of `size` bytes ends too early.
[[noreturn]] void failShort(const Header& header, const Texture& t, std::uint64_t size, std::uint64_t promised) {
    const std::uint64_t there = size - t.headerBytes;
    const int layer = int(there / t.layerBytes());
    int index = 0;
    while (there >= t.level(layer, index).offset + t.level(layer, index).size) ++index;
    header.fail("the file ends at byte " + std::to_string(size) + ", in level " + std::to_string(index) + " of layer " +
                std::to_string(layer) + "; the header promises " + std::to_string(t.headerBytes + promised) + " bytes");
}

} // namespace

const char* nameOf(Format format) { return known(format).name; }
Format formatNamed(const std::string& name) {
    return known([&](const Known& k) { return k.name == name; }).format;
}
int blockBytes(Format format) { return known(format).blockBytes; }

int fullChain(int width, int height) { return int(std::bit_width(unsigned(std::max(width, height)))); }

Level Texture::level(int layer, int index) const {
    std::uint64_t offset = layer ? unsigned(layer) * layerBytes() : 0;
    for (int i = 0;; ++i) {
        const int w = std::max(1, width >> i), h = std::max(1, height >> i);
        const std::uint64_t size = std::uint64_t((w + 3) / 4) * unsigned((h + 3) / 4) * unsigned(blockBytes(format));
        if (i == index) return {w, h, offset, size};
        offset += size;
    }
}

std::uint64_t Texture::layerBytes() const {
    const Level last = level(0, levels - 1);
    return last.offset + last.size;
}

std::string Texture::layerName(int layer) const {
    static const char* const names[] = {"+x", "-x", "+y", "-y", "+z", "-z"};
    if (!cube) return layers == 1 ? "" : "element " + std::to_string(layer);
    const int here = std::popcount(faces);
    int face = 0;
    for (int skip = layer % here; !(faces >> face & 1) || skip-- > 0;) ++face;
    const std::string name = std::string("face ") + names[face];
    return layers == here ? name : "cube " + std::to_string(layer / here) + " " + name;
}

Texture readHeader(ByteSource& bytes) {
    const ByteView start = bytes.view(dx10Bytes);
    const Header header(start.first(std::min<std::size_t>(start.size(), dx10Bytes)));
    if (start.size() < 4 || header.at(atMagic) != fourCC("DDS ")) header.failAt(atMagic, "not a DDS file");
    header.holds(legacyBytes, "header");
    header.mustBe(atSize, 124, "header size");
    header.mustBe(atPixelFormatSize, 32, "pixel format size");
    if (!(header.at(atPixelFormatFlags) & kPixelFormatFourCC))
        header.failAt(atPixelFormatFlags, "the pixels are not compressed in blocks");
    const bool dx10 = header.at(atFourCC) == fourCC("DX10");
    if (dx10) header.holds(dx10Bytes, "DX10 header");

    Texture t;
    t.format = formatOf(header, dx10);
    t.headerBytes = legacyBytes;
    t.width = header.atMost(atWidth, kMaxSide, "width");
    t.height = header.atMost(atHeight, kMaxSide, "height");
    // Writers leave the count 0 where there is no chain.
    if (header.at(atLevels)) t.levels = header.atMost(atLevels, uint32_t(fullChain(t.width, t.height)), "level count");
    if (dx10)
        readLayersDx10(header, t);
    else
        readLayersLegacy(header, t);

    // More than was promised is left alone.
    const std::uint64_t promised = t.layerBytes() * unsigned(t.layers), size = bytes.size();
    if (size - t.headerBytes < promised) failShort(header, t, size, promised);
    return t;
}

Bytes headerOf(const Texture& t) {
    Bytes header(legacyBytes);
    const auto put = [&](std::size_t field, uint32_t v) {
        for (std::size_t i = 0; i < 4; ++i) header[field + i] = uint8_t(v >> 8 * i);
    };
    const bool chain = t.levels > 1;
    put(atMagic, fourCC("DDS "));
    put(atSize, 124);
    put(atFlags, kFlagsTexture | kFlagLinearSize | (chain ? kFlagLevels : 0));
    put(atHeight, uint32_t(t.height));
    put(atWidth, uint32_t(t.width));
    put(atLinearSize, uint32_t(t.level(0, 0).size));
    put(atLevels, uint32_t(t.levels));
    if (t.format == Format::ycocgDxt5) {
        put(atMark, kMark);
        put(atMarkKind, kMarkYCoCg);
    }
    put(atPixelFormatSize, 32);
    put(atPixelFormatFlags, kPixelFormatFourCC);
    put(atFourCC, known(t.format).fourCC);
    put(atCaps, kCapsTexture | (chain ? kCapsComplex | kCapsLevels : 0));
    return header;
}

} // namespace codecs::texture
