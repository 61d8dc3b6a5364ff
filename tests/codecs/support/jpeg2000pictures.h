// jpeg2000pictures.h - what the tests of the JPEG2000 codec share: pictures of several components, and codestreams to be
// changed by hand.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"
#include "tests/support/rng.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace jpeg2000test {

using namespace codecs;
using namespace codecs::jpeg2000;

constexpr double everything = std::numeric_limits<double>::infinity();

struct Wanted {
    int width = 60, height = 44, components = 1, depth = 8;
    bool isSigned = false;
    std::uint32_t x0 = 0, y0 = 0;
    int dx = 1, dy = 1; // of the components behind the first
};

// Smooth waves with texture and an edge, different in each component.
inline PlanarPicture picture(const Wanted& s, std::uint64_t seed = 5) {
    Rng rng(seed);
    PlanarPicture p;
    p.x0 = s.x0;
    p.y0 = s.y0;
    p.x1 = s.x0 + std::uint32_t(s.width);
    p.y1 = s.y0 + std::uint32_t(s.height);
    for (int k = 0; k < s.components; ++k) {
        Component c;
        c.depth = s.depth;
        c.isSigned = s.isSigned;
        if (k > 0) {
            c.dx = s.dx;
            c.dy = s.dy;
        }
        const auto up = [](std::uint32_t a, int b) { return int((a + unsigned(b) - 1) / unsigned(b)); };
        c.width = up(p.x1, c.dx) - up(p.x0, c.dx);
        c.height = up(p.y1, c.dy) - up(p.y0, c.dy);
        const double middle = (c.smallest() + c.largest()) / 2.0, reach = (c.largest() - c.smallest()) / 2.0;
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < c.width; ++x) {
                const double v =
                    0.4 * std::sin(0.11 * x * c.dx + k) + 0.3 * std::cos(0.07 * y * c.dy - k) + (x > y ? 0.2 : -0.2);
                const int noise = int(rng.range(-8, 8));
                c.samples.push_back(std::clamp(int(middle + reach * (v + noise / 128.0)), c.smallest(), c.largest()));
            }
        p.components.push_back(std::move(c));
    }
    return p;
}

// A file that ought to be sound.
inline PlanarPicture decoded(const Bytes& file, const DecodeOptions& options = {}) {
    DecodedPlanes p = decodePlanes(file, options);
    EXPECT_TRUE(p.warnings.empty()) << p.warnings[0];
    return std::move(p.picture);
}

inline void expectSame(const PlanarPicture& a, const PlanarPicture& b) {
    ASSERT_EQ(a.components.size(), b.components.size());
    for (std::size_t k = 0; k < a.components.size(); ++k) {
        const Component &ca = a.components[k], &cb = b.components[k];
        EXPECT_EQ(ca.width, cb.width);
        EXPECT_EQ(ca.height, cb.height);
        EXPECT_EQ(ca.depth, cb.depth);
        EXPECT_EQ(ca.isSigned, cb.isSigned);
        EXPECT_TRUE(ca.samples == cb.samples) << "component " << k;
    }
}

inline double psnr(const PlanarPicture& a, const PlanarPicture& b) {
    double sum = 0, n = 0;
    for (std::size_t k = 0; k < a.components.size(); ++k)
        for (std::size_t i = 0; i < a.components[k].samples.size(); ++i, ++n) {
            const double d = a.components[k].samples[i] - b.components[k].samples[i];
            sum += d * d;
        }
    const double peak = (1 << a.components[0].depth) - 1;
    return sum == 0 ? 200 : 10 * std::log10(peak * peak * n / sum);
}

// Where bytes stand in a file.
inline std::size_t find(const Bytes& b, std::initializer_list<std::uint8_t> what) {
    return std::size_t(std::search(b.begin(), b.end(), what.begin(), what.end()) - b.begin());
}
inline void insert(Bytes& b, std::size_t at, const Bytes& what) {
    b.insert(b.begin() + std::ptrdiff_t(at), what.begin(), what.end());
}

} // namespace jpeg2000test
