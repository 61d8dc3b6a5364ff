// pj2wt97ext.h - the 9/7 lifting of 32-bit samples in extended precision: lines, and the columns of a plane.
//
// The bytes are those of a 64-bit significand from the first step to the last, and one truncation toward zero at the
// output.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2wt.h"

namespace zmx::wt97::ext {

// A line of interleaved samples, 2 or more, into its two bands; and the two bands back into a line.
void forwardLine(const Zmx8u* x, Split split, Zmx8u* low, Zmx8u* high);
void inverseLine(Zmx8u* low, Zmx8u* high, Split split, Zmx8u* x);

// All columns of a plane of 2 rows or more, in place; its rows stay interleaved.
void forwardColumns(Zmx8u* plane, int step, Split split, int width);
void inverseColumns(Zmx8u* plane, int step, Split split, int width);

} // namespace zmx::wt97::ext
