// bmpread.cpp - BMP files: palettes of 1 to 8 bits, plain or run-length coded, and pixels of 16, 24 and 32 bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bmp.h"
#include "codecs/picture/bmprle.h"
#include "codecs/picture/formats.h"
#include "codecs/picture/storedrows.h"

#include <algorithm>
#include <array>
#include <bit>

namespace codecs {
namespace {

[[noreturn]] void fail(const std::string& what) { throw Error("BMP: " + what); }

// The fields of a header; what a short one does not have is 0.
class Fields {
public:
    explicit Fields(ByteView start) : bytes(start.begin(), start.end()) {}
    std::uint32_t word(std::size_t at, std::size_t size = 4) const {
        std::uint32_t v = 0;
        for (std::size_t i = size; i-- > 0;) v = v << 8 | (at + i < bytes.size() ? bytes[at + i] : 0);
        return v;
    }

private:
    Bytes bytes;
};

// A colour as bits of a pixel.
struct Mask {
    std::uint32_t bits = 0;
    unsigned at(std::uint32_t pixel) const {
        if (!bits) return 0;
        const std::uint32_t most = bits >> std::countr_zero(bits), v = (pixel & bits) >> std::countr_zero(bits);
        return unsigned((std::uint64_t(v) * 255 + most / 2) / most);
    }
};

struct Head {
    int width = 0, height = 0, bits = 0;
    bool topDown = false;
    std::uint32_t compression = kBmpRgb;
    std::uint64_t pixels = 0; // where they begin
    std::array<Mask, 4> masks{};
    std::vector<std::array<std::uint8_t, 3>> palette;
    bool greyPalette = false;
    Metadata metadata;
};

void readSize(const Fields& f, bool old, std::uint64_t maxPixels, Head& h) {
    const auto width = old ? std::int32_t(f.word(kBmpWidth, 2)) : std::int32_t(f.word(kBmpWidth));
    const auto height = old ? std::int64_t(f.word(kBmpOldHeight, 2)) : std::int64_t(std::int32_t(f.word(kBmpHeight)));
    h.topDown = height < 0;
    try {
        checkSize(std::uint64_t(std::max(width, 0)), std::uint64_t(height < 0 ? -height : height), maxPixels);
    } catch (const Error& e) {
        fail(e.what());
    }
    h.width = width;
    h.height = int(height < 0 ? -height : height);
    h.bits = int(f.word(old ? kBmpOldBits : kBmpBits, 2));
    h.compression = old ? 0 : f.word(kBmpCompression);
}

void readMasks(const Fields& f, std::size_t headerSize, Head& h) {
    if (h.compression == kBmpBitfields || h.compression == kBmpAlphaBitfields) {
        const bool alpha = headerSize >= 56 || h.compression == kBmpAlphaBitfields;
        for (std::size_t i = 0; i < (alpha ? 4u : 3u); ++i) h.masks[i].bits = f.word(kBmpMasks + 4 * i);
        if (!h.masks[0].bits || !h.masks[1].bits || !h.masks[2].bits) fail("a colour without bits");
    } else if (h.bits == 16) {
        h.masks = {Mask{0x7C00}, {0x3E0}, {0x1F}, {}};
    } else {
        h.masks = {Mask{0xFF0000}, {0xFF00}, {0xFF}, {}};
    }
}

void readPalette(ByteSource& bytes, const Fields& f, std::size_t headerSize, Head& h) {
    const bool old = headerSize == kBmpOldHeader;
    const std::size_t entry = old ? 3 : 4;
    std::uint32_t count = old ? 0 : f.word(kBmpColours);
    if (count == 0 || count > 1u << h.bits) count = 1u << h.bits;
    Bytes table(entry * count);
    const std::size_t got = bytes.readAt(kBmpFileHeader + headerSize, table) / entry;
    // Places that the table does not have are black.
    h.palette.resize(std::size_t(1) << h.bits);
    h.greyPalette = true;
    for (std::size_t i = 0; i < got; ++i) {
        const std::uint8_t* p = table.data() + entry * i;
        h.palette[i] = {p[2], p[1], p[0]};
        h.greyPalette &= p[0] == p[1] && p[1] == p[2];
    }
}

void readMetadata(ByteSource& bytes, const Fields& f, std::size_t headerSize, Metadata& m) {
    if (headerSize < kBmpInfoHeader) return;
    const double x = std::int32_t(f.word(kBmpXPerMetre)), y = std::int32_t(f.word(kBmpYPerMetre));
    if (x > 0 && y > 0) m.resolution = {x, y, Resolution::Unit::metre};
    if (headerSize < kBmpV5Header || f.word(kBmpColourSpace) != kBmpProfile) return;
    const std::uint64_t size = f.word(kBmpProfileSize);
    if (size > bytes.size()) return;
    m.icc.resize(std::size_t(size));
    if (bytes.readAt(kBmpFileHeader + std::uint64_t(f.word(kBmpProfileOffset)), m.icc) < size) m.icc.clear();
}

Head readHead(ByteSource& bytes, std::uint64_t maxPixels) {
    const ByteView start = bytes.view(kBmpFileHeader + kBmpV5Header);
    const Fields f(start.first(std::min(start.size(), kBmpFileHeader + kBmpV5Header)));
    const std::size_t headerSize = f.word(kBmpHeaderSize);
    if (start.size() < kBmpFileHeader + kBmpOldHeader) fail("the file ends in its header");
    if (headerSize != kBmpOldHeader && (headerSize < kBmpInfoHeader || headerSize > 4096))
        fail("a header of " + std::to_string(headerSize) + " bytes");
    Head h;
    readSize(f, headerSize == kBmpOldHeader, maxPixels, h);
    const bool indexed = h.bits <= 8;
    const bool rle = (h.compression == kBmpRle8 && h.bits == 8) || (h.compression == kBmpRle4 && h.bits == 4);
    const bool fields = h.compression == kBmpBitfields || h.compression == kBmpAlphaBitfields;
    if (h.bits != 1 && h.bits != 2 && h.bits != 4 && h.bits != 8 && h.bits != 16 && h.bits != 24 && h.bits != 32)
        fail(std::to_string(h.bits) + " bits a pixel are not supported");
    if (h.compression != kBmpRgb && !rle && !(fields && (h.bits == 16 || h.bits == 32)))
        fail("compression " + std::to_string(h.compression) + " of " + std::to_string(h.bits) +
             " bits a pixel is not supported");
    if (rle && h.topDown) fail("run-length coded rows from the top");
    if (indexed)
        readPalette(bytes, f, headerSize, h);
    else
        readMasks(f, headerSize, h);
    h.pixels = f.word(kBmpPixels);
    readMetadata(bytes, f, headerSize, h.metadata);
    return h;
}

// 1-bit pictures of black and white stay bitmaps; palettes of grey become grey.
Shape shapeFor(const Head& h) {
    const std::array<std::uint8_t, 3> black{0, 0, 0}, white{255, 255, 255};
    if (h.bits == 1 && h.greyPalette &&
        ((h.palette[0] == black && h.palette[1] == white) || (h.palette[0] == white && h.palette[1] == black)))
        return shapeOf(h.width, h.height, 1, 1);
    if (h.bits <= 8) return shapeOf(h.width, h.height, h.greyPalette ? 1 : 3);
    return shapeOf(h.width, h.height, h.masks[3].bits ? 4 : 3);
}

// Places in the palette, a byte each, as colours.
void lookUp(const Head& h, const Shape& shape, const std::uint8_t* places, std::uint8_t* to) {
    for (int x = 0; x < shape.width; ++x)
        for (int c = 0; c < shape.channels; ++c)
            *to++ = shape.maxval == 1 ? h.palette[places[x]][0] / 255 : h.palette[places[x]][std::size_t(c)];
}

UnpackRow unpackerOf(const Head& head, const Shape& shape) {
    if (head.bits <= 8)
        return [head, shape, places = Samples(std::size_t(head.width))](const std::uint8_t* stored,
                                                                        std::uint8_t* to) mutable {
            for (int x = 0, bits = head.bits; x < head.width; ++x)
                places[std::size_t(x)] =
                    std::uint8_t(stored[x * bits / 8] >> (8 - bits - x * bits % 8) & ((1 << bits) - 1));
            lookUp(head, shape, places.data(), to);
        };
    if (head.bits == 24)
        return [shape](const std::uint8_t* stored, std::uint8_t* to) {
            for (int x = 0; x < shape.width; ++x, stored += 3, to += 3) {
                to[0] = stored[2];
                to[1] = stored[1];
                to[2] = stored[0];
            }
        };
    return [masks = head.masks, shape, bytes = head.bits / 8](const std::uint8_t* stored, std::uint8_t* to) {
        for (int x = 0; x < shape.width; ++x) {
            std::uint32_t pixel = 0;
            for (int i = bytes; i-- > 0;) pixel = pixel << 8 | stored[x * bytes + i];
            for (int c = 0; c < shape.channels; ++c) *to++ = std::uint8_t(masks[std::size_t(c)].at(pixel));
        }
    };
}

// Rows of a fixed size, the last one first as a rule: they are looked up where they stand, from the end.
class BmpRows final : public RowSource {
public:
    BmpRows(std::unique_ptr<ByteSource> source, const Head& head)
        : bytes(std::move(source)), h(head), rowBytes(std::size_t(bmpRowBytes(h.width, h.bits))) {
        form = shapeFor(h);
        beside = h.metadata;
        unpack = unpackerOf(h, form);
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        const std::size_t size = form.rowBytes();
        stored.resize(std::max(stored.size(), rowBytes * std::size_t(n)));
        band.resize(std::max(band.size(), size * std::size_t(n)));
        const int first = h.topDown ? row : form.height - row - n;
        const std::span<std::uint8_t> here(stored.data(), rowBytes * std::size_t(n));
        if (bytes->readAt(h.pixels + std::uint64_t(rowBytes) * unsigned(first), here) < here.size())
            fail("the file ends before row " + std::to_string(first + n - 1) + " of those that stand in it");
        for (int y = 0; y < n; ++y)
            unpack(stored.data() + rowBytes * std::size_t(h.topDown ? y : n - 1 - y),
                   band.data() + size * std::size_t(y));
        row += n;
        return {band.data(), std::ptrdiff_t(size), n};
    }

private:
    std::unique_ptr<ByteSource> bytes;
    Head h;
    std::size_t rowBytes;
    UnpackRow unpack;
    Samples stored, band;
    int row = 0;
};

// Runs say nowhere where a row begins, and the last row comes first: the places are unpacked as a whole.
class RleRows final : public RowSource {
public:
    RleRows(ByteSource& bytes, const Head& head) : h(head) {
        form = shapeFor(h);
        beside = h.metadata;
        bytes.skip(h.pixels);
        places = Picture(shapeOf(h.width, h.height, 1));
        unpackBmpRuns(bytes, h.bits, places);
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        band.resize(std::max(band.size(), form.rowBytes() * std::size_t(n)));
        for (int y = 0; y < n; ++y, ++row)
            lookUp(h, form, places.bytes(row).data(), band.data() + form.rowBytes() * std::size_t(y));
        return {band.data(), std::ptrdiff_t(form.rowBytes()), n};
    }

private:
    Head h;
    Picture places;
    Samples band;
    int row = 0;
};

} // namespace

Rows openBmp(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels) {
    const Head head = readHead(*bytes, maxPixels);
    if (head.compression == kBmpRle8 || head.compression == kBmpRle4) return std::make_unique<RleRows>(*bytes, head);
    return std::make_unique<BmpRows>(std::move(bytes), head);
}

} // namespace codecs
