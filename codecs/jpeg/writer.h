// writer.h - a growing file, the segments of a JPEG file, Huffman tables on their way into it, and the blocks
// of a sequential scan with tables that are known beforehand.
#pragma once

#include "codecs/jpeg/format.h"

#include <memory>

namespace jpeg {

// Bytes with room behind them, so that a coder without bounds can write there.
class Output {
public:
    // At least `room` bytes may be written at the pointer returned; then advance().
    std::uint8_t* reserve(std::size_t room) {
        if (bytes.size() - used < room) bytes.resize(std::max(2 * bytes.size(), used + room));
        return bytes.data() + used;
    }
    void advance(std::size_t n) { used += n; }
    void byte(int v) {
        *reserve(1) = std::uint8_t(v);
        ++used;
    }
    void word(int v) { byte(v >> 8), byte(v & 0xFF); }
    void marker(int m) { byte(0xFF), byte(m); }
    std::vector<std::uint8_t> take() {
        bytes.resize(used);
        return std::move(bytes);
    }

private:
    std::vector<std::uint8_t> bytes;
    std::size_t used = 0;
};

struct FreeEncodeSpec {
    void operator()(ZmxiEncodeHuffmanSpec* spec) const { zmxiEncodeHuffmanSpecFree_JPEG_8u(spec); }
};
using EncodeSpec = std::unique_ptr<ZmxiEncodeHuffmanSpec, FreeEncodeSpec>;
EncodeSpec encodeSpecOf(const HuffmanTable& table);

// How often each symbol occurs; the last entry is the table builder's own.
using SymbolCounts = std::array<Zmx32u, 257>;
// The table that codes them in the fewest bits.
HuffmanTable optimalTable(const SymbolCounts& counts);

// A bit writer of the library.
struct FreeEncodeState {
    void operator()(ZmxiEncodeHuffmanState* s) const { zmxiEncodeHuffmanStateFree_JPEG_8u(s); }
};
using EncodeState = std::unique_ptr<ZmxiEncodeHuffmanState, FreeEncodeState>;
EncodeState newEncodeState();

void writeJfif(Output& out);
void writeAdobe(Output& out, int transform);
void writeQuantTable(Output& out, int number, const QuantTable& table);
void writeHuffmanTable(Output& out, int cls, int number, const HuffmanTable& table); // cls: 0 DC, 1 AC
void writeFrame(Output& out, const Frame& frame);
void writeRestartInterval(Output& out, int mcus);
void writeScan(Output& out, const Frame& frame, const Scan& scan);

class BlockWriter {
public:
    // Tables 0 and 1 of each class; those of which there is none may be null.
    BlockWriter(Output& out, const HuffmanTable* const dc[2], const HuffmanTable* const ac[2]);

    // `component` keeps the DC predictor, `table` codes.
    void block(const Zmx16s* coefficients, int component, int table);
    // The end of the scan or of a restart interval: fills up the last byte.
    void finishInterval();

private:
    Output& out;
    EncodeSpec dc[2], ac[2];
    Zmx16s lastDc[kMaxComponents] = {};
    int bits = 0; // of the byte behind the output that are written, 0 to 7
};

} // namespace jpeg
