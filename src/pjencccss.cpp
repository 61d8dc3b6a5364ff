// pjencccss.cpp - pixels to minimum coded units: colour, chroma reduction, level shift in one pass.
//
// The pixels of a unit are split into channels. The luma is formed pixel by pixel; the channels are summed over the
// pixels that share a chroma sample, and the chroma is formed of the sums. All are plain loops over the unit in 16-bit
// lanes. Pixels are taken apart by 16-bit halves, the lower byte first as x86 stores them.
#include "zmxj.h"

#include "pjargs.h"
#include "pjmcu.h"
#include "pjrows.h"

#include <cstdint>

namespace zmx {
namespace {

// Three or four channels of all pixels of a unit, row by row.
template <class U> struct Channels { alignas(32) Zmx16u of[4][U::pixels]; };

// How pixels become the channels R, G, B (and K), or Y, Cb, Cr.
template <int C0, int C1, int C2> struct Bytes3 {
    static constexpr int planes = 3;
    template <class U> static void get(const void* src, int srcStep, Channels<U>& to) {
        // Two pixels at a time, then a gap is put between them: four bytes a pixel. The last pair of a row is read
        // without what follows it. The rows are gathered first, for narrow stores that are read at once by wide loads
        // would stall.
        constexpr int perRow = U::width / 2;
        std::uint64_t pairs[U::pixels / 2];
        for (int y = 0; y < U::height; ++y) {
            const Zmx8u* const row = rowAt(src, srcStep, y);
            std::uint64_t* const rowPairs = pairs + perRow * y;
            for (int i = 0; i < perRow - 1; ++i) std::memcpy(rowPairs + i, row + 6 * i, 8);
            rowPairs[perRow - 1] = 0;
            std::memcpy(rowPairs + perRow - 1, row + 6 * (perRow - 1), 6);
        }
        for (auto& pair : pairs) {
            const std::uint64_t bytes = littleEndian(pair);
            pair = littleEndian((bytes & 0xffffff) | (bytes << 8 & 0xffffff00000000));
        }
        const auto* const halves = reinterpret_cast<const Zmx8u*>(pairs);
        for (int i = 0; i < U::pixels; ++i) {
            const auto low = loadLE<Zmx16u>(halves, 2 * i), high = loadLE<Zmx16u>(halves, 2 * i + 1);
            to.of[C0][i] = low & 255;
            to.of[C1][i] = low >> 8;
            to.of[C2][i] = high;
        }
    }
};
using FromRGB = Bytes3<0, 1, 2>;
using FromBGR = Bytes3<2, 1, 0>;
using FromYCbCr = Bytes3<0, 1, 2>;

template <int GreenBits> struct Packed {
    static constexpr int planes = 3;
    template <class U> static void get(const void* src, int srcStep, Channels<U>& to) {
        // Each field is widened by zeros below; the highest bit of 555 is no part of red.
        for (int y = 0; y < U::height; ++y)
            for (int x = 0; x < U::width; ++x) {
                const auto v = load<Zmx16u>(rowAt(src, srcStep, y), x);
                to.of[0][U::width * y + x] = (v >> (5 + GreenBits) & 31) << 3;
                to.of[1][U::width * y + x] = Zmx16u((v >> 5 & ((1 << GreenBits) - 1)) << (8 - GreenBits));
                to.of[2][U::width * y + x] = (v & 31) << 3;
            }
    }
};
using FromBGR555 = Packed<5>;
using FromBGR565 = Packed<6>;

struct FromCMYK {
    static constexpr int planes = 4;
    template <class U> static void get(const void* src, int srcStep, Channels<U>& to) {
        for (int y = 0; y < U::height; ++y)
            for (int x = 0; x < U::width; ++x) {
                const Zmx8u* const row = rowAt(src, srcStep, y);
                const auto low = loadLE<Zmx16u>(row, 2 * x), high = loadLE<Zmx16u>(row, 2 * x + 1);
                to.of[0][U::width * y + x] = 255 - (low & 255);
                to.of[1][U::width * y + x] = Zmx16u(255 - (low >> 8));
                to.of[2][U::width * y + x] = 255 - (high & 255);
                to.of[3][U::width * y + x] = high >> 8;
            }
    }
};

// Two bytes a pixel: luma, and Cb or Cr of the pair, which goes to both pixels.
struct FromYCbYCr {
    static constexpr int planes = 3;
    template <class U> static void get(const void* src, int srcStep, Channels<U>& to) {
        for (int y = 0; y < U::height; ++y)
            for (int x = 0; x < U::width; x += 2) {
                const Zmx8u* const row = rowAt(src, srcStep, y);
                const auto left = loadLE<Zmx16u>(row, x), right = loadLE<Zmx16u>(row, x + 1);
                const int i = U::width * y + x;
                to.of[0][i] = left & 255;
                to.of[0][i + 1] = right & 255;
                to.of[1][i] = to.of[1][i + 1] = left >> 8;
                to.of[2][i] = to.of[2][i + 1] = right >> 8;
            }
    }
};

// The colour formulas; the chroma takes sums over two to the power of N pixels. No rounding term: the floor is taken in
// all three lines (the conversions of whole planes round). The chroma has no offset, for the level shift is in.
struct Coloured {
    static Zmx16s luma(Zmx16u r, Zmx16u g, Zmx16u b) {
        return Zmx16s(((19595u * r + 38470u * g + 7471u * b) >> 16) - 128);
    }
    template <int N> static Zmx16s cb(Zmx16s r, Zmx16s g, Zmx16s b) {
        return Zmx16s((-11059 * r - 21709 * g + 32768 * b) >> (16 + N));
    }
    template <int N> static Zmx16s cr(Zmx16s r, Zmx16s g, Zmx16s b) {
        return Zmx16s((32768 * r - 27439 * g - 5329 * b) >> (16 + N));
    }
};

// No colour conversion: the floor of the mean.
struct Plain {
    static Zmx16s luma(Zmx16u y, Zmx16u, Zmx16u) { return Zmx16s(y - 128); }
    template <int N> static Zmx16s cb(Zmx16s, Zmx16s cb, Zmx16s) { return Zmx16s((cb - (128 << N)) >> N); }
    template <int N> static Zmx16s cr(Zmx16s, Zmx16s, Zmx16s cr) { return Zmx16s((cr - (128 << N)) >> N); }
};

// The 64 sums of a channel over the pixels that share a chroma sample: pairs of rows first, then pairs in the row.
template <class U> void sum(const Zmx16u* channel, Zmx16s* sums) {
    Zmx16u rows[8 * U::width];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < U::width; ++x) {
            const Zmx16u* const top = channel + ((U::width * y) << U::shiftY) + x;
            rows[U::width * y + x] = U::shiftY ? Zmx16u(top[0] + top[U::width]) : top[0];
        }
    for (int i = 0; i < 64; ++i) sums[i] = U::shiftX ? Zmx16s(rows[2 * i] + rows[2 * i + 1]) : Zmx16s(rows[i]);
}

template <class U, class In, class Colour> ZmxStatus pixelsToUnit(const void* src, int srcStep, Zmx16s* const* dst) {
    // The step ahead of the planes: required here, the decoding side has it behind them.
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).step(srcStep).planes(dst, In::planes)) return bad;
    Channels<U> from;
    In::template get<U>(src, srcStep, from);

    for (int y = 0; y < U::height; ++y)
        for (int h = 0; h < U::width / 8; ++h) {
            const int left = U::width * y + 8 * h;
            Zmx16s* const luma = dst[0] + U::rowAt(h, y);
            for (int x = 0; x < 8; ++x)
                luma[x] = Colour::luma(from.of[0][left + x], from.of[1][left + x], from.of[2][left + x]);
            if constexpr (In::planes == 4) {
                Zmx16s* const key = dst[3] + U::rowAt(h, y);
                for (int x = 0; x < 8; ++x) key[x] = Zmx16s(from.of[3][left + x] - 128);
            }
        }

    Zmx16s sums[3][64];
    for (int c = 0; c < 3; ++c) sum<U>(from.of[c], sums[c]);
    constexpr int summed = U::shiftX + U::shiftY;
    for (int i = 0; i < 64; ++i) dst[1][i] = Colour::template cb<summed>(sums[0][i], sums[1][i], sums[2][i]);
    for (int i = 0; i < 64; ++i) dst[2][i] = Colour::template cr<summed>(sums[0][i], sums[1][i], sums[2][i]);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

using namespace zmx;

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
