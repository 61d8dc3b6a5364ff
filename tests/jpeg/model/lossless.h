// lossless.h - lossless rows, the plain way. Arguments are not tested.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/bitio.h"
#include "tests/jpeg/model/predictors.h"

namespace model {

void diffFirstRow(const Zmx16s* src, Zmx16s* dst, int width, int p, int pt);
void reconstructFirstRow(const Zmx16s* src, Zmx16s* dst, int width, int p, int pt);

ZmxStatus decodeOne(Reader& r, Zmx16s& dst, const DecodeSpec& spec);
ZmxStatus decodeRow(Reader& r, Zmx16s* const* dst, int width, int planes, const DecodeSpec* const* specs);
ZmxStatus encodeOne(Writer& w, Zmx16s value, const EncodeSpec& spec);
ZmxStatus encodeRow(Writer& w, const Zmx16s* const* src, int width, int planes, const EncodeSpec* const* specs);

} // namespace model
