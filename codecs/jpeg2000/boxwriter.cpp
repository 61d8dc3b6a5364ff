// boxwriter.cpp - the JP2 boxes ahead of a codestream.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/boxes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace codecs::jpeg2000 {

namespace {

// A box open for writing; its length is filled in where it ends. A box within it is made while it is open.
class BoxWriter {
    Bytes& bytes;
    ByteWriter out;
    const std::size_t begin;

public:
    BoxWriter(Bytes& to, std::uint32_t type) : bytes(to), out(to), begin(to.size()) {
        out.u32(0);
        out.u32(type);
    }
    ~BoxWriter() { out.patch32(begin, std::uint32_t(bytes.size() - begin)); }
    ByteWriter* operator->() { return &out; }
};

unsigned depthByte(const SizComponent& c) { return unsigned(c.depth - 1) | unsigned(c.isSigned) << 7; }

// IHDR, and BPCC where the depths differ (I.5.3.1, I.5.3.2).
void writeImageHeader(Bytes& file, const ImageSize& size, const FileHeader& header) {
    const auto& components = size.components;
    const unsigned first = depthByte(components[0]);
    const bool alike =
        std::all_of(components.begin(), components.end(), [=](const SizComponent& c) { return depthByte(c) == first; });
    {
        BoxWriter ihdr(file, fourcc("ihdr"));
        // The size of the image area, ahead of its width.
        ihdr->u32(size.y1 - size.y0);
        ihdr->u32(size.x1 - size.x0);
        ihdr->u16(unsigned(components.size()));
        // 255 says that the depths differ, and that BPCC has them.
        ihdr->u8(alike ? first : 255);
        ihdr->u8(7); // the only kind of compression
        // UnkC: whether the colour space is but a guess.
        ihdr->u8(header.colour == ColourSpace::unknown && header.metadata.icc.empty());
        ihdr->u8(0);
    }
    if (alike) return;
    BoxWriter bpcc(file, fourcc("bpcc"));
    for (const SizComponent& c : components) bpcc->u8(depthByte(c));
}

std::uint32_t enumeratedColour(const ImageSize& size, const FileHeader& header) {
    switch (header.colour) {
    case ColourSpace::grey:
        return kEnumGrey;
    case ColourSpace::sRgb:
        return kEnumSRgb;
    case ColourSpace::sYcc:
        return kEnumSYcc;
    case ColourSpace::cmyk:
        return kEnumCmyk;
    default: // what is likely
        return int(size.components.size()) - int(header.alpha >= 0) >= 3 ? kEnumSRgb : kEnumGrey;
    }
}

// A profile, or one of the known colour spaces (I.5.3.3).
void writeColour(Bytes& file, const ImageSize& size, const FileHeader& header) {
    const bool profile = !header.metadata.icc.empty();
    BoxWriter colr(file, fourcc("colr"));
    // Method 2 is for restricted profiles; readers make no difference between these and others.
    colr->u8(profile ? 2 : 1);
    // Precedence and approximation are for other parts of the standard.
    colr->u16(0);
    if (profile)
        colr->bytes(header.metadata.icc);
    else
        colr->u32(enumeratedColour(size, header));
}

// A number as N / D times a power of ten, as exact as 16 bits allow.
struct Fraction {
    unsigned n, d;
    int exponent;
};

// The last of the fractions that a number unfolds to whose parts fit 16 bits.
Fraction unfolded(double v, int exponent) {
    constexpr double most = 65535;
    double rest = v, n0 = 1, d0 = 0, n = std::floor(v), d = 1;
    for (int i = 0; i < 20 && rest - std::floor(rest) > 1e-9; ++i) {
        rest = 1 / (rest - std::floor(rest));
        const double n1 = std::floor(rest) * n + n0, d1 = std::floor(rest) * d + d0;
        if (n1 > most || d1 > most) break;
        n0 = std::exchange(n, n1);
        d0 = std::exchange(d, d1);
    }
    return {unsigned(n), unsigned(d), exponent};
}

// What needs no power of ten goes without one, for those who read no further than N and D. Otherwise a number from 1
// to 10 leaves the most room for D.
Fraction fractionOf(double v) {
    if (v >= 1 && v < 65536)
        if (const Fraction plain = unfolded(v, 0); std::abs(plain.n / double(plain.d) - v) < 1e-9 * v) return plain;
    const int exponent = int(std::floor(std::log10(v)));
    return unfolded(v / std::pow(10, exponent), exponent);
}

// How many pixels a metre the picture was taken with (I.5.3.7.1).
void writeResolution(Bytes& file, const Resolution& resolution) {
    const Resolution r = resolution.in(Resolution::Unit::metre);
    const auto fits = [](double v) { return v > 1e-100 && v < 1e100; };
    if (r.unit == Resolution::Unit::none || !fits(r.x) || !fits(r.y)) return;
    const BoxWriter res(file, fourcc("res "));
    BoxWriter resc(file, fourcc("resc"));
    const Fraction x = fractionOf(r.x), y = fractionOf(r.y);
    for (const unsigned v : {y.n, y.d, x.n, x.d}) resc->u16(v);
    for (const int e : {y.exponent, x.exponent}) resc->u8(unsigned(e) & 0xFF);
}

void writeUuid(Bytes& file, const Uuid& uuid, ByteView content) {
    if (content.empty()) return;
    BoxWriter box(file, fourcc("uuid"));
    box->bytes(uuid);
    box->bytes(content);
}

// Tells which component is the opacity (I.5.3.6).
void writeChannels(Bytes& file, const ImageSize& size, const FileHeader& header) {
    BoxWriter cdef(file, fourcc("cdef"));
    cdef->u16(unsigned(size.components.size()));
    for (int i = 0, colour = 1; i < int(size.components.size()); ++i) {
        const bool opacity = i == header.alpha;
        cdef->u16(unsigned(i));
        cdef->u16(opacity);
        // Association 0 is the whole picture, the others are the numbers of colours.
        cdef->u16(unsigned(opacity ? 0 : colour++));
    }
}

} // namespace

Bytes writeBoxes(const ImageSize& size, const FileHeader& header) {
    Bytes file;
    BoxWriter(file, fourcc("jP  "))->u32(kSignature);
    {
        BoxWriter ftyp(file, fourcc("ftyp"));
        ftyp->u32(fourcc("jp2 "));
        ftyp->u32(0);
        ftyp->u32(fourcc("jp2 "));
    }
    {
        const BoxWriter jp2h(file, fourcc("jp2h"));
        writeImageHeader(file, size, header);
        writeColour(file, size, header);
        if (header.alpha >= 0) writeChannels(file, size, header);
        if (header.metadata.resolution) writeResolution(file, *header.metadata.resolution);
    }
    // Ahead of the codestream, so that readers of a stream have them first.
    writeUuid(file, kExifUuid, header.metadata.exif);
    writeUuid(file, kXmpUuid, header.metadata.xmp);
    ByteWriter out(file);
    out.u32(0); // to the end of the file
    out.u32(fourcc("jp2c"));
    return file;
}

void patchCodestreamBox(ByteSink& sink, std::uint64_t begin) {
    constexpr unsigned head = 8;
    const std::uint64_t length = sink.position() - begin + head;
    // A length of 0 stands for what lasts to the end of the file (I.4).
    if (length > 0xFFFFFFFF) return;
    Bytes bytes;
    ByteWriter(bytes).u32(std::uint32_t(length));
    sink.patch(begin - head, bytes);
}

} // namespace codecs::jpeg2000
