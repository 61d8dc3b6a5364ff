// boxes.cpp - JP2 boxes on their way in, as far as they matter here.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/boxes.h"

#include <algorithm>
#include <cmath>
#include <iterator>

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
    // XLBox, for boxes of 4 GiB and more (I.4).
    if (length == 1) {
        length = std::uint64_t(in.u32()) << 32;
        length |= in.u32();
        header = 16;
    }
    // The last box of a file may leave its length open.
    if (length == 0) return {type, in.rest()};
    if (length < header) throw Error("a box that is shorter than its header");
    return {type, in.take(std::size_t(std::min<std::uint64_t>(length - header, in.left())))};
}

// Entries of up to 16 bits, each column with a depth and a sign of its own (I.5.3.4).
void readPalette(ByteReader in, Boxes& boxes) {
    const int entries = in.u16(), columns = in.u8();
    // NE and NPC have these bounds (I.5.3.4).
    if (entries < 1 || entries > 1024 || columns < 1) throw Error("a palette of an impossible size");
    Boxes::Palette p;
    for (int i = 0; i < columns; ++i) p.depths.push_back(std::uint8_t(in.u8()));
    for (int i = 0; i < entries * columns; ++i) {
        const int depth = (p.depths[std::size_t(i % columns)] & 127) + 1;
        if (depth > 16) throw Error("a palette of more than 16 bits");
        const bool negative = p.depths[std::size_t(i % columns)] >> 7;
        // Entries are padded to whole bytes; what is above their depth is no part of them.
        const auto v = std::int32_t(in.number((depth + 7) / 8)) & ((1 << depth) - 1);
        p.entries.push_back(negative && v >> (depth - 1) ? v - (1 << depth) : v);
    }
    boxes.palette = std::move(p);
}

// The first colour space that is told counts, and the first profile (I.5.3.3).
void readColour(ByteReader& in, Boxes& boxes) {
    constexpr int enumerated = 1, profile = 2, anyProfile = 3;
    const int method = in.u8();
    in.take(2); // precedence and approximation
    // EnumCS of methods that this reader does not know is left alone.
    if (method == enumerated && boxes.enumeratedColour == 0) boxes.enumeratedColour = in.u32();
    if ((method == profile || method == anyProfile) && boxes.metadata.icc.empty()) {
        const ByteView icc = in.rest();
        boxes.metadata.icc.assign(icc.begin(), icc.end());
    }
}

// How the picture was taken counts more than how it wants to be shown (I.5.3.7).
void readResolution(const Box& box, Metadata& metadata) {
    const bool capture = box.type == fourcc("resc");
    if (!capture && (box.type != fourcc("resd") || metadata.resolution)) return;
    ByteReader in(box.content, "a resolution");
    const double yn = in.u16(), yd = in.u16(), xn = in.u16(), xd = in.u16();
    const int ye = std::int8_t(in.u8()), xe = std::int8_t(in.u8());
    need(yn > 0 && yd > 0 && xn > 0 && xd > 0, "a resolution of 0");
    metadata.resolution = {xn / xd * std::pow(10, xe), yn / yd * std::pow(10, ye), Resolution::Unit::metre};
}

// Boxes of a vendor each have a number of their own (I.7.2).
void readUuid(const Box& box, Metadata& metadata) {
    if (box.content.size() < kExifUuid.size()) return;
    ByteView rest = box.content.subspan(kExifUuid.size());
    const auto is = [&](const Uuid& uuid) { return std::equal(uuid.begin(), uuid.end(), box.content.begin()); };
    if (is(kXmpUuid) && metadata.xmp.empty()) metadata.xmp.assign(rest.begin(), rest.end());
    if (!is(kExifUuid) || !metadata.exif.empty()) return;
    // Some put what stands ahead of EXIF in a JPEG file here too; a second one would be taken for it when what is read here
    // is written and read again.
    constexpr std::uint8_t ahead[] = {'E', 'x', 'i', 'f', 0, 0};
    while (rest.size() >= sizeof ahead && std::equal(std::begin(ahead), std::end(ahead), rest.begin()))
        rest = rest.subspan(sizeof ahead);
    metadata.exif.assign(rest.begin(), rest.end());
}

void readHeaderBox(const Box& box, Boxes& boxes) {
    ByteReader in(box.content, "a box");
    switch (box.type) {
    case fourcc("colr"):
        readColour(in, boxes);
        break;
    case fourcc("res "):
        while (in.left() > 0) readResolution(readBox(in), boxes.metadata);
        break;
    case fourcc("pclr"):
        readPalette(in, boxes);
        break;
    // Which component, and which column of the palette, makes each channel (I.5.3.5).
    case fourcc("cmap"):
        while (in.left() >= 4) {
            const int component = in.u16(), type = in.u8();
            boxes.mappings.push_back({component, type, in.u8()});
        }
        break;
    // What each channel is for, and which colour it belongs to (I.5.3.6).
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

// The superbox of the picture. What cannot be understood costs its colours, not its samples.
void readHeader(const Box& box, Boxes& boxes) {
    try {
        for (ByteReader inner(box.content, "the JP2 header"); inner.left() > 0;) readHeaderBox(readBox(inner), boxes);
    } catch (const Error& e) {
        boxes.warnings.push_back(e.what());
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
    // The signature box tells files from those that were spoilt as text on their way (I.5.1).
    if (first.type != fourcc("jP  ") || first.content.size() != 4 || ByteReader(first.content, "").u32() != kSignature)
        throw Error("neither a JP2 file nor a JPEG2000 codestream");
    boxes.jp2 = true;
    bool found = false;
    try {
        while (in.left() > 0) {
            const Box box = readBox(in);
            if (box.type == fourcc("jp2h")) readHeader(box, boxes);
            if (box.type == fourcc("uuid")) readUuid(box, boxes.metadata);
            // The first codestream is the picture; readers of Part 1 ignore others (I.5.4).
            if (box.type != fourcc("jp2c") || found) continue;
            boxes.codestream = box.content;
            found = true;
        }
    } catch (const Error&) {
        if (!found) throw; // what is behind the codestream may be broken
    }
    need(found, "a JP2 file without a codestream");
    return boxes;
}

} // namespace codecs::jpeg2000
