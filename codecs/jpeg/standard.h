// standard.h - the example tables of ITU-T T.81 Annex K.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

extern const QuantTable kLumaQuant, kChromaQuant; // for quality 50, in zig-zag order
extern const HuffmanTable kLumaDc, kLumaAc, kChromaDc, kChromaAc;

} // namespace codecs::jpeg
