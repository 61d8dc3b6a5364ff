// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/quant.h"

#include "tests/jpeg/model/dct.h"
#include "tests/jpeg/model/levelshift.h"
#include "tests/jpeg/model/word.h"

#include <cstring>

namespace model {

const int kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                         41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                         30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

void scaleRawTable(Zmx8u* raw, int quality) {
    // 32-bit arithmetic: with a quality in the millions the products wrap.
    const Word scale = quality < 50 ? Word(5000 / quality) : Word(200) - Word(2) * quality;
    for (int k = 0; k < 64; ++k) {
        const int v = (Word(raw[k]) * scale + 50).value() / 100;
        raw[k] = Zmx8u(limit(v, 1, 255));
    }
}

ZmxStatus inverseTable(const Zmx8u* raw, Zmx16u* table) {
    for (int k = 0; k < 64; ++k) table[kZigzag[k]] = raw[k];
    return zmxStsNoErr;
}

ZmxStatus forwardTable(const Zmx8u* raw, Zmx16u* table) {
    ZmxStatus status = zmxStsNoErr;
    for (int k = 0; k < 64; ++k) {
        if (raw[k] == 0) status = zmxStsDivByZero;
        table[kZigzag[k]] = quotient(32768, raw[k]);
    }
    return status;
}

void quantise(Zmx16s* block, const Zmx16u* table) {
    for (int i = 0; i < 64; ++i) block[i] = scaledProduct(table[i], block[i], 15);
}

void dequantise(Zmx16s* block, const Zmx16u* table) {
    for (int i = 0; i < 64; ++i) block[i] = product(block[i], Zmx16s(table[i]));
}

void encodeBlock(const Zmx8u* src, int srcStep, Zmx16s* dst, const Zmx16u* table) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) dst[8 * y + x] = sub128(src[std::ptrdiff_t(y) * srcStep + x]);
    dctForward(dst);
    quantise(dst, table);
}

int pictureSize(Extent e) { return e == Extent::To2x2 ? 2 : e == Extent::To4x4 ? 4 : 8; }

void decodeBlock(Extent e, const Zmx16s* src, Zmx8u* dst, int dstStep, const Zmx16u* table) {
    const int n = pictureSize(e);
    Zmx16s block[64];
    if (e == Extent::DcOnly) {
        // The one form whose product is neither signed in the table nor saturated.
        const Zmx8u v = limit8u((int(table[0]) * src[0] >> 3) + 128);
        for (int y = 0; y < 8; ++y) std::memset(dst + std::ptrdiff_t(y) * dstStep, v, 8);
        return;
    }
    std::memcpy(block, src, sizeof block);
    dequantise(block, table);
    switch (e) {
    case Extent::Full:
        dctInverse(block);
        break;
    case Extent::Corner2x2:
        dctInverse2x2(block);
        break;
    case Extent::Corner4x4:
        dctInverse4x4(block);
        break;
    case Extent::To2x2:
        dctTo2x2(block);
        break;
    case Extent::To4x4:
        dctTo4x4(block);
        break;
    case Extent::DcOnly:
        break;
    }
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) dst[std::ptrdiff_t(y) * dstStep + x] = add128(block[n * y + x]);
}

void encodeBlock12(const Zmx8u* src, int srcStep, Zmx16s* dst, const Zmx32f* table) {
    Zmx32f block[64];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Zmx16u v;
            std::memcpy(&v, src + std::ptrdiff_t(y) * srcStep + 2 * x, 2);
            block[8 * y + x] = single(v - 2048.0);
        }
    dctForward(block);
    for (int i = 0; i < 64; ++i) dst[i] = toInt16(single(double(block[i]) * double(table[i])), 1, 0);
}

void decodeBlock12(const Zmx16s* src, Zmx8u* dst, int dstStep, const Zmx32f* table) {
    Zmx32f block[64];
    for (int i = 0; i < 64; ++i) block[i] = single(src[i] * double(table[i]));
    dctInverse(block);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const Zmx16u v = toUint16(single(block[8 * y + x] + 2048.0), 1, 0);
            std::memcpy(dst + std::ptrdiff_t(y) * dstStep + 2 * x, &v, 2);
        }
    // The limit counts rows in whole samples, so with an odd step it does not stand on the rows just written.
    threshold(dst, dstStep, dst, dstStep, {8, 8}, 4095, 4095, true);
}

} // namespace model
