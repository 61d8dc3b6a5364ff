// jpeg.h - what the tests of the JPEG codec share: samples in plain vectors, in and out.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/jpeg.h"

#include <cmath>
#include <gtest/gtest.h>

namespace jpeg = codecs::jpeg;
using Bytes = codecs::Bytes;
using Words = std::vector<std::uint16_t>;

// A picture of samples of up to 8 bits (bytes) or more (words). 4 channels are CMYK, 2 are no alpha.
template <class Sample>
codecs::Picture picture(const std::vector<Sample>& samples, int width, int height, int channels,
                        int bits = 8 * int(sizeof(Sample))) {
    codecs::Shape shape = codecs::shapeOf(width, height, channels, (1 << bits) - 1);
    if (channels == 4) shape.colour = codecs::Colour::cmyk;
    shape.alpha = false;
    if (width < 1 || height < 1) return codecs::Picture(shape);
    codecs::Picture p(shape);
    EXPECT_GE(samples.size(), shape.rowSamples() * std::size_t(height));
    for (int y = 0; y < height; ++y)
        for (std::size_t i = 0; i < shape.rowSamples(); ++i)
            p.set(int(i), y, samples[std::size_t(y) * shape.rowSamples() + i]);
    return p;
}

// What a file decodes to; samples of up to 8 bits are in `pixels`, others in `wide`.
struct Seen {
    int width = 0, height = 0, channels = 0, maxval = 0;
    codecs::Colour colour = codecs::Colour::other;
    Bytes pixels;
    Words wide;
    jpeg::Warnings warnings;
};
inline Seen seen(const codecs::Picture& p) {
    const codecs::Shape& s = p.shape();
    Seen out{s.width, s.height, s.channels, s.maxval, s.colour, {}, {}, {}};
    for (int y = 0; y < s.height; ++y)
        if (s.wide())
            out.wide.insert(out.wide.end(), p.words(y).begin(), p.words(y).end());
        else
            out.pixels.insert(out.pixels.end(), p.bytes(y).begin(), p.bytes(y).end());
    return out;
}
inline Seen decoded(const Bytes& file, const jpeg::DecodeOptions& options) {
    const jpeg::Decoded d = jpeg::decode(file, options);
    Seen out = seen(d.picture);
    out.warnings = d.warnings;
    return out;
}

// A file coded anew, whose coefficients must be those that were to be written.
inline jpeg::Transcoded transcode(const Bytes& file, const jpeg::TranscodeOptions& options) {
    jpeg::Transcoded t = jpeg::transcode(file, options);
    EXPECT_EQ(t.before, t.after);
    return t;
}

// The message of the Error that a call ends in; empty: it does not.
template <class Call> std::string refusalOf(Call call) {
    try {
        call();
        return {};
    } catch (const codecs::Error& e) {
        return e.what();
    }
}

template <class Sample> double psnr(const std::vector<Sample>& a, const std::vector<Sample>& b, int top = 255) {
    EXPECT_EQ(a.size(), b.size());
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += (double(a[i]) - b[i]) * (double(a[i]) - b[i]);
    return sum == 0 ? 99 : 10 * std::log10(double(top) * top * double(a.size()) / sum);
}
