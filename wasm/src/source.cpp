// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/source.h"

#include "codecs/picture/orientation.h"

#include <algorithm>
#include <cstdint>

namespace web {
namespace {

codecs::Shape shapeOf(Options& o) {
    const int width = int(o.number("width", 0, 1, 1 << 29)), height = int(o.number("height", 0, 1, 1 << 29));
    const int channels = int(o.number("channels", 0, 1, 5)), bits = int(o.number("bits", 8, 1, 16));
    codecs::Shape shape = codecs::shapeOf(width, height, channels, (1 << bits) - 1);
    std::string colour = o.text("colour");
    if (colour.empty()) return shape;
    shape.alpha = colour.size() > 1 && colour.back() == 'a';
    if (shape.alpha) colour.pop_back();
    constexpr const char* names[] = {"grey", "rgb", "cmyk", "other"};
    const auto* const name = std::find(std::begin(names), std::end(names), colour);
    if (name == std::end(names)) throw codecs::Error("colour: no such colour: " + colour);
    shape.colour = codecs::Colour(name - names);
    constexpr int counts[] = {1, 3, 4, 0};
    const int count = counts[name - names];
    if (count > 0 && count != shape.colours()) throw codecs::Error("colour: not of so many channels: " + colour);
    return shape;
}

// A place in memory and a length.
codecs::Bytes bytesOf(Options& o, const std::string& name) {
    const auto place = o.tuple(name, 2);
    if (!place) return {};
    const auto* const at = reinterpret_cast<const std::uint8_t*>(std::uintptr_t((*place)[0]));
    return codecs::Bytes(at, at + (*place)[1]);
}

codecs::Metadata metadataOf(Options& o) {
    codecs::Metadata metadata;
    metadata.icc = bytesOf(o, "icc");
    metadata.exif = bytesOf(o, "exif");
    metadata.xmp = bytesOf(o, "xmp");
    if (const std::vector<double> n = o.numbers("resolution"); n.size() == 3)
        metadata.resolution = codecs::Resolution{n[0], n[1], codecs::Resolution::Unit(int(n[2]) & 3)};
    const int orientation = int(o.number("orientation", 0, 0, 8));
    if (orientation > 0 && orientation != codecs::orientationOf(metadata))
        codecs::setOrientation(metadata, orientation);
    return metadata;
}

} // namespace

ViewSource::ViewSource(const std::uint8_t* samples, std::size_t size, Options& options) : first(samples) {
    form = shapeOf(options);
    beside = metadataOf(options);
    if (std::uint64_t(form.rowBytes()) * std::uint64_t(form.height) != size)
        throw codecs::Error("data: not of " + codecs::sizeText(form.width, form.height) + " of " +
                            std::to_string(form.channels) + " channels");
    checkSamples();
}

codecs::Band ViewSource::next(int rows) {
    const auto step = std::ptrdiff_t(form.rowBytes());
    const codecs::Band band{first + step * row, step, std::min(rows, form.height - row)};
    row += band.rows;
    return band;
}

// The codecs take samples for what their depth says.
void ViewSource::checkSamples() const {
    if (form.maxval == (form.wide() ? 0xFFFF : 0xFF)) return;
    const std::size_t count = form.rowSamples() * std::size_t(form.height);
    const auto* const words = reinterpret_cast<const std::uint16_t*>(first);
    for (std::size_t i = 0; i < count; ++i)
        if ((form.wide() ? words[i] : first[i]) > form.maxval)
            throw codecs::Error("data: a sample above " + std::to_string(form.maxval));
}

} // namespace web
