// formats.h - the reader and the writer of each container, behind openPicture() and createPicture().
//
// A reader has read the header when it is there. Its errors say the container, not the file.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/container.h"
#include "codecs/picture/convert.h"

namespace codecs {

Rows openPng(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels);
std::unique_ptr<RowSink> createPng(std::unique_ptr<ByteSink> bytes);

Rows openPnm(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels);
std::unique_ptr<RowSink> createPnm(std::unique_ptr<ByteSink> bytes, Container container); // pnm, pgm, pbm or pam

Rows openTiff(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels);
std::unique_ptr<RowSink> createTiff(std::unique_ptr<ByteSink> bytes);

Rows openBmp(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels);
std::unique_ptr<RowSink> createBmp(std::unique_ptr<ByteSink> bytes);

} // namespace codecs
