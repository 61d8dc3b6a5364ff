// bitio.cpp - the bit reader and the bit writer, the plain way. ITU-T T.81 F.1.2.3, F.2.2.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/bitio.h"

#include <cstdlib>
#include <cstring>

namespace model {

ZmxStatus fillBitBuffer(Reader& r, int need) {
    if (*r.marker != 0) return need > r.st->bitCount ? zmxStsDCTRangeErr : zmxStsNoErr;
    while (r.st->bitCount < 25) {
        if (*r.pos >= r.len) return need > r.st->bitCount ? zmxStsOutOfBufErr : zmxStsNoErr;
        const Zmx8u byte = r.src[(*r.pos)++];
        if (byte == 0xFF) {
            Zmx8u next = 0xFF;
            while (next == 0xFF) {
                if (*r.pos >= r.len) return zmxStsOutOfBufErr;
                next = r.src[(*r.pos)++];
            }
            if (next != 0) {
                *r.marker = next;
                return zmxStsNoErr;
            }
        }
        r.st->bitBuffer = r.st->bitBuffer * 256 + byte;
        r.st->bitCount += 8;
        r.st->bufferMark = 0;
    }
    return zmxStsNoErr;
}

int takeBits(Reader& r, int n) {
    r.st->bitCount -= n;
    if (r.st->bitCount < 0) {
        r.noValue = true;
        return 0;
    }
    return int(r.st->bitBuffer >> r.st->bitCount & ((1u << n) - 1));
}

ZmxStatus fetchBits(Reader& r, int n, int& result) {
    if (r.st->bitCount < n)
        if (ZmxStatus s = fillBitBuffer(r, n)) return s;
    result = takeBits(r, n);
    return zmxStsNoErr;
}

ZmxStatus decodeSymbol(Reader& r, const DecodeSpec& spec, int& result) {
    int length = 1;
    if (r.st->bitCount < 8)
        if (ZmxStatus s = fillBitBuffer(r, 0)) return s;
    if (r.st->bitCount >= 8) {
        const Zmx32u entry = spec.fastTable[r.st->bitBuffer >> (r.st->bitCount - 8) & 255];
        if (entry >> 16) {
            r.st->bitCount -= int(entry >> 16);
            result = int(entry & 65535);
            return zmxStsNoErr;
        }
        length = 9;
    }
    const bool before = r.noValue;
    r.noValue = false;
    int code = 0;
    ZmxStatus s = fetchBits(r, length, code);
    for (; !s && length <= 16; ++length) {
        if (spec.maxCode[length] != 65535 && code <= spec.maxCode[length]) break;
        int bit = 0;
        s = fetchBits(r, 1, bit);
        code = code * 2 + bit;
    }
    if (r.noValue) r.noPath = true;
    r.noValue = r.noValue || before;
    if (s) return s;
    if (length > 16) {
        result = 0;
        return zmxStsDCTRangeErr;
    }
    const int at = spec.valIndex[length] - spec.minCode[length] + code;
    if (at < 0 || at > 255) r.noPath = true; // an over-full table
    result = spec.huffVal[at & 255];
    return zmxStsNoErr;
}

int extend(int v, int n) { return n > 0 && v < 1 << (n - 1) ? v + 1 - (1 << n) : v; }

ZmxStatus writeBits(Writer& w, Zmx32u bits, int n) {
    if (n == 0) return zmxStsHuffTableErr;
    int total = w.st->bitCount + n;
    Zmx32u reg = (bits & ((1u << n) - 1)) << (24 - total) | w.st->bitBuffer;
    for (; total >= 8; total -= 8, reg <<= 8) {
        if (*w.pos >= w.len) return zmxStsOutOfBufErr;
        const Zmx8u byte = Zmx8u(reg >> 16);
        w.dst[(*w.pos)++] = byte;
        if (byte == 0xFF) {
            if (*w.pos == w.len) return zmxStsOutOfBufErr;
            w.dst[(*w.pos)++] = 0;
        }
    }
    w.st->bufferMark = 0;
    w.st->bitBuffer = reg;
    w.st->bitCount = total;
    return zmxStsNoErr;
}

ZmxStatus writeSymbol(Writer& w, const EncodeSpec& spec, int symbol) {
    const Zmx32u word = symbol < 256 ? spec.word[symbol] : 0;
    return writeBits(w, word & 65535, int(word >> 16));
}

ZmxStatus flush(Writer& w) {
    const ZmxStatus s = writeBits(w, 127, 7);
    std::memset(w.st, 0, sizeof *w.st);
    return s;
}

int category(int v) {
    int n = 0;
    for (int a = std::abs(v); a > 0; a /= 2) ++n;
    return n;
}

} // namespace model
