// Windows of JPEG2000 files: wherever the whole picture can be decoded, a window is what a cut of it would be. The first
// ten bytes choose the window and what is decoded of it, the file follows them.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/jpeg2000.h"
#include "fuzz/support/mutator.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg2000(data, size, most, seed, 10);
}

using namespace codecs;
using jpeg2000::Component;
using jpeg2000::DecodedPlanes;

namespace {

constexpr std::size_t kHead = 10;
constexpr std::int64_t kMostPixels = 1 << 14;

// Places on the reference grid are divided twice, as they are by the decoder: by the sampling, by the reduction.
std::int64_t placeOf(std::int64_t onGrid, int sampling, int reduce) {
    const std::int64_t one = std::int64_t(1) << reduce;
    return ((onGrid + sampling - 1) / sampling + one - 1) / one;
}

// The first and the last sample of a window along one axis, counted in the whole component.
struct Part {
    std::int64_t from, to;
};
Part partOf(std::int64_t origin, std::int64_t begin, std::int64_t size, int sampling, int reduce) {
    const std::int64_t first = placeOf(origin, sampling, reduce);
    return {placeOf(origin + begin, sampling, reduce) - first,
            placeOf(origin + begin + size, sampling, reduce) - first};
}

void compare(const jpeg2000::PlanarPicture& whole, const Component& all, const Component& part,
             const jpeg2000::Window& w, int reduce) {
    const Part x = partOf(whole.x0, w.x, w.width, all.dx, reduce), y = partOf(whole.y0, w.y, w.height, all.dy, reduce);
    const bool empty = x.to <= x.from || y.to <= y.from;
    if (empty != part.samples.empty()) std::abort();
    if (empty) return;
    if (part.width != x.to - x.from || part.height != y.to - y.from) std::abort();
    for (std::int64_t row = y.from; row < y.to; ++row)
        if (!std::equal(part.samples.begin() + (row - y.from) * part.width,
                        part.samples.begin() + (row - y.from + 1) * part.width,
                        all.samples.begin() + row * all.width + x.from))
            std::abort();
}

// A TLM segment may lead past tile-parts that are found without it.
bool mayMislead(ByteView file) {
    constexpr std::uint8_t tlm[] = {0xFF, 0x55};
    return std::search(file.begin(), file.end(), std::begin(tlm), std::end(tlm)) != file.end();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kHead) return 0;
    const auto number = [&](std::size_t i) { return std::int64_t(data[2 * i]) << 8 | data[2 * i + 1]; };
    jpeg2000::DecodeOptions options;
    options.maxPixels = kMostPixels;
    options.reduce = data[8] % 4;
    options.layers = data[8] / 4 % 3;
    options.threads = 1 + data[8] / 16 % 2;
    options.component = data[9] % 8 - 1; // -1: all of them
    const ByteView file(data + kHead, size - kHead);
    jpeg2000::Window window{number(0), number(1), number(2), number(3)};
    DecodedPlanes whole;
    try {
        whole = jpeg2000::decodePlanes(file, options);
        const std::int64_t across = whole.picture.x1 - whole.picture.x0, down = whole.picture.y1 - whole.picture.y0;
        window.x %= across;
        window.y %= down;
        window.width = 1 + window.width % (across - window.x);
        window.height = 1 + window.height % (down - window.y);
    } catch (const Error&) {
    }
    options.window = window;
    try {
        const DecodedPlanes part = jpeg2000::decodePlanes(file, options);
        const bool sound = !whole.picture.components.empty() && whole.warnings.empty() && part.warnings.empty();
        if (!sound || mayMislead(file)) return 0;
        for (std::size_t c = 0; c < part.picture.components.size(); ++c)
            compare(whole.picture, whole.picture.components[c], part.picture.components[c], window, options.reduce);
    } catch (const Error&) {
        // A window is refused that holds no samples, or none that can be decoded; nothing else is refused.
    }
    return 0;
}
