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

constexpr int kStrip = 64;

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
    void take(int r) {
        if (r < rows)
            std::memcpy((*this)[r], rowAt(place, step, r), bytes());
        else
            std::memcpy((*this)[r], (*this)[2 * (rows - 1) - r], bytes());
    }
    // Column i as a line around row r.
    auto around(int r, int i) {
        return [this, r, i](int j) { return held[(r + j) & 15][i]; };
    }

private:
    std::size_t bytes() const { return sizeof(Zmx32s) * std::size_t(width); }
};

// Values between the steps for every column of a strip; and a pair of output rows.
struct Running {
    double v0[kStrip], v1[kStrip], v2[kStrip], v3[kStrip];
};
struct Outputs {
    Zmx32s even[kStrip], odd[kStrip];
};

// Stores a row of outputs, computing again the ones in doubt.
template <class Exact> void storeRow(Zmx8u* dst, Zmx32s* values, const Zmx32s* differ, int width, Exact exact) {
    Zmx32s any = 0;
    for (int i = 0; i < width; ++i) any |= differ[i];
    if (any)
        for (int i = 0; i < width; ++i)
            if (differ[i]) values[i] = exact(i);
    std::memcpy(dst, values, sizeof(Zmx32s) * std::size_t(width));
}

// With position k even: A(k + 3), B(k + 2), G(k + 1) and D(k) from A(k + 1), B(k), G(k - 1) in v0, v1, v2.
template <bool large>
void forwardStep(const Zmx32s* x2, const Zmx32s* x3, const Zmx32s* x4, Running& run, Outputs& out, Outputs& differ,
                 int width, double doubt) {
    for (int i = 0; i < width; ++i) {
        const double a = firstLift<double>(x3[i], x2[i], x4[i]);
        const double b = lift(double(x2[i]), kFloatSteps.beta, run.v0[i] + a);
        const double g = lift(run.v0[i], kFloatSteps.gamma, run.v1[i] + b);
        const double d = lift(run.v1[i], kFloatSteps.delta, run.v2[i] + g);
        run.v0[i] = a;
        run.v1[i] = b;
        run.v2[i] = g;
        const Bracket<large> low(d * kFloatSteps.oneOverK, doubt), high(g * kFloatSteps.k, doubt);
        out.even[i] = low.below;
        out.odd[i] = high.below;
        differ.even[i] = low.differ;
        differ.odd[i] = high.differ;
    }
}

// Down a strip, two rows at a time: rows are held before outputs overwrite them.
template <bool large> void forwardStrip(StripRows& rows, Zmx8u* strip, int step, Split s, int width) {
    const int p = s.phase;
    const double doubt = rows.bound.doubt();
    Running run{};
    Outputs out, differ{};
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
        rows.take(k + 3 + p);
        rows.take(k + 4 + p);
        forwardStep<large>(rows[k + 2 + p], rows[k + 3 + p], rows[k + 4 + p], run, out, differ, width, doubt);
        if (const int r = k + p; r >= 0)
            storeRow(rowAt(strip, step, r), out.even, differ.even, width,
                     [&](int i) { return exactLow(rows.around(r, i)); });
        if (const int r = k + 1 + p; r >= 0 && r < s.n)
            storeRow(rowAt(strip, step, r), out.odd, differ.odd, width,
                     [&](int i) { return exactHigh(rows.around(r, i)); });
    }
}

