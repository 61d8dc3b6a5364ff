// roads.cpp - which road a picture takes.
#include "codecs/jpeg/roads.h"

#include "codecs/jpeg/units.h"

#include <numeric>

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

namespace {

// The colour conversion of units rounds nothing, which costs up to 1 dB at quality 90 and more above. That of
// planes rounds, and takes as long but for 4:2:0, where coarser pictures go by units in any case.
bool wantsRounding(const Unit& unit, const DequantTable& luma, bool fast) {
    constexpr int kFineMean = 10;
    const bool fine = std::accumulate(luma.begin(), luma.end(), 0) < kFineMean * kBlock;
    return isChroma(unit.model, 1) && !fast && (unit.v == 1 || fine);
}

} // namespace

std::unique_ptr<DecodeRoad> makeDecodeRoad(const Frame& frame, Model model, const DequantTables& tables,
                                           const DecodeOptions& options) {
    const bool wide = frame.precision != 8, packed = options.packing != Packing::none,
               smooth = options.upsampling == Upsampling::smooth;
    if (packed && wide) throw Error("packed pixels are made of 8-bit files only");
    if (smooth && (wide || options.scale != 1))
        throw Error("chroma is upsampled smoothly in 8-bit pictures of full size only");
    if (wide) return makeWideDecodeRoad(frame, model, tables, options);
    const Unit* unit = options.scale == 1 && !packed && !smooth ? unitFor(model, frame.components) : nullptr;
    if (unit && !wantsRounding(*unit, tables[0], options.fast)) return makeUnitDecodeRoad(frame, *unit, tables);
    return makePlaneDecodeRoad(frame, model, tables, options);
}

} // namespace codecs::jpeg
