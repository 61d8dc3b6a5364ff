// The irreversible 9/7 wavelet, line by line, in its five number systems.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg2000/model/extended.h"
#include "tests/jpeg2000/model/waveletline.h"

namespace model {

// Whole planes. Zmx16s: 14 fractional bits, wrapping; Zmx32s: extended precision from the first step to the
// output.
template <class T> void forward97(Grid<T>& g, const ZmxiRect& r);
template <class T> void inverse97(Grid<T>& g, const ZmxiRect& r);

template <class T> int lineSize97(const ZmxiRect& r) { return lineBytes(r.width, r.height, 2, sizeof(T), 8); }
template <class T> int bandSize97(const ZmxiRect& r) {
    return bandBytes(r.width, r.height, sizeof(T), lineSize97<T>(r));
}

// How a value of the extended system becomes a sample.
Zmx32s toSample(Extended v);

// One extended line of 2 w samples to w low and w high ones, and back; also a column gathered into a line.
// Zmx16s: 16 fractional bits, saturating; Zmx32s: 16 fractional bits, wrapping; Zmx32f: floats in rows,
// extended aside.
template <class T> void forwardLine97(const T* x, T* low, T* high, int w, int phase);
template <class T> void inverseLine97(const T* low, const T* high, T* dst, int w, int phase);

// One column lifting stage; the same three systems.
template <class T>
void forwardLift97(const T* src0, const T* src1, const T* src2, T* srcDstLow0, T* dstLow1, T* srcDstHigh0,
                   T* srcDstHigh1, T* dstHigh2, int width);
template <class T>
void inverseLift97(const T* srcLow0, const T* srcHigh0, const T* srcHigh1, const T* src0, T* srcDst1, T* srcDst2,
                   T* dst3, T* dst4, int width);

} // namespace model
