// damage.h - files damaged at random.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/support/rng.h"

#include <cstdint>
#include <vector>

// Up to `most` bytes become 0xFF, are lost, are inserted or have another value.
inline std::vector<std::uint8_t> damaged(std::vector<std::uint8_t> file, Rng& rng, int most) {
    for (auto n = rng.range(1, most); n > 0; --n) {
        const auto at = file.begin() + std::ptrdiff_t(rng.range(0, std::int64_t(file.size()) - 1));
        const auto value = std::uint8_t(rng.range(0, 255));
        switch (rng.range(0, 3)) {
        case 0:
            *at = 0xFF;
            break;
        case 1:
            file.erase(at);
            break;
        case 2:
            file.insert(at, value);
            break;
        default:
            *at = value;
        }
    }
    return file;
}
