// compare.cpp - sums of differences over two pictures that pass by.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/compare.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace codecs {
namespace {

struct Sums {
    double squares = 0;
    int max = 0;
    std::uint64_t within = 0;
};

template <class Sample> void add(const Sample* a, const Sample* b, std::size_t n, int level, Sums& sums) {
    std::uint64_t squares = 0, within = 0;
    int max = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const int d = std::abs(int(a[i]) - int(b[i]));
        squares += std::uint64_t(unsigned(d)) * unsigned(d);
        max = std::max(max, d);
        within += d <= level;
    }
    sums.squares += double(squares);
    sums.max = std::max(sums.max, max);
    sums.within += within;
}

} // namespace

Difference compare(RowSource& a, RowSource& b, int level) {
    const Shape &s = a.shape(), &t = b.shape();
    if (s.width != t.width || s.height != t.height || s.channels != t.channels || s.maxval != t.maxval)
        throw Error("pictures of different shapes cannot be compared");
    Sums sums;
    for (int y = 0; y < s.height;) {
        const int rows = bandRows(s);
        const Band first = a.next(rows), second = b.next(rows);
        for (int r = 0; r < first.rows; ++r)
            if (s.wide())
                add(first.words(r), second.words(r), s.rowSamples(), level, sums);
            else
                add(first.row(r), second.row(r), s.rowSamples(), level, sums);
        y += first.rows;
    }
    const double n = double(s.rowSamples()) * s.height;
    const double psnr = sums.squares == 0 ? std::numeric_limits<double>::infinity()
                                          : 10 * std::log10(double(s.maxval) * s.maxval * n / sums.squares);
    return {psnr, sums.max, double(sums.within) / n};
}

Difference compare(const Picture& a, const Picture& b, int level) {
    PictureSource first(a), second(b);
    return compare(first, second, level);
}

} // namespace codecs
