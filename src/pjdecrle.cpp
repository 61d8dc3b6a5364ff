// pjdecrle.cpp - unpacks PackBits rows (TIFF 6.0, section 9).
#include "pjargs.h"
#include "pjrle.h"

ZmxStatus zmxiUnpackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int* pSrcPos, int srcLen, Zmx8u* pDst, int dstLen) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pSrcPos).ptr(pDst).size(srcLen).size(dstLen)) return bad;
    int pos = *pSrcPos, made = 0;
    ZmxStatus status = zmxStsUnderRunErr;
    while (pos < srcLen) {
        const int header = std::int8_t(pSrc[pos++]);
        if (header >= 0) {
            const int count = header + 1;
            if (count > srcLen - pos || count > dstLen - made) break;
            copyBytes(pSrc + pos, pDst + made, count);
            pos += count;
            made += count;
        } else if (header != -128) {
            const int count = 1 - header;
            // The value byte may lie at index srcLen itself, behind the stream: required.
            if (count > dstLen - made) break;
            setBytes(pSrc[pos++], pDst + made, count);
            made += count;
        }
        if (made == dstLen) {
            status = zmxStsNoErr;
            break;
        }
    }
    *pSrcPos = pos;
    return status;
}
