// writer.cpp - segments (ITU-T T.81, B.2) and entropy-coded data (F.1).
#include "codecs/jpeg/writer.h"

#include <new>
#include <numeric>

namespace jpeg {

namespace {

// A block at its worst: 64 codes of 16 bits with up to 16 more each, all bytes 0xFF with their stuffing; and
// the byte that the coder clears behind its last one.
constexpr std::size_t kWorstBlock = 2 * 64 * 4 + 2;

void segment(Output& out, int marker, int payload) {
    out.marker(marker);
    out.word(2 + payload);
}

} // namespace

EncodeSpec encodeSpecOf(const HuffmanTable& table) {
    ZmxiEncodeHuffmanSpec* spec = nullptr;
    const ZmxStatus status = zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(table.bits.data(), table.vals.data(), &spec);
    EncodeSpec owned(spec);
    if (status != zmxStsNoErr) throw Error("a Huffman table cannot be built");
    return owned;
}

HuffmanTable optimalTable(const SymbolCounts& counts) {
    HuffmanTable table;
    std::array<Zmx32s, 257> statistics;
    std::copy(counts.begin(), counts.end(), statistics.begin());
    if (zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), table.bits.data(), table.vals.data()) != zmxStsNoErr)
        throw Error("no Huffman table fits the picture");
    return table;
}

EncodeState newEncodeState() {
    ZmxiEncodeHuffmanState* state = nullptr;
    if (zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&state) != zmxStsNoErr) throw std::bad_alloc();
    return EncodeState(state);
}

void writeJfif(Output& out) {
    segment(out, APP0, 14);
    for (char c : {'J', 'F', 'I', 'F', '\0'}) out.byte(c);
    out.word(0x0101); // version 1.1
    out.byte(0);      // no unit: the densities give the shape of a pixel
    out.word(1);
    out.word(1);
    out.word(0); // no thumbnail
}

void writeAdobe(Output& out, int transform) {
    segment(out, APP14, 12);
    for (char c : {'A', 'd', 'o', 'b', 'e'}) out.byte(c);
    out.word(100); // version
    out.word(0);
    out.word(0);
    out.byte(transform);
}

void writeQuantTable(Output& out, int number, const QuantTable& table) {
    const bool words = *std::max_element(table.begin(), table.end()) > 255;
    segment(out, DQT, words ? 129 : 65);
    out.byte(words << 4 | number);
    for (std::uint16_t q : table) words ? out.word(q) : out.byte(q);
}

void writeHuffmanTable(Output& out, int cls, int number, const HuffmanTable& table) {
    const int count = std::accumulate(table.bits.begin(), table.bits.end(), 0);
    segment(out, DHT, 17 + count);
    out.byte(cls << 4 | number);
    for (std::uint8_t n : table.bits) out.byte(n);
    for (int i = 0; i < count; ++i) out.byte(table.vals[std::size_t(i)]);
}

void writeFrame(Output& out, const Frame& frame) {
    segment(out, frame.sof, 6 + 3 * int(frame.components.size()));
    out.byte(frame.precision);
    out.word(frame.height);
    out.word(frame.width);
    out.byte(int(frame.components.size()));
    for (const Component& c : frame.components) {
        out.byte(c.id);
        out.byte(c.h << 4 | c.v);
        out.byte(c.quant);
    }
}

void writeRestartInterval(Output& out, int mcus) {
    segment(out, DRI, 2);
    out.word(mcus);
}

void writeScan(Output& out, const Frame& frame, const Scan& scan) {
    segment(out, SOS, 4 + 2 * int(scan.components.size()));
    out.byte(int(scan.components.size()));
    for (const ScanComponent& c : scan.components) {
        out.byte(frame.components[std::size_t(c.index)].id);
        out.byte(c.dc << 4 | c.ac);
    }
    out.byte(scan.first);
    out.byte(scan.last);
    out.byte(scan.high << 4 | scan.low);
}

BlockWriter::BlockWriter(Output& o, const HuffmanTable* const dcTables[2], const HuffmanTable* const acTables[2])
    : out(o) {
    for (int i = 0; i < 2; ++i) {
        if (dcTables[i]) dc[i] = encodeSpecOf(*dcTables[i]);
        if (acTables[i]) ac[i] = encodeSpecOf(*acTables[i]);
    }
}

void BlockWriter::block(const Zmx16s* coefficients, int component, int table) {
    zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(coefficients, out.reserve(kWorstBlock), &bits, &lastDc[component],
                                              dc[table].get(), ac[table].get());
    out.advance(std::size_t(bits >> 3));
    bits &= 7;
}

void BlockWriter::finishInterval() {
    if (bits != 0) {
        // One-bits fill the byte (F.1.2.3); should all its bits be ones, it needs stuffing as any other.
        const int last = *out.reserve(2) | 0xFF >> bits;
        out.byte(last);
        if (last == 0xFF) out.byte(0);
    }
    bits = 0;
    std::fill_n(lastDc, kMaxComponents, Zmx16s(0));
}

} // namespace jpeg
