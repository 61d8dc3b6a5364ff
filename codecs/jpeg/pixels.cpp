// pixels.cpp - which function makes pixels of which colours.
#include "codecs/jpeg/pixels.h"

namespace jpeg {

namespace {

template <int Channels>
ZmxStatus interleave(const Zmx8u* const* planes, int planeStep, Zmx8u* pixels, int step, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < Channels; ++c)
                pixels[y * std::ptrdiff_t(step) + Channels * x + c] = planes[c][y * std::ptrdiff_t(planeStep) + x];
    return zmxStsNoErr;
}

// Packed pixels are words, in the byte order of the machine.
Zmx16u* words(Zmx8u* pixels, int step, int y) { return reinterpret_cast<Zmx16u*>(pixels + std::ptrdiff_t(step) * y); }
using Pack = ZmxStatus(const Zmx8u* const* planes, int planeStep, Zmx16u* pixels, int step, ZmxiSize size);

template <Pack pack>
ZmxStatus packYCbCr(const Zmx8u* const* planes, int planeStep, Zmx8u* pixels, int step, ZmxiSize size) {
    return pack(planes, planeStep, words(pixels, step, 0), step, size);
}

// Grey is a colour of neutral chroma.
template <Pack pack>
ZmxStatus packGrey(const Zmx8u* const* planes, int planeStep, Zmx8u* pixels, int step, ZmxiSize size) {
    const std::vector<Zmx8u> neutral(std::size_t(size.width), Zmx8u(128));
    for (int y = 0; y < size.height; ++y) {
        const Zmx8u* const row[] = {planes[0] + y * std::ptrdiff_t(planeStep), neutral.data(), neutral.data()};
        pack(row, planeStep, words(pixels, step, y), step, {size.width, 1});
    }
    return zmxStsNoErr;
}

// The library packs what it converts; RGB that is stored as it is loses its low bits in the same way.
template <bool RedLow, int GreenBits>
ZmxStatus packRgb(const Zmx8u* const* planes, int planeStep, Zmx8u* pixels, int step, ZmxiSize size) {
    const int low = RedLow ? 0 : 2;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const std::ptrdiff_t i = y * std::ptrdiff_t(planeStep) + x;
            words(pixels, step, y)[x] = Zmx16u(planes[low][i] >> 3 | planes[1][i] >> (8 - GreenBits) << 5 |
                                               planes[2 - low][i] >> 3 << (5 + GreenBits));
        }
    return zmxStsNoErr;
}

template <Pack pack, bool RedLow, int GreenBits> auto packingFrom(Model model) {
    switch (model) {
    case Model::Grey:
        return packGrey<pack>;
    case Model::YCbCr:
        return packYCbCr<pack>;
    case Model::Rgb:
        return packRgb<RedLow, GreenBits>;
    default:
        throw Error("a CMYK picture has no packed pixels");
    }
}

} // namespace

Canvas::Conversion Canvas::conversion(Model model, Packing packing) {
    switch (packing) {
    case Packing::rgb565:
        return packingFrom<zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R, true, 6>(model);
    case Packing::bgr565:
        return packingFrom<zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R, false, 6>(model);
    case Packing::rgb555:
        return packingFrom<zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R, true, 5>(model);
    case Packing::bgr555:
        return packingFrom<zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, false, 5>(model);
    case Packing::none:
        break;
    }
    switch (model) {
    case Model::Grey:
        return interleave<1>;
    case Model::YCbCr:
        return zmxiYCbCrToRGB_JPEG_8u_P3C3R;
    case Model::Rgb:
        return interleave<3>;
    case Model::Ycck:
        return zmxiYCCKToCMYK_JPEG_8u_P4C4R;
    default:
        return interleave<4>;
    }
}

Canvas::Canvas(Model model, Packing packing, Picture& p)
    : convert(conversion(model, packing)),
      pixels(packing == Packing::none ? p.pixels.data() : reinterpret_cast<Zmx8u*>(p.wide.data())), width(p.width),
      height(p.height), pixelBytes(packing == Packing::none ? p.channels : int(sizeof(Zmx16u))) {}

void Canvas::put(const Zmx8u* const* planes, int planeStep, int left, int top, ZmxiSize size) const {
    const ZmxiSize visible{std::min(size.width, width - left), std::min(size.height, height - top)};
    if (visible.width < 1 || visible.height < 1) return; // nothing but the rounding of a reduced size
    const int step = width * pixelBytes;
    convert(planes, planeStep, pixels + std::ptrdiff_t(top) * step + std::ptrdiff_t(left) * pixelBytes, step, visible);
}

} // namespace jpeg
