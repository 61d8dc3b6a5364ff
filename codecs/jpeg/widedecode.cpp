// widedecode.cpp - coefficients to 12-bit pixels by planes, colours by the arithmetic of wide.h.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/colours.h"
#include "codecs/jpeg/planedecode.h"
#include "codecs/jpeg/wide.h"

namespace codecs::jpeg {

namespace {

// What PlaneDecoder asks of 12-bit samples: words of the machine, and divisors in single precision.
struct Wordwise {
    using Sample = Zmx16u;
    using Table = std::array<Zmx32f, kBlock>;
    Model model;
    int pixelBytes;

    static Table table(const DequantTable& t) {
        Table out;
        std::copy(t.begin(), t.end(), out.begin());
        return out;
    }

    // The library reduces blocks of 8-bit files only: here it is the mean of the samples that one stands for.
    static void inverse(const Zmx16s* block, Zmx16u* samples, int step, const Table& t, int side) {
        if (side == 8) {
            zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(block, samples, step, t.data());
            return;
        }
        Zmx16u all[kBlock];
        zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(block, all, 8 * int(sizeof(Zmx16u)), t.data());
        const int n = 8 / side;
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x) {
                int sum = n * n / 2;
                for (int k = 0; k < n * n; ++k) sum += all[8 * (y * n + k / n) + x * n + k % n];
                samples[y * (step / int(sizeof(Zmx16u))) + x] = Zmx16u(sum / (n * n));
            }
    }

    // The triangle filter of the library's rows of bytes, with the same rounding terms and ends.
    static void smooth(const Zmx16u* row, int width, Zmx16u* to) {
        for (int x = 0; x < width; ++x) {
            to[2 * x] = Zmx16u((3 * row[x] + row[std::max(x - 1, 0)] + 1) >> 2);
            to[2 * x + 1] = Zmx16u((3 * row[x] + row[std::min(x + 1, width - 1)] + 2) >> 2);
        }
    }
    static void smooth(const Zmx16u* near, const Zmx16u* far, int width, Zmx16u* to) {
        const auto sum = [=](int x) { return 3 * near[x] + far[x]; };
        for (int x = 0; x < width; ++x) {
            to[2 * x] = Zmx16u((3 * sum(x) + sum(std::max(x - 1, 0)) + 8) >> 4);
            to[2 * x + 1] = Zmx16u((3 * sum(x) + sum(std::min(x + 1, width - 1)) + 7) >> 4);
        }
    }

    // Side by side first, then converted where they stand.
    void join(const Zmx16u* const* rows, Zmx8u* pixels, int width) const {
        const int channels = channelsOf(model);
        auto* to = reinterpret_cast<Zmx16u*>(pixels);
        joinChannels(rows, to, width, channels);
        if (isChroma(model, 1))
            for (int x = 0; x < width; ++x, to += channels) wideToPixel(model, to);
    }
};

} // namespace

std::unique_ptr<DecodeRoad> makeWideDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                               const DecodeOptions& options) {
    const Wordwise depth{model, channelsOf(model) * int(sizeof(Zmx16u))};
    return std::make_unique<PlaneDecoder<Wordwise>>(frame, tables, options, depth);
}

} // namespace codecs::jpeg
