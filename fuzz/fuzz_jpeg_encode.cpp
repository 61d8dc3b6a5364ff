// JPEG encoder into decoder: pictures and options out of the input. What the encoder takes the decoder gives back without a
// warning: the same shape, and of a lossless file the same samples; a coding of its coefficients anew keeps them.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "fuzz/support/input.h"

namespace {

namespace jpeg = codecs::jpeg;
using fuzz::require;

codecs::Picture pictureOf(fuzz::Input& in, bool lossless) {
    static constexpr int kDepths[] = {255, 4095, 255, 65535, 3, 1023};
    const int width = 1 + in.below(70), height = 1 + in.below(70);
    const int channels = lossless ? 1 + in.below(4) : 1 + in.below(3) * 3 / 2;
    const int maxval = kDepths[in.below(lossless ? 6 : 2)];
    codecs::Shape shape = codecs::shapeOf(width, height, channels, maxval);
    shape.alpha = false;
    shape.colour = channels == 1   ? codecs::Colour::grey
                   : channels == 3 ? codecs::Colour::rgb
                   : channels == 4 ? codecs::Colour::cmyk
                                   : codecs::Colour::other;
    codecs::Picture picture(shape);
    // The rest of the input again and again, so that short inputs fill large pictures.
    const codecs::ByteView bytes = in.rest();
    std::size_t at = 0;
    for (int y = 0; y < height; ++y)
        for (std::size_t x = 0; x < shape.rowSamples(); ++x) {
            const unsigned sample = bytes.empty() ? 0 : bytes[at % bytes.size()] * 257u;
            picture.set(int(x), y, sample & unsigned(maxval));
            ++at;
        }
    return picture;
}

jpeg::EncodeOptions optionsOf(fuzz::Input& in, bool lossless) {
    jpeg::EncodeOptions o;
    o.quality = 1 + in.below(100);
    o.sampling = jpeg::Sampling(in.below(3));
    const unsigned flags = in.byte();
    o.optimize = flags & 1;
    o.dct = flags & 2 ? jpeg::Dct::integer : jpeg::Dct::single;
    o.fast = flags & 4;
    o.rgb = flags & 8;
    o.ycck = flags & 16;
    o.progressive = !lossless && flags & 32;
    if (flags & 64) o.restart = in.below(12);
    if (flags & 128)
        for (int i = 0; i < 3; ++i) {
            const int h = 1 + in.below(4), v = 1 + in.below(4);
            o.factors.push_back({h, v});
        }
    if (lossless) {
        o.lossless = 1 + in.below(7);
        o.pointTransform = in.below(4) == 0 ? in.below(8) : 0;
    }
    return o;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const bool lossless = in.below(4) == 0;
    const jpeg::EncodeOptions options = optionsOf(in, lossless);
    const codecs::Picture picture = pictureOf(in, lossless);
    codecs::Bytes file;
    try {
        file = jpeg::encode(picture, options);
    } catch (const codecs::Error&) {
        return 0; // options that do not go together
    }
    const jpeg::Decoded back = jpeg::decode(file);
    require(back.warnings.empty());
    const codecs::Shape &a = picture.shape(), &b = back.picture.shape();
    require(a.width == b.width && a.height == b.height && a.channels == b.channels && a.maxval == b.maxval);
    if (lossless) {
        for (int y = 0; y < a.height; ++y)
            for (std::size_t x = 0; x < a.rowSamples(); ++x)
                require(picture.at(int(x), y) >> options.pointTransform ==
                        back.picture.at(int(x), y) >> options.pointTransform);
        return 0;
    }
    jpeg::TranscodeOptions anew;
    anew.progressive = !options.progressive;
    const jpeg::Transcoded other = jpeg::transcode(file, anew);
    require(other.before == other.after && other.warnings.empty());
    require(jpeg::decode(other.file).picture == back.picture);
    return 0;
}
