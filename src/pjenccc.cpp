// pjenccc.cpp - colour conversion of whole planes to Y, YCbCr and YCCK (ITU-T T.871 in 16-bit fixed point).
//
// A row goes through in runs: a layout class brings a run of pixels into three runs of samples on the stack, and toY()
// or toYcc() turns them into the planes, in loops that the compiler vectorises. Since a run is read whole before it is
// written, a destination may be its own source.
#include "pjargs.h"
#include "pjpixels.h"
#include "pjrows.h"

#include <algorithm>

namespace {

struct Run {
    Zmx8u c[3][kRun];
};

// What cc_table of pjenccctbl sums up, by multiplication. The three factors of Y add up to 65536 and those of Cb and of
// Cr to 0, so with a = R - G and b = B - G each line needs two products:
//   Y   G + ((19595 a + 7471 b + 32768) >> 16)
//   Cb  128 + ((32768 b - 11059 a + 32767) >> 16)
//   Cr  128 + ((32768 a - 5329 b + 32767) >> 16)
// The rounding term of Y is a half, those of Cb and Cr are one short of it. Taking the shift of Cb in two steps of 15
// and 1 gives 128 + ((b + ((32767 - 11059 a) >> 15)) >> 1), and the inner term, being a ceiling, is minus the high half
// of 22118 a: 16-bit lanes are enough. Cr likewise. Nothing saturates: no result leaves 0 to 255.
inline Zmx8u lumaOf(Zmx16s a, Zmx8u g, Zmx16s b) { return Zmx8u(g + roundedSumHigh(19595, a, 7471, b)); }
// Cb of (a, b), and Cr of (b, a), by the factor of the first difference doubled.
inline Zmx8u chromaOf(Zmx16s other, Zmx16s own, Zmx16s factor) {
    return Zmx8u(128 + (Zmx16s(own - mulHigh(factor, other)) >> 1));
}

inline void toY(const Run& rgb, Zmx8u* y, int n) {
    for (int i = 0; i < n; ++i) {
        const Zmx16s a = Zmx16s(rgb.c[0][i] - rgb.c[1][i]), b = Zmx16s(rgb.c[2][i] - rgb.c[1][i]);
        y[i] = lumaOf(a, rgb.c[1][i], b);
    }
}
inline void toYcc(const Run& rgb, Run& ycc, int n) {
    for (int i = 0; i < n; ++i) {
        const Zmx16s a = Zmx16s(rgb.c[0][i] - rgb.c[1][i]), b = Zmx16s(rgb.c[2][i] - rgb.c[1][i]);
        ycc.c[0][i] = lumaOf(a, rgb.c[1][i], b);
        ycc.c[1][i] = chromaOf(a, b, 22118);
        ycc.c[2][i] = chromaOf(b, a, 10658);
    }
}

// Where the pixels of a run come from in each layout: get() brings pixels x to x + n - 1 of a source row; black() the
// run of K where there is one.

template <bool RedFirst> struct Bytes {
    static void get(const Zmx8u* row, int x, Run& rgb, int n) {
        Zmx32u words[kRun];
        loadPixels(row + std::ptrdiff_t(3) * x, words, n);
        for (int i = 0; i < n; ++i) {
            rgb.c[RedFirst ? 0 : 2][i] = Zmx8u(words[i]);
            rgb.c[1][i] = Zmx8u(words[i] >> 8);
            rgb.c[RedFirst ? 2 : 0][i] = Zmx8u(words[i] >> 16);
        }
    }
};

// 555 or 565 packing, widened with zeros below; the first colour of the name lies in the low bits. Bit 15 of 555 is
// ignored.
template <bool RedFirst, int GreenBits> struct Packed {
    static void get(const Zmx8u* row, int x, Run& rgb, int n) {
        for (int i = 0; i < n; ++i) {
            const Zmx16u p = load<Zmx16u>(row, x + i);
            rgb.c[RedFirst ? 0 : 2][i] = Zmx8u(p << 3);
            rgb.c[1][i] = Zmx8u(p >> 5 << (8 - GreenBits));
            rgb.c[RedFirst ? 2 : 0][i] = Zmx8u(p >> (5 + GreenBits) << 3);
        }
    }
};

struct CmykBytes {
    static void get(const Zmx8u* row, int x, Run& rgb, int n) {
        for (int i = 0; i < n; ++i) {
            const Zmx32u p = ~load<Zmx32u>(row, x + i); // 255 minus each sample
            rgb.c[0][i] = Zmx8u(p);
            rgb.c[1][i] = Zmx8u(p >> 8);
            rgb.c[2][i] = Zmx8u(p >> 16);
        }
    }
    static void black(const Zmx8u* row, int x, Zmx8u* k, int n) {
        for (int i = 0; i < n; ++i) k[i] = Zmx8u(load<Zmx32u>(row, x + i) >> 24);
    }
};

struct RgbPlanes {
    static void get(const Zmx8u* const* rows, int x, Run& rgb, int n) {
        for (int p = 0; p < 3; ++p) std::memcpy(rgb.c[p], rows[p] + x, std::size_t(n));
    }
};

struct CmykPlanes {
    static void get(const Zmx8u* const* rows, int x, Run& rgb, int n) {
        for (int p = 0; p < 3; ++p)
            for (int i = 0; i < n; ++i) rgb.c[p][i] = Zmx8u(255 - rows[p][x + i]);
    }
    static void black(const Zmx8u* const* rows, int x, Zmx8u* k, int n) { std::memcpy(k, rows[3] + x, std::size_t(n)); }
};

template <class Layout, class Row> void lumaRow(Row src, Zmx8u* y, int width) {
    Run rgb;
    Zmx8u luma[kRun];
    for (int x = 0; x < width; x += kRun) {
        const int n = std::min(kRun, width - x);
        Layout::get(src, x, rgb, n);
        toY(rgb, luma, n);
        std::memcpy(y + x, luma, std::size_t(n));
    }
}

// Three planes, or four with K copied unchanged.
template <class Layout, int N, class Row> void planesRow(Row src, PlaneRows<N, Zmx8u> dst, int width) {
    Run rgb, ycc;
    [[maybe_unused]] Zmx8u k[kRun];
    for (int x = 0; x < width; x += kRun) {
        const int n = std::min(kRun, width - x);
        Layout::get(src, x, rgb, n);
        if constexpr (N == 4) Layout::black(src, x, k, n);
        toYcc(rgb, ycc, n);
        for (int p = 0; p < 3; ++p) std::memcpy(dst.row[p] + x, ycc.c[p], std::size_t(n));
        if constexpr (N == 4) std::memcpy(dst.row[3] + x, k, std::size_t(n));
    }
}

template <class Layout> ZmxStatus pixelsToY(const Zmx8u* src, int srcStep, Zmx8u* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).step(srcStep).step(dstStep).size(roi)) return bad;
    Parallel::rows(roi, [=](int y) { lumaRow<Layout>(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), roi.width); });
    return zmxStsNoErr;
}

