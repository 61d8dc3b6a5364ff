// interpret.cpp - what the segments of a file mean for those that decode it.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/interpret.h"

namespace codecs::jpeg {

namespace {

// What the decoders cannot do, in words; empty: they can.
std::string unsupported(const Frame& frame) {
    if (frame.sof > SOF3)
        return frame.sof < SOF0 + 8 ? "hierarchical mode is not supported" : "arithmetic coding is not supported";
    // Table B.2: baseline has 8 bits, the other DCT modes 12 as well, lossless files 2 to 16.
    const int bits = frame.precision;
    const bool known = frame.lossless() ? bits >= 2 && bits <= 16 : bits == 8 || (bits == 12 && frame.sof != SOF0);
    if (!known) return std::to_string(bits) + "-bit samples are not supported";
    if (frame.components.size() == 2 && !frame.lossless()) return "a picture of 2 components is not supported";
    return {};
}

} // namespace

void toFirstScan(SegmentReader& reader, std::uint64_t maxPixels) {
    if (!reader.nextScan()) throw Error("the file holds no scan");
    const Frame& frame = reader.header().frame;
    if (const std::string what = unsupported(frame); !what.empty()) throw Error(what);
    checkSize(std::uint64_t(frame.width), std::uint64_t(frame.height), maxPixels);
}

// JFIF says YCbCr of three components, whatever an Adobe marker beside it says; of four only the latter speaks.
Model modelOf(const Header& h) {
    const std::vector<Component>& c = h.frame.components;
    if (c.size() == 1) return Model::grey;
    if (c.size() == 4) return h.adobe == 2 ? Model::ycck : Model::cmyk;
    if (h.jfif) return Model::yCbCr;
    if (h.adobe >= 0) return h.adobe == 0 ? Model::rgb : Model::yCbCr;
    // Without any marker the numbers of the components tell, by a custom of some encoders.
    return c[0].id == 'R' && c[1].id == 'G' && c[2].id == 'B' ? Model::rgb : Model::yCbCr;
}

Shape shapeFor(int width, int height, int channels, int precision) {
    Shape shape = shapeOf(width, height, channels, (1 << precision) - 1);
    if (channels == 4) shape.colour = Colour::cmyk, shape.alpha = false;
    return shape;
}

QuantTable quantTableOf(const Header& h, const Component& component) {
    const auto& table = h.quant[std::size_t(component.quant)];
    // As it stands ahead of the first scan of the component (B.2.4.1).
    if (!table) fail(h.scanOffset, "quantisation table " + std::to_string(component.quant) + " is missing");
    return *table;
}

} // namespace codecs::jpeg
