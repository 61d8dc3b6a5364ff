// quant.h - plain models of the quantisation tables and of the way from samples to quantised coefficients and back.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

namespace model {

// ITU-T T.81 Figure A.6: entry k is the natural position of the element at zig-zag position k.
extern const int kZigzag[64];

// A table in zig-zag order scaled by a quality factor, in place.
void scaleRawTable(Zmx8u* raw, int quality);

// From a table in zig-zag order: the divisors in natural order, and their reciprocals. The status is that of the
// library.
ZmxStatus inverseTable(const Zmx8u* raw, Zmx16u* table);
ZmxStatus forwardTable(const Zmx8u* raw, Zmx16u* table);

// Coefficients in place.
void quantise(Zmx16s* block, const Zmx16u* table);
void dequantise(Zmx16s* block, const Zmx16u* table); // reads the table as signed

// Samples of 8 bits to coefficients.
void encodeBlock(const Zmx8u* src, int srcStep, Zmx16s* dst, const Zmx16u* table);

// Coefficients to samples of 8 bits: the whole block, or less of it, or a smaller picture.
enum class Extent { Full, DcOnly, Corner2x2, Corner4x4, To2x2, To4x4 };
int pictureSize(Extent e); // width and height
void decodeBlock(Extent e, const Zmx16s* src, Zmx8u* dst, int dstStep, const Zmx16u* table);

// The same for samples of 12 bits: dst is an array of samples at any address.
void encodeBlock12(const Zmx8u* src, int srcStep, Zmx16s* dst, const Zmx32f* table);
void decodeBlock12(const Zmx16s* src, Zmx8u* dst, int dstStep, const Zmx32f* table);

} // namespace model
