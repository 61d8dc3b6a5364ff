// JPEG2000 encoder into decoder: pictures and options out of the input. A file without loss gives back every sample; a file
// with loss gives back a picture of the same shape; neither has a warning.
// SPDX-License-Identifier: BSD-2-Clause
#include "fuzz/support/jpeg2000input.h"

namespace jpeg2000 = codecs::jpeg2000;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto made = fuzz::jpeg2000Input(data, size);
    if (!made) return 0;
    const auto& [options, picture, file] = *made;
    jpeg2000::DecodeOptions how;
    how.threads = 1;
    const jpeg2000::DecodedPlanes back = jpeg2000::decodePlanes(file, how);
    require(back.warnings.empty());
    require(back.picture.components.size() == picture.components.size());
    const bool all = fuzz::isLossless(options);
    for (std::size_t i = 0; i < picture.components.size(); ++i) {
        const jpeg2000::Component &a = picture.components[i], &b = back.picture.components[i];
        require(a.width == b.width && a.height == b.height && a.depth == b.depth && a.isSigned == b.isSigned);
        require(!all || a.samples == b.samples);
        for (const std::int32_t v : b.samples) require(v >= b.smallest() && v <= b.largest());
    }
    return 0;
}
