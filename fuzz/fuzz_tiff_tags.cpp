// The tags of TIFF files, without their samples: what the directory says of the picture stands within the limits that the
// reader relies on. The directories are those that libtiff and our own reader find.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/exif.h"
#include "codecs/picture/tifflayout.h"
#include "codecs/picture/tiffmetadata.h"
#include "fuzz/support/input.h"

#include <cstring>

namespace {

using namespace codecs;
using fuzz::require;

constexpr std::uint64_t kMostPixels = 1 << 14;

void checkLayout(const TiffLayout& layout) {
    const Shape& s = layout.shape;
    require(s.width >= 1 && s.height >= 1 && std::uint64_t(s.width) * std::uint64_t(s.height) <= kMostPixels);
    require(s.channels >= 1 && s.maxval >= 1 && s.maxval <= 65535);
    require(layout.bits >= 1 && layout.bits <= 64 && layout.channels >= 1);
    require(layout.pieceWidth >= 1 && layout.pieceHeight >= 1);
    for (const std::string& line : layout.warnings) require(line.find('\n') == std::string::npos);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource bytes({data, size});
    try {
        const TiffFile file(bytes);
        checkLayout(layoutOf(file, kMostPixels));
        readMetadata(file);
    } catch (const Error& e) {
        require(std::strchr(e.what(), '\n') == nullptr);
    }
    return 0;
}
