// planedecode.cpp - coefficients to 8-bit pixels by planes, through the plane conversions of the library.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/planedecode.h"

#include "codecs/jpeg/colours.h"

namespace codecs::jpeg {

namespace {

// What PlaneDecoder asks of 8-bit samples: the library reduces, enlarges and converts them.
struct Bytewise {
    using Sample = Zmx8u;
    using Table = DequantTable;
    JoinRow join;
    int pixelBytes;

    static const Table& table(const DequantTable& t) { return t; }

    static void inverse(const Zmx16s* block, Zmx8u* samples, int step, const Table& t, int side) {
        switch (side) {
        case 8:
            // Skies and margins are flat; the transform would make the same of them, in more time.
            if (isFlat(block, t))
                for (int y = 0; y < 8; ++y) std::memset(samples + std::ptrdiff_t(y) * step, meanOf(block, t), 8);
            else
                zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(block, samples, step, t.data());
            break;
        case 4:
            zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(block, samples, step, t.data());
            break;
        case 2:
            zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(block, samples, step, t.data());
            break;
        default:
            *samples = meanOf(block, t);
        }
    }
    // Whether the transform would make the mean of all samples. Far beyond what a picture holds it wraps instead.
    static bool isFlat(const Zmx16s* block, const Table& t) {
        int others = 0;
        for (int k = 8; k < kBlock; ++k) others |= block[k];
        if (others != 0) return false;
        for (int k = 1; k < 8; ++k) others |= block[k];
        const int dc = block[0] * t[0];
        return others == 0 && dc >= -4096 && dc < 4096;
    }
    // The DC coefficient is eight times the mean. The library's function for it takes the floor of the eighth.
    static Zmx8u meanOf(const Zmx16s* block, const Table& t) {
        return Zmx8u(std::clamp(((block[0] * t[0] + 4) >> 3) + 128, 0, 255));
    }

    static void smooth(const Zmx8u* row, int width, Zmx8u* to) {
        zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(row, width, to);
    }
    static void smooth(const Zmx8u* near, const Zmx8u* far, int width, Zmx8u* to) {
        zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1(near, far, width, to);
    }
};

} // namespace

std::unique_ptr<DecodeRoad> makePlaneDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                                const DecodeOptions& options) {
    const bool packed = options.packing != Packing::none;
    const Bytewise depth{joinerFor(model, options.packing), packed ? int(sizeof(Zmx16u)) : channelsOf(model)};
    return std::make_unique<PlaneDecoder<Bytewise>>(frame, tables, options, depth);
}

} // namespace codecs::jpeg
