// pjencccss.cpp - pixels to minimum coded units: colour, chroma reduction, level shift in one pass.
//
// Each row of pixels is split into channels, a row of Zmx16s each. The luma is formed pixel by pixel; the channels are
// summed over the pixels that share a chroma sample, and the chroma is formed of the sums.
#include "zmxj.h"

#include "pjargs.h"
#include "pjmcu.h"
#include "pjrows.h"

namespace {

// Three or four channels of a row of pixels, or sums of them: 0 to 1020.
struct Channels {
    alignas(32) Zmx16s of[4][16];
};

// How pixels become the channels R, G, B (and K), or Y, Cb, Cr.
template <int C0, int C1, int C2> struct Bytes3 {
    static constexpr int planes = 3;
    template <int Width> static void get(const Zmx8u* src, Channels& row) {
        // Four bytes a pixel, the fourth of no account; the last pixel has only three.
        Zmx8u quads[4 * Width];
        for (int x = 0; x < Width - 1; ++x) std::memcpy(quads + 4 * x, src + 3 * x, 4);
        std::memcpy(quads + 4 * (Width - 1), src + 3 * (Width - 1), 3);
        for (int x = 0; x < Width; ++x) {
            row.of[C0][x] = quads[4 * x];
            row.of[C1][x] = quads[4 * x + 1];
            row.of[C2][x] = quads[4 * x + 2];
        }
    }
};
using FromRGB = Bytes3<0, 1, 2>;
using FromBGR = Bytes3<2, 1, 0>;
using FromYCbCr = Bytes3<0, 1, 2>;

template <int GreenBits> struct Packed {
    static constexpr int planes = 3;
    template <int Width> static void get(const Zmx8u* src, Channels& row) {
        // Each field is widened by zeros below; the highest bit of 555 is no part of red.
        for (int x = 0; x < Width; ++x) {
            const int v = load<Zmx16u>(src, x);
            row.of[0][x] = Zmx16s((v >> (5 + GreenBits) & 31) << 3);
            row.of[1][x] = Zmx16s((v >> 5 & ((1 << GreenBits) - 1)) << (8 - GreenBits));
            row.of[2][x] = Zmx16s((v & 31) << 3);
        }
    }
};
using FromBGR555 = Packed<5>;
using FromBGR565 = Packed<6>;

struct FromCMYK {
    static constexpr int planes = 4;
    template <int Width> static void get(const Zmx8u* src, Channels& row) {
        for (int x = 0; x < Width; ++x) {
            row.of[0][x] = Zmx16s(255 - src[4 * x]);
            row.of[1][x] = Zmx16s(255 - src[4 * x + 1]);
            row.of[2][x] = Zmx16s(255 - src[4 * x + 2]);
            row.of[3][x] = src[4 * x + 3];
        }
    }
};

// Two bytes a pixel: luma, and Cb or Cr of the pair, which is put to both pixels.
struct FromYCbYCr {
    static constexpr int planes = 3;
    template <int Width> static void get(const Zmx8u* src, Channels& row) {
        for (int x = 0; x < Width; x += 2) {
            row.of[0][x] = src[2 * x];
            row.of[0][x + 1] = src[2 * x + 2];
            row.of[1][x] = row.of[1][x + 1] = src[2 * x + 1];
            row.of[2][x] = row.of[2][x + 1] = src[2 * x + 3];
        }
    }
};

// The colour formulas, N being the number of pixels that were summed, as a power of two. No rounding term: the floor is
// taken in all three lines (the conversions of whole planes round). The chroma has no offset, the level shift is in.
struct Coloured {
    static Zmx16s luma(int r, int g, int b) { return Zmx16s(((19595 * r + 38470 * g + 7471 * b) >> 16) - 128); }
    template <int N> static Zmx16s cb(int r, int g, int b) {
        return Zmx16s((-11059 * r - 21709 * g + 32768 * b) >> (16 + N));
    }
    template <int N> static Zmx16s cr(int r, int g, int b) {
        return Zmx16s((32768 * r - 27439 * g - 5329 * b) >> (16 + N));
    }
};

// No colour conversion: the floor of the mean.
struct Plain {
    static Zmx16s luma(int y, int, int) { return Zmx16s(y - 128); }
    template <int N> static Zmx16s cb(int, int cb, int) { return Zmx16s((cb - (128 << N)) >> N); }
    template <int N> static Zmx16s cr(int, int, int cr) { return Zmx16s((cr - (128 << N)) >> N); }
};

template <class U> void sumPairs(Channels& row) {
    if constexpr (U::shiftX == 1)
        for (auto& channel : row.of)
            for (int x = 0; x < 8; ++x) channel[x] = Zmx16s(channel[2 * x] + channel[2 * x + 1]);
}

template <class U, class In, class Colour>
ZmxStatus pixelsToUnit(const void* src, int srcStep, Zmx16s* const* dst) {
    // The step ahead of the planes: required here, the decoding side has it behind them.
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).step(srcStep).planes(dst, In::planes)) return bad;
    constexpr int summed = U::shiftX + U::shiftY;
    for (int cy = 0; cy < 8; ++cy) {
        Channels sums{};
        for (int y = cy << U::shiftY; y < (cy + 1) << U::shiftY; ++y) {
            Channels row;
            In::template get<U::width>(rowAt(src, srcStep, y), row);
            for (int left = 0; left < U::width; left += 8) {
                Zmx16s* const luma = dst[0] + U::rowAt(left / 8, y);
                for (int x = 0; x < 8; ++x)
                    luma[x] = Colour::luma(row.of[0][left + x], row.of[1][left + x], row.of[2][left + x]);
                if constexpr (In::planes == 4) {
                    Zmx16s* const key = dst[3] + U::rowAt(left / 8, y);
                    for (int x = 0; x < 8; ++x) key[x] = Zmx16s(row.of[3][left + x] - 128);
                }
            }
            for (int c = 0; c < 3; ++c)
                for (int x = 0; x < U::width; ++x) sums.of[c][x] = Zmx16s(sums.of[c][x] + row.of[c][x]);
        }
        sumPairs<U>(sums);
        for (int x = 0; x < 8; ++x) {
            dst[1][8 * cy + x] = Colour::template cb<summed>(sums.of[0][x], sums.of[1][x], sums.of[2][x]);
            dst[2][8 * cy + x] = Colour::template cr<summed>(sums.of[0][x], sums.of[1][x], sums.of[2][x]);
        }
    }
    return zmxStsNoErr;
}

} // namespace

ZmxStatus zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, FromRGB, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, FromRGB, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, FromRGB, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, FromBGR, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, FromBGR, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, FromBGR, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, FromBGR555, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, FromBGR555, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, FromBGR555, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, FromBGR565, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, FromBGR565, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, FromBGR565, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]) {
    return pixelsToUnit<Unit444, FromCMYK, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]) {
    return pixelsToUnit<Unit422, FromCMYK, Coloured>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]) {
    return pixelsToUnit<Unit411, FromCMYK, Coloured>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiSampleDown444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit444, FromYCbCr, Plain>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiSampleDown422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, FromYCbCr, Plain>(pSrc, srcStep, pDstMCU);
}
ZmxStatus zmxiSampleDown411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit411, FromYCbCr, Plain>(pSrc, srcStep, pDstMCU);
}

ZmxStatus zmxiSplit422LS_MCU_8u16s_C2P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]) {
    return pixelsToUnit<Unit422, FromYCbYCr, Plain>(pSrc, srcStep, pDstMCU);
}
