// pjenchuffp.cpp - encoding of one block's share of a progressive scan (ITU-T T.81, G.1.2), and the counting
// of its symbols.
//
// Encoder and statistics are one walk with two sinks, so that the counts are those of the symbols that will
// be written. An end-of-band run is held back in the state until something has to stand behind it; correction
// bits of refinement scans are held back with it, since they follow the code of the run.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjband.h"
#include "pjbitwrite.h"
#include "pjencwalk.h"
#include "pjzigzagset.h"

#include <algorithm>

namespace zmx {
namespace {

constexpr int kMaxRun = 32767; // of blocks, the most that a symbol holds
// One further block may add 63 bits to those held, of which there is room for 1024. With a margin, as it has
// to be. That they stay below it holds only as long as what is held can be written.
constexpr int kMaxHeldBits = 937;
constexpr int kRoom = sizeof ZmxiEncodeHuffmanState::correctionBits;
static_assert(kMaxHeldBits + 63 <= kRoom);

// The two sinks. The category limit of the statistics is one less than the encoder's: required here.
struct Write {
    const ZmxiEncodeHuffmanSpec& table;
    BitWriter& out;
    static constexpr int maxCategory = 11;

    ZmxStatus symbol(int s) { return writeSymbol(table, s, out); }
    ZmxStatus bits(Zmx32u v, int n) { return ownpj_write_bits_jpeg(v, n, out); }
    static void hold(Zmx8u& place, int bit) { place = Zmx8u(bit); }
};
struct Count {
    Zmx32u* counts;
    static constexpr int maxCategory = 10;

