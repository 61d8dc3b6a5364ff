// transform.cpp - three roads from pixels to coefficients. UnitTransformer cuts whole MCUs out of the picture
// with one library function, whose colour conversion rounds nothing. BandTransformer converts a row of MCUs at
// a time, with rounding, and serves the usual samplings. PlaneTransformer serves every sampling and
// 12-bit samples, and converts with rounding as well: it makes a small plane of each component, averages it
// down to its size, and leaves the level shift to the transform.
#include "codecs/jpeg/transform.h"

#include "codecs/jpeg/units.h"
#include "codecs/jpeg/wide.h"

#include <cstring>
#include <numeric>

namespace jpeg {

Quantiser::Quantiser(const std::array<std::uint8_t, 64>& base, int quality) : raw(base) {
    zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), quality);
    zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), forward.data());
    std::array<Zmx16u, 64> divisors;
    zmxiQuantInvTableInit_JPEG_8u16u(raw.data(), divisors.data());
    for (std::size_t i = 0; i < divisors.size(); ++i) reciprocals[i] = 1.0F / Zmx32f(divisors[i]);
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
        const Sample* from =
            pixels + std::size_t(top + std::min(y, below - 1)) * std::size_t(step) + std::size_t(left * channels);
        std::copy_n(from, inside * channels, to);
        for (int x = inside * channels; x < size.width * channels; ++x) to[x] = to[x - channels];
    }
}

// From 8x8 samples, `step` bytes from row to row, to coefficients.
template <class Sample> using Forward = void (*)(const Sample* samples, int step, Zmx16s* block, const Quantiser&);

void forwardInteger(const Zmx8u* samples, int step, Zmx16s* block, const Quantiser& q) {
    zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, step, block, q.forward.data());
}
void forwardSingle(const Zmx16u* samples, int step, Zmx16s* block, const Quantiser& q) {
    zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(samples, step, block, q.reciprocals.data());
}
// Around the middle of 12 bits: the level shift of these is the one that the library has.
void forwardSingle(const Zmx8u* samples, int step, Zmx16s* block, const Quantiser& q) {
    Zmx16u wide[kBlock];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) wide[8 * y + x] = Zmx16u(samples[y * step + x] + 2048 - 128);
    forwardSingle(wide, 8 * int(sizeof(Zmx16u)), block, q);
}

// Pixels to planes of their channels; steps in samples.
template <class Sample>
void split(const Sample* pixels, int step, int channels, Sample* const* planes, int planeStep, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int c = 0; c < channels; ++c)
            for (int x = 0; x < size.width; ++x)
                planes[c][y * planeStep + x] = pixels[std::ptrdiff_t(y) * step + x * channels + c];
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
            unit.fromPixels(pixels + std::size_t(top) * std::size_t(step) + std::size_t(left * channels), step, planes);
        } else {
            cut(pixels, frame, left, top, {width, height}, edge, kEdgeStep);
            unit.fromPixels(edge, kEdgeStep, planes);
        }
        for (int i = 0; i < count; ++i) zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples + i * kBlock, blocks[i], table[i]);
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
    BandTransformer(const Zmx8u* p, const Frame& f, Model m, const Quantiser (&q)[2], Forward<Zmx8u> way)
        : pixels(p), frame(f), model(m), quantisers(q), forward(way), step(8 * f.hMax * f.mcuColumns()),
          rows(8 * f.vMax) {
        for (auto& plane : planes) plane.resize(std::size_t(step) * std::size_t(rows));
    }

    void mcu(int column, int row, Zmx16s* const* blocks) override {
        if (row != current) fill(current = row);
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            const Zmx8u* from = planes[i].data() + 8 * c.h * column;
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x) forward(from + 8 * (y * step + x), step, *blocks++, quantisers[c.quant]);
        }
    }

