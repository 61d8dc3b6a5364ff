// pjdecdxt1.h - the block decoder of BC7 and its steps.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <cstddef>

namespace zmx {

// Decodes one block to 4 rows of 16 bytes, R, G, B, A, outStep bytes apart; returns the address behind the block.
const Zmx8u* decode_block_bc7_rgba(const Zmx8u* pBlock, Zmx8u* pOut, std::size_t outStep);

// Reads the 2-bit indexes of texels 2 to 15 of modes 3 and 7 into pIndexes[2] to [15]. Those of texels 0 and 1 are
// read by the mode's decoder.
void auxParseMode37(const Zmx8u* pBlock, Zmx32u* pIndexes, Zmx32u partition);

// The interpolations. pR, pG, pB and pA hold the end-points of a channel, widened to 8 bits: subset 0 first, subset 0
// second, subset 1 first and so on.

// Mode 6: one subset, 4-bit indexes.
void block_interpolate_one_subset_rgba(const Zmx32u* pIndexes, const Zmx32u* pR, const Zmx32u* pG, const Zmx32u* pB,
                                       const Zmx32u* pA, Zmx8u* pOut, std::size_t outStep);

// Modes 4 and 5: colour by the index set A, alpha by the set B, of 2 or 3 bits each; rotation 1, 2 or 3 then swaps
// alpha with red, green or blue.
void block_interpolate_one_subset_rotate_rgba(const Zmx32u* pIndexesA, const Zmx32u* pIndexesB, const Zmx32u* pR,
                                              const Zmx32u* pG, const Zmx32u* pB, const Zmx32u* pA, int rotation,
                                              int bitsA, int bitsB, Zmx8u* pOut, std::size_t outStep);

// Mode 7: two subsets, 2-bit indexes; pSubsets is the partition's row of subsets. `reserved` is not read.
void block_interpolate_multi_subsets_rgba(const Zmx32u* pIndexes, const Zmx32u* pR, const Zmx32u* pG, const Zmx32u* pB,
                                          const Zmx32u* pA, int reserved, const Zmx32u* pSubsets, Zmx8u* pOut,
                                          std::size_t outStep);

} // namespace zmx
