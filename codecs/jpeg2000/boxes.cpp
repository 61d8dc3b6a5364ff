// boxes.cpp - JP2 boxes on their way in, as far as they matter here.
#include "codecs/jpeg2000/boxes.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

struct Box {
    std::uint32_t type;
    ByteView content;
};

// A box that claims more than there is gets what there is.
Box readBox(ByteReader& in) {
    std::uint64_t length = in.u32();
    const std::uint32_t type = in.u32();
    std::uint64_t header = 8;
    if (length == 1) {
        length = std::uint64_t(in.u32()) << 32;
        length |= in.u32();
        header = 16;
    }
    if (length == 0) return {type, in.rest()};
    if (length < header) throw Error("a box that is shorter than its header");
    return {type, in.take(std::size_t(std::min<std::uint64_t>(length - header, in.left())))};
}

void readPalette(ByteReader in, Boxes& boxes) {
    const int entries = in.u16(), columns = in.u8();
    if (entries < 1 || entries > 1024 || columns < 1) throw Error("a palette of an impossible size");
    Boxes::Palette p;
    for (int i = 0; i < columns; ++i) p.depths.push_back(std::uint8_t(in.u8()));
    for (int i = 0; i < entries * columns; ++i) {
        const int depth = (p.depths[std::size_t(i % columns)] & 127) + 1;
        if (depth > 16) throw Error("a palette of more than 16 bits");
        const bool negative = p.depths[std::size_t(i % columns)] >> 7;
        const auto v = std::int32_t(in.number((depth + 7) / 8)) & ((1 << depth) - 1);
        p.entries.push_back(negative && v >> (depth - 1) ? v - (1 << depth) : v);
    }
    boxes.palette = std::move(p);
}

void readHeaderBox(const Box& box, Boxes& boxes) {
    ByteReader in(box.content, "a box");
    switch (box.type) {
    case fourcc("colr"):
        if (const int method = in.u8(); method == 1 && boxes.enumeratedColour == 0) {
            in.take(2);
            boxes.enumeratedColour = in.u32();
        }
        break;
    case fourcc("pclr"):
        readPalette(in, boxes);
        break;
    case fourcc("cmap"):
        while (in.left() >= 4) {
            const int component = in.u16(), type = in.u8();
            boxes.mappings.push_back({component, type, in.u8()});
        }
        break;
    case fourcc("cdef"):
        for (int n = in.u16(); n > 0; --n) {
            const int channel = in.u16(), type = in.u16();
            boxes.channels.push_back({channel, type, in.u16()});
        }
        break;
    default:
        break; // ihdr and bpcc repeat what SIZ says
    }
}

} // namespace

Boxes readBoxes(ByteView file) {
    Boxes boxes;
    boxes.codestream = file;
    ByteReader in(file, "the file");
    if (file.size() >= 2 && file[0] == 0xFF && file[1] == 0x4F) return boxes;
    need(file.size() >= 12, "neither a JP2 file nor a JPEG2000 codestream");
    const Box first = readBox(in);
    if (first.type != fourcc("jP  ") || first.content.size() != 4 || ByteReader(first.content, "").u32() != kSignature)
        throw Error("neither a JP2 file nor a JPEG2000 codestream");
    boxes.jp2 = true;
    while (in.left() > 0) {
        const Box box = readBox(in);
        if (box.type == fourcc("jp2c")) {
            boxes.codestream = box.content;
            return boxes;
        }
        if (box.type != fourcc("jp2h")) continue;
        try {
            for (ByteReader inner(box.content, "the JP2 header"); inner.left() > 0;)
                readHeaderBox(readBox(inner), boxes);
        } catch (const Error& e) {
            boxes.warnings.push_back(e.what());
        }
    }
    throw Error("a JP2 file without a codestream");
}

} // namespace codecs::jpeg2000
