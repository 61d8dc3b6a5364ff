// units.cpp - the table of MCU functions.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/units.h"

namespace codecs::jpeg {

namespace {

// Grey is not converted, only shifted (A.3.1).
ZmxStatus greyFromPixels(const Zmx8u* pixels, int step, Zmx16s* const* planes) {
    return zmxiSub128_JPEG_8u16s_C1R(pixels, step, planes[0], 16, {8, 8});
}
ZmxStatus greyToPixels(const Zmx16s* const* planes, Zmx8u* pixels, int step) {
    return zmxiAdd128_JPEG_16s8u_C1R(planes[0], 16, pixels, step, {8, 8});
}

// CMYK as it is: the library converts CMYK units to and from YCCK only.
ZmxStatus cmykFromPixels(const Zmx8u* pixels, int step, Zmx16s* const* planes) {
    for (int y = 0; y < 8; ++y, pixels += step)
        for (int x = 0; x < 8; ++x)
            for (int c = 0; c < 4; ++c) planes[c][8 * y + x] = Zmx16s(pixels[4 * x + c] - 128);
    return zmxStsNoErr;
}
ZmxStatus cmykToPixels(const Zmx16s* const* planes, Zmx8u* pixels, int step) {
    for (int y = 0; y < 8; ++y, pixels += step)
        for (int x = 0; x < 8; ++x)
            for (int c = 0; c < 4; ++c) pixels[4 * x + c] = Zmx8u(std::clamp(planes[c][8 * y + x] + 128, 0, 255));
    return zmxStsNoErr;
}

// Grey and CMYK have no function of the library, all other units have one in each direction.
const Unit kUnits[] = {
    {Model::grey, 1, 1, greyFromPixels, greyToPixels},
    {Model::yCbCr, 1, 1, zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R, zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R},
    {Model::yCbCr, 2, 1, zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R, zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R},
    {Model::yCbCr, 2, 2, zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R, zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R},
    {Model::rgb, 1, 1, zmxiSampleDown444LS_MCU_8u16s_C3P3R, zmxiSampleUp444LS_MCU_16s8u_P3C3R},
    {Model::rgb, 2, 1, zmxiSampleDown422LS_MCU_8u16s_C3P3R, zmxiSampleUp422LS_MCU_16s8u_P3C3R},
    {Model::rgb, 2, 2, zmxiSampleDown411LS_MCU_8u16s_C3P3R, zmxiSampleUp411LS_MCU_16s8u_P3C3R},
    {Model::ycck, 1, 1, zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R, zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R},
    {Model::ycck, 2, 1, zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R, zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R},
    {Model::ycck, 2, 2, zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R, zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R},
    {Model::cmyk, 1, 1, cmykFromPixels, cmykToPixels},
};

} // namespace

// Components are numbered from 1, as JFIF wants it.
std::vector<Component> componentsOf(Model model, int h, int v) {
    std::vector<Component> components;
    for (int i = 0; i < channelsOf(model); ++i) {
        const bool chroma = i == 1 || i == 2;
        components.push_back({i + 1, chroma ? 1 : h, chroma ? 1 : v, 0});
    }
    return components;
}

// Sampling decides, whatever the numbers and tables of the components are.
const Unit* unitFor(Model model, const std::vector<Component>& components) {
    for (const Unit& unit : kUnits) {
        if (unit.model != model) continue;
        const std::vector<Component> want = componentsOf(model, unit.h, unit.v);
        if (std::equal(want.begin(), want.end(), components.begin(), components.end(),
                       [](const Component& a, const Component& b) { return a.h == b.h && a.v == b.v; }))
            return &unit;
    }
    return nullptr;
}

} // namespace codecs::jpeg
