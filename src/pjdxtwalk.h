// pjdxtwalk.h - the walk over a surface of 4x4 blocks, for every texture format and both directions.
//
// Blocks are dense and in raster order; pixels have rows. Whole blocks meet the caller's pixels directly, and the
// blocks that reach beyond the region go through a small local one, so that no pixel outside is read or written.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"
#include "pjrows.h"

#include <algorithm>
#include <cstdint>

namespace zmx {

// The step of a surface is unsigned, and is refused only when it is exactly 0.
inline Args surfaceArgs(const void* pSrc, const void* pDst, Zmx32u step, ZmxiSize roi) {
    return Args().ptr(pSrc, pDst).test(step == 0, zmxStsStepErr).size(roi);
}

// Blocks along a side, the last one perhaps partial; the sum (side + 3) could overflow.
constexpr int blocksOver(int side) { return side / 4 + (side % 4 != 0); }

// Decodes every block with decode(pBlock, pOut, outStep), which writes 4 rows of 16 bytes.
template <int BlockBytes, class Decode>
ZmxStatus decodeSurface(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep, ZmxiSize roi, Decode decode) {
    if (ZmxStatus bad = surfaceArgs(pSrc, pDst, dstStep, roi)) return bad;
    const std::size_t step = dstStep;
    const int across = blocksOver(roi.width), down = blocksOver(roi.height);
    for (int by = 0; by < down; ++by) {
        Zmx8u* const band = pDst + 4 * step * std::size_t(by);
        const int rows = std::min(4, roi.height - 4 * by);
        const int whole = rows == 4 ? roi.width / 4 : 0;
        for (int bx = 0; bx < whole; ++bx, pSrc += BlockBytes) decode(pSrc, band + 16 * std::size_t(bx), step);
        for (int bx = whole; bx < across; ++bx, pSrc += BlockBytes) {
            Zmx8u block[64];
            decode(pSrc, block, 16);
            const std::size_t bytes = 4 * std::size_t(std::min(4, roi.width - 4 * bx));
            for (int y = 0; y < rows; ++y)
                std::memcpy(band + step * std::size_t(y) + 16 * std::size_t(bx), block + 16 * y, bytes);
        }
    }
    return zmxStsNoErr;
}

// Copies cols x rows pixels into a local block of 4 x 4, filled up by its last column, then by its last row.
template <int PixelBytes>
inline void gatherBlock(const Zmx8u* src, std::size_t step, int cols, int rows, Zmx8u* block) {
    for (int y = 0; y < rows; ++y) {
        Zmx8u* const row = block + 4 * PixelBytes * y;
        std::memcpy(row, src + step * std::size_t(y), std::size_t(PixelBytes * cols));
        for (int x = cols; x < 4; ++x) std::memcpy(row + PixelBytes * x, row + PixelBytes * (cols - 1), PixelBytes);
    }
    for (int y = rows; y < 4; ++y)
        std::memcpy(block + 4 * PixelBytes * y, block + 4 * PixelBytes * (rows - 1), 4 * PixelBytes);
}

// Encodes every block with encode(pBlock, pOut), which may change its local block of 16 dense pixels.
template <int PixelBytes, int BlockBytes, class Encode>
ZmxStatus encodeSurface(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roi, Zmx8u* pDst, Encode encode) {
    if (ZmxStatus bad = surfaceArgs(pSrc, pDst, srcStep, roi)) return bad;
    const std::size_t step = srcStep;
    const int across = blocksOver(roi.width), down = blocksOver(roi.height);
    for (int by = 0; by < down; ++by) {
        const Zmx8u* const band = pSrc + 4 * step * std::size_t(by);
        const int rows = std::min(4, roi.height - 4 * by);
        for (int bx = 0; bx < across; ++bx, pDst += BlockBytes) {
            const int cols = std::min(4, roi.width - 4 * bx);
            const Zmx8u* const src = band + 4 * PixelBytes * std::size_t(bx);
            Zmx8u block[16 * PixelBytes];
            if (rows == 4 && cols == 4)
                gatherBlock<PixelBytes>(src, step, 4, 4, block);
            else
                gatherBlock<PixelBytes>(src, step, cols, rows, block);
            encode(block, pDst);
        }
    }
    return zmxStsNoErr;
}

} // namespace zmx
