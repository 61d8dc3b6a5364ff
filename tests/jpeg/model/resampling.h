// resampling.h - plain models of chroma resampling by two, a sample at a time from the formulas.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

namespace model {

// A plane whose samples can be read outside it where they are in memory.
struct Plane {
    const Zmx8u* samples;
    int step;
    int at(int x, int y) const { return samples[static_cast<long>(step) * y + x]; }
};

// The rectangle forms.
int upH2V1(Plane s, int x, int y);
int upH2V2(Plane s, int x, int y);
int downH2V1(Plane s, int x, int y);
int downH2V2(Plane s, int x, int y);

// The row forms. A width of 1 gives four samples upward, an odd width one more downward.
void upRowH2V1(const Zmx8u* s, int width, Zmx8u* d);
void upRowH2V2(const Zmx8u* nearRow, const Zmx8u* farRow, int width, Zmx8u* d);
void downRowH2V1(const Zmx8u* s, int width, Zmx8u* d);
void downRowH2V2(const Zmx8u* s1, const Zmx8u* s2, int width, Zmx8u* d);

} // namespace model
