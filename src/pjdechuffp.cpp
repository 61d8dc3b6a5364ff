// pjdechuffp.cpp - decoding of one block's share of a progressive scan (ITU-T T.81, G.2).
//
// The block keeps what earlier scans left. Positions are not tested against the band: a damaged stream may
// write outside it, but the walk's table keeps every position within the block.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjband.h"
#include "pjdecwalk.h"
#include "pjzigzagset.h"

#include <algorithm>

namespace zmx {
namespace {

// A symbol's run and category (high and low four bits).
struct RunSize {
    int r, s;
    bool endsBand() const { return s == 0 && r != 15; }
};

ZmxStatus decodeRunSize(BitReader& in, RunSize* pResult, const ZmxiDecodeHuffmanSpec& table) {
    int symbol;
    if (ZmxStatus failed = ownpj_DecodeHuffSymbol(in, &symbol, table)) return failed;
    *pResult = {symbol >> 4, symbol & 15};
    return zmxStsNoErr;
}

// The run of EOBn: 2^n and n further bits. Where those are missing the run stays 2^n.
ZmxStatus decodeEobRun(BitReader& in, int n, Zmx32s* pEobRun) {
    *pEobRun = 1 << n;
    if (n == 0) return zmxStsNoErr; // asks for no bits, not even with a negative count
    if (ZmxStatus failed = need(in, n)) return failed;
    *pEobRun += int(in.take(n));
    return zmxStsNoErr;
}

// The domain of the band stands between the pointers: required.
Args bandArgs(const Zmx8u* pSrc, int nSrcLen, const int* pSrcCurrPos, const Zmx16s* pDst, const int* pMarker, int Ss,
              int Se, int Al, const ZmxiDecodeHuffmanSpec* pAcTable, const ZmxiDecodeHuffmanState* pDecHuffState) {
    return Args()
        .ptr(pSrc)
        .size(nSrcLen)
        .ptr(pSrcCurrPos, pDst, pMarker)
        .arg(badBand(Ss, Se, Al))
        .ptr(pAcTable, pDecHuffState);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                     Zmx16s* pLastDC, int* pMarker, int Al,
                                                     const ZmxiDecodeHuffmanSpec* pDcTable,
                                                     ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args()
                            .ptr(pSrc)
                            .size(nSrcLen)
                            .ptr(pSrcCurrPos, pDst, pLastDC, pMarker)
                            .arg(badShift(Al))
                            .ptr(pDcTable, pDecHuffState))
        return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    if (ZmxStatus failed = decodeDC(in, pLastDC, *pDcTable)) return failed;
    pDst[0] = wrap16s(*pLastDC << Al); // the prediction is the value ahead of the shift
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      int* pMarker, int Al, ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad =
            Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos, pDst, pMarker).arg(badShift(Al)).ptr(pDecHuffState))
        return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    if (ZmxStatus failed = need(in, 1)) return failed;
    if (in.take(1)) pDst[0] = Zmx16s(pDst[0] | 1 << Al);
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                     int* pMarker, int Ss, int Se, int Al,
                                                     const ZmxiDecodeHuffmanSpec* pAcTable,
                                                     ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = bandArgs(pSrc, nSrcLen, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, pAcTable, pDecHuffState))
        return bad;
    if (pDecHuffState->eobRun > 0) {
        --pDecHuffState->eobRun;
        return zmxStsNoErr;
    }
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    for (int k = Ss; k <= Se; ++k) {
        RunSize symbol;
        if (ZmxStatus failed = decodeRunSize(in, &symbol, *pAcTable)) return failed;
        const auto [r, s] = symbol;
        if (symbol.endsBand()) {
            if (ZmxStatus failed = decodeEobRun(in, r, &pDecHuffState->eobRun)) return failed;
            --pDecHuffState->eobRun; // this block is one of the run
            return zmxStsNoErr;
        }
        k += r;
        if (s != 0) {
            if (ZmxStatus failed = need(in, s)) return failed;
            pDst[zigzag::reach[std::size_t(k)]] = wrap16s(extend(in.take(s), s) << Al);
        }
    }
    return zmxStsNoErr;
}

