// norms.cpp - norms by way of the synthesis filters.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/norms.h"

#include <cmath>

namespace codecs::jpeg2000 {

namespace {

// The norm of a filter's response after `levels` steps of synthesis, of which the lowest is the high one or not.
double lineNorm(const std::vector<double>& low, const std::vector<double>& high, int levels, bool isHigh) {
    std::vector<double> v{1};
    for (int l = 0; l < levels; ++l) {
        const std::vector<double>& f = l == 0 && isHigh ? high : low;
        // A step of synthesis: zeros between the numbers, then the filter.
        std::vector<double> up(2 * v.size() + f.size());
        for (std::size_t i = 0; i < v.size(); ++i)
            for (std::size_t k = 0; k < f.size(); ++k) up[2 * i + k] += v[i] * f[k];
        v = std::move(up);
    }
    double sum = 0;
    for (const double s : v) sum += s * s;
    return std::sqrt(sum);
}

} // namespace

double waveletNorm(bool reversible, int levels, Orientation o) {
    // Synthesis filters; the low one has gain 2 at frequency 0, the high one 1 at the highest.
    static const std::vector<double> low53{0.5, 1, 0.5}, high53{-0.125, -0.25, 0.75, -0.25, -0.125};
    static const std::vector<double> low97{-0.091271763114, -0.057543526228, 0.591271763114, 1.115087052457,
                                           0.591271763114,  -0.057543526228, -0.091271763114};
    static const std::vector<double> high97{0.026748757411,  0.016864118443, -0.078223266529,
                                            -0.266864118443, 0.602949018236, -0.266864118443,
                                            -0.078223266529, 0.016864118443, 0.026748757411};
    const auto& low = reversible ? low53 : low97;
    const auto& high = reversible ? high53 : high97;
    const int n = std::min(levels, 10); // from there on the norm doubles from level to level
    const double norm = lineNorm(low, high, n, o == HL || o == HH) * lineNorm(low, high, n, o == LH || o == HH);
    return std::ldexp(norm, levels - n);
}

double colourNorm(bool reversible, std::size_t component) {
    // Of the columns of the matrices back to RGB (G.2, G.3).
    static constexpr double rct[] = {1.7320508, 0.8291562, 0.8291562}, ict[] = {1.7320508, 1.8051, 1.5734};
    return reversible ? rct[component] : ict[component];
}

} // namespace codecs::jpeg2000
