// tiffmetadata.cpp - colour profile, EXIF, XMP and resolution as tags. EXIF is the odd one: in a TIFF file its first
// directory is the picture's own, and the others hang on it.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tiffmetadata.h"

#include "codecs/picture/exif.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace codecs {
namespace {

// Tags of EXIF's first directory that describe the picture; the others say where its samples are.
constexpr std::uint16_t kDescribing[] = {kExifDescription, kExifMake,     kExifModel,  kExifOrientation,
                                         kExifSoftware,    kExifDateTime, kExifArtist, kExifHostComputer,
                                         kExifCopyright,   kExifDetails,  kExifGps};
bool describes(const ExifEntry& e) {
    return std::find(std::begin(kDescribing), std::end(kDescribing), e.tag) != std::end(kDescribing);
}

Bytes readExif(const TiffFile& file) {
    auto directory = parseExif(file.input());
    if (!directory) return {};
    std::erase_if(*directory, [](const ExifEntry& e) {
        const bool upright = e.tag == kExifOrientation && e.value == Bytes{1, 0};
        return upright || !describes(e);
    });
    return directory->empty() ? Bytes{} : serialiseExif(*directory);
}

void writeExif(TiffFile& file, const Bytes& exif) {
    const auto directory = parseExif(exif);
    if (!directory) return;
    constexpr std::uint16_t kText = 2;
    for (const ExifEntry& e : *directory) {
        if (!describes(e)) continue;
        if (!e.children.empty()) {
            // It has to be known where a directory begins before it can be written.
            const std::uint64_t at = file.append({});
            file.append(serialiseDirectory(e.children, at, file.isBig()));
            TIFFSetField(file.get(), e.tag, at);
        } else if (e.tag == kExifOrientation && e.value.size() == 2) {
            file.set(e.tag, e.value[0]);
        } else if (e.type == kText) {
            TIFFSetField(file.get(), e.tag, std::string(e.value.begin(), e.value.end()).c_str());
        }
    }
}

// libtiff hands a fraction out as a float. What was written is the shortest decimal number that this float stands for:
// 118.11 and not 118.11000061.
double meant(float v) {
    // std::to_chars would say it at once, but not every standard library has it for floats.
    double number = v;
    for (int digits = 1; v != std::floor(v) && digits <= std::numeric_limits<float>::max_digits10; ++digits) {
        char text[32];
        std::snprintf(text, sizeof text, "%.*g", digits, double(v));
        number = std::strtod(text, nullptr);
        if (float(number) == v) break;
    }
    return number;
}

} // namespace

Metadata readMetadata(const TiffFile& file) {
    Metadata m{file.bytes(TIFFTAG_ICCPROFILE), readExif(file), file.bytes(TIFFTAG_XMLPACKET), {}};
    float x = 0, y = 0;
    if (TIFFGetField(file.get(), TIFFTAG_XRESOLUTION, &x) && TIFFGetField(file.get(), TIFFTAG_YRESOLUTION, &y) &&
        x > 0 && y > 0) {
        const unsigned unit = file.tag<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        m.resolution = {meant(x), meant(y),
                        unit == RESUNIT_INCH         ? Resolution::Unit::inch
                        : unit == RESUNIT_CENTIMETER ? Resolution::Unit::centimetre
                                                     : Resolution::Unit::none};
    }
    return m;
}

void writeMetadata(TiffFile& file, const Metadata& m) {
    if (!m.icc.empty()) file.setBytes(TIFFTAG_ICCPROFILE, m.icc);
    if (!m.xmp.empty()) file.setBytes(TIFFTAG_XMLPACKET, m.xmp);
    if (!m.exif.empty()) writeExif(file, m.exif);
    if (!m.resolution) return;
    // A TIFF file has no metres.
    using Unit = Resolution::Unit;
    const Resolution r = m.resolution->unit == Unit::metre ? m.resolution->in(Unit::centimetre) : *m.resolution;
    file.set(TIFFTAG_RESOLUTIONUNIT, r.unit == Unit::inch         ? RESUNIT_INCH
                                     : r.unit == Unit::centimetre ? RESUNIT_CENTIMETER
                                                                  : RESUNIT_NONE);
    if (!TIFFSetField(file.get(), TIFFTAG_XRESOLUTION, r.x) || !TIFFSetField(file.get(), TIFFTAG_YRESOLUTION, r.y))
        file.fail("the resolution cannot be written");
}

} // namespace codecs
