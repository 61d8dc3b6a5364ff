// pj2wt97sys.h - the number systems of the 9/7 kernels: 16 fractional bits on 16-bit samples, saturating, and
// on 32-bit samples, wrapping; and 32-bit floats.
//
// Each has T, the type of a sample in a row, and Aside, the type of a value that never reaches a row. Results
// are of type Aside; storing them in a row narrows them. For the integers the two are one type, every step
// being narrowed at once; a float keeps a 64-bit significand until it is stored.
#pragma once

#include "pj2wt97.h"
#include "pjround.h"
#include "pjrows.h"

#include <cstdint>
#include <type_traits>

namespace zmx {

template <class Sample> struct Wt97Q16System {
    using T = Sample;
    using Aside = Sample;
    using C = Wt97Q16;

    // A result ahead of narrowing: that of 16-bit samples fits 32 bits.
    using Wide = std::conditional_t<sizeof(T) == 2, Zmx32s, std::int64_t>;

    static constexpr T narrow(Wide v) {
        if constexpr (sizeof(T) == 2)
            return T(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
        else
            return T(v); // the low 32 bits
    }
    // The sum of two samples is formed in 32 bits, where it wraps for 32-bit samples.
    static constexpr Zmx32s sum(T a, T b) { return wrapAdd<Zmx32s>(a, b); }

    // (c0 v + c1 s + 32768) >> 16 with exact products, for a sample v and a sum s. With 16-bit samples the
    // whole parts of the weights stay out of the products; what is left of them keeps the products within 32
    // bits, which the compiler vectorises.
    static constexpr Wide weigh(Zmx32s c0, T v, Zmx32s c1, Zmx32s s) {
        if constexpr (sizeof(T) == 2) {
            const Zmx32s w0 = whole(c0), w1 = whole(c1);
            return w0 * v + w1 * s + (((c0 - 65536 * w0) * v + (c1 - 65536 * w1) * s + 32768) >> 16);
        } else {
            return (std::int64_t(c0) * v + std::int64_t(c1) * s + 32768) >> 16;
        }
    }
    static constexpr Zmx32s whole(Zmx32s c) { return (c + 32768) >> 16; }
    static constexpr bool fits(Zmx32s c0, Zmx32s c1) {
        const auto part = [](Zmx32s c) { return c < 65536 * whole(c) ? 65536 * whole(c) - c : c - 65536 * whole(c); };
        return 32768 + std::int64_t(32768) * part(c0) + std::int64_t(65536) * part(c1) < std::int64_t(1) << 31;
    }
    static_assert(fits(0, C::alpha) && fits(0, C::beta) && fits(0, C::gamma) && fits(0, C::delta) && fits(C::k, 0));
    static_assert(fits(C::oneOverK, C::deltaOverK) && fits(C::k, C::deltaOverK) && fits(C::oneOverK, C::gamma));

    static constexpr T lift(T centre, Zmx32s c, T a, T b) { return narrow(centre + weigh(0, 0, c, sum(a, b))); }
    static constexpr T liftBack(T centre, Zmx32s c, T a, T b) { return narrow(centre - weigh(0, 0, c, sum(a, b))); }
    static constexpr T scale(Zmx32s c, T v) { return narrow(weigh(c, v, 0, 0)); }

    // The last forward step and the scale with one rounding in all, and in two stages.
    static constexpr T low(T b, T g0, T g1) { return narrow(weigh(C::oneOverK, b, C::deltaOverK, sum(g0, g1))); }
    static constexpr T lowInStages(T b, T g0, T g1) { return scale(C::oneOverK, lift(b, C::delta, g0, g1)); }

    // The first two inverse steps, each with the scale and one rounding.
    static constexpr T backB(T low, T h0, T h1) { return narrow(weigh(C::k, low, -C::deltaOverK, sum(h0, h1))); }
    static constexpr T backA(T high, T b0, T b1) { return narrow(weigh(C::oneOverK, high, -C::gamma, sum(b0, b1))); }
};

struct Wt97FloatSystem {
    using T = Zmx32f;
    using Aside = Extended;
    using C = Wt97Float;

    static Aside lift(Aside centre, Zmx32f c, Aside a, Aside b) { return centre + c * (a + b); }
    static Aside liftBack(Aside centre, Zmx32f c, Aside a, Aside b) { return centre - c * (a + b); }
    static Aside scale(Zmx32f c, Aside v) { return c * v; }

    static Aside low(Aside b, Aside g0, Aside g1) { return lift(b, C::delta, g0, g1) * C::oneOverK; }
    // D is stored in its row before it is scaled.
    static Aside lowInStages(Aside b, Aside g0, Aside g1) {
        return zmx::rounded(Zmx32f(lift(b, C::delta, g0, g1))) * Aside(C::oneOverK);
    }

    static Aside backB(Aside low, Aside h0, Aside h1) { return C::k * low - C::deltaOverK * (h0 + h1); }
    static Aside backA(Aside high, Aside b0, Aside b1) { return C::oneOverK * high - C::gamma * (b0 + b1); }
};

} // namespace zmx
