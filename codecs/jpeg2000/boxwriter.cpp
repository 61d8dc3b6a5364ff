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

unsigned depthByte(const SizComponent& c) { return unsigned(c.depth - 1) | unsigned(c.isSigned) << 7; }

// IHDR, and BPCC where the depths differ (I.5.3.1, I.5.3.2).
void writeImageHeader(Bytes& file, const ImageSize& size, const FileHeader& header) {
    const auto& components = size.components;
    const unsigned first = depthByte(components[0]);
    const bool alike =
        std::all_of(components.begin(), components.end(), [=](const SizComponent& c) { return depthByte(c) == first; });
    {
        BoxWriter ihdr(file, fourcc("ihdr"));
        ihdr->u32(size.y1 - size.y0);
        ihdr->u32(size.x1 - size.x0);
        ihdr->u16(unsigned(components.size()));
        ihdr->u8(alike ? first : 255);
        ihdr->u8(7); // the only kind of compression
        ihdr->u8(header.colour == ColourSpace::unknown);
        ihdr->u8(0);
    }
    if (alike) return;
    BoxWriter bpcc(file, fourcc("bpcc"));
    for (const SizComponent& c : components) bpcc->u8(depthByte(c));
}

void writeColour(Bytes& file, const ImageSize& size, const FileHeader& header) {
    const int colours = int(size.components.size()) - (header.alpha >= 0);
    const ColourSpace likely = colours >= 3 ? ColourSpace::sRgb : ColourSpace::grey;
    const ColourSpace colour = header.colour != ColourSpace::unknown ? header.colour : likely;
    BoxWriter colr(file, fourcc("colr"));
    colr->u8(1);
    colr->u16(0);
    colr->u32(colour == ColourSpace::grey ? kEnumGrey : colour == ColourSpace::sYcc ? kEnumSYcc : kEnumSRgb);
}

// Tells which component is the opacity (I.5.3.6).
void writeChannels(Bytes& file, const ImageSize& size, const FileHeader& header) {
    BoxWriter cdef(file, fourcc("cdef"));
    cdef->u16(unsigned(size.components.size()));
    for (int i = 0, colour = 1; i < int(size.components.size()); ++i) {
        const bool opacity = i == header.alpha;
        cdef->u16(unsigned(i));
        cdef->u16(opacity);
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
    }
    ByteWriter out(file);
    out.u32(0); // to the end of the file
    out.u32(fourcc("jp2c"));
    return file;
}

void patchCodestreamBox(ByteSink& sink, std::uint64_t begin) {
    constexpr unsigned head = 8;
    const std::uint64_t length = sink.position() - begin + head;
    if (!sink.seekable() || length > 0xFFFFFFFF) return;
    Bytes bytes;
    ByteWriter(bytes).u32(std::uint32_t(length));
    sink.patch(begin - head, bytes);
}

} // namespace codecs::jpeg2000
