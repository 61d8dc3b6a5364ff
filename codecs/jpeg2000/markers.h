// markers.h - single marker segments (A.5, A.6), read into and written from parameters.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/numbers.h"
#include "codecs/jpeg2000/parameters.h"

namespace codecs::jpeg2000 {

// Width of the fields that hold a component's number: two bytes from 257 components on.
constexpr int componentBytes(std::size_t components) { return components < 257 ? 1 : 2; }

ImageSize readSiz(ByteView content);

// Takes the segments of one header in. A component's own segment (COC, QCC) counts more than the one for all
// components (COD, QCD) of the same header, in whatever order they come.
class HeaderReader {
    HeaderSet& set;
    std::vector<bool> ownCoding, ownQuant;
    bool hasCoding = false, hasQuant = false, hasChanges = false;

    std::size_t component(ByteReader& in) const;
    void takeCod(ByteReader& in);
    void takeQcd(ByteReader& in);
    void takePoc(ByteReader& in);

public:
    explicit HeaderReader(HeaderSet& headers);
    // Markers that do not concern the coding are passed over.
    void take(int marker, ByteView content);
    bool complete() const { return hasCoding && hasQuant; }
};

void writeSiz(ByteWriter& out, const ImageSize& size);
void writeCod(ByteWriter& out, const TileStyle& tile, const CodingStyle& style);
void writeCoc(ByteWriter& out, const CodingStyle& style, std::size_t component, std::size_t components);
void writeRgn(ByteWriter& out, int shift, std::size_t component, std::size_t components);
void writeQcd(ByteWriter& out, const Quantization& quant);
void writePoc(ByteWriter& out, const std::vector<ProgressionChange>& changes, std::size_t components);
void writeQcc(ByteWriter& out, const Quantization& quant, std::size_t component, std::size_t components);

} // namespace codecs::jpeg2000
