// pjbitwrite.cpp - the end of a JPEG stream (ITU-T T.81, F.1.2.3).
// SPDX-License-Identifier: BSD-2-Clause
#include "pjbitwrite.h"

namespace zmx {

ZmxStatus flushWriter(Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos, ZmxiEncodeHuffmanState* pEncHuffState) {
    ZmxStatus status;
    {
        BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
        status = ownpj_write_bits_jpeg(127, 7, out);
    }
    ownpj_EncodeHuffmanStateInit(pEncHuffState);
    return status;
}

} // namespace zmx
