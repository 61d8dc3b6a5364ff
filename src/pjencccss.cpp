// pjencccss.cpp - pixels to minimum coded units: colour, chroma reduction, level shift in one pass.
//
// The pixels of a unit are split into channels. The luma is formed pixel by pixel; the channels are summed over the
// pixels that share a chroma sample, and the chroma is formed of the sums. All are plain loops over the unit in 16-bit
// lanes; a layout class takes the pixels apart.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjlayouts.h"
#include "pjmcu.h"

namespace zmx {
namespace {

// Channels in 16-bit lanes: of bytes the products would be formed in 32 bits.
template <int N> using Run = layout::Run<Zmx16s, N>;

// Bytes of three are gathered first: one row of a unit is too short for vectors. Inlined, so that the rows of the run are
// known and not pointers in memory: that takes 0.93 of the time.
template <class U, class Layout>
[[gnu::always_inline]] inline void getUnit(const void* src, int srcStep, Run<Layout::kChannels>& run) {
    static_assert(U::pixels <= layout::kRun);
    const layout::Rows<Zmx16s, Layout::kChannels> rows(run);
    if constexpr (Layout::kBytes == 3) {
        constexpr int bytes = Layout::kBytes * U::width;
        alignas(32) Zmx8u pixels[bytes * U::height];
        for (int y = 0; y < U::height; ++y) std::memcpy(pixels + bytes * y, rowAt(src, srcStep, y), bytes);
        Layout::get(pixels, rows, U::pixels);
    } else {
        for (int y = 0; y < U::height; ++y) Layout::get(rowAt(src, srcStep, y), rows.from(U::width * y), U::width);
    }
}

// The colour formulas; the chroma takes sums over two to the power of N pixels. No rounding term: the floor is taken in
// all three lines (the conversions of whole planes round). The chroma has no offset, for the level shift is in.
struct Coloured {
    static Zmx16s luma(Zmx16s r, Zmx16s g, Zmx16s b) {
        return Zmx16s(((19595u * Zmx16u(r) + 38470u * Zmx16u(g) + 7471u * Zmx16u(b)) >> 16) - 128);
    }
    template <int N> static Zmx16s cb(Zmx16s r, Zmx16s g, Zmx16s b) {
        return Zmx16s((-11059 * r - 21709 * g + 32768 * b) >> (16 + N));
    }
    template <int N> static Zmx16s cr(Zmx16s r, Zmx16s g, Zmx16s b) {
        return Zmx16s((32768 * r - 27439 * g - 5329 * b) >> (16 + N));
    }
};

// The same of what each ink leaves, 255 minus the sample: the weights of the luma add up to 65536, those of the chroma
// to 0, so that only signs change.
struct Inverted {
    static Zmx16s luma(Zmx16s c, Zmx16s m, Zmx16s y) {
        return Zmx16s(((255u * 65536u - (19595u * Zmx16u(c) + 38470u * Zmx16u(m) + 7471u * Zmx16u(y))) >> 16) - 128);
    }
    template <int N> static Zmx16s cb(Zmx16s c, Zmx16s m, Zmx16s y) {
        return Zmx16s((11059 * c + 21709 * m - 32768 * y) >> (16 + N));
    }
    template <int N> static Zmx16s cr(Zmx16s c, Zmx16s m, Zmx16s y) {
        return Zmx16s((-32768 * c + 27439 * m + 5329 * y) >> (16 + N));
    }
};

// No colour conversion: the floor of the mean.
struct Plain {
    static Zmx16s luma(Zmx16s y, Zmx16s, Zmx16s) { return Zmx16s(y - 128); }
    template <int N> static Zmx16s cb(Zmx16s, Zmx16s cb, Zmx16s) { return Zmx16s((cb - (128 << N)) >> N); }
    template <int N> static Zmx16s cr(Zmx16s, Zmx16s, Zmx16s cr) { return Zmx16s((cr - (128 << N)) >> N); }
};

// The 64 sums of a channel over the pixels that share a chroma sample: pairs of rows first, then pairs in the row.
template <class U> const Zmx16s* sumsOf(const Zmx16s* channel, Zmx16s* sums) {
    if constexpr (U::pixels == 64) return channel;
    Zmx16s rows[8 * U::width];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < U::width; ++x) {
            const Zmx16s* const top = channel + ((U::width * y) << U::shiftY) + x;
            rows[U::width * y + x] = U::shiftY ? Zmx16s(top[0] + top[U::width]) : top[0];
        }
    for (int i = 0; i < 64; ++i) sums[i] = Zmx16s(rows[2 * i] + rows[2 * i + 1]);
    return sums;
}

template <class U, class In, class Colour> ZmxStatus pixelsToUnit(const void* src, int srcStep, Zmx16s* const* dst) {
    constexpr int planes = In::kChannels;
    // The step ahead of the planes: required here, the decoding side has it behind them.
    if (ZmxStatus bad = Args().ptr(src, dst).step(srcStep).planes(dst, planes)) return bad;
    Run<planes> from;
    getUnit<U, In>(src, srcStep, from);

    for (int y = 0; y < U::height; ++y)
        for (int h = 0; h < U::width / 8; ++h) {
            const int left = U::width * y + 8 * h;
            Zmx16s* const luma = dst[0] + U::rowAt(h, y);
            for (int x = 0; x < 8; ++x)
                luma[x] = Colour::luma(from.of[0][left + x], from.of[1][left + x], from.of[2][left + x]);
            if constexpr (planes == 4) {
                Zmx16s* const key = dst[3] + U::rowAt(h, y);
                for (int x = 0; x < 8; ++x) key[x] = Zmx16s(from.of[3][left + x] - 128);
            }
        }

    Zmx16s held[3][64];
    const Zmx16s* sums[3];
    for (int c = 0; c < 3; ++c) sums[c] = sumsOf<U>(from.of[c], held[c]);
    constexpr int summed = U::shiftX + U::shiftY;
    for (int i = 0; i < 64; ++i) dst[1][i] = Colour::template cb<summed>(sums[0][i], sums[1][i], sums[2][i]);
    for (int i = 0; i < 64; ++i) dst[2][i] = Colour::template cr<summed>(sums[0][i], sums[1][i], sums[2][i]);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

using namespace zmx;

// Three bytes a pixel: R, G, B, then the same turned round.
ZmxStatus zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, layout::RGB, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, layout::RGB, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, layout::RGB, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, layout::BGR, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, layout::BGR, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, layout::BGR, Coloured>(pSrc, srcStep, pDstMCU);
}

// Packed pixels, blue in the low bits: 5, 5 and 5 bits, then 5, 6 and 5.
ZmxStatus zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, layout::BGR555, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, layout::BGR555, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, layout::BGR555, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, layout::BGR565, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, layout::BGR565, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, layout::BGR565, Coloured>(pSrc, srcStep, pDstMCU);
}

// Four bytes a pixel; K passes with no more than its level shift.
ZmxStatus zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]) {
    return pixelsToUnit<Unit444, layout::CMYK, Inverted>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]) {
    return pixelsToUnit<Unit422, layout::CMYK, Inverted>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]) {
    return pixelsToUnit<Unit411, layout::CMYK, Inverted>(pSrc, srcStep, pDstMCU);
}

// No colour conversion: Y, Cb and Cr in three bytes a pixel, or in pairs.
ZmxStatus zmxiSampleDown444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, layout::YCbCr, Plain>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiSampleDown422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, layout::YCbCr, Plain>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiSampleDown411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, layout::YCbCr, Plain>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiSplit422LS_MCU_8u16s_C2P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, layout::YCbYCr, Plain>(pSrc, srcStep, pDstMCU);
}
