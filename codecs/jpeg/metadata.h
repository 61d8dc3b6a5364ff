// metadata.h - what travels beside the samples of a JPEG file: resolution in the JFIF segment (ITU-T T.871, clause 10.1),
// EXIF, XMP and colour profile in APP1 and APP2 segments.
// SPDX-License-Identifier: BSD-2-Clause
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

// What has become of a picture.
struct Turned {
    int orientation = 1;
    bool exchanged = false; // its sides
    int width = 0, height = 0;
};
// The segments of such a picture: orientation and size in their EXIF where it has them, and the resolution across and down.
Bytes turnedApplication(ByteView application, const Turned& picture, Warnings& warnings);
// Those alone by which a decoder knows the colours.
Bytes strippedApplication(ByteView application);

} // namespace codecs::jpeg
