// metadata.h - what travels beside the samples of a JPEG file: resolution in the JFIF segment (ITU-T T.871, clause 10.1),
// EXIF, XMP and colour profile in APP1 and APP2 segments.
#pragma once

#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/output.h"

namespace codecs::jpeg {

// The APPn and COM segments of a file, one behind the other, each with its marker and its length.
struct ApplicationSegment {
    int marker;
    ByteView all, body; // with marker and length, and without
};
std::vector<ApplicationSegment> segmentsOf(ByteView application);

// What they hold of it. Parts that cannot be used are told of.
Metadata metadataOf(ByteView application, Warnings& warnings);

// Writes it. Without `jfif` there is no segment for the resolution; with it there is one in any case. What does not fit
// is left out and told of.
void writeMetadata(Output& out, const Metadata& metadata, bool jfif, Warnings& warnings);

// The segments with another orientation, where their EXIF says one, and the resolution across and down exchanged.
Bytes turnedApplication(ByteView application, int orientation, bool exchanged, Warnings& warnings);
// Those alone by which a decoder knows the colours.
Bytes strippedApplication(ByteView application);

} // namespace codecs::jpeg
