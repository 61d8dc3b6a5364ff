// huffman.h - Huffman tables in the forms of the library, and its bit readers and writers, each with its owner.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"

#include <memory>
#include <optional>

namespace codecs::jpeg {

// Calls one of the library's Free functions.
template <auto Free> struct Freeing {
    template <class T> void operator()(T* block) const { Free(block); }
};
using DecodeSpec = std::unique_ptr<ZmxiDecodeHuffmanSpec, Freeing<zmxiDecodeHuffmanSpecFree_JPEG_8u>>;
using EncodeSpec = std::unique_ptr<ZmxiEncodeHuffmanSpec, Freeing<zmxiEncodeHuffmanSpecFree_JPEG_8u>>;
using DecodeState = std::unique_ptr<ZmxiDecodeHuffmanState, Freeing<zmxiDecodeHuffmanStateFree_JPEG_8u>>;
using EncodeState = std::unique_ptr<ZmxiEncodeHuffmanState, Freeing<zmxiEncodeHuffmanStateFree_JPEG_8u>>;

// The decoder's form of a table that a scan names: a class ("DC", "AC"), a number, and where the scan stands.
DecodeSpec decodeSpecOf(const std::optional<HuffmanTable>& table, const char* kind, int number, std::uint64_t offset);
EncodeSpec encodeSpecOf(const HuffmanTable& table);
DecodeState newDecodeState();
EncodeState newEncodeState();

// How often each symbol occurs; the last entry is the table builder's own.
using SymbolCounts = std::array<Zmx32u, 257>;
// The table that codes them in the fewest bits.
HuffmanTable optimalTable(const SymbolCounts& counts);

} // namespace codecs::jpeg
