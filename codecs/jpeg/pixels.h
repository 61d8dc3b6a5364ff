// pixels.h - from planes of 8-bit samples to the pixels of a picture.
#pragma once

#include "codecs/jpeg/format.h"

namespace jpeg {

class Canvas {
public:
    // On `picture`, which has its shape. An Error when the colours have no such form.
    Canvas(Model model, Packing packing, Picture& picture);

    // Makes the pixels from (left, top) on, as far as they lie in the picture.
    void put(const Zmx8u* const* planes, int planeStep, int left, int top, ZmxiSize size) const;

private:
    using Conversion = ZmxStatus (*)(const Zmx8u* const* planes, int planeStep, Zmx8u* pixels, int step, ZmxiSize size);
    static Conversion conversion(Model model, Packing packing);

    Conversion convert;
    Zmx8u* pixels;
    int width, height, pixelBytes;
};

} // namespace jpeg
