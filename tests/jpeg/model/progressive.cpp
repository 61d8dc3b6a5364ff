// progressive.cpp - progressive blocks, the plain way. ITU-T T.81 Annex G.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/progressive.h"

#include "tests/jpeg/model/sequential.h"
#include "tests/jpeg/support/jpeg_annex_k.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace model {

ZmxStatus decodeDCFirst(Reader& r, Zmx16s* dst, Zmx16s& lastDC, int al, const DecodeSpec& dc) {
    int symbol = 0, v = 0;
    if (ZmxStatus s = decodeSymbol(r, dc, symbol)) return s;
    const int size = symbol & 15;
    if (size != 0) {
        if (ZmxStatus s = fetchBits(r, size, v)) return s;
        lastDC = Zmx16s(lastDC + extend(v, size));
    }
    dst[0] = Zmx16s(lastDC * (1 << al));
    return zmxStsNoErr;
}

ZmxStatus decodeDCRefine(Reader& r, Zmx16s* dst, int al) {
    int bit = 0;
    if (ZmxStatus s = fetchBits(r, 1, bit)) return s;
    if (bit) dst[0] = Zmx16s(dst[0] | 1 << al);
    return zmxStsNoErr;
}

ZmxStatus decodeACFirst(Reader& r, Zmx16s* dst, Band band, const DecodeSpec& ac, bool& astray) {
    if (r.st->eobRun > 0) {
        --r.st->eobRun;
        return zmxStsNoErr;
    }
    for (int k = band.ss; k <= band.se;) {
        int symbol = 0, v = 0;
        if (ZmxStatus s = decodeSymbol(r, ac, symbol)) return s;
        const int run = symbol >> 4, size = symbol & 15;
        if (size != 0) {
            if (ZmxStatus s = fetchBits(r, size, v)) return s;
            const int at = zigzagEntry(k + run);
            if (at < 0) {
                astray = true;
                return zmxStsNoErr;
            }
            dst[at] = Zmx16s(extend(v, size) * (1 << band.al));
            k += run + 1;
        } else if (run == 15) {
            k += 16;
        } else {
            r.st->eobRun = 0;
            if (run != 0) {
                r.st->eobRun = 1 << run;
                if (ZmxStatus s = fetchBits(r, run, v)) return s;
                r.st->eobRun += v - 1; // this block is one of them
            }
            return zmxStsNoErr;
        }
    }
    return zmxStsNoErr;
}

namespace {

// A correction bit for a coefficient that is not zero.
ZmxStatus correct(Reader& r, Zmx16s& c, int al) {
    int bit = 0;
    if (ZmxStatus s = fetchBits(r, 1, bit)) return s;
    const int p1 = 1 << al;
    if (bit && (c & p1) == 0) c = Zmx16s(c < 0 ? c - p1 : c + p1);
    return zmxStsNoErr;
}

} // namespace

ZmxStatus decodeACRefine(Reader& r, Zmx16s* dst, Band band, const DecodeSpec& ac) {
    int k = band.ss;
    const auto coefficient = [&]() -> Zmx16s& { return dst[zigzagEntry(k)]; };
    while (r.st->eobRun <= 0 && k <= band.se) {
        int symbol = 0, value = 0;
        if (ZmxStatus s = decodeSymbol(r, ac, symbol)) return s;
        int run = symbol >> 4;
        if ((symbol & 15) == 0 && run != 15) {
            r.st->eobRun = 1 << run;
            int more = 0;
            if (run != 0)
                if (ZmxStatus s = fetchBits(r, run, more)) return s;
            r.st->eobRun += more;
            break;
        }
        if ((symbol & 15) != 0) {
            int bit = 0;
            if (ZmxStatus s = fetchBits(r, 1, bit)) return s;
            value = bit ? 1 << band.al : -(1 << band.al);
        }
        for (; k <= band.se; ++k) {
            if (coefficient() != 0) {
                if (ZmxStatus s = correct(r, coefficient(), band.al)) return s;
            } else if (--run < 0) {
                break;
            }
        }
        if (value) coefficient() = Zmx16s(value);
        ++k;
    }
    if (r.st->eobRun <= 0) return zmxStsNoErr;
    for (; k <= band.se; ++k)
        if (coefficient() != 0)
            if (ZmxStatus s = correct(r, coefficient(), band.al)) return s;
    --r.st->eobRun;
    return zmxStsNoErr;
}

