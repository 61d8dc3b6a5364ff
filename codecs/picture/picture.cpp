// image.cpp - what can be done with a picture without a file.
#include "codecs/picture/picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

Image scaled(Image image, int maxval) {
    const std::uint64_t from = unsigned(image.maxval), to = unsigned(maxval);
    if (from != to)
        for (std::uint16_t& s : image.samples) s = std::uint16_t((s * to + from / 2) / from);
    image.maxval = maxval;
    return image;
}

std::vector<std::uint8_t> to8bit(const Image& image) {
    if (image.maxval != 255) return to8bit(scaled(image, 255));
    return {image.samples.begin(), image.samples.end()};
}

Image from8bit(const std::uint8_t* samples, int width, int height, int channels) {
    Image image{width, height, channels, 255, {}};
    image.samples.assign(samples, samples + image.rowSamples() * std::size_t(height));
    return image;
}

Image withoutAlpha(const Image& image) {
    if (image.channels % 2 != 0 || image.cmyk) return image;
    Image out{image.width, image.height, image.channels - 1, image.maxval, {}};
    out.samples.reserve(out.rowSamples() * std::size_t(out.height));
    for (std::size_t i = 0; i < image.samples.size(); ++i)
        if (int(i % std::size_t(image.channels)) != image.channels - 1) out.samples.push_back(image.samples[i]);
    return out;
}

Image crop(const Image& image, int x, int y, int width, int height) {
    if (x < 0 || y < 0 || width < 1 || height < 1 || width > image.width - x || height > image.height - y)
        throw ImageError("the part to crop is not inside the picture of " + std::to_string(image.width) + " by " +
                         std::to_string(image.height));
    Image out{width, height, image.channels, image.maxval, {}, image.cmyk};
    out.samples.reserve(out.rowSamples() * std::size_t(height));
    for (int row = y; row < y + height; ++row) {
        const std::uint16_t* from = image.row(row) + std::size_t(x) * std::size_t(image.channels);
        out.samples.insert(out.samples.end(), from, from + out.rowSamples());
    }
    return out;
}

Difference compare(const Image& a, const Image& b, int level) {
    if (a.width != b.width || a.height != b.height || a.channels != b.channels || a.maxval != b.maxval)
        throw ImageError("pictures of different shapes cannot be compared");
    double sum = 0;
    int max = 0;
    std::size_t within = 0;
    for (std::size_t i = 0; i < a.samples.size(); ++i) {
        const int d = std::abs(int(a.samples[i]) - int(b.samples[i]));
        sum += double(d) * d;
        max = std::max(max, d);
        within += d <= level;
    }
    const double n = double(a.samples.size());
    const double psnr =
        sum == 0 ? std::numeric_limits<double>::infinity() : 10 * std::log10(double(a.maxval) * a.maxval * n / sum);
    return {psnr, max, double(within) / n};
}

double psnr(const Image& a, const Image& b) { return compare(a, b, 0).psnr; }
