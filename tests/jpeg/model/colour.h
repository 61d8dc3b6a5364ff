// colour.h - plain models of the colour conversions of whole planes, a pixel at a time from the formulas.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/pixels.h"

namespace model {

// The pixels of src, converted, to dst. Layouts with K hold complements of the colours, on the side away from
// YCbCr. With 4:2:2 an odd width is one more.
void fromYCbCr(Rows src, Rows dst, ZmxiSize size);
void toYCbCr(Rows src, Rows dst, ZmxiSize size);

} // namespace model
