// picture.h - what a picture is: its shape, what travels beside its samples, and a whole one in memory.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <algorithm>
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

// Bytes that are not cleared: what fills them touches them first. A vector would walk over them even so.
class Samples {
public:
    Samples() = default;
    explicit Samples(std::size_t n) : bytes(new std::uint8_t[n]), room(n), count(n) {}
    Samples(const Samples& other) : Samples(other.count) { std::copy_n(other.data(), count, data()); }
    Samples(Samples&& other) noexcept { swap(other); }
    Samples& operator=(Samples other) noexcept {
        swap(other);
        return *this;
    }
    ~Samples() = default;

    // What stands there is kept, as that of a vector is.
    void resize(std::size_t n) {
        if (n > room) {
            Samples more(std::max(n, 2 * room));
            std::copy_n(data(), count, more.data());
            swap(more);
        }
        count = n;
    }
    void clear() { count = 0; }

    bool empty() const { return count == 0; }
    std::size_t size() const { return count; }
    std::uint8_t* data() { return bytes.get(); }
    const std::uint8_t* data() const { return bytes.get(); }
    std::uint8_t* begin() { return data(); }
    std::uint8_t* end() { return data() + count; }
    const std::uint8_t* begin() const { return data(); }
    const std::uint8_t* end() const { return data() + count; }
    std::uint8_t& operator[](std::size_t i) { return bytes[i]; }
    const std::uint8_t& operator[](std::size_t i) const { return bytes[i]; }

    bool operator==(const Samples& other) const { return std::equal(begin(), end(), other.begin(), other.end()); }

private:
    void swap(Samples& other) noexcept {
        bytes.swap(other.bytes);
        std::swap(room, other.room);
        std::swap(count, other.count);
    }

    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t room = 0, count = 0;
};

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
