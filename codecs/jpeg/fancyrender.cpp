// fancyrender.cpp - the renderer of smooth pictures: whole planes of samples, chroma of half the rate brought
// to the full one by the triangle filter, and one colour conversion of planes for the picture.
#include "codecs/jpeg/pixels.h"
#include "codecs/jpeg/render.h"

#include <cstring>

namespace jpeg {

namespace {

// A plane with a margin of one sample all around, which the triangle filter looks at.
class Plane {
public:
    int width, height; // of the samples that belong to the picture
    int step;

    Plane(int w, int h, int s, int paddedRows)
        : width(w), height(h), step(s), samples((std::size_t(paddedRows) + 2) * std::size_t(s), Zmx8u(128)) {}
    Plane(int w, int h) : Plane(w, h, w + 2, h) {}
    Zmx8u* row(int y) { return samples.data() + (std::ptrdiff_t(y) + 1) * step + 1; }

    // Repeats the outermost samples into the margin. What an MCU holds beyond the picture does not count.
    void extend() {
        for (int y = 0; y < height; ++y) {
            row(y)[-1] = row(y)[0];
            row(y)[width] = row(y)[width - 1];
        }
        std::memcpy(row(-1) - 1, row(0) - 1, std::size_t(width + 2));
        std::memcpy(row(height) - 1, row(height - 1) - 1, std::size_t(width + 2));
    }

private:
    std::vector<Zmx8u> samples;
};

void transpose(Plane& from, Plane& to) {
    for (int y = 0; y < to.height; ++y)
        for (int x = 0; x < to.width; ++x) to.row(y)[x] = from.row(x)[y];
}

template <class Filter> void smooth(Filter filter, Plane& from, Plane& to) {
    from.extend();
    filter(from.row(0), from.step, {from.width, from.height}, to.row(0), to.step, {to.width, to.height});
}

class FancyRenderer final : public Renderer {
public:
    FancyRenderer(const Frame& f, const std::vector<DequantTable>& dequant, const Canvas& c)
        : frame(f), tables(dequant), canvas(c), rows(f.mcuRows() * 8 * f.vMax), step(f.mcuColumns() * 8 * f.hMax + 2) {
        for (const Component& part : frame.components)
            planes.emplace_back(divUp(frame.width * part.h, frame.hMax), divUp(frame.height * part.v, frame.vMax), step,
                                frame.mcuRows() * 8 * part.v);
    }

    void mcu(const Zmx16s* const* blocks, int column, int row) override {
        for (std::size_t i = 0; i < planes.size(); ++i) {
            const Component& c = frame.components[i];
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x)
                    zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(
                        *blocks++, planes[i].row(8 * (row * c.v + y)) + 8 * (column * c.h + x), step, tables[i].data());
        }
    }

    void finish() override {
        const Zmx8u* source[kMaxComponents];
        std::vector<Plane> full; // those that had to be enlarged
        full.reserve(planes.size());
        for (std::size_t i = 0; i < planes.size(); ++i) {
            const Component& c = frame.components[i];
            if (c.h == frame.hMax && c.v == frame.vMax)
                source[i] = planes[i].row(0);
            else
                source[i] = enlarge(planes[i], c, full.emplace_back(frame.width, frame.height, step, rows));
        }
        canvas.put(source, step, 0, 0, {frame.width, frame.height});
    }

private:
    // Two to one is by the triangle filter, unless the rows are so short that they have no inner samples; every
    // other ratio by repetition.
    const Zmx8u* enlarge(Plane& from, const Component& c, Plane& to) const {
        const bool fullWidth = c.h == frame.hMax, fullHeight = c.v == frame.vMax, halfHeight = 2 * c.v == frame.vMax;
        const bool halfWidth = 2 * c.h == frame.hMax && from.width > 2;
        if (halfWidth && fullHeight) {
            smooth(zmxiSampleUpH2V1_JPEG_8u_C1R, from, to);
        } else if (halfWidth && halfHeight) {
            smooth(zmxiSampleUpH2V2_JPEG_8u_C1R, from, to);
        } else if (fullWidth && halfHeight) {
            // The filter of rows, on columns.
            Plane lying(from.height, from.width), wide(to.height, to.width);
            transpose(from, lying);
            smooth(zmxiSampleUpH2V1_JPEG_8u_C1R, lying, wide);
            transpose(wide, to);
        } else {
            for (int y = 0; y < to.height; ++y)
                for (int x = 0; x < to.width; ++x) to.row(y)[x] = from.row(y * c.v / frame.vMax)[x * c.h / frame.hMax];
        }
        return to.row(0);
    }

    const Frame frame;
    const std::vector<DequantTable> tables;
    const Canvas canvas;
    const int rows, step;
    std::vector<Plane> planes;
};

} // namespace

std::unique_ptr<Renderer> makeFancyRenderer(const Frame& frame, const std::vector<DequantTable>& tables,
                                            const Canvas& canvas) {
    return std::make_unique<FancyRenderer>(frame, tables, canvas);
}

} // namespace jpeg
