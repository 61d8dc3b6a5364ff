// The whole JPEG decoder on arbitrary bytes, to pixels of every kind that can be asked for. The number of bytes chooses
// the options.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "fuzz/support/mutator.h"
#include "fuzz/support/trickle.h"

#include <cstdlib>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg(data, size, most, seed);
}

namespace {

namespace jpeg = codecs::jpeg;

void toPixels(codecs::ByteView file, const jpeg::DecodeOptions& options) {
    try {
        fuzz::Trickle source(file);
        codecs::PictureSink sink;
        jpeg::decode(source, sink, options);
        const codecs::Shape& s = sink.picture.shape();
        if (sink.picture.all().size() != s.rowBytes() * std::size_t(s.height)) std::abort();
    } catch (const codecs::Error&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const codecs::ByteView file(data, size);
    jpeg::DecodeOptions options;
    options.maxPixels = 1 << 16;
    options.scale = 1 << (size & 3);
    toPixels(file, options);
    options.scale = 1;
    options.upsampling = jpeg::Upsampling::smooth;
    toPixels(file, options);
    options.packing = jpeg::Packing(1 + size % 4);
    if (size & 4) options.upsampling = jpeg::Upsampling::plain;
    toPixels(file, options);
    try {
        jpeg::describe(file);
    } catch (const codecs::Error&) {
    }
    return 0;
}
