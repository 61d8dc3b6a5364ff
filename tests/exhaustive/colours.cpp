// colours.cpp - the level shifts, and each colour conversion of whole planes over all pixels that its layout can hold.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/jpeg/model/levelshift.h"
#include "tests/jpeg/support/conversions.h"

#include <algorithm>
#include <array>

namespace exhaustive {

namespace {

using conversion::Conversion;
using conversion::Layout;

// What a conversion reads at once: the bytes of a pixel in all planes, of two pixels where they share their chroma.
int unitBytes(const Conversion& way) {
    return way.from == Layout::Pairs422 ? 4 : model::planesOf(way.from) * model::pixelBytes(way.from);
}
int unitPixels(const Conversion& way) { return way.from == Layout::Pairs422 ? 2 : 1; }

// Planes of a row of pixels, whatever their layout.
struct Row {
    std::array<std::vector<Zmx8u>, 4> planes;
    model::Rows rows;

    Row(Layout layout, int width) : rows{layout, {}, width * model::pixelBytes(layout)} {
        for (int i = 0; i < model::planesOf(layout); ++i) {
            planes[std::size_t(i)].assign(std::size_t(rows.step), 0x9E);
            rows.plane[std::size_t(i)] = planes[std::size_t(i)].data();
        }
    }
};

// The units whose number begins with the slice: the lower 12 bits run through. They stay below the size from which rows are
// shared out.
constexpr int kUnits = 1 << 12;

bool coloursAgree(const Conversion& way, std::uint64_t slice) {
    const int bytes = unitBytes(way), width = kUnits * unitPixels(way), planes = model::planesOf(way.from);
    Row src(way.from, width), got(way.to, width), expected(way.to, width);
    for (int i = 0; i < kUnits; ++i) {
        const std::uint64_t unit = slice * kUnits + std::uint64_t(i);
        for (int k = 0; k < bytes; ++k) {
            const auto value = Zmx8u(unit >> 8 * (bytes - 1 - k));
            if (planes > 1)
                src.planes[std::size_t(k)][std::size_t(i)] = value;
            else
                src.planes[0][std::size_t(i * bytes + k)] = value;
        }
    }
    const ZmxiSize size{width, 1};
    if (way.call(src.rows.plane.data(), src.rows.step, got.rows.plane.data(), got.rows.step, size)) return false;
    conversion::plain(way, src.rows, expected.rows, size);
    return got.planes == expected.planes;
}

bool addAgrees() {
    const std::vector<Zmx16s> src = allWords();
    std::vector<Zmx8u> got(src.size()), expected(src.size());
    for (std::size_t at = 0; at < src.size(); at += 4096)
        if (zmxiAdd128_JPEG_16s8u_C1R(src.data() + at, 8192, got.data() + at, 4096, {4096, 1})) return false;
    std::transform(src.begin(), src.end(), expected.begin(), model::add128);
    return same(got, expected);
}

bool subAgrees() {
    std::vector<Zmx8u> src(256);
    for (std::size_t i = 0; i < 256; ++i) src[i] = Zmx8u(i);
    std::vector<Zmx16s> got(256), expected(256);
    if (zmxiSub128_JPEG_8u16s_C1R(src.data(), 256, got.data(), 512, {256, 1})) return false;
    std::transform(src.begin(), src.end(), expected.begin(), model::sub128);
    return same(got, expected);
}

} // namespace

void addColours(Domains& to) {
    to.push_back({"Add128", "level shift, every 16-bit sample", 1, 1 << 16, [](std::uint64_t) { return addAgrees(); }});
    to.push_back({"Sub128", "level shift, every 8-bit sample", 1, 1 << 8, [](std::uint64_t) { return subAgrees(); }});
    for (const Conversion& way : conversion::conversions) {
        const std::uint64_t units = std::uint64_t(1) << 8 * unitBytes(way);
        const std::string bytes = std::to_string(unitBytes(way));
        to.push_back({way.name, "colour conversion, every pixel (or pair of pixels) of " + bytes + " bytes",
                      units / kUnits, kUnits, [&way](std::uint64_t slice) { return coloursAgree(way, slice); }});
    }
}

} // namespace exhaustive
