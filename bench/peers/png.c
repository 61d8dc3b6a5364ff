/* png.c - a PNG file of RGB to PPM (d IN OUT) and back (e IN OUT), row by row, with nothing but libpng and stdio: libpng's
   own time. It compresses as zmx does. */
// SPDX-License-Identifier: BSD-2-Clause
#include <png.h>
#include <stdio.h>
#include <stdlib.h>
int main(int argc, char** argv) {
    if (argc < 4) return 2;
    FILE *in = fopen(argv[2], "rb"), *out = fopen(argv[3], "wb");
    if (!in || !out) return 1;
    unsigned w, h, y;
    if (argv[1][0] == 'd') {
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, NULL, NULL, NULL);
        png_infop info = png_create_info_struct(png);
        if (setjmp(png_jmpbuf(png))) return 1;
        png_init_io(png, in);
        png_read_info(png, info);
        w = png_get_image_width(png, info);
        h = png_get_image_height(png, info);
        png_bytep row = malloc(png_get_rowbytes(png, info));
        fprintf(out, "P6\n%u %u\n255\n", w, h);
        for (y = 0; y < h; ++y) {
            png_read_row(png, row, NULL);
            fwrite(row, 3, w, out);
        }
        png_read_end(png, NULL);
    } else {
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, NULL, NULL, NULL);
        png_infop info = png_create_info_struct(png);
        if (setjmp(png_jmpbuf(png))) return 1;
        if (fscanf(in, "P6 %u %u 255", &w, &h) != 2 || fgetc(in) < 0) return 1;
        png_bytep row = malloc((size_t)3 * w);
        png_init_io(png, out);
        png_set_compression_level(png, 3);
        png_set_IHDR(png, info, w, h, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        for (y = 0; y < h; ++y) {
            if (fread(row, 3, w, in) != w) return 1;
            png_write_row(png, row);
        }
        png_write_end(png, NULL);
    }
    return fclose(out) != 0;
}
