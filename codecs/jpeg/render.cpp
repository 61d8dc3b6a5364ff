// render.cpp - two roads from coefficients to pixels. UnitRenderer runs whole MCUs through one library
// function straight into the picture. PlaneRenderer serves every sampling and the reduced sizes, and converts with
// rounding: it makes planes of 8-bit samples for some MCUs side by side and converts these.
#include "codecs/jpeg/render.h"

#include "codecs/jpeg/pixels.h"
#include "codecs/jpeg/units.h"

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

// Gathers some MCUs side by side, which come row by row, ahead of each conversion.
class PlaneRenderer final : public Renderer {
public:
    PlaneRenderer(const Frame& frame, const std::vector<DequantTable>& tables, int scale, const Canvas& to)
        : side(8 / scale), width(frame.hMax * side), height(frame.vMax * side), columns(frame.mcuColumns()),
          canvas(to) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            // A reduced picture can have the chroma in full: from a larger transform of the smaller
            // component.
            const int ratio = frame.hMax / c.h;
            const bool larger =
                ratio * c.h == frame.hMax && ratio * c.v == frame.vMax && ratio != 3 && ratio * side <= 8;
            planes.emplace_back(c.h, c.v, larger ? ratio * side : side, tables[i], width, height);
        }
    }

    void mcu(const Zmx16s* const* blocks, int column, int row) override {
        const int slot = column % kGathered;
        for (Plane& p : planes)
            for (int y = 0; y < p.v; ++y)
                for (int x = 0; x < p.h; ++x)
                    p.inverse(*blocks++, p.samples.data() + (y * kStep + slot * p.h + x) * p.side, kStep,
                              p.table.data());
        if (slot + 1 < kGathered && column + 1 < columns) return;
        const ZmxiSize size{(slot + 1) * width, height};
        const Zmx8u* source[kMaxComponents];
        for (std::size_t i = 0; i < planes.size(); ++i) source[i] = planes[i].stretchedTo(size);
        canvas.put(source, kStep, (column - slot) * width, row * height, size);
    }

private:
    // Of MCUs: at the usual samplings no more samples than those for which the library opens no team of threads.
    static constexpr int kGathered = 32, kStep = kGathered * 8 * kMaxFactor;

    struct Plane {
        int h, v, side; // blocks of an MCU, and samples of a block
        InverseTransform inverse;
        DequantTable table;
        std::vector<Zmx8u> samples, stretched;          // as they are, and by repetition to the size of the MCU
        std::vector<std::uint16_t> fromColumn, fromRow; // of the latter
        bool doubled = false;                           // in width

        Plane(int horizontal, int vertical, int s, const DequantTable& t, int width, int height)
            : h(horizontal), v(vertical), side(s), inverse(inverseTo(s)), table(t),
              samples(std::size_t(v * side * kStep)) {
            if (h * side == width && v * side == height) return;
            doubled = 2 * h * side == width;
            stretched.resize(std::size_t(height * kStep));
            for (int x = 0; x < kGathered * width; ++x) fromColumn.push_back(std::uint16_t(x * h * side / width));
            for (int y = 0; y < height; ++y) fromRow.push_back(std::uint16_t(y * v * side / height));
        }

        const Zmx8u* stretchedTo(ZmxiSize size) {
            if (stretched.empty()) return samples.data();
            for (int y = 0; y < size.height; ++y) {
                const Zmx8u* const from = samples.data() + fromRow[std::size_t(y)] * kStep;
                Zmx8u* const to = stretched.data() + y * kStep;
                if (y > 0 && fromRow[std::size_t(y)] == fromRow[std::size_t(y - 1)])
                    std::memcpy(to, to - kStep, std::size_t(size.width));
                else if (doubled)
                    for (int x = 0; x < size.width / 2; ++x) to[2 * x] = to[2 * x + 1] = from[x];
                else
                    for (int x = 0; x < size.width; ++x) to[x] = from[fromColumn[std::size_t(x)]];
            }
            return stretched.data();
        }
    };

    int side, width, height; // of a block, and of an MCU
    int columns;             // of MCUs
    const Canvas canvas;
    std::vector<Plane> planes;
};

// The colour conversion of units rounds nothing, which costs up to 1 dB at quality 90 and more above. That of
// planes rounds, and takes as long but for 4:2:0, where coarser pictures go by units in any case.
bool wantsRounding(const Unit& unit, const DequantTable& luma, bool fast) {
    constexpr int kFineMean = 10;
    const bool colours = unit.model == Model::YCbCr || unit.model == Model::Ycck;
    const bool fine = std::accumulate(luma.begin(), luma.end(), 0) < kFineMean * kBlock;
    return colours && !fast && (unit.v == 1 || fine);
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
    const Unit* unit = options.scale == 1 && !packed ? unitFor(model, frame.components) : nullptr;
    if (unit && !wantsRounding(*unit, tables[0], options.fast))
        return std::make_unique<UnitRenderer>(*unit, frame, tables, picture);
    return std::make_unique<PlaneRenderer>(frame, tables, options.scale, canvas);
}

} // namespace jpeg
