// pjdecccss.cpp - decoded minimum coded units to pixels: replication, colour, level shift and saturation at once.
//
// Each row of chroma is turned into what it adds to the pixels that it covers; each row of luma under it is added, and
// the channels are packed into pixels. All of it is in 16-bit lanes, eight to a vector: rows are rows of Zmx16s, and
// pixels are put together of 16-bit halves, the lower byte first as x86 stores them.
#include "zmxj.h"

#include "pjargs.h"
#include "pjls.h"
#include "pjmcu.h"
#include "pjrows.h"

#include <cstdint>

namespace zmx {
namespace {

// A row of pixels of a unit, or of the chroma elements above them.
struct Row {
    alignas(32) Zmx16s at[16];
};

// Three or four channels of a row of pixels, 0 to 255.
struct Channels {
    Row of[4];
};

// Each of the eight elements once or twice.
template <class U> void replicate(const Row& from, Row& to) {
    if constexpr (U::shiftX == 0)
        to = from;
    else
        for (int x = 0; x < 8; ++x) to.at[2 * x] = to.at[2 * x + 1] = from.at[x];
}

// What one row of chroma adds to one channel: channel = saturate(luma + term + 128). The sum of luma and term may need
// 17 bits, so the luma is first limited to what leads to 0..255; then no lane overflows.
class Term {
    Row low, high, offset;

public:
    template <class U> void set(const Row& term) {
        Row lowest, highest, added;
        for (int x = 0; x < 8; ++x) {
            const Zmx16s t = term.at[x];
            // Beyond the limits of 32640 every luma is on the inner side of the bound.
            lowest.at[x] = Zmx16s(-128 - lesser(t, 32640));
            highest.at[x] = Zmx16s(127 - greater(t, -32640));
            added.at[x] = wrap16s(t + 128);
        }
        replicate<U>(lowest, low);
        replicate<U>(highest, high);
        replicate<U>(added, offset);
    }

