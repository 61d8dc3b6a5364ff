// sequential.cpp - sequential blocks, the plain way. ITU-T T.81 F.1.2, F.2.2.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/sequential.h"

#include "tests/jpeg/support/jpeg_annex_k.h"

#include <cstring>

namespace model {

int zigzagEntry(int k) { return k < 64 ? annexK::zigzag[k] : k < 72 ? 63 : -1; }

ZmxStatus decodeBlock(Reader& r, Zmx16s* dst, Zmx16s& lastDC, const DecodeSpec& dc, const DecodeSpec& ac) {
    std::memset(dst, 0, 64 * sizeof *dst);
    int symbol = 0, v = 0;
    ZmxStatus s = decodeSymbol(r, dc, symbol);
    if (!s && (symbol & 15) != 0) {
        s = fetchBits(r, symbol & 15, v);
        v = extend(v, symbol & 15);
    }
    if (s) {
        r.st->blockPositions = 0;
        return s;
    }
    lastDC = Zmx16s(lastDC + v);
    dst[0] = lastDC;

    int remaining = 63, k = 1;
    while (remaining > 0) {
        s = decodeSymbol(r, ac, symbol);
        if (s) break;
        const int run = symbol >> 4 & 15, size = symbol & 15;
        if (size == 0) {
            if (run != 15) break;
            remaining -= 16;
            k += 16;
            continue;
        }
        remaining -= run + 1;
        k += run;
        s = fetchBits(r, size, v);
        if (s) break;
        const int at = zigzagEntry(k++);
        if (at < 0 || at > 63) return zmxStsErr;
        dst[at] = Zmx16s(extend(v, size));
    }
    r.st->blockPositions = 64 - remaining;
    return s;
}

namespace {

// The encoders' walk over a block: the symbols and value bits in the order in which they stand in the stream.
// put(isDC, symbol, value bits, their number) returns a status that is not 0 to stop the walk.
template <class Put> ZmxStatus walkBlock(const Zmx16s* src, Zmx16s& lastDC, Put put) {
    const int diff = src[0] - lastDC;
    lastDC = src[0];
    const auto valueBits = [](int v) { return Zmx32u(v < 0 ? v - 1 : v); };
    if (ZmxStatus s = put(true, category(diff), valueBits(diff), category(diff))) return s;
    int run = 0;
    for (int k = 1; k < 64; ++k) {
        const int c = src[annexK::zigzag[k]];
        if (c == 0) {
            ++run;
            continue;
        }
        for (; run > 15; run -= 16)
            if (ZmxStatus s = put(false, 240, 0, 0)) return s;
        const int n = category(c);
        if (ZmxStatus s = put(false, run * 16 + n, valueBits(c), n)) return s;
        run = 0;
    }
    return run > 0 ? put(false, 0, 0, 0) : zmxStsNoErr;
}

} // namespace

ZmxStatus encodeBlock(Writer& w, const Zmx16s* src, Zmx16s& lastDC, const EncodeSpec& dc, const EncodeSpec& ac) {
    return walkBlock(src, lastDC, [&](bool isDC, int symbol, Zmx32u bits, int n) {
        if (ZmxStatus s = writeSymbol(w, isDC ? dc : ac, symbol)) return s;
        return n ? writeBits(w, bits, n) : ZmxStatus(zmxStsNoErr);
    });
}

ZmxStatus countBlock(const Zmx16s* src, Zmx32u* dcStatistics, Zmx32u* acStatistics, Zmx16s& lastDC) {
    return walkBlock(src, lastDC, [&](bool isDC, int symbol, Zmx32u, int n) -> ZmxStatus {
        if (n > (isDC ? 15 : 14)) return zmxStsDCTRangeErr;
        ++(isDC ? dcStatistics : acStatistics)[symbol];
        return zmxStsNoErr;
    });
}

void encodeBlockDirect(const Zmx16s* src, std::vector<Zmx8u>& dst, int& bitsLen, Zmx16s& lastDC, const EncodeSpec& dc,
                       const EncodeSpec& ac) {
    const auto at = [&](int i) -> Zmx8u& {
        if (std::size_t(i) >= dst.size()) dst.resize(std::size_t(i) + 1);
        return dst[std::size_t(i)];
    };
    const auto put = [&](Zmx32u value, int n) {
        if (n == 0) return;
        for (int i = n - 1; i >= 0; --i, ++bitsLen) {
            const int free = 8 - (bitsLen & 7);
            // The bits behind the position are cleared first, whatever stood there.
            Zmx8u& byte = at(bitsLen >> 3);
            byte = Zmx8u((byte & 255 << free) | (value >> i & 1) << (free - 1));
            if (free == 1) {
                if (byte == 0xFF) at((bitsLen += 8) >> 3) = 0;
                at((bitsLen >> 3) + 1) = 0;
            }
        }
    };
    walkBlock(src, lastDC, [&](bool isDC, int symbol, Zmx32u bits, int n) -> ZmxStatus {
        const Zmx32u word = symbol < 256 ? (isDC ? dc : ac).word[symbol] : 0;
        put(word & 65535, int(word >> 16));
        put(bits, n);
        return zmxStsNoErr;
    });
}

namespace {

// The reader without bounds.
struct Direct {
    DirectReader& r;
    int pos;

