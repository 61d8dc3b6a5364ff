// pjenchuff.cpp - encoding of sequential JPEG blocks (ITU-T T.81, F.1.2), with a bit state and directly, and
// the counting of their symbols.
//
// One walk over the block feeds the sinks: the exact writer, a fast one where there is plenty of room (always
// so for the Direct function), and the counts.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjbitwrite.h"
#include "pjencwalk.h"
#include "pjfastwrite.h"
#include "pjzigzagset.h"

namespace zmx {
namespace {

// Feeds the symbols of a block: sink.dc and sink.ac take one with the category and the value behind it,
// sink.bare one with none. The first status that is not zero ends the walk.
template <class Sink> ZmxStatus walkBlock(const Zmx16s* pSrc, int diff, Sink& sink) {
    if (ZmxStatus failed = sink.dc(category(diff), diff)) return failed;
    const std::uint64_t set = zigzag::setOf(pSrc, [](Zmx16s c) { return c != 0; }) & zigzag::positions(1, 63);
    int next = 1; // behind the last coefficient coded
    const ZmxStatus status = zigzag::forEach(set, [&](int k) -> ZmxStatus {
        int run = k - next;
        for (; run > 15; run -= 16)
            if (ZmxStatus failed = sink.bare(kZeroRun)) return failed;
        const int c = pSrc[own_pj_izigzag_index[std::size_t(k)]], n = category(c);
        next = k + 1;
        return sink.ac(run * 16 + n, n, c);
    });
    return status || next > 63 ? status : sink.bare(0); // end of block, whatever zeros are left
}

struct ExactSink {
    const ZmxiEncodeHuffmanSpec &dcTable, &acTable;
    BitWriter& out;

    ZmxStatus dc(int n, int v) { return writeCoded(dcTable, n, n, v, out); }
    ZmxStatus ac(int symbol, int n, int v) { return writeCoded(acTable, symbol, n, v, out); }
    ZmxStatus bare(int symbol) { return writeSymbol(acTable, symbol, out); }
};

// A sink with room for whatever a block can be. Strict: a symbol without a code is an error, with nothing of
// it written; otherwise it is passed over, and the value behind it is written all the same.
template <bool Strict> struct FastSink {
    const ZmxiEncodeHuffmanSpec &dcTable, &acTable;
    FastWriter out;

    ZmxStatus coded(Zmx32u code, int n, int v) {
        const int length = int(code >> 16);
        if (Strict && length == 0) return zmxStsHuffTableErr;
        out.put(std::uint64_t(code & 0xFFFF) << n | (valueBits(v) & ((1u << n) - 1)), length + n);
        return zmxStsNoErr;
    }
    ZmxStatus dc(int n, int v) { return coded(dcTable.codes[n], n, v); }
    ZmxStatus ac(int symbol, int n, int v) { return coded(codeOf(acTable, symbol), n, v); }
    ZmxStatus bare(int symbol) { return coded(acTable.codes[symbol], 0, 0); }
};

// Out of the way of the fast one, which keeps its writer in registers.
[[gnu::noinline]] ZmxStatus encodeExact(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos, int diff,
                                        const ZmxiEncodeHuffmanSpec& dcTable, const ZmxiEncodeHuffmanSpec& acTable,
                                        ZmxiEncodeHuffmanState* pEncHuffState) {
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    ExactSink sink{dcTable, acTable, out};
    return walkBlock(pSrc, diff, sink);
}

// The bytes that a block may take: 64 coefficients with their codes (the symbol of 16 zeros stands in the place of
// those), an end of block, seven bits pending, and every byte stuffed.
constexpr int kWorstBlock = 519;
static_assert(kWorstBlock >= 2 * ((64 * (kMostCodeBits + kMostValueBits) + kMostCodeBits + 7) / 8));
static_assert(kMostCodeBits + kMostValueBits <= FastWriter::kMostBits);

// Whether any block fits behind a position, with a register that the fast writer can take over.
bool roomForAny(int dstLenBytes, int pos, const ZmxiEncodeHuffmanState& state) {
    return pos >= 0 && dstLenBytes - pos >= kWorstBlock && BitWriter::regular(state.bitBuffer, state.bitCount);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiEncodeHuffman8x8_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                             Zmx16s* pLastDC, const ZmxiEncodeHuffmanSpec* pDcTable,
                                             const ZmxiEncodeHuffmanSpec* pAcTable,
                                             ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    // What a flush needs comes first: it has no block. Required here.
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrc, pLastDC, pDcTable, pAcTable)) return bad;

    const int diff = differenceDC(pSrc, pLastDC);
    if (!roomForAny(dstLenBytes, *pDstCurrPos, *pEncHuffState))
        return encodeExact(pSrc, pDst, dstLenBytes, pDstCurrPos, diff, *pDcTable, *pAcTable, pEncHuffState);
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    FastSink<true> sink{*pDcTable, *pAcTable, FastWriter(out)};
    const ZmxStatus status = walkBlock(pSrc, diff, sink);
    sink.out.leave(out);
    return status;
}

ZmxStatus zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int* pDstBitsLen, Zmx16s* pLastDC,
                                                    const ZmxiEncodeHuffmanSpec* pDcTable,
                                                    const ZmxiEncodeHuffmanSpec* pAcTable) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst, pDstBitsLen, pLastDC, pDcTable, pAcTable)) return bad;
    // A position may have wrapped: 2^31 bits are a stream of 256 MiB.
    if (ZmxStatus bad = Args().arg(*pDstBitsLen < 0)) return bad;
    FastSink<false> sink{*pDcTable, *pAcTable, FastWriter(pDst, *pDstBitsLen)};
    walkBlock(pSrc, differenceDC(pSrc, pLastDC), sink);
    *pDstBitsLen = sink.out.leave(pDst, *pDstBitsLen);
    return zmxStsNoErr;
}

namespace zmx {
namespace {

// Counts in place of writing. The limits of the categories have no counterpart in the encoders.
struct CountSink {
    Zmx32u *dcCounts, *acCounts;

    ZmxStatus dc(int n, int) {
        if (n > 15) return zmxStsDCTRangeErr;
        ++dcCounts[n];
        return zmxStsNoErr;
    }
    ZmxStatus ac(int symbol, int n, int) {
        if (n > 14) return zmxStsDCTRangeErr;
        ++acCounts[symbol];
        return zmxStsNoErr;
    }
    ZmxStatus bare(int symbol) {
        ++acCounts[symbol];
        return zmxStsNoErr;
    }
};

} // namespace
} // namespace zmx

ZmxStatus zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pDcStatistics, Zmx32u* pAcStatistics,
                                                  Zmx16s* pLastDC) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDcStatistics, pAcStatistics, pLastDC)) return bad;
    CountSink sink{pDcStatistics, pAcStatistics};
    return walkBlock(pSrc, differenceDC(pSrc, pLastDC), sink);
}
