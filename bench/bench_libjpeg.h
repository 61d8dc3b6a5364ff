// bench_libjpeg.h - libjpeg reading and writing the coefficients of a grey picture, its entropy coding alone.
#pragma once

#include "bench_blocks.h"

#ifdef ZMX_HAVE_LIBJPEG
#include <cstdio>
#include <cstring>
#include <jpeglib.h>

class LibjpegFile {
    std::vector<unsigned char> file;
    mutable jpeg_decompress_struct in{}; // holds the coefficients that rewrite() writes
    mutable jpeg_error_mgr errors{};
    jvirt_barray_ptr* coefficients = nullptr;

    static jvirt_barray_ptr* readInto(jpeg_decompress_struct& d, const std::vector<unsigned char>& bytes) {
        jpeg_mem_src(&d, bytes.data(), static_cast<unsigned long>(bytes.size()));
        jpeg_read_header(&d, TRUE);
        return jpeg_read_coefficients(&d);
    }
    std::vector<unsigned char> write(jpeg_decompress_struct& from, jvirt_barray_ptr* arrays) const {
        jpeg_compress_struct out{};
        out.err = jpeg_std_error(&errors);
        jpeg_create_compress(&out);
        unsigned char* bytes = nullptr;
        unsigned long size = 0;
        jpeg_mem_dest(&out, &bytes, &size);
        jpeg_copy_critical_parameters(&from, &out);
        jpeg_write_coefficients(&out, arrays);
        jpeg_finish_compress(&out);
        jpeg_destroy_compress(&out);
        std::vector<unsigned char> result(bytes, bytes + size);
        std::free(bytes);
        return result;
    }

public:
    // A grey picture of the right size is the vessel into which the blocks go.
    explicit LibjpegFile(const std::vector<Block>& blocks) {
        const int side = int(std::lround(std::sqrt(double(blocks.size()))));
        jpeg_compress_struct out{};
        out.err = jpeg_std_error(&errors);
        jpeg_create_compress(&out);
        unsigned char* bytes = nullptr;
        unsigned long size = 0;
        jpeg_mem_dest(&out, &bytes, &size);
        out.image_width = out.image_height = JDIMENSION(8 * side);
        out.input_components = 1;
        out.in_color_space = JCS_GRAYSCALE;
        jpeg_set_defaults(&out);
        jpeg_start_compress(&out, TRUE);
        std::vector<JSAMPLE> row(std::size_t(8 * side), 128);
        for (JSAMPROW p = row.data(); out.next_scanline < out.image_height;) jpeg_write_scanlines(&out, &p, 1);
        jpeg_finish_compress(&out);
        jpeg_destroy_compress(&out);
        file.assign(bytes, bytes + size);
        std::free(bytes);

        in.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&in);
        coefficients = readInto(in, file);
        for (int y = 0; y < side; ++y) {
            JBLOCKARRAY line = in.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&in), coefficients[0],
                                                          JDIMENSION(y), 1, TRUE);
            for (int x = 0; x < side; ++x)
                std::memcpy(line[0][x], blocks[std::size_t(y * side + x)].data(), sizeof(Block));
        }
        file = write(in, coefficients);
    }
    ~LibjpegFile() { jpeg_destroy_decompress(&in); }
    LibjpegFile(const LibjpegFile&) = delete;
    LibjpegFile& operator=(const LibjpegFile&) = delete;

    std::size_t rewrite() const { return write(in, coefficients).size(); }
    void read() const {
        jpeg_decompress_struct d{};
        jpeg_error_mgr e{};
        d.err = jpeg_std_error(&e);
        jpeg_create_decompress(&d);
        readInto(d, file);
        jpeg_finish_decompress(&d);
        jpeg_destroy_decompress(&d);
    }
};
#endif
