// pjhufftbl.h - the four blocks that JPEG entropy coding runs on: decoder table, encoder table, bit reader,
// bit writer.
//
// Their sizes are part of the interface (GetBufSize). A table is read-only once built; a bit state carries
// the stream from call to call.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjtable.h"
#include "zmxj.h"

#include <bit>

// The symbol of a code c of length L is huffVal[valIndex[L] - minCode[L] + c]. Codes of up to 8 bits are
// found in fastTable at once.
struct ZmxiDecodeHuffmanSpec {
    Zmx16u huffVal[256];   // the symbols in the order of their codes
    Zmx32u fastTable[256]; // by the next 8 bits: symbol | length << 16; length 0: no code of 8 bits or less
    Zmx16u minCode[18];    // by code length 1 to 16: the smallest code of that length
    Zmx16u maxCode[18];    // the largest one, kNoCode where there is none; entry 17 is kNoCode too
    Zmx16u valIndex[18];   // the index in huffVal of the first symbol of that length
};
static_assert(sizeof(ZmxiDecodeHuffmanSpec) == 1644);

struct ZmxiEncodeHuffmanSpec {
    Zmx32u codes[256]; // by symbol: code | length << 16; 0: the symbol has no code
};
static_assert(sizeof(ZmxiEncodeHuffmanSpec) == 1024);

struct ZmxiDecodeHuffmanState {
    Zmx32u bitBuffer;      // the last four bytes read, the newest lowest; the low bitCount bits are not used yet
    Zmx32u bufferMark;     // 0 whenever a byte enters bitBuffer; nothing reads it
    Zmx32s bitCount;       // negative when a marker cut a code or a value short
    Zmx32s eobRun;         // progressive: how many further blocks of the band are known to be finished
    Zmx32s blockPositions; // how many zig-zag positions the last sequential block covered; nothing reads it
};
static_assert(sizeof(ZmxiDecodeHuffmanState) == 20);

struct ZmxiEncodeHuffmanState {
    Zmx32u bitBuffer;           // pending bits from bit 23 downwards; bits 24 to 31 keep the last byte written
    Zmx32u bufferMark;          // 0 at each successful write; nothing reads it
    Zmx32s bitCount;            // how many bits are pending: at most 7 between calls
    Zmx32s eobRun;              // progressive: the end-of-band run held back, up to 32767
    Zmx32s correctionCount;     // how many correction bits are held back behind that run
    Zmx8u correctionBits[1024]; // one correction bit a byte
};
static_assert(sizeof(ZmxiEncodeHuffmanState) == 1044);

namespace zmx {

// In ZmxiDecodeHuffmanSpec::maxCode: no code has that length.
inline constexpr Zmx16u kNoCode = 65535;

// Zeroes every field.
void ownpj_EncodeHuffmanStateInit(ZmxiEncodeHuffmanState* pEncHuffState);
ZmxStatus ownpj_DecodeHuffmanSpecInit(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                      ZmxiDecodeHuffmanSpec* pDecHuffSpec);

// The number of significant bits of n.
inline constexpr auto own_pj_csize = tableOf<256>([](int n) { return Zmx32s(std::bit_width(unsigned(n))); });
// The position of the highest bit of n; 0 for 0.
inline constexpr auto own_pj_eobsize =
    tableOf<512>([](int n) { return Zmx32s(n ? std::bit_width(unsigned(n)) - 1 : 0); });
// By category n: the smallest value that category has, 1 - 2^n.
inline constexpr auto own_pj_lowest_coef = tableOf<16>([](int n) { return Zmx32s(1 - (1 << n)); });
inline constexpr auto own_pj_extend_offset = own_pj_lowest_coef;
// By category n: the smallest positive value of it, 2^(n-1).
inline constexpr auto own_pj_extend_test = tableOf<16>([](int n) { return Zmx32s(n ? 1 << (n - 1) : 0); });
inline constexpr auto own_pj_twoexpnminusone = own_pj_extend_test;
static_assert(own_pj_csize[0] == 0 && own_pj_csize[3] == 2 && own_pj_csize[255] == 8 && own_pj_eobsize[1] == 0 &&
              own_pj_eobsize[511] == 8 && own_pj_lowest_coef[15] == -32767 && own_pj_extend_test[15] == 16384);

} // namespace zmx
