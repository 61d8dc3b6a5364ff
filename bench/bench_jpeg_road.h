// What the measurements of whole JPEG pictures share: the picture, 1920x1080 pixels of a photograph, and
// libjpeg-turbo's way from it to a file and back, in memory.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "bench/bench_photograph.h"
#include "codecs/jpeg/jpeg.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <jpeglib.h>

namespace road {

namespace jpeg = codecs::jpeg;
using codecs::Bytes;
constexpr int kWidth = 1920, kHeight = 1080, kQuality = 90;

// The middle of the photograph; empty when there is none.
inline const Bytes& photo() {
    static const Bytes pixels = readPhotograph("Blinds", Channels::Rgb).middle(kWidth, kHeight).samples;
    return pixels;
}

inline Bytes encodeOurs(const jpeg::EncodeOptions& options) {
    static const codecs::Picture picture = [] {
        codecs::Picture p(codecs::shapeOf(kWidth, kHeight, 3));
        std::copy(photo().begin(), photo().end(), p.all().begin());
        return p;
    }();
    return jpeg::encode(picture, options);
}

// The pixels go as they come, a band at a time, as into a file.
class NoSink final : public codecs::RowSink {
    void begin(const codecs::Shape&, const codecs::Metadata&) override {}
    void write(const codecs::Band& band) override { benchmark::DoNotOptimize(band.data); }
    void finish() override {}
};
inline void decodeOurs(const Bytes& file) {
    codecs::MemorySource source(file);
    NoSink sink;
    jpeg::decode(source, sink);
}

// What the two programs have in common to choose from.
enum class Mode { sequential, progressive };

inline std::size_t encodeTheirs(Mode mode, Bytes& room) {
    jpeg_compress_struct c;
    jpeg_error_mgr errors;
    c.err = jpeg_std_error(&errors);
    jpeg_create_compress(&c);
    unsigned char* out = room.data();
    unsigned long size = room.size();
    jpeg_mem_dest(&c, &out, &size);
    c.image_width = kWidth;
    c.image_height = kHeight;
    c.input_components = 3;
    c.in_color_space = JCS_RGB;
    jpeg_set_defaults(&c); // 4:2:0, JDCT_ISLOW, standard Huffman tables
    jpeg_set_quality(&c, kQuality, TRUE);
    if (mode == Mode::progressive) {
        jpeg_simple_progression(&c);
        c.optimize_coding = TRUE;
    }
    jpeg_start_compress(&c, TRUE);
    while (c.next_scanline < c.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(photo().data()) + std::size_t(c.next_scanline) * kWidth * 3;
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    return size;
}

inline void decodeTheirs(const Bytes& file, Bytes& pixels) {
    jpeg_decompress_struct d;
    jpeg_error_mgr errors;
    d.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&d);
    jpeg_mem_src(&d, file.data(), file.size());
    jpeg_read_header(&d, TRUE);
    d.do_block_smoothing = FALSE; // acts on incomplete progressive files only
    d.dct_method = JDCT_ISLOW;
    jpeg_start_decompress(&d);
    while (d.output_scanline < d.output_height) {
        JSAMPROW row = pixels.data() + std::size_t(d.output_scanline) * kWidth * 3;
        jpeg_read_scanlines(&d, &row, 1);
    }
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
}

template <class Call> void run(benchmark::State& state, Call call) {
    if (photo().empty()) return state.SkipWithError("no photograph");
    for (auto _ : state) call();
    state.counters["pixels"] =
        benchmark::Counter(double(kWidth) * kHeight, benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace road
