// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/dct.h"

#include "tests/frame/model/primitives.h"
#include "tests/jpeg/model/word.h"

#include <cmath>
#include <cstring>
#include <initializer_list>

namespace model {

namespace {

// The rounding of one pass.
struct Pass {
    int round, shift;
    Zmx16s operator()(Word v) const { return ((v + round) >> shift).low16(); }
};
constexpr Pass kFirst{2048, 12}, kLast{1048576, 21};

// A one-dimensional transform, in place, of n elements that lie stride apart.
struct Line {
    Zmx16s* at;
    int stride;
    Zmx16s& operator[](int i) const { return at[i * stride]; }
};
Line row(Zmx16s* block, int r) { return {block + 8 * r, 1}; }
Line column(Zmx16s* block, int c) { return {block + c, 8}; }

void forwardLine(Line x, bool last) {
    const Pass out = last ? kLast : kFirst;
    const Word s0 = x[0] + x[7], s1 = x[1] + x[6], s2 = x[2] + x[5], s3 = x[3] + x[4];
    const Word d0 = x[0] - x[7], d1 = x[1] - x[6], d2 = x[2] - x[5], d3 = x[3] - x[4];
    const Word a = s0 + s3, b = s0 - s3, c = s1 + s2, e = s1 - s2;
    x[0] = last ? ((a + c + 32) >> 6).low16() : (((a + c) << 19) >> 16).low16();
    x[4] = last ? ((a - c + 32) >> 6).low16() : (((a - c) << 19) >> 16).low16();
    const Word w = (b + e) * 17734;
    x[2] = out(b * 25080 + w);
    x[6] = out(w + e * -60547);
    const Word u = (d1 + d2) * 8, v = (d1 - d2) * 8;
    const Word p = (d0 * 46341 + 2048) >> 12, q = (d3 * 46341 + 2048) >> 12;
    const Word e1 = u + p, e2 = p - u, e3 = v + q, e4 = q - v;
    const Word w1 = (e1 + e3) * 799;
    x[1] = out(w1 + e1 * 3218);
    x[7] = out(w1 + e3 * -4816);
    const Word w2 = (e2 + e4) * 3406;
    x[3] = out(w2 + e4 * -5681);
    x[5] = out(w2 + e2 * -1130);
}

// The last butterflies of the inverse transforms.
void spread(Line y, Pass out, const Word (&q)[4], Word g1, Word h1, Word h2, Word g2) {
    y[0] = out(q[0] + g1), y[7] = out(q[0] - g1);
    y[1] = out(q[1] + h1), y[6] = out(q[1] - h1);
    y[2] = out(q[2] + h2), y[5] = out(q[2] - h2);
    y[3] = out(q[3] + g2), y[4] = out(q[3] - g2);
}

void inverseLine(Line x, Pass out) {
    const Word c0 = x[0], c1 = x[1], c2 = x[2], c3 = x[3], c4 = x[4], c5 = x[5], c6 = x[6], c7 = x[7];
    const Word a = (c5 + c3) * 27246, o1 = a + c5 * -9041, o2 = a + c3 * -45451;
    const Word b = (c1 + c7) * 6393, o3 = b + c1 * 25746, o4 = b + c7 * -38531;
    const Word e1 = o3 - o1, e2 = o4 - o2;
    const Word g1 = ((o1 + o3 + 2048) >> 12) * 5793, g2 = ((o2 + o4 + 2048) >> 12) * 5793;
    const Word z = (c2 + c6) * 17734, p1 = z + c2 * 25080, p2 = z + c6 * -60547;
    const Word A = (c0 + c4) << 15, B = (c0 - c4) << 15;
    spread(x, out, {A + p1, B + p2, B - p2, A - p1}, g1, e1 + e2, e1 - e2, g2);
}

void inverseLine4(Line x, Pass out) {
    const Word c0 = x[0], c1 = x[1], c2 = x[2], c3 = x[3];
    const Word e1 = c1 * 32138 - c3 * 27246, e2 = c1 * 6393 + c3 * 18205;
    const Word g1 = ((c1 * 32138 + c3 * 27246 + 2048) >> 12) * 5793;
    const Word g2 = ((c1 * 6393 - c3 * 18205 + 2048) >> 12) * 5793;
    const Word dc = c0 << 15;
    spread(x, out, {dc + c2 * 42813, dc + c2 * 17734, dc - c2 * 17734, dc - c2 * 42813}, g1, e1 + e2, e1 - e2, g2);
}

void inverseLine2(Line x, Pass out) {
    const Word c0 = x[0], c1 = x[1], dc = c0 << 15;
    const Word g1 = ((c1 * 32138 + 2048) >> 12) * 5793, g2 = ((c1 * 6393 + 2048) >> 12) * 5793;
    spread(x, out, {dc, dc, dc, dc}, g1, c1 * 38531, c1 * 25745, g2);
}

// The corner decides alone: the columns beyond it are never looked at.
void inverseCorner(Zmx16s* block, int corner, void (*line)(Line, Pass)) {
    for (int c = 0; c < corner; ++c) line(column(block, c), kFirst);
    for (int r = 0; r < 8; ++r) line(row(block, r), kLast);
}

void fourFromEight(Line from, Line to, Pass out) {
    const Word c0 = from[0], c1 = from[1], c2 = from[2], c3 = from[3], c5 = from[5], c6 = from[6], c7 = from[7];
    const Word t1 = c1 * 41991 + c3 * 14745 + c5 * -9852 + c7 * -8352;
    const Word t2 = c1 * 17393 + c3 * -35598 + c5 * 23786 + c7 * -3460;
    const Word dc = c0 << 15, m = c2 * 30274 + c6 * -12540;
    to[0] = out(dc + m + t1), to[1] = out(dc - m + t2), to[2] = out(dc - m - t2), to[3] = out(dc + m - t1);
}

void twoFromEight(Line from, Line to, Pass out) {
    const Word c0 = from[0], c1 = from[1], c3 = from[3], c5 = from[5], c7 = from[7];
    const Word t = c1 * 59384 + c3 * -20853 + c5 * 13932 + c7 * -11812, dc = c0 << 16;
    to[0] = out(dc + t), to[1] = out(dc - t);
}

// A single-precision number: each operation is rounded.
struct Single {
    Zmx32f v;
};
Single operator+(Single a, Single b) { return {single(double(a.v) + double(b.v))}; }
Single operator-(Single a, Single b) { return {single(double(a.v) - double(b.v))}; }
Single operator*(Single a, Single b) { return {single(double(a.v) * double(b.v))}; }

constexpr int kEven[4] = {0, 6, 2, 4}, kOdd[4] = {7, 1, 5, 3};

struct SingleLine {
    Single* at;
    int stride;
    Single& operator[](int i) const { return at[i * stride]; }
};

void forwardLine(SingleLine t) {
    const Single s0 = t[0], s1 = t[6], s2 = t[2], s3 = t[4], d0 = t[7], d1 = t[1], d2 = t[5], d3 = t[3];
    const Single e0 = s0 + s3, e1 = s0 - s3, f0 = s1 + s2, f1 = s1 - s2, m = (f1 + e1) * Single{0.70710677f};
    t[0] = e0 + f0, t[4] = e0 - f0, t[2] = e1 + m, t[6] = e1 - m;
    const Single p = d0 * Single{1.0823922f}, q = (d1 + d2) * Single{0.76536685f}, A = p + q, B = p - q;
    const Single u = d0 + d1, v = d2 + d3;
    const Single M = v * Single{0.41421357f} + u, N = v - u * Single{0.41421357f};
    t[1] = A + M, t[7] = A - M, t[5] = B + N, t[3] = B - N;
}

void inverseLine(SingleLine t) {
    const Single y0 = t[0], y1 = t[1], y2 = t[2], y3 = t[3], y4 = t[4], y5 = t[5], y6 = t[6], y7 = t[7];
    const Single m = (y2 - y6) * Single{1.4142135f} - (y2 + y6);
    t[0] = (y0 + y4) + (y2 + y6), t[4] = (y0 + y4) - (y2 + y6), t[2] = (y0 - y4) - m, t[6] = (y0 - y4) + m;
    const Single g = ((y3 + y5) + (y1 + y7)) * Single{0.5411961f};
    const Single h = ((y1 - y7) - (y5 - y3) * Single{0.41421357f}) - g;
    const Single k = ((y1 + y7) - (y3 + y5)) * Single{0.76536685f} - h;
    t[7] = g, t[1] = h, t[5] = k;
    t[3] = ((y1 - y7) * Single{0.41421357f} + (y5 - y3)) - k;
}

void eachLine(Single* t, bool rowsFirst, void (*line)(SingleLine)) {
    for (const bool rows : {rowsFirst, !rowsFirst})
        for (int i = 0; i < 8; ++i) line(rows ? SingleLine{t + 8 * i, 1} : SingleLine{t + i, 8});
}

constexpr double kForwardNorm[8] = {0.35355339, 0.23549484, 0.27059805, 0.27778512,
                                    0.35355339, 0.41573479, 0.65328146, 1.18391256};
constexpr double kInverseNorm[8] = {0.35355339, 0.90612749, 0.46193979, 0.76817773,
                                    0.35355339, 0.51327996, 0.19134172, 0.18023997};

// T.81 A.3.3: 1/4 C(u) C(v) cos cos, for the sample at x and the coefficient at u.
double basis(int x, int u) {
    const double pi = std::acos(-1.0);
    return 0.5 * (u == 0 ? std::sqrt(0.5) : 1.0) * std::cos((2 * x + 1) * u * pi / 16);
}

template <class Weight> void transform(double* block, Weight weight) {
    double out[64];
    for (int u = 0; u < 8; ++u)
        for (int v = 0; v < 8; ++v) {
            double sum = 0;
            for (int r = 0; r < 8; ++r)
                for (int c = 0; c < 8; ++c) sum += block[8 * r + c] * weight(r, u) * weight(c, v);
            out[8 * u + v] = sum;
        }
    std::memcpy(block, out, sizeof out);
}

} // namespace

void dctForward(Zmx16s* block) {
    for (int r = 0; r < 8; ++r) forwardLine(row(block, r), false);
    for (int c = 0; c < 8; ++c) forwardLine(column(block, c), true);
}

void dctInverse(Zmx16s* block) { inverseCorner(block, 8, inverseLine); }
void dctInverse4x4(Zmx16s* block) { inverseCorner(block, 4, inverseLine4); }
void dctInverse2x2(Zmx16s* block) { inverseCorner(block, 2, inverseLine2); }

void dctTo4x4(Zmx16s* block) {
    Zmx16s held[32] = {};
    for (int c : {0, 1, 2, 3, 5, 6, 7}) fourFromEight(column(block, c), {held + c, 8}, kFirst);
    for (int r = 0; r < 4; ++r) fourFromEight(row(held, r), {block + 4 * r, 1}, kLast);
}

void dctTo2x2(Zmx16s* block) {
    Zmx16s held[16] = {};
    for (int c : {0, 1, 3, 5, 7}) twoFromEight(column(block, c), {held + c, 8}, Pass{4096, 13});
    for (int r = 0; r < 2; ++r) twoFromEight(row(held, r), {block + 2 * r, 1}, Pass{2097152, 22});
}

Zmx32f forwardNorm(int k) { return single(kForwardNorm[k / 8] * kForwardNorm[k % 8]); }
Zmx32f inverseNorm(int k) { return single(kInverseNorm[k / 8] * kInverseNorm[k % 8]); }

void dctForward(Zmx32f* block) {
    Single t[64];
    const auto x = [&](int r, int c) { return Single{block[8 * r + c]}; };
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const Single a = x(r, c), b = x(r, 7 - c), g = x(7 - r, c), h = x(7 - r, 7 - c);
            t[8 * kEven[r] + kEven[c]] = (a + b) + (g + h);
            t[8 * kEven[r] + kOdd[c]] = (a - b) + (g - h);
            t[8 * kOdd[r] + kEven[c]] = (a + b) - (g + h);
            t[8 * kOdd[r] + kOdd[c]] = (a - b) - (g - h);
        }
    eachLine(t, false, forwardLine);
    for (int k = 0; k < 64; ++k) block[k] = (t[k] * Single{forwardNorm(k)}).v;
}

void dctInverse(Zmx32f* block) {
    Single t[64];
    for (int k = 0; k < 64; ++k) t[k] = Single{block[k]} * Single{inverseNorm(k)};
    eachLine(t, true, inverseLine);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const Single ss = t[8 * kEven[r] + kEven[c]], sd = t[8 * kEven[r] + kOdd[c]];
            const Single ds = t[8 * kOdd[r] + kEven[c]], dd = t[8 * kOdd[r] + kOdd[c]];
            block[8 * r + c] = ((ss + sd) + (ds + dd)).v;
            block[8 * r + 7 - c] = ((ss - sd) + (ds - dd)).v;
            block[8 * (7 - r) + c] = ((ss + sd) - (ds + dd)).v;
            block[8 * (7 - r) + 7 - c] = ((ss - sd) - (ds - dd)).v;
        }
}

void dctForward(double* block) {
    transform(block, [](int x, int u) { return basis(x, u); });
}
void dctInverse(double* block) {
    transform(block, [](int u, int x) { return basis(x, u); });
}

} // namespace model
