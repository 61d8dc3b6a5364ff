// The whole road of a JPEG picture in memory, in both directions, beside libjpeg-turbo's. 1920x1080 pixels of
// a photograph, 4:2:0, quality 90, one thread. scripts/bench-jpeg runs this with and without libjpeg-turbo's
// vector code.
// SPDX-License-Identifier: BSD-2-Clause
#ifdef ZMX_HAVE_LIBJPEG
#include "bench/bench_jpeg_road.h"

namespace {

using namespace road;

Bytes encodeOurs() {
    jpeg::EncodeOptions options;
    options.quality = kQuality;
    return road::encodeOurs(options);
}

void jpegEncodeOurs(benchmark::State& state) {
    std::size_t size = 0;
    run(state, [&] { size = encodeOurs().size(); });
    state.counters["bytes"] = double(size);
}
void jpegEncodeTheirs(benchmark::State& state) {
    std::size_t size = 0;
    Bytes room(8 << 20);
    run(state, [&] { size = encodeTheirs(Mode::sequential, room); });
    state.counters["bytes"] = double(size);
}
// Both decode the same file.
const Bytes& file() {
    static const Bytes bytes = photo().empty() ? Bytes() : encodeOurs();
    return bytes;
}
void jpegDecodeOurs(benchmark::State& state) {
    run(state, [&] { decodeOurs(file()); });
}
void jpegDecodeTheirs(benchmark::State& state) {
    Bytes pixels(std::size_t(kWidth) * kHeight * 3);
    run(state, [&] { decodeTheirs(file(), pixels); });
}

BENCHMARK(jpegEncodeOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegEncodeTheirs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegDecodeOurs)->Unit(benchmark::kMillisecond);
BENCHMARK(jpegDecodeTheirs)->Unit(benchmark::kMillisecond);

} // namespace
#endif
