// bench_photograph.cpp - reads a photograph by libjpeg.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_photograph.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#ifdef ZMX_HAVE_LIBJPEG
#include <jpeglib.h>
#endif

Photograph readPhotograph([[maybe_unused]] const char* name, [[maybe_unused]] Channels channels) {
    Photograph photo;
#ifdef ZMX_HAVE_LIBJPEG
    const char* const named = std::getenv("ZMX_BENCH_PHOTO");
    const std::string path = named ? named : "/usr/share/backgrounds/mate/nature/" + std::string(name) + ".jpg";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        std::perror(("zmx_bench: " + path).c_str());
        return photo;
    }
    jpeg_error_mgr errors{}; // ends the program on a fault, which is good enough here
    jpeg_decompress_struct jpeg{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = channels == Channels::Luma ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_start_decompress(&jpeg);
    photo.width = int(jpeg.output_width);
    photo.height = int(jpeg.output_height);
    photo.channels = int(channels);
    const std::size_t rowBytes = std::size_t(photo.width) * std::size_t(photo.channels);
    photo.samples.resize(rowBytes * std::size_t(photo.height));
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = &photo.samples[jpeg.output_scanline * rowBytes];
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
#endif
    return photo;
}

Photograph Photograph::middle(int columns, int rows) const {
    if (width < columns || height < rows) return {};
    Photograph part{columns, rows, channels, {}};
    const int left = (width - columns) / 2, top = (height - rows) / 2;
    for (int y = top; y < top + rows; ++y) {
        const auto from = samples.begin() + (std::ptrdiff_t(y) * width + left) * channels;
        part.samples.insert(part.samples.end(), from, from + std::ptrdiff_t(columns) * channels);
    }
    return part;
}