template <class Layout, int N, class How>
ZmxStatus pixelsToPlanes(const void* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).planes(dst, N).step(srcStep).step(dstStep).size(roi)) return bad;
    How::rows(roi, [=](int y) {
        planesRow<Layout, N>(rowAt(src, srcStep, y), PlaneRows<N, Zmx8u>(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

template <class Layout, int N>
ZmxStatus planesToPlanes(const Zmx8u* const* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).planes(src, N).planes(dst, N).step(srcStep).step(dstStep).size(roi))
        return bad;
    Parallel::rows(roi, [=](int y) {
        const PlaneRows<N, const Zmx8u> rows(src, srcStep, y);
        planesRow<Layout, N>(rows.row, PlaneRows<N, Zmx8u>(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

} // namespace

ZmxStatus zmxiRGBToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    return pixelsToY<Bytes<true>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGRToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    return pixelsToY<Bytes<false>>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGBToY_JPEG_8u_P3C1R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                   ZmxiSize roiSize) {
    // The source planes stand ahead of the destination pointer: required; the other functions test both arrays first.
    if (ZmxStatus bad = Args().ptr(pSrc).planes(pSrc, 3).ptr(pDst).step(srcStep).step(dstStep).size(roiSize))
        return bad;
    Parallel::rows(roiSize, [=](int y) {
        const PlaneRows<3, const Zmx8u> rows(pSrc, srcStep, y);
        lumaRow<RgbPlanes>(rows.row, rowAt(pDst, dstStep, y), roiSize.width);
    });
    return zmxStsNoErr;
}
ZmxStatus zmxiRGBToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                       ZmxiSize roiSize) {
    return pixelsToPlanes<Bytes<true>, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGRToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                       ZmxiSize roiSize) {
    return pixelsToPlanes<Bytes<false>, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGBToYCbCr_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3], int dstStep,
                                     ZmxiSize roiSize) {
    return planesToPlanes<RgbPlanes, 3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiCMYKToYCCK_JPEG_8u_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[4], int dstStep,
                                       ZmxiSize roiSize) {
    return pixelsToPlanes<CmykBytes, 4, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiCMYKToYCCK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4], int dstStep,
                                     ZmxiSize roiSize) {
    return planesToPlanes<CmykPlanes, 4>(pSrc, srcStep, pDst, dstStep, roiSize);
}
// The packed forms open no parallel region at any size.
ZmxStatus zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<Packed<true, 5>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<Packed<false, 5>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<Packed<true, 6>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<Packed<false, 6>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
