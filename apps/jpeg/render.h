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
};

// Writes into `picture`, which has its size; `tables` is one for each component. `scale` is 1, 2, 4 or 8.
std::unique_ptr<Renderer> makeRenderer(const Frame& frame, Model model, const std::vector<DequantTable>& tables,
                                       int scale, Picture& picture);

} // namespace jpeg
