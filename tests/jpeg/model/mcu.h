// mcu.h - plain models of the conversions between the blocks of one minimum coded unit and its pixels.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

namespace model {

// How the chroma of a unit is sampled, under the traditional names.
enum class Sampling { S444, S422, S411 };

// What a pixel is made of, in order. Pairs422 is Y, Cb, Y, Cr for every two pixels.
enum class Pixel { RGB, BGR, BGR555, BGR565, CMYK, YCC, Pairs422 };

int unitWidth(Sampling s);
int unitHeight(Sampling s);
int planesOf(Pixel p);                   // 3, or 4 for CMYK
int pixelBytes(Pixel p);                 // Pairs422: two for each pixel
int planeSamples(Sampling s, int plane); // of the unit's planes: chroma has one block

// A unit of signed samples to pixels, and pixels to a unit. 16-bit pixels are in the machine's byte order.
void pixelsFromMcu(Sampling s, Pixel p, const Zmx16s* const* planes, Zmx8u* dst, int dstStep);
void mcuFromPixels(Sampling s, Pixel p, const Zmx8u* src, int srcStep, Zmx16s* const* planes);

} // namespace model
