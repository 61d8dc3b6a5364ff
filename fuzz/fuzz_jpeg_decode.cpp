// The whole JPEG decoder on arbitrary bytes, at a size that the bytes choose.
#include "jpeg/jpeg.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    jpeg::DecodeOptions options;
    options.maxPixels = 1 << 16;
    options.scale = 1 << (size & 3);
    try {
        const jpeg::Picture p = jpeg::decode(data, size, options);
        if (p.pixels.size() != std::size_t(p.width) * std::size_t(p.height) * std::size_t(p.channels)) std::abort();
    } catch (const jpeg::Error&) {
    }
    try {
        jpeg::describe(data, size);
    } catch (const jpeg::Error&) {
    }
    return 0;
}
