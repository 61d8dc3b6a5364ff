// The reversible 5/3 wavelet, line by line. T is Zmx16s or Zmx32s.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg2000/model/waveletline.h"

namespace model {

template <class T> void forward53(Grid<T>& g, const ZmxiRect& r);
template <class T> void inverse53(Grid<T>& g, const ZmxiRect& r);

// One extended line of 2 w samples to w low and w high ones, and back; also a column gathered into a line.
template <class T> void forwardLine53(const T* x, T* low, T* high, int w, int phase);
template <class T> void inverseLine53(const T* low, const T* high, T* dst, int w, int phase);

// One column lifting stage.
template <class T>
void forwardLift53(const T* src0, const T* src1, const T* src2, T* dstLow0, const T* srcHigh0, T* dstHigh1, int width);
template <class T>
void inverseLift53(const T* srcLow1, const T* srcHigh0, const T* srcHigh1, const T* src0, T* dst1, T* dst2, int width);

template <class T> int lineSize53(const ZmxiRect& r) { return lineBytes(r.width, r.height, 3, sizeof(T), 4); }
template <class T> int bandSize53(const ZmxiRect& r) {
    return bandBytes(r.width, r.height, sizeof(T), lineSize53<T>(r));
}

} // namespace model
