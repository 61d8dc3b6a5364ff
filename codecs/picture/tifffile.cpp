// tifffile.cpp - libtiff's files: opening, messages, and what both directions say in tags.
#include "codecs/picture/tifffile.h"

#include <algorithm>
#include <cstdio>

TiffFile::TiffFile(const std::string& name, const char* mode) : path(name) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep, this);
    TIFFOpenOptionsSetWarningHandlerExtR(
        options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, this);
    handle.reset(TIFFOpenExt(path.c_str(), mode, options.get()));
    if (!handle) fail("not readable as a TIFF file");
}

int TiffFile::keep(TIFF*, void* file, const char*, const char* format, va_list values) {
    std::string& text = static_cast<TiffFile*>(file)->told;
    char line[300];
    std::vsnprintf(line, sizeof line, format, values);
    if (text.empty()) text = line; // the first is the cause
    return 1;
}

void TiffFile::fail(const std::string& what) const {
    std::string why = told;
    std::replace(why.begin(), why.end(), '\n', ' ');
    throw ImageError(path + ": TIFF: " + what + (why.empty() ? "" : " (" + why + ")"));
}

void TiffFile::setAlpha() const {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (!TIFFSetField(get(), TIFFTAG_EXTRASAMPLES, 1, &alpha)) fail("the alpha channel cannot be written");
}

void TiffFile::finish() const {
    if (!TIFFFlush(get())) fail("the directory cannot be written");
}

TiffPicture pictureOf(const TiffFile& file, std::size_t maxPixels) {
    const auto width = file.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0),
               height = file.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    const std::string size = sizeText(width, height);
    if (width < 1 || height < 1) file.fail(size);
    if (std::uint64_t(width) * height > maxPixels) file.fail(size + ": more pixels than the limit allows");
    const unsigned bits = file.tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1),
                   channels = file.tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1),
                   photometric = file.tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF),
                   inks = file.tag<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK),
                   format = file.tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT),
                   planes = file.tag<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG),
                   orientation = file.tag<std::uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const bool grey = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE,
               cmyk = photometric == PHOTOMETRIC_SEPARATED;
    if (!grey && !cmyk && photometric != PHOTOMETRIC_RGB) file.refuse("PhotometricInterpretation", photometric);
    if (cmyk && inks != INKSET_CMYK) file.refuse("InkSet", inks);
    const unsigned colours = grey ? 1 : cmyk ? 4 : 3;
    if (channels < colours || channels > colours + !cmyk) file.refuse("SamplesPerPixel", channels);
    if (bits != 8 && bits != 16 && !(bits == 1 && channels == 1)) file.refuse("BitsPerSample", bits);
    if (format != SAMPLEFORMAT_UINT) file.refuse("SampleFormat", format);
    if (planes != PLANARCONFIG_CONTIG && planes != PLANARCONFIG_SEPARATE) file.refuse("PlanarConfiguration", planes);
    if (orientation != ORIENTATION_TOPLEFT) file.refuse("Orientation", orientation);

    bool inverted = photometric == PHOTOMETRIC_MINISWHITE;
    if (inverted && channels == 2) file.fail("alpha beside a scale from white to black is not supported");
    // Where there is no ink and where there is all of it (TIFF 6.0, section 16).
    std::uint16_t none = 0, all = 1;
    if (cmyk && TIFFGetField(file.get(), TIFFTAG_DOTRANGE, &none, &all)) inverted = none > all;
    return {{int(width), int(height), int(channels), (1 << bits) - 1, {}, cmyk},
            int(bits),
            inverted,
            planes == PLANARCONFIG_SEPARATE && channels > 1};
}

std::string sizeText(std::int64_t width, std::int64_t height) {
    return "a picture of " + std::to_string(width) + " by " + std::to_string(height);
}
