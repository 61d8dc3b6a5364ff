// standard.h - the example tables of ITU-T T.81 Annex K.
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

extern const std::array<std::uint8_t, 64> kLumaQuant, kChromaQuant; // for quality 50
extern const HuffmanTable kLumaDc, kLumaAc, kChromaDc, kChromaAc;

} // namespace codecs::jpeg
