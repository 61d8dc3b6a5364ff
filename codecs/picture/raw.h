// raw.h - pictures without a header: 8-bit samples, pixel by pixel, rows without gaps.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"

namespace codecs {

enum class RawFormat : std::uint8_t { gray, rgb, bgr, cmyk }; // 0 of cmyk is no ink

// The size has to be just that of the picture.
Rows openRaw(std::unique_ptr<ByteSource> bytes, int width, int height, RawFormat format);

// Alpha is left out. Grey is written as rgb and bgr too, and these as their luma; CMYK only as cmyk.
std::unique_ptr<RowSink> createRaw(std::unique_ptr<ByteSink> bytes, RawFormat format);

} // namespace codecs
