// pjdechuff.cpp - decoding of sequential JPEG blocks (ITU-T T.81, F.2.2), with a bit state and directly.
#include "pjargs.h"
#include "pjdecwalk.h"
#include "pjfastread.h"

#include <cstring>

namespace {

constexpr int kBlock = 64;

enum class Left { Open, Ended, Outside };

// Decodes as much of a block as there is without a 0xFF in the stream: up to zig-zag position *pNext, where the reader
// goes on unless the block has ended. Checked: a value behind the spare entries of the walk is Outside.
template <bool Checked, class Reader>
[[gnu::noinline]] Left decodeFast(Reader& in, Zmx16s* pDst, Zmx16s* pLastDC, const ZmxiDecodeHuffmanSpec& dcTable,
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
    while (k < kBlock && fast.refill()) {
        for (int twice = 0; twice < 2; ++twice) {
            symbol = fast.symbol(acTable);
            if (symbol < 0) goto out;
            const int r = symbol >> 4;
            if ((symbol & 15) == 0) {
                if (r != 15) {
                    left = Left::Ended;
                    goto out;
                }
                k += 16;
            } else {
                const int j = k + r;
                k = j + 1;
                const int value = fast.value();
                if (Checked && j >= int(own_pj_izigzag_index.size())) {
                    left = Left::Outside;
                    goto out;
                }
                pDst[zigzagReach[std::size_t(j)]] = Zmx16s(value);
            }
            if (k >= kBlock) goto out;
        }
    }
out:
    if (!fast.leave(in)) {
        std::memset(pDst, 0, kBlock * sizeof *pDst);
        return Left::Open;
    }
    pDst[0] = *pLastDC = dc;
    *pNext = k;
    return left;
}

} // namespace

ZmxStatus zmxiDecodeHuffman8x8_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                             Zmx16s* pLastDC, int* pMarker, const ZmxiDecodeHuffmanSpec* pDcTable,
                                             const ZmxiDecodeHuffmanSpec* pAcTable,
                                             ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args().ptr(pSrc).arg(nSrcLen < 0).ptr(pSrcCurrPos).ptr(pDst).ptr(pLastDC).ptr(pMarker)
                            .ptr(pDcTable).ptr(pAcTable).ptr(pDecHuffState)) return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    std::memset(pDst, 0, kBlock * sizeof *pDst);
    int k;
    const Left left = decodeFast<true>(in, pDst, pLastDC, *pDcTable, *pAcTable, &k);
    if (left == Left::Outside) return zmxStsErr;
    if (k == 0) {
        if (ZmxStatus failed = decodeDC(in, pLastDC, *pDcTable)) {
            pDecHuffState->blockPositions = 0;
            return failed;
        }
        pDst[0] = *pLastDC;
        k = 1;
    }
    ZmxStatus status = zmxStsNoErr;
    while (left == Left::Open && k < kBlock) {
        int symbol;
        if ((status = ownpj_DecodeHuffSymbol(in, &symbol, *pAcTable))) break;
        const int r = symbol >> 4 & 15, s = symbol & 15;
        if (s == 0) {
            if (r != 15) break; // end of block, whatever the run
            k += 16;
            continue;
        }
        const int j = k + r;
        k = j + 1;
        if ((status = need(in, s))) break;
        const int value = extend(in.take(s), s);
        // A run into the spare entries ends on element 63; behind them it is an error, and blockPositions stays.
        if (j >= int(own_pj_izigzag_index.size())) return zmxStsErr;
        pDst[zigzagReach[std::size_t(j)]] = Zmx16s(value);
    }
    pDecHuffState->blockPositions = k;
    return status;
}

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

// Stores the value of category s; false if there is no bit left for it. With fewer than s bits the count goes negative.
bool directValue(DirectReader& in, int s, int* pValue) {
    if (in.count < s) {
        in.refill();
        if (in.count < 1) return false;
    }
    *pValue = extend(in.take(s), s);
    return true;
}

} // namespace

ZmxStatus zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const Zmx8u* pSrc, int* pSrcBitsLen, Zmx16s* pDst, Zmx16s* pLastDC,
                                                    int* pMarker, Zmx32u* pPrefetchedBits,
                                                    Zmx32s* pNumValidPrefetchedBits,
                                                    const ZmxiDecodeHuffmanSpec* pDcTable,
                                                    const ZmxiDecodeHuffmanSpec* pAcTable) {
    // Values are tested as soon as their pointers are good, between the pointers: required here.
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pSrcBitsLen)) return bad;
    if (ZmxStatus bad = Args().arg(*pSrcBitsLen < 0).ptr(pDst).ptr(pLastDC).ptr(pMarker).ptr(pPrefetchedBits)
                            .ptr(pNumValidPrefetchedBits)) return bad;
    if (ZmxStatus bad = Args().arg(*pNumValidPrefetchedBits < 0).ptr(pDcTable).ptr(pAcTable)) return bad;
    DirectReader in(pSrc, *pSrcBitsLen >> 3, pMarker, pPrefetchedBits, pNumValidPrefetchedBits);
    std::memset(pDst, 0, kBlock * sizeof *pDst);

    int k, value = 0;
    const Left left = decodeFast<false>(in, pDst, pLastDC, *pDcTable, *pAcTable, &k);
    if (k == 0) {
        const int symbol = directSymbol(in, *pDcTable);
        if (symbol == kDataEnded) return zmxStsNoErr; // quietly, and without storing the position
        if (symbol == kInvalidCode) return zmxStsDCTRangeErr;
        if (symbol != 0 && !directValue(in, symbol & 15, &value)) return zmxStsOutOfBufErr;
        pDst[0] = *pLastDC = wrap16s(*pLastDC + value);
        k = 1;
    }
    while (left == Left::Open && k < kBlock) {
        const int symbol = directSymbol(in, *pAcTable);
        if (symbol == kDataEnded) { // quietly too: the block stays as far as it got
            in.count = 0;
            break;
        }
        if (symbol == kInvalidCode) return zmxStsDCTRangeErr;
        const int r = symbol >> 4, s = symbol & 15;
        if (s == 0) {
            if (r != 15) break;
            k += 16;
            continue;
        }
        if (!directValue(in, s, &value)) return zmxStsOutOfBufErr;
        // No test of the position: the table reaches as far as any run.
        pDst[zigzagReach[std::size_t(k + r)]] = Zmx16s(value);
        k += r + 1;
    }
    *pSrcBitsLen = wrapMul(in.pos, 8);
    return zmxStsNoErr;
}
