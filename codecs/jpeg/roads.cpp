// roads.cpp - which road a picture takes.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/roads.h"

#include "codecs/jpeg/units.h"

namespace codecs::jpeg {

std::unique_ptr<EncodeRoad> makeEncodeRoad(const Frame& frame, Model model, const Quantisers& quantisers,
                                           const EncodeOptions& options) {
    if (frame.precision != 8) return makeWideEncodeRoad(frame, model, quantisers);
    const Unit* unit = unitFor(model, frame.components);
    const Dct dct = options.fast ? Dct::integer : options.dct;
    // There is nothing to round in a picture that is neither converted nor sampled.
    const bool plain = dct == Dct::integer && !isChroma(model, 1) && frame.hMax == 1;
    if (unit && (options.fast || plain)) return makeUnitEncodeRoad(frame, *unit, quantisers);
    return makePlaneEncodeRoad(frame, model, quantisers, dct);
}

std::unique_ptr<DecodeRoad> makeDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                           const DecodeOptions& options) {
    const bool wide = frame.precision != 8, packed = options.packing != Packing::none;
    if (packed && wide) throw Error("packed pixels are made of 8-bit files only");
    if (wide) return makeWideDecodeRoad(frame, model, tables, options);
    const bool units = options.fast && options.scale == 1 && !packed;
    const Unit* unit = units ? unitFor(model, frame.components) : nullptr;
    if (unit) return makeUnitDecodeRoad(frame, *unit, tables);
    return makePlaneDecodeRoad(frame, model, tables, options);
}

} // namespace codecs::jpeg
