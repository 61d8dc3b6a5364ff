// picture.h - what a picture is: its shape, what travels beside its samples, and a whole one in memory.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace codecs {

// What the channels mean, apart from alpha.
enum class Colour : std::uint8_t { grey, rgb, cmyk, other };

struct Shape {
    int width = 0, height = 0;
    int channels = 1;
    int maxval = 255; // the largest sample: 255 for 8 bits, 4095 for 12 and so on; 1 for bitmaps, in which 0 is black
    Colour colour = Colour::grey; // of cmyk, 0 is no ink
    bool alpha = false;           // the last channel

    // Samples are 16-bit words of this machine's byte order, and else bytes. A bitmap has a byte for each sample too.
    bool wide() const { return maxval > 255; }
    std::size_t rowSamples() const { return std::size_t(width) * std::size_t(channels); }
    std::size_t rowBytes() const { return rowSamples() * (wide() ? 2 : 1); }
    int colours() const { return channels - int(alpha); }

    bool operator==(const Shape&) const = default;
};

// The shape of `channels` channels with their usual meaning: an even count has alpha.
Shape shapeOf(int width, int height, int channels, int maxval = 255);
// "a picture of 640 by 480", for messages.
std::string sizeText(std::int64_t width, std::int64_t height);
// An Error where a picture has no pixels or more than the limit.
void checkSize(std::uint64_t width, std::uint64_t height, std::uint64_t maxPixels);

// Pixels a length.
struct Resolution {
    enum class Unit : std::uint8_t { none, inch, centimetre, metre }; // none: only the ratio of x and y means something
    double x = 0, y = 0;
    Unit unit = Unit::none;

    // The same in another unit; none stays none.
    Resolution in(Unit other) const;
    bool operator==(const Resolution&) const = default;
};

// What travels beside the samples, as it stands in the files: a colour profile, EXIF from its byte order mark on, and
// a packet of XMP. The orientation is in the EXIF (orientation.h).
struct Metadata {
    Bytes icc, exif, xmp;
    std::optional<Resolution> resolution;

    bool empty() const { return icc.empty() && exif.empty() && xmp.empty() && !resolution; }
    bool operator==(const Metadata&) const = default;
};

// What of it is lost in a container that holds none of it, as a warning; none where nothing is.
std::vector<std::string> lossOf(const Metadata& metadata, const std::string& container);

// Memory that is not cleared: it is touched first by what fills it.
template <class T> struct Uncleared : std::allocator<T> {
    template <class U> struct rebind { using other = Uncleared<U>; };
    template <class U> void construct(U* at) { ::new (static_cast<void*>(at)) U; }
    template <class U, class... Args> void construct(U* at, Args&&... args) {
        ::new (static_cast<void*>(at)) U(std::forward<Args>(args)...);
    }
};
using Samples = std::vector<std::uint8_t, Uncleared<std::uint8_t>>;

// Rows of Shape::rowBytes() bytes that follow each other by `step`.
struct Band {
    const std::uint8_t* data = nullptr;
    std::ptrdiff_t step = 0;
    int rows = 0;

    const std::uint8_t* row(int y) const { return data + step * y; }
    const std::uint16_t* words(int y) const {
        return reinterpret_cast<const std::uint16_t*>(row(y));
    } // of a wide shape
};

// A whole picture: interleaved samples, rows without gaps.
class Picture {
public:
    Picture() = default;
    explicit Picture(const Shape& shape, Metadata metadata = {}); // samples are not cleared

    const Shape& shape() const { return form; }
    Metadata metadata;

    // The samples of a row; words() of a wide shape.
    std::span<std::uint8_t> bytes(int y) { return {row(y), form.rowBytes()}; }
    std::span<const std::uint8_t> bytes(int y) const { return {row(y), form.rowBytes()}; }
    std::span<std::uint16_t> words(int y) { return {reinterpret_cast<std::uint16_t*>(row(y)), form.rowSamples()}; }
    std::span<const std::uint16_t> words(int y) const {
        return {reinterpret_cast<const std::uint16_t*>(row(y)), form.rowSamples()};
    }
    // Sample `x` of row `y`, of either width; for what need not be fast.
    unsigned at(int x, int y) const { return form.wide() ? words(y)[std::size_t(x)] : bytes(y)[std::size_t(x)]; }
    void set(int x, int y, unsigned sample);

    Band band(int y, int rows) const { return {row(y), std::ptrdiff_t(form.rowBytes()), rows}; }
    std::span<std::uint8_t> all() { return samples; }
    ByteView all() const { return samples; }

    bool operator==(const Picture&) const = default;

private:
    std::uint8_t* row(int y) { return samples.data() + form.rowBytes() * std::size_t(y); }
    const std::uint8_t* row(int y) const { return samples.data() + form.rowBytes() * std::size_t(y); }

    Shape form;
    Samples samples;
};

} // namespace codecs
