// rows.cpp - samples to packed bytes and back, a row at a time.
#include "codecs/tiff/rows.h"

#include "zmxj.h"

#include <cstring>
#include <stdexcept>

namespace tif {
namespace {

// A literal packet costs a byte more than it holds. Two of them stand apart by more than a pair (a pair alone is absorbed),
// so that one byte in five at the most is added: rows like aabbc.
std::size_t mostPacked(std::size_t n) { return n + n / 5 + 2; }

void pack(const Bytes& row, Bytes& strip) {
    int pos = int(strip.size());
    strip.resize(strip.size() + mostPacked(row.size()));
    if (zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), strip.data(), &pos, int(strip.size())) != zmxStsNoErr)
        throw std::logic_error("a packed row is longer than the longest");
    strip.resize(std::size_t(pos));
}

std::string unpack(const std::uint8_t* strip, int stripBytes, int& pos, Bytes& row) {
    const ZmxStatus status = zmxiUnpackBitsRow_TIFF_8u_C1(strip, &pos, stripBytes, row.data(), int(row.size()));
    // The value of a last run may have been taken from behind the strip.
    if (pos > stripBytes || (status != zmxStsNoErr && pos == stripBytes)) return "the strip ends inside the row";
    if (status != zmxStsNoErr)
        return "the packet at byte " + std::to_string(pos - 1) + " goes beyond the row or the strip";
    return {};
}

// The first sample in the top bit of each byte.
void toBits(const std::uint16_t* row, Bytes& bytes, int samples) {
    for (int i = 0; i < samples; ++i)
        if (row[i]) bytes[std::size_t(i / 8)] |= std::uint8_t(0x80 >> i % 8);
}
void fromBits(const Bytes& bytes, std::uint16_t* row, int samples) {
    for (int i = 0; i < samples; ++i) row[i] = bytes[std::size_t(i / 8)] >> (7 - i % 8) & 1;
}

} // namespace

void packRow(const RowLayout& layout, const std::uint16_t* row, Bytes& strip) {
    if (layout.split) {
        Bytes high(std::size_t(layout.samples)), low(high.size());
        std::uint8_t* const planes[2] = {high.data(), low.data()};
        zmxiSplitRow_TIFF_16u8u_C1(row, planes, layout.samples);
        pack(high, strip);
        return pack(low, strip);
    }
    Bytes bytes(layout.bytes());
    if (layout.bits == 1)
        toBits(row, bytes, layout.samples);
    else if (layout.bits == 16)
        std::memcpy(bytes.data(), row, bytes.size());
    else
        for (int i = 0; i < layout.samples; ++i) bytes[std::size_t(i)] = std::uint8_t(row[i]);
    pack(bytes, strip);
}

std::string unpackRow(const RowLayout& layout, const std::uint8_t* strip, int stripBytes, int& pos,
                      std::uint16_t* row) {
    if (layout.split) {
        Bytes high(std::size_t(layout.samples)), low(high.size());
        if (std::string wrong = unpack(strip, stripBytes, pos, high); !wrong.empty()) return wrong;
        if (std::string wrong = unpack(strip, stripBytes, pos, low); !wrong.empty()) return wrong;
        const std::uint8_t* const planes[2] = {high.data(), low.data()};
        zmxiJoinRow_TIFF_8u16u_C1(planes, row, layout.samples);
    } else {
        Bytes bytes(layout.bytes());
        if (std::string wrong = unpack(strip, stripBytes, pos, bytes); !wrong.empty()) return wrong;
        if (layout.bits == 1)
            fromBits(bytes, row, layout.samples);
        else if (layout.bits == 16)
            std::memcpy(row, bytes.data(), bytes.size());
        else
            for (int i = 0; i < layout.samples; ++i) row[i] = bytes[std::size_t(i)];
        if (layout.swapped && layout.bits == 16)
            for (int i = 0; i < layout.samples; ++i) row[i] = std::uint16_t(row[i] << 8 | row[i] >> 8);
    }
    if (layout.inverted)
        for (int i = 0; i < layout.samples; ++i) row[i] = std::uint16_t(layout.maxval() - row[i]);
    return {};
}

} // namespace tif
