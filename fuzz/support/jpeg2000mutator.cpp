// jpeg2000mutator.cpp - JP2 files by their boxes (ISO/IEC 15444-1, Annex I), codestreams by their marker segments (Annex A).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/parameters.h"
#include "fuzz/support/mutator.h"

#include <algorithm>

namespace fuzz {

namespace {

using namespace codecs::jpeg2000; // the names of markers

std::uint32_t number(ByteView bytes, std::size_t at, std::size_t width) {
    std::uint32_t v = 0;
    for (std::size_t i = 0; i < width; ++i) v = v << 8 | (at + i < bytes.size() ? bytes[at + i] : 0u);
    return v;
}
void put(Bytes& bytes, std::uint32_t v, int width) {
    while (width-- > 0) bytes.push_back(std::uint8_t(v >> 8 * width));
}
void set(Bytes& bytes, std::size_t at, std::uint32_t v, std::size_t width = 1) {
    for (std::size_t i = 0; i < width; ++i)
        if (at + i < bytes.size()) bytes[at + i] = std::uint8_t(v >> 8 * (width - 1 - i));
}
Bytes copy(ByteView part) { return {part.begin(), part.end()}; }
template <class T> auto place(std::vector<T>& in, std::size_t n) { return in.begin() + std::ptrdiff_t(n); }

// A piece again, gone or elsewhere.
template <class T> void changeOrder(std::vector<T>& pieces, Dice& dice) {
    const std::size_t i = dice.below(pieces.size()), k = dice.below(pieces.size());
    if (dice.oneIn(3)) {
        const T again = pieces[i];
        pieces.insert(place(pieces, k), again);
    } else if (dice.oneIn(2) && pieces.size() > 1)
        pieces.erase(place(pieces, i));
    else
        std::swap(pieces[i], pieces[k]);
}

struct Segment {
    std::uint32_t marker;
    Bytes body;
};
// The main header and each tile-part: segments, and what stands behind SOD.
struct Part {
    std::vector<Segment> segments;
    Bytes data;
};

// Reads the segments up to SOD, or up to the next SOT, which is left.
std::size_t takeSegments(ByteView stream, std::size_t at, Part& part) {
    while (at + 2 <= stream.size()) {
        const std::uint32_t marker = number(stream, at, 2);
        if (marker == EOC || (marker == SOT && !part.segments.empty())) break;
        at += 2;
        part.segments.push_back({marker, {}});
        if (marker == SOD) break;
        if (marker == SOC) continue;
        const std::size_t length = number(stream, at, 2);
        if (length < 2 || length > stream.size() - at) break;
        part.segments.back().body = copy(stream.subspan(at + 2, length - 2));
        at += length;
    }
    return at;
}

std::vector<Part> partsOf(ByteView stream) {
    std::vector<Part> parts;
    std::size_t at = 0;
    while (at + 2 <= stream.size() && number(stream, at, 2) != EOC) {
        const std::size_t begin = at;
        parts.emplace_back();
        at = takeSegments(stream, at, parts.back());
        if (at == begin) break;
        const Part& p = parts.back();
        if (parts.size() == 1) continue; // the main header
        const std::uint32_t length = p.segments[0].marker == SOT ? number(p.segments[0].body, 2, 4) : 0;
        const std::size_t end = length ? std::min(begin + length, stream.size()) : stream.size();
        if (end < at) break;
        parts.back().data = copy(stream.subspan(at, end - at));
        at = end;
    }
    return parts;
}

Bytes joined(const std::vector<Part>& parts) {
    Bytes out;
    for (const Part& p : parts) {
        const std::size_t begin = out.size();
        for (const Segment& s : p.segments) {
            put(out, s.marker, 2);
            if (s.marker == SOC || s.marker == SOD) continue;
            put(out, std::uint32_t(s.body.size() + 2), 2);
            out.insert(out.end(), s.body.begin(), s.body.end());
        }
        out.insert(out.end(), p.data.begin(), p.data.end());
        // Psot is that of the new part.
        if (!p.segments.empty() && p.segments[0].marker == SOT)
            set(out, begin + 6, std::uint32_t(out.size() - begin), 4);
    }
    put(out, EOC, 2);
    return out;
}

// Sizes of one or two digits, so that the picture stays small.
void changeSizes(Bytes& siz, Dice& dice) {
    const std::size_t components = siz.size() > 36 ? (siz.size() - 36) / 3 : 0, one = 36 + 3 * dice.below(components);
    switch (dice.below(5)) {
    case 0:
        set(siz, 2 + 4 * dice.below(2), 1 + std::uint32_t(dice.below(100)), 4);
        break; // the far corner
    case 1:
        set(siz, 10 + 4 * dice.below(2), std::uint32_t(dice.below(20)), 4);
        break; // the near one
    case 2:
        set(siz, 18 + 4 * dice.below(2), 1 + std::uint32_t(dice.below(100)), 4);
        break; // a tile
    case 3:
        set(siz, one, std::uint32_t(dice.below(17)) | std::uint32_t(dice.below(2)) << 7);
        break;
    default:
        set(siz, one + 1 + dice.below(2), 1 + std::uint32_t(dice.below(4)));
    }
}

// Behind Scod: order, layers, component transform; then levels, sides of blocks, style, filter, precincts.
void changeCoding(Bytes& cod, Dice& dice) {
    switch (dice.below(9)) {
    case 0:
        set(cod, 0, std::uint32_t(dice.below(8)));
        break;
    case 1:
        set(cod, 1, std::uint32_t(dice.below(5)));
        break;
    case 2:
        set(cod, 2, 1 + std::uint32_t(dice.below(6)), 2);
        break;
    case 3:
        set(cod, 4, std::uint32_t(dice.below(2)));
        break;
    case 4:
        set(cod, 5, std::uint32_t(dice.below(8)));
        break;
    case 5:
        set(cod, 6 + dice.below(2), std::uint32_t(dice.below(5)));
        break;
    case 6:
        set(cod, 8, std::uint32_t(dice.below(64)));
        break;
    case 7:
        set(cod, 9, std::uint32_t(dice.below(2)));
        break;
    default:
        set(cod, 10 + dice.below(8), dice.next() % 256);
    }
}

void changeSegment(Segment& s, std::size_t room, Dice& dice) {
    if (s.marker == SIZ && !dice.oneIn(8)) return changeSizes(s.body, dice);
    if (s.marker == COD && !dice.oneIn(8)) return changeCoding(s.body, dice);
    if (s.marker == SOT) return set(s.body, dice.oneIn(2) ? 1 : 6 + dice.below(2), std::uint32_t(dice.below(4)));
    if (s.marker != SOC && s.marker != SOD) mutateBytes(s.body, std::min<std::size_t>(room, 512), dice);
}

Bytes changeStream(ByteView stream, std::size_t room, Dice& dice) {
    std::vector<Part> parts = partsOf(stream);
    if (parts.size() < 2) return copy(stream);
    for (std::size_t times = 1 + dice.below(3); times > 0; --times) {
        Part& part = parts[dice.below(parts.size())];
        if (dice.oneIn(12))
            changeOrder(parts, dice);
        else if (dice.oneIn(8) && !part.segments.empty())
            changeOrder(part.segments, dice);
        else if (!part.data.empty() && !dice.oneIn(3))
            mutateBytes(part.data, std::min<std::size_t>(room, 4096), dice);
        else if (!part.segments.empty())
            changeSegment(part.segments[dice.below(part.segments.size())], room, dice);
    }
    return joined(parts);
}

struct Box {
    std::uint32_t type;
    Bytes body;
};
constexpr std::uint32_t kHeader = 0x6A703268, kStream = 0x6A703263; // jp2h, which holds boxes, and jp2c

std::vector<Box> boxesOf(ByteView file) {
    std::vector<Box> boxes;
    while (file.size() >= 8) {
        std::size_t length = number(file, 0, 4), head = 8;
        if (length == 0) length = file.size();
        if (length == 1) head = 16, length = number(file, 12, 4);
        if (length < head || length > file.size()) break;
        boxes.push_back({number(file, 4, 4), copy(file.subspan(head, length - head))});
        file = file.subspan(length);
    }
    return boxes;
}

Bytes joined(const std::vector<Box>& boxes) {
    Bytes out;
    for (const Box& b : boxes) {
        put(out, std::uint32_t(b.body.size() + 8), 4);
        put(out, b.type, 4);
        out.insert(out.end(), b.body.begin(), b.body.end());
    }
    return out;
}

Bytes changeBoxes(ByteView file, std::size_t room, Dice& dice) {
    std::vector<Box> boxes = boxesOf(file);
    if (boxes.empty()) return {};
    if (dice.oneIn(10)) changeOrder(boxes, dice);
    const auto stream = std::find_if(boxes.begin(), boxes.end(), [](const Box& b) { return b.type == kStream; });
    if (stream != boxes.end() && !dice.oneIn(3))
        stream->body = changeStream(stream->body, room, dice);
    else {
        Box& box = boxes[dice.below(boxes.size())];
        if (box.type == kHeader)
            box.body = changeBoxes(box.body, room, dice);
        else if (box.type != kStream)
            mutateBytes(box.body, std::min<std::size_t>(room, 512), dice);
    }
    return joined(boxes);
}

} // namespace

std::size_t mutateJpeg2000(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed, std::size_t head) {
    return mutateFile(data, size, maxSize, seed, head, [](ByteView file, std::size_t most, Dice& dice) -> Bytes {
        const std::size_t room = most > file.size() ? most - file.size() : 0;
        return number(file, 0, 2) == SOC ? changeStream(file, room, dice) : changeBoxes(file, room, dice);
    });
}

} // namespace fuzz
