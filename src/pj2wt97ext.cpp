// pj2wt97ext.cpp - the 9/7 lifting of 32-bit samples in extended precision.
//
// Numbers with a 64-bit significand are slow, so the lifting runs in double precision, which the compiler vectorises,
// and every output is bracketed: where truncating a little below and a little above it gives one integer, that is what
// the extended value truncates to; where the two differ, the output is computed again in extended precision from the
// samples under it.
//
// How little. Let M bound the samples in magnitude and e = 2^-53 be half a unit in the last place of a double near 1.
// Taking every product and sum as off by e relative to its bound, the steps are bounded and off by (units of M, and of
// e M)
//   forward  A 4.2, 7.4   B 1.5, 3.2   G 6.8, 25   D 7.5, 45   low 6.1, 43   high 8.3, 39
//   inverse  S 0.82, 0.82   B 2.0, 5.4   A 4.3, 22   even 2.5, 11   odd 12, 84
// and the extended values by 2^-11 of that. So 128 e M = 2^-46 M covers both directions, also where double results are
// rounded twice (32-bit x86). The bounds also show that no output leaves 32 bits as long as M is at most 2^27. Larger
// samples have brackets that saturate. tests/jpeg2000/test_own_wavelet97_bounds.cpp proves each figure in interval arithmetic.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt97ext.h"

