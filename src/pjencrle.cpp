// pjencrle.cpp - packs rows by PackBits (TIFF 6.0, section 9).
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjrle.h"

#include <algorithm>
#include <bit>

namespace zmx {
namespace {

// As wide as a pointer, so that no packet costs a conversion.
using Index = std::ptrdiff_t;

constexpr Index kMostBytes = 128; // of a packet
constexpr int kMostHeader = 127;  // of a literal packet
constexpr int kMergeHeader = 125; // a literal packet at or above it absorbs nothing

// Lengths of fewer than this are found a byte at a time: the branches are predicted, and the next packet is begun ahead
// of their outcome, where a length counted out of a word has to be waited for. Most packets of text are that short.
constexpr Index kFew = 3;

// The place of the first zero byte of a word in memory order, or 8.
int firstZeroByte(std::uint64_t w) {
    // A byte's top bit is set where the byte is zero; bits above the first zero byte may be set falsely, none below it.
    const std::uint64_t zero = (w - 0x0101010101010101u) & ~w & 0x8080808080808080u;
    return std::countr_zero(zero) / 8;
}

// How many bytes from s on, at most n, are equal to s[0].
Index runLength(const Zmx8u* s, Index n) {
    const std::uint64_t all = 0x0101010101010101u * s[0];
    const auto differ = [=](Index at) { return loadLE<std::uint64_t>(s + at, 0) ^ all; };
    if (n >= 8) {
        for (Index i = 1; i < kFew; ++i)
            if (s[i] != s[0]) return i;
        if (const std::uint64_t d = differ(0)) return std::countr_zero(d) / 8;
        Index i = 8;
        while (i + 32 <= n && !(differ(i) | differ(i + 8) | differ(i + 16) | differ(i + 24))) i += 32;
        for (; i + 8 <= n; i += 8)
            if (const std::uint64_t d = differ(i)) return i + std::countr_zero(d) / 8;
        // The last word once more, flush with the end: what has been seen of it is equal.
        const std::uint64_t d = differ(n - 8);
        return d ? n - 8 + std::countr_zero(d) / 8 : n;
    }
    Index i = 1;
    while (i < n && s[i] == s[0]) ++i;
    return i;
}

// How many bytes from s on, at most `most`, stand ahead of two equal neighbours; `left` bytes of the source remain. The
// first byte counts in any case.
Index literalLength(const Zmx8u* s, Index left, Index most) {
    const Index n = std::min(left, most);
    Index i = 1;
    for (const Index few = std::min({left - 1, n, kFew}); i < few; ++i)
        if (s[i] == s[i + 1]) return i;
    for (; i + 9 <= left && i < n; i += 8)
        if (const int at = firstZeroByte(loadLE<std::uint64_t>(s + i, 0) ^ loadLE<std::uint64_t>(s + i + 1, 0)); at < 8)
            return std::min(i + Index(at), n);
    while (i < n && !(i + 1 < left && s[i] == s[i + 1])) ++i;
    return std::min(i, n);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiPackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int srcLen, Zmx8u* pDst, int* pDstPos, int dstLen) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDstPos, pDst).size(srcLen).size(dstLen)) return bad;
    Index pos = *pDstPos;
    if (pos < 0 || pos > dstLen) return zmxStsUnderRunErr; // and the position stays

    Zmx8u* literal = nullptr;  // the header of the latest literal packet
    bool pairBehindIt = false; // whether one run of exactly two bytes is all that has followed it
    for (Index done = 0;;) {
        const Zmx8u* s = pSrc + done;
        const Index left = srcLen - done, room = dstLen - pos;
        if (left > 1 && s[1] == s[0]) {
            const Index n = runLength(s, std::min(left, kMostBytes));
            if (room < 2) break;
            pairBehindIt = n == 2 && literal && literal + *literal + 2 == pDst + pos;
            pDst[pos++] = Zmx8u(1 - n);
            pDst[pos++] = s[0];
            done += n;
        } else {
            // A pair between two literals is cheaper inside them: its header becomes its first byte, the packet ahead
            // of it takes in the pair and the new bytes, and no packet starts.
            const bool merges = pairBehindIt && *literal < kMergeHeader;
            const Index n = literalLength(s, left, merges ? kMostHeader - *literal - 2 : kMostBytes);
            if (room < n + !merges) break;
            if (merges) {
                pDst[pos - 2] = pDst[pos - 1];
                *literal = Zmx8u(*literal + 2 + n);
            } else {
                literal = pDst + pos;
                pDst[pos++] = Zmx8u(n - 1);
            }
            pairBehindIt = false;
            copyBytes(s, pDst + pos, n);
            pos += n;
            done += n;
        }
        if (done == srcLen) {
            *pDstPos = int(pos);
            return zmxStsNoErr;
        }
    }
    *pDstPos = int(pos); // where the packet that does not fit would have begun
    return zmxStsUnderRunErr;
}
