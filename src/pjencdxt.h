// pjencdxt.h - the block encoders of DXT1, DXT3, DXT5 and of DXT5 with YCoCg.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// Each reads 64 bytes, 16 pixels R, G, B, A in raster order, and writes one block. All four stay functions of their
// own, also where the linker optimises: inlined into the walk over the surface, their loops are unrolled and no longer
// vectorised.
[[gnu::noinline]] void encode_block_rgba_dxt1(const Zmx8u* pBlock, Zmx8u* pOut);
[[gnu::noinline]] void encode_block_rgba_dxt3(const Zmx8u* pBlock, Zmx8u* pOut);
[[gnu::noinline]] void encode_block_rgba_dxt5(const Zmx8u* pBlock, Zmx8u* pOut);

// Reads 48 bytes, 16 pixels Y, Co, Cg, whose chroma it scales in place, and writes one block.
[[gnu::noinline]] void encode_block_ycocg_dxt5(Zmx8u* pBlock, Zmx8u* pOut);

} // namespace zmx
