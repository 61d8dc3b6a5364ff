// tifflayout.cpp - tags of TIFF 6.0, one group after the other: size, kind of samples, colour, strips or tiles.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tifflayout.h"

#include <algorithm>

namespace codecs {
namespace {

void readSize(const TiffFile& file, std::uint64_t maxPixels, TiffLayout& h) {
    const auto width = file.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0),
               height = file.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    try {
        checkSize(width, height, maxPixels);
    } catch (const Error& e) {
        file.fail(e.what());
    }
    h.shape.width = int(width);
    h.shape.height = int(height);
}

void readSamples(const TiffFile& file, TiffLayout& h) {
    const unsigned bits = file.tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1),
                   channels = file.tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1),
                   format = file.tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT),
                   planes = file.tag<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_IEEEFP && format != SAMPLEFORMAT_VOID)
        file.refuse("SampleFormat", format);
    h.isFloat = format == SAMPLEFORMAT_IEEEFP;
    const bool known =
        h.isFloat ? bits == 16 || bits == 24 || bits == 32 || bits == 64 : (bits >= 1 && bits <= 16) || bits == 32;
    if (!known) file.refuse("BitsPerSample", bits);
    if (channels < 1 || channels > 64) file.refuse("SamplesPerPixel", channels);
    if (planes != PLANARCONFIG_CONTIG && planes != PLANARCONFIG_SEPARATE) file.refuse("PlanarConfiguration", planes);
    h.bits = int(bits);
    h.channels = int(channels);
    h.planar = planes == PLANARCONFIG_SEPARATE && channels > 1;
    if (bits == 32 && !h.isFloat) h.warnings.push_back("samples of 32 bits are kept to 16");
}

// The channels behind the colours: alpha if there is one, and what no picture has a place for.
void readExtra(const TiffFile& file, unsigned colours, TiffLayout& h) {
    const unsigned extra = unsigned(h.channels) - colours;
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    const bool told = TIFFGetField(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) && count > 0;
    h.shape.alpha = extra > 0;
    h.premultiplied = extra > 0 && told && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
    h.shape.channels = int(colours + (extra > 0));
    if (extra > 1) h.warnings.push_back(std::to_string(extra - 1) + " further channels are left out");
}

void readPalette(const TiffFile& file, TiffLayout& h) {
    if (h.channels != 1) file.refuse("SamplesPerPixel", unsigned(h.channels));
    if (h.bits > 8 || h.isFloat) file.refuse("BitsPerSample", unsigned(h.bits));
    h.colour = TiffColour::palette;
    h.shape.colour = Colour::rgb;
    h.shape.channels = 3;
    h.shape.maxval = 255; // tiffsamples looks whether the colours have more
}

// JPEG is converted within its own decoder, row by row; all else through libtiff's general way to RGB.
void readConverted(const TiffFile& file, unsigned photometric, TiffLayout& h) {
    const unsigned compression = file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    h.shape.colour = Colour::rgb;
    h.shape.channels = 3;
    h.shape.maxval = 255;
    if (photometric == PHOTOMETRIC_YCBCR && compression == COMPRESSION_JPEG && h.channels == 3 && h.bits == 8 &&
        !h.planar) {
        file.set(TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        return;
    }
    char why[1024] = "";
    if (!TIFFRGBAImageOK(file.get(), why))
        file.fail("PhotometricInterpretation " + std::to_string(photometric) + " is not supported");
    h.colour = TiffColour::converted;
}

void readColour(const TiffFile& file, TiffLayout& h) {
    const unsigned photometric = file.tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF),
                   inks = file.tag<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK);
    h.shape.maxval = h.rawMaxval();
    unsigned colours = 1;
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
        h.inverted = true;
        break;
    case PHOTOMETRIC_MINISBLACK:
        break;
    case PHOTOMETRIC_RGB:
        colours = 3;
        h.shape.colour = Colour::rgb;
        break;
    case PHOTOMETRIC_SEPARATED: {
        if (inks != INKSET_CMYK) file.refuse("InkSet", inks);
        colours = 4;
        h.shape.colour = Colour::cmyk;
        // Where there is no ink and where there is all of it (TIFF 6.0, section 16).
        std::uint16_t none = 0, all = 1;
        if (TIFFGetField(file.get(), TIFFTAG_DOTRANGE, &none, &all)) h.inverted = none > all;
        break;
    }
    case PHOTOMETRIC_PALETTE:
        return readPalette(file, h);
    case PHOTOMETRIC_YCBCR:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
        return readConverted(file, photometric, h);
    default:
        file.refuse("PhotometricInterpretation", photometric);
    }
    if (unsigned(h.channels) < colours) file.refuse("SamplesPerPixel", unsigned(h.channels));
    readExtra(file, colours, h);
}

void readPieces(const TiffFile& file, std::uint64_t maxPixels, TiffLayout& h) {
    h.tiled = TIFFIsTiled(file.get());
    h.pieceWidth = unsigned(h.shape.width);
    h.pieceHeight = std::min(file.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, UINT32_MAX), unsigned(h.shape.height));
    if (h.tiled) {
        h.pieceWidth = file.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 0);
        h.pieceHeight = file.tag<std::uint32_t>(TIFFTAG_TILELENGTH, 0);
        if (std::uint64_t(h.pieceWidth) * h.pieceHeight > maxPixels)
            file.fail("tiles of more pixels than the limit allows");
    }
    if (h.pieceWidth < 1 || h.pieceHeight < 1) file.fail("strips or tiles without pixels");
}

} // namespace

TiffLayout layoutOf(const TiffFile& file, std::uint64_t maxPixels) {
    TiffLayout h;
    readSize(file, maxPixels, h);
    readSamples(file, h);
    readColour(file, h);
    readPieces(file, maxPixels, h);
    file.needSound();
    if (!TIFFLastDirectory(file.get())) h.warnings.push_back("only the first of its pictures is read");
    return h;
}

} // namespace codecs
