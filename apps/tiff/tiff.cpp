// tiff.cpp - the container: tags and raw strips.
#include "tiff/tiff.h"

#include "tiff/rows.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <tiffio.h>

namespace tif {
namespace {

// An open file. libtiff's own messages are kept, and go into the exception.
class File {
    std::string path, told;
    std::unique_ptr<TIFF, void (*)(TIFF*)> handle{nullptr, TIFFClose};

    static int keep(TIFF*, void* file, const char*, const char* format, va_list values) {
        std::string& text = static_cast<File*>(file)->told;
        char line[300];
        std::vsnprintf(line, sizeof line, format, values);
        if (text.empty()) text = line; // the first is the cause
        return 1;
    }
    static int drop(TIFF*, void*, const char*, const char*, va_list) { return 1; }

public:
    File(const std::string& name, const char* mode) : path(name) {
        const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), drop, this);
        handle.reset(TIFFOpenExt(path.c_str(), mode, options.get()));
        if (!handle) fail("not readable as a TIFF file");
    }
    File(const File&) = delete;
    TIFF* get() const { return handle.get(); }

    [[noreturn]] void fail(const std::string& what) const {
        std::string why = told;
        std::replace(why.begin(), why.end(), '\n', ' ');
        throw Error(path + ": TIFF: " + what + (why.empty() ? "" : " (" + why + ")"));
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
};

// The samples of a picture in the next depth that a file has: 1, 8 or 16 bits.
Image inFileDepth(Image image) {
    const int from = image.maxval, to = from == 1 && image.channels == 1 ? 1 : from <= 255 ? 255 : 65535;
    if (from != to)
        for (std::uint16_t& v : image.samples) v = std::uint16_t((unsigned(v) * unsigned(to) + unsigned(from) / 2) / unsigned(from));
    image.maxval = to;
    return image;
}
int bitsOf(int maxval) { return maxval == 1 ? 1 : maxval == 255 ? 8 : 16; }

void writeTags(const File& file, const Image& image, const RowLayout& layout, int rowsPerStrip) {
    file.set(TIFFTAG_IMAGEWIDTH, unsigned(image.width));
    file.set(TIFFTAG_IMAGELENGTH, unsigned(image.height));
    file.set(TIFFTAG_BITSPERSAMPLE, unsigned(layout.bits));
    file.set(TIFFTAG_SAMPLESPERPIXEL, unsigned(image.channels));
    file.set(TIFFTAG_PHOTOMETRIC, image.channels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    file.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file.set(TIFFTAG_ROWSPERSTRIP, unsigned(rowsPerStrip));
    file.set(TIFFTAG_COMPRESSION, unsigned(layout.split ? kSplitPackBits : kPackBits));
    if (image.channels % 2 == 0) {
        const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(file.get(), TIFFTAG_EXTRASAMPLES, 1, &alpha);
    }
}

// What the tags of a file say.
struct Header {
    Image image; // without samples
    RowLayout layout;
    int rowsPerStrip;
};

Header readTags(const File& file, std::size_t maxPixels) {
    const auto refuse = [&](const std::string& tag, unsigned value) { file.fail(tag + " " + std::to_string(value) + " is not supported"); };
    const auto width = file.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0), height = file.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    const std::string size = "a picture of " + std::to_string(width) + " by " + std::to_string(height);
    if (width < 1 || height < 1) file.fail(size);
    if (std::uint64_t(width) * height > maxPixels) file.fail(size + ": more pixels than the limit allows");
    if (TIFFIsTiled(file.get())) file.fail("tiles are not supported");
    const unsigned compression = file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, 1), bits = file.tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1),
                   channels = file.tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1), photometric = file.tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF),
                   format = file.tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT),
                   planes = file.tag<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG),
                   orientation = file.tag<std::uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const bool split = compression == kSplitPackBits;
    if (compression != kPackBits && !split) refuse("Compression", compression);
    if (bits != 8 && bits != 16 && !(bits == 1 && channels == 1)) refuse("BitsPerSample", bits);
    if (split && bits != 16) file.fail("split rows of samples that have not 16 bits");
    if (format != SAMPLEFORMAT_UINT) refuse("SampleFormat", format);
    if (planes != PLANARCONFIG_CONTIG && channels > 1) refuse("PlanarConfiguration", planes);
    if (orientation != ORIENTATION_TOPLEFT) refuse("Orientation", orientation);
    const bool grey = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
    if (!grey && photometric != PHOTOMETRIC_RGB) refuse("PhotometricInterpretation", photometric);
    const unsigned colours = grey ? 1 : 3;
    if (channels < colours || channels > colours + 1) refuse("SamplesPerPixel", channels);
    const bool inverted = photometric == PHOTOMETRIC_MINISWHITE;
    if (inverted && channels == 2) file.fail("alpha beside a scale from white to black is not supported");
    const auto rows = file.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, height);
    if (rows < 1) refuse("RowsPerStrip", rows);

    Header h{{int(width), int(height), int(channels), bits == 1 ? 1 : bits == 8 ? 255 : 65535, {}}, {}, int(std::min(rows, height))};
    if (std::uint64_t(width) * channels * bits / 8 > INT_MAX - 1) file.fail(size + ": the rows are too long");
    h.layout = {int(width * channels), int(bits), split, TIFFIsByteSwapped(file.get()) != 0, inverted};
    // Two bytes of PackBits make 128 at the most.
    if (std::uint64_t(h.layout.bytes()) * height / 64 > file.size())
        file.fail(size + " cannot be in a file of " + std::to_string(file.size()) + " bytes");
    return h;
}

