// render.h - from the coefficients of an MCU to pixels.
#pragma once

#include "jpeg/format.h"

#include <memory>

namespace jpeg {

using DequantTable = std::array<Zmx16u, kBlock>; // in natural order
DequantTable dequantTableOf(const QuantTable& table);

class Renderer {
public:
    virtual ~Renderer() = default;
    // `blocks`: the quantised coefficients of the MCU, component by component, each row by row.
    virtual void mcu(const Zmx16s* const* blocks, int column, int row) = 0;
    // Called behind the last MCU.
    virtual void finish() {}
};

// From planes of samples to the pixels of a picture.
using PlanesToPixels = void (*)(const Zmx8u* const* planes, int planeStep, Zmx8u* pixels, int step,
                                ZmxiSize size);
PlanesToPixels conversionFrom(Model model);

// Writes into `picture`, which has its size; `tables` is one for each component. `scale` is 1, 2, 4 or 8.
std::unique_ptr<Renderer> makeRenderer(const Frame& frame, Model model,
                                       const std::vector<DequantTable>& tables, int scale, Picture& picture);
// The same at full size, for 8-bit files, with chroma upsampled smoothly.
std::unique_ptr<Renderer> makeFancyRenderer(const Frame& frame, Model model, const std::vector<DequantTable>& tables,
                                            Picture& picture);
// The same for 12-bit files; makeRenderer comes to it.
std::unique_ptr<Renderer> makeWideRenderer(const Frame& frame, Model model,
                                           const std::vector<DequantTable>& tables, int scale,
                                           Picture& picture);

} // namespace jpeg