// With position k even: B(k + 4), A(k + 3), x(k + 2) and x(k + 1) from S(k + 3), B(k + 2), A(k + 1), x(k) in v0 to v3.
template <bool large>
void inverseStep(const Zmx32s* x4, const Zmx32s* x5, Running& run, Outputs& out, Outputs& differ, int width,
                 double doubt) {
    for (int i = 0; i < width; ++i) {
        const double s = double(x5[i]) * kFloatSteps.oneOverK;
        const double b = liftBack(double(x4[i]) * kFloatSteps.k, kFloatSteps.delta, run.v0[i] + s);
        const double a = liftBack(run.v0[i], kFloatSteps.gamma, run.v1[i] + b);
        const double even = liftBack(run.v1[i], kFloatSteps.beta, run.v2[i] + a);
        const Bracket<large> e(even, doubt), o(liftBack(run.v2[i], kFloatSteps.alpha, run.v3[i] + even), doubt);
        run.v0[i] = s;
        run.v1[i] = b;
        run.v2[i] = a;
        run.v3[i] = even;
        out.even[i] = e.below;
        out.odd[i] = o.below;
        differ.even[i] = e.differ;
        differ.odd[i] = o.differ;
    }
}

template <bool large> void inverseStrip(StripRows& rows, Zmx8u* strip, int step, Split s, int width) {
    const int p = s.phase;
    const double doubt = rows.bound.doubt();
    Running run{};
    Outputs out, differ{};
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
        rows.take(k + 4 - p);
        rows.take(k + 5 - p);
        inverseStep<large>(rows[k + 4 - p], rows[k + 5 - p], run, out, differ, width, doubt);
        if (const int r = k + 1 - p; r >= 0)
            storeRow(rowAt(strip, step, r), out.odd, differ.odd, width,
                     [&](int i) { return exactOdd(rows.around(r, i)); });
        if (const int r = k + 2 - p; r >= 0 && r < s.n)
            storeRow(rowAt(strip, step, r), out.even, differ.even, width,
                     [&](int i) { return exactEven(rows.around(r, i)); });
    }
}

// ---- lines: a chunk at a time, one pass over the chunk for each step

constexpr int kChunk = 128; // results of each band
constexpr int kAhead = 2;   // samples of each band that a chunk needs ahead of its own
constexpr int kHeld = kChunk + 2 * kAhead + 2;

