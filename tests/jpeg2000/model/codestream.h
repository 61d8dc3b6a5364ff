// codestream.h - takes a simple JPEG2000 codestream apart into its code blocks (ISO/IEC 15444-1 Annexes A and
// B).
//
// One tile of one part, one component, one layer, one precinct to a resolution, reversible, no region of
// interest: what a lossless encoder makes of a small grey picture.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace model {

struct StreamBlock {
    int x, y, width, height; // in its subband
    int planes = 0, passes = 0;
    std::vector<int> lengths; // of the codeword segments
    std::vector<std::uint8_t> bytes;
};

struct StreamBand {
    int orientation; // 0 LL, 1 LH, 2 HL, 3 HH, the library's numbers
    int width, height;
    std::vector<StreamBlock> blocks;
};

struct Codestream {
    int width = 0, height = 0, levels = 0;
    unsigned mode = 0; // the standard's code-block style byte
    std::vector<StreamBand> bands;

    // Throws std::runtime_error for anything that it does not know.
    explicit Codestream(const std::vector<std::uint8_t>& file);
};

struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint8_t> samples;
};

std::vector<std::uint8_t> readFile(const std::string& name); // throws when it cannot
Picture readPgm(const std::string& name);

} // namespace model
