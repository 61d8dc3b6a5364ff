// fuzz_picture.cpp - the readers of picture files on arbitrary bytes: PNG, PNM, PAM, TIFF and BMP by their first bytes, and
// TIFF by the PackBits codec too. What is read goes on through the changes of rows and into a file of each kind, which
// gives the same rows back. The length of the input chooses the sizes of the bands.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/exif.h"
#include "codecs/picture/files.h"
#include "codecs/picture/orientation.h"
#include "codecs/tiff/tiff.h"

#include <cstdlib>
#include <cstring>

namespace {

using namespace codecs;

constexpr std::uint64_t kMostPixels = 1 << 14;

void require(bool holds) {
    if (!holds) std::abort();
}

Picture read(Rows rows, int bandSize) {
    PictureSink sink;
    copyRows(*rows, sink, bandSize);
    require(sink.picture.all().size() == rows->shape().rowBytes() * std::size_t(rows->shape().height));
    return std::move(sink.picture);
}

// A file of one kind, and back: what the container holds comes back as it was.
void writeAndRead(const Picture& picture, Container container) {
    auto bytes = std::make_unique<MemorySink>();
    MemorySink& kept = *bytes;
    const auto sink = createPicture(std::move(bytes), container);
    PictureSource source(picture);
    try {
        copyRows(source, *sink);
    } catch (const Error&) {
        return; // more channels than it has
    }
    const Picture back = read(openPicture(std::make_unique<MemorySource>(kept.bytes), kMostPixels), 7);
    const Shape &a = picture.shape(), &b = back.shape();
    require(a.width == b.width && a.height == b.height && a.channels == b.channels && a.alpha == b.alpha);
    if (a.maxval == b.maxval) require(std::memcmp(back.all().data(), picture.all().data(), picture.all().size()) == 0);
    if (container == Container::tiff || container == Container::png)
        require(orientationOf(back.metadata) == orientationOf(picture.metadata));
}

void readAny(ByteView file, int bandSize) {
    try {
        const Picture picture = read(openPicture(std::make_unique<MemorySource>(file), kMostPixels), bandSize);
        const Picture turned = read(upright(std::make_unique<PictureSource>(picture)), bandSize);
        require(orientationOf(turned.metadata) == 1 && turned.all().size() == picture.all().size());
        for (Container c : {Container::png, Container::tiff, Container::bmp, Container::pam}) writeAndRead(picture, c);
    } catch (const Error& e) {
        require(std::strchr(e.what(), '\n') == nullptr);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView file(data, size);
    const int bandSize = 1 + int(size % 40);
    readAny(file, bandSize);
    try {
        read(tiff::open(std::make_unique<MemorySource>(file), kMostPixels), bandSize);
    } catch (const Error&) {
    }
    // EXIF that is read is written, and read again the same.
    if (const auto directory = parseExif(file)) {
        const Bytes written = serialiseExif(*directory);
        const auto again = parseExif(written);
        require(again && serialiseExif(*again) == written);
    }
    return 0;
}
