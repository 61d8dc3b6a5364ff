// pj2cbpasses.h - the coding passes of a code block (ISO/IEC 15444-1 D.3), stated once for both directions
// and for MQ and raw segments.
//
// A pass walks the block in stripes of four rows, column by column, top to bottom within a column, and keeps
// the flag plane. What a decision is made of, the coder says:
//
//   Sample                       the type that a pointer to a sample's bytes points to
//   significant(half, sample)    whether the sample turns significant in this plane; half: its flags
//   sign(half, sample)           1 if the sample, which turns significant, is negative
//   refine(half, sample)         codes one more bit of the magnitude
//   firstOf4(sample, step)       run-length coding of a column: its first significant row, 4 if there is none
//   marksRefined                 whether a refinement is remembered in the flags
//
// Everything is inlined into one function a pass and coder, in which the coder's registers are locals.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2cbflags.h"

#include <cstddef>

namespace zmx {

// The geometry of a block for one pass.
template <class Sample> struct CodedBlock {
    Sample* samples;
    std::ptrdiff_t step; // bytes from row to row
    int width, height;
    Zmx32u* flags;             // word of the first column in the first pair of rows
    std::ptrdiff_t flagStride; // words from flag row to flag row
    Zmx32u upwards;            // what the first row of a stripe tells the stripe above: ~0, or 0 in causal mode
};

template <class Coder> class CodingPass {
    using Sample = typename Coder::Sample;

    Coder& coder;
    const CodedBlock<Sample> block;

public:
    CodingPass(Coder& c, const CodedBlock<Sample>& b) : coder(c), block(b) {}

    [[gnu::always_inline]] void significancePropagation() {
        scan([this](auto full, Zmx32u* f, Sample* s, int rows) __attribute__((always_inline)) {
            significancePair<0, full>(f, s, rows);
            if (rows > 2) significancePair<2, full>(f + block.flagStride, s, rows); // unreachable: full stripes have 4
        });
    }

    [[gnu::always_inline]] void magnitudeRefinement() {
        scan([this](auto full, Zmx32u* f, Sample* s, int rows) __attribute__((always_inline)) {
            refinementPair<0, full>(f, s, rows);
            if (rows > 2) refinementPair<2, full>(f + block.flagStride, s, rows); // unreachable: full stripes have 4
        });
    }

    [[gnu::always_inline]] void cleanup() {
        scan([this](auto full, Zmx32u* f, Sample* s, int rows) __attribute__((always_inline)) {
            if constexpr (full)
                if (!(f[0] | f[block.flagStride]) && !runLength(f, s)) return;
            cleanupPair<0, full>(f, s, rows);
            if (rows > 2) cleanupPair<2, full>(f + block.flagStride, s, rows); // unreachable: full stripes have 4
        });
    }

private:
    struct FullStripe {
        constexpr operator bool() const { return true; }
    };
    struct LastStripe {
        constexpr operator bool() const { return false; }
    };

    // Calls column(FullStripe or LastStripe, flag word, sample, rows) for the head of each column of each
    // stripe.
    template <class Column> [[gnu::always_inline]] void scan(Column column) {
        Zmx32u* f = block.flags;
        Sample* s = block.samples;
        int rows = block.height;
        for (; rows >= 4; rows -= 4, f += 2 * block.flagStride, s += 4 * block.step)
            for (int x = 0; x < block.width; ++x) column(FullStripe{}, f + x, s + 4 * std::ptrdiff_t(x), 4);
        if (rows)
            for (int x = 0; x < block.width; ++x) column(LastStripe{}, f + x, s + 4 * std::ptrdiff_t(x), rows);
    }

    // What follows works on a pair of rows, Row and Row + 1 of the stripe, and its flag word. One test of the
    // word tells whether one of its samples can qualify. In the last stripe the second row may be missing.

    template <int Row, bool Full> [[gnu::always_inline]] void significancePair(Zmx32u* f, Sample* s, int rows) {
        Zmx32u w = *f;
        if (!(w & ~(w >> 2) & (kSigAny | kSigAny << 16))) return;
        significanceHalf<Row>(w, f, s);
        if (Full || rows > Row + 1) significanceHalf<Row + 1>(w, f, s);
        *f = w;
    }
    template <int Row> [[gnu::always_inline]] void significanceHalf(Zmx32u& w, Zmx32u* f, Sample* s) {
        constexpr int shift = Row % 2 * 16;
        if ((w >> shift & (kSelf | kSigAny)) != kSigAny) return;
        if (coder.significant(w >> shift, row<Row>(s)))
            turnSignificant<Row>(w, f, s);
        else
            w |= kVisited << shift;
    }

    template <int Row, bool Full> [[gnu::always_inline]] void refinementPair(Zmx32u* f, Sample* s, int rows) {
        const Zmx32u w = *f;
        const Zmx32u open = w & ~(w << 1) & (Full || rows > Row + 1 ? kSelf | kSelf << 16 : kSelf);
        if (!open) return;
        if (open & kSelf) coder.refine(w, row<Row>(s));
        if (open & kSelf << 16) coder.refine(w >> 16, row<Row + 1>(s));
        if (Coder::marksRefined) *f = w | open >> 7; // kSelf to kRefined
    }
    template <int Row, bool Full> [[gnu::always_inline]] void cleanupPair(Zmx32u* f, Sample* s, int rows) {
        Zmx32u w = *f;
        if (~(w | w << 1) & (kSelf | kSelf << 16)) {
            cleanupHalf<Row>(w, f, s);
            if (Full || rows > Row + 1) cleanupHalf<Row + 1>(w, f, s);
        }
        *f = w & ~(kVisited | kVisited << 16);
    }
    template <int Row> [[gnu::always_inline]] void cleanupHalf(Zmx32u& w, Zmx32u* f, Sample* s) {
        constexpr int shift = Row % 2 * 16;
        if (w >> shift & (kSelf | kVisited)) return;
        if (coder.significant(w >> shift, row<Row>(s))) turnSignificant<Row>(w, f, s);
    }

    // Run-length coding of a column without any flag. Returns false if nothing in it turns significant.
    // Otherwise marks the rows ahead of the first one that does as visited and that row as done, so that the
    // cleanup of the column, which clears the marks, goes on below it.
    [[gnu::always_inline]] bool runLength(Zmx32u* f, Sample* s) {
        const int first = coder.firstOf4(s, block.step);
        if (first > 3) return false;
        Zmx32u* pair = f + (first >> 1) * block.flagStride;
        if (first > 1) *f = kVisited | kVisited << 16;
        const Zmx32u negative = coder.sign(0, s + first * block.step);
        if (first & 1)
            *pair = kVisited | spreadOdd(pair, negative);
        else
            *pair = spreadEven(pair, negative, first ? ~0u : block.upwards);
        return true;
    }

    template <int Row> [[gnu::always_inline]] void turnSignificant(Zmx32u& w, Zmx32u* f, Sample* s) {
        const Zmx32u negative = coder.sign(w >> (Row % 2 * 16), row<Row>(s));
        w |= Row % 2 ? spreadOdd(f, negative) : spreadEven(f, negative, Row ? ~0u : block.upwards);
    }

    template <int Row> [[gnu::always_inline]] Sample* row(Sample* s) const { return s + Row * block.step; }

    // A sample has turned significant: tells the words around, and returns what the sample's own word takes.
    [[gnu::always_inline]] Zmx32u spreadEven(Zmx32u* f, Zmx32u negative, Zmx32u upwards) {
        f[1] |= pair(kSigW, kSigNW) | negative * kNegW;
        f[-1] |= pair(kSigE, kSigNE) | negative * kNegE;
        Zmx32u* above = f - block.flagStride;
        above[0] |= (pair(0, kSigS) | negative * kNegS << 16) & upwards;
        above[-1] |= pair(0, kSigSE) & upwards;
        above[1] |= pair(0, kSigSW) & upwards;
        return kSelf | kVisited | pair(0, kSigN) | negative * kNegN << 16;
    }
    [[gnu::always_inline]] Zmx32u spreadOdd(Zmx32u* f, Zmx32u negative) {
        f[1] |= pair(kSigSW, kSigW) | negative * kNegW << 16;
        f[-1] |= pair(kSigSE, kSigE) | negative * kNegE << 16;
        Zmx32u* below = f + block.flagStride;
        below[0] |= pair(kSigN, 0) | negative * kNegN;
        below[-1] |= pair(kSigNE, 0);
        below[1] |= pair(kSigNW, 0);
        return (kSelf | kVisited) << 16 | pair(kSigS, 0) | negative * kNegS;
    }
    // A significant neighbour of the even and of the odd row, 0 for none.
    static constexpr Zmx32u pair(Zmx32u even, Zmx32u odd) {
        return even | (even ? kSigAny : 0) | (odd | (odd ? kSigAny : 0)) << 16;
    }
};

} // namespace zmx
