// progressive.h - one block's share of a progressive scan, the plain way. Arguments are not tested.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/bitio.h"

namespace model {

struct Band {
    int ss, se, al;
};

ZmxStatus decodeDCFirst(Reader& r, Zmx16s* dst, Zmx16s& lastDC, int al, const DecodeSpec& dc);
ZmxStatus decodeDCRefine(Reader& r, Zmx16s* dst, int al);
// `astray`: the stream led to a position behind the zig-zag table, where each implementation does what it
// likes.
ZmxStatus decodeACFirst(Reader& r, Zmx16s* dst, Band band, const DecodeSpec& ac, bool& astray);
ZmxStatus decodeACRefine(Reader& r, Zmx16s* dst, Band band, const DecodeSpec& ac);

ZmxStatus encodeDCFirst(Writer& w, const Zmx16s* src, Zmx16s& lastDC, int al, const EncodeSpec& dc);
ZmxStatus encodeDCRefine(Writer& w, const Zmx16s* src, int al);
ZmxStatus encodeACFirst(Writer& w, const Zmx16s* src, Band band, const EncodeSpec& ac);
ZmxStatus encodeACRefine(Writer& w, const Zmx16s* src, Band band, const EncodeSpec& ac);
ZmxStatus flushACFirst(Writer& w, const EncodeSpec& ac);
ZmxStatus flushACRefine(Writer& w, const EncodeSpec& ac);

ZmxStatus countDCFirst(const Zmx16s* src, Zmx32u* statistics, Zmx16s& lastDC, int al);
ZmxStatus countACFirst(const Zmx16s* src, Zmx32u* statistics, Band band, EncodeState& st);
ZmxStatus countACRefine(const Zmx16s* src, Zmx32u* statistics, Band band, EncodeState& st);
ZmxStatus flushCount(Zmx32u* statistics, EncodeState& st);

} // namespace model
