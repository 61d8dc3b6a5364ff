// Arbitrary bytes as the entropy-coded data of sound files of every mode, so that no input is lost on broken headers. The
// first byte chooses the mode, the rest is the first scan; a file of several scans goes on as it was.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/segmentreader.h"
#include "fuzz/support/input.h"

#include <array>

namespace {

namespace jpeg = codecs::jpeg;
using fuzz::require;

// A file, and where the data of its first scan stand.
struct Parts {
    codecs::Bytes head, tail;
};

codecs::Picture smallPicture(int channels, int maxval) {
    codecs::Shape shape = codecs::shapeOf(40, 24, channels, maxval);
    if (channels == 4) shape.alpha = false, shape.colour = codecs::Colour::cmyk;
    codecs::Picture picture(shape);
    for (int y = 0; y < 24; ++y)
        for (std::size_t x = 0; x < picture.shape().rowSamples(); ++x)
            picture.set(int(x), y, unsigned(x * x + unsigned(y) * 13 + x * unsigned(y)) % unsigned(maxval + 1));
    return picture;
}

Parts partsOf(int channels, int maxval, const jpeg::EncodeOptions& options) {
    const codecs::Bytes file = jpeg::encode(smallPicture(channels, maxval), options);
    codecs::MemorySource source(file);
    jpeg::SegmentReader reader(source);
    require(reader.nextScan());
    const std::size_t begin = std::size_t(source.position());
    while (jpeg::toMarker(source) && jpeg::isRestart(jpeg::markerAt(source))) source.skip(2);
    const std::size_t end = std::size_t(source.position());
    return {{file.begin(), file.begin() + std::ptrdiff_t(begin)}, {file.begin() + std::ptrdiff_t(end), file.end()}};
}

constexpr int kModes = 8;

std::array<Parts, kModes> makeModes() {
    jpeg::EncodeOptions plain, odd, progressive, refining, lossless;
    odd.sampling = jpeg::Sampling::s444;
    odd.restart = 2;
    progressive.progressive = true;
    // Coefficients are corrected from the first scan of the band on.
    refining.scans = "0,1,2: 0-0, 0, 0; 0: 1-63, 0, 2; 0: 1-63, 2, 1; 0: 1-63, 1, 0; 1: 1-63, 0, 0; 2: 1-63, 0, 0;";
    lossless.lossless = 4;
    jpeg::EncodeOptions predicted = lossless;
    predicted.lossless = 7;
    predicted.restart = 40; // a row
    return {partsOf(3, 255, plain),      partsOf(3, 255, odd),         partsOf(1, 255, plain),
            partsOf(3, 4095, plain),     partsOf(3, 255, progressive), partsOf(3, 255, refining),
            partsOf(1, 65535, lossless), partsOf(4, 255, predicted)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::array<Parts, kModes> modes = makeModes();
    fuzz::Input in(data, size);
    const unsigned choice = in.byte();
    const Parts& parts = modes[choice % kModes];
    codecs::Bytes file = parts.head;
    file.insert(file.end(), in.rest().begin(), in.rest().end());
    file.insert(file.end(), parts.tail.begin(), parts.tail.end());
    jpeg::DecodeOptions options;
    options.maxPixels = 1 << 14;
    options.fast = choice & 64;
    if (choice % kModes < 6) options.scale = 1 << (choice >> 4 & 3);
    try {
        const codecs::Picture picture = jpeg::decode(file, options).picture;
        const codecs::Shape& s = picture.shape();
        for (int y = 0; y < s.height; ++y)
            for (std::size_t x = 0; x < s.rowSamples(); ++x) require(picture.at(int(x), y) <= unsigned(s.maxval));
    } catch (const codecs::Error&) {
    }
    return 0;
}
