// energy.cpp - the core transform over a picture, and what is in each coefficient.
#include "codecs/hdphoto/hdphoto.h"
#include "zmxj.h"

#include <algorithm>
#include <stdexcept>

namespace hdp {
namespace {

using Plane = std::vector<Zmx32s>;

struct Blocks {
    ZmxiSize count, size; // in blocks; in samples

    explicit Blocks(const Image& image)
        : count{(image.width - 1) / 4 + 1, (image.height - 1) / 4 + 1}, size{4 * count.width, 4 * count.height} {}
    std::size_t samples() const { return std::size_t(size.width) * std::size_t(size.height); }
};

Plane centred(const Image& image, int channel, const Blocks& blocks) {
    Plane plane;
    plane.reserve(blocks.samples());
    const int middle = (image.maxval + 1) / 2;
    for (int y = 0; y < blocks.size.height; ++y) {
        const std::uint16_t* row = image.row(std::min(y, image.height - 1));
        for (int x = 0; x < blocks.size.width; ++x)
            plane.push_back(
                row[std::size_t(std::min(x, image.width - 1)) * std::size_t(image.channels) + std::size_t(channel)] -
                middle);
    }
    return plane;
}

void check(ZmxStatus status) {
    if (status != zmxStsNoErr) throw std::logic_error("the transform refuses its arguments: " + std::to_string(status));
}

} // namespace

Energy measure(const Image& image) {
    const Blocks blocks(image);
    const int step = 4 * blocks.size.width, middle = (image.maxval + 1) / 2;
    Energy e;
    e.coefficients = {blocks.size.width, blocks.size.height, image.channels, image.maxval, {}};
    e.coefficients.samples.resize(blocks.samples() * std::size_t(image.channels));
    for (int c = 0; c < image.channels; ++c) {
        const Plane before = centred(image, c, blocks);
        Plane plane = before;
        check(zmxiPCTFwd_HDP_32s_C1IR(plane.data(), step, blocks.size));
        for (int y = 0; y < blocks.size.height; ++y)
            for (int x = 0; x < blocks.size.width; ++x) {
                const std::size_t place = std::size_t(4 * (y % 4) + x % 4);
                const Zmx32s v = plane[std::size_t(y) * std::size_t(blocks.size.width) + std::size_t(x)];
                e.mean[place] += double(v) * v;
                // The DC has a gain of 4 and is shown without it.
                const int shown = std::clamp(middle + (place == 0 ? v / 4 : v), 0, image.maxval);
                const int toX = x % 4 * blocks.count.width + x / 4, toY = y % 4 * blocks.count.height + y / 4;
                e.coefficients.row(toY)[std::size_t(toX) * std::size_t(image.channels) + std::size_t(c)] =
                    std::uint16_t(shown);
            }
        check(zmxiPCTInv_HDP_32s_C1IR(plane.data(), step, blocks.size));
        for (std::size_t i = 0; i < plane.size(); ++i) e.lost += plane[i] != before[i];
        e.blocks += blocks.samples() / 16;
    }
    for (double& m : e.mean) m /= double(e.blocks);
    return e;
}

} // namespace hdp
