// The whole JPEG2000 decoder on arbitrary bytes, with resolutions and layers that the length chooses.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/jpeg2000.h"
#include "fuzz/support/mutator.h"

#include <cstdlib>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg2000(data, size, most, seed);
}

using namespace codecs;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    jpeg2000::DecodeOptions options;
    options.maxPixels = 1 << 14;
    options.reduce = size % 5 == 0 ? int(size / 5 % 3) : 0;
    options.layers = size % 7 == 0 ? int(size / 7 % 3) : 0;
    options.threads = 1;
    try {
        const jpeg2000::PlanarPicture p = jpeg2000::decodePlanes({data, size}, options).picture;
        for (const jpeg2000::Component& c : p.components) {
            if (c.samples.size() != std::size_t(c.width) * std::size_t(c.height)) std::abort();
            for (const std::int32_t v : c.samples)
                if (v < c.smallest() || v > c.largest()) std::abort();
        }
    } catch (const Error&) {
    }
    // The same as a picture: palettes, opacity, inks and colours.
    try {
        const Picture p = jpeg2000::decode({data, size}, options).picture;
        const Shape& s = p.shape();
        for (int y = 0; y < s.height; ++y)
            for (std::size_t x = 0; x < s.rowSamples(); ++x)
                if (p.at(int(x), y) > unsigned(s.maxval)) std::abort();
    } catch (const Error&) {
    }
    try {
        jpeg2000::describe({data, size});
    } catch (const Error&) {
    }
    return 0;
}
