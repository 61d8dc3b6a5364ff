// extremes.h - what the fields of a state may hold when something else has written to it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <climits>
#include <cstring>
#include <vector>

// The ends of the range, the numbers around the bounds that the coders keep, and shifts that leave a word.
inline constexpr int kExtremes[] = {
    INT_MIN, INT_MIN + 1, -65536, -1025, -64,      -8,          -1,          0,           1,      7,     8,     16,
    24,      25,          31,     32,    33,       46,          47,          63,          64,     109,   110,   111,
    255,     256,         937,    938,   961,      962,         1023,        1024,        1025,   32766, 32767, 32768,
    65534,   65535,       65536,  70000, 0x7FFFFF, INT_MAX / 4, INT_MAX / 2, INT_MAX - 1, INT_MAX};

// Bytes flush with a guard page or anywhere else, with one 32-bit field of them replaced; the field need not be aligned.
inline void setField(void* block, std::size_t offset, int value) {
    std::memcpy(static_cast<unsigned char*>(block) + offset, &value, sizeof value);
}