#include "pj2wt97exact.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace zmx::wt97::ext {
namespace {

// The bound M of samples, a power of two that is easily had: above the or of all magnitudes (of the complement, for
// negative samples).
struct Bound {
    Zmx32u bits = 0;
    void add(const Zmx8u* row, int n) {
        Zmx32u all = bits;
        for (int i = 0; i < n; ++i) {
            const Zmx32s v = load<Zmx32s>(row, i);
            all |= Zmx32u(v ^ (v >> 31));
        }
        bits = all;
    }
    // Whether outputs may leave 32 bits.
    bool large() const { return bits >= 1u << 27; }
    // How far outputs may be off: 2^-46 M.
    double doubt() const { return double(std::uint64_t(1) << std::bit_width(bits)) * 0x1p-46; }
};

// ---- outputs in double precision with their brackets

// The truncated value, and something other than 0 where it is in doubt. Of samples that are not large it fits.
template <bool large> struct Bracket {
    Zmx32s below, differ;
    Bracket(double v, double doubt) : below(Zmx32s(v - doubt)), differ(below ^ Zmx32s(v + doubt)) {}
};
// Of large samples: saturated, which hides whether the value is 2^31 itself.
template <> struct Bracket<true> {
    Zmx32s below, differ;
    Bracket(double v, double doubt)
        : below(saturated(v - doubt)), differ((below ^ saturated(v + doubt)) | (std::fabs(v - 0x1p31) <= doubt)) {}
    static Zmx32s saturated(double v) { return Zmx32s(v < kLeast ? kLeast : v > 2147483647 ? 2147483647 : v); }
};

// Sample i of an extended line of n samples: mirrored at both ends as often as it takes.
int mirror(int i, int n) {
    while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
    return i;
}

// ---- columns: a strip at a time, down the plane with the running values of every column beside each other

constexpr int kStrip = 128;

// The rows of a strip as they were before they were overwritten, for as far back as mirroring and exact outputs look.
class StripRows {
    Zmx32s held[16][kStrip];
    const Zmx8u* place;
    int step, rows, width;

public:
    Bound bound;
    StripRows(const Zmx8u* strip, int stepBytes, int n, int columns)
        : place(strip), step(stepBytes), rows(n), width(columns) {
        for (int r = 0; r < rows; ++r) bound.add(rowAt(place, step, r), width);
        for (int r = -4; r < 0; ++r) std::memcpy((*this)[r], rowAt(place, step, mirror(r, rows)), bytes());
    }
    // A row that is held, ahead of the strip or behind it too.
    Zmx32s* operator[](int r) { return held[r & 15]; }
    // Takes row r in; rows come in ascending order from 0, those behind the last by mirroring what is held.
    void take(int r) { std::memcpy((*this)[r], source(r), bytes()); }
    // Where row r, the next to be taken in, stands until then.
    const Zmx8u* source(int r) {
        return r < rows ? rowAt(place, step, r) : reinterpret_cast<const Zmx8u*>((*this)[2 * (rows - 1) - r]);
    }
    // Column i as a line around row r.
    auto around(int r, int i) {
        return [this, r, i](int j) { return held[(r + j) & 15][i]; };
    }

private:
    std::size_t bytes() const { return sizeof(Zmx32s) * std::size_t(width); }
};

// Values between the steps for every column of a strip.
struct Running {
    double v0[kStrip], v1[kStrip], v2[kStrip], v3[kStrip];
};
// What two rows of outputs are in doubt of, and whether there is any.
struct Doubts {
    Zmx32s even[kStrip], odd[kStrip];
    Zmx32s anyEven, anyOdd;
};

// Computes again those outputs of a row that are in doubt.
template <class Exact> void settle(Zmx8u* dst, const Zmx32s* differ, int width, Exact exact) {
    for (int i = 0; i < width; ++i)
        if (differ[i]) store(dst, i, exact(i));
}

// With position k even: A(k + 3), B(k + 2), G(k + 1) and D(k) from A(k + 1), B(k), G(k - 1) in v0, v1, v2. Rows k + 3 and
// k + 4 come from src3 and src4 and are held in x3 and x4.
template <bool large>
void forwardStep(const Zmx32s* __restrict x2, const Zmx8u* src3, const Zmx8u* src4, Zmx32s* __restrict x3,
                 Zmx32s* __restrict x4, Running& __restrict run, Zmx8u* even, Zmx8u* odd, Doubts& __restrict differ,
                 int width, double doubt) {
    Zmx32s anyEven = 0, anyOdd = 0;
    for (int i = 0; i < width; ++i) {
        const Zmx32s s3 = load<Zmx32s>(src3, i), s4 = load<Zmx32s>(src4, i);
        x3[i] = s3;
        x4[i] = s4;
        const double a = firstLift<double>(s3, x2[i], s4);
        const double b = lift(double(x2[i]), kFloatSteps.beta, run.v0[i] + a);
        const double g = lift(run.v0[i], kFloatSteps.gamma, run.v1[i] + b);
        const double d = lift(run.v1[i], kFloatSteps.delta, run.v2[i] + g);
        run.v0[i] = a;
        run.v1[i] = b;
        run.v2[i] = g;
        const Bracket<large> low(d * kFloatSteps.oneOverK, doubt), high(g * kFloatSteps.k, doubt);
        store(even, i, low.below);
        store(odd, i, high.below);
        differ.even[i] = low.differ;
        differ.odd[i] = high.differ;
        anyEven |= low.differ;
        anyOdd |= high.differ;
    }
    differ.anyEven = anyEven;
    differ.anyOdd = anyOdd;
}

// Down a strip, two rows at a time: rows are held before outputs overwrite them.
template <bool large> void forwardStrip(StripRows& rows, Zmx8u* strip, int step, Split s, int width) {
    const int p = s.phase;
    const double doubt = rows.bound.doubt();
    Running run{};
    Doubts differ;
    Zmx8u nowhere[sizeof(Zmx32s) * kStrip]; // rows that lie outside
    // Absolute position k, even, is row k + p. Begin two places ahead of the first outputs.
    for (int r = 0; r <= p; ++r) rows.take(r);
    // A(-1) and B(-2); the first turn makes G(-1), and a D(-2) that lies ahead of the strip.
    for (int i = 0; i < width; ++i) {
        const auto x = [&](int k) { return rows[k + p][i]; };
        const double before = firstLift<double>(x(-3), x(-4), x(-2));
        run.v0[i] = firstLift<double>(x(-1), x(-2), x(0));
        run.v1[i] = lift(double(x(-2)), kFloatSteps.beta, before + run.v0[i]);
    }
    for (int k = -2; k + p < s.n; k += 2) {
        const int r = k + p;
        const bool even = r >= 0, odd = r + 1 >= 0 && r + 1 < s.n;
        Zmx8u *const evenRow = even ? rowAt(strip, step, r) : nowhere, *const oddRow =
                                                                           odd ? rowAt(strip, step, r + 1) : nowhere;
        forwardStep<large>(rows[r + 2], rows.source(r + 3), rows.source(r + 4), rows[r + 3], rows[r + 4], run, evenRow,
                           oddRow, differ, width, doubt);
        if (even && differ.anyEven)
            settle(evenRow, differ.even, width, [&](int i) { return exactLow(rows.around(r, i)); });
        if (odd && differ.anyOdd)
            settle(oddRow, differ.odd, width, [&](int i) { return exactHigh(rows.around(r + 1, i)); });
    }
}

// With position k even: B(k + 4), A(k + 3), x(k + 2) and x(k + 1) from S(k + 3), B(k + 2), A(k + 1), x(k) in v0 to v3. Rows
// k + 4 and k + 5 come from src4 and src5 and are held in x4 and x5.
template <bool large>
void inverseStep(const Zmx8u* src4, const Zmx8u* src5, Zmx32s* __restrict x4, Zmx32s* __restrict x5,
                 Running& __restrict run, Zmx8u* odd, Zmx8u* even, Doubts& __restrict differ, int width, double doubt) {
    Zmx32s anyEven = 0, anyOdd = 0;
    for (int i = 0; i < width; ++i) {
        const Zmx32s s4 = load<Zmx32s>(src4, i), s5 = load<Zmx32s>(src5, i);
        x4[i] = s4;
        x5[i] = s5;
        const double s = double(s5) * kFloatSteps.oneOverK;
        const double b = liftBack(double(s4) * kFloatSteps.k, kFloatSteps.delta, run.v0[i] + s);
        const double a = liftBack(run.v0[i], kFloatSteps.gamma, run.v1[i] + b);
        const double x2 = liftBack(run.v1[i], kFloatSteps.beta, run.v2[i] + a);
        const Bracket<large> e(x2, doubt), o(liftBack(run.v2[i], kFloatSteps.alpha, run.v3[i] + x2), doubt);
        run.v0[i] = s;
        run.v1[i] = b;
        run.v2[i] = a;
        run.v3[i] = x2;
        store(even, i, e.below);
        store(odd, i, o.below);
        differ.even[i] = e.differ;
        differ.odd[i] = o.differ;
        anyEven |= e.differ;
        anyOdd |= o.differ;
    }
    differ.anyEven = anyEven;
    differ.anyOdd = anyOdd;
}

template <bool large> void inverseStrip(StripRows& rows, Zmx8u* strip, int step, Split s, int width) {
    const int p = s.phase;
    const double doubt = rows.bound.doubt();
    Running run{};
    Doubts differ;
    Zmx8u nowhere[sizeof(Zmx32s) * kStrip]; // rows that lie outside
    // Absolute position k, even, is row k - p here, so that position 0 may lie ahead of the first row.
    for (int r = 0; r <= 1 - p; ++r) rows.take(r);
    // S(1), B(0) and A(-1); the first turn makes x(0), and an x(-1) that is not needed.
    for (int i = 0; i < width; ++i) {
        const auto x = [&](int k) { return double(rows[k - p][i]); };
        const double s3 = x(-3) * kFloatSteps.oneOverK, s1 = x(-1) * kFloatSteps.oneOverK;
        const double before = liftBack(x(-2) * kFloatSteps.k, kFloatSteps.delta, s3 + s1);
        run.v0[i] = x(1) * kFloatSteps.oneOverK;
        run.v1[i] = liftBack(x(0) * kFloatSteps.k, kFloatSteps.delta, s1 + run.v0[i]);
        run.v2[i] = liftBack(s1, kFloatSteps.gamma, before + run.v1[i]);
    }
    for (int k = -2; k + 1 - p < s.n; k += 2) {
        const int r = k - p;
        const bool odd = r + 1 >= 0, even = r + 2 >= 0 && r + 2 < s.n;
        Zmx8u *const oddRow = odd ? rowAt(strip, step, r + 1) : nowhere, *const evenRow =
                                                                             even ? rowAt(strip, step, r + 2) : nowhere;
        inverseStep<large>(rows.source(r + 4), rows.source(r + 5), rows[r + 4], rows[r + 5], run, oddRow, evenRow,
                           differ, width, doubt);
        if (odd && differ.anyOdd)
            settle(oddRow, differ.odd, width, [&](int i) { return exactOdd(rows.around(r + 1, i)); });
        if (even && differ.anyEven)
            settle(evenRow, differ.even, width, [&](int i) { return exactEven(rows.around(r + 2, i)); });
    }
}

// ---- lines: a chunk at a time, one pass over the chunk for each step

constexpr int kChunk = 128; // results of each band
constexpr int kAhead = 2;   // samples of each band that a chunk needs ahead of its own
constexpr int kHeld = kChunk + 2 * kAhead + 2;

// The samples of a chunk, kHeld from each band, by absolute position: even(i) is position 2 (first + i), odd(i) the one
// behind it.
struct Samples {
    const Zmx8u *evens, *odds;
    int first;
    Bound bound;
    Samples(const Zmx8u* evenBand, const Zmx8u* oddBand, int from) : evens(evenBand), odds(oddBand), first(from) {
        bound.add(evens, kHeld);
        bound.add(odds, kHeld);
    }
    Zmx32s even(int i) const { return load<Zmx32s>(evens, i); }
    Zmx32s odd(int i) const { return load<Zmx32s>(odds, i); }
    // Any position of the chunk, for exact outputs.
    Zmx32s at(int k) const { return k % 2 == 0 ? even(k / 2 - first) : odd((k - 1) / 2 - first); }
    auto around(int k) const {
        return [this, k](int j) { return at(k + j); };
    }
};

// Room for those of a chunk that do not stand as they are needed.
struct HeldSamples {
    Zmx32s evens[kHeld], odds[kHeld];
    Samples from(int first) const {
        return {reinterpret_cast<const Zmx8u*>(evens), reinterpret_cast<const Zmx8u*>(odds), first};
    }
};

// The samples that a chunk stands on: most come straight from memory, the others are mirrored, one by one.
//
// Fills kHeld elements from j = first on, by value(j) near the ends of the line and straight from the line inside.
template <class Inside, class Value>
void fill(Zmx32s* dst, int first, int insideFrom, int insideTo, Inside inside, Value value) {
    const int from = clamp(insideFrom, first, first + kHeld), to = clamp(insideTo, from, first + kHeld);
    for (int j = first; j < from; ++j) dst[j - first] = value(j);
    inside(dst + (from - first), from, to - from);
    for (int j = to; j < first + kHeld; ++j) dst[j - first] = value(j);
}

// Makes outputs of a band with their brackets; tells whether any is in doubt.
template <bool large>
bool truncateAll(const double* v, Zmx32f factor, double doubt, Zmx8u* values, Zmx32s* __restrict differ, int n) {
    Zmx32s any = 0;
    for (int i = 0; i < n; ++i) {
        const Bracket<large> b(v[i] * factor, doubt);
        store(values, i, b.below);
        differ[i] = b.differ;
        any |= b.differ;
    }
    return any != 0;
}

template <bool large> void forwardChunk(const Samples& x, Split s, int from, Zmx8u* low, Zmx8u* high) {
    // Element i of an array belongs to j = from - kAhead + i; each step has fewer neighbours than the one before it.
    double a[kHeld], b[kHeld], g[kHeld], d[kHeld];
    Zmx32s differ[kChunk];
    const int p = s.phase, lows = std::min(kChunk, s.low() - from), highs = std::min(kChunk, s.high() - from);
    // The steps over the whole chunk, then the two bands with their brackets.
    const double doubt = x.bound.doubt();
    for (int i = 0; i < kHeld - 1; ++i) a[i] = firstLift<double>(x.odd(i), x.even(i), x.even(i + 1));
    for (int i = 1; i < kHeld - 1; ++i) b[i] = lift(double(x.even(i)), kFloatSteps.beta, a[i - 1] + a[i]);
    for (int i = 1; i < kHeld - 2; ++i) g[i] = lift(a[i], kFloatSteps.gamma, b[i] + b[i + 1]);
    for (int i = 2; i < kHeld - 2; ++i) d[i] = lift(b[i], kFloatSteps.delta, g[i - 1] + g[i]);
    const auto place = [from](Zmx8u* band) { return band + std::ptrdiff_t(sizeof(Zmx32s)) * from; };
    if (truncateAll<large>(d + kAhead, kFloatSteps.oneOverK, doubt, place(low), differ, lows))
        settle(place(low), differ, lows, [&](int i) { return exactLow(x.around(2 * (from + i))); });
    // High sample i is G(2 i + 1) at phase 0 and G(2 i - 1) otherwise.
    if (truncateAll<large>(g + kAhead - p, kFloatSteps.k, doubt, place(high), differ, highs))
        settle(place(high), differ, highs, [&](int i) { return exactHigh(x.around(2 * (from + i) + 1 - 2 * p)); });
}

// Makes the outputs of a chunk, by turns from both bands.
template <bool large> void inverseChunk(const Samples& x, int from, Zmx8u* out) {
    double o[kHeld], b[kHeld], a[kHeld], e[kHeld];
    Zmx32s differ[2 * kChunk], any = 0;
    const double doubt = x.bound.doubt();
    // S, B, A, and the samples: the even ones, and the odd ones in the place of S.
    for (int i = 0; i < kHeld; ++i) o[i] = double(x.odd(i)) * kFloatSteps.oneOverK;
    for (int i = 1; i < kHeld; ++i)
        b[i] = liftBack(double(x.even(i)) * kFloatSteps.k, kFloatSteps.delta, o[i - 1] + o[i]);
    for (int i = 1; i < kHeld - 1; ++i) a[i] = liftBack(o[i], kFloatSteps.gamma, b[i] + b[i + 1]);
    for (int i = 2; i < kHeld - 1; ++i) e[i] = liftBack(b[i], kFloatSteps.beta, a[i - 1] + a[i]);
    for (int i = 2; i < kHeld - 2; ++i) o[i] = liftBack(a[i], kFloatSteps.alpha, e[i] + e[i + 1]);
    for (int i = 0; i < kChunk; ++i) {
        const Bracket<large> even(e[kAhead + i], doubt), odd(o[kAhead + i], doubt);
        store(out, 2 * i, even.below);
        store(out, 2 * i + 1, odd.below);
        differ[i] = even.differ;
        differ[kChunk + i] = odd.differ;
        any |= even.differ | odd.differ;
    }
    if (any)
        for (int i = 0; i < kChunk; ++i) {
            if (differ[i]) store(out, 2 * i, exactEven(x.around(2 * (from + i))));
            if (differ[kChunk + i]) store(out, 2 * i + 1, exactOdd(x.around(2 * (from + i) + 1)));
        }
}

// Strips of columns from left to right, with the lifting for large samples where there are any in the strip.
template <class LiftStrip> void allStrips(Zmx8u* plane, int step, Split split, int width, LiftStrip lift) {
    for (int x = 0; x < width; x += kStrip) {
        Zmx8u* const strip = plane + std::ptrdiff_t(sizeof(Zmx32s)) * x;
        const int columns = std::min(kStrip, width - x);
        StripRows rows(strip, step, split.n, columns);
        if (rows.bound.large())
            lift(std::true_type(), rows, strip, columns);
        else
            lift(std::false_type(), rows, strip, columns);
    }
}

} // namespace

