// The whole JPEG decoder on arbitrary bytes, to pixels of every kind that can be asked for; and what it reads coded
// anew. The number of bytes chooses the options.
#include "codecs/jpeg/jpeg.h"

#include <cstdlib>

namespace {

void toPixels(const std::uint8_t* data, std::size_t size, const jpeg::DecodeOptions& options) {
    try {
        const jpeg::Picture p = jpeg::decode(data, size, options);
        if (p.pixels.size() + p.wide.size() != std::size_t(p.width) * std::size_t(p.height) * std::size_t(p.channels))
            std::abort();
    } catch (const jpeg::Error&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    jpeg::DecodeOptions options;
    options.maxPixels = 1 << 16;
    options.scale = 1 << (size & 3);
    toPixels(data, size, options);
    options.scale = 1;
    options.upsampling = jpeg::Upsampling::fancy;
    toPixels(data, size, options);
    options.packing = jpeg::Packing(1 + size % 4);
    if (size & 4) options.upsampling = jpeg::Upsampling::plain;
    toPixels(data, size, options);
    try {
        jpeg::TranscodeOptions how;
        how.maxPixels = options.maxPixels;
        how.progressive = size & 4;
        how.restart = size & 8 ? 3 : -1;
        const jpeg::Transcoded t = jpeg::transcode(data, size, how);
        if (t.before != t.after) std::abort();
    } catch (const jpeg::Error&) {
    }
    try {
        jpeg::describe(data, size);
    } catch (const jpeg::Error&) {
    }
    return 0;
}
