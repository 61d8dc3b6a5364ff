// raw.h - pictures without a header: 8-bit samples, pixel by pixel, rows without gaps.
#pragma once

#include "codecs/picture/picture.h"

enum class RawFormat { gray, rgb, bgr, cmyk }; // 0 of cmyk is no ink

Image readRaw(const std::string& path, int width, int height, RawFormat format);

// Grey is written as rgb and bgr too, and these as their luma; CMYK only as cmyk.
void writeRaw(const std::string& path, const Image& image, RawFormat format);

// The luma of an RGB picture, in 8 bits.
Image toGrey(const Image& image);
