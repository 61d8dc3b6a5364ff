// pjdecdxt.h - the block decoders of DXT1, DXT3 and DXT5.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// Each writes the 16 pixels of a block, R, G, B, A, in raster order, densely: 64 bytes.
void decode_block_dxt1_rgba(const Zmx8u* pBlock, Zmx8u* pOut);
void decode_block_dxt3_rgba(const Zmx8u* pBlock, Zmx8u* pOut);
void decode_block_dxt5_rgba(const Zmx8u* pBlock, Zmx8u* pOut);

} // namespace zmx
