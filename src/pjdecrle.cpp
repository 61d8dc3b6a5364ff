// pjdecrle.cpp - unpacks PackBits rows (TIFF 6.0, section 9).
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjrle.h"

using namespace zmx;

ZmxStatus zmxiUnpackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int* pSrcPos, int srcLen, Zmx8u* pDst, int dstLen) {
    if (ZmxStatus bad = Args().ptr(pSrc, pSrcPos, pDst).size(srcLen).size(dstLen)) return bad;
    if (*pSrcPos < 0) return zmxStsUnderRunErr; // nothing stands ahead of the stream
    // As wide as a pointer, so that no packet costs a conversion.
    std::ptrdiff_t pos = *pSrcPos, made = 0;
    const std::ptrdiff_t srcEnd = srcLen, dstEnd = dstLen;
    ZmxStatus status = zmxStsUnderRunErr;
    while (pos < srcEnd) {
        const std::ptrdiff_t header = std::int8_t(pSrc[pos++]);
        if (header >= 0) {
            const std::ptrdiff_t count = header + 1;
            if (count > srcEnd - pos || count > dstEnd - made) break;
            copyBytes(pSrc + pos, pDst + made, count);
            pos += count;
            made += count;
        } else if (header != -128) {
            const std::ptrdiff_t count = 1 - header;
            // The value byte may lie at index srcLen itself, behind the stream: required.
            if (count > dstEnd - made) break;
            setBytes(pSrc[pos++], pDst + made, count);
            made += count;
        }
        if (made == dstEnd) {
            status = zmxStsNoErr;
            break;
        }
    }
    *pSrcPos = int(pos);
    return status;
}
