// transform.cpp - three roads from pixels to coefficients. UnitTransformer cuts whole MCUs out of the picture
// with one library function, whose colour conversion rounds nothing. BandTransformer converts a row of MCUs at
// a time, with rounding, and serves the usual samplings of chroma. PlaneTransformer serves every sampling and
// 12-bit samples, and converts with rounding as well: it makes a small plane of each component, averages it
// down to its size, and leaves the level shift to the transform.
#include "jpeg/transform.h"

#include "jpeg/units.h"
#include "jpeg/wide.h"

#include <cstring>
#include <numeric>

namespace jpeg {

Quantiser::Quantiser(const std::array<std::uint8_t, 64>& base, int quality) : raw(base) {
    zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), quality);
    zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), forward.data());
    std::array<Zmx16u, 64> divisors;
    zmxiQuantInvTableInit_JPEG_8u16u(raw.data(), divisors.data());
    for (std::size_t i = 0; i < divisors.size(); ++i) wideForward[i] = 1.0F / Zmx32f(divisors[i]);
}

QuantTable Quantiser::table() const {
    QuantTable out;
    std::copy(raw.begin(), raw.end(), out.begin());
    return out;
}

namespace {

// Copies the part of a picture that an MCU covers; where the picture ends it goes on with its last column and
// its last row, which costs the fewest bits.
template <class Sample>
void cut(const Sample* pixels, const Frame& frame, int left, int top, ZmxiSize size, Sample* to, int toStep) {
    const int channels = int(frame.components.size()), step = frame.width * channels;
    const int inside = std::min(size.width, frame.width - left), below = frame.height - top;
    for (int y = 0; y < size.height; ++y, to += toStep) {
        const Sample* from = pixels + std::size_t(top + std::min(y, below - 1)) * std::size_t(step) +
                             std::size_t(left * channels);
        std::copy_n(from, inside * channels, to);
        for (int x = inside * channels; x < size.width * channels; ++x) to[x] = to[x - channels];
    }
}

class UnitTransformer final : public Transformer {
public:
    UnitTransformer(const Zmx8u* p, const Frame& f, const Unit& u, const Quantiser (&quantisers)[2])
        : pixels(p), frame(f), unit(u), channels(channelsOf(u.model)) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            planes[i] = samples + count * kBlock;
            for (int k = c.h * c.v; k > 0; --k) table[count++] = quantisers[c.quant].forward.data();
        }
    }

    void mcu(int column, int row, Zmx16s* const* blocks) override {
        const int width = 8 * unit.h, height = 8 * unit.v, left = column * width, top = row * height;
        if (left + width <= frame.width && top + height <= frame.height) {
            const int step = frame.width * channels;
            unit.fromPixels(pixels + std::size_t(top) * std::size_t(step) + std::size_t(left * channels),
                            step, planes);
        } else {
            cut(pixels, frame, left, top, {width, height}, edge, kEdgeStep);
            unit.fromPixels(edge, kEdgeStep, planes);
        }
        for (int i = 0; i < count; ++i)
            zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples + i * kBlock, blocks[i], table[i]);
    }

private:
    static constexpr int kBlocks = 10, kEdgeStep = 16 * 4;

    const Zmx8u* pixels;
    const Frame& frame;
    const Unit& unit;
    int channels, count = 0;
    const Zmx16u* table[kBlocks];
    Zmx16s* planes[kMaxComponents];
    alignas(32) Zmx16s samples[kBlocks * kBlock];
    Zmx8u edge[16 * kEdgeStep];
};

// Serves MCUs in the order of the picture only.
class BandTransformer final : public Transformer {
public:
    BandTransformer(const Zmx8u* p, const Frame& f, Model m, const Quantiser (&q)[2])
        : pixels(p), frame(f), model(m), quantisers(q), step(8 * f.hMax * f.mcuColumns()), rows(8 * f.vMax) {
        for (auto& plane : planes) plane.resize(std::size_t(step) * std::size_t(rows));
    }

    void mcu(int column, int row, Zmx16s* const* blocks) override {
        if (row != current) fill(current = row);
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            const Zmx8u* from = planes[i].data() + 8 * c.h * column;
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x)
                    zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(from + 8 * (y * step + x), step, *blocks++,
                                                        quantisers[c.quant].forward.data());
        }
    }

private:
    void fill(int row) {
        const int channels = channelsOf(model), pixelStep = frame.width * channels;
        const ZmxiSize inside = {frame.width, std::min(rows, frame.height - row * rows)};
        const Zmx8u* from = pixels + std::size_t(row) * std::size_t(rows) * std::size_t(pixelStep);
        Zmx8u* to[kMaxComponents];
        for (int i = 0; i < kMaxComponents; ++i) to[i] = planes[i].data();
        if (model == Model::Ycck)
            zmxiCMYKToYCCK_JPEG_8u_C4P4R(from, pixelStep, to, step, inside);
        else
            zmxiRGBToYCbCr_JPEG_8u_C3P3R(from, pixelStep, to, step, inside);
        for (int i = 0; i < channels; ++i) {
            extend(to[i], inside);
            if (isChroma(model, i)) halve(to[i]);
        }
    }

    // Goes on with the last column and the last row up to the whole MCU.
    void extend(Zmx8u* plane, ZmxiSize inside) const {
        for (int y = 0; y < inside.height; ++y) {
            Zmx8u* line = plane + y * step;
            std::fill(line + inside.width, line + step, line[inside.width - 1]);
        }
        for (int y = inside.height; y < rows; ++y) std::copy_n(plane + (y - 1) * step, step, plane + y * step);
    }

    // The box functions round up and down in turn, so that the mean of a plane stays.
    void halve(Zmx8u* plane) {
        if (frame.hMax == 1) return;
        half.resize(std::size_t(step) / 2);
        for (int y = 0; y < rows / frame.vMax; ++y) {
            const Zmx8u* from = plane + y * frame.vMax * step;
            if (frame.vMax == 2)
                zmxiSampleDownRowH2V2_Box_JPEG_8u_C1(from, from + step, step, half.data());
            else
                zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(from, step, half.data());
            std::copy(half.begin(), half.end(), plane + y * step);
        }
    }

    const Zmx8u* pixels;
    const Frame& frame;
    Model model;
    const Quantiser (&quantisers)[2];
    int step, rows, current = -1;
    std::vector<Zmx8u> planes[kMaxComponents], half;
};

