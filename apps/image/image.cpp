// image.cpp - what can be done with a picture without a file.
#include "image/image.h"

#include <cmath>
#include <limits>

std::vector<std::uint8_t> to8bit(const Image& image) {
    std::vector<std::uint8_t> out(image.samples.size());
    const unsigned max = unsigned(image.maxval);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = max == 255 ? std::uint8_t(image.samples[i])
                            : std::uint8_t((image.samples[i] * 255u + max / 2) / max);
    return out;
}

Image from8bit(const std::uint8_t* samples, int width, int height, int channels) {
    Image image{width, height, channels, 255, {}};
    image.samples.assign(samples, samples + image.rowSamples() * std::size_t(height));
    return image;
}

Image withoutAlpha(const Image& image) {
    if (image.channels % 2 != 0) return image;
    Image out{image.width, image.height, image.channels - 1, image.maxval, {}};
    out.samples.reserve(out.rowSamples() * std::size_t(out.height));
    for (std::size_t i = 0; i < image.samples.size(); ++i)
        if (int(i % std::size_t(image.channels)) != image.channels - 1) out.samples.push_back(image.samples[i]);
    return out;
}

double psnr(const Image& a, const Image& b) {
    if (a.width != b.width || a.height != b.height || a.channels != b.channels || a.maxval != b.maxval)
        throw ImageError("pictures of different shapes cannot be compared");
    double sum = 0;
    for (std::size_t i = 0; i < a.samples.size(); ++i) {
        const double d = double(a.samples[i]) - double(b.samples[i]);
        sum += d * d;
    }
    if (sum == 0) return std::numeric_limits<double>::infinity();
    return 10 * std::log10(double(a.maxval) * a.maxval * double(a.samples.size()) / sum);
}
