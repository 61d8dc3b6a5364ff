// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/mcu.h"

#include "tests/frame/model/primitives.h"
#include "tests/jpeg/model/word.h"

#include <cstddef>
#include <cstring>

namespace model {

namespace {

bool halfWidth(Sampling s) { return s != Sampling::S444; }
bool halfHeight(Sampling s) { return s == Sampling::S411; }

int lumaIndex(Sampling s, int x, int y) {
    switch (s) {
    case Sampling::S444:
        return 8 * y + x;
    case Sampling::S422:
        return 64 * (x / 8) + 8 * y + x % 8;
    case Sampling::S411:
        break;
    }
    return 64 * (2 * (y / 8) + x / 8) + 8 * (y % 8) + x % 8;
}

int chromaIndex(Sampling s, int x, int y) { return 8 * (halfHeight(s) ? y / 2 : y) + (halfWidth(s) ? x / 2 : x); }

struct Rgb {
    int r, g, b;
};

Rgb rgbFromYcc(int y, int cb, int cr) {
    const Word red = (Word(91881) * cr) >> 16, green = (Word(-22554) * cb + Word(-46802) * cr) >> 16,
               blue = (Word(116130) * cb) >> 16;
    return {limit8u((red + y + 128).value()), limit8u((green + y + 128).value()), limit8u((blue + y + 128).value())};
}

void storeWord(Zmx8u* d, int v) {
    const Zmx16u w = Zmx16u(v);
    std::memcpy(d, &w, 2);
}

Rgb unpack(Pixel p, const Zmx8u* s) {
    Zmx16u w;
    switch (p) {
    case Pixel::RGB:
        return {s[0], s[1], s[2]};
    case Pixel::BGR:
        return {s[2], s[1], s[0]};
    case Pixel::CMYK:
        return {255 - s[0], 255 - s[1], 255 - s[2]};
    case Pixel::BGR555:
        std::memcpy(&w, s, 2);
        return {w / 1024 % 32 * 8, w / 32 % 32 * 8, w % 32 * 8};
    case Pixel::BGR565:
        std::memcpy(&w, s, 2);
        return {w / 2048 * 8, w / 32 % 64 * 4, w % 32 * 8};
    default:
        return {};
    }
}

int floorDiv(int a, int b) { return a / b - (a % b < 0 ? 1 : 0); }

} // namespace

int unitWidth(Sampling s) { return halfWidth(s) ? 16 : 8; }
int unitHeight(Sampling s) { return halfHeight(s) ? 16 : 8; }
int planesOf(Pixel p) { return p == Pixel::CMYK ? 4 : 3; }
int pixelBytes(Pixel p) {
    if (p == Pixel::BGR555 || p == Pixel::BGR565 || p == Pixel::Pairs422) return 2;
    return p == Pixel::CMYK ? 4 : 3;
}
int planeSamples(Sampling s, int plane) { return plane == 1 || plane == 2 ? 64 : unitWidth(s) * unitHeight(s); }

void pixelsFromMcu(Sampling s, Pixel p, const Zmx16s* const* planes, Zmx8u* dst, int dstStep) {
    for (int y = 0; y < unitHeight(s); ++y)
        for (int x = 0; x < unitWidth(s); ++x) {
            const int luma = planes[0][lumaIndex(s, x, y)];
            const int cb = planes[1][chromaIndex(s, x, y)], cr = planes[2][chromaIndex(s, x, y)];
            const Rgb c = rgbFromYcc(luma, cb, cr);
            Zmx8u* d = dst + std::ptrdiff_t(y) * dstStep + x * pixelBytes(p);
            switch (p) {
            case Pixel::RGB:
                d[0] = Zmx8u(c.r), d[1] = Zmx8u(c.g), d[2] = Zmx8u(c.b);
                break;
            case Pixel::BGR:
                d[0] = Zmx8u(c.b), d[1] = Zmx8u(c.g), d[2] = Zmx8u(c.r);
                break;
            case Pixel::BGR555:
                storeWord(d, c.b / 8 + c.g / 8 * 32 + c.r / 8 * 1024);
                break;
            case Pixel::BGR565:
                storeWord(d, c.b / 8 + c.g / 4 * 32 + c.r / 8 * 2048);
                break;
            case Pixel::CMYK:
                d[0] = Zmx8u(255 - c.r), d[1] = Zmx8u(255 - c.g), d[2] = Zmx8u(255 - c.b);
                d[3] = Zmx8u((planes[3][lumaIndex(s, x, y)] + 128) & 255); // this channel alone wraps
                break;
            case Pixel::YCC:
                d[0] = limit8u(luma + 128), d[1] = limit8u(cb + 128), d[2] = limit8u(cr + 128);
                break;
            case Pixel::Pairs422:
                d[0] = limit8u(luma + 128), d[1] = limit8u((x % 2 ? cr : cb) + 128);
                break;
            }
        }
}

void mcuFromPixels(Sampling s, Pixel p, const Zmx8u* src, int srcStep, Zmx16s* const* planes) {
    const int across = halfWidth(s) ? 2 : 1, down = halfHeight(s) ? 2 : 1, covered = across * down;
    const auto at = [&](int x, int y) { return src + std::ptrdiff_t(y) * srcStep + x * pixelBytes(p); };
    for (int y = 0; y < unitHeight(s); ++y)
        for (int x = 0; x < unitWidth(s); ++x) {
            const Zmx8u* pixel = at(x, y);
            const Rgb c = unpack(p, pixel);
            const bool plain = p == Pixel::YCC || p == Pixel::Pairs422;
            planes[0][lumaIndex(s, x, y)] =
                Zmx16s((plain ? pixel[0] : (19595 * c.r + 38470 * c.g + 7471 * c.b) / 65536) - 128);
            if (p == Pixel::CMYK) planes[3][lumaIndex(s, x, y)] = Zmx16s(pixel[3] - 128);
        }
    for (int j = 0; j < unitHeight(s) / down; ++j)
        for (int i = 0; i < unitWidth(s) / across; ++i) {
            Zmx16s &cb = planes[1][8 * j + i], &cr = planes[2][8 * j + i];
            if (p == Pixel::Pairs422) {
                cb = Zmx16s(at(2 * i, j)[1] - 128);
                cr = Zmx16s(at(2 * i + 1, j)[1] - 128);
                continue;
            }
            Rgb sum{};
            int sumCb = 0, sumCr = 0;
            for (int v = 0; v < down; ++v)
                for (int h = 0; h < across; ++h) {
                    const Zmx8u* pixel = at(across * i + h, down * j + v);
                    const Rgb c = unpack(p, pixel);
                    sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b};
                    if (p == Pixel::YCC) sumCb += pixel[1], sumCr += pixel[2];
                }
            if (p == Pixel::YCC) {
                cb = Zmx16s(floorDiv(sumCb - 128 * covered, covered));
                cr = Zmx16s(floorDiv(sumCr - 128 * covered, covered));
            } else {
                cb = Zmx16s(floorDiv(-11059 * sum.r - 21709 * sum.g + 32768 * sum.b, 65536 * covered));
                cr = Zmx16s(floorDiv(32768 * sum.r - 27439 * sum.g - 5329 * sum.b, 65536 * covered));
            }
        }
}

} // namespace model