private:
    void fill(int row) {
        const ZmxiSize inside = {frame.width, std::min(rows, frame.height - row * rows)};
        const Zmx8u* from = pixels + std::size_t(row) * std::size_t(rows) * std::size_t(pixelStep());
        // In pieces for which the library opens no team of threads: those of a band would wait for each other.
        constexpr int kPiece = 128 * 64;
        const int width = std::min(inside.width, kPiece), height = kPiece / width;
        for (int y = 0; y < inside.height; y += height)
            for (int x = 0; x < inside.width; x += width)
                convert(from, x, y, {std::min(width, inside.width - x), std::min(height, inside.height - y)});
        for (int i = 0; i < channelsOf(model); ++i) {
            extend(planes[i].data(), inside);
            if (isChroma(model, i)) halve(planes[i].data());
        }
    }

    int pixelStep() const { return frame.width * channelsOf(model); }

    void convert(const Zmx8u* band, int x, int y, ZmxiSize size) {
        const Zmx8u* from = band + std::ptrdiff_t(y) * pixelStep() + x * channelsOf(model);
        Zmx8u* to[kMaxComponents] = {};
        for (int i = 0; i < channelsOf(model); ++i) to[i] = planes[i].data() + y * step + x;
        if (model == Model::Ycck)
            zmxiCMYKToYCCK_JPEG_8u_C4P4R(from, pixelStep(), to, step, size);
        else if (model == Model::YCbCr)
            zmxiRGBToYCbCr_JPEG_8u_C3P3R(from, pixelStep(), to, step, size);
        else
            split(from, pixelStep(), channelsOf(model), to, step, size);
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
    const Forward<Zmx8u> forward;
    int step, rows, current = -1;
    std::vector<Zmx8u> planes[kMaxComponents], half;
};

constexpr int kStep = 8 * kMaxFactor; // samples in a row of an MCU's planes

// Pixels of an MCU, `kStep` in a row, to planes of the components.
void toPlanes(Model model, Zmx8u* pixels, Zmx8u* const* planes, ZmxiSize size) {
    if (model == Model::YCbCr)
        zmxiRGBToYCbCr_JPEG_8u_C3P3R(pixels, 3 * kStep, planes, kStep, size);
    else if (model == Model::Ycck)
        zmxiCMYKToYCCK_JPEG_8u_C4P4R(pixels, 4 * kStep, planes, kStep, size);
    else
        split(pixels, kStep * channelsOf(model), channelsOf(model), planes, kStep, size);
}
void toPlanes(Model model, Zmx16u* pixels, Zmx16u* const* planes, ZmxiSize size) {
    const int channels = channelsOf(model);
    for (int y = 0; y < size.height; ++y)
        for (int i = y * kStep; i < y * kStep + size.width; ++i) wideFromPixel(model, pixels + channels * i);
    split(pixels, kStep * channels, channels, planes, kStep, size);
}

template <class Sample> class PlaneTransformer final : public Transformer {
public:
    PlaneTransformer(const Sample* p, const Frame& f, Model m, const Quantiser (&q)[2], Forward<Sample> way)
        : pixels(p), frame(f), model(m), quantisers(q), forward(way) {}

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
                    forward(from + 8 * (y * kStep + x), kStep * int(sizeof(Sample)), *blocks++, quantisers[c.quant]);
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
    const Forward<Sample> forward;
    Sample part[kMaxComponents * kStep * kStep] = {}, planes[kMaxComponents][kStep * kStep] = {}, small[kStep * kStep];
};

} // namespace

std::unique_ptr<Transformer> makeTransformer(const Zmx8u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], Road road) {
    const Unit* unit = unitFor(model, frame.components);
    const Forward<Zmx8u> forward = road == Road::single ? static_cast<Forward<Zmx8u>>(forwardSingle) : forwardInteger;
    // There is nothing to round in a picture that is neither converted nor sampled.
    const bool plain = road == Road::integer && !isChroma(model, 1) && frame.hMax == 1;
    if (unit && (road == Road::units || plain))
        return std::make_unique<UnitTransformer>(pixels, frame, *unit, quantisers);
    if (unit && (isChroma(model, 1) || frame.hMax == 1))
        return std::make_unique<BandTransformer>(pixels, frame, model, quantisers, forward);
    return std::make_unique<PlaneTransformer<Zmx8u>>(pixels, frame, model, quantisers, forward);
}

std::unique_ptr<Transformer> makeTransformer(const Zmx16u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], Road) {
    return std::make_unique<PlaneTransformer<Zmx16u>>(pixels, frame, model, quantisers,
                                                      static_cast<Forward<Zmx16u>>(forwardSingle));
}

} // namespace jpeg
