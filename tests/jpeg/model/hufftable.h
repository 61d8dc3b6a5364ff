// hufftable.h - Huffman tables in fast form and the optimal table, the plain way.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace model {

// The decoder table, as it lies in the caller's memory.
struct DecodeSpec {
    Zmx16u huffVal[256];   // the symbols in code order
    Zmx32u fastTable[256]; // by the next 8 bits: symbol | length << 16
    Zmx16u minCode[18];    // by code length
    Zmx16u maxCode[18];
    Zmx16u valIndex[18];
};
static_assert(sizeof(DecodeSpec) == 1644);

// The encoder table: code | length << 16 by symbol.
struct EncodeSpec {
    Zmx32u word[256];
};
static_assert(sizeof(EncodeSpec) == 1024);

// BITS (16 bytes) and HUFFVAL into a table; 0 or -64.
ZmxStatus buildDecodeSpec(const Zmx8u* bits, const Zmx8u* vals, DecodeSpec& spec);
ZmxStatus buildEncodeSpec(const Zmx8u* bits, const Zmx8u* vals, EncodeSpec& spec);

// 257 frequencies, the last one replaced, into BITS and HUFFVAL; 0 or -64. vals has room for 256 bytes.
ZmxStatus optimalTable(const Zmx32s* statistics, Zmx8u* bits, Zmx8u* vals);

// How many symbols optimalTable stored, and the code size of each symbol, for looking closer.
struct OptimalTrace {
    int listed = 0;
    int codeSize[257] = {};
};
ZmxStatus optimalTable(const Zmx32s* statistics, Zmx8u* bits, Zmx8u* vals, OptimalTrace& trace);

} // namespace model
