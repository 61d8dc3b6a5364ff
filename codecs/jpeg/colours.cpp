// colours.cpp - which function converts which colours.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/colours.h"

#include <algorithm>
#include <array>

namespace codecs::jpeg {

namespace {

// Rows are converted in pieces for which the library opens no team of threads: those of a row would wait for each other.
constexpr int kPiece = 8192;

template <class Convert> void inPieces(int width, Convert convert) {
    for (int x = 0; x < width; x += kPiece) convert(x, std::min(kPiece, width - x));
}

// A row of the library's conversion of whole planes.
template <int Channels, auto convert> void splitBy(const Zmx8u* pixels, Zmx8u* const* rows, int width) {
    // The size {n, 1} makes a plane of one row of a piece; steps mean nothing then.
    inPieces(width, [=](int x, int n) {
        Zmx8u* to[Channels];
        for (int i = 0; i < Channels; ++i) to[i] = rows[i] + x;
        convert(pixels + std::ptrdiff_t(x) * Channels, Channels * n, to, n, {n, 1});
    });
}
template <int Channels> void splitAsIs(const Zmx8u* pixels, Zmx8u* const* rows, int width) {
    splitChannels(pixels, rows, width, Channels);
}

// The words or bytes of a pixel are as many as the function has types for.
template <int Channels, int Units, class Unit, auto convert>
void joinBy(const Zmx8u* const* rows, Zmx8u* pixels, int width) {
    inPieces(width, [=](int x, int n) {
        const Zmx8u* from[Channels];
        for (int i = 0; i < Channels; ++i) from[i] = rows[i] + x;
        Unit* const to = reinterpret_cast<Unit*>(pixels) + std::ptrdiff_t(x) * Units;
        convert(from, n, to, Units * n * int(sizeof(Unit)), {n, 1});
    });
}
template <int Channels> void joinAsIs(const Zmx8u* const* rows, Zmx8u* pixels, int width) {
    if constexpr (Channels == 1)
        std::copy_n(rows[0], width, pixels);
    else
        joinChannels(rows, pixels, width, Channels);
}

// Grey is a colour of neutral chroma.
constexpr auto kNeutral = [] {
    std::array<Zmx8u, kPiece> row{};
    for (Zmx8u& v : row) v = 128;
    return row;
}();
template <auto pack> void packGrey(const Zmx8u* const* rows, Zmx8u* pixels, int width) {
    inPieces(width, [=](int x, int n) {
        const Zmx8u* const from[] = {rows[0] + x, kNeutral.data(), kNeutral.data()};
        pack(from, n, reinterpret_cast<Zmx16u*>(pixels) + x, 2 * n, {n, 1});
    });
}

// The library packs what it converts; RGB that is stored as it is loses its low bits in the same way.
template <bool RedLow, int GreenBits> void packRgb(const Zmx8u* const* rows, Zmx8u* pixels, int width) {
    constexpr int low = RedLow ? 0 : 2;
    auto* const words = reinterpret_cast<Zmx16u*>(pixels);
    for (int x = 0; x < width; ++x)
        words[x] =
            Zmx16u(rows[low][x] >> 3 | rows[1][x] >> (8 - GreenBits) << 5 | rows[2 - low][x] >> 3 << (5 + GreenBits));
}

// By what the file holds; the last two are what RGB needs.
template <auto pack, bool RedLow, int GreenBits> JoinRow packerFor(Model model) {
    switch (model) {
    case Model::grey:
        return packGrey<pack>;
    case Model::yCbCr:
        return joinBy<3, 1, Zmx16u, pack>;
    case Model::rgb:
        return packRgb<RedLow, GreenBits>;
    default:
        throw Error("a CMYK picture has no packed pixels");
    }
}

} // namespace

// CMYK that is stored as it is and RGB likewise are only taken apart.
SplitRow splitterFor(Model model) {
    switch (model) {
    case Model::grey:
        return splitAsIs<1>;
    case Model::yCbCr:
        return splitBy<3, zmxiRGBToYCbCr_JPEG_8u_C3P3R>;
    case Model::rgb:
        return splitAsIs<3>;
    case Model::ycck:
        return splitBy<4, zmxiCMYKToYCCK_JPEG_8u_C4P4R>;
    default:
        return splitAsIs<4>;
    }
}

// Packed words have a function of the library for YCbCr, and are made here of grey and RGB.
JoinRow joinerFor(Model model, Packing packing) {
    switch (packing) {
    case Packing::rgb565:
        return packerFor<zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R, true, 6>(model);
    case Packing::bgr565:
        return packerFor<zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R, false, 6>(model);
    case Packing::rgb555:
        return packerFor<zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R, true, 5>(model);
    case Packing::bgr555:
        return packerFor<zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, false, 5>(model);
    case Packing::none:
        break;
    }
    switch (model) {
    case Model::grey:
        return joinAsIs<1>;
    case Model::yCbCr:
        return joinBy<3, 3, Zmx8u, zmxiYCbCrToRGB_JPEG_8u_P3C3R>;
    case Model::rgb:
        return joinAsIs<3>;
    case Model::ycck:
        return joinBy<4, 4, Zmx8u, zmxiYCCKToCMYK_JPEG_8u_P4C4R>;
    default:
        return joinAsIs<4>;
    }
}

} // namespace codecs::jpeg
