// bitio.h - the bit reader and the bit writer of the JPEG entropy coders, the plain way.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/hufftable.h"
#include "zmxj.h"

namespace model {

// The state blocks, as they lie in the caller's memory.
struct DecodeState {
    Zmx32u bitBuffer;
    Zmx32u bufferMark;
    Zmx32s bitCount;
    Zmx32s eobRun;
    Zmx32s blockPositions;
};
static_assert(sizeof(DecodeState) == 20);

struct EncodeState {
    Zmx32u bitBuffer;
    Zmx32u bufferMark;
    Zmx32s bitCount;
    Zmx32s eobRun;
    Zmx32s correctionCount;
    Zmx8u correctionBits[1024];
};
static_assert(sizeof(EncodeState) == 1044);

// One call's view of a stream to read.
//
// Behind a marker that was met with too few bits left, a coder takes bits that are not there. What it gets
// then has no meaning: `noValue` says that such a value went into a result, `noPath` that it was (part of) a
// Huffman code, so that the rest of the call has no meaning either.
struct Reader {
    const Zmx8u* src;
    int len;
    int* pos;
    int* marker;
    DecodeState* st;
    bool noValue = false;
    bool noPath = false;
};
ZmxStatus fillBitBuffer(Reader& r, int need);
ZmxStatus decodeSymbol(Reader& r, const DecodeSpec& spec, int& result);
int takeBits(Reader& r, int n);                     // n bits, at least 1, held or not
ZmxStatus fetchBits(Reader& r, int n, int& result); // n bits, refilled if fewer are held
int extend(int v, int n);                           // n bits v as a difference; ITU-T T.81 F.2.2.1, EXTEND

// One call's view of a stream to write.
struct Writer {
    Zmx8u* dst;
    int len;
    int* pos;
    EncodeState* st;
};
ZmxStatus writeBits(Writer& w, Zmx32u bits, int n);
ZmxStatus writeSymbol(Writer& w, const EncodeSpec& spec, int symbol); // symbols above 255 have no code
ZmxStatus flush(Writer& w);

int category(int v); // the number of significant bits of |v|

} // namespace model
