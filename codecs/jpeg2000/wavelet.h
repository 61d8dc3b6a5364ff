// wavelet.h - the wavelet transform of a plane, level by level, in place (annex F).
#pragma once

#include "codecs/jpeg2000/geometry.h"

namespace codecs::jpeg2000 {

// The samples of a tile-component; after the transform its bands, the lower resolution at the top left.
struct Plane {
    int width = 0, height = 0;
    std::vector<std::int32_t> samples;

    Plane() = default;
    Plane(int w, int h) : width(w), height(h), samples(std::size_t(w) * std::size_t(h)) {}
    std::int32_t* at(int x, int y) { return samples.data() + std::size_t(y) * std::size_t(width) + x; }
    int stride() const { return width * int(sizeof(std::int32_t)); }
};

enum class Filter {
    reversible,   // 5/3
    irreversible, // 9/7 with factors of 16 fraction bits
    precise       // 9/7 in extended precision, slower; for samples that those factors would blur
};
constexpr Filter filterOf(bool reversible, int depth) {
    return reversible ? Filter::reversible : depth <= 12 ? Filter::irreversible : Filter::precise;
}

// `rect` is that of the higher resolution of the level.
void forwardWavelet(Plane& plane, const Rect& rect, Filter filter, int threads);
void inverseWavelet(Plane& plane, const Rect& rect, Filter filter, int threads);

// Norm of the basis functions of a band, `levels` down, for the weight of its errors.
double waveletNorm(bool reversible, int levels, Orientation o);

// Fraction bits of the samples on the road through the 9/7 filter, by the depth of the picture's.
constexpr int waveletFraction(int depth) { return depth <= 15 ? 13 : 12; }

} // namespace codecs::jpeg2000
