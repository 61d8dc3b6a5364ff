// The boxes of a JP2 file: what is read of arbitrary ones stands within the limits that the codec relies on, and what is
// written of it is read again the same.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/boxes.h"
#include "fuzz/support/input.h"
#include "fuzz/support/mutator.h"

#include <algorithm>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg2000(data, size, most, seed);
}

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using fuzz::require;

// Boxes of our own around what was found beside the codestream.
void writeAndRead(const jpeg2000::Boxes& boxes) {
    jpeg2000::ImageSize size;
    size.x1 = size.y1 = 1;
    size.tileWidth = size.tileHeight = 1;
    size.components.resize(3);
    codecs::Bytes file = jpeg2000::writeBoxes(size, {jpeg2000::ColourSpace::sRgb, -1, boxes.metadata});
    file.insert(file.end(), boxes.codestream.begin(), boxes.codestream.end());
    const jpeg2000::Boxes again = jpeg2000::readBoxes(file);
    require(again.jp2 && again.warnings.empty());
    require(std::ranges::equal(again.codestream, boxes.codestream));
    require(again.metadata.icc == boxes.metadata.icc && again.metadata.exif == boxes.metadata.exif &&
            again.metadata.xmp == boxes.metadata.xmp);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const jpeg2000::Boxes boxes = jpeg2000::readBoxes({data, size});
        require(boxes.codestream.data() >= data && boxes.codestream.data() + boxes.codestream.size() <= data + size);
        const std::size_t columns = boxes.palette.depths.size();
        require(columns == 0 ? boxes.palette.entries.empty() : boxes.palette.entries.size() % columns == 0);
        writeAndRead(boxes);
    } catch (const codecs::Error&) {
    }
    try {
        jpeg2000::describe({data, size});
    } catch (const codecs::Error&) {
    }
    return 0;
}
