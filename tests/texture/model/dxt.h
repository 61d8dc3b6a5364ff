// dxt.h - plain models of the DXT1, DXT3 and DXT5 blocks.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/texture/model/surface.h"

namespace model {

Texels decodeDxt1(const Zmx8u* block);
Texels decodeDxt3(const Zmx8u* block);
Texels decodeDxt5(const Zmx8u* block);

} // namespace model
