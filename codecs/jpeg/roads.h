// roads.h - the ways between rows of pixels and the quantised coefficients of their MCUs, in both directions.
//
// The unit road takes whole MCUs through one function of the library, which converts colours without rounding. The plane
// road makes planes of the components of a row of MCUs, converts with rounding, and serves every sampling and the reduced
// sizes. The wide road is the plane road of 12-bit samples. Each stands in a file a direction: unitencode.cpp and
// unitdecode.cpp, planeencode.cpp and planedecode.cpp, wideencode.cpp and widedecode.cpp.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/quantise.h"

#include <memory>

namespace codecs::jpeg {

// From pixels to coefficients.
class EncodeRoad {
public:
    virtual ~EncodeRoad() = default;
    // The rows of pixels that the next row of MCUs covers, fewer of them only at the end of the picture. They are looked
    // at until the next call.
    virtual void load(const Band& pixels) = 0;
    // An MCU of this row, into `blocks`: component by component, each row by row.
    virtual void mcu(int column, Zmx16s* const* blocks) = 0;
};

// From coefficients to pixels.
class DecodeRoad {
public:
    virtual ~DecodeRoad() = default;
    // An MCU of the next row, from `blocks`: component by component, each row by row.
    virtual void mcu(int column, const Zmx16s* const* blocks) = 0;
    // Behind the last MCU of a row: the rows of pixels that are done with it. They stay until the next call of mcu().
    virtual Band unload() = 0;
};

// Each component of the frame names one of the quantisers.
using Quantisers = std::vector<Quantiser>;
std::unique_ptr<EncodeRoad> makeEncodeRoad(const Frame& frame, Model model, const Quantisers& quantisers,
                                           const EncodeOptions& options);
// `tables` is one for each component.
using DequantTables = std::vector<DequantTable>;
std::unique_ptr<DecodeRoad> makeDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                           const DecodeOptions& options);

// Those that they come to.
struct Unit;
std::unique_ptr<EncodeRoad> makeUnitEncodeRoad(const Frame& frame, const Unit& unit, const Quantisers& quantisers);
std::unique_ptr<DecodeRoad> makeUnitDecodeRoad(const Frame& frame, const Unit& unit, const DequantTables& tables);
std::unique_ptr<EncodeRoad> makePlaneEncodeRoad(const Frame& frame, Model model, const Quantisers& quantisers, Dct dct);
std::unique_ptr<DecodeRoad> makePlaneDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                                const DecodeOptions& options);
std::unique_ptr<EncodeRoad> makeWideEncodeRoad(const Frame& frame, Model model, const Quantisers& quantisers);
std::unique_ptr<DecodeRoad> makeWideDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                               const DecodeOptions& options);

} // namespace codecs::jpeg