// A line in chunks. Samples of a band come every other from the interleaved line; beyond its ends they are mirrored.
void forwardLine(const Zmx8u* x, Split split, Zmx8u* low, Zmx8u* high) {
    const int p = split.phase, n = split.n;
    HeldSamples held;
    for (int from = 0; from < std::max(split.low(), split.high()); from += kChunk) {
        const int first = from - kAhead;
        // Position k is sample k + phase of the line.
        const auto every = [=](int offset) {
            return [=](Zmx32s* dst, int j, int count) {
                for (int i = 0; i < count; ++i) dst[i] = load<Zmx32s>(x, 2 * std::ptrdiff_t(j + i) + offset);
            };
        };
        const auto mirrored = [=](int offset) {
            return [=](int j) { return load<Zmx32s>(x, mirror(2 * j + offset, n)); };
        };
        fill(held.evens, first, 0, split.low(), every(p), mirrored(p));
        fill(held.odds, first, 0, (n - p) / 2, every(p + 1), mirrored(p + 1));
        const Samples samples = held.from(first);
        (samples.bound.large() ? forwardChunk<true> : forwardChunk<false>)(samples, split, from, low, high);
    }
}

void inverseLine(Zmx8u* low, Zmx8u* high, Split split, Zmx8u* x) {
    const int p = split.phase, n = split.n;
    // Position k is sample k - phase of the interleaved line: even(j) low sample j - phase, odd(j) high sample j.
    const auto band = [](const Zmx8u* b, int j) { return b + std::ptrdiff_t(sizeof(Zmx32s)) * j; };
    HeldSamples held;
    for (int from = 0; 2 * from - p < n; from += kChunk) {
        const int first = from - kAhead;
        const auto mirrored = [=](int offset) {
            return [=](int j) {
                const int i = mirror(2 * j + offset - p, n);
                return load<Zmx32s>((i + p) % 2 == 0 ? low : high, i / 2);
            };
        };
        const auto straight = [band](const Zmx8u* b, int offset) {
            return [=](Zmx32s* dst, int j, int count) {
                if (count > 0) // unreachable: a chunk begins ahead of the end of both bands
                    std::memcpy(dst, band(b, j - offset), sizeof(Zmx32s) * std::size_t(count));
            };
        };
        const bool inside = from > 0 && first + kHeld <= std::min(split.low() + p, split.high());
        if (!inside) {
            fill(held.evens, first, p, split.low() + p, straight(low, p), mirrored(0));
            fill(held.odds, first, 0, split.high(), straight(high, 0), mirrored(1));
        }
        const Samples samples = inside ? Samples(band(low, first - p), band(high, first), first) : held.from(first);
        const auto make = [&](Zmx8u* out) {
            if (samples.bound.large())
                inverseChunk<true>(samples, from, out);
            else
                inverseChunk<false>(samples, from, out);
        };
        // Position k is sample k - phase of the line. A whole chunk goes straight there.
        const int begin = from == 0 ? p : 0, end = std::min(2 * kChunk, n + p - 2 * from);
        Zmx8u* const place = x + std::ptrdiff_t(sizeof(Zmx32s)) * (2 * std::ptrdiff_t(from) - p + begin);
        if (begin == 0 && end == 2 * kChunk) {
            make(place);
        } else {
            Zmx32s part[2 * kChunk];
            make(reinterpret_cast<Zmx8u*>(part));
            std::memcpy(place, part + begin, sizeof *part * std::size_t(end - begin));
        }
    }
}

// Columns do not depend on each other.
void forwardColumns(Zmx8u* plane, int step, Split split, int width) {
    allStrips(plane, step, split, width, [=](auto large, StripRows& rows, Zmx8u* strip, int columns) {
        forwardStrip<large>(rows, strip, step, split, columns);
    });
}
void inverseColumns(Zmx8u* plane, int step, Split split, int width) {
    allStrips(plane, step, split, width, [=](auto large, StripRows& rows, Zmx8u* strip, int columns) {
        inverseStrip<large>(rows, strip, step, split, columns);
    });
}

} // namespace zmx::wt97::ext
