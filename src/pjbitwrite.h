// pjbitwrite.h - the bit writer of the JPEG encoders: bit fields with byte stuffing, and the flush.
//
// A writer lives for one call: position and register are locals, put back on every way out.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjhufftbl.h"
#include "pjwrap.h"

#include <algorithm>
#include <cstdlib>

namespace zmx {

// How many bits the magnitude of v takes (ITU-T T.81, table F.1); 16 for -32768 and for the widest DC
// differences.
constexpr int category(int v) {
    const auto a = unsigned(v < 0 ? -v : v);
    return a < 256 ? own_pj_csize[a] : own_pj_csize[a >> 8] + 8;
}

static_assert(category(-32768) == 16 && category(32767 + 32768) == 16);
inline constexpr int kMostCodeBits = 16, kMostValueBits = 16;

// The size of an end-of-band run: how many bits stand behind its symbol. Only a state from elsewhere has a
// run that the table does not reach; its size is as much too large then as the table tells.
inline int eobSize(Zmx32u run) {
    return run < 256 ? own_pj_eobsize[run] : own_pj_eobsize[std::min<Zmx32u>(run >> 8, 511)] + 8;
}

// What an encoder writes for v behind its category: the low bits of this.
inline Zmx32u valueBits(int v) { return Zmx32u(v < 0 ? v - 1 : v); }

struct BitWriter {
    Zmx8u* const dst;
    const int len;
    int pos;    // the next byte to write
    Zmx32u buf; // pending bits from bit 23 downwards
    int count;  // how many

    BitWriter(Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos, ZmxiEncodeHuffmanState* pEncHuffState)
        : dst(pDst), len(dstLenBytes), pos(*pDstCurrPos), buf(pEncHuffState->bitBuffer), count(pEncHuffState->bitCount),
          posOut(pDstCurrPos), state(pEncHuffState) {}
    ~BitWriter() {
        *posOut = pos;
        state->bitBuffer = buf;
        state->bitCount = count;
    }
    BitWriter(const BitWriter&) = delete;
    BitWriter& operator=(const BitWriter&) = delete;

    void written() { state->bufferMark = 0; }
    // How many bytes there is room for: none at a position outside of the destination.
    int room() const { return pos < 0 ? 0 : len - pos; }
    // Stores a byte; false if there is no room.
    bool put(Zmx8u byte) {
        if (Zmx32u(pos) >= Zmx32u(len)) return false;
        dst[pos++] = byte;
        return true;
    }
    // Whether a register is as writers leave it: at most 7 bits pending, and zeros behind them.
    static bool regular(Zmx32u buf, int count) { return count >= 0 && count <= 7 && buf << (8 + count) == 0; }
    bool regular() const { return regular(buf, count); }
    // For one that has written in its place.
    void moveTo(int newPos, Zmx32u newBuf, int newCount) {
        if (newPos != pos || newCount != count) written();
        pos = newPos;
        buf = newBuf;
        count = newCount;
    }

private:
    int* const posOut;
    ZmxiEncodeHuffmanState* const state;
};

// Writes the low nBits (up to 16) of bits. zmxStsHuffTableErr for no bits: a symbol without a code; nothing
// changes. zmxStsOutOfBufErr when the destination is full: what was pending stays as it was, the bytes
// already stored stay too. The count of a state that came from elsewhere may be any number: it wraps, and no
// byte goes where there is no room.
inline ZmxStatus ownpj_write_bits_jpeg(Zmx32u bits, int nBits, BitWriter& out) {
    if (nBits == 0) return zmxStsHuffTableErr;
    int total = wrapAdd(out.count, nBits);
    Zmx32u w = (bits & ((1u << nBits) - 1)) << (wrapSub(24, total) & 31) | out.buf;
    for (; total >= 8; total -= 8, w <<= 8) {
        const Zmx8u byte = Zmx8u(w >> 16);
        if (!out.put(byte) || (byte == 0xFF && !out.put(0))) return zmxStsOutOfBufErr;
    }
    out.written();
    out.buf = w;
    out.count = total;
    return zmxStsNoErr;
}

// The code of a symbol. A category of 16 behind a run of 15 lies outside the table: it has no code.
inline Zmx32u codeOf(const ZmxiEncodeHuffmanSpec& table, int symbol) { return symbol < 256 ? table.codes[symbol] : 0; }

inline ZmxStatus writeSymbol(const ZmxiEncodeHuffmanSpec& table, int symbol, BitWriter& out) {
    const Zmx32u code = codeOf(table, symbol);
    return ownpj_write_bits_jpeg(code & 0xFFFF, int(code >> 16), out);
}

// Writes a symbol and the n bits of the value v behind it.
inline ZmxStatus writeCoded(const ZmxiEncodeHuffmanSpec& table, int symbol, int n, int v, BitWriter& out) {
    if (ZmxStatus failed = writeSymbol(table, symbol, out)) return failed;
    return n ? ownpj_write_bits_jpeg(valueBits(v), n, out) : zmxStsNoErr;
}

// Fills the last byte with one-bits, drops those that are too many, and initialises the state whatever the
// write says.
ZmxStatus flushWriter(Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos, ZmxiEncodeHuffmanState* pEncHuffState);

} // namespace zmx
