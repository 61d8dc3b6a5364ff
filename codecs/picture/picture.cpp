// picture.cpp - shapes, units of length, and pictures in memory.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/picture.h"

namespace codecs {
namespace {

// Centimetres in a unit of length.
double length(Resolution::Unit unit) {
    switch (unit) {
    case Resolution::Unit::inch:
        return 2.54;
    case Resolution::Unit::metre:
        return 100;
    default:
        return 1;
    }
}

} // namespace

Shape shapeOf(int width, int height, int channels, int maxval) {
    const bool alpha = channels % 2 == 0;
    const int colours = channels - int(alpha);
    return {width, height, channels, maxval, colours == 1 ? Colour::grey : colours == 3 ? Colour::rgb : Colour::other,
            alpha};
}

std::string sizeText(std::int64_t width, std::int64_t height) {
    return "a picture of " + std::to_string(width) + " by " + std::to_string(height);
}

void checkSize(std::uint64_t width, std::uint64_t height, std::uint64_t maxPixels) {
    // Rows of 16-bit samples of four channels still count their bytes in 32 bits.
    constexpr std::uint64_t kLongest = (1u << 31) / 8 - 1;
    const auto text = [&] { return sizeText(std::int64_t(width), std::int64_t(height)); };
    if (width < 1 || height < 1) throw Error(text());
    if (width > kLongest || height > INT32_MAX || height > maxPixels / width)
        throw Error(text() + ": more pixels than the limit allows");
}

// Exact but for the rounding of a double: an inch is 25.4 millimetres.
Resolution Resolution::in(Unit other) const {
    if (unit == other || unit == Unit::none || other == Unit::none) return *this;
    const double factor = length(other) / length(unit);
    return {x * factor, y * factor, other};
}

std::vector<std::string> lossOf(const Metadata& m, const std::string& container) {
    // Square pixels of no size are what everyone takes for granted.
    const bool size =
        m.resolution && (m.resolution->unit != Resolution::Unit::none || m.resolution->x != m.resolution->y);
    std::string kinds;
    for (const auto& [there, kind] : {std::pair{!m.icc.empty(), "colour profile"},
                                      {!m.exif.empty(), "EXIF"},
                                      {!m.xmp.empty(), "XMP"},
                                      {size, "resolution"}})
        if (there) kinds += (kinds.empty() ? "" : ", ") + std::string(kind);
    if (kinds.empty()) return {};
    return {container + " has no place for: " + kinds};
}

Picture::Picture(const Shape& shape, Metadata beside)
    : metadata(std::move(beside)), form(shape), samples(shape.rowBytes() * std::size_t(shape.height)) {}

void Picture::set(int x, int y, unsigned sample) {
    if (form.wide())
        words(y)[std::size_t(x)] = std::uint16_t(sample);
    else
        bytes(y)[std::size_t(x)] = std::uint8_t(sample);
}

} // namespace codecs
