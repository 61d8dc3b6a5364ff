// format.cpp - what the kinds of files share.
// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/format.h"

#include "codecs/picture/borrowedsink.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>

namespace web {
namespace {

// Where a place of the full size is in a picture of half the size, so many times.
std::int64_t reduced(std::int64_t place, int times) { return (place + (std::int64_t(1) << times) - 1) >> times; }

void copyChannel(const codecs::Shape& from, const std::uint8_t* in, int channel, std::uint8_t* out, int pixels) {
    const std::size_t sample = from.wide() ? 2 : 1, step = sample * std::size_t(from.channels);
    in += sample * std::size_t(channel);
    for (int x = 0; x < pixels; ++x, in += step, out += sample) std::memcpy(out, in, sample);
}

} // namespace

Request::Request(Options& options) {
    if (const auto n = options.tuple("window", 4)) window = Window{(*n)[0], (*n)[1], (*n)[2], (*n)[3]};
    if (window && (window->x < 0 || window->y < 0 || window->width < 1 || window->height < 1))
        throw codecs::Error("window: not a part of a picture");
    reduce = int(options.number("reduce", 0, 0, 32));
    if (options.has("layers")) layers = int(options.number("layers", 0, 0, 65535));
    if (options.has("component")) component = int(options.number("component", 0, 0, 16383));
    maxPixels = std::uint64_t(options.number("maxPixels", std::int64_t(1) << 28, 1, std::int64_t(1) << 40));
}

bool beginsWith(ByteView file, std::string_view bytes) {
    return file.size() >= bytes.size() && std::memcmp(file.data(), bytes.data(), bytes.size()) == 0;
}

void PartSink::begin(const codecs::Shape& shape, const codecs::Metadata& metadata) {
    from = shape;
    codecs::Shape to = shape;
    if (request.window) {
        // Sides of reduced pictures are rounded in either way: the window is kept within them.
        const Window& w = *request.window;
        const auto from0 = [&](std::int64_t at, int side) { return std::min(reduced(at, request.reduce), side - 1LL); };
        const auto to0 = [&](std::int64_t at, std::int64_t begin, int side) {
            return std::clamp<std::int64_t>(reduced(at, request.reduce), begin + 1, side);
        };
        const std::int64_t slack = (std::int64_t(1) << request.reduce) - 1;
        if (w.x >= std::int64_t(shape.width) << request.reduce || w.y >= std::int64_t(shape.height) << request.reduce ||
            w.x + w.width > (std::int64_t(shape.width) << request.reduce) + slack ||
            w.y + w.height > (std::int64_t(shape.height) << request.reduce) + slack)
            throw codecs::Error("the window is not within the picture");
        left = int(from0(w.x, shape.width));
        top = int(from0(w.y, shape.height));
        to.width = int(to0(w.x + w.width, left, shape.width)) - left;
        to.height = int(to0(w.y + w.height, top, shape.height)) - top;
    }
    if (request.component) {
        if (*request.component >= shape.channels) throw codecs::Error("component: the picture has no such channel");
        to.channels = 1;
        to.colour = codecs::Colour::grey;
        to.alpha = false;
    }
    picture = codecs::Picture(to, metadata);
}

void PartSink::write(const codecs::Band& band) {
    const codecs::Shape& to = picture.shape();
    const std::size_t pixel = from.rowBytes() / std::size_t(from.width);
    for (int y = 0; y < band.rows; ++y, ++row) {
        if (row < top || row >= top + to.height) continue;
        const std::uint8_t* in = band.row(y) + pixel * std::size_t(left);
        const std::span<std::uint8_t> out = picture.bytes(row - top);
        if (request.component)
            copyChannel(from, in, *request.component, out.data(), to.width);
        else
            std::memcpy(out.data(), in, out.size());
    }
}

void PartSink::finish() {
    // A codec that ends early has said so; what it has not written is not left to chance.
    for (row = std::max(row, top); row < top + picture.shape().height; ++row)
        std::memset(picture.bytes(row - top).data(), 0, picture.shape().rowBytes());
}

std::unique_ptr<codecs::ByteSource> sourceOf(ByteView file) { return std::make_unique<codecs::MemorySource>(file); }

std::unique_ptr<codecs::ByteSink> borrowed(codecs::ByteSink& sink) {
    return std::make_unique<codecs::BorrowedSink>(sink);
}

Info rowsInfo(const codecs::RowSource& rows, const std::string& kind) {
    const codecs::Shape& s = rows.shape();
    Info info;
    info.width = s.width;
    info.height = s.height;
    const int bits = std::bit_width(unsigned(s.maxval));
    info.components.assign(std::size_t(s.channels), {s.width, s.height, bits, false, 1, 1});
    constexpr const char* names[] = {"grey", "rgb", "cmyk", "unknown"};
    info.colour = names[int(s.colour)];
    info.alpha = s.alpha;
    info.lossless = true;
    info.metadata = rows.metadata();
    info.warnings = rows.warnings();
    info.text = kind + ", " + std::to_string(s.width) + " x " + std::to_string(s.height) + ", " +
                std::to_string(s.channels) + (s.channels > 1 ? " channels" : " channel") + " of " +
                std::to_string(bits) + (bits > 1 ? " bits\n" : " bit\n");
    return info;
}

Decoded decodeRows(codecs::Rows rows, const Request& request) {
    if (request.reduce > 0) throw codecs::Error("reduce: such files hold one size alone");
    Decoded decoded;
    // Any largest sample is allowed in some files; pictures have bits.
    const int full = (1 << std::bit_width(unsigned(rows->shape().maxval))) - 1;
    decoded.warnings = codecs::depthChange(rows->shape().maxval, full, "picture in memory");
    rows = codecs::withDepth(std::move(rows), full);
    PartSink sink(request);
    codecs::copyRows(*rows, sink);
    decoded.picture = std::move(sink.picture);
    for (std::string& text : rows->warnings()) decoded.warnings.push_back(std::move(text));
    return decoded;
}

Warnings writeContainer(codecs::RowSource& rows, std::unique_ptr<codecs::RowSink> to) {
    codecs::copyRows(rows, *to);
    return to->warnings();
}

} // namespace web
