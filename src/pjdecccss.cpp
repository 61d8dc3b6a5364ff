// pjdecccss.cpp - decoded minimum coded units to pixels: replication, colour, level shift and saturation at once.
//
// Each row of chroma is turned into what it adds to the pixels that it covers; each row of luma under it is added, and
// a layout class puts the channels together to pixels. All of it is in 16-bit lanes, eight to a vector.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjlayouts.h"
#include "pjls.h"
#include "pjmcu.h"

namespace zmx {
namespace {

// A row of pixels of a unit, or of the chroma elements above them.
struct Row {
    alignas(32) Zmx16s at[layout::kUnitRow];
};

// Three or four channels of a row of pixels, 0 to 255.
template <int N> using Channels = layout::Run<Zmx16s, N, layout::kUnitRow>;

// Each of the eight elements once or twice.
template <class U> void replicate(const Row& from, Row& to) {
    if constexpr (U::shiftX == 0)
        to = from;
    else
        for (int x = 0; x < 8; ++x) to.at[2 * x] = to.at[2 * x + 1] = from.at[x];
}

// What one row of chroma adds to one channel: channel = saturate(luma + term + 128), or 255 minus that for an ink. The
// sum of luma and term may need 17 bits, so the luma is first limited to what leads to 0..255; then no lane overflows.
template <bool Inverted> class Term {
    Row low, high, offset;

public:
    template <class U> void set(const Row& term) {
        Row lowest, highest, added;
        for (int x = 0; x < 8; ++x) {
            const Zmx16s t = term.at[x];
            // Beyond the limits of 32640 every luma is on the inner side of the bound.
            lowest.at[x] = Zmx16s(-128 - lesser(t, 32640));
            highest.at[x] = Zmx16s(127 - greater(t, -32640));
            added.at[x] = wrap16s(Inverted ? 127 - t : t + 128);
        }
        replicate<U>(lowest, low);
        replicate<U>(highest, high);
        replicate<U>(added, offset);
    }

    void add(const Zmx16s* luma, int left, Zmx16s* channel) const {
        for (int x = 0; x < 8; ++x) {
            const Zmx16s limited = lesser(greater(luma[x], low.at[left + x]), high.at[left + x]);
            channel[left + x] = wrap16s(Inverted ? offset.at[left + x] - limited : offset.at[left + x] + limited);
        }
    }
};

// The colour formulas. The products wrap in 32 bits and are shifted right by 16 with no rounding term (the conversions
// of whole planes have one). Multiples of 65536 are taken out of the multipliers and added behind the shift, in 16 bits
// that wrap: the same for all operands, and every product is one of 16 by 16 bits.
template <class U, bool Inverted> class Coloured {
    Term<Inverted> red, green, blue;

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
    template <int N> void luma(const Zmx16s* luma, int left, Channels<N>& row) const {
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
    template <int N> void luma(const Zmx16s* luma, int left, Channels<N>& row) const {
        for (int x = 0; x < 8; ++x) {
            row.of[0][left + x] = shiftedUp(luma[x]);
            row.of[1][left + x] = second.at[left + x];
            row.of[2][left + x] = third.at[left + x];
        }
    }
};

template <class U, class Colour, class Out> ZmxStatus unitToPixels(const Zmx16s* const* src, void* dst, int dstStep) {
    constexpr int planes = Out::kChannels;
    if (ZmxStatus bad = Args().ptr(src, dst).planes(src, planes).step(dstStep)) return bad;
    Colour colour;
    for (int cy = 0; cy < 8; ++cy) {
        colour.chroma(src[1] + 8 * cy, src[2] + 8 * cy);
        for (int y = cy << U::shiftY; y < (cy + 1) << U::shiftY; ++y) {
            Channels<planes> row;
            for (int left = 0; left < U::width; left += 8) {
                colour.luma(src[0] + U::rowAt(left / 8, y), left, row);
                if constexpr (planes == 4) {
                    const Zmx16s* const key = src[3] + U::rowAt(left / 8, y);
                    for (int x = 0; x < 8; ++x) row.of[3][left + x] = Zmx16s((key[x] + 128) & 255); // K alone wraps
                }
            }
            Out::put(layout::Rows<const Zmx16s, planes>(row), rowAt(dst, dstStep, y), U::width);
        }
    }
    return zmxStsNoErr;
}

template <class U, class Out> ZmxStatus toColour(const Zmx16s* const* src, void* dst, int dstStep) {
    return unitToPixels<U, Coloured<U, Out::kChannels == 4>, Out>(src, dst, dstStep);
}
template <class U, class Out> ZmxStatus toPlain(const Zmx16s* const* src, void* dst, int dstStep) {
    return unitToPixels<U, Plain<U>, Out>(src, dst, dstStep);
}

} // namespace
} // namespace zmx

using namespace zmx;

// Three bytes a pixel: R, G, B, then the same turned round.
ZmxStatus zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit444, layout::RGB>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit422, layout::RGB>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit411, layout::RGB>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit444, layout::BGR>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit422, layout::BGR>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toColour<Unit411, layout::BGR>(pSrcMCU, pDst, dstStep);
}

// Packed pixels, blue in the low bits: 5, 5 and 5 bits, then 5, 6 and 5.
ZmxStatus zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit444, layout::BGR555>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit422, layout::BGR555>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit411, layout::BGR555>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit444, layout::BGR565>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit422, layout::BGR565>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep) {
    return toColour<Unit411, layout::BGR565>(pSrcMCU, pDst, dstStep);
}

// Four bytes a pixel; K passes with no more than its level shift.
ZmxStatus zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep) {
    return toColour<Unit444, layout::CMYK>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep) {
    return toColour<Unit422, layout::CMYK>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep) {
    return toColour<Unit411, layout::CMYK>(pSrcMCU, pDst, dstStep);
}

// No colour conversion: Y, Cb and Cr in three bytes a pixel, or in pairs.
ZmxStatus zmxiSampleUp444LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit444, layout::YCbCr>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiSampleUp422LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit422, layout::YCbCr>(pSrcMCU, pDst, dstStep);
}
ZmxStatus zmxiSampleUp411LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit411, layout::YCbCr>(pSrcMCU, pDst, dstStep);
}

ZmxStatus zmxiJoin422LS_MCU_16s8u_P3C2R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep) {
    return toPlain<Unit422, layout::YCbYCr>(pSrcMCU, pDst, dstStep);
}
