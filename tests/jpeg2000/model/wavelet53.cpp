// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/wavelet53.h"

#include <cstdint>

namespace model {

namespace {

// Sums of 32-bit samples wrap in 32 bits; those of 16-bit samples never get there.
Zmx32s wrap(std::int64_t v) { return Zmx32s(Zmx32u(std::uint64_t(v))); }

template <class T> Zmx32s half(T a, T b) { return wrap(std::int64_t(a) + b) >> 1; }
template <class T> Zmx32s quarter(T a, T b) { return wrap(std::int64_t(a) + b + 2) >> 2; }
template <class T> T plus(T a, Zmx32s b) { return T(wrap(std::int64_t(a) + b)); }
template <class T> T minus(T a, Zmx32s b) { return T(wrap(std::int64_t(a) - b)); }

template <class T> void forwardLine(Stroke<T> s, int n, int p) {
    if (n < 2) {
        s[0] = T(wrap(std::int64_t(s[0]) * (p + 1)));
    } else if (n == 2) {
        const Zmx32s e = s[p], d = wrap(std::int64_t(s[1 - p]) - e);
        s[0] = T(wrap(std::int64_t(e) + (wrap(std::int64_t(d) + 1) >> 1)));
        s[1] = T(d);
    } else {
        Line<T> x(n);
        readExt(s, x, n, 2 - p, ((p + n) & 1) + 1);
        // Even absolute positions are the indices of the parity of p; the line begins on one.
        const int begin = p - 2;
        x[begin + 1] = minus(x[begin + 1], half(x[begin], x[begin + 2]));
        for (int i = begin + 2, count = n - p; count > 0; i += 2, count -= 2) {
            x[i + 1] = minus(x[i + 1], half(x[i], x[i + 2]));
            x[i] = plus(x[i], quarter(x[i - 1], x[i + 1]));
        }
        writeInterleave(x, s, p, n);
    }
}

template <class T> void inverseLine(Stroke<T> s, int n, int p) {
    if (n < 2) {
        s[0] = T(s[0] / (p + 1));
    } else if (n == 2) {
        const Zmx32s low = s[0], high = s[1], r = wrap(std::int64_t(high) + 1) >> 1;
        s[p] = T(wrap(std::int64_t(low) - r));
        s[1 - p] = T(wrap(wrap(std::int64_t(low) + high) - std::int64_t(r)));
    } else {
        Line<T> x(n);
        readInterleaveExt(s, x, n, p, p + 1, 2 - ((p + n) & 1));
        x[-p] = minus(x[-p], quarter(x[-p - 1], x[-p + 1]));
        // The last pass may lie wholly past the end and is left out then.
        for (int i = -p, count = p + n; count >= 2; i += 2, count -= 2) {
            x[i + 2] = minus(x[i + 2], quarter(x[i + 1], x[i + 3]));
            x[i + 1] = plus(x[i + 1], half(x[i], x[i + 2]));
        }
        for (int i = 0; i < n; ++i) s[i] = x[i];
    }
}

} // namespace

template <class T> void forward53(Grid<T>& g, const ZmxiRect& r) {
    columns(g, r, forwardLine<T>);
    rows(g, r, forwardLine<T>);
}

template <class T> void inverse53(Grid<T>& g, const ZmxiRect& r) {
    rows(g, r, inverseLine<T>);
    columns(g, r, inverseLine<T>);
}

template <class T> void forwardLine53(const T* x, T* low, T* high, int w, int phase) {
    // High sample i stands at 2 i + 1 - q, low sample i at 2 i + q; one more high sample on the far side of a
    // low one.
    const int q = phase ? 1 : 0;
    auto d = [&](int i) { return minus(x[2 * i + 1 - q], half(x[2 * i - q], x[2 * i + 2 - q])); };
    for (int i = 0; i < w; ++i) {
        high[i] = d(i);
        low[i] = plus(x[2 * i + q], quarter(d(i - 1 + q), d(i + q)));
    }
}

template <class T> void inverseLine53(const T* low, const T* high, T* dst, int w, int phase) {
    const int q = phase ? 1 : 0;
    auto e = [&](int i) { return minus(low[i], quarter(high[i - 1 + q], high[i + q])); };
    for (int i = 0; i < w; ++i) {
        dst[2 * i + q] = e(i);
        dst[2 * i + 1 - q] = plus(high[i], half(e(i - q), e(i + 1 - q)));
    }
}

template <class T>
void forwardLift53(const T* src0, const T* src1, const T* src2, T* dstLow0, const T* srcHigh0, T* dstHigh1, int width) {
    for (int i = 0; i < width; ++i) {
        const T d = minus(src1[i], half(src0[i], src2[i]));
        dstHigh1[i] = d;
        dstLow0[i] = plus(src0[i], quarter(srcHigh0[i], d));
    }
}

template <class T>
void inverseLift53(const T* srcLow1, const T* srcHigh0, const T* srcHigh1, const T* src0, T* dst1, T* dst2, int width) {
    for (int i = 0; i < width; ++i) {
        const T e = minus(srcLow1[i], quarter(srcHigh0[i], srcHigh1[i]));
        dst1[i] = plus(srcHigh0[i], half(src0[i], e));
        dst2[i] = e;
    }
}

template void forward53(Grid<Zmx16s>&, const ZmxiRect&);
template void forward53(Grid<Zmx32s>&, const ZmxiRect&);
template void inverse53(Grid<Zmx16s>&, const ZmxiRect&);
template void inverse53(Grid<Zmx32s>&, const ZmxiRect&);
template void forwardLine53(const Zmx16s*, Zmx16s*, Zmx16s*, int, int);
template void forwardLine53(const Zmx32s*, Zmx32s*, Zmx32s*, int, int);
template void inverseLine53(const Zmx16s*, const Zmx16s*, Zmx16s*, int, int);
template void inverseLine53(const Zmx32s*, const Zmx32s*, Zmx32s*, int, int);
template void forwardLift53(const Zmx16s*, const Zmx16s*, const Zmx16s*, Zmx16s*, const Zmx16s*, Zmx16s*, int);
template void forwardLift53(const Zmx32s*, const Zmx32s*, const Zmx32s*, Zmx32s*, const Zmx32s*, Zmx32s*, int);
template void inverseLift53(const Zmx16s*, const Zmx16s*, const Zmx16s*, const Zmx16s*, Zmx16s*, Zmx16s*, int);
template void inverseLift53(const Zmx32s*, const Zmx32s*, const Zmx32s*, const Zmx32s*, Zmx32s*, Zmx32s*, int);

} // namespace model
