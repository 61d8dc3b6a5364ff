// boxes.cpp - JP2 boxes read, applied and written.
#include "codecs/jpeg2000/boxes.h"

#include <algorithm>

namespace jpeg2000 {

namespace {

constexpr std::uint32_t fourcc(const char (&s)[5]) {
    return std::uint32_t(s[0]) << 24 | std::uint32_t(s[1]) << 16 | std::uint32_t(s[2]) << 8 | std::uint32_t(s[3]);
}
constexpr std::uint32_t signature = 0x0D0A870A;
constexpr std::uint32_t enumSRgb = 16, enumGrey = 17, enumSYcc = 18;

struct Box {
    std::uint32_t type;
    Span content;
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

void applyPalette(const Boxes& boxes, Picture& picture) {
    const auto& p = boxes.palette;
    const std::size_t columns = p.depths.size();
    std::vector<Component> out;
    for (const Boxes::Mapping& m : boxes.mappings) {
        if (std::size_t(m.component) >= picture.components.size() ||
            (m.type == 1 && std::size_t(m.column) >= columns) || out.size() >= columns + 4)
            throw Error("a component mapping that does not fit");
        Component c = picture.components[std::size_t(m.component)];
        if (m.type == 1) {
            const std::int32_t last = std::int32_t(p.entries.size() / columns) - 1;
            for (std::int32_t& v : c.samples)
                v = p.entries[std::size_t(std::clamp(v, 0, last)) * columns + std::size_t(m.column)];
            c.depth = (p.depths[std::size_t(m.column)] & 127) + 1;
            c.isSigned = p.depths[std::size_t(m.column)] >> 7;
        }
        out.push_back(std::move(c));
    }
    picture.components = std::move(out);
}

// Colour channels in the order of their associations, then opacity; what is neither stays behind.
void applyChannels(const Boxes& boxes, Picture& picture) {
    const std::size_t n = picture.components.size();
    constexpr std::size_t nobody = ~std::size_t(0);
    std::vector<std::size_t> place(n, nobody); // which channel comes here
    std::vector<bool> used(n);
    int alpha = -1;
    for (const Boxes::Channel& c : boxes.channels) {
        const auto channel = std::size_t(c.channel);
        if (channel >= n) throw Error("a channel definition that does not fit");
        if (c.type == 0 && c.association >= 1 && std::size_t(c.association) <= n) {
            std::size_t& at = place[std::size_t(c.association) - 1];
            if (used[channel] || at != nobody) throw Error("two channel definitions for one channel");
            at = channel;
            used[channel] = true;
        }
        if (c.type == 1 && c.association == 0) alpha = c.channel;
    }
    std::size_t next = 0;
    for (std::size_t& at : place)
        if (at == nobody) {
            while (used[next]) ++next;
            at = next++;
        }
    std::vector<Component> out;
    for (const std::size_t i : place) {
        if (int(i) == alpha) picture.alpha = int(out.size());
        out.push_back(std::move(picture.components[i]));
    }
    picture.components = std::move(out);
}

class BoxWriter {
    std::vector<std::uint8_t>& bytes;
    ByteWriter out;
    const std::size_t begin;

public:
    BoxWriter(std::vector<std::uint8_t>& to, std::uint32_t type) : bytes(to), out(to), begin(to.size()) {
        out.u32(0);
        out.u32(type);
    }
    ~BoxWriter() { out.patch32(begin, std::uint32_t(bytes.size() - begin)); }
    ByteWriter* operator->() { return &out; }
};

} // namespace

Boxes readBoxes(Span file) {
    Boxes boxes;
    boxes.codestream = file;
    ByteReader in(file, "the file");
    if (file.size < 12) {
        if (file.size >= 2 && file.data[0] == 0xFF) return boxes;
        throw Error("neither a JP2 file nor a JPEG2000 codestream");
    }
    if (file.data[0] == 0xFF && file.data[1] == 0x4F) return boxes;
    const Box first = readBox(in);
    if (first.type != fourcc("jP  ") || first.content.size != 4 || ByteReader(first.content, "").u32() != signature)
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

void applyBoxes(const Boxes& boxes, Picture& picture) {
    picture.warnings.insert(picture.warnings.end(), boxes.warnings.begin(), boxes.warnings.end());
    try {
        if (!boxes.palette.entries.empty() && !boxes.mappings.empty()) applyPalette(boxes, picture);
        if (!boxes.channels.empty()) applyChannels(boxes, picture);
    } catch (const Error& e) {
        picture.warnings.push_back(e.what());
    }
    const std::uint32_t colour = boxes.enumeratedColour;
    picture.colour = colour == enumGrey   ? Colour::grey
                     : colour == enumSYcc ? Colour::sYcc
                     : colour == enumSRgb ? Colour::sRgb
                                          : Colour::unknown;
}

std::vector<std::uint8_t> writeBoxes(const Picture& picture, std::size_t codestreamSize) {
    std::vector<std::uint8_t> file;
    const auto& components = picture.components;
    const auto depthByte = [](const Component& c) { return unsigned(c.depth - 1) | unsigned(c.isSigned) << 7; };
    const bool alike = std::all_of(components.begin(), components.end(),
                                   [&](const Component& c) { return depthByte(c) == depthByte(components[0]); });
    BoxWriter(file, fourcc("jP  "))->u32(signature);
    {
        BoxWriter ftyp(file, fourcc("ftyp"));
        ftyp->u32(fourcc("jp2 "));
        ftyp->u32(0);
        ftyp->u32(fourcc("jp2 "));
    }
    {
        const BoxWriter header(file, fourcc("jp2h"));
        {
            BoxWriter ihdr(file, fourcc("ihdr"));
            ihdr->u32(picture.y1 - picture.y0);
            ihdr->u32(picture.x1 - picture.x0);
            ihdr->u16(unsigned(components.size()));
            ihdr->u8(alike ? depthByte(components[0]) : 255);
            ihdr->u8(7); // the only kind of compression
            ihdr->u8(picture.colour == Colour::unknown);
            ihdr->u8(0);
        }
        if (!alike) {
            BoxWriter bpcc(file, fourcc("bpcc"));
            for (const Component& c : components) bpcc->u8(depthByte(c));
        }
        {
            const int colours = int(components.size()) - (picture.alpha >= 0);
            const Colour colour = picture.colour != Colour::unknown ? picture.colour
                                  : colours >= 3                    ? Colour::sRgb
                                                                    : Colour::grey;
            BoxWriter colr(file, fourcc("colr"));
            colr->u8(1);
            colr->u16(0);
            colr->u32(colour == Colour::grey ? enumGrey : colour == Colour::sYcc ? enumSYcc : enumSRgb);
        }
        if (picture.alpha >= 0) {
            BoxWriter cdef(file, fourcc("cdef"));
            cdef->u16(unsigned(components.size()));
            for (int i = 0, colour = 1; i < int(components.size()); ++i) {
                const bool opacity = i == picture.alpha;
                cdef->u16(unsigned(i));
                cdef->u16(opacity);
                cdef->u16(unsigned(opacity ? 0 : colour++));
            }
        }
    }
    ByteWriter out(file);
    if (codestreamSize + 8 > 0xFFFFFFFF) {
        out.u32(0); // to the end of the file
    } else
        out.u32(std::uint32_t(codestreamSize + 8));
    out.u32(fourcc("jp2c"));
    return file;
}

} // namespace jpeg2000
