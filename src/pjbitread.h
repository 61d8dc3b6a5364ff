// pjbitread.h - the bit readers of the JPEG decoders: refill with stuffing and markers, one symbol, one bit
// field.
//
// A reader lives for one call: position, bits and marker are locals, put back on every way out. What callers
// see of it is exact: when bytes are read, where the position stands, and all 32 bits of the buffer that is
// left in the state.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjhufftbl.h"
#include "pjwords.h"

#include <limits>

namespace zmx {

// The n bits (up to 16) of bits that stand above the low count ones. Where a marker cut the data short the
// count is negative. The value means nothing then, but it has to be one: the count goes modulo 32.
inline Zmx32u bitsAt(Zmx32u bits, int count, int n) { return bits >> (count & 31) & ((1u << n) - 1); }

// The value of category s that the bits v stand for (ITU-T T.81, F.2.2.1, EXTEND); 0 for category 0.
inline int extend(Zmx32u v, int s) {
    return int(v) < own_pj_extend_test[std::size_t(s)] ? int(v) + own_pj_lowest_coef[std::size_t(s)] : int(v);
}

// Moves a reader on to stop, over data bytes of which those from p on enter the buffer.
template <class Reader> void advance(Reader& in, const Zmx8u* p, const Zmx8u* stop, int count) {
    for (; p < stop; p += *p == 0xFF ? 2 : 1) in.buf = in.buf << 8 | *p;
    in.pos = int(stop - in.src);
    in.count = count;
}

// The reader of a state, in a source of known length.
struct BitReader {
    const Zmx8u* const src;
    const int len;
    int pos;    // the next byte to read
    int marker; // 0 until one is met; no byte is read after that
    Zmx32u buf; // the newest byte in bits 0 to 7
    int count;  // how many low bits of buf are not used yet; negative when a marker cut a field short

    BitReader(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, int* pMarker, ZmxiDecodeHuffmanState* pDecHuffState)
        : src(pSrc), len(*pSrcCurrPos < 0 ? kNothing : nSrcLen), pos(*pSrcCurrPos), marker(*pMarker),
          buf(pDecHuffState->bitBuffer), count(pDecHuffState->bitCount), posOut(pSrcCurrPos), markerOut(pMarker),
          state(pDecHuffState) {}
    ~BitReader() {
        *posOut = pos;
        *markerOut = marker;
        state->bitBuffer = buf;
        state->bitCount = count;
    }
    BitReader(const BitReader&) = delete;
    BitReader& operator=(const BitReader&) = delete;

    bool ended() const { return pos >= len; }
    Zmx32u next() { return src[pos++]; }
    void append(Zmx32u byte) {
        buf = buf << 8 | byte;
        count += 8;
        state->bufferMark = 0;
    }
    // A whole refill at once, if none of the next four bytes is 0xFF; else nothing is done.
    bool appendWord() {
        if (unsigned(count) > 24 || len - pos < 4) return false;
        const Zmx32u word = loadBigEndian32(src + pos);
        if (hasFF(word)) return false;
        const int bytes = (32 - count) / 8;
        buf = Zmx32u((std::uint64_t(buf) << 32 | word) >> (32 - 8 * bytes));
        pos += bytes;
        count += 8 * bytes;
        state->bufferMark = 0;
        return true;
    }
    void moveTo(const Zmx8u* p, const Zmx8u* stop, int newCount) {
        if (p < stop) state->bufferMark = 0;
        advance(*this, p, stop, newCount);
    }
    // Takes n bits (up to 16) that have been asked for.
    Zmx32u take(int n) {
        count -= n;
        return bitsAt(buf, count, n);
    }

private:
    int* const posOut;
    int* const markerOut;
    ZmxiDecodeHuffmanState* const state;

