// render.h - from the coefficients of an MCU to pixels.
#pragma once

#include "codecs/jpeg/format.h"

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

// Writes into `picture`, which has its shape; `tables` is one for each component.
std::unique_ptr<Renderer> makeRenderer(const Frame& frame, Model model, const std::vector<DequantTable>& tables,
                                       const DecodeOptions& options, Picture& picture);
// Those that makeRenderer comes to: for chroma that is upsampled smoothly in 8-bit files at full size, and for
// 12-bit files.
class Canvas;
std::unique_ptr<Renderer> makeFancyRenderer(const Frame& frame, const std::vector<DequantTable>& tables,
                                            const Canvas& canvas);
std::unique_ptr<Renderer> makeWideRenderer(const Frame& frame, Model model, const std::vector<DequantTable>& tables,
                                           int scale, Picture& picture);

} // namespace jpeg
