// components.cpp - level shift, RCT and ICT.
#include "codecs/jpeg2000/components.h"

#include "zmxj.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

// Fraction bits that the fixed-point ICT has room for: its sums hold samples of 16 bits with sign.
constexpr int kColourFraction = 7;
constexpr int kFixedDepth = 8; // deeper samples take the road in floating point

std::int32_t scaledDown(std::int32_t v, int bits) {
    return bits == 0 ? v : std::int32_t(std::uint32_t(v) + (1u << (bits - 1))) >> bits;
}

template <class Fixed, class Float>
void irreversible(std::vector<Plane>& planes, int depth, Fixed fixed, Float floating) {
    const ZmxiSize size{planes[0].width, planes[0].height};
    const std::size_t count = planes[0].samples.size();
    const int fraction = waveletFraction(depth);
    if (depth <= kFixedDepth) {
        const int shift = fraction - kColourFraction;
        for (int c = 0; c < 3; ++c)
            for (std::int32_t& v : planes[std::size_t(c)].samples) v = scaledDown(v, shift);
        Zmx32s* const p[3] = {planes[0].at(0, 0), planes[1].at(0, 0), planes[2].at(0, 0)};
        fixed(p, planes[0].stride(), size);
        for (int c = 0; c < 3; ++c)
            for (std::int32_t& v : planes[std::size_t(c)].samples) v = std::int32_t(std::uint32_t(v) << shift);
        return;
    }
    std::vector<Zmx32f> floats[3];
    for (std::size_t c = 0; c < 3; ++c) {
        floats[c].resize(count);
        std::transform(planes[c].samples.begin(), planes[c].samples.end(), floats[c].begin(),
                       [](std::int32_t v) { return Zmx32f(v); });
    }
    Zmx32f* const p[3] = {floats[0].data(), floats[1].data(), floats[2].data()};
    floating(p, planes[0].stride(), size);
    for (std::size_t c = 0; c < 3; ++c)
        std::transform(floats[c].begin(), floats[c].end(), planes[c].samples.begin(),
                       [](Zmx32f v) { return std::int32_t(std::clamp(v, -2147483000.0f, 2147483000.0f)); });
}

} // namespace

void forwardColour(std::vector<Plane>& planes, bool reversible, int depth) {
    if (planes[0].samples.empty()) return;
    if (!reversible) return irreversible(planes, depth, zmxiICTFwd_JPEG2K_32s_P3IR, zmxiICTFwd_JPEG2K_32f_P3IR);
    Zmx32s* const p[3] = {planes[0].at(0, 0), planes[1].at(0, 0), planes[2].at(0, 0)};
    zmxiRCTFwd_JPEG2K_32s_P3IR(p, planes[0].stride(), {planes[0].width, planes[0].height});
}

void inverseColour(std::vector<Plane>& planes, bool reversible, int depth) {
    if (planes[0].samples.empty()) return;
    if (!reversible) return irreversible(planes, depth, zmxiICTInv_JPEG2K_32s_P3IR, zmxiICTInv_JPEG2K_32f_P3IR);
    Zmx32s* const p[3] = {planes[0].at(0, 0), planes[1].at(0, 0), planes[2].at(0, 0)};
    zmxiRCTInv_JPEG2K_32s_P3IR(p, planes[0].stride(), {planes[0].width, planes[0].height});
}

void toPlane(const Component& from, int x, int y, Plane& plane, int fraction) {
    const std::int32_t middle = from.isSigned ? 0 : 1 << (from.depth - 1);
    for (int j = 0; j < plane.height; ++j) {
        const std::int32_t* src = from.samples.data() + std::size_t(y + j) * std::size_t(from.width) + x;
        std::int32_t* dst = plane.at(0, j);
        for (int i = 0; i < plane.width; ++i) dst[i] = (src[i] - middle) * (1 << fraction);
    }
}

void fromPlane(Plane& plane, Component& to, int x, int y, int fraction) {
    const std::int32_t middle = to.isSigned ? 0 : 1 << (to.depth - 1);
    const std::int32_t low = to.smallest() - middle, high = to.largest() - middle;
    for (int j = 0; j < plane.height; ++j) {
        const std::int32_t* src = plane.at(0, j);
        std::int32_t* dst = to.samples.data() + std::size_t(y + j) * std::size_t(to.width) + x;
        for (int i = 0; i < plane.width; ++i) dst[i] = std::clamp(scaledDown(src[i], fraction), low, high) + middle;
    }
}

} // namespace codecs::jpeg2000
