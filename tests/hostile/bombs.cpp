// bombs.cpp - small files that ask for much: sizes, tiles, resolutions, scans, segments, loops of directories.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg2000/jpeg2000.h"
#include "tests/hostile/readers.h"

#include <algorithm>
#include <array>

namespace hostile {

namespace {

using codecs::Picture;

void put(Bytes& to, std::uint64_t v, int width) {
    while (width-- > 0) to.push_back(std::uint8_t(v >> 8 * width));
}
void putLittle(Bytes& to, std::uint64_t v, int width) {
    for (int i = 0; i < width; ++i) to.push_back(std::uint8_t(v >> 8 * i));
}
void append(Bytes& to, ByteView more) { to.insert(to.end(), more.begin(), more.end()); }
Bytes times(std::size_t n, const Bytes& part) {
    Bytes all;
    for (; n > 0; --n) append(all, part);
    return all;
}
Bytes text(const char* s) { return {s, s + std::char_traits<char>::length(s)}; }

std::size_t find(ByteView file, const Bytes& what) {
    return std::size_t(std::search(file.begin(), file.end(), what.begin(), what.end()) - file.begin());
}

// ---- JPEG (ITU-T T.81)

Bytes segment(int marker, const Bytes& body) {
    Bytes s{0xFF, std::uint8_t(marker)};
    put(s, body.size() + 2, 2);
    append(s, body);
    return s;
}

Bytes sample(int width, int height, const codecs::jpeg::EncodeOptions& options, int channels = 3) {
    Picture picture(codecs::shapeOf(width, height, channels));
    std::fill(picture.all().begin(), picture.all().end(), std::uint8_t(90));
    return codecs::jpeg::encode(picture, options);
}

// The file with other segments behind SOI.
Bytes behindStart(const Bytes& file, const Bytes& more) {
    Bytes out{0xFF, 0xD8};
    append(out, more);
    append(out, ByteView(file).subspan(2));
    return out;
}

// The size in the frame header; the data stay as they are.
Bytes resized(Bytes file, int sof, unsigned width, unsigned height) {
    const std::size_t at = find(file, {0xFF, std::uint8_t(sof), 0});
    for (int i = 0; i < 2; ++i) {
        file[at + 5 + std::size_t(i)] = std::uint8_t(height >> 8 * (1 - i));
        file[at + 7 + std::size_t(i)] = std::uint8_t(width >> 8 * (1 - i));
    }
    return file;
}

std::vector<Bomb> jpegBombs(unsigned side) {
    codecs::jpeg::EncodeOptions plain, progressive, wide, lossless;
    progressive.progressive = true;
    wide.factors = {{4, 4}, {1, 1}, {1, 1}};
    wide.progressive = true;
    lossless.lossless = 1;
    const Bytes base = sample(64, 64, plain), scans = sample(64, 64, progressive);
    // A scan that corrects one more bit of the DC, again and again; and one that has none at all.
    const std::size_t eoi = scans.size() - 2;
    Bytes many(scans.begin(), scans.begin() + std::ptrdiff_t(eoi));
    append(many, times(60000, segment(0xDA, {1, 1, 0, 0, 0, 0x10})));
    append(many, Bytes{0xFF, 0xD9});
    const Bytes icc = [] {
        Bytes b = text("ICC_PROFILE");
        append(b, Bytes{0, 1, 255});
        b.resize(65533, 7);
        return b;
    }();
    Bytes exif = text("Exif");
    append(exif, Bytes{0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x87, 0x69, 0, 4, 0, 0, 0, 1, 0, 0, 0, 8, 0, 0, 0, 8});
    return {
        {"largest", resized(base, 0xC0, 65500, 65500)},
        {"one-row", resized(base, 0xC0, 65500, 1)},
        {"one-column", resized(scans, 0xC2, 1, 65500)},
        {"padded-column", resized(sample(64, 64, wide), 0xC2, 1, 65500)},
        {"padded-row", resized(sample(64, 64, wide), 0xC2, 65500, 1)},
        {"as-allowed", resized(scans, 0xC2, side, side)},
        {"lossless-as-allowed", resized(sample(64, 64, lossless), 0xC3, side, side)},
        {"scans", many},
        {"profile-of-255-parts", behindStart(base, times(200, segment(0xE2, icc)))},
        {"directories-in-a-ring", behindStart(base, segment(0xE1, exif))},
        {"comments", behindStart(base, times(100000, segment(0xFE, {})))},
        {"tables", behindStart(base, times(2000, segment(0xDB, Bytes(65, 1))))},
        {"fill-bytes", behindStart(base, Bytes(1 << 20, 0xFF))},
        {"restarts", behindStart(resized(base, 0xC0, side, side), segment(0xDD, {0, 1}))},
    };
}

// ---- JPEG2000 (ISO/IEC 15444-1)

// A codestream of nothing but headers: sizes, components, levels, precincts, layers.
struct Headers {
    std::uint32_t x1 = 256, y1 = 256, tile = 256;
    unsigned components = 1, sampling = 1, levels = 5, layers = 1, block = 4, precinct = 0xFF;
    unsigned order = 0;
    Bytes more; // segments of the main header