namespace zmx {
namespace {

// Entry [r][zeros]: where the first zero behind r others lies among eight positions; 8 if it is not one of them.
constexpr auto zeroBehind = tableOf<16>([](int r) {
    std::array<Zmx8u, 256> place{};
    for (int zeros = 0; zeros < 256; ++zeros) {
        int left = r, at = 0;
        while (at < 8 && ((zeros >> at & 1) == 0 || left-- > 0)) ++at;
        place[std::size_t(zeros)] = Zmx8u(at);
    }
    return place;
});
static_assert(zeroBehind[0][0xFF] == 0 && zeroBehind[2][0xB4] == 5 && zeroBehind[4][0xB4] == 8);

// The coefficients of a band that are known already. The bits that correct them are collected on the way, and
// used when the block ends, however it ends: one loop for the block is predicted better than one a symbol.
class Known {
    BitReader& in;
    Zmx16s* const block;
    const int Se, Al;
    const std::uint64_t set; // their zig-zag positions
    std::uint64_t bits = 0;  // of the lowest of them, the newest in bit 0
    int count = 0;

    // Collects a bit for each of some of them.
    ZmxStatus collect(std::uint64_t some) {
        for (; some != 0; some &= some - 1) {
            if (ZmxStatus failed = need(in, 1)) return failed;
            bits = bits << 1 | in.take(1);
            ++count;
        }
        return zmxStsNoErr;
    }

public:
    Known(BitReader& reader, Zmx16s* pDst, int first, int last, int shift)
        : in(reader), block(pDst), Se(last), Al(shift),
          set(zigzag::setOf(pDst, [](Zmx16s c) { return c != 0; }) & zigzag::positions(first, last)) {}

    // Goes from k over r zeros to the one behind them, or behind the band.
    ZmxStatus pass(int* k, int r) {
        const int start = *k;
        if (set >> start == 0 && start + r <= Se) { // mostly so: what is known stands at low frequencies
            *k = start + r;
            return zmxStsNoErr;
        }
        const int near = zeroBehind[std::size_t(r)][Zmx8u(~set >> start)], n = near - r;
        if (near < 8 && n <= in.count && start + near <= Se) [[likely]] {
            *k = start + near;
            bits = bits << n | in.take(n);
            count += n;
            return zmxStsNoErr;
        }
        std::uint64_t zeros = ~set & zigzag::positions(start, Se);
        for (; r > 0 && zeros != 0; --r) zeros &= zeros - 1;
        *k = std::min(std::countr_zero(zeros), Se + 1);
        return collect(set & zigzag::positions(start, Se) & ((zeros & (0 - zeros)) - 1)); // all if no zero is left
    }
    // Goes from k, in the band, to its end.
    ZmxStatus passAll(int k) { return collect(set >> k); }

    // A bit tells whether one is added. Whether it is there already is asked of the two's complement form, not
    // of the magnitude: required here.
    void correct() {
        for (std::uint64_t left = set; count > 0; left &= left - 1) {
            Zmx16s& c = block[own_pj_izigzag_index[std::size_t(std::countr_zero(left))]];
            const int step = (int(bits >> --count & 1) & ~(c >> Al)) << Al;
            c = wrap16s(c + (c < 0 ? -step : step));
        }
    }
};

// Decodes symbols up to the end of the band or the one that begins an end-of-band run.
ZmxStatus refineBand(BitReader& in, Zmx16s* pDst, Known& known, int* k, int Se, int Al,
                     const ZmxiDecodeHuffmanSpec& table, Zmx32s* pEobRun) {
    for (; *k <= Se; ++*k) {
        RunSize symbol;
        if (ZmxStatus failed = decodeRunSize(in, &symbol, table)) return failed;
        const auto [r, s] = symbol;
        if (symbol.endsBand()) return decodeEobRun(in, r, pEobRun);
        if (s == 0) {
            if (ZmxStatus failed = known.pass(k, r)) return failed;
        } else { // whatever s is beyond that
            if (ZmxStatus failed = need(in, 1)) return failed;
            const int sign = 2 * int(in.take(1)) - 1; // as good as random: no branch
            if (ZmxStatus failed = known.pass(k, r)) return failed;
            // At Se + 1 this may be element 63, one of those known: its correction finds the bit set already.
            pDst[zigzag::reach[std::size_t(*k)]] = Zmx16s(sign << Al);
        }
    }
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

ZmxStatus zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      int* pMarker, int Ss, int Se, int Al,
                                                      const ZmxiDecodeHuffmanSpec* pAcTable,
                                                      ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = bandArgs(pSrc, nSrcLen, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, pAcTable, pDecHuffState))
        return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    Zmx32s& eobRun = pDecHuffState->eobRun;
    Known known(in, pDst, Ss, Se, Al);
    int k = Ss;
    ZmxStatus status = zmxStsNoErr;
    if (eobRun <= 0) status = refineBand(in, pDst, known, &k, Se, Al, *pAcTable, &eobRun);
    if (status == zmxStsNoErr && eobRun > 0) {
        status = known.passAll(k);
        if (status == zmxStsNoErr) --eobRun;
    }
    known.correct();
    return status;
}
