// bench_photograph.h - the photograph that benchmarks read.
//
// ZMX_BENCH_PHOTO names it, a JPEG file. Without it each benchmark takes one of the package mate-backgrounds, by the
// name under which docs/performance.md gives its figures.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

#include <vector>

struct Photograph {
    int width = 0, height = 0, channels = 0;
    std::vector<Zmx8u> samples; // pixel by pixel, row by row

    bool empty() const { return samples.empty(); }
    // The pixels around the middle; empty where there are not so many.
    Photograph middle(int columns, int rows) const;
};

enum class Channels { Luma = 1, Rgb = 3 };

// A photograph as libjpeg decodes it; empty when there is no such file, or no libjpeg.
Photograph readPhotograph(const char* name, Channels channels);
