// boxwriter.cpp - the JP2 boxes ahead of a codestream.
#include "codecs/jpeg2000/boxes.h"

#include <algorithm>

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

unsigned depthByte(const Component& c) { return unsigned(c.depth - 1) | unsigned(c.isSigned) << 7; }

// IHDR, and BPCC where the depths differ (I.5.3.1, I.5.3.2).
void writeImageHeader(Bytes& file, const PlanarPicture& picture) {
    const auto& components = picture.components;
    const unsigned first = depthByte(components[0]);
    const bool alike =
        std::all_of(components.begin(), components.end(), [=](const Component& c) { return depthByte(c) == first; });
    {
        BoxWriter ihdr(file, fourcc("ihdr"));
        ihdr->u32(picture.y1 - picture.y0);
        ihdr->u32(picture.x1 - picture.x0);
        ihdr->u16(unsigned(components.size()));
        ihdr->u8(alike ? first : 255);
        ihdr->u8(7); // the only kind of compression
        ihdr->u8(picture.colour == ColourSpace::unknown);
        ihdr->u8(0);
    }
    if (alike) return;
    BoxWriter bpcc(file, fourcc("bpcc"));
    for (const Component& c : components) bpcc->u8(depthByte(c));
}

void writeColour(Bytes& file, const PlanarPicture& picture) {
    const int colours = int(picture.components.size()) - (picture.alpha >= 0);
    const ColourSpace likely = colours >= 3 ? ColourSpace::sRgb : ColourSpace::grey;
    const ColourSpace colour = picture.colour != ColourSpace::unknown ? picture.colour : likely;
    BoxWriter colr(file, fourcc("colr"));
    colr->u8(1);
    colr->u16(0);
    colr->u32(colour == ColourSpace::grey ? kEnumGrey : colour == ColourSpace::sYcc ? kEnumSYcc : kEnumSRgb);
}

// Tells which component is the opacity (I.5.3.6).
void writeChannels(Bytes& file, const PlanarPicture& picture) {
    BoxWriter cdef(file, fourcc("cdef"));
    cdef->u16(unsigned(picture.components.size()));
    for (int i = 0, colour = 1; i < int(picture.components.size()); ++i) {
        const bool opacity = i == picture.alpha;
        cdef->u16(unsigned(i));
        cdef->u16(opacity);
        cdef->u16(unsigned(opacity ? 0 : colour++));
    }
}

} // namespace

Bytes writeBoxes(const PlanarPicture& picture, std::size_t codestreamSize) {
    Bytes file;
    BoxWriter(file, fourcc("jP  "))->u32(kSignature);
    {
        BoxWriter ftyp(file, fourcc("ftyp"));
        ftyp->u32(fourcc("jp2 "));
        ftyp->u32(0);
        ftyp->u32(fourcc("jp2 "));
    }
    {
        const BoxWriter header(file, fourcc("jp2h"));
        writeImageHeader(file, picture);
        writeColour(file, picture);
        if (picture.alpha >= 0) writeChannels(file, picture);
    }
    ByteWriter out(file);
    const bool fits = codestreamSize + 8 <= 0xFFFFFFFF;
    out.u32(fits ? std::uint32_t(codestreamSize + 8) : 0); // 0: to the end of the file
    out.u32(fourcc("jp2c"));
    return file;
}

} // namespace codecs::jpeg2000
