// colours.h - rows of 8-bit pixels to rows of the components of a file, and back, converted with rounding.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"
#include "codecs/jpeg/jpeg.h"

namespace codecs::jpeg {

using SplitRow = void (*)(const Zmx8u* pixels, Zmx8u* const* rows, int width);
SplitRow splitterFor(Model model);

// Packed pixels are words in the byte order of the machine. An Error when the colours have no such form.
using JoinRow = void (*)(const Zmx8u* const* rows, Zmx8u* pixels, int width);
JoinRow joinerFor(Model model, Packing packing);

// Channels side by side and apart, as they are.
template <class Sample> void splitChannels(const Sample* pixels, Sample* const* rows, int width, int channels) {
    for (int c = 0; c < channels; ++c)
        for (int x = 0; x < width; ++x) rows[c][x] = pixels[std::ptrdiff_t(x) * channels + c];
}
template <class Sample> void joinChannels(const Sample* const* rows, Sample* pixels, int width, int channels) {
    for (int c = 0; c < channels; ++c)
        for (int x = 0; x < width; ++x) pixels[std::ptrdiff_t(x) * channels + c] = rows[c][x];
}

} // namespace codecs::jpeg
