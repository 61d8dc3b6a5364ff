// planeencode.cpp - 8-bit pixels to coefficients by planes, through the plane conversions of the library.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/planeencode.h"

#include "codecs/jpeg/colours.h"

namespace codecs::jpeg {

namespace {

using Forward = void (*)(const Zmx8u* samples, int step, Zmx16s* block, const Quantiser&);

// Rounds coefficients to whole numbers ahead of the division, as the usual integer transforms do.
void forwardInteger(const Zmx8u* samples, int step, Zmx16s* block, const Quantiser& q) {
    zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, step, block, q.forward.data());
}

// Around the middle of 12 bits: the level shift of these is the one that the library has.
void forwardSingle(const Zmx8u* samples, int step, Zmx16s* block, const Quantiser& q) {
    Zmx16u wide[kBlock];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) wide[8 * y + x] = Zmx16u(samples[std::ptrdiff_t(y) * step + x] + 2048 - 128);
    zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(wide, 8 * int(sizeof(Zmx16u)), block, q.reciprocals.data());
}

// What PlaneEncoder asks of 8-bit samples.
struct Bytewise {
    using Sample = Zmx8u;
    SplitRow split;
    Forward forward;

    static bool halve(const Zmx8u* row, int width, Zmx8u* to) {
        return zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(row, width, to) == zmxStsNoErr;
    }
    static bool halve(const Zmx8u* near, const Zmx8u* far, int width, Zmx8u* to) {
        return zmxiSampleDownRowH2V2_Box_JPEG_8u_C1(near, far, width, to) == zmxStsNoErr;
    }
};

} // namespace

std::unique_ptr<EncodeRoad> makePlaneEncodeRoad(const Frame& frame, Model model, const Quantisers& quantisers,
                                                Dct dct) {
    const Bytewise depth{splitterFor(model), dct == Dct::single ? forwardSingle : forwardInteger};
    return std::make_unique<PlaneEncoder<Bytewise>>(frame, quantisers, depth);
}

} // namespace codecs::jpeg
