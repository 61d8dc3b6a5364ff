// unitdecode.cpp - coefficients to pixels, MCU by MCU through one function of the library.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/roads.h"
#include "codecs/jpeg/units.h"

namespace codecs::jpeg {

namespace {

class UnitDecoder final : public DecodeRoad {
public:
    UnitDecoder(const Frame& frame, const Unit& u, const DequantTables& dequant)
        : unit(u), channels(channelsOf(u.model)), pictureHeight(frame.height),
          step(frame.mcuColumns() * 8 * unit.h * channels), pixels(std::size_t(step) * std::size_t(8 * unit.v)) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            planes[i] = samples + count * kBlock;
            for (int k = c.h * c.v; k > 0; --k) tables[count++] = dequant[i];
        }
    }

    void mcu(int column, const Zmx16s* const* blocks) override {
        for (int i = 0; i < count; ++i)
            zmxiDCTQuantInv8x8_JPEG_16s_C1(blocks[i], samples + i * kBlock, tables[i].data());
        unit.toPixels(planes, pixels.data() + std::ptrdiff_t(column) * 8 * unit.h * channels, step);
    }

    Band unload() override {
        const int rows = std::min(8 * unit.v, pictureHeight - top);
        top += rows;
        return {pixels.data(), step, rows};
    }

private:
    const Unit& unit;
    const int channels, pictureHeight, step;
    int count = 0, top = 0; // of blocks; the row of pixels that comes next
    DequantTable tables[kUnitBlocks];
    const Zmx16s* planes[kMaxComponents];
    alignas(32) Zmx16s samples[kUnitBlocks * kBlock];
    Samples pixels; // of a row of whole MCUs
};

} // namespace

std::unique_ptr<DecodeRoad> makeUnitDecodeRoad(const Frame& frame, const Unit& unit, const DequantTables& tables) {
    return std::make_unique<UnitDecoder>(frame, unit, tables);
}

} // namespace codecs::jpeg
