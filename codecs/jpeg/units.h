// units.h - which function converts the MCUs of which kind of picture.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

// The MCU of a full-size picture: a library function for each direction, between interleaved pixels and
// planes of zero-centred 8x8 blocks. Component 0 (and the K of YCCK) has h x v blocks, the others have one.
struct Unit {
    Model model;
    int h, v;
    ZmxStatus (*fromPixels)(const Zmx8u* pixels, int step, Zmx16s* const* planes);
    ZmxStatus (*toPixels)(const Zmx16s* const* planes, Zmx8u* pixels, int step);
};

inline constexpr int kUnitSide = 16;   // pixels at the most
inline constexpr int kUnitBlocks = 10; // at the most: YCCK at 4:2:0

// Null when there is none for these components.
const Unit* unitFor(Model model, const std::vector<Component>& components);

// The components of a file with such units; `v` is 1 or 2 for h = 2, 1 for h = 1.
std::vector<Component> componentsOf(Model model, int h, int v);

} // namespace codecs::jpeg
