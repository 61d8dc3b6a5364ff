// What the models of both wavelets share: planes, the lines in them, and the mirroring of a line past its
// ends.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace model {

// A plane of samples without gaps; even an empty one has room for one row and one column.
template <class T> struct Grid {
    int width, height;
    std::vector<T> v;
    Grid(int w, int h) : width(w), height(h), v(std::size_t(std::max(w, 1)) * std::size_t(std::max(h, 1))) {}
    T& at(int x, int y) { return v[std::size_t(y) * std::size_t(std::max(width, 1)) + std::size_t(x)]; }
};

// A row or a column of a plane.
template <class T> struct Stroke {
    T* first;
    int stride;
    T& operator[](int i) const { return first[std::ptrdiff_t(i) * stride]; }
};

// A scratch line: sample 0 has room ahead of it and the last one behind it.
template <class T> class Line {
    static constexpr int kRoom = 16;
    std::vector<T> v;

public:
    explicit Line(int len) : v(std::size_t(len + 2 * kRoom), T(0x5A5A)) {}
    T& operator[](int i) { return v[std::size_t(i + kRoom)]; }
};

template <class T> void mirrorRight(Line<T>& line, int len, int rightExt) {
    for (int j = 0; j < rightExt; ++j) line[len + j] = line[len - 2 - j];
}

// Copies a line and mirrors it; the edge sample is not repeated.
template <class T> void readExt(Stroke<T> src, Line<T>& line, int len, int leftExt, int rightExt) {
    for (int k = 1; k <= leftExt; ++k) line[-k] = src[k];
    for (int i = 0; i < len; ++i) line[i] = src[i];
    mirrorRight(line, len, rightExt);
}

// Four samples on each side of a line of 2 to 4 samples: one reflection is not enough.
template <class T> void mirror4(Line<T>& line, int len) {
    int from = 1, way = len == 2 ? -1 : 1;
    for (int k = 1; k <= 4; ++k) {
        line[-k] = line[from];
        from += way;
        if (from == 0 || from == len - 1) way = -way;
    }
    mirrorRight(line, len, 4);
}
template <class T> void readExt4(Stroke<T> src, Line<T>& line, int len) {
    for (int i = 0; i < len; ++i) line[i] = src[i];
    mirror4(line, len);
}

// Where the samples at even and at odd indices of a line stand in the plane.
struct Cursors {
    int even, odd;
    Cursors(int phase, int len) : even(phase ? len / 2 : 0), odd(phase ? 0 : (len + 1) / 2) {}
    int next(int i) { return i & 1 ? odd++ : even++; }
};

template <class T> void readInterleave(Stroke<T> src, Line<T>& line, int len, int phase) {
    Cursors at(phase, len);
    for (int i = 0; i < len; ++i) line[i] = src[at.next(i)];
}
template <class T> void readInterleaveExt(Stroke<T> src, Line<T>& line, int len, int phase, int leftExt, int rightExt) {
    readInterleave(src, line, len, phase);
    for (int k = 1; k <= leftExt; ++k) line[-k] = line[k];
    mirrorRight(line, len, rightExt);
}
template <class T> void readInterleaveExt4(Stroke<T> src, Line<T>& line, int len, int phase) {
    readInterleave(src, line, len, phase);
    mirror4(line, len);
}
template <class T> void writeInterleave(Line<T>& line, Stroke<T> dst, int phase, int len) {
    Cursors at(phase, len);
    for (int i = 0; i < len; ++i) dst[at.next(i)] = line[i];
}

// All columns, then all rows. An empty direction still has its first line of no samples visited by the other
// one.
template <class T, class LineTransform> void columns(Grid<T>& g, const ZmxiRect& r, LineTransform transform) {
    for (int x = 0; x < r.width; ++x) transform(Stroke<T>{&g.at(x, 0), std::max(g.width, 1)}, r.height, r.y & 1);
}
template <class T, class LineTransform> void rows(Grid<T>& g, const ZmxiRect& r, LineTransform transform) {
    for (int y = 0; y < r.height; ++y) transform(Stroke<T>{&g.at(0, y), 1}, r.width, r.x & 1);
}

// The four bands of a transformed plane: low-low, low-high, high-low, high-high. Cut without regard to the
// phases.
template <class T> using Bands = std::array<Grid<T>, 4>;
struct BandPlace {
    int x, y, width, height;
};
inline BandPlace bandPlace(int band, int w, int h) {
    const bool highX = band >= 2, highY = band & 1;
    return {highX ? (w + 1) / 2 : 0, highY ? (h + 1) / 2 : 0, highX ? w / 2 : (w + 1) / 2, highY ? h / 2 : (h + 1) / 2};
}
template <class T> Grid<T> cutBand(Grid<T>& g, int band) {
    const BandPlace b = bandPlace(band, g.width, g.height);
    Grid<T> out(b.width, b.height);
    for (int y = 0; y < b.height; ++y)
        for (int x = 0; x < b.width; ++x) out.at(x, y) = g.at(b.x + x, b.y + y);
    return out;
}
template <class T> Bands<T> cut(Grid<T>& g) { return {cutBand(g, 0), cutBand(g, 1), cutBand(g, 2), cutBand(g, 3)}; }
template <class T> Grid<T> join(Bands<T>& bands, int w, int h) {
    Grid<T> g(w, h);
    for (int band = 0; band < 4; ++band) {
        const BandPlace b = bandPlace(band, w, h);
        for (int y = 0; y < b.height; ++y)
            for (int x = 0; x < b.width; ++x) g.at(b.x + x, b.y + y) = bands[std::size_t(band)].at(x, y);
    }
    return g;
}

// The scratch sizes: one line of the longer side with its margins, all as unsigned 32-bit numbers, and for
// the forms on four bands a plane ahead of it.
inline int lineBytes(int w, int h, int smallest, Zmx32u sample, Zmx32u margins) {
    if (w < smallest && h < smallest) return 0;
    return int(std::max(sample * (Zmx32u(w) + margins), sample * (Zmx32u(h) + margins)));
}
inline int bandBytes(int w, int h, Zmx32u sample, int line) {
    return int(((sample * Zmx32u(w) + 31u) & ~31u) * Zmx32u(h) + Zmx32u(line));
}

} // namespace model