    ZmxStatus symbol(int s) {
        ++counts[s];
        return zmxStsNoErr;
    }
    ZmxStatus bits(Zmx32u, int) { return zmxStsNoErr; }
    static void hold(Zmx8u&, int) {} // their number is enough
};

// Writes the end-of-band run, if there is one. It is cleared only when it has been written whole.
template <class Sink> ZmxStatus putRun(Sink& sink, Zmx32s& eobRun) {
    if (eobRun == 0) return zmxStsNoErr;
    if (eobRun == 1) {
        if (ZmxStatus failed = sink.symbol(0)) return failed;
        eobRun = 0;
        return zmxStsNoErr;
    }
    if (eobRun > kMaxRun) { // only a state that came from elsewhere: a run is written when it gets there
        if (ZmxStatus failed = sink.symbol(14 * 16)) return failed;
        if (ZmxStatus failed = sink.bits(Zmx32u(eobRun), 14)) return failed;
        eobRun -= kMaxRun;
    }
    const int n = eobSize(Zmx32u(eobRun));
    if (n > 14) return zmxStsDCTRangeErr;
    if (ZmxStatus failed = sink.symbol(n * 16)) return failed;
    if (ZmxStatus failed = sink.bits(Zmx32u(eobRun), n)) return failed;
    eobRun = 0;
    return zmxStsNoErr;
}

// Writes count correction bits. The count goes down on the way: a failure leaves the number of those not yet
// written, while the bits stay where they are.
template <class Sink> ZmxStatus putBits(Sink& sink, const Zmx8u* bits, Zmx32s& count) {
    for (; count > 0; --count)
        if (ZmxStatus failed = sink.bits(*bits++, 1)) return failed;
    return zmxStsNoErr;
}

// One more block for the run. It grows on where it could not be written, and where it came from elsewhere.
Zmx32s lengthen(Zmx32s& eobRun) { return eobRun = wrapAdd(eobRun, 1); }

// No encoder leaves another number of held bits than there is room for; a state from elsewhere may.
void limitHeld(ZmxiEncodeHuffmanState& state) { state.correctionCount = clamp(state.correctionCount, 0, kRoom); }

// Writes the run and the correction bits behind it.
template <class Sink> ZmxStatus putHeld(Sink& sink, ZmxiEncodeHuffmanState& state) {
    if (ZmxStatus failed = putRun(sink, state.eobRun)) return failed;
    return putBits(sink, state.correctionBits, state.correctionCount);
}

// What is left of a coefficient: its magnitude is shifted, not its two's complement form, so that it goes
// towards zero. In 16 bits, eight at a time.
Zmx16u shifted(Zmx16s c, int Al) { return Zmx16u(Zmx16u(c < 0 ? -c : c) >> Al); }

template <class Sink>
ZmxStatus firstBand(const Zmx16s* pSrc, int Ss, int Se, int Al, ZmxiEncodeHuffmanState& state, Sink& sink) {
    const std::uint64_t set =
        zigzag::setOf(pSrc, [Al](Zmx16s c) { return shifted(c, Al) != 0; }) & zigzag::positions(Ss, Se);
    int next = Ss; // behind the last coefficient coded
    const ZmxStatus status = zigzag::forEach(set, [&](int k) -> ZmxStatus {
        if (ZmxStatus failed = putRun(sink, state.eobRun)) return failed;
        int r = k - next;
        for (; r > 15; r -= 16)
            if (ZmxStatus failed = sink.symbol(kZeroRun)) return failed;
        const Zmx16s c = pSrc[own_pj_izigzag_index[std::size_t(k)]];
        const int a = shifted(c, Al), n = category(a);
        if (n > Sink::maxCategory) return zmxStsDCTRangeErr;
        if (ZmxStatus failed = sink.symbol(r * 16 + n)) return failed;
        next = k + 1;
        return sink.bits(Zmx32u(c < 0 ? ~a : a), n);
    });
    if (status || next > Se) return status;
    return lengthen(state.eobRun) >= kMaxRun ? putRun(sink, state.eobRun) : zmxStsNoErr;
}

template <class Sink>
ZmxStatus refineBand(const Zmx16s* pSrc, int Ss, int Se, int Al, ZmxiEncodeHuffmanState& state, Sink& sink) {
    const std::uint64_t band = zigzag::positions(Ss, Se);
    const std::uint64_t known = zigzag::setOf(pSrc, [Al](Zmx16s c) { return shifted(c, Al) > 1; }) & band;
    const std::uint64_t fresh = zigzag::setOf(pSrc, [Al](Zmx16s c) { return shifted(c, Al) == 1; }) & band;
    const int lastFresh = fresh ? 63 - std::countl_zero(fresh) : 0;

    limitHeld(state);
    Zmx8u* const held = state.correctionBits;
    int start = state.correctionCount; // of this block's bits, which stand behind those of earlier ones
    Zmx32s count = 0;
    int next = Ss, r = 0;
    // A symbol, with all that has to stand in front of it and behind it.
    const auto put = [&](int symbol, int sign) -> ZmxStatus {
        if (ZmxStatus failed = putHeld(sink, state)) return failed;
        if (ZmxStatus failed = sink.symbol(symbol)) return failed;
        if (symbol != kZeroRun)
            if (ZmxStatus failed = sink.bits(Zmx32u(sign), 1)) return failed;
        if (ZmxStatus failed = putBits(sink, held + start, count)) return failed;
        start = 0;
        return zmxStsNoErr;
    };
    // A bit waits. Behind more held bits than a good run leaves there may be no room for it: they have to go
    // out first, which is what the caller was told before.
    const auto hold = [&](int bit) -> ZmxStatus {
        if (start + count == kRoom) {
            if (ZmxStatus failed = putHeld(sink, state)) return failed;
            std::copy_n(held + start, count, held);
            start = 0;
        }
        sink.hold(held[start + count++], bit);
        return zmxStsNoErr;
    };
    const ZmxStatus status = zigzag::forEach(known | fresh, [&](int k) -> ZmxStatus {
        r += k - next;
        next = k + 1;
        // Behind the last fresh coefficient zeros are left to the end-of-band run, however many there are.
        for (; r > 15 && k <= lastFresh; r -= 16)
            if (ZmxStatus failed = put(kZeroRun, 0)) return failed;
        const Zmx16s c = pSrc[own_pj_izigzag_index[std::size_t(k)]];
        if (known >> k & 1) return hold(shifted(c, Al) & 1);
        if (ZmxStatus failed = put(r * 16 + 1, c >= 0)) return failed;
        r = 0;
        return zmxStsNoErr;
    });
    if (status) return status;
    if (r == 0 && next > Se && count == 0) return zmxStsNoErr;
    state.correctionCount += count;
    return lengthen(state.eobRun) >= kMaxRun || state.correctionCount > kMaxHeldBits ? putHeld(sink, state)
                                                                                     : zmxStsNoErr;
}

constexpr int kMaxCategoryDC = 11;

} // namespace
} // namespace zmx

