// unitencode.cpp - pixels to coefficients, MCU by MCU through one function of the library.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/roads.h"
#include "codecs/jpeg/units.h"

namespace codecs::jpeg {

namespace {

// An MCU of pixels goes through the samples of its blocks; those that lie beyond the edge are made up.
class UnitEncoder final : public EncodeRoad {
public:
    UnitEncoder(const Frame& frame, const Unit& u, const Quantisers& quantisers)
        : unit(u), channels(channelsOf(u.model)), pictureWidth(frame.width) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            planes[i] = samples + count * kBlock;
            for (int k = c.h * c.v; k > 0; --k) tables[count++] = quantisers[std::size_t(c.quant)].forward;
        }
    }

    void load(const Band& pixels) override { band = pixels; }

    void mcu(int column, Zmx16s* const* blocks) override {
        const int width = 8 * unit.h, height = 8 * unit.v, left = column * width;
        if (left + width <= pictureWidth && height <= band.rows) {
            unit.fromPixels(band.data + std::ptrdiff_t(left) * channels, int(band.step), planes);
        } else {
            cut(left, {width, height});
            unit.fromPixels(edge, kEdgeStep, planes);
        }
        for (int i = 0; i < count; ++i)
            zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples + i * kBlock, blocks[i], tables[i].data());
    }

private:
    static constexpr int kEdgeStep = kUnitSide * kMaxComponents;

    // Where the picture ends it goes on with its last column and its last row, which costs the fewest bits.
    void cut(int left, ZmxiSize size) {
        const int inside = std::min(size.width, pictureWidth - left) * channels;
        for (int y = 0; y < size.height; ++y) {
            Zmx8u* const to = edge + y * kEdgeStep;
            std::copy_n(band.row(std::min(y, band.rows - 1)) + std::ptrdiff_t(left) * channels, inside, to);
            for (int x = inside; x < size.width * channels; ++x) to[x] = to[x - channels];
        }
    }

    const Unit& unit;
    const int channels, pictureWidth;
    int count = 0; // of blocks
    std::array<Zmx16u, kBlock> tables[kUnitBlocks];
    Zmx16s* planes[kMaxComponents];
    alignas(32) Zmx16s samples[kUnitBlocks * kBlock];
    // An MCU at the edge, in rows of kEdgeStep bytes.
    Zmx8u edge[kUnitSide * kEdgeStep];
    Band band;
};

} // namespace

std::unique_ptr<EncodeRoad> makeUnitEncodeRoad(const Frame& frame, const Unit& unit, const Quantisers& quantisers) {
    return std::make_unique<UnitEncoder>(frame, unit, quantisers);
}

} // namespace codecs::jpeg
