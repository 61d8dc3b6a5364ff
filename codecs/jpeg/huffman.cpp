// huffman.cpp - tables and bit states from the library.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/huffman.h"

#include <new>

namespace codecs::jpeg {

DecodeSpec decodeSpecOf(const std::optional<HuffmanTable>& table, const char* kind, int number, std::uint64_t offset) {
    const std::string name = std::string(kind) + " Huffman table " + std::to_string(number);
    // Abbreviated streams leave tables out (B.5); such a file means nothing without the others.
    if (!table) fail(offset, name + " is missing");
    ZmxiDecodeHuffmanSpec* spec = nullptr;
    const ZmxStatus status = zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(table->bits.data(), table->vals.data(), &spec);
    DecodeSpec owned(spec); // a table that failed is there too
    if (!owned) throw std::bad_alloc();
    if (status != zmxStsNoErr) fail(offset, name + " is no prefix code");
    return owned;
}

// Only of tables that are our own: the standard ones, and optimal ones.
EncodeSpec encodeSpecOf(const HuffmanTable& table) {
    ZmxiEncodeHuffmanSpec* spec = nullptr;
    const ZmxStatus status = zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(table.bits.data(), table.vals.data(), &spec);
    EncodeSpec owned(spec);
    if (!owned) throw std::bad_alloc();
    if (status != zmxStsNoErr) throw Error("a Huffman table cannot be built");
    return owned;
}

// States have no memory of their own but what the library takes for them.
DecodeState newDecodeState() {
    ZmxiDecodeHuffmanState* state = nullptr;
    if (zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&state) != zmxStsNoErr) throw std::bad_alloc();
    return DecodeState(state);
}

EncodeState newEncodeState() {
    ZmxiEncodeHuffmanState* state = nullptr;
    if (zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&state) != zmxStsNoErr) throw std::bad_alloc();
    return EncodeState(state);
}

// By the procedure of K.2: no code of ones alone, and none above 16 bits. The library wants a place behind the counts for
// the symbol that is reserved for that.
HuffmanTable optimalTable(const SymbolCounts& counts) {
    HuffmanTable table;
    std::array<Zmx32s, 257> statistics;
    std::copy(counts.begin(), counts.end(), statistics.begin());
    if (zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), table.bits.data(), table.vals.data()) != zmxStsNoErr)
        throw Error("no Huffman table fits the picture");
    return table;
}

} // namespace codecs::jpeg
