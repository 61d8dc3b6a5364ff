// pjbitread.cpp - the refill, and Huffman codes bit by bit where the look-up of eight bits does not hold them
// (ITU-T T.81, F.2.2.3).
// SPDX-License-Identifier: BSD-2-Clause
#include "pjbitread.h"

namespace zmx {

// A marker met before is the end of the data: what is held has to do.
ZmxStatus ownpj_FillBitBuffer(BitReader& in, int nBitsNeeded) {
    if (in.marker != 0) return nBitsNeeded > in.count ? zmxStsDCTRangeErr : zmxStsNoErr;
    if (in.appendWord()) return zmxStsNoErr;
    return appendBytes(in, nBitsNeeded);
}

// DECODE (figure F.16): a code is complete when it is not above the largest one of its length. Lengths without a code
// are passed over; behind 16 bits there is none.
ZmxStatus decodeLongSymbol(BitReader& in, int* pResult, const ZmxiDecodeHuffmanSpec& table, int minLength) {
    int length = minLength;
    if (ZmxStatus failed = need(in, length)) return failed;
    Zmx32u c = in.take(length);
    for (; length <= 16; ++length) {
        if (table.maxCode[length] != kNoCode && c <= table.maxCode[length]) {
            *pResult = symbolOf(table, length, c);
            return zmxStsNoErr;
        }
        if (ZmxStatus failed = need(in, 1)) return failed;
        c = c << 1 | in.take(1);
    }
    *pResult = 0;
    return zmxStsDCTRangeErr;
}

// The same walk on the caller's words, with no status: bits that run out and bad codes have numbers of their own.
int ownpj_DecodeLongBits(int minBits, const ZmxiDecodeHuffmanSpec& table, DirectReader& in) {
    // The words from maxCode on; valIndex stands behind maxCode.
    const auto bound = [&table](int length) {
        return length < 18 ? table.maxCode[length] : table.valIndex[length - 18];
    };
    int length = minBits;
    if (in.count < length) {
        in.refill();
        if (in.count < 1) return kDataEnded;
    }
    Zmx32u c = in.take(length);
    while (length < 36 && (bound(length) == kNoCode || Zmx32s(c) > bound(length))) {
        if (in.count < 1) {
            in.refill();
            if (in.count < 1) return kDataEnded;
        }
        c = c << 1 | in.take(1);
        ++length;
    }
    return length > 16 ? kInvalidCode : symbolOf(table, length, c);
}

} // namespace zmx
