// codestream.cpp - the main header, from SOC to the first SOT (A.4, A.5).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/codestream.h"

#include "codecs/jpeg2000/markers.h"

namespace codecs::jpeg2000 {

Segment readSegment(ByteReader& in) {
    const int marker = in.u16();
    if (marker < 0xFF00) throw Error("no marker where one is due, at byte " + std::to_string(in.position() - 2));
    // These have no length; 0xFF30 to 0xFF3F are kept free for others of the kind (A.1).
    if (marker == SOD || marker == EOC || (marker >= 0xFF30 && marker <= 0xFF3F)) return {marker, {}};
    const int length = in.u16();
    if (length < 2) throw Error("a marker segment with a length of " + std::to_string(length));
    return {marker, in.take(std::size_t(length) - 2)};
}

Codestream readMainHeader(ByteView file) {
    Codestream stream;
    stream.file = file;
    ByteReader in(file, "the file");
    if (file.size() < 2 || in.u16() != SOC) throw Error("not a JPEG2000 codestream");
    Segment s = readSegment(in);
    // All that follows depends on the sizes.
    if (s.marker != SIZ) throw Error("no SIZ segment behind SOC");
    stream.size = readSiz(s.content);
    const std::size_t components = stream.size.components.size();
    stream.main.coding.resize(components);
    stream.main.quant.resize(components);
    stream.main.roiShift.resize(components);
    HeaderReader reader(stream.main);
    for (;;) {
        stream.firstPart = in.position();
        s = readSegment(in);
        if (s.marker == SOT) break;
        if (s.marker == SOD || s.marker == EOC) throw Error("a main header without tiles");
        reader.take(s.marker, s.content);
        stream.mainSegments.push_back(s);
    }
    // Both are required in the main header (Table A.2); the others have defaults.
    if (!reader.complete()) throw Error("a main header without COD or QCD");
    return stream;
}

HeaderSet tileHeaders(const Codestream& stream, const TileData& tile) {
    // What a tile says of itself comes ahead of what the main header says (A.6).
    HeaderSet headers = stream.main;
    HeaderReader reader(headers);
    for (const Segment& s : tile.segments) reader.take(s.marker, s.content);
    return headers;
}

} // namespace codecs::jpeg2000
