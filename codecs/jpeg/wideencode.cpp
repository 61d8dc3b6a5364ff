// wideencode.cpp - 12-bit pixels to coefficients by planes, colours by the arithmetic of wide.h.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/colours.h"
#include "codecs/jpeg/planeencode.h"
#include "codecs/jpeg/wide.h"

namespace codecs::jpeg {

namespace {

struct Wordwise {
    using Sample = Zmx16u;
    Model model;

    // Samples beyond the largest would overflow the products.
    void split(const Zmx16u* pixels, Zmx16u* const* rows, int width) const {
        const int channels = channelsOf(model);
        if (!isChroma(model, 1)) return splitChannels(pixels, rows, width, channels);
        for (int x = 0; x < width; ++x, pixels += channels) {
            Zmx16u pixel[kMaxComponents] = {};
            for (int c = 0; c < channels; ++c) pixel[c] = std::min(pixels[c], Zmx16u(kWideMax));
            wideFromPixel(model, pixel);
            for (int c = 0; c < channels; ++c) rows[c][x] = pixel[c];
        }
    }
    // The library halves rows of bytes.
    static bool halve(const Zmx16u*, int, Zmx16u*) { return false; }
    static bool halve(const Zmx16u*, const Zmx16u*, int, Zmx16u*) { return false; }

    static void forward(const Zmx16u* samples, int step, Zmx16s* block, const Quantiser& q) {
        zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(samples, step, block, q.reciprocals.data());
    }
};

} // namespace

std::unique_ptr<EncodeRoad> makeWideEncodeRoad(const Frame& frame, Model model, const Quantisers& quantisers) {
    return std::make_unique<PlaneEncoder<Wordwise>>(frame, quantisers, Wordwise{model});
}

} // namespace codecs::jpeg
