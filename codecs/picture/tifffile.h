// tifffile.h - an open TIFF file of libtiff, with its tags and its messages.
#pragma once

#include "codecs/picture/picture.h"

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>
#include <tiffio.h>

class TiffFile {
public:
    // `mode` is that of TIFFOpen(). An ImageError when it cannot be opened.
    TiffFile(const std::string& path, const char* mode);
    TiffFile(const TiffFile&) = delete;
    TIFF* get() const { return handle.get(); }

    // Throws an ImageError of one line: the path, `what`, and libtiff's first message if there is one.
    [[noreturn]] void fail(const std::string& what) const;
    [[noreturn]] void refuse(const std::string& tag, unsigned value) const {
        fail(tag + " " + std::to_string(value) + " is not supported");
    }

    // A tag of one number, or its default.
    template <class T> T tag(std::uint32_t which, T otherwise) const {
        T value{};
        return TIFFGetFieldDefaulted(handle.get(), which, &value) ? value : otherwise;
    }
    void set(std::uint32_t which, unsigned value) const {
        if (!TIFFSetField(handle.get(), which, value)) fail("the tag " + std::to_string(which) + " cannot be written");
    }
    std::uint64_t size() const { return std::uint64_t(TIFFGetSizeProc(handle.get())(TIFFClientdata(handle.get()))); }

    // The last channel of a picture of 2, or of 4 that are no inks.
    void setAlpha() const;
    // Writes what is still held back.
    void finish() const;

private:
    static int keep(TIFF*, void* file, const char*, const char* format, va_list values);

    std::string path, told;
    std::unique_ptr<TIFF, void (*)(TIFF*)> handle{nullptr, TIFFClose};
};

// What the tags say of a picture that an Image can hold; others are refused.
struct TiffPicture {
    Image image; // without samples
    int bits;    // of a sample: 1, 8 or 16
    bool inverted, planar;
};
// `maxPixels` bounds what the tags may ask for.
TiffPicture pictureOf(const TiffFile& file, std::size_t maxPixels);
// For messages.
std::string sizeText(std::int64_t width, std::int64_t height);
