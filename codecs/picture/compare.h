// compare.h - how two pictures of one shape differ.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"

namespace codecs {

// Over all of their samples.
struct Difference {
    double psnr;   // peak signal-to-noise ratio in dB; infinite when they are equal
    int max;       // the largest difference of two samples
    double within; // the share of samples that differ by `level` at the most
};

// An Error where the pictures have other sizes, channels or depths.
Difference compare(RowSource& a, RowSource& b, int level);
Difference compare(const Picture& a, const Picture& b, int level);

} // namespace codecs
