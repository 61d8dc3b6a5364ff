// pjbitwrite.cpp - the way of every bit into a JPEG stream (ITU-T T.81, F.1.2.3).
#include "pjbitwrite.h"

ZmxStatus ownpj_write_bits_jpeg(Zmx32u bits, int nBits, BitWriter& out) {
    if (nBits == 0) return zmxStsHuffTableErr;
    int total = out.count + nBits;
    Zmx32u w = (bits & ((1u << nBits) - 1)) << ((24 - total) & 31) | out.buf;
    for (; total >= 8; total -= 8, w <<= 8) {
        if (out.pos >= out.len) return zmxStsOutOfBufErr;
        const Zmx8u byte = Zmx8u(w >> 16);
        out.dst[out.pos++] = byte;
        if (byte == 0xFF) {
            if (out.pos >= out.len) return zmxStsOutOfBufErr;
            out.dst[out.pos++] = 0;
        }
    }
    out.written();
    out.buf = w;
    out.count = total;
    return zmxStsNoErr;
}

ZmxStatus flushWriter(Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos, ZmxiEncodeHuffmanState* pEncHuffState) {
    ZmxStatus status;
    {
        BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
        status = ownpj_write_bits_jpeg(127, 7, out);
    }
    ownpj_EncodeHuffmanStateInit(pEncHuffState);
    return status;
}
