// pjpixels.h - what the plane conversions share: a colour formula applied along rows.
//
// Two neighbouring samples of a row make one word of 16 bits, and are taken apart and put together by masks and shifts
// of 16-bit lanes. The compiler vectorises that as it stands; rows of bytes it would first widen and at last narrow,
// which takes longer.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"
#include "pjlayouts.h"

namespace zmx {

using layout::Rows;

// The high half of a 16-bit product, one instruction a vector.
constexpr Zmx16s mulHigh(Zmx16s a, Zmx16s b) { return Zmx16s((a * b) >> 16); }

// (a x + b y + 32768) >> 16 in 16-bit lanes: the high halves of the products, and what their low halves and the
// rounding term carry over. Adding 32768 to the low half of a x carries when its top bit is set; since it also swaps
// the ends of the range, the sum with the low half of b y then carries when it is the lesser one as a signed number.
constexpr Zmx16s roundedSumHigh(Zmx16s a, Zmx16s x, Zmx16s b, Zmx16s y) {
    const Zmx16s low = Zmx16s(a * x), sum = Zmx16s(low + Zmx16s(b * y));
    return Zmx16s(mulHigh(a, x) + mulHigh(b, y) + (low < 0) + (sum < low));
}

// A pixel of N samples of 0 to 255, in 16-bit lanes. A colour formula is a function of a Pixel<N> and the Pixel<M> that
// it fills: a result by value would come in one register, and clang would go on in 64-bit lanes.
template <int N> struct Pixel { Zmx16s of[N]; };

// n pixels by a formula, where one side is a run in 16-bit lanes.
template <auto formula, class From, class To, int N, int M>
inline void convertRow(Rows<const From, N> src, Rows<To, M> dst, int n) {
    for (int i = 0; i < n; ++i) {
        Pixel<N> from;
        for (int p = 0; p < N; ++p) from.of[p] = src.of[p][i];
        Pixel<M> to;
        formula(from, to);
        for (int p = 0; p < M; ++p) dst.of[p][i] = To(to.of[p]);
    }
}

// n pixels by a formula. A row written may be any one of those read.
template <auto formula, int N, int M> inline void convertRow(Rows<const Zmx8u, N> src, Rows<Zmx8u, M> dst, int n) {
    const int pairs = n / 2;
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < pairs; ++i) {
        Pixel<N> first, second;
        for (int p = 0; p < N; ++p) {
            const Zmx16u word = load<Zmx16u>(src.of[p], i); // which of the two is the low byte does not matter
            first.of[p] = Zmx16s(word & 255);
            second.of[p] = Zmx16s(word >> 8);
        }
        Pixel<M> low, high;
        formula(first, low);
        formula(second, high);
        for (int p = 0; p < M; ++p) store(dst.of[p], i, Zmx16u(low.of[p] | high.of[p] << 8));
    }
    if (n % 2 == 0) return;
    Pixel<N> last;
    for (int p = 0; p < N; ++p) last.of[p] = src.of[p][n - 1];
    Pixel<M> low;
    formula(last, low);
    for (int p = 0; p < M; ++p) dst.of[p][n - 1] = Zmx8u(low.of[p]);
}

// Planes to planes, in both directions.
template <auto formula, int N, int M>
ZmxStatus planesToPlanes(const Zmx8u* const* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src, dst).planes(src, N).planes(dst, M).step(srcStep).step(dstStep).size(roi))
        return bad;
    Parallel::rows(roi, [=](int y) {
        convertRow<formula>(Rows<const Zmx8u, N>(src, srcStep, y), Rows<Zmx8u, M>(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

} // namespace zmx
