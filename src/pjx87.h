// pjx87.h - the type of extended precision: that of the x87 unit where there is one, SoftExtended elsewhere. The bytes
// are the same.
//
// The unit is the faster one by far, but its precision and its rounding are the state of the calling thread, and a
// caller may have asked for 53 or 24 bits. So what runs on it runs inside inFullPrecision().
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjextended.h"

#include <cfenv>
#include <cfloat>

namespace zmx {

// ZMX_SOFT_EXTENDED does without the unit as far as the compiler does: for tests. Other processors with a 64-bit
// significand have other NaNs.
#if (defined __i386__ || defined __x86_64__) && LDBL_MANT_DIG == 64
#define ZMX_HAS_X87 1
#else
#define ZMX_HAS_X87 0
#endif
#if ZMX_HAS_X87 && !defined ZMX_SOFT_EXTENDED
using Extended = long double;
inline constexpr bool kExtendedOnX87 = true;
#else
using Extended = SoftExtended;
inline constexpr bool kExtendedOnX87 = false;
#endif

// 32-bit x86 without SSE computes doubles there, too.
inline constexpr bool kDoubleOnX87 = ZMX_HAS_X87 && FLT_EVAL_METHOD != 0;

#if ZMX_HAS_X87
class OwnPrecision {
    // Whether the unit has a 64-bit significand and rounds to nearest: three quarters of the last place of 1 go up, on
    // either side of zero.
    static bool isOwn() {
        const volatile long double one = 1, rest = LDBL_EPSILON * 0.75L;
        return one + rest == 1 + LDBL_EPSILON && -one - rest == -1 - LDBL_EPSILON;
    }
    const bool asItIs = isOwn();
    std::fenv_t callers;

public:
    OwnPrecision() {
        if (asItIs) return;
        std::fegetenv(&callers);
#ifdef FE_PC64_ENV
        std::fesetenv(FE_PC64_ENV); // the initial state is one of 53 bits on Windows
#else
        std::fesetenv(FE_DFL_ENV);
#endif
    }
    ~OwnPrecision() {
        if (!asItIs) std::fesetenv(&callers);
    }
    OwnPrecision(const OwnPrecision&) = delete;
    OwnPrecision& operator=(const OwnPrecision&) = delete;
};
#endif

// The result of body(), with the unit in its initial state if `onX87` tells that the body uses it. The caller's state
// is put back. A look at the unit is cheap, and its state is changed only where it is another one.
template <bool onX87, class Body> auto inFullPrecision(Body body) {
#if ZMX_HAS_X87
    if constexpr (onX87) {
        const OwnPrecision own;
        return body();
    }
#endif
    return body();
}

} // namespace zmx
