// pjxrpct.h - what the two directions of the HD Photo core transform share: samples, a 4x4 block, the butterfly,
// the walk over the blocks of a rectangle, and the argument tests.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"
#include "pjrows.h"

namespace zmx::pct {

// A 32-bit sample. Sums wrap, so samples are held unsigned; the shift right is the arithmetic one (a floor).
using Sample = Zmx32u;
constexpr Sample sar(Sample v, int n) { return Sample(Zmx32s(v) >> n); }

// A block of 4 by 4 samples: m[r][c] is row r, column c.
struct Block {
    Sample m[4][4];
};

// A two-dimensional Hadamard step on four samples, its own inverse with the same rounding term r.
inline void butterfly(Sample& a, Sample& b, Sample& c, Sample& d, Sample r) {
    a = a + d;
    b = b - c;
    const Sample t = sar(a - b + r, 1) - d, oldC = c;
    b = b + t;
    c = t;
    d = d - oldC + t;
    a = a - d;
}

// Transforms a row of blocks in place. The loop goes over blocks, so that one vector lane holds one block: the loads
// and stores of column c are four apart. Rows are at any address. The transform must be inlined (always_inline): a call
// in the loop keeps it from being vectorised.
template <void (*transform)(Block&)> void blockRow(Zmx8u* row0, Zmx8u* row1, Zmx8u* row2, Zmx8u* row3, int blocks) {
    for (int i = 0; i < blocks; ++i) {
        Block block;
        const std::ptrdiff_t x = std::ptrdiff_t(4) * i;
        for (int c = 0; c < 4; ++c) block.m[0][c] = load<Sample>(row0, x + c);
        for (int c = 0; c < 4; ++c) block.m[1][c] = load<Sample>(row1, x + c);
        for (int c = 0; c < 4; ++c) block.m[2][c] = load<Sample>(row2, x + c);
        for (int c = 0; c < 4; ++c) block.m[3][c] = load<Sample>(row3, x + c);
        transform(block);
        for (int c = 0; c < 4; ++c) store(row0, x + c, block.m[0][c]);
        for (int c = 0; c < 4; ++c) store(row1, x + c, block.m[1][c]);
        for (int c = 0; c < 4; ++c) store(row2, x + c, block.m[2][c]);
        for (int c = 0; c < 4; ++c) store(row3, x + c, block.m[3][c]);
    }
}

// Two rows of two blocks each, side by side in a buffer of four, so that they fill the lanes of a vector.
template <void (*transform)(Block&)> void twoByTwo(void* pSrcDst, int step, int y) {
    Sample rows[4][16];
    for (int r = 0; r < 4; ++r)
        for (int half = 0; half < 2; ++half)
            std::memcpy(rows[r] + 8 * half, rowAt(pSrcDst, step, y + 4 * half + r), 32);
    const auto bytes = [&](int r) { return reinterpret_cast<Zmx8u*>(rows[r]); };
    blockRow<transform>(bytes(0), bytes(1), bytes(2), bytes(3), 4);
    for (int r = 0; r < 4; ++r)
        for (int half = 0; half < 2; ++half)
            std::memcpy(rowAt(pSrcDst, step, y + 4 * half + r), rows[r] + 8 * half, 32);
}

// All blocks of a rectangle whose sides are multiples of 4.
template <void (*transform)(Block&)> void rectangle(Zmx32s* pSrcDst, int step, ZmxiSize roi) {
    int y = 0;
    if (roi.width == 8)
        for (; y + 8 <= roi.height; y += 8) twoByTwo<transform>(pSrcDst, step, y);
    for (; y < roi.height; y += 4)
        blockRow<transform>(rowAt(pSrcDst, step, y), rowAt(pSrcDst, step, y + 1), rowAt(pSrcDst, step, y + 2),
                            rowAt(pSrcDst, step, y + 3), roi.width / 4);
}

// The step against the bytes of a row, as unsigned numbers: required, so that a negative step passes.
inline Args& stepTest(Args& args, int step, int width) {
    return args.test(Zmx32u(step) < 4u * Zmx32u(width), zmxStsStepErr);
}

// A macroblock of fixed size.
inline ZmxStatus fixedArgs(const void* p, int step, ZmxiSize size) {
    Args args;
    return stepTest(args.ptr(p), step, size.width);
}

// A rectangle: the size ahead of the step, and the multiple of 4 behind it: required.
inline ZmxStatus rectangleArgs(const void* p, int step, ZmxiSize size) {
    Args args;
    return stepTest(args.ptr(p).size(size), step, size.width)
        .test(size.width % 4 != 0 || size.height % 4 != 0, zmxStsSizeErr);
}

} // namespace zmx::pct