using namespace zmx;

// In all four encoders what a flush needs is tested first: it has no block. Required here.

ZmxStatus zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                                     Zmx16s* pLastDC, int Al, const ZmxiEncodeHuffmanSpec* pDcTable,
                                                     ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrc, pLastDC).arg(badShift(Al)).ptr(pDcTable)) return bad;

    const int diff = differenceDC(pSrc, pLastDC, Al), n = category(diff);
    if (n > kMaxCategoryDC) return zmxStsDCTRangeErr;
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    return writeCoded(*pDcTable, n, n, diff, out);
}

ZmxStatus zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, int Al, ZmxiEncodeHuffmanState* pEncHuffState,
                                                      int bFlushState) {
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrc).arg(badShift(Al))) return bad;

    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    return ownpj_write_bits_jpeg(Zmx32u(pSrc[0] >> Al), 1, out);
}

ZmxStatus zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                                     int Ss, int Se, int Al, const ZmxiEncodeHuffmanSpec* pAcTable,
                                                     ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pAcTable, pEncHuffState)) return bad;
    if (bFlushState) {
        {
            limitHeld(*pEncHuffState);
            BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
            Write sink{*pAcTable, out};
            putHeld(sink, *pEncHuffState); // its status is not reported, nor is a run that has no symbol
        }
        return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    }
    if (ZmxStatus bad = Args().ptr(pSrc).arg(badBand(Ss, Se, Al))) return bad;
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    Write sink{*pAcTable, out};
    return firstBand(pSrc, Ss, Se, Al, *pEncHuffState, sink);
}

ZmxStatus zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, int Ss, int Se, int Al,
                                                      const ZmxiEncodeHuffmanSpec* pAcTable,
                                                      ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pAcTable, pEncHuffState)) return bad;
    if (bFlushState) {
        ZmxStatus run;
        {
            limitHeld(*pEncHuffState);
            BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
            Write sink{*pAcTable, out};
            run = putRun(sink, pEncHuffState->eobRun); // reported, unlike in the first scan
            if (run == zmxStsNoErr) putBits(sink, pEncHuffState->correctionBits, pEncHuffState->correctionCount);
        }
        const ZmxStatus flushed = flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
        return flushed ? flushed : run;
    }
    if (ZmxStatus bad = Args().ptr(pSrc).arg(badBand(Ss, Se, Al))) return bad;
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    Write sink{*pAcTable, out};
    return refineBand(pSrc, Ss, Se, Al, *pEncHuffState, sink);
}

ZmxStatus zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pDcStatistics, Zmx16s* pLastDC,
                                                          int Al) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDcStatistics, pLastDC).arg(badShift(Al))) return bad;
    const int n = category(differenceDC(pSrc, pLastDC, Al));
    if (n > kMaxCategoryDC) return zmxStsDCTRangeErr;
    ++pDcStatistics[n];
    return zmxStsNoErr;
}

namespace zmx {
namespace {

using Band = ZmxStatus (*)(const Zmx16s*, int, int, int, ZmxiEncodeHuffmanState&, Count&);

ZmxStatus countBand(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss, int Se, int Al,
                    ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState, Band band) {
    if (ZmxStatus bad = Args().ptr(pAcStatistics, pEncHuffState)) return bad;
    Count sink{pAcStatistics};
    if (bFlushState) {
        const ZmxStatus status = putRun(sink, pEncHuffState->eobRun);
        ownpj_EncodeHuffmanStateInit(pEncHuffState);
        return status;
    }
    if (ZmxStatus bad = Args().ptr(pSrc).arg(badBand(Ss, Se, Al))) return bad;
    return band(pSrc, Ss, Se, Al, *pEncHuffState, sink);
}

} // namespace
} // namespace zmx

ZmxStatus zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss, int Se,
                                                          int Al, ZmxiEncodeHuffmanState* pEncHuffState,
                                                          int bFlushState) {
    return countBand(pSrc, pAcStatistics, Ss, Se, Al, pEncHuffState, bFlushState, firstBand<Count>);
}
ZmxStatus zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss, int Se,
                                                           int Al, ZmxiEncodeHuffmanState* pEncHuffState,
                                                           int bFlushState) {
    return countBand(pSrc, pAcStatistics, Ss, Se, Al, pEncHuffState, bFlushState, refineBand<Count>);
}
