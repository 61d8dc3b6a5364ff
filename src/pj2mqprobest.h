// pj2mqprobest.h - the probability estimation of the MQ coder (ISO/IEC 15444-1 C.2.5) for decoder and
// encoder: the state table, the 19 contexts with their initial states, and the form in which the coders hold
// contexts at work.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjtable.h"
#include "zmxj.h"

namespace zmx {
namespace mq {

// A row of the state table: the LPS probability, the next row after an MPS and after an LPS, and whether the
// sense of the MPS flips on an LPS.
struct Estimate {
    Zmx32u qe, nmps, nlps, flip;
};

} // namespace mq

// ISO/IEC 15444-1 Table C.2.
inline constexpr mq::Estimate owniEstimator_JPEG2K[47] = {
    {0x5601, 1, 1, 1},   {0x3401, 2, 6, 0},   {0x1801, 3, 9, 0},   {0x0AC1, 4, 12, 0},  // 0
    {0x0521, 5, 29, 0},  {0x0221, 38, 33, 0}, {0x5601, 7, 6, 1},   {0x5401, 8, 14, 0},  // 4
    {0x4801, 9, 14, 0},  {0x3801, 10, 14, 0}, {0x3001, 11, 17, 0}, {0x2401, 12, 18, 0}, // 8
    {0x1C01, 13, 20, 0}, {0x1601, 29, 21, 0}, {0x5601, 15, 14, 1}, {0x5401, 16, 14, 0}, // 12
    {0x5101, 17, 15, 0}, {0x4801, 18, 16, 0}, {0x3801, 19, 17, 0}, {0x3401, 20, 18, 0}, // 16
    {0x3001, 21, 19, 0}, {0x2801, 22, 19, 0}, {0x2401, 23, 20, 0}, {0x2201, 24, 21, 0}, // 20
    {0x1C01, 25, 22, 0}, {0x1801, 26, 23, 0}, {0x1601, 27, 24, 0}, {0x1401, 28, 25, 0}, // 24
    {0x1201, 29, 26, 0}, {0x1101, 30, 27, 0}, {0x0AC1, 31, 28, 0}, {0x09C1, 32, 29, 0}, // 28
    {0x08A1, 33, 30, 0}, {0x0521, 34, 31, 0}, {0x0441, 35, 32, 0}, {0x02A1, 36, 33, 0}, // 32
    {0x0221, 37, 34, 0}, {0x0141, 38, 35, 0}, {0x0111, 39, 36, 0}, {0x0085, 40, 37, 0}, // 36
    {0x0049, 41, 38, 0}, {0x0025, 42, 39, 0}, {0x0015, 43, 40, 0}, {0x0009, 44, 41, 0}, // 40
    {0x0005, 45, 42, 0}, {0x0001, 45, 43, 0}, {0x5601, 46, 46, 0},                      // 44
};

inline constexpr Zmx32u kLastRow = 46;

// Context numbers; this library's own, 2 above the labels of the standard where those have numbers.
inline constexpr int kContexts = 19;
inline constexpr Zmx32u kUniformContext = 0;    // the run-length pair and the segmentation symbol
inline constexpr Zmx32u kRunLengthContext = 1;  // the run-length decision of a cleanup pass
inline constexpr Zmx32u kZeroCodingContext = 2; // 2 to 10: zero coding; 2: no significant neighbour
inline constexpr Zmx32u kSignContext = 11;      // 11 to 15: sign coding
inline constexpr Zmx32u kRefineContext = 16;    // 16, 17: first refinement without and with a significant neighbour
inline constexpr Zmx32u kLaterRefinementContext = 18;

// ISO/IEC 15444-1 Table D.7.
inline constexpr Zmx32u owniInitialCtxIndexes_JPEG2K[kContexts] = {46, 3, 4};
inline constexpr Zmx32u owniInitialMPS_JPEG2K[kContexts] = {};

namespace mq {

// A context at work is one word, so that a decision loads once: Qe in the upper half, and below it twice the
// row of the state table plus the MPS.
using Context = Zmx32u;

constexpr Context contextOf(Zmx32u row, Zmx32u mps) { return owniEstimator_JPEG2K[row].qe << 16 | row << 1 | mps; }
constexpr Zmx32u qeOf(Context c) { return c & 0xFFFF0000; } // in the upper half
constexpr Zmx32u rowAndMps(Context c) { return c & 0xFF; }
constexpr Zmx32u mpsOf(Context c) { return c & 1; }

// What becomes of a context: entry 0 after an MPS, entry 1 after an LPS.
struct Transition {
    Context after[2];
};
// By twice the row plus the MPS.
inline constexpr auto transitions = tableOf<2 * 47>([](int i) {
    const Estimate& e = owniEstimator_JPEG2K[i >> 1];
    const Zmx32u mps = i & 1;
    return Transition{contextOf(e.nmps, mps), contextOf(e.nlps, mps ^ e.flip)};
});
static_assert(transitions[0].after[0] == (0x3401u << 16 | 2) && transitions[93].after[0] == contextOf(46, 1));

constexpr Context nextOf(Context c, Zmx32u isLps) { return transitions[rowAndMps(c)].after[isLps]; }

// The contexts of a coder for the length of one call. A local of its own beside the coder's registers, which
// then stay in the processor's: an array indexed at run time would hold a common object in memory.
struct Contexts {
    Context at[kContexts];

    Contexts(const Zmx32u* rows, const Zmx32u* mps) {
        for (int i = 0; i < kContexts; ++i) at[i] = contextOf(rows[i], mps[i]);
    }
    void save(Zmx32u* rows, Zmx32u* mps) const {
        for (int i = 0; i < kContexts; ++i) {
            rows[i] = rowAndMps(at[i]) >> 1;
            mps[i] = mpsOf(at[i]);
        }
    }
};

// Whether they are contexts: others would lead out of the tables. Coders leave none but these; something else may
// have written to a state.
inline bool areContexts(const Zmx32u* rows, const Zmx32u* mps) {
    bool others = false;
    for (int i = 0; i < kContexts; ++i) others |= (rows[i] > kLastRow) | (mps[i] > 1);
    return !others;
}

inline void setInitialContexts(Zmx32u* rows, Zmx32u* mps) {
    for (int i = 0; i < kContexts; ++i) {
        rows[i] = owniInitialCtxIndexes_JPEG2K[i];
        mps[i] = owniInitialMPS_JPEG2K[i];
    }
}

} // namespace mq
} // namespace zmx
