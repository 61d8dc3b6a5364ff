// bench_libjpeg.h - libjpeg reading and writing the coefficients of a grey picture: its entropy coding alone,
// with the same Huffman tables.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "bench/bench_blocks.h"

#ifdef ZMX_HAVE_LIBJPEG
#include <cstdio>
#include <cstring>
#include <jpeglib.h>

namespace entropy {

class LibjpegFile {
    std::vector<unsigned char> file;
    mutable jpeg_error_mgr errors{};
    mutable jpeg_decompress_struct vessel{}; // holds the coefficients that rewrite() writes
    jvirt_barray_ptr* coefficients = nullptr;

    // What fill writes into a compressor.
    template <class Fill> std::vector<unsigned char> compressed(Fill fill) const {
        jpeg_compress_struct out{};
        out.err = jpeg_std_error(&errors);
        jpeg_create_compress(&out);
        unsigned char* bytes = nullptr;
        unsigned long size = 0;
        jpeg_mem_dest(&out, &bytes, &size);
        fill(out);
        jpeg_finish_compress(&out);
        jpeg_destroy_compress(&out);
        std::vector<unsigned char> result(bytes, bytes + size);
        std::free(bytes);
        return result;
    }
    static std::vector<unsigned char> greySquare(const LibjpegFile& self, int width) {
        return self.compressed([width](jpeg_compress_struct& out) {
            out.image_width = out.image_height = JDIMENSION(width);
            out.input_components = 1;
            out.in_color_space = JCS_GRAYSCALE;
            jpeg_set_defaults(&out);
            jpeg_start_compress(&out, TRUE);
            std::vector<JSAMPLE> row(std::size_t(width), 128);
            for (JSAMPROW p = row.data(); out.next_scanline < out.image_height;) jpeg_write_scanlines(&out, &p, 1);
        });
    }
    static jvirt_barray_ptr* readInto(jpeg_decompress_struct& d, const std::vector<unsigned char>& bytes) {
        jpeg_mem_src(&d, bytes.data(), static_cast<unsigned long>(bytes.size()));
        jpeg_read_header(&d, TRUE);
        return jpeg_read_coefficients(&d);
    }
    static void use(JHUFF_TBL& table, const HuffmanLists& lists) {
        std::memcpy(table.bits + 1, lists.bits, sizeof lists.bits);
        std::memcpy(table.huffval, lists.vals, sizeof lists.vals);
    }
    const HuffmanLists dcLists, acLists;

public:
    explicit LibjpegFile(const Coded& coded) : dcLists(coded.dcLists), acLists(coded.acLists) {
        const int side = int(std::lround(std::sqrt(double(coded.blocks.size()))));
        file = greySquare(*this, 8 * side);
        vessel.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&vessel);
        coefficients = readInto(vessel, file);
        for (int y = 0; y < side; ++y) {
            JBLOCKARRAY line = vessel.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&vessel), coefficients[0],
                                                              JDIMENSION(y), 1, TRUE);
            for (int x = 0; x < side; ++x)
                std::memcpy(line[0][x], coded.blocks[std::size_t(y * side + x)].data(), sizeof(Block));
        }
        file = rewrite();
    }
    ~LibjpegFile() { jpeg_destroy_decompress(&vessel); }
    LibjpegFile(const LibjpegFile&) = delete;
    LibjpegFile& operator=(const LibjpegFile&) = delete;

    std::vector<unsigned char> rewrite() const {
        return compressed([this](jpeg_compress_struct& out) {
            jpeg_copy_critical_parameters(&vessel, &out);
            use(*out.dc_huff_tbl_ptrs[0], dcLists);
            use(*out.ac_huff_tbl_ptrs[0], acLists);
            jpeg_write_coefficients(&out, coefficients);
        });
    }
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

} // namespace entropy
#endif
