// pjsplitrle.cpp - rows of 16-bit samples as two planes of bytes, so that each can be run-length coded by itself.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjrows.h"

namespace zmx {
namespace {

// A length below 1 is reported as a bad step: required. The two planes themselves are not tested.
ZmxStatus rowArgs(const void* src, const void* dst, int len) { return Args().ptr(src, dst).step(len); }

// Plane 0 holds the second byte of each sample in memory, plane 1 the first.
void split(const Zmx8u* samples, Zmx8u* second, Zmx8u* first, int len) {
    for (int i = 0; i < len; ++i) {
        first[i] = samples[2 * std::ptrdiff_t(i)];
        second[i] = samples[2 * std::ptrdiff_t(i) + 1];
    }
}
void join(const Zmx8u* second, const Zmx8u* first, Zmx8u* samples, int len) {
    for (int i = 0; i < len; ++i) {
        samples[2 * std::ptrdiff_t(i)] = first[i];
        samples[2 * std::ptrdiff_t(i) + 1] = second[i];
    }
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiSplitRow_TIFF_16u8u_C1(const Zmx16u* pSrc, Zmx8u* const pDst[2], int len) {
    if (ZmxStatus bad = rowArgs(pSrc, pDst, len)) return bad;
    split(rowAt(pSrc, 0, 0), pDst[0], pDst[1], len);
    return zmxStsNoErr;
}

ZmxStatus zmxiJoinRow_TIFF_8u16u_C1(const Zmx8u* const pSrc[2], Zmx16u* pDst, int len) {
    if (ZmxStatus bad = rowArgs(pSrc, pDst, len)) return bad;
    join(pSrc[0], pSrc[1], rowAt(pDst, 0, 0), len);
    return zmxStsNoErr;
}
