// tifffile.cpp - libtiff over our streams of bytes: its calls, its messages, and what both directions say in tags.
#include "codecs/picture/tifffile.h"

#include "codecs/picture/bytefile.h"

#include <algorithm>
#include <cstdio>

namespace codecs {

TiffFile::TiffFile(std::unique_ptr<ByteSource> bytes) : source(std::move(bytes)) { open("rm"); }

TiffFile::TiffFile(std::unique_ptr<ByteSink> bytes, bool big) : sink(std::move(bytes)) {
    if (!sink->seekable()) sink = std::make_unique<SpooledSink>(std::move(sink));
    open(big ? "w8" : "w");
}

void TiffFile::open(const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep, this);
    TIFFOpenOptionsSetWarningHandlerExtR(
        options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, this);
    handle.reset(TIFFClientOpenExt(
        "", mode, this, read, write, seek, [](thandle_t) { return 0; }, sizeOf, nullptr, nullptr, options.get()));
    if (!handle) fail("not readable as a TIFF file");
}

template <class Code> auto TiffFile::guarded(Code code) -> decltype(code()) {
    try {
        return code();
    } catch (...) {
        if (!thrown) thrown = std::current_exception();
        return decltype(code())(-1);
    }
}

tmsize_t TiffFile::read(thandle_t handle, void* to, tmsize_t n) {
    TiffFile& f = of(handle);
    return f.guarded([&] {
        const std::span<std::uint8_t> room(static_cast<std::uint8_t*>(to), std::size_t(n));
        const std::size_t got = f.source ? f.source->readAt(f.place, room) : f.sink->readBack(f.place, room);
        f.place += got;
        return tmsize_t(got);
    });
}

tmsize_t TiffFile::write(thandle_t handle, void* from, tmsize_t n) {
    TiffFile& f = of(handle);
    return f.guarded([&] {
        const ByteView bytes(static_cast<const std::uint8_t*>(from), std::size_t(n));
        if (f.source) return tmsize_t(-1);
        if (f.place == f.sink->position())
            f.sink->write(bytes);
        else
            f.sink->patch(f.place, bytes);
        f.place += bytes.size();
        return n;
    });
}

toff_t TiffFile::seek(thandle_t handle, toff_t to, int whence) {
    TiffFile& f = of(handle);
    f.place = whence == SEEK_SET ? to : whence == SEEK_CUR ? f.place + to : sizeOf(handle) + to;
    return f.place;
}

toff_t TiffFile::sizeOf(thandle_t handle) {
    TiffFile& f = of(handle);
    return f.guarded([&] { return toff_t(f.source ? f.source->size() : f.sink->position()); });
}

int TiffFile::keep(TIFF*, void* file, const char*, const char* format, va_list values) {
    std::string& text = static_cast<TiffFile*>(file)->told;
    char line[300];
    std::vsnprintf(line, sizeof line, format, values);
    if (text.empty()) text = line; // the first is the cause
    return 1;
}

void TiffFile::fail(const std::string& what) const {
    if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
    std::string why = told;
    std::replace(why.begin(), why.end(), '\n', ' ');
    throw Error("TIFF: " + what + (why.empty() ? "" : " (" + why + ")"));
}

void TiffFile::setAlpha() const {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (!TIFFSetField(get(), TIFFTAG_EXTRASAMPLES, 1, &alpha)) fail("the alpha channel cannot be written");
}

void TiffFile::finish() {
    const bool flushed = TIFFFlush(get());
    handle.reset();
    if (!flushed || thrown) fail("the directory cannot be written");
    sink->finish();
}

TiffPicture pictureOf(const TiffFile& file, std::uint64_t maxPixels) {
    const auto width = file.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0),
               height = file.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    try {
        checkSize(width, height, maxPixels);
    } catch (const Error& e) {
        file.fail(e.what());
    }
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

    TiffPicture p{shapeOf(int(width), int(height), int(channels), (1 << bits) - 1), int(bits),
                  photometric == PHOTOMETRIC_MINISWHITE, planes == PLANARCONFIG_SEPARATE && channels > 1};
    if (p.inverted && channels == 2) file.fail("alpha beside a scale from white to black is not supported");
    if (cmyk) {
        p.shape.colour = Colour::cmyk;
        p.shape.alpha = false;
        // Where there is no ink and where there is all of it (TIFF 6.0, section 16).
        std::uint16_t none = 0, all = 1;
        if (TIFFGetField(file.get(), TIFFTAG_DOTRANGE, &none, &all)) p.inverted = none > all;
    }
    return p;
}

} // namespace codecs