// A strip as it stands in the file, and one byte more, which an unpacker may look at.
Bytes readStrip(const File& file, std::uint32_t strip) {
    const auto where = "strip " + std::to_string(strip) + ": ";
    const std::uint64_t bytes = TIFFGetStrileByteCount(file.get(), strip);
    if (bytes < 1) file.fail(where + "it has no bytes");
    if (bytes > file.size() || bytes >= INT_MAX)
        file.fail(where + std::to_string(bytes) + " bytes in a file of " + std::to_string(file.size()));
    Bytes data(std::size_t(bytes) + 1);
    if (TIFFReadRawStrip(file.get(), strip, data.data(), tmsize_t(bytes)) != tmsize_t(bytes)) file.fail(where + "it cannot be read");
    if (file.tag<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB) TIFFReverseBits(data.data(), tmsize_t(bytes));
    return data;
}

} // namespace

void write(const std::string& path, const Image& picture, const EncodeOptions& options) {
    if (picture.cmyk) throw Error(path + ": TIFF: a CMYK picture is not supported");
    const Image image = inFileDepth(picture);
    const std::uint64_t rowBytes = std::uint64_t(image.rowSamples()) * 2;
    if (rowBytes > INT_MAX / 2) throw Error(path + ": TIFF: the rows are too long");
    if (options.split16 && image.maxval != 65535) throw Error(path + ": TIFF: split rows are for samples of 16 bits");
    const RowLayout layout{int(image.rowSamples()), bitsOf(image.maxval), options.split16};
    const int advised = std::max(1, int(8192 / layout.bytes()));
    const int rowsPerStrip = std::min(image.height, options.rowsPerStrip > 0 ? options.rowsPerStrip : advised);

    const File file(path, "w");
    writeTags(file, image, layout, rowsPerStrip);
    for (int y = 0; y < image.height;) {
        const int strip = y / rowsPerStrip, end = std::min(image.height, y + rowsPerStrip);
        Bytes data;
        for (; y < end; ++y) {
            if (data.size() > INT_MAX / 2) file.fail("strip " + std::to_string(strip) + ": too many rows; ask for fewer in a strip");
            packRow(layout, image.row(y), data);
        }
        if (TIFFWriteRawStrip(file.get(), std::uint32_t(strip), data.data(), tmsize_t(data.size())) != tmsize_t(data.size()))
            file.fail("strip " + std::to_string(strip) + ": it cannot be written");
    }
    if (!TIFFFlush(file.get())) file.fail("the directory cannot be written");
}

Image read(const std::string& path, std::size_t maxPixels) {
    const File file(path, "rm");
    Header h = readTags(file, maxPixels);
    Image& image = h.image;
    image.samples.resize(image.rowSamples() * std::size_t(image.height));
    for (int y = 0; y < image.height;) {
        const int strip = y / h.rowsPerStrip, end = std::min(image.height, y + h.rowsPerStrip);
        const Bytes data = readStrip(file, std::uint32_t(strip));
        for (int pos = 0; y < end; ++y)
            if (const std::string wrong = unpackRow(h.layout, data.data(), int(data.size() - 1), pos, image.row(y)); !wrong.empty())
                file.fail("strip " + std::to_string(strip) + ", row " + std::to_string(y) + ": " + wrong);
    }
    return std::move(image);
}

} // namespace tif
