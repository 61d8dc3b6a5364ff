// sequential.h - one block of a baseline or extended sequential scan, the plain way. Arguments are not
// tested.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/bitio.h"

#include <vector>

namespace model {

// The zig-zag walk with its eight extra entries: entry k for k up to 71, -1 beyond.
int zigzagEntry(int k);

ZmxStatus decodeBlock(Reader& r, Zmx16s* dst, Zmx16s& lastDC, const DecodeSpec& dc, const DecodeSpec& ac);
ZmxStatus encodeBlock(Writer& w, const Zmx16s* src, Zmx16s& lastDC, const EncodeSpec& dc, const EncodeSpec& ac);
ZmxStatus countBlock(const Zmx16s* src, Zmx32u* dcStatistics, Zmx32u* acStatistics, Zmx16s& lastDC);

// One call's view of a stream that is read without bounds. `noValue` and `noPath` are those of Reader;
// `astray` says that the stream led to a place outside the tables or the stream, where each implementation
// does what it likes.
struct DirectReader {
    const std::vector<Zmx8u>& src;
    int& bitsLen;
    int& marker;
    Zmx32u& bits;
    Zmx32s& count;
    bool noValue = false;
    bool noPath = false;
    bool astray = false;
};
ZmxStatus decodeBlockDirect(DirectReader& r, Zmx16s* dst, Zmx16s& lastDC, const DecodeSpec& dc, const DecodeSpec& ac);

// dst grows to hold every byte that is written.
void encodeBlockDirect(const Zmx16s* src, std::vector<Zmx8u>& dst, int& bitsLen, Zmx16s& lastDC, const EncodeSpec& dc,
                       const EncodeSpec& ac);

} // namespace model
