// conversions.h - the colour conversions of whole planes, one by one, and their model.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/colour.h"
#include "zmxj.h"

#include <ostream>
#include <type_traits>

namespace conversion {

using model::Layout;

// The functions differ in whether planes or pixels are passed; here all take arrays of planes, and pixels are
// plane 0.
using Call = ZmxStatus (*)(const Zmx8u* const*, int, Zmx8u* const*, int, ZmxiSize);

template <class Arg, class Planes> Arg passed(Planes planes) {
    if constexpr (std::is_same_v<Arg, Planes>)
        return planes;
    else
        return planes ? reinterpret_cast<Arg>(planes[0]) : nullptr;
}
template <auto f> ZmxStatus call(const Zmx8u* const* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize size) {
    const auto with = [&]<class Src, class Dst>(ZmxStatus (*g)(Src, int, Dst, int, ZmxiSize)) {
        return g(passed<Src>(src), srcStep, passed<Dst>(dst), dstStep, size);
    };
    return with(f);
}

struct Conversion {
    const char* name;
    Call call;
    bool toYCbCr;
    Layout from, to;
    // S and D for the arrays or pixels, s and d for each plane of the array, T and t for the steps, W and H.
    const char* order;
    bool shared; // rows, to a team of threads
    std::uint64_t digest;
};

inline void PrintTo(const Conversion& c, std::ostream* out) { *out << c.name; }

constexpr bool OnOneThread = false, SharedOut = true;
constexpr bool From = false, To = true; // YCbCr

inline constexpr Conversion conversions[] = {
    {"YCbCrToRGB_P3R", call<zmxiYCbCrToRGB_JPEG_8u_P3R>, From, Layout::Planes3, Layout::Planes3, "SDsdTtWH", SharedOut,
     0x4D197B774D69CAC9u},
    {"YCbCrToRGB_P3C3R", call<zmxiYCbCrToRGB_JPEG_8u_P3C3R>, From, Layout::Planes3, Layout::Rgb, "SDsTtWH", SharedOut,
     0x7ED253D526D91D4Fu},
    {"YCbCrToBGR_P3C3R", call<zmxiYCbCrToBGR_JPEG_8u_P3C3R>, From, Layout::Planes3, Layout::Bgr, "SDsTtWH", SharedOut,
     0x9F04A5BA0A56AB0Bu},
    {"YCCKToCMYK_P4R", call<zmxiYCCKToCMYK_JPEG_8u_P4R>, From, Layout::Planes4, Layout::Planes4, "SDsdTtWH", SharedOut,
     0x642846398A87DFF5u},
    {"YCCKToCMYK_P4C4R", call<zmxiYCCKToCMYK_JPEG_8u_P4C4R>, From, Layout::Planes4, Layout::Cmyk, "SDsTtWH", SharedOut,
     0xDFE46A9FA5C5C9DDu},
    {"YCbCrToBGR555_P3C3R", call<zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R>, From, Layout::Planes3, Layout::Bgr555, "SDsTtWH",
     OnOneThread, 0x3BFA3D9073C7E590u},
    {"YCbCrToRGB555_P3C3R", call<zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R>, From, Layout::Planes3, Layout::Rgb555, "SDsTtWH",
     OnOneThread, 0xAB081B5D3EEF5E0Au},
    {"YCbCrToBGR565_P3C3R", call<zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R>, From, Layout::Planes3, Layout::Bgr565, "SDsTtWH",
     OnOneThread, 0x88C15F3AE3D005A2u},
    {"YCbCrToRGB565_P3C3R", call<zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R>, From, Layout::Planes3, Layout::Rgb565, "SDsTtWH",
     OnOneThread, 0x9944020D40662518u},
    {"YCbCr422ToRGB_C2C3R", call<zmxiYCbCr422ToRGB_JPEG_8u_C2C3R>, From, Layout::Pairs422, Layout::Rgb, "SDWH",
     SharedOut, 0x37BBB336201892ABu},
    {"RGBToY_C3C1R", call<zmxiRGBToY_JPEG_8u_C3C1R>, To, Layout::Rgb, Layout::Grey, "SDTtWH", SharedOut,
     0x0890D4D9DDB088C9u},
    {"BGRToY_C3C1R", call<zmxiBGRToY_JPEG_8u_C3C1R>, To, Layout::Bgr, Layout::Grey, "SDTtWH", SharedOut,
     0xA524E6FC590304B8u},
    {"RGBToY_P3C1R", call<zmxiRGBToY_JPEG_8u_P3C1R>, To, Layout::Planes3, Layout::Grey, "SsDTtWH", SharedOut,
     0xB096F46B6C2A42C0u},
    {"RGBToYCbCr_C3P3R", call<zmxiRGBToYCbCr_JPEG_8u_C3P3R>, To, Layout::Rgb, Layout::Planes3, "SDdTtWH", SharedOut,
     0xB41FA3F1BF47E87Eu},
    {"BGRToYCbCr_C3P3R", call<zmxiBGRToYCbCr_JPEG_8u_C3P3R>, To, Layout::Bgr, Layout::Planes3, "SDdTtWH", SharedOut,
     0xC7A2E45297F71713u},
    {"RGBToYCbCr_P3R", call<zmxiRGBToYCbCr_JPEG_8u_P3R>, To, Layout::Planes3, Layout::Planes3, "SDsdTtWH", SharedOut,
     0x6168DBD90A3F58FCu},
    {"CMYKToYCCK_C4P4R", call<zmxiCMYKToYCCK_JPEG_8u_C4P4R>, To, Layout::Cmyk, Layout::Planes4, "SDdTtWH", SharedOut,
     0x9D5DF808B0DF255Bu},
    {"CMYKToYCCK_P4R", call<zmxiCMYKToYCCK_JPEG_8u_P4R>, To, Layout::Planes4, Layout::Planes4, "SDsdTtWH", SharedOut,
     0x588AB67EEF8DC916u},
    {"RGB555ToYCbCr_C3P3R", call<zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R>, To, Layout::Rgb555, Layout::Planes3, "SDdTtWH",
     OnOneThread, 0xE8B691DD3E29D508u},
    {"BGR555ToYCbCr_C3P3R", call<zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R>, To, Layout::Bgr555, Layout::Planes3, "SDdTtWH",
     OnOneThread, 0xB7169AAACC22DB3Cu},
    {"RGB565ToYCbCr_C3P3R", call<zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R>, To, Layout::Rgb565, Layout::Planes3, "SDdTtWH",
     OnOneThread, 0x4267C6352BEABA67u},
    {"BGR565ToYCbCr_C3P3R", call<zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R>, To, Layout::Bgr565, Layout::Planes3, "SDdTtWH",
     OnOneThread, 0x0244F68A975F8108u},
};

// What the model makes of a picture.
inline void plain(const Conversion& way, const model::Rows& src, const model::Rows& dst, ZmxiSize size) {
    if (way.toYCbCr)
        model::toYCbCr(src, dst, size);
    else
        model::fromYCbCr(src, dst, size);
}

} // namespace conversion