ZmxStatus encodeDCFirst(Writer& w, const Zmx16s* src, Zmx16s& lastDC, int al, const EncodeSpec& dc) {
    const int t = src[0] >> al;
    const int diff = t - lastDC;
    lastDC = Zmx16s(t);
    const int n = category(diff);
    if (n > 11) return zmxStsDCTRangeErr;
    if (ZmxStatus s = writeSymbol(w, dc, n)) return s;
    return n ? writeBits(w, Zmx32u(diff < 0 ? diff - 1 : diff), n) : ZmxStatus(zmxStsNoErr);
}

ZmxStatus encodeDCRefine(Writer& w, const Zmx16s* src, int al) { return writeBits(w, Zmx32u(src[0] >> al), 1); }

ZmxStatus countDCFirst(const Zmx16s* src, Zmx32u* statistics, Zmx16s& lastDC, int al) {
    const int t = src[0] >> al;
    const int n = category(t - lastDC);
    lastDC = Zmx16s(t);
    if (n > 11) return zmxStsDCTRangeErr;
    ++statistics[n];
    return zmxStsNoErr;
}

namespace {

// Where the symbols of an AC scan go: to the stream, or to the counters.
struct Sink {
    Writer* writer; // null: count
    const EncodeSpec* spec;
    Zmx32u* statistics;
    EncodeState& st;

    ZmxStatus symbol(int s) {
        if (writer) return writeSymbol(*writer, *spec, s);
        ++statistics[s];
        return zmxStsNoErr;
    }
    ZmxStatus bits(Zmx32u v, int n) { return writer && n ? writeBits(*writer, v, n) : ZmxStatus(zmxStsNoErr); }

