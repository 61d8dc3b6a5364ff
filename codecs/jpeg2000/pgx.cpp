// pgx.cpp - PGX files in and out.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/pgx.h"

#include "codecs/jpeg2000/numbers.h"

#include <algorithm>
#include <cctype>

namespace codecs::jpeg2000 {

namespace {

// The words of the first line, one after the other.
class Words {
    ByteView bytes;
    std::size_t pos = 0;

public:
    explicit Words(ByteView file) : bytes(file) {}
    std::string next() {
        while (pos < bytes.size() && bytes[pos] == ' ') ++pos;
        std::string word;
        while (pos < bytes.size() && !std::isspace(bytes[pos])) word += char(bytes[pos++]);
        need(!word.empty() && word.size() < 16, "a PGX file with a broken first line");
        return word;
    }
    int number(int least, int most, const char* what) {
        const std::string word = next();
        std::int64_t v = 0; // holds the 15 digits of the longest word
        for (const char c : word) {
            need(c >= '0' && c <= '9', what);
            v = 10 * v + (c - '0');
        }
        need(v >= least && v <= most, what);
        return int(v);
    }
    // What is behind the end of the line.
    ByteView rest() {
        if (pos < bytes.size() && bytes[pos] == '\r') ++pos;
        need(pos < bytes.size() && bytes[pos] == '\n', "a PGX file with a broken first line");
        return bytes.subspan(pos + 1);
    }
};

// One sample, with the bits above its depth.
std::int32_t sampleAt(ByteView bytes, std::size_t width, bool littleEndian) {
    if (width == 1) return bytes[0];
    return littleEndian ? bytes[1] << 8 | bytes[0] : bytes[0] << 8 | bytes[1];
}

} // namespace

// "PG ML + 8 640 480": byte order, sign and depth, width, height.
Component readPgx(ByteView file) {
    constexpr int largest = 1 << 29;
    Words words(file);
    need(words.next() == "PG", "not a PGX file");
    const std::string order = words.next();
    need(order == "ML" || order == "LM", "a PGX file of an unknown byte order");
    Component c;
    // The sign stands ahead of the depth, with or without a space.
    std::string depth = words.next();
    if (depth[0] == '+' || depth[0] == '-') {
        c.isSigned = depth[0] == '-';
        depth = depth.size() > 1 ? depth.substr(1) : words.next();
    }
    need(depth.size() <= 2 && std::all_of(depth.begin(), depth.end(), [](unsigned char d) { return std::isdigit(d); }),
         "a PGX file with a broken depth");
    c.depth = std::stoi(depth);
    need(c.depth >= 1 && c.depth <= 16, "a PGX file of a depth that is not 1 to 16");
    c.width = words.number(1, largest, "a PGX file of an impossible size");
    c.height = words.number(1, largest, "a PGX file of an impossible size");
    const ByteView bytes = words.rest();
    const std::size_t wide = c.depth > 8 ? 2 : 1;
    const std::size_t count = std::size_t(c.width) * std::size_t(c.height);
    // Ahead of taking memory for them.
    need(count <= bytes.size() / wide, "a PGX file that ends early");
    // Bits above the depth do not count, but for the sign.
    const std::int32_t mask = (1 << c.depth) - 1, sign = c.isSigned ? 1 << (c.depth - 1) : 0;
    c.samples.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t v = sampleAt(bytes.subspan(i * wide), wide, order == "LM") & mask;
        c.samples.push_back(v & sign ? v - mask - 1 : v);
    }
    return c;
}

Bytes writePgx(const Component& c) {
    const std::string line = std::string("PG ML ") + (c.isSigned ? "-" : "+") + " " + std::to_string(c.depth) + " " +
                             std::to_string(c.width) + " " + std::to_string(c.height) + "\n";
    Bytes file(line.begin(), line.end());
    ByteWriter out(file);
    for (const std::int32_t v : c.samples) out.number(std::uint32_t(v), c.depth > 8 ? 2 : 1);
    return file;
}

PlanarPicture fromComponents(std::vector<Component> components) {
    PlanarPicture picture;
    for (const Component& c : components) {
        // The largest component has every point of the grid, the others every dx-th.
        picture.x1 = std::max(picture.x1, std::uint32_t(c.width));
        picture.y1 = std::max(picture.y1, std::uint32_t(c.height));
    }
    for (Component& c : components) {
        // ceil(x1 / dx) is the width for the smallest dx of those that give it.
        const auto sampling = [](std::uint32_t all, int own) { return int((all + unsigned(own) - 1) / unsigned(own)); };
        c.dx = sampling(picture.x1, c.width);
        c.dy = sampling(picture.y1, c.height);
        // XRsiz and YRsiz have a byte each.
        need(c.dx <= 255 && c.dy <= 255, "components whose sizes have nothing in common");
        picture.components.push_back(std::move(c));
    }
    return picture;
}

} // namespace codecs::jpeg2000
