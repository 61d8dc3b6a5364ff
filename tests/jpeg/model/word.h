// word.h - a signed 32-bit number that wraps, so that a model's formulas can be written as they are published.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstdint>

namespace model {

struct Word {
    std::uint32_t bits;

    Word(std::int32_t v) : bits(std::uint32_t(v)) {}
    std::int32_t value() const { return std::int32_t(bits); }
    std::int16_t low16() const { return std::int16_t(bits & 0xFFFF); } // the low 16 bits, read with their sign
};

inline Word operator+(Word a, Word b) { return Word(std::int32_t(a.bits + b.bits)); }
inline Word operator-(Word a, Word b) { return Word(std::int32_t(a.bits - b.bits)); }
inline Word operator*(Word a, Word b) { return Word(std::int32_t(a.bits * b.bits)); }
inline Word operator<<(Word a, int n) { return Word(std::int32_t(a.bits << n)); }
inline Word operator>>(Word a, int n) { return Word(a.value() >> n); } // arithmetic

} // namespace model