    void fill() {
        while (r.marker <= 0 && r.count < 25) {
            int byte = next();
            if (byte == 0xFF) {
                int behind = 0xFF;
                while (behind == 0xFF && !r.astray) behind = next();
                if (behind != 0) {
                    r.marker = behind;
                    return;
                }
            }
            r.bits = r.bits * 256 + Zmx32u(byte);
            r.count += 8;
        }
    }
    // Off the end the model stops at a marker of its own; what the stream held there is not known.
    int next() {
        if (std::size_t(pos) < r.src.size()) return r.src[std::size_t(pos++)];
        r.astray = true;
        r.marker = 1;
        return 0;
    }
    int take(int n) {
        r.count -= n;
        if (r.count < 0) {
            r.noValue = true;
            return 0;
        }
        return int(r.bits >> r.count & ((1u << n) - 1));
    }

    static constexpr int kEnded = -256, kInvalid = -1;

    int longCode(int minBits, const DecodeSpec& spec) {
        // The words from maxCode on, as far as the table block reaches: the walk may run over the sentinel.
        const auto word = [&](int length) -> int {
            if (length < 18) return spec.maxCode[length];
            if (length < 36) return spec.valIndex[length - 18];
            r.astray = true;
            return 0x7FFFFFFF;
        };
        if (r.count < minBits) fill();
        if (r.count < 1) return kEnded;
        const bool before = r.noValue;
        r.noValue = false;
        Zmx32s code = take(minBits);
        int length = minBits;
        bool ended = false;
        while (code > word(length) || word(length) == 65535) {
            if (r.count < 1) fill();
            ended = r.count < 1;
            if (ended) break;
            code = Zmx32s(Zmx32u(code) * 2 | Zmx32u(take(1)));
            ++length;
        }
        if (r.noValue) r.noPath = true;
        r.noValue = before;
        if (ended) return kEnded;
        if (length > 16) return kInvalid;
        const int at = spec.valIndex[length] - spec.minCode[length] + code;
        if (at < 0 || at > 255) r.noPath = true; // an over-full table
        return spec.huffVal[at & 255];
    }

    int symbol(const DecodeSpec& spec) {
        if (r.count < 8) fill();
        if (r.count < 1) return kEnded;
        const Zmx32u index = r.count < 8 ? r.bits << (8 - r.count) : r.bits >> (r.count - 8);
        const Zmx32u entry = spec.fastTable[index & 255];
        if (entry >> 16 == 0) return longCode(9, spec);
        r.count -= int(entry >> 16);
        return int(entry & 65535);
    }

    // The value of n further bits; false if the data have ended. A code that was cut short leaves a negative
    // count, which is too few even for no bits.
    bool value(int n, int& v) {
        if (r.count < n) {
            fill();
            if (r.count < 1) return false;
        }
        v = n ? extend(take(n), n) : 0;
        return true;
    }
};

} // namespace

ZmxStatus decodeBlockDirect(DirectReader& r, Zmx16s* dst, Zmx16s& lastDC, const DecodeSpec& dc, const DecodeSpec& ac) {
    Direct d{r, r.bitsLen >> 3};
    std::memset(dst, 0, 64 * sizeof *dst);
    int v = 0;
    int symbol = d.symbol(dc);
    if (symbol == Direct::kEnded) return zmxStsNoErr;
    if (symbol == Direct::kInvalid) return zmxStsDCTRangeErr;
    if (symbol != 0 && !d.value(symbol & 15, v)) return zmxStsOutOfBufErr;
    lastDC = Zmx16s(lastDC + v);
    dst[0] = lastDC;
    for (int k = 1; k < 64;) {
        symbol = d.symbol(ac);
        if (symbol == Direct::kEnded) {
            r.count = 0;
            break;
        }
        if (symbol == Direct::kInvalid) return zmxStsDCTRangeErr;
        const int run = symbol >> 4, size = symbol & 15;
        if (size == 0) {
            if (run != 15) break;
            k += 16;
            continue;
        }
        k += run;
        if (!d.value(size, v)) return zmxStsOutOfBufErr;
        const int at = zigzagEntry(k++);
        if (at < 0) {
            r.astray = true;
            break;
        }
        dst[at] = Zmx16s(v);
    }
    r.bitsLen = d.pos * 8;
    return zmxStsNoErr;
}

} // namespace model
