// dxtencode.h - plain models of the encoders of DXT blocks.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/texture/model/surface.h"

namespace model {

// From R, G, B, A. DXT1 writes 8 bytes, the others 16.
void encodeDxt1(const Texels& texels, Zmx8u* block);
void encodeDxt3(const Texels& texels, Zmx8u* block);
void encodeDxt5(const Texels& texels, Zmx8u* block);

// From Y, Co, Cg.
void encodeYCoCg(const Texels& texels, Zmx8u* block);

} // namespace model