    // The end-of-band run held back.
    ZmxStatus run() {
        if (st.eobRun == 0) return zmxStsNoErr;
        if (st.eobRun == 1) {
            if (ZmxStatus s = symbol(0)) return s;
            st.eobRun = 0;
            return zmxStsNoErr;
        }
        if (st.eobRun > 32767) {
            if (ZmxStatus s = symbol(224)) return s;
            if (ZmxStatus s = bits(Zmx32u(st.eobRun), 14)) return s;
            st.eobRun -= 32767;
        }
        const int n = category(st.eobRun) - 1;
        if (n > 14) return zmxStsDCTRangeErr;
        if (ZmxStatus s = symbol(n * 16)) return s;
        if (ZmxStatus s = bits(Zmx32u(st.eobRun), n)) return s; // no bits behind a rest of 1, which the writer refuses
        st.eobRun = 0;
        return zmxStsNoErr;
    }
    // The correction bits held back behind it.
    ZmxStatus held() {
        for (int i = 0; st.correctionCount > 0; ++i, --st.correctionCount)
            if (ZmxStatus s = bits(st.correctionBits[i], 1)) return s;
        return zmxStsNoErr;
    }
};

ZmxStatus walkACFirst(Sink sink, const Zmx16s* src, Band band, int maxCategory) {
    int zeros = 0;
    for (int k = band.ss; k <= band.se; ++k) {
        const int c = src[zigzagEntry(k)], a = std::abs(c) >> band.al;
        zeros += a == 0;
        if (a == 0) continue;
        if (ZmxStatus s = sink.run()) return s;
        for (; zeros > 15; zeros -= 16)
            if (ZmxStatus s = sink.symbol(240)) return s;
        const int n = category(a);
        if (n > maxCategory) return zmxStsDCTRangeErr;
        if (ZmxStatus s = sink.symbol(zeros * 16 + n)) return s;
        if (ZmxStatus s = sink.bits(Zmx32u(c < 0 ? ~a : a), n)) return s;
        zeros = 0;
    }
    if (zeros == 0) return zmxStsNoErr;
    ++sink.st.eobRun;
    return sink.st.eobRun >= 32767 ? sink.run() : ZmxStatus(zmxStsNoErr);
}

ZmxStatus walkACRefine(Sink sink, const Zmx16s* src, Band band) {
    EncodeState& st = sink.st;
    int last = 0;
    for (int k = band.ss; k <= band.se; ++k)
        if (std::abs(src[zigzagEntry(k)]) >> band.al == 1) last = k;
    // This block's bits that are not written yet. They lie in correctionBits behind those held with the run.
    int start = st.correctionCount, bits = 0;
    const auto ownBits = [&]() -> ZmxStatus {
        for (int i = 0; i < bits; ++i)
            if (ZmxStatus s = sink.bits(st.correctionBits[start + i], 1)) return s;
        start = bits = 0;
        st.correctionCount = 0;
        return zmxStsNoErr;
    };
    const auto runAndHeld = [&]() -> ZmxStatus {
        if (ZmxStatus s = sink.run()) return s;
        return sink.held();
    };
    int zeros = 0;
    for (int k = band.ss; k <= band.se; ++k) {
        const int c = src[zigzagEntry(k)], a = std::abs(c) >> band.al;
        zeros += a == 0;
        if (a == 0) continue;
        for (; zeros > 15 && k <= last; zeros -= 16) {
            if (ZmxStatus s = runAndHeld()) return s;
            if (ZmxStatus s = sink.symbol(240)) return s;
            if (ZmxStatus s = ownBits()) return s;
        }
        if (a > 1) {
            if (start + bits == 1024) { // no room, as earlier bits could not be written: it is their turn
                if (ZmxStatus s = runAndHeld()) return s;
                for (int i = 0; i < bits; ++i) st.correctionBits[i] = st.correctionBits[start + i];
                start = 0;
            }
            if (sink.writer) st.correctionBits[start + bits] = Zmx8u(a & 1);
            ++bits;
            continue;
        }
        if (ZmxStatus s = runAndHeld()) return s;
        if (ZmxStatus s = sink.symbol(zeros * 16 + 1)) return s;
        if (ZmxStatus s = sink.bits(c < 0 ? 0 : 1, 1)) return s;
        if (ZmxStatus s = ownBits()) return s;
        zeros = 0;
    }
    if (zeros == 0 && bits == 0) return zmxStsNoErr;
    ++st.eobRun;
    st.correctionCount += bits;
    return st.eobRun >= 32767 || st.correctionCount > 937 ? runAndHeld() : ZmxStatus(zmxStsNoErr);
}

} // namespace

ZmxStatus encodeACFirst(Writer& w, const Zmx16s* src, Band band, const EncodeSpec& ac) {
    return walkACFirst({&w, &ac, nullptr, *w.st}, src, band, 11);
}
ZmxStatus encodeACRefine(Writer& w, const Zmx16s* src, Band band, const EncodeSpec& ac) {
    return walkACRefine({&w, &ac, nullptr, *w.st}, src, band);
}
ZmxStatus countACFirst(const Zmx16s* src, Zmx32u* statistics, Band band, EncodeState& st) {
    return walkACFirst({nullptr, nullptr, statistics, st}, src, band, 10);
}
ZmxStatus countACRefine(const Zmx16s* src, Zmx32u* statistics, Band band, EncodeState& st) {
    return walkACRefine({nullptr, nullptr, statistics, st}, src, band);
}

ZmxStatus flushACFirst(Writer& w, const EncodeSpec& ac) {
    Sink sink{&w, &ac, nullptr, *w.st};
    if (sink.run() == zmxStsNoErr) (void)sink.held();
    return flush(w);
}
ZmxStatus flushACRefine(Writer& w, const EncodeSpec& ac) {
    Sink sink{&w, &ac, nullptr, *w.st};
    const ZmxStatus kept = sink.run();
    if (kept == zmxStsNoErr) (void)sink.held();
    const ZmxStatus s = flush(w);
    return s ? s : kept;
}
ZmxStatus flushCount(Zmx32u* statistics, EncodeState& st) {
    const ZmxStatus s = Sink{nullptr, nullptr, statistics, st}.run();
    std::memset(&st, 0, sizeof st);
    return s;
}

} // namespace model