constexpr int kStep = 8 * kMaxFactor; // samples in a row of an MCU's planes

template <class Sample> void split(const Sample* pixels, int channels, Sample* const* planes, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int i = y * kStep; i < y * kStep + size.width; ++i)
            for (int c = 0; c < channels; ++c) planes[c][i] = pixels[channels * i + c];
}

// Pixels of an MCU, `kStep` in a row, to planes of the components.
void toPlanes(Model model, Zmx8u* pixels, Zmx8u* const* planes, ZmxiSize size) {
    if (model == Model::YCbCr)
        zmxiRGBToYCbCr_JPEG_8u_C3P3R(pixels, 3 * kStep, planes, kStep, size);
    else if (model == Model::Ycck)
        zmxiCMYKToYCCK_JPEG_8u_C4P4R(pixels, 4 * kStep, planes, kStep, size);
    else
        split(pixels, channelsOf(model), planes, size);
}
void toPlanes(Model model, Zmx16u* pixels, Zmx16u* const* planes, ZmxiSize size) {
    const int channels = channelsOf(model);
    for (int y = 0; y < size.height; ++y)
        for (int i = y * kStep; i < y * kStep + size.width; ++i) wideFromPixel(model, pixels + channels * i);
    split(pixels, channels, planes, size);
}

void forward(const Zmx8u* samples, Zmx16s* block, const Quantiser& q) {
    zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, kStep, block, q.forward.data());
}
void forward(const Zmx16u* samples, Zmx16s* block, const Quantiser& q) {
    zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(samples, kStep * int(sizeof(Zmx16u)), block, q.wideForward.data());
}

template <class Sample> class PlaneTransformer final : public Transformer {
public:
    PlaneTransformer(const Sample* p, const Frame& f, Model m, const Quantiser (&q)[2])
        : pixels(p), frame(f), model(m), quantisers(q) {}

    void mcu(int column, int row, Zmx16s* const* blocks) override {
        const int width = 8 * frame.hMax, height = 8 * frame.vMax;
        cut(pixels, frame, column * width, row * height, {width, height}, part, kStep * channelsOf(model));
        Sample* all[kMaxComponents];
        for (int i = 0; i < kMaxComponents; ++i) all[i] = planes[i];
        toPlanes(model, part, all, {width, height});
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            const Sample* from = reduce(planes[i], c);
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x)
                    forward(from + 8 * (y * kStep + x), *blocks++, quantisers[c.quant]);
        }
    }

private:
    // The means of the samples that each sample of a smaller component touches.
    const Sample* reduce(const Sample* plane, const Component& c) {
        if (c.h == frame.hMax && c.v == frame.vMax) return plane;
        for (int y = 0; y < 8 * c.v; ++y)
            for (int x = 0; x < 8 * c.h; ++x) {
                const int top = y * frame.vMax / c.v, bottom = divUp((y + 1) * frame.vMax, c.v);
                const int left = x * frame.hMax / c.h, right = divUp((x + 1) * frame.hMax, c.h);
                int sum = 0;
                for (int v = top; v < bottom; ++v)
                    sum = std::accumulate(plane + v * kStep + left, plane + v * kStep + right, sum);
                const int n = (bottom - top) * (right - left);
                small[y * kStep + x] = Sample((sum + n / 2) / n);
            }
        return small;
    }

    const Sample* pixels;
    const Frame& frame;
    Model model;
    const Quantiser (&quantisers)[2];
    Sample part[kMaxComponents * kStep * kStep] = {}, planes[kMaxComponents][kStep * kStep] = {},
                                         small[kStep * kStep];
};

} // namespace

std::unique_ptr<Transformer> makeTransformer(const Zmx8u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], bool fast) {
    const bool chroma = isChroma(model, 1);
    const Unit* unit = unitFor(model, frame.components);
    // There is nothing to round in a picture that is neither converted nor sampled.
    if (unit && (fast || (!chroma && frame.hMax == 1)))
        return std::make_unique<UnitTransformer>(pixels, frame, *unit, quantisers);
    if (unit && chroma) return std::make_unique<BandTransformer>(pixels, frame, model, quantisers);
    return std::make_unique<PlaneTransformer<Zmx8u>>(pixels, frame, model, quantisers);
}

std::unique_ptr<Transformer> makeTransformer(const Zmx16u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], bool) {
    return std::make_unique<PlaneTransformer<Zmx16u>>(pixels, frame, model, quantisers);
}

} // namespace jpeg
