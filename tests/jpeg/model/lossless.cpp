// lossless.cpp - lossless rows, the plain way. ITU-T T.81 Annex H.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/lossless.h"

#include <algorithm>

namespace model {
namespace {

int middle(int p, int pt) { return Zmx16s(Zmx16u(1u << (Zmx32u(p) - Zmx32u(pt) - 1) % 32)); }

} // namespace

void diffFirstRow(const Zmx16s* src, Zmx16s* dst, int width, int p, int pt) {
    for (int i = 0; i < width; ++i) dst[i] = Zmx16s(src[i] - (i ? src[i - 1] : middle(p, pt)));
}
void reconstructFirstRow(const Zmx16s* src, Zmx16s* dst, int width, int p, int pt) {
    for (int i = 0; i < width; ++i) dst[i] = Zmx16s(src[i] + (i ? dst[i - 1] : middle(p, pt)));
}

ZmxStatus decodeOne(Reader& r, Zmx16s& dst, const DecodeSpec& spec) {
    int size = 0, v = 0;
    if (ZmxStatus s = decodeSymbol(r, spec, size)) return s;
    if (size >= 16) {
        dst = -32768;
        return zmxStsNoErr;
    }
    if (size != 0)
        if (ZmxStatus s = fetchBits(r, size, v)) return s;
    dst = Zmx16s(extend(v, size));
    return zmxStsNoErr;
}

ZmxStatus decodeRow(Reader& r, Zmx16s* const* dst, int width, int planes, const DecodeSpec* const* specs) {
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < std::min(planes, 4); ++c)
            if (ZmxStatus s = decodeOne(r, dst[c][x], *specs[c])) return s;
    return zmxStsNoErr;
}

ZmxStatus encodeOne(Writer& w, Zmx16s value, const EncodeSpec& spec) {
    const int size = category(value);
    if (ZmxStatus s = writeSymbol(w, spec, size)) return s;
    if (size == 0 || size == 16) return zmxStsNoErr;
    return writeBits(w, Zmx32u(value < 0 ? value - 1 : value), size);
}

ZmxStatus encodeRow(Writer& w, const Zmx16s* const* src, int width, int planes, const EncodeSpec* const* specs) {
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < std::min(planes, 4); ++c)
            if (ZmxStatus s = encodeOne(w, src[c][x], *specs[c])) return s;
    return zmxStsNoErr;
}

} // namespace model
