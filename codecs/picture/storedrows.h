// storedrows.h - rows that stand in a file one behind the other, each of the same bytes.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"

#include <functional>

namespace codecs {

// Makes the samples of a row of its bytes in the file. An Error gets the number of the row ahead of it.
using UnpackRow = std::function<void(const std::uint8_t* stored, std::uint8_t* samples)>;

// The rows of `shape` from where `bytes` stands on, `storedBytes` each. Without a function the bytes are the samples, and
// the bands are views of what was read: nothing is copied. With `nothingBehind` it is an Error that the file goes on
// behind the last row.
Rows storedRows(std::unique_ptr<ByteSource> bytes, const Shape& shape, std::size_t storedBytes, UnpackRow unpack,
                bool nothingBehind = false);

// Words of a file in a known order of bytes, as samples and back: the same way in both directions.
void wordsOfBigEndian(const std::uint8_t* from, std::uint8_t* to, std::size_t count);
void wordsOfLittleEndian(const std::uint8_t* from, std::uint8_t* to, std::size_t count);
// Bits, the first at the top, as samples and back. `flip` is 1 where they are the wrong way round, else 0.
void bitsToBytes(const std::uint8_t* stored, std::uint8_t* samples, std::size_t count, unsigned flip);
void bytesToBits(const std::uint8_t* samples, std::uint8_t* stored, std::size_t count, unsigned flip);

} // namespace codecs
