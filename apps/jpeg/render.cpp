// render.cpp - two roads from coefficients to pixels. UnitRenderer runs whole MCUs through one library
// function straight into the picture. PlaneRenderer serves every sampling, the reduced sizes and the finest
// qualities: it makes a small plane of 8-bit samples for each component and converts these.
#include "jpeg/render.h"

#include "jpeg/pixels.h"
#include "jpeg/units.h"

#include <cstring>
#include <numeric>

namespace jpeg {

DequantTable dequantTableOf(const QuantTable& table) {
    // The library takes tables of bytes. Of the bytes 0 to 63 it makes the zig-zag place of each coefficient,
    // by which tables of words are put in order as well.
    std::array<Zmx8u, kBlock> places;
    DequantTable order, out;
    std::iota(places.begin(), places.end(), Zmx8u(0));
    zmxiQuantInvTableInit_JPEG_8u16u(places.data(), order.data());
    // A divisor above 32767 would be read as a negative one.
    for (std::size_t i = 0; i < kBlock; ++i) out[i] = std::min<Zmx16u>(table[order[i]], 32767);
    return out;
}

namespace {

class UnitRenderer final : public Renderer {
public:
    UnitRenderer(const Unit& u, const Frame& frame, const std::vector<DequantTable>& dequant, Picture& out)
        : unit(u), tables(dequant), picture(out) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            planes[i] = samples + count * kBlock;
            for (int k = frame.components[i].h * frame.components[i].v; k > 0; --k) table[count++] = tables[i].data();
        }
    }

    void mcu(const Zmx16s* const* blocks, int column, int row) override {
        for (int i = 0; i < count; ++i) zmxiDCTQuantInv8x8_JPEG_16s_C1(blocks[i], samples + i * kBlock, table[i]);
        const int width = 8 * unit.h, height = 8 * unit.v, step = picture.width * picture.channels;
        const int visibleWidth = std::min(width, picture.width - column * width);
        const int visibleHeight = std::min(height, picture.height - row * height);
        Zmx8u* pixels = picture.pixels.data() + std::size_t(row * height) * std::size_t(step) +
                        std::size_t(column * width * picture.channels);
        if (visibleWidth == width && visibleHeight == height) {
            unit.toPixels(planes, pixels, step);
            return;
        }
        unit.toPixels(planes, edge, kEdgeStep);
        for (int y = 0; y < visibleHeight; ++y)
            std::memcpy(pixels + std::ptrdiff_t(y) * step, edge + y * kEdgeStep,
                        std::size_t(visibleWidth * picture.channels));
    }

private:
    static constexpr int kBlocks = 10, kEdgeStep = 16 * 4;
    const Unit& unit;
    const std::vector<DequantTable> tables;
    Picture& picture;
    int count = 0;
    const Zmx16u* table[kBlocks];
    const Zmx16s* planes[kMaxComponents];
    alignas(32) Zmx16s samples[kBlocks * kBlock];
    Zmx8u edge[16 * kEdgeStep];
};

using InverseTransform = ZmxStatus (*)(const Zmx16s* block, Zmx8u* samples, int step, const Zmx16u* table);

// The library writes the one value of a 1/8 picture to a whole block.
ZmxStatus inverseTo1x1(const Zmx16s* block, Zmx8u* samples, int, const Zmx16u* table) {
    Zmx8u all[64];
    const ZmxStatus status = zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(block, all, 8, table);
    *samples = all[0];
    return status;
}

// To so many samples a side.
InverseTransform inverseTo(int side) {
    return side == 8   ? zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R
           : side == 4 ? zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R
           : side == 2 ? zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R
                       : inverseTo1x1;
}

class PlaneRenderer final : public Renderer {
public:
    PlaneRenderer(const Frame& frame, const std::vector<DequantTable>& tables, int scale, const Canvas& to)
        : side(8 / scale), width(frame.hMax * side), height(frame.vMax * side), canvas(to) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            Plane& p = planes[i];
            p.h = c.h;
            p.v = c.v;
            p.side = side;
            p.table = tables[i];
            // A reduced picture can have the chroma in full: from a larger transform of the smaller
            // component.
            const int ratio = frame.hMax / c.h;
            if (ratio * c.h == frame.hMax && ratio * c.v == frame.vMax && ratio != 3 && ratio * side <= 8)
                p.side = ratio * side;
            p.stretched = p.side * c.h != width || p.side * c.v != height;
            p.inverse = inverseTo(p.side);
            for (int x = 0; x < width; ++x) p.fromColumn[x] = std::uint8_t(x * (p.h * p.side) / width);
            for (int y = 0; y < height; ++y) p.fromRow[y] = std::uint8_t(y * (p.v * p.side) / height);
            ++count;
        }
    }

    void mcu(const Zmx16s* const* blocks, int column, int row) override {
        const Zmx8u* source[kMaxComponents];
        for (int i = 0; i < count; ++i) {
            const Plane& p = planes[i];
            Zmx8u* out = p.stretched ? small : samples[i];
            for (int y = 0; y < p.v; ++y)
                for (int x = 0; x < p.h; ++x)
                    p.inverse(*blocks++, out + (y * kStep + x) * p.side, kStep, p.table.data());
            if (p.stretched) stretch(p, samples[i]);
            source[i] = samples[i];
        }
        canvas.put(source, kStep, column * width, row * height, {width, height});
    }

private:
    static constexpr int kStep = 8 * kMaxFactor;
    struct Plane {
        int h, v;       // blocks
        int side;       // samples of a block
        bool stretched; // to the size of the MCU, by repetition
        std::uint8_t fromColumn[kStep], fromRow[kStep];
        InverseTransform inverse;
        DequantTable table;
    };

    void stretch(const Plane& p, Zmx8u* out) const {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) out[y * kStep + x] = small[p.fromRow[y] * kStep + p.fromColumn[x]];
    }

    int side, width, height; // of a block, and of an MCU
    const Canvas canvas;
    int count = 0;
    Plane planes[kMaxComponents];
    Zmx8u samples[kMaxComponents][kStep * kStep], small[kStep * kStep];
};

// The colour conversion of units rounds nothing. From about quality 97 on that loses more than the
// quantisation does (1 to 2 dB); planes are converted with rounding.
bool wantsRounding(Model model, const DequantTable& luma) {
    constexpr int kFineMean = 4;
    return (model == Model::YCbCr || model == Model::Ycck) &&
           std::accumulate(luma.begin(), luma.end(), 0) < kFineMean * kBlock;
}

} // namespace

std::unique_ptr<Renderer> makeRenderer(const Frame& frame, Model model, const std::vector<DequantTable>& tables,
                                       const DecodeOptions& options, Picture& picture) {
    const bool wide = frame.precision != 8, packed = options.packing != Packing::none;
    if (packed && wide) throw Error("packed pixels are made of 8-bit files only");
    if (options.upsampling == Upsampling::fancy && (wide || options.scale != 1))
        throw Error("chroma is upsampled smoothly in 8-bit pictures of full size only");
    if (wide) return makeWideRenderer(frame, model, tables, options.scale, picture);
    const Canvas canvas(model, options.packing, picture);
    if (options.upsampling == Upsampling::fancy) return makeFancyRenderer(frame, tables, canvas);
    const bool whole = options.scale == 1 && !packed && !wantsRounding(model, tables[0]);
    if (const Unit* unit = whole ? unitFor(model, frame.components) : nullptr)
        return std::make_unique<UnitRenderer>(*unit, frame, tables, picture);
    return std::make_unique<PlaneRenderer>(frame, tables, options.scale, canvas);
}

} // namespace jpeg
