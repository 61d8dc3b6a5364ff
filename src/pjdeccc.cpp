// pjdeccc.cpp - colour conversion of whole planes from YCbCr and YCCK (ITU-T T.871 in 16-bit fixed point).
//
// A row goes through in runs: toRgb() turns a run of the three planes into three runs of samples on the stack, which
// the compiler vectorises, and a layout class writes them out. Since a run is read whole before it is written, a
// destination may be its own source.
#include "pjargs.h"
#include "pjdeccctbl.h"
#include "pjpixels.h"
#include "pjrows.h"

#include <algorithm>

namespace {

struct Run {
    Zmx8u r[kRun], g[kRun], b[kRun];
};

// What the tables of pjdeccctbl hold, by multiplication in 16-bit lanes. With u and v the centred chroma:
//   red    (91881 v + 32768) >> 16 = v + ((26345 v + 32768) >> 16), for 91881 = 65536 + 26345, and since nested floors
//          collapse the last term is (((26345 * 2 v) >> 16) + 1) >> 1, whose product's high half is all that is needed;
//   blue   likewise with 116130 = 2 * 65536 - 14942;
//   green  (-22554 u - 46802 v + 32768) >> 16 = -v + ((18734 v - 22554 u + 32768) >> 16): the two products are rounded
//          together, so their sum needs 32 bits.
inline void toRgb(const Zmx8u* y, const Zmx8u* cb, const Zmx8u* cr, Run& out, int n) {
    for (int i = 0; i < n; ++i) {
        const Zmx16s u = Zmx16s(cb[i] - 128), v = Zmx16s(cr[i] - 128);
        const Zmx16s red = Zmx16s(v + ((mulHigh(26345, Zmx16s(2 * v)) + 1) >> 1));
        const Zmx16s blue = Zmx16s(2 * u + ((mulHigh(-14942, Zmx16s(2 * u)) + 1) >> 1));
        const Zmx16s green = Zmx16s(roundedSumHigh(18734, v, -22554, u) - v);
        out.r[i] = Zmx8u(std::clamp<Zmx16s>(Zmx16s(y[i] + red), 0, 255));
        out.g[i] = Zmx8u(std::clamp<Zmx16s>(Zmx16s(y[i] + green), 0, 255));
        out.b[i] = Zmx8u(std::clamp<Zmx16s>(Zmx16s(y[i] + blue), 0, 255));
    }
}

// Where the pixels of a run go in each layout: put() writes pixels x to x + n - 1 of a destination row; `k` is the run
// of the fourth source plane where there is one.

template <bool RedFirst> struct Bytes {
    static void put(Zmx8u* row, int x, const Run& c, const Zmx8u*, int n) {
        Zmx32u words[kRun];
        const Zmx8u* low = RedFirst ? c.r : c.b;
        const Zmx8u* high = RedFirst ? c.b : c.r;
        for (int i = 0; i < n; ++i) words[i] = low[i] | Zmx32u(c.g[i]) << 8 | Zmx32u(high[i]) << 16;
        storePixels(words, row + std::ptrdiff_t(3) * x, n);
    }
};

// 555 or 565 packing: the top bits of each sample, truncated. The first colour of the name lies in the low bits.
template <bool RedFirst, int GreenBits> struct Packed {
    static void put(Zmx8u* row, int x, const Run& c, const Zmx8u*, int n) {
        const Zmx8u* low = RedFirst ? c.r : c.b;
        const Zmx8u* high = RedFirst ? c.b : c.r;
        for (int i = 0; i < n; ++i)
            store(row, x + i, Zmx16u(low[i] >> 3 | c.g[i] >> (8 - GreenBits) << 5 | high[i] >> 3 << (5 + GreenBits)));
    }
};

struct CmykBytes {
    static void put(Zmx8u* row, int x, const Run& c, const Zmx8u* k, int n) {
        // 255 minus the saturated sample; K passes unchanged.
        for (int i = 0; i < n; ++i)
            store(row, x + i, (c.r[i] | Zmx32u(c.g[i]) << 8 | Zmx32u(c.b[i]) << 16 | Zmx32u(k[i]) << 24) ^ 0xFFFFFFu);
    }
};

struct RgbPlanes {
    static void put(Zmx8u* const* rows, int x, const Run& c, const Zmx8u*, int n) {
        std::memcpy(rows[0] + x, c.r, std::size_t(n));
        std::memcpy(rows[1] + x, c.g, std::size_t(n));
        std::memcpy(rows[2] + x, c.b, std::size_t(n));
    }
};

struct CmykPlanes {
    static void put(Zmx8u* const* rows, int x, const Run& c, const Zmx8u* k, int n) {
        Run inverted;
        Zmx8u black[kRun]; // held: a plane written first may be the one that K is read from
        std::memcpy(black, k, std::size_t(n));
        for (int i = 0; i < n; ++i) {
            inverted.r[i] = Zmx8u(255 - c.r[i]);
            inverted.g[i] = Zmx8u(255 - c.g[i]);
            inverted.b[i] = Zmx8u(255 - c.b[i]);
        }
        RgbPlanes::put(rows, x, inverted, k, n);
        std::memcpy(rows[3] + x, black, std::size_t(n));
    }
};

template <class Layout, int N, class Row> void convertRow(PlaneRows<N, const Zmx8u> src, Row dst, int width) {
    const Zmx8u* k = src.row[N - 1]; // the fourth plane of YCCK; no layout of three planes looks at it
    Run run;
    for (int x = 0; x < width; x += kRun) {
        const int n = std::min(kRun, width - x);
        toRgb(src.row[0] + x, src.row[1] + x, src.row[2] + x, run, n);
        Layout::put(dst, x, run, k + x, n);
    }
}

template <class Layout, int N, class How>
ZmxStatus toPixels(const Zmx8u* const* src, int srcStep, void* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).planes(src, N).step(srcStep).step(dstStep).size(roi)) return bad;
    How::rows(roi, [=](int y) {
        convertRow<Layout, N>(PlaneRows<N, const Zmx8u>(src, srcStep, y), rowAt(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

template <class Layout, int N>
ZmxStatus toPlanes(const Zmx8u* const* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).planes(src, N).planes(dst, N).step(srcStep).step(dstStep).size(roi))
        return bad;
    Parallel::rows(roi, [=](int y) {
        const PlaneRows<N, Zmx8u> rows(dst, dstStep, y);
        convertRow<Layout, N>(PlaneRows<N, const Zmx8u>(src, srcStep, y), rows.row, roi.width);
    });
    return zmxStsNoErr;
}

// Pairs of pixels Y Cb Y Cr. An odd width still reads and writes whole pairs: one pixel beyond it.
void row422(const Zmx8u* s, Zmx8u* d, int width) {
    for (int x = 0; x < width; x += 2, s += 4, d += 6) {
        const int cb = s[1], cr = s[3];
        const int red = cr_r_tbl[std::size_t(cr)], blue = cb_b_tbl[std::size_t(cb)];
        const int green = (cb_g_tbl[std::size_t(cb)] + cr_g_tbl[std::size_t(cr)]) >> 16;
        const int y0 = s[0], y1 = s[2];
        d[0] = saturate8u(y0 + red);
        d[1] = saturate8u(y0 + green);
        d[2] = saturate8u(y0 + blue);
        d[3] = saturate8u(y1 + red);
        d[4] = saturate8u(y1 + green);
        d[5] = saturate8u(y1 + blue);
    }
}

} // namespace

ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3], int dstStep,
                                     ZmxiSize roiSize) {
    return toPlanes<RgbPlanes, 3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4], int dstStep,
                                     ZmxiSize roiSize) {
    return toPlanes<CmykPlanes, 4>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                       ZmxiSize roiSize) {
    return toPixels<Bytes<true>, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToBGR_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                       ZmxiSize roiSize) {
    return toPixels<Bytes<false>, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4C4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* pDst, int dstStep,
                                       ZmxiSize roiSize) {
    return toPixels<CmykBytes, 4, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
// The packed forms open no parallel region at any size.
ZmxStatus zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return toPixels<Packed<false, 5>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return toPixels<Packed<true, 5>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return toPixels<Packed<false, 6>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return toPixels<Packed<true, 6>, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    // No step is tested: required. A step of 0 or below overlays the rows or runs backward.
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pDst).size(roiSize)) return bad;
    Parallel::rows(roiSize, [=](int y) { row422(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width); });
    return zmxStsNoErr;
}
