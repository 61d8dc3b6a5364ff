// Arbitrary bytes as the segments ahead of a small sound picture: what is read of them goes through an encoder and back
// unchanged, --orient leaves a picture that is upright, and --strip leaves nothing.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"

#include <cstdlib>

namespace {

namespace jpeg = codecs::jpeg;
using codecs::Metadata;

codecs::Picture smallPicture(const Metadata& metadata = {}) {
    codecs::Picture picture(codecs::shapeOf(16, 8, 3), metadata);
    for (std::size_t i = 0; i < picture.all().size(); ++i) picture.all()[i] = std::uint8_t(7 * i);
    return picture;
}

// A file without its JFIF segment (20 bytes with the marker SOI ahead of it) is what goes behind the bytes.
codecs::Bytes fileWith(codecs::ByteView segments) {
    constexpr std::size_t kStart = 2, kHead = 20;
    static const codecs::Bytes sound = jpeg::encode(smallPicture());
    codecs::Bytes file(sound.begin(), sound.begin() + kStart);
    file.insert(file.end(), segments.begin(), segments.end());
    file.insert(file.end(), sound.begin() + kHead, sound.end());
    return file;
}

// A resolution that only the EXIF told goes into the JFIF segment as well, in whole numbers.
bool same(Metadata a, const Metadata& b) {
    if (!b.exif.empty()) a.resolution = b.resolution;
    return a == b;
}

void check(const codecs::Bytes& file) {
    const jpeg::Decoded read = jpeg::decode(file);
    const Metadata& metadata = read.picture.metadata;
    // Through an encoder. What it has to leave out it tells.
    const codecs::Picture again = smallPicture(metadata);
    codecs::PictureSource rows(again);
    codecs::MemorySink sink;
    const bool whole = jpeg::encode(rows, sink, {}).empty();
    if (whole && !same(jpeg::decode(sink.bytes).picture.metadata, metadata)) std::abort();
    // Through the transcoder.
    jpeg::TranscodeOptions how;
    how.trim = true;
    if (jpeg::decode(jpeg::transcode(file, how).file).picture.metadata != metadata) std::abort();
    how.upright = true;
    const Metadata upright = jpeg::decode(jpeg::transcode(file, how).file).picture.metadata;
    if (codecs::orientationOf(upright) != 1 || upright.icc != metadata.icc) std::abort();
    how.strip = true;
    const Metadata left = jpeg::decode(jpeg::transcode(file, how).file).picture.metadata;
    if (!left.empty()) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        check(fileWith({data, size}));
    } catch (const codecs::Error&) {
    }
    return 0;
}
