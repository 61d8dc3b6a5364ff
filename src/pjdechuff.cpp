// pjdechuff.cpp - decoding of sequential JPEG blocks (ITU-T T.81, F.2.2), with a bit state and directly.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjdecwalk.h"
#include "pjfastread.h"

#include <cstring>

namespace zmx {
namespace {

constexpr int kBlock = 64;

// In four pieces, which the compiler expands to stores where it would call a function for the whole.
void clear(Zmx16s* block) {
    for (int i = 0; i < kBlock; i += 16) std::memset(block + i, 0, 16 * sizeof *block);
}

enum class Left { Open, Ended, Outside };

// Decodes as much of a cleared block as stands well ahead of a marker and of the end: up to zig-zag position *pNext,
// 0 if not even DC, where the reader goes on unless the block has ended. Checked: a value behind the spare
// entries of the walk is Outside.
template <bool Checked, class Reader>
Left decodeFast(Reader& in, Zmx16s* pDst, Zmx16s* pLastDC, const ZmxiDecodeHuffmanSpec& dcTable,
                const ZmxiDecodeHuffmanSpec& acTable, int* pNext) {
    *pNext = 0;
    if (!FastReader<Reader>::suits(in)) return Left::Open;
    FastReader<Reader> fast(in);
    if (!fast.refill()) return Left::Open;
    int symbol = fast.symbol(dcTable);
    if (symbol < 0) return Left::Open;
    const Zmx16s dc = wrap16s(*pLastDC + (symbol & 15 ? fast.value() : 0));

    int k = 1;
    Left left = Left::Open;
    const auto step = [&] { // one symbol: whether the block goes on from here
        symbol = fast.symbol(acTable);
        if (symbol < 0) return false;
        const int r = symbol >> 4;
        if ((symbol & 15) != 0) {
            pDst[zigzag::reach[std::size_t(k + r)]] = Zmx16s(fast.value());
            k += r + 1;
        } else if (r == 15) {
            k += 16;
        } else {
            left = Left::Ended;
            return false;
        }
        return k < kBlock;
    };
    while (fast.refill() && step() && step()) {
    }
    if (k >= kBlock) left = Left::Ended;
    if (!fast.leave(in)) {
        clear(pDst);
        return Left::Open;
    }
    if (Checked && k > int(own_pj_izigzag_index.size()) && (symbol & 15) != 0) {
        pDst[kBlock - 1] = 0; // no value stood there: it would have ended the block
        left = Left::Outside;
    }
    pDst[0] = *pLastDC = dc;
    *pNext = k;
    return left;
}

// Decodes a block from zig-zag position k on.
[[gnu::noinline]] ZmxStatus decodeExact(BitReader in, Zmx16s* pDst, Zmx16s* pLastDC,
                                        const ZmxiDecodeHuffmanSpec& dcTable, const ZmxiDecodeHuffmanSpec& acTable,
                                        int k, Zmx32s* pBlockPositions) {
    if (k == 0) {
        if (ZmxStatus failed = decodeDC(in, pLastDC, dcTable)) {
            *pBlockPositions = 0;
            return failed;
        }
        pDst[0] = *pLastDC;
        k = 1;
    }
    ZmxStatus status = zmxStsNoErr;
    while (k < kBlock) {
        int symbol;
        if ((status = ownpj_DecodeHuffSymbol(in, &symbol, acTable))) break;
        const int r = symbol >> 4, s = symbol & 15;
        if (s == 0) {
            if (r != 15) break; // end of block, whatever the run
            k += 16;
            continue;
        }
        const int j = k + r;
        k = j + 1;
        if ((status = need(in, s))) break;
        const int value = extend(in.take(s), s);
        // A run into the spare entries ends on element 63; behind them it is an error, and blockPositions
        // stays.
        if (j >= int(own_pj_izigzag_index.size())) return zmxStsErr;
        pDst[zigzag::reach[std::size_t(j)]] = Zmx16s(value);
    }
    *pBlockPositions = k;
    return status;
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDecodeHuffman8x8_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                             Zmx16s* pLastDC, int* pMarker, const ZmxiDecodeHuffmanSpec* pDcTable,
                                             const ZmxiDecodeHuffmanSpec* pAcTable,
                                             ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args()
                            .ptr(pSrc)
                            .arg(nSrcLen < 0)
                            .ptr(pSrcCurrPos, pDst, pLastDC, pMarker, pDcTable, pAcTable, pDecHuffState))
        return bad;
    clear(pDst);
    int k;
    Left left;
    {
        BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
        left = decodeFast<true>(in, pDst, pLastDC, *pDcTable, *pAcTable, &k);
    }
    if (left == Left::Outside) return zmxStsErr;
    if (left == Left::Open)
        return decodeExact({pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState}, pDst, pLastDC, *pDcTable, *pAcTable, k,
                           &pDecHuffState->blockPositions);
    pDecHuffState->blockPositions = k;
    return zmxStsNoErr;
}

namespace zmx {
namespace {

// A symbol by the next 8 bits, zeros behind the end of the data; or kDataEnded, kInvalidCode.
int directSymbol(DirectReader& in, const ZmxiDecodeHuffmanSpec& table) {
    if (in.count < 8) {
        in.refill();
        if (in.count < 1) return kDataEnded;
    }
    const Zmx32u index = in.count < 8 ? in.buf << (8 - in.count) & 255 : bitsAt(in.buf, in.count - 8, 8);
    const Zmx32u entry = table.fastTable[index];
    if (entry >> 16 == 0) return ownpj_DecodeLongBits(9, table, in);
    in.count -= int(entry >> 16); // whether that many bits were held or not
    return int(entry & 0xFFFF);
}

// Stores the value of category s; false if there is no bit left for it. With fewer than s bits the count goes
// negative.
bool directValue(DirectReader& in, int s, int* pValue) {
    if (in.count < s) {
        in.refill();
        if (in.count < 1) return false;
    }
    *pValue = extend(in.take(s), s);
    return true;
}

// Decodes a block from zig-zag position k on.
[[gnu::noinline]] ZmxStatus decodeDirect(DirectReader in, Zmx16s* pDst, Zmx16s* pLastDC,
                                         const ZmxiDecodeHuffmanSpec& dcTable, const ZmxiDecodeHuffmanSpec& acTable,
                                         int k, int* pSrcBitsLen) {
    int value = 0;
    if (k == 0) {
        const int symbol = directSymbol(in, dcTable);
        if (symbol == kDataEnded) return zmxStsNoErr; // quietly, and without storing the position
        if (symbol == kInvalidCode) return zmxStsDCTRangeErr;
        if (symbol != 0 && !directValue(in, symbol & 15, &value)) return zmxStsOutOfBufErr;
        pDst[0] = *pLastDC = wrap16s(*pLastDC + value);
        k = 1;
    }
    while (k < kBlock) {
        const int symbol = directSymbol(in, acTable);
        if (symbol == kDataEnded) { // quietly too: the block stays as far as it got
            in.count = 0;
            break;
        }
        if (symbol == kInvalidCode) return zmxStsDCTRangeErr;
        const int r = symbol >> 4, s = symbol & 15;
        if (s == 0 && r == 15) {
            k += 16;
            continue;
        }
        if (s == 0) break; // end of block, whatever the run
        if (!directValue(in, s, &value)) return zmxStsOutOfBufErr;
        // No test of the position: the table reaches as far as any run.
        pDst[zigzag::reach[std::size_t(k + r)]] = Zmx16s(value);
        k += r + 1;
    }
    *pSrcBitsLen = wrapMul(in.pos, 8);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

ZmxStatus zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const Zmx8u* pSrc, int* pSrcBitsLen, Zmx16s* pDst, Zmx16s* pLastDC,
                                                    int* pMarker, Zmx32u* pPrefetchedBits,
                                                    Zmx32s* pNumValidPrefetchedBits,
                                                    const ZmxiDecodeHuffmanSpec* pDcTable,
                                                    const ZmxiDecodeHuffmanSpec* pAcTable) {
    // Values are tested as soon as their pointers are good, between the pointers: required here.
    if (ZmxStatus bad = Args().ptr(pSrc, pSrcBitsLen)) return bad;
    if (ZmxStatus bad =
            Args().arg(*pSrcBitsLen < 0).ptr(pDst, pLastDC, pMarker, pPrefetchedBits, pNumValidPrefetchedBits))
        return bad;
    if (ZmxStatus bad = Args().arg(*pNumValidPrefetchedBits < 0).ptr(pDcTable, pAcTable)) return bad;
    clear(pDst);
    int k, pos;
    Left left;
    {
        DirectReader in(pSrc, *pSrcBitsLen >> 3, pMarker, pPrefetchedBits, pNumValidPrefetchedBits);
        left = decodeFast<false>(in, pDst, pLastDC, *pDcTable, *pAcTable, &k);
        pos = in.pos;
    }
    if (left == Left::Open)
        return decodeDirect({pSrc, pos, pMarker, pPrefetchedBits, pNumValidPrefetchedBits}, pDst, pLastDC, *pDcTable,
                            *pAcTable, k, pSrcBitsLen);
    *pSrcBitsLen = wrapMul(pos, 8);
    return zmxStsNoErr;
}
