// colour.cpp - level shift, RCT and ICT.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/colour.h"

#include "zmxj.h"

#include <algorithm>
#include <array>

namespace codecs::jpeg2000 {

namespace {

// Fraction bits that the fixed-point ICT has room for: its sums hold samples of 16 bits with sign.
constexpr int kColourFraction = 7;
constexpr int kFixedDepth = 8; // deeper samples take the ICT in floating point

// Rounded to the nearest, halves up.
std::int32_t scaledDown(std::int32_t v, int bits) {
    return bits == 0 ? v : std::int32_t(std::uint32_t(v) + (1u << (bits - 1))) >> bits;
}

// The library's fixed-point ICT on numbers with fewer fraction bits.
template <class Transform> void inFixedPoint(std::int32_t* const rows[3], int count, Transform transform) {
    constexpr int shift = kFractionBits - kColourFraction;
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < count; ++i) rows[c][i] = scaledDown(rows[c][i], shift);
    transform(rows, sizeof(std::int32_t), {count, 1});
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < count; ++i) rows[c][i] = std::int32_t(std::uint32_t(rows[c][i]) << shift);
}

// The one in floating point, for deeper samples.
template <class Transform> void inFloats(std::int32_t* const rows[3], int count, Transform transform) {
    std::array<std::array<float, kColourChunk>, 3> floats;
    for (std::size_t c = 0; c < 3; ++c) std::copy(rows[c], rows[c] + count, floats[c].data());
    float* const p[3] = {floats[0].data(), floats[1].data(), floats[2].data()};
    transform(p, sizeof(float), {count, 1});
    constexpr float limit = 2147483000.0f; // what hostile numbers may come to stays in 32 bits
    for (std::size_t c = 0; c < 3; ++c)
        for (int i = 0; i < count; ++i) rows[c][i] = std::int32_t(std::clamp(floats[c][std::size_t(i)], -limit, limit));
}

} // namespace

// RCT of G.2.1 and ICT of G.3.1, on the library's functions for each kind of numbers.
template <Road R> void forwardColour(Number<R>* const rows[3], int count, int depth) {
    if constexpr (R == Road::narrow)
        zmxiRCTFwd_JPEG2K_16s_P3IR(rows, sizeof(std::int16_t), {count, 1});
    else if constexpr (R == Road::wide)
        zmxiRCTFwd_JPEG2K_32s_P3IR(rows, sizeof(std::int32_t), {count, 1});
    else if constexpr (R == Road::precise)
        zmxiICTFwd_JPEG2K_32f_P3IR(rows, sizeof(float), {count, 1});
    else if (depth <= kFixedDepth)
        inFixedPoint(rows, count, zmxiICTFwd_JPEG2K_32s_P3IR);
    else
        inFloats(rows, count, zmxiICTFwd_JPEG2K_32f_P3IR);
}

// G.2.2 and G.3.2.
template <Road R> void inverseColour(Number<R>* const rows[3], int count, int depth) {
    if constexpr (R == Road::narrow)
        zmxiRCTInv_JPEG2K_16s_P3IR(rows, sizeof(std::int16_t), {count, 1});
    else if constexpr (R == Road::wide)
        zmxiRCTInv_JPEG2K_32s_P3IR(rows, sizeof(std::int32_t), {count, 1});
    else if constexpr (R == Road::precise)
        zmxiICTInv_JPEG2K_32f_P3IR(rows, sizeof(float), {count, 1});
    else if (depth <= kFixedDepth)
        inFixedPoint(rows, count, zmxiICTInv_JPEG2K_32s_P3IR);
    else
        inFloats(rows, count, zmxiICTInv_JPEG2K_32f_P3IR);
}

// Samples count from the smallest: the middle of their range becomes 0, signed or not (G.1.1).
template <Road R> void fromSamples(std::span<const Sample> samples, int depth, Number<R>* to) {
    const std::int32_t middle = 1 << (depth - 1);
    for (std::size_t i = 0; i < samples.size(); ++i) to[i] = Number<R>((samples[i] - middle) * (1 << fractionBits(R)));
}

// And back (G.1.2). What quantisation has driven out of the range is limited to it.
template <Road R> void toSamples(const Number<R>* from, int depth, std::span<Sample> samples) {
    const std::int32_t middle = 1 << (depth - 1), largest = (1 << depth) - 1;
    if constexpr (R == Road::precise) {
        const float shift = float(middle) + 0.5f, most = float(largest);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = Sample(std::clamp(from[i] + shift, 0.0f, most + 0.5f)); // cut off: the nearest
    } else {
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::int32_t v = scaledDown(from[i], fractionBits(R));
            samples[i] = Sample(std::clamp(v, -middle, largest - middle) + middle);
        }
    }
}

template void fromSamples<Road::narrow>(std::span<const Sample>, int, std::int16_t*);
template void fromSamples<Road::wide>(std::span<const Sample>, int, std::int32_t*);
template void fromSamples<Road::fixed>(std::span<const Sample>, int, std::int32_t*);
template void fromSamples<Road::precise>(std::span<const Sample>, int, float*);
template void toSamples<Road::narrow>(const std::int16_t*, int, std::span<Sample>);
template void toSamples<Road::wide>(const std::int32_t*, int, std::span<Sample>);
template void toSamples<Road::fixed>(const std::int32_t*, int, std::span<Sample>);
template void toSamples<Road::precise>(const float*, int, std::span<Sample>);
template void forwardColour<Road::narrow>(std::int16_t* const[3], int, int);
template void forwardColour<Road::wide>(std::int32_t* const[3], int, int);
template void forwardColour<Road::fixed>(std::int32_t* const[3], int, int);
template void forwardColour<Road::precise>(float* const[3], int, int);
template void inverseColour<Road::narrow>(std::int16_t* const[3], int, int);
template void inverseColour<Road::wide>(std::int32_t* const[3], int, int);
template void inverseColour<Road::fixed>(std::int32_t* const[3], int, int);
template void inverseColour<Road::precise>(float* const[3], int, int);

} // namespace codecs::jpeg2000