    Bytes stream(const Bytes& body) const {
        Bytes s{0xFF, 0x4F};
        Bytes siz{0, 0};
        for (const std::uint32_t v : {x1, y1, 0u, 0u, tile, tile, 0u, 0u}) put(siz, v, 4);
        put(siz, components, 2);
        append(siz, times(components, {7, std::uint8_t(sampling), std::uint8_t(sampling)}));
        append(s, segment(0x51, siz));
        Bytes cod{std::uint8_t(precinct != 0xFF), std::uint8_t(order)};
        put(cod, layers, 2);
        append(cod, Bytes{0, std::uint8_t(levels), std::uint8_t(block), std::uint8_t(block), 0, 1});
        if (precinct != 0xFF) append(cod, Bytes(levels + 1, std::uint8_t(precinct)));
        append(s, segment(0x52, cod));
        append(s, segment(0x5C, [&] {
                   Bytes qcd{0x40};
                   append(qcd, Bytes(3 * levels + 1, 0x48));
                   return qcd;
               }()));
        append(s, more);
        append(s, segment(0x90, {0, 0, 0, 0, 0, 0, 0, 1}));
        append(s, Bytes{0xFF, 0x93});
        append(s, body);
        append(s, Bytes{0xFF, 0xD9});
        return s;
    }
};

Bytes box(const char* type, const Bytes& body) {
    Bytes b;
    put(b, body.size() + 8, 4);
    append(b, text(type));
    append(b, body);
    return b;
}

std::vector<Bomb> jpeg2000Bombs(unsigned side) {
    const auto headers = [side](auto set, std::size_t bytes = 64, std::uint8_t value = 0) {
        Headers h;
        h.x1 = h.y1 = h.tile = side;
        set(h);
        return h.stream(Bytes(bytes, value));
    };
    std::vector<Bomb> bombs{
        {"largest", headers([](Headers& h) { h.x1 = h.y1 = h.tile = 0x7FFFFFFF; })},
        {"one-row", headers([](Headers& h) { h.x1 = h.tile = 65535, h.y1 = 1; })},
        {"tiles-of-one", headers([](Headers& h) { h.tile = 1, h.x1 = h.y1 = 255; })},
        {"tiles-by-components",
         headers([](Headers& h) { h.tile = 1, h.x1 = h.y1 = h.sampling = 255, h.components = 16384; })},
        {"components", headers([](Headers& h) { h.components = 16384, h.x1 = h.y1 = 2; })},
        {"components-and-levels", headers([](Headers& h) { h.components = 16384, h.levels = 32, h.x1 = h.y1 = 4; })},
        {"blocks-of-four", headers([](Headers& h) { h.block = 0; })},
        {"precincts-of-two", headers([](Headers& h) { h.precinct = 0x11, h.block = 0; })},
        {"precincts-of-one", headers([](Headers& h) { h.precinct = 0x00, h.levels = 0, h.block = 0; })},
        {"layers", headers([](Headers& h) { h.layers = 65535; }, 1 << 20)},
        {"layers-of-precincts", headers([](Headers& h) { h.layers = 65535, h.precinct = 0x22, h.order = 2; }, 1 << 20)},
        {"ones", headers([](Headers& h) { h.layers = 64; }, 1 << 20, 0xFE)},
        {"empty-packed-headers", headers([](Headers& h) {
             h.more = times(200, segment(0x60, {0, 0, 0, 0, 0}));
         })},
        {"tile-lengths", headers([](Headers& h) {
             h.more = times(200, segment(0x55, [] {
                                Bytes tlm{0, 0x60};
                                tlm.resize(60002, 1);
                                return tlm;
                            }()));
         })},
        {"changes", headers([](Headers& h) {
             h.layers = 65535;
             h.more = segment(0x5F, times(9000, {0, 0, 0xFF, 0xFF, 33, 1, 2}));
         })},
    };
    Bytes boxes = box("jP  ", {0x0D, 0x0A, 0x87, 0x0A});
    append(boxes, box("ftyp", text("jp2     jp2 ")));
    // 1024 entries of 255 columns.
    Bytes palette{0x04, 0x00, 0xFF};
    palette.resize(3 + 255, 7);
    palette.resize(3 + 255 + 1024 * 255, 1);
    Bytes header = box("ihdr", {0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 7, 7, 0, 0});
    append(header, box("pclr", palette));
    append(header, box("cmap", [] {
               Bytes map;
               for (int i = 0; i < 255; ++i) append(map, Bytes{0, 0, 1, std::uint8_t(i)});
               return map;
           }()));
    append(boxes, box("jp2h", header));
    append(boxes, box("jp2c", headers([](Headers&) {})));
    bombs.push_back({"palette", boxes});
    bombs.push_back({"boxes", times(100000, box("free", {}))});
    return bombs;
}

// ---- textures, TIFF, pictures, PGX

std::vector<Bomb> textureBombs() {
    Bytes dds = text("DDS ");
    for (const unsigned v : {124u, 0x000A1007u, 32768u, 32768u, 0u, 0u, 16u}) putLittle(dds, v, 4);
    dds.resize(4 + 72);
    for (const unsigned v : {32u, 4u, 0x30315844u, 0u, 0u, 0u, 0u, 0u, 0x00401008u, 0xFE00u, 0u, 0u, 0u})
        putLittle(dds, v, 4);
    Bytes array = dds;
    for (const unsigned v : {98u, 3u, 4u, 0xFFFFFFFFu, 0u}) putLittle(array, v, 4);
    return {{"largest", dds}, {"array", array}};
}

// A little-endian directory with these entries: tag, type, count, value.
Bytes tiff(const std::vector<std::array<std::uint32_t, 4>>& entries, std::uint32_t next) {
    Bytes t{'I', 'I', 42, 0, 8, 0, 0, 0};
    putLittle(t, entries.size(), 2);
    for (const auto& e : entries) {
        putLittle(t, e[0], 2);
        putLittle(t, e[1], 2);
        putLittle(t, e[2], 4);
        putLittle(t, e[3], 4);
    }
    putLittle(t, next, 4);
    return t;
}

std::vector<Bomb> tiffBombs(std::uint32_t allowed) {
    const auto picture = [](std::uint32_t side, std::uint32_t rows, std::uint32_t compression, std::uint32_t strips) {
        return tiff({{256, 4, 1, side},
                     {257, 4, 1, side},
                     {258, 3, 1, 8},
                     {259, 3, 1, compression},
                     {262, 3, 1, 1},
                     {273, 4, strips, 8},
                     {277, 3, 1, 1},
                     {278, 4, 1, rows},
                     {279, 4, strips, 64}},
                    8);
    };
    const Bytes tiles = tiff({{256, 4, 1, 256},
                              {257, 4, 1, 256},
                              {258, 3, 1, 8},
                              {259, 3, 1, 32773},
                              {262, 3, 1, 1},
                              {277, 3, 1, 1},
                              {322, 4, 1, 0x7FFFFFF0},
                              {323, 4, 1, 0x7FFFFFF0},
                              {324, 4, 1, 8},
                              {325, 4, 1, 64}},
                             0);
    // Sixty-four channels of eight bytes, in one tile as large as is allowed; the widths of samples stand behind the directory.
    constexpr std::uint32_t entries = 12, channels = 64;
    Bytes wide = tiff({{256, 4, 1, allowed},
                       {257, 4, 1, allowed},
                       {258, 3, channels, 8 + 2 + 12 * entries + 4},
                       {259, 3, 1, 32773},
                       {262, 3, 1, 1},
                       {277, 3, 1, channels},
                       {284, 3, 1, 1},
                       {322, 4, 1, allowed / 16 * 16},
                       {323, 4, 1, allowed / 16 * 16},
                       {324, 4, 1, 8},
                       {325, 4, 1, 64},
                       {339, 3, 1, 3}},
                      0);
    append(wide, times(channels, {64, 0}));
    return {{"channels", wide},
            {"ring", picture(256, 256, 1, 1)},
            {"largest", picture(0x7FFFFFFF, 1, 1, 1)},
            {"one-strip", picture(256, 0xFFFFFFFF, 32773, 1)},
            {"strips", picture(256, 1, 32773, 0x10000000)},
            {"tiles", tiles},
            {"many-entries", tiff(std::vector<std::array<std::uint32_t, 4>>(65535, {33432, 2, 0x7FFFFFFF, 8}), 0)}};
}

std::vector<Bomb> pictureBombs(unsigned side) {
    std::vector<Bomb> bombs = tiffBombs(side);
    bombs.push_back({"pgm", text("P5\n2147483647 2147483647\n65535\n")});
    bombs.push_back({"plain", [] {
                         Bytes b = text("P2\n256 256\n255\n");
                         b.resize(1 << 20, '#');
                         return b;
                     }()});
    bombs.push_back({"pam", [] {
                         Bytes b = text("P7\nWIDTH 256\nHEIGHT 256\nDEPTH 2147483647\nMAXVAL 255\nENDHDR\n");
                         return b;
                     }()});
    Bytes bmp = text("BM");
    for (const std::uint32_t v : {100u, 0u, 54u, 40u, 256u, 256u}) putLittle(bmp, v, 4);
    putLittle(bmp, 1, 2);
    putLittle(bmp, 8, 2);
    for (const std::uint32_t v : {1u, 0u, 0u, 0u, 0xFFFFFFFFu, 0u}) putLittle(bmp, v, 4);
    bombs.push_back({"colours-without-end", bmp});
    return bombs;
}

std::vector<Bomb> pgxBombs() {
    return {{"largest", text("PG ML + 16 2147483647 2147483647\n")}, {"wide", text("PG ML +8 4294967295 1\nabc")}};
}

} // namespace

std::vector<Bomb> bombsFor(const std::string& reader, std::uint64_t maxPixels) {
    unsigned side = 1; // of the largest square that is allowed
    while (std::uint64_t(side + 1) * (side + 1) <= maxPixels && side < 32000) ++side;
    return reader == "jpeg"       ? jpegBombs(side)
           : reader == "jpeg2000" ? jpeg2000Bombs(side)
           : reader == "dds"      ? textureBombs()
           : reader == "tiff"     ? tiffBombs(side)
           : reader == "picture"  ? pictureBombs(side)
                                  : pgxBombs();
}

} // namespace hostile