// The samples of a chunk by absolute position: even(j) is position 2 j, odd(j) position 2 j + 1.
struct Samples {
    Zmx32s evens[kHeld], odds[kHeld];
    int first; // the j of element 0
    Bound bound;
    // Any position of the chunk, for exact outputs.
    Zmx32s at(int k) const { return k % 2 == 0 ? evens[k / 2 - first] : odds[(k - 1) / 2 - first]; }
    auto around(int k) const {
        return [this, k](int j) { return at(k + j); };
    }
    void measure() {
        bound.add(reinterpret_cast<const Zmx8u*>(evens), kHeld);
        bound.add(reinterpret_cast<const Zmx8u*>(odds), kHeld);
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

// Stores results from..to of a band, computing again the ones in doubt.
template <class Exact>
void storeBand(Zmx8u* band, const Zmx32s* values, const Zmx32s* differ, int from, int to, Exact exact) {
    Zmx32s any = 0;
    for (int i = 0; i < to - from; ++i) any |= differ[i];
    for (int i = 0; i < to - from; ++i) store(band, from + i, values[i]);
    if (any)
        for (int i = from; i < to; ++i)
            if (differ[i - from]) store(band, i, exact(i));
}

// Outputs of a chunk with their brackets.
template <bool large>
void truncateAll(const double* v, Zmx32f factor, double doubt, Zmx32s* values, Zmx32s* differ, int n) {
    for (int i = 0; i < n; ++i) {
        const Bracket<large> b(v[i] * factor, doubt);
        values[i] = b.below;
        differ[i] = b.differ;
    }
}

template <bool large> void forwardChunk(const Samples& x, Split s, int from, Zmx8u* low, Zmx8u* high) {
    // Element i of an array belongs to j = from - kAhead + i; each step has fewer neighbours than the one before it.
    double a[kHeld], b[kHeld], g[kHeld], d[kHeld];
    Zmx32s values[kHeld] = {}, differ[kHeld] = {};
    const int p = s.phase, lowTo = std::min(from + kChunk, s.low()), highTo = std::min(from + kChunk, s.high());
    // The steps over the whole chunk, then the two bands with their brackets.
    const double doubt = x.bound.doubt();
    const Zmx32s *even = x.evens, *odd = x.odds;
    for (int i = 0; i < kHeld - 1; ++i) a[i] = firstLift<double>(odd[i], even[i], even[i + 1]);
    for (int i = 1; i < kHeld - 1; ++i) b[i] = lift(double(even[i]), kFloatSteps.beta, a[i - 1] + a[i]);
    for (int i = 1; i < kHeld - 2; ++i) g[i] = lift(a[i], kFloatSteps.gamma, b[i] + b[i + 1]);
    for (int i = 2; i < kHeld - 2; ++i) d[i] = lift(b[i], kFloatSteps.delta, g[i - 1] + g[i]);
    truncateAll<large>(d + kAhead, kFloatSteps.oneOverK, doubt, values, differ, kChunk);
    if (lowTo > from) storeBand(low, values, differ, from, lowTo, [&](int i) { return exactLow(x.around(2 * i)); });
    // High sample i is G(2 i + 1) at phase 0 and G(2 i - 1) otherwise.
    truncateAll<large>(g + kAhead - p, kFloatSteps.k, doubt, values, differ, kChunk);
    if (highTo > from)
        storeBand(high, values, differ, from, highTo, [&](int i) { return exactHigh(x.around(2 * i + 1 - 2 * p)); });
}

template <bool large> void inverseChunk(const Samples& x, Split s, int from, Zmx8u* line) {
    double o[kHeld], b[kHeld], a[kHeld], e[kHeld];
    Zmx32s evens[kHeld] = {}, odds[kHeld] = {}, evenDiffer[kHeld] = {}, oddDiffer[kHeld] = {};
    const double doubt = x.bound.doubt();
    // S, B, A, and the samples: the even ones, and the odd ones in the place of S.
    for (int i = 0; i < kHeld; ++i) o[i] = double(x.odds[i]) * kFloatSteps.oneOverK;
    for (int i = 1; i < kHeld; ++i)
        b[i] = liftBack(double(x.evens[i]) * kFloatSteps.k, kFloatSteps.delta, o[i - 1] + o[i]);
    for (int i = 1; i < kHeld - 1; ++i) a[i] = liftBack(o[i], kFloatSteps.gamma, b[i] + b[i + 1]);
    for (int i = 2; i < kHeld - 1; ++i) e[i] = liftBack(b[i], kFloatSteps.beta, a[i - 1] + a[i]);
    for (int i = 2; i < kHeld - 2; ++i) o[i] = liftBack(a[i], kFloatSteps.alpha, e[i] + e[i + 1]);
    truncateAll<large>(e + kAhead, 1, doubt, evens, evenDiffer, kChunk);
    truncateAll<large>(o + kAhead, 1, doubt, odds, oddDiffer, kChunk);
    // What is in doubt is computed again ahead of the interleaving.
    Zmx32s any = 0;
    for (int i = 0; i < kChunk; ++i) any |= evenDiffer[i] | oddDiffer[i];
    if (any)
        for (int i = 0; i < kChunk; ++i) {
            if (evenDiffer[i]) evens[i] = exactEven(x.around(2 * (from + i)));
            if (oddDiffer[i]) odds[i] = exactOdd(x.around(2 * (from + i) + 1));
        }
    // Position k is sample k - phase of the line.
    Zmx8u* const first = line + std::ptrdiff_t(sizeof(Zmx32s)) * (2 * std::ptrdiff_t(from) - s.phase);
    const int begin = from == 0 ? s.phase : 0; // of the chunk's samples, the first and the last that lie in the line
    const int end = std::min(2 * kChunk, s.n + s.phase - 2 * from);
    // A whole chunk is interleaved in a loop that the compiler vectorises.
    if (begin == 0 && end == 2 * kChunk)
        for (int i = 0; i < kChunk; ++i) {
            store(first, 2 * i, evens[i]);
            store(first, 2 * i + 1, odds[i]);
        }
    else
        for (int i = begin; i < end; ++i) store(first, i, i % 2 == 0 ? evens[i / 2] : odds[i / 2]);
}

// Strips of columns from left to right, with the lifting for large samples where there are any in the strip.
using LiftStrip = void (*)(StripRows& rows, Zmx8u* strip, int step, Split split, int width);

void allStrips(Zmx8u* plane, int step, Split split, int width, LiftStrip lift, LiftStrip liftLarge) {
    for (int x = 0; x < width; x += kStrip) {
        Zmx8u* const strip = plane + std::ptrdiff_t(sizeof(Zmx32s)) * x;
        const int columns = std::min(kStrip, width - x);
        StripRows rows(strip, step, split.n, columns);
        (rows.bound.large() ? liftLarge : lift)(rows, strip, step, split, columns);
    }
}

} // namespace

// A line in chunks. Samples of a band come every other from the interleaved line; beyond its ends they are mirrored.
void forwardLine(const Zmx8u* x, Split split, Zmx8u* low, Zmx8u* high) {
    const int p = split.phase, n = split.n;
    Samples samples;
    for (int from = 0; from < std::max(split.low(), split.high()); from += kChunk) {
        samples.first = from - kAhead;
        samples.bound = {};
        // Position k is sample k + phase of the line.
        const auto every = [=](int offset) {
            return [=](Zmx32s* dst, int j, int count) {
                for (int i = 0; i < count; ++i) dst[i] = load<Zmx32s>(x, 2 * std::ptrdiff_t(j + i) + offset);
            };
        };
        const auto mirrored = [=](int offset) {
            return [=](int j) { return load<Zmx32s>(x, mirror(2 * j + offset, n)); };
        };
        fill(samples.evens, samples.first, 0, split.low(), every(p), mirrored(p));
        fill(samples.odds, samples.first, 0, (n - p) / 2, every(p + 1), mirrored(p + 1));
        samples.measure();
        (samples.bound.large() ? forwardChunk<true> : forwardChunk<false>)(samples, split, from, low, high);
    }
}

void inverseLine(Zmx8u* low, Zmx8u* high, Split split, Zmx8u* x) {
    const int p = split.phase, n = split.n;
    Samples samples;
    for (int from = 0; 2 * from - p < n; from += kChunk) {
        samples.first = from - kAhead;
        samples.bound = {};
        // Position k is sample k - phase of the interleaved line: even(j) low sample j - phase, odd(j) high sample j.
        const auto band = [](const Zmx8u* b, int offset) {
            return [=](Zmx32s* dst, int j, int count) {
                if (count > 0) // unreachable: a chunk begins ahead of the end of both bands
                    std::memcpy(dst, b + std::ptrdiff_t(sizeof(Zmx32s)) * (j - offset),
                                sizeof(Zmx32s) * std::size_t(count));
            };
        };
        const auto mirrored = [=](int offset) {
            return [=](int j) {
                const int i = mirror(2 * j + offset - p, n);
                return load<Zmx32s>((i + p) % 2 == 0 ? low : high, i / 2);
            };
        };
        fill(samples.evens, samples.first, p, split.low() + p, band(low, p), mirrored(0));
        fill(samples.odds, samples.first, 0, split.high(), band(high, 0), mirrored(1));
        samples.measure();
        (samples.bound.large() ? inverseChunk<true> : inverseChunk<false>)(samples, split, from, x);
    }
}

// Columns do not depend on each other.
void forwardColumns(Zmx8u* plane, int step, Split split, int width) {
    allStrips(plane, step, split, width, forwardStrip<false>, forwardStrip<true>);
}
void inverseColumns(Zmx8u* plane, int step, Split split, int width) {
    allStrips(plane, step, split, width, inverseStrip<false>, inverseStrip<true>);
}

} // namespace zmx::wt97::ext
