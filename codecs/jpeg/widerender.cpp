// widerender.cpp - from the coefficients of 12-bit files to pixels.
#include "codecs/jpeg/render.h"
#include "codecs/jpeg/wide.h"

namespace jpeg {

namespace {

class WideRenderer final : public Renderer {
public:
    WideRenderer(const Frame& frame, Model m, const std::vector<DequantTable>& tables, int s, Picture& out)
        : model(m), scale(s), width(8 * frame.hMax), height(8 * frame.vMax), picture(out) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            Plane& p = planes[count++];
            p.component = frame.components[i];
            std::copy(tables[i].begin(), tables[i].end(), p.table.begin());
        }
    }

    void mcu(const Zmx16s* const* blocks, int column, int row) override {
        for (int i = 0; i < count; ++i) {
            Plane& p = planes[i];
            for (int y = 0; y < p.component.v; ++y)
                for (int x = 0; x < p.component.h; ++x)
                    zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(*blocks++, p.samples + 8 * (y * kStep + x),
                                                         kStep * int(sizeof(Zmx16u)), p.table.data());
        }
        const int left = column * width / scale, top = row * height / scale;
        for (int y = 0; y < height / scale && top + y < picture.height; ++y)
            for (int x = 0; x < width / scale && left + x < picture.width; ++x) {
                Zmx16u* pixel =
                    picture.wide.data() + (std::size_t(top + y) * std::size_t(picture.width) + std::size_t(left + x)) *
                                              std::size_t(picture.channels);
                for (int i = 0; i < count; ++i) pixel[i] = mean(planes[i], x * scale, y * scale);
                wideToPixel(model, pixel);
            }
    }

private:
    static constexpr int kStep = 8 * kMaxFactor;
    struct Plane {
        Component component;
        std::array<Zmx32f, kBlock> table;
        Zmx16u samples[kStep * kStep];
    };

    // Of the scale x scale samples from (x, y) of the MCU on, those of smaller components repeated. The
    // library reduces blocks of 8-bit files only.
    Zmx16u mean(const Plane& p, int x, int y) const {
        int sum = 0;
        for (int v = y; v < y + scale; ++v)
            for (int h = x; h < x + scale; ++h)
                sum += p.samples[v * 8 * p.component.v / height * kStep + h * 8 * p.component.h / width];
        return Zmx16u((sum + scale * scale / 2) / (scale * scale));
    }

    Model model;
    int scale, width, height; // of an MCU
    Picture& picture;
    int count = 0;
    Plane planes[kMaxComponents];
};

} // namespace

std::unique_ptr<Renderer> makeWideRenderer(const Frame& frame, Model model, const std::vector<DequantTable>& tables,
                                           int scale, Picture& picture) {
    return std::make_unique<WideRenderer>(frame, model, tables, scale, picture);
}

} // namespace jpeg
