// png.cpp - PNG files through libpng.
#include "codecs/picture/files.h"

#include <csetjmp>
#include <memory>
#include <png.h>

namespace {

// libpng reports an error through this and must not return; an exception may not cross its C code, so it jumps.
struct Trouble {
    std::jmp_buf jump;
    char text[200] = "";
};
[[noreturn]] void onError(png_structp png, png_const_charp message) {
    auto* t = static_cast<Trouble*>(png_get_error_ptr(png));
    std::snprintf(t->text, sizeof t->text, "%s", message);
    std::longjmp(t->jump, 1);
}
void onWarning(png_structp, png_const_charp) {}

} // namespace

// Between setjmp and the last libpng call no object with a destructor is made; everything stands ready before.
Image readPng(std::FILE* file, const std::string& path, std::size_t maxPixels) {
    Trouble trouble;
    Image image;
    std::vector<png_byte> bytes;
    std::vector<png_bytep> rows;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &trouble, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        throw ImageError(path + ": no memory for libpng");
    }
    struct Destroy {
        png_structp* png;
        png_infop* info;
        ~Destroy() { png_destroy_read_struct(png, info, nullptr); }
    } destroy{&png, &info};

    if (setjmp(trouble.jump)) throw ImageError(path + ": PNG: " + trouble.text);
    png_set_user_limits(png, 1u << 20, 1u << 20);
    png_init_io(png, file);
    png_read_info(png, info);
    const png_uint_32 width = png_get_image_width(png, info), height = png_get_image_height(png, info);
    if (std::size_t(width) * height > maxPixels) png_error(png, "more pixels than the limit allows");
    png_set_expand(png); // palettes, small depths and transparency
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const bool wide = png_get_bit_depth(png, info) == 16;
    image.width = int(width);
    image.height = int(height);
    image.channels = png_get_channels(png, info);
    image.maxval = wide ? 65535 : 255;
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    bytes.resize(rowBytes * height);
    rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y) rows[y] = bytes.data() + rowBytes * y;
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);

    const std::size_t n = image.rowSamples() * height;
    image.samples.resize(n);
    for (std::size_t i = 0; i < n; ++i)
        image.samples[i] = wide ? std::uint16_t(bytes[2 * i] << 8 | bytes[2 * i + 1]) : bytes[i];
    return image;
}

void writePng(std::FILE* file, const std::string& path, const Image& image) {
    static const int kinds[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                PNG_COLOR_TYPE_RGBA};
    if (image.channels < 1 || image.channels > 4) throw ImageError(path + ": a PNG file has 1 to 4 channels");
    const bool wide = image.maxval > 255;
    const unsigned full = wide ? 65535 : 255, max = unsigned(image.maxval);
    std::vector<png_byte> row(image.rowSamples() * (wide ? 2 : 1));
    Trouble trouble;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &trouble, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw ImageError(path + ": no memory for libpng");
    }
    struct Destroy {
        png_structp* png;
        png_infop* info;
        ~Destroy() { png_destroy_write_struct(png, info); }
    } destroy{&png, &info};

    if (setjmp(trouble.jump)) throw ImageError(path + ": PNG: " + trouble.text);
    png_init_io(png, file);
    png_set_IHDR(png, info, png_uint_32(image.width), png_uint_32(image.height), wide ? 16 : 8,
                 kinds[image.channels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 3);
    png_write_info(png, info);
    for (int y = 0; y < image.height; ++y) {
        const std::uint16_t* s = image.row(y);
        for (std::size_t i = 0; i < image.rowSamples(); ++i) {
            const unsigned v = max == full ? s[i] : (s[i] * full + max / 2) / max;
            if (wide) {
                row[2 * i] = png_byte(v >> 8);
                row[2 * i + 1] = png_byte(v);
            } else {
                row[i] = png_byte(v);
            }
        }
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
}
