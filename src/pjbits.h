// pjbits.h - the bits of a number as another type.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

namespace zmx {

// What std::bit_cast does, which the standard library of Debian 12's emscripten lacks. It is made of the same builtin.
template <class To, class From> constexpr To bitCast(From v) {
    static_assert(sizeof(To) == sizeof(From));
    return __builtin_bit_cast(To, v);
}

} // namespace zmx