    // The length of a source that is read at a position ahead of it: every position is at its end.
    static constexpr int kNothing = std::numeric_limits<int>::min();
};

// Appends bytes until 25 bits are held, with n of them needed at once. Returns zmxStsOutOfBufErr when the
// source ends before that, at a 0xFF always: its meaning is lost. A new marker ends it with zmxStsNoErr even
// if it leaves too few.
template <class Reader> ZmxStatus appendBytes(Reader& in, int n) {
    while (in.count < 25) {
        if (in.ended()) return n > in.count ? zmxStsOutOfBufErr : zmxStsNoErr;
        const Zmx32u byte = in.next();
        if (byte == 0xFF) {
            Zmx32u code;
            do { // any further 0xFF is fill
                if (in.ended()) return zmxStsOutOfBufErr;
                code = in.next();
            } while (code == 0xFF);
            if (code != 0) {
                in.marker = int(code);
                return zmxStsNoErr;
            }
        }
        in.append(byte);
    }
    return zmxStsNoErr;
}

// Refills, with nBitsNeeded of the bits needed at once. A marker that was met before gives zmxStsDCTRangeErr
// if too few are held.
ZmxStatus ownpj_FillBitBuffer(BitReader& in, int nBitsNeeded);

// Sees to it that n bits are held.
inline ZmxStatus need(BitReader& in, int n) { return in.count < n ? ownpj_FillBitBuffer(in, n) : zmxStsNoErr; }

// The symbol of code c of the given length. In a table with more codes than there is room for, c may lie
// below minCode: the index goes modulo 256, and so stays in the list.
inline int symbolOf(const ZmxiDecodeHuffmanSpec& table, int length, Zmx32u c) {
    return table.huffVal[(table.valIndex[length] - table.minCode[length] + c) & 255];
}

// Decodes a symbol whose code is at least minLength long, bit by bit. A code that the table does not hold
// stores 0 and returns zmxStsDCTRangeErr.
ZmxStatus decodeLongSymbol(BitReader& in, int* pResult, const ZmxiDecodeHuffmanSpec& table, int minLength);

// Decodes a symbol: by the next 8 bits where there are that many and the code is no longer.
inline ZmxStatus ownpj_DecodeHuffSymbol(BitReader& in, int* pResult, const ZmxiDecodeHuffmanSpec& table) {
    if (in.count < 8) {
        if (ZmxStatus failed = ownpj_FillBitBuffer(in, 0)) return failed;
        if (in.count < 8) return decodeLongSymbol(in, pResult, table, 1);
    }
    const Zmx32u entry = table.fastTable[bitsAt(in.buf, in.count - 8, 8)];
    if (entry >> 16 == 0) return decodeLongSymbol(in, pResult, table, 9);
    in.count -= int(entry >> 16);
    *pResult = int(entry & 0xFFFF);
    return zmxStsNoErr;
}

// The reader of the Direct decoder: the caller's two words, and a source that ends in a marker.
struct DirectReader {
    const Zmx8u* const src;
    int pos;
    int marker;
    Zmx32u buf;
    int count;

    DirectReader(const Zmx8u* pSrc, int bytePos, int* pMarker, Zmx32u* pPrefetchedBits, Zmx32s* pNumValidPrefetchedBits)
        : src(pSrc), pos(bytePos), marker(*pMarker), buf(*pPrefetchedBits), count(*pNumValidPrefetchedBits),
          markerOut(pMarker), bufOut(pPrefetchedBits), countOut(pNumValidPrefetchedBits) {}
    ~DirectReader() { // the position goes back only where a block ends well
        *markerOut = marker;
        *bufOut = buf;
        *countOut = count;
    }
    DirectReader(const DirectReader&) = delete;
    DirectReader& operator=(const DirectReader&) = delete;

    static bool ended() { return false; }
    Zmx32u next() { return src[pos++]; }
    void append(Zmx32u byte) {
        buf = buf << 8 | byte;
        count += 8;
    }
    void moveTo(const Zmx8u* p, const Zmx8u* stop, int newCount) { advance(*this, p, stop, newCount); }
    void refill() {
        if (marker <= 0) appendBytes(*this, 0);
    }
    Zmx32u take(int n) {
        count -= n;
        return bitsAt(buf, count, n);
    }

private:
    int* const markerOut;
    Zmx32u* const bufOut;
    Zmx32s* const countOut;
};

inline constexpr int kDataEnded = -256, kInvalidCode = -1;

// Decodes a symbol of at least minBits bits: the symbol, kDataEnded, or kInvalidCode. Behind the sentinel the
// walk goes on over the words of the table that follow, up to its end, and takes a bit for each.
int ownpj_DecodeLongBits(int minBits, const ZmxiDecodeHuffmanSpec& table, DirectReader& in);

} // namespace zmx
