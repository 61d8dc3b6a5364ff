// The progressive and the lossless road of a JPEG picture in memory, in both directions: 1920x1080 pixels of
// a photograph, one thread. Progressive files (4:2:0, quality 90, the usual script, tables made for the
// picture) beside libjpeg-turbo's; for lossless files (RGB of 8 bits, predictor 1) it has no counterpart.
// SPDX-License-Identifier: BSD-2-Clause
#ifdef ZMX_HAVE_LIBJPEG
#include "bench/bench_jpeg_road.h"

namespace {

using namespace road;

jpeg::EncodeOptions progressive() {
    jpeg::EncodeOptions options;
    options.quality = kQuality;
    options.progressive = true;
    return options;
}
jpeg::EncodeOptions lossless() {
    jpeg::EncodeOptions options;
    options.lossless = 1;
    options.rgb = true;
    return options;
}

void encode(benchmark::State& state, const jpeg::EncodeOptions& options) {
    std::size_t size = 0;
    run(state, [&] { size = encodeOurs(options).size(); });
    state.counters["bytes"] = double(size);
}
void decode(benchmark::State& state, const jpeg::EncodeOptions& options) {
    const Bytes file = photo().empty() ? Bytes() : encodeOurs(options);
    run(state, [&] { decodeOurs(file); });
}

void jpegProgressiveEncodeOurs(benchmark::State& state) { encode(state, progressive()); }
void jpegProgressiveEncodeTheirs(benchmark::State& state) {
    std::size_t size = 0;
    Bytes room(8 << 20);
    run(state, [&] { size = encodeTheirs(Mode::progressive, room); });
    state.counters["bytes"] = double(size);
}
// Both decode the same file.
void jpegProgressiveDecodeOurs(benchmark::State& state) { decode(state, progressive()); }
void jpegProgressiveDecodeTheirs(benchmark::State& state) {
    const Bytes file = photo().empty() ? Bytes() : encodeOurs(progressive());
    Bytes pixels(std::size_t(kWidth) * kHeight * 3);
    run(state, [&] { decodeTheirs(file, pixels); });
}
void jpegLosslessEncode(benchmark::State& state) { encode(state, lossless()); }
void jpegLosslessDecode(benchmark::State& state) { decode(state, lossless()); }

BENCHMARK(jpegProgressiveEncodeOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegProgressiveEncodeTheirs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegProgressiveDecodeOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegProgressiveDecodeTheirs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegLosslessEncode)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegLosslessDecode)->Unit(benchmark::kMillisecond);

} // namespace
#endif
