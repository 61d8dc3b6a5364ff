// colours.cpp - the level shifts, and each colour conversion of whole planes over all pixels that its layout can hold.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/jpeg/model/levelshift.h"
#include "tests/jpeg/model/pixels.h"
#include "tests/jpeg/support/conversions.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace exhaustive {

namespace {

using conversion::Conversion;
using conversion::Layout;

// What a conversion reads at once: the bytes of a pixel in all planes, of two pixels where they share their chroma.
constexpr int unitPixels(const Conversion& way) { return way.from == Layout::Pairs422 ? 2 : 1; }
constexpr int unitBytes(const Conversion& way) {
    return unitPixels(way) * model::planesOf(way.from) * model::pixelBytes(way.from);
}

// Units in a row, which stays below the size from which rows are shared out, and in a slice.
constexpr int kUnits = 1 << 12, kSlice = 1 << 16;

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

// The units from number `first` on, the bytes of the number from the highest one down.
void fill(Row& row, int bytes, std::uint64_t first) {
    const bool inPlanes = model::planesOf(row.rows.layout) > 1;
    for (int k = 0; k < bytes; ++k) {
        Zmx8u* const to = inPlanes ? row.planes[std::size_t(k)].data() : row.planes[0].data() + k;
        const int step = inPlanes ? 1 : bytes, shift = 8 * (bytes - 1 - k);
        for (int i = 0; i < kUnits; ++i) to[step * i] = Zmx8u((first + std::uint64_t(i)) >> shift);
    }
}

// The model of one conversion: its layouts are constants here, so that the loop has no decisions.
template <std::size_t I> void plain(model::Rows src, model::Rows dst, int width) {
    constexpr Conversion way = conversion::conversions[I];
    src.layout = way.from;
    dst.layout = way.to;
    for (int x = 0; x < width; ++x)
        if constexpr (way.toYCbCr)
            model::pixelToYCbCr(src, dst, x, 0);
        else
            model::pixelFromYCbCr(src, dst, x, 0);
}

// The units whose number begins with the slice: the lower 16 bits run through.
template <std::size_t I> bool coloursAgree(std::uint64_t slice) {
    constexpr Conversion way = conversion::conversions[I];
    constexpr int width = kUnits * unitPixels(way);
    Row src(way.from, width), got(way.to, width), expected(way.to, width);
    for (std::uint64_t at = 0; at < kSlice; at += kUnits) {
        fill(src, unitBytes(way), slice * kSlice + at);
        const ZmxiSize size{width, 1};
        if (way.call(src.rows.plane.data(), src.rows.step, got.rows.plane.data(), got.rows.step, size)) return false;
        plain<I>(src.rows, expected.rows, width);
        if (got.planes != expected.planes) return false;
    }
    return true;
}

template <std::size_t I> void addConversion(Domains& to) {
    constexpr Conversion way = conversion::conversions[I];
    const std::uint64_t units = std::uint64_t(1) << 8 * unitBytes(way);
    to.push_back({way.name,
                  "colour conversion, every pixel (or pair of pixels) of " + std::to_string(unitBytes(way)) + " bytes",
                  units / kSlice, kSlice, coloursAgree<I>});
}

template <std::size_t... I> void addConversions(Domains& to, std::index_sequence<I...>) { (addConversion<I>(to), ...); }

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
    addConversions(to, std::make_index_sequence<std::size(conversion::conversions)>());
}

} // namespace exhaustive
