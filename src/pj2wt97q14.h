// pj2wt97q14.h - the 9/7 lifting of 16-bit samples in 14-bit fixed point: lines, and the columns of a plane.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2wt.h"

namespace zmx::wt97::q14 {

// A line of interleaved samples, 2 or more, into its two bands; and the two bands, which serve as working memory, back
// into a line.
void forwardLine(const Zmx8u* x, Split split, Zmx8u* low, Zmx8u* high);
void inverseLine(Zmx8u* low, Zmx8u* high, Split split, Zmx8u* x);

// All columns of a plane of 2 rows or more, in place; its rows stay interleaved.
void forwardColumns(Zmx8u* plane, int step, Split split, int width);
void inverseColumns(Zmx8u* plane, int step, Split split, int width);

} // namespace zmx::wt97::q14