    void add(const Zmx16s* luma, int left, Row& channel) const {
        for (int x = 0; x < 8; ++x) {
            const Zmx16s limited = lesser(greater(luma[x], low.at[left + x]), high.at[left + x]);
            channel.at[left + x] = wrap16s(limited + offset.at[left + x]);
        }
    }
};

// The colour formulas. The products wrap in 32 bits and are shifted right by 16 with no rounding term (the conversions
// of whole planes have one). Multiples of 65536 are taken out of the multipliers and added behind the shift, in 16 bits
// that wrap: the same for all operands, and every product is one of 16 by 16 bits.
template <class U> class Coloured {
    Term red, green, blue;

public:
    void chroma(const Zmx16s* cb, const Zmx16s* cr) {
        Row r, g, b;
        for (int x = 0; x < 8; ++x) {
            r.at[x] = wrap16s(cr[x] + (cr[x] * (91881 - 65536) >> 16));
            g.at[x] = wrap16s(((cb[x] * -22554 + cr[x] * (65536 - 46802)) >> 16) - cr[x]);
            b.at[x] = wrap16s(2 * cb[x] + (cb[x] * (116130 - 2 * 65536) >> 16));
        }
        red.template set<U>(r);
        green.template set<U>(g);
        blue.template set<U>(b);
    }
    void luma(const Zmx16s* luma, int left, Channels& row) const {
        red.add(luma, left, row.of[0]);
        green.add(luma, left, row.of[1]);
        blue.add(luma, left, row.of[2]);
    }
};

// No colour conversion: the channels are Y, Cb, Cr.
template <class U> class Plain {
    Row second, third;

    static void shifted(const Zmx16s* from, Row& to) {
        Row once;
        for (int x = 0; x < 8; ++x) once.at[x] = shiftedUp(from[x]);
        replicate<U>(once, to);
    }

public:
    void chroma(const Zmx16s* cb, const Zmx16s* cr) {
        shifted(cb, second);
        shifted(cr, third);
    }
    void luma(const Zmx16s* luma, int left, Channels& row) const {
        for (int x = 0; x < 8; ++x) {
            row.of[0].at[left + x] = shiftedUp(luma[x]);
            row.of[1].at[left + x] = second.at[left + x];
            row.of[2].at[left + x] = third.at[left + x];
        }
    }
};

// How the channels of a row become pixels.
template <int C0, int C1, int C2> struct Bytes3 {
    static constexpr int planes = 3;
    template <int Width> static void put(const Channels& row, Zmx8u* dst) {
        // Four bytes a pixel, the lowest first, then two pixels without the gap between them.
        Zmx16u halves[2 * Width];
        for (int x = 0; x < Width; ++x) {
            halves[2 * x] = littleEndian(Zmx16u(row.of[C0].at[x] | row.of[C1].at[x] << 8));
            halves[2 * x + 1] = littleEndian(Zmx16u(row.of[C2].at[x]));
        }
        std::uint64_t pairs[Width / 2];
        std::memcpy(pairs, halves, sizeof pairs);
        for (auto& pair : pairs) {
            const std::uint64_t bytes = littleEndian(pair);
            pair = littleEndian((bytes & 0xffffff) | (bytes >> 8 & 0xffffff000000));
        }
        // Each pair overwrites the two bytes too many of the one before; the last has only its six.
        for (int i = 0; i < Width / 2 - 1; ++i) std::memcpy(dst + 6 * i, pairs + i, 8);
        std::memcpy(dst + 6 * (Width / 2 - 1), pairs + Width / 2 - 1, 6);
    }
};
using ToRGB = Bytes3<0, 1, 2>;
using ToBGR = Bytes3<2, 1, 0>;
using ToYCbCr = Bytes3<0, 1, 2>;

template <int GreenBits> struct Packed {
    static constexpr int planes = 3;
    template <int Width> static void put(const Channels& row, Zmx8u* dst) {
        // The low bits of each channel are cut off.
        for (int x = 0; x < Width; ++x)
            store(dst, x,
                  Zmx16u(row.of[2].at[x] >> 3 | row.of[1].at[x] >> (8 - GreenBits) << 5 |
                         row.of[0].at[x] >> 3 << (5 + GreenBits)));
    }
};
using ToBGR555 = Packed<5>;
using ToBGR565 = Packed<6>;

struct ToCMYK {
    static constexpr int planes = 4;
    template <int Width> static void put(const Channels& row, Zmx8u* dst) {
        for (int x = 0; x < Width; ++x) {
            storeLE(dst, 2 * x, Zmx16u((255 - row.of[0].at[x]) | (255 - row.of[1].at[x]) << 8));
            const int k = row.of[3].at[x] + 128; // K alone wraps
            storeLE(dst, 2 * x + 1, Zmx16u((255 - row.of[2].at[x]) | k << 8));
        }
    }
};

// Two bytes a pixel: luma, and Cb or Cr of the pair.
struct ToYCbYCr {
    static constexpr int planes = 3;
    template <int Width> static void put(const Channels& row, Zmx8u* dst) {
        for (int x = 0; x < Width; x += 2) {
            storeLE(dst, x, Zmx16u(row.of[0].at[x] | row.of[1].at[x] << 8));
            storeLE(dst, x + 1, Zmx16u(row.of[0].at[x + 1] | row.of[2].at[x] << 8));
        }
    }
};

template <class U, class Colour, class Out> ZmxStatus unitToPixels(const Zmx16s* const* src, void* dst, int dstStep) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).planes(src, Out::planes).step(dstStep)) return bad;
    Colour colour;
    for (int cy = 0; cy < 8; ++cy) {
        colour.chroma(src[1] + 8 * cy, src[2] + 8 * cy);
        for (int y = cy << U::shiftY; y < (cy + 1) << U::shiftY; ++y) {
            Channels row;
            for (int left = 0; left < U::width; left += 8) {
                colour.luma(src[0] + U::rowAt(left / 8, y), left, row);
                if constexpr (Out::planes == 4) std::memcpy(row.of[3].at + left, src[3] + U::rowAt(left / 8, y), 16);
            }
            Out::template put<U::width>(row, rowAt(dst, dstStep, y));
        }
    }
    return zmxStsNoErr;
}

template <class U, class Out> ZmxStatus toColour(const Zmx16s* const* src, void* dst, int dstStep) {
    return unitToPixels<U, Coloured<U>, Out>(src, dst, dstStep);
}
template <class U, class Out> ZmxStatus toPlain(const Zmx16s* const* src, void* dst, int dstStep) {
    return unitToPixels<U, Plain<U>, Out>(src, dst, dstStep);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit444, ToRGB>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit422, ToRGB>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit411, ToRGB>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit444, ToBGR>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit422, ToBGR>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit411, ToBGR>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit444, ToBGR555>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit422, ToBGR555>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit411, ToBGR555>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit444, ToBGR565>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit422, ToBGR565>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit411, ToBGR565>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep) {
    return toColour<Unit444, ToCMYK>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep) {
    return toColour<Unit422, ToCMYK>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep) {
    return toColour<Unit411, ToCMYK>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiSampleUp444LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit444, ToYCbCr>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiSampleUp422LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit422, ToYCbCr>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiSampleUp411LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit411, ToYCbCr>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiJoin422LS_MCU_16s8u_P3C2R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit422, ToYCbYCr>(pSrcMCU, pDst, dstStep);
}
