// packbits.cpp - PackBits rows as they are written down.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/tiff/model/packbits.h"

#include <cstdint>

namespace model {

PackBitsResult packBits(const Zmx8u* src, int srcLen, std::vector<Zmx8u> dst, int pos) {
    const auto dstLen = std::int64_t(dst.size());
    std::int64_t out = pos, at = 0, literalHeader = -1;
    int history = 0; // two bits, the latest packet the lower one: 1 a literal, 0 a run
    const auto pairHere = [&](std::int64_t i) { return i + 1 < srcLen && src[i] == src[i + 1]; };
    const auto note = [&](int bit) { history = (2 * history + bit) & 3; };
    const auto put = [&](std::int64_t i, int v) { dst[std::size_t(i)] = Zmx8u(v); };

    while (at < srcLen) {
        if (out > dstLen) return {zmxStsUnderRunErr, pos, dst};
        const int b = src[at];
        if (pairHere(at)) {
            int n = 1;
            while (n < 128 && at + n < srcLen && src[at + n] == b) ++n;
            if (out + 2 > dstLen) return {zmxStsUnderRunErr, int(out), dst};
            put(out, 1 - n);
            put(out + 1, b);
            out += 2;
            at += n;
            note(0);
            continue;
        }
        const bool merges = history == 2 && dst[std::size_t(out - 2)] == 0xFF && dst[std::size_t(literalHeader)] < 125;
        if (merges) {
            const int header = dst[std::size_t(literalHeader)];
            int n = 1;
            while (header + 2 + n < 127 && at + n < srcLen && !pairHere(at + n)) ++n;
            if (out + n > dstLen) return {zmxStsUnderRunErr, int(out), dst};
            put(out - 2, dst[std::size_t(out - 1)]);
            put(literalHeader, header + 2 + n);
            for (int i = 0; i < n; ++i) put(out + i, src[at + i]);
            out += n;
            at += n;
            history = 1; // the run is gone: the latest packet is the literal one
            continue;
        }
        int n = 1;
        while (n < 128 && at + n < srcLen && !pairHere(at + n)) ++n;
        if (out + n + 1 > dstLen) return {zmxStsUnderRunErr, int(out), dst};
        literalHeader = out;
        put(out, n - 1);
        for (int i = 0; i < n; ++i) put(out + 1 + i, src[at + i]);
        out += n + 1;
        at += n;
        note(1);
    }
    return {zmxStsNoErr, int(out), dst};
}

PackBitsResult unpackBits(const Zmx8u* src, int pos, int srcLen, std::vector<Zmx8u> dst) {
    const auto dstLen = std::int64_t(dst.size());
    std::int64_t at = pos, made = 0;
    do {
        if (at >= srcLen) return {zmxStsUnderRunErr, int(at), dst};
        const int byte = src[at++];
        const int h = byte < 128 ? byte : byte - 256;
        if (h == -128) continue;
        if (h < 0) {
            const int n = 1 - h;
            if (at > srcLen || made + n > dstLen) return {zmxStsUnderRunErr, int(at), dst};
            for (int i = 0; i < n; ++i) dst[std::size_t(made++)] = src[at];
            ++at;
        } else {
            const int n = h + 1;
            if (at + n > srcLen || made + n > dstLen) return {zmxStsUnderRunErr, int(at), dst};
            for (int i = 0; i < n; ++i) dst[std::size_t(made++)] = src[at++];
        }
    } while (made < dstLen);
    return {zmxStsNoErr, int(at), dst};
}

} // namespace model
