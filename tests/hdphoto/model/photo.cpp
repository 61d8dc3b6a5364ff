// photo.cpp - the lifting steps of the HD Photo core transform as they are written down, one at a time.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/hdphoto/model/photo.h"

#include <cstdint>

namespace model {
namespace {

// A number modulo 2^32, read with its sign where it is shifted.
struct Word {
    std::uint32_t bits = 0;

    Word() = default;
    Word(std::int64_t v) : bits(std::uint32_t(v)) {}
    std::int64_t number() const { return bits < 0x80000000u ? std::int64_t(bits) : std::int64_t(bits) - 0x100000000; }
};
Word operator+(Word a, Word b) { return Word(a.number() + b.number()); }
Word operator-(Word a, Word b) { return Word(a.number() - b.number()); }
Word operator*(int n, Word a) { return Word(n * a.number()); }

// The floor of a / 2^n.
Word operator>>(Word a, int n) {
    const std::int64_t unit = std::int64_t(1) << n;
    std::int64_t q = a.number() / unit;
    if (q * unit > a.number()) --q;
    return Word(q);
}

void butterfly(Word& a, Word& b, Word& c, Word& d, int r) {
    a = a + d;
    b = b - c;
    const Word t = ((a - b + Word(r)) >> 1) - d;
    b = b + t;
    d = d - c + t;
    a = a - d;
    c = t;
}

void rot(Word& p, Word& q, Word& s, Word& u) {
    q = q - s;
    p = p + u;
    s = s + ((q + 1) >> 1);
    u = ((p + 1) >> 1) - u;
    q = q - ((3 * p + 4) >> 3);
    p = p + ((3 * q + 4) >> 3);
    u = u - ((3 * s + 4) >> 3);
    s = s + ((3 * u + 4) >> 3);
    u = u + (q >> 1);
    s = s - ((p + 1) >> 1);
    q = q - u;
    p = p + s;
}

void rotInverse(Word& p, Word& q, Word& s, Word& u) {
    q = q + u;
    p = p - s;
    u = u - (q >> 1);
    s = s + ((p + 1) >> 1);
    p = p - ((3 * q + 4) >> 3);
    q = q + ((3 * p + 4) >> 3);
    s = s - ((3 * u + 4) >> 3);
    u = u + ((3 * s + 4) >> 3);
    s = s - ((q + 1) >> 1);
    u = ((p + 1) >> 1) - u;
    q = q + s;
    p = p - u;
}

void rot2(Word& a, Word& b, Word& c, Word& d) {
    b = 0 - b;
    c = 0 - c;
    d = a + d;
    c = c - b;
    const Word t = d >> 1;
    a = a - t;
    const Word w = c >> 1;
    const Word x = a + ((3 * (b + w) + 4) >> 3);
    const Word y = b + w - ((3 * x + 3) >> 2);
    b = y - w;
    a = x + ((3 * y + 3) >> 3) + t;
    c = c + b;
    d = d - a;
}

void rot2Inverse(Word& a, Word& b, Word& c, Word& d) {
    d = a + d;
    c = c - b;
    const Word t = d >> 1;
    a = a - t;
    const Word w = c >> 1;
    const Word x = a - ((3 * (b + w) + 3) >> 3);
    const Word y = b + w + ((3 * x + 3) >> 2);
    b = y - w;
    a = x - ((3 * y + 4) >> 3) + t;
    c = c + b;
    d = d - a;
    b = 0 - b;
    c = 0 - c;
}

// The block by row and column, and back into the caller's 16 numbers.
struct Block {
    Zmx32s* out;
    Word m[4][4];

    explicit Block(Zmx32s* v) : out(v) {
        for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = Word(v[i]);
    }
    ~Block() {
        for (int i = 0; i < 16; ++i) out[i] = Zmx32s(m[i / 4][i % 4].number());
    }
    Word& operator()(int r, int c) { return m[r][c]; }
};

void outerButterflies(Block& m) {
    butterfly(m(0, 0), m(0, 3), m(3, 0), m(3, 3), 0);
    butterfly(m(0, 1), m(0, 2), m(3, 1), m(3, 2), 0);
    butterfly(m(1, 0), m(1, 3), m(2, 0), m(2, 3), 0);
    butterfly(m(1, 1), m(1, 2), m(2, 1), m(2, 2), 0);
}

} // namespace

void photoForward(Zmx32s v[16]) {
    Block m(v);
    outerButterflies(m);
    butterfly(m(0, 0), m(0, 1), m(1, 0), m(1, 1), 1);
    rot(m(0, 2), m(0, 3), m(1, 2), m(1, 3));
    rot(m(2, 0), m(3, 0), m(2, 1), m(3, 1));
    rot2(m(2, 2), m(2, 3), m(3, 2), m(3, 3));
}

void photoInverse(Zmx32s v[16]) {
    Block m(v);
    rotInverse(m(0, 2), m(0, 3), m(1, 2), m(1, 3));
    rotInverse(m(2, 0), m(3, 0), m(2, 1), m(3, 1));
    rot2Inverse(m(2, 2), m(2, 3), m(3, 2), m(3, 3));
    butterfly(m(0, 0), m(0, 1), m(1, 0), m(1, 1), 1);
    outerButterflies(m);
}

} // namespace model
