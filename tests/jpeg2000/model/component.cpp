// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/component.h"

#include "tests/jpeg2000/model/extended.h"

#include <bit>
#include <cstdint>

namespace model {

namespace {

// 32-bit sums and products wrap.
Zmx32s low32(std::int64_t v) { return Zmx32s(Zmx32u(std::uint64_t(v))); }
Zmx32s times(int c, Zmx32s v) { return low32(std::int64_t(c) * v); }
Zmx32s sum(Zmx32s a, Zmx32s b) { return low32(std::int64_t(a) + b); }
Zmx32s scaled(Zmx32s s) { return sum(s, 8192) >> 14; }

Extended constant(Zmx32u bits) { return std::bit_cast<float>(bits); }

} // namespace

template <class T> Pixel<T> rctForward(Pixel<T> p) {
    const Zmx32s r = p[0], g = p[1], b = p[2];
    return {T(sum(sum(r, times(2, g)), b) >> 2), T(low32(std::int64_t(b) - g)), T(low32(std::int64_t(r) - g))};
}

template <class T> Pixel<T> rctInverse(Pixel<T> p) {
    const Zmx32s y = p[0], d1 = p[1], d2 = p[2];
    const Zmx32s g = low32(std::int64_t(y) - (sum(d1, d2) >> 2));
    return {T(sum(d2, g)), T(g), T(sum(d1, g))};
}

template <class T> Pixel<T> ictForward(Pixel<T> p) {
    const Zmx32s r = p[0], g = p[1], b = p[2];
    return {T(scaled(sum(sum(times(4899, r), times(9617, g)), times(1868, b)))),
            T(scaled(sum(sum(times(-2765, r), times(-5427, g)), times(8192, b)))),
            T(scaled(sum(sum(times(8192, r), times(-6860, g)), times(-1332, b))))};
}

template <class T> Pixel<T> ictInverse(Pixel<T> p) {
    const Zmx32s y = p[0], cb = p[1], cr = p[2];
    return {T(sum(y, scaled(times(22970, cr)))), T(sum(y, scaled(sum(times(-5638, cb), times(-11700, cr))))),
            T(sum(y, scaled(times(29032, cb))))};
}

template <> Pixel<Zmx32f> ictForward(Pixel<Zmx32f> p) {
    const Extended r = p[0], g = p[1], b = p[2];
    return {Zmx32f(r * constant(0x3E991687) + g * constant(0x3F1645A2) + b * constant(0x3DE978D5)),
            Zmx32f(r * constant(0xBE2CCCCD) - g * constant(0x3EA99AE9) + b * constant(0x3F000000)),
            Zmx32f(r * constant(0x3F000000) - g * constant(0x3ED65E89) - b * constant(0x3DA685DB))};
}

template <> Pixel<Zmx32f> ictInverse(Pixel<Zmx32f> p) {
    const Extended y = p[0], cb = p[1], cr = p[2];
    return {Zmx32f(cr * constant(0x3FB374BC) + y), Zmx32f((y - cb * constant(0x3EB031CF)) - cr * constant(0x3F36D1E1)),
            Zmx32f(cb * constant(0x3FE2D0E5) + y)};
}

template Pixel<Zmx16s> rctForward(Pixel<Zmx16s>);
template Pixel<Zmx32s> rctForward(Pixel<Zmx32s>);
template Pixel<Zmx16s> rctInverse(Pixel<Zmx16s>);
template Pixel<Zmx32s> rctInverse(Pixel<Zmx32s>);
template Pixel<Zmx16s> ictForward(Pixel<Zmx16s>);
template Pixel<Zmx32s> ictForward(Pixel<Zmx32s>);
template Pixel<Zmx16s> ictInverse(Pixel<Zmx16s>);
template Pixel<Zmx32s> ictInverse(Pixel<Zmx32s>);

} // namespace model
