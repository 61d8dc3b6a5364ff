// EXIF: directories out of arbitrary bytes are written and read again the same, and numbers in them are written over in place.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/exif.h"
#include "codecs/picture/orientation.h"
#include "fuzz/support/input.h"

namespace {

using namespace codecs;
using fuzz::require;

// Every number that can be written over is what was written; the length stays.
void overwrite(const Bytes& exif, const ExifDirectory& directory) {
    for (const ExifEntry& entry : directory) {
        Bytes changed = exif;
        if (!overwriteNumber(changed, entry, 3)) {
            require(changed == exif);
            continue;
        }
        require(changed.size() == exif.size() && parseExif(changed));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, data + size);
    const auto directory = parseExif(bytes);
    if (!directory) return 0;
    resolutionIn(*directory);
    overwrite(bytes, *directory);
    const Bytes written = serialiseExif(*directory);
    const auto again = parseExif(written);
    require(again && serialiseExif(*again) == written);

    Metadata metadata;
    metadata.exif = bytes;
    const int before = orientationOf(metadata);
    require(before >= 1 && before <= 8);
    setOrientation(metadata, 1 + int(size % 8));
    require(orientationOf(metadata) == 1 + int(size % 8));
    setPixelSize(metadata, 640, 480);
    require(parseExif(metadata.exif).has_value());
    return 0;
}
