// exif.h - EXIF as the directories that it is made of (CIPA DC-008; the directories are those of TIFF 6.0, section 2).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/picture.h"

namespace codecs {

struct ExifEntry;
using ExifDirectory = std::vector<ExifEntry>;

struct ExifEntry {
    std::uint16_t tag = 0, type = 0;
    std::uint64_t count = 0;
    Bytes value;            // of a directory's entries: the low byte of each number first
    ExifDirectory children; // of an entry that points to another directory
    std::uint64_t at = 0;   // where the value stands in what was read
};

// Tags that are looked for.
enum ExifTag : std::uint16_t {
    kExifDescription = 270,
    kExifMake = 271,
    kExifModel = 272,
    kExifOrientation = 274,
    kExifAcross = 282, // pixels a length, a fraction
    kExifDown = 283,
    kExifUnit = 296,
    kExifSoftware = 305,
    kExifDateTime = 306,
    kExifArtist = 315,
    kExifHostComputer = 316,
    kExifCopyright = 33432,
    kExifDetails = 34665, // a directory: what is meant by EXIF in a TIFF file
    kExifGps = 34853,     // a directory
    kExifInterop = 40965, // a directory within the details
    kExifWidth = 40962,   // of the picture, within the details
    kExifHeight = 40963,
};

// The first directory of EXIF or of a TIFF file, with those that hang on it. None where it is damaged.
std::optional<ExifDirectory> parseExif(ByteSource& bytes);
std::optional<ExifDirectory> parseExif(ByteView bytes);

// A directory as it stands at `base` of a little-endian file, with all that belongs to it behind it; `big` for BigTIFF.
Bytes serialiseDirectory(const ExifDirectory& directory, std::uint64_t base, bool big = false);
// EXIF with this first directory.
Bytes serialiseExif(const ExifDirectory& directory);

const ExifEntry* findEntry(const ExifDirectory& directory, std::uint16_t tag);
// What it says of the resolution; none where that is not whole, or nothing (JEITA CP-3451, 4.6.4 A).
std::optional<Resolution> resolutionIn(const ExifDirectory& directory);
// Writes another number over a single one of 16 or 32 bits, where it stands in the EXIF that it was read from; false:
// it is of another kind, and stays.
bool overwriteNumber(Bytes& exif, const ExifEntry& entry, unsigned value);
// A number of 16 bits, as an entry.
ExifEntry shortEntry(std::uint16_t tag, unsigned value);

} // namespace codecs
