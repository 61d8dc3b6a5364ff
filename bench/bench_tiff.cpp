// bench_tiff.cpp - PackBits rows beside libtiff's codec and a plain copy, and rows of 16-bit samples split and joined.
//
// A page of text in 1 and in 8 bits (grey edges and a little scanner noise on the strokes), a photograph's smooth shades with
// grain, a photograph in 1 bit, and random bytes. libtiff runs its codec over the same rows in one strip of a file in memory.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include "bench/bench_photograph.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <tiffio.h>
#include <vector>

namespace {

using Bytes = std::vector<Zmx8u>;

struct Picture {
    int rowBytes, rows;
    Bytes bytes;
    const Zmx8u* row(int y) const { return bytes.data() + std::size_t(y) * std::size_t(rowBytes); }
};

// 300 dots per inch: margins, and lines of letters of 5 by 7 cells made by rule, in words. 1 is ink.
constexpr int kPageWidth = 2480, kPageHeight = 3508;
Bytes inkOfPage() {
    constexpr int cell = 5, margin = 240, pitch = 60, advance = 7 * cell;
    Bytes ink(std::size_t(kPageWidth) * kPageHeight, 0);
    std::mt19937 random(5);
    for (int top = margin; top + 7 * cell < kPageHeight - margin; top += pitch) {
        const int right = random() % 8 == 0 ? kPageWidth / 2 : kPageWidth - margin; // ends of paragraphs
        for (int left = margin; left + advance < right; left += advance) {
            if (random() % 6 == 0) continue; // between words
            const unsigned letter = unsigned(random());
            for (int y = 0; y < 7 * cell; ++y)
                for (int x = 0; x < 5 * cell; ++x) {
                    // Two stems and two bars, each there or not.
                    const int cx = x / cell, cy = y / cell;
                    const bool stroke = (cx == 0 && letter & 1) || (cx == 4 && letter & 2) || (cy == 0 && letter & 4) ||
                                        (cy == 3 && letter & 8) || (cy == 6 && letter & 16) ||
                                        (cx == cy / 2 && letter & 32);
                    ink[std::size_t(top + y) * kPageWidth + std::size_t(left + x)] = stroke;
                }
        }
    }
    return ink;
}

Picture page1() {
    const Bytes ink = inkOfPage();
    Picture p{kPageWidth / 8, kPageHeight, Bytes(std::size_t(kPageWidth / 8) * kPageHeight)};
    for (std::size_t i = 0; i < ink.size(); ++i) p.bytes[i / 8] |= Zmx8u(ink[i] << (7 - i % 8));
    return p;
}
Picture page8() {
    const Bytes ink = inkOfPage();
    std::mt19937 random(6);
    Picture p{kPageWidth, kPageHeight, Bytes(ink.size(), 255)};
    for (std::size_t i = kPageWidth; i + kPageWidth < ink.size(); ++i) {
        const int sum = 2 * ink[i] + ink[i - 1] + ink[i + 1];
        if (sum) p.bytes[i] = Zmx8u(255 - 60 * sum + int(random() % 12));
    }
    return p;
}
Picture photograph() {
    Picture p{3 * 1920, 1080, {}};
    std::mt19937 random(7);
    for (int y = 0; y < p.rows; ++y)
        for (int x = 0; x < 1920; ++x)
            for (int c = 0; c < 3; ++c)
                p.bytes.push_back(
                    Zmx8u(128 + 70 * std::sin(x * 0.01 + c) + 40 * std::cos(y * 0.013) + double(random() % 5)));
    return p;
}
// A photograph in one bit a pixel, its error diffused: of the package mate-backgrounds; empty without it.
Picture halftone() {
    const Photograph photo = readPhotograph("Garden", Channels::Luma);
    const int width = photo.width & ~7;
    Picture p{width / 8, photo.height, Bytes(std::size_t(width / 8) * std::size_t(photo.height))};
    std::vector<int> error(std::size_t(width) + 2), next(error.size());
    for (int y = 0; y < p.rows; ++y) {
        next.assign(next.size(), 0);
        int ahead = 0;
        for (int x = 0; x < width; ++x) {
            const std::size_t at = std::size_t(y) * std::size_t(photo.width) + std::size_t(x), i = std::size_t(x) + 1;
            const int shade = photo.samples[at] + (error[i] + ahead) / 16;
            const bool ink = shade < 128;
            const int rest = shade - (ink ? 0 : 255);
            ahead = 7 * rest;
            next[i - 1] += 3 * rest;
            next[i] += 5 * rest;
            next[i + 1] += rest;
            p.bytes[std::size_t(y) * std::size_t(p.rowBytes) + std::size_t(x / 8)] |= Zmx8u(ink << (7 - x % 8));
        }
        error.swap(next);
    }
    return p;
}
Picture noise() {
    Picture p{4096, 512, Bytes(4096 * 512)};
    std::mt19937 random(8);
    for (Zmx8u& v : p.bytes) v = Zmx8u(random());
    return p;
}
const Picture& picture(std::int64_t which) {
    static const Picture all[] = {page1(), page8(), photograph(), noise(), halftone()};
    return all[which];
}

int packAll(const Picture& p, Bytes& stream) {
    int pos = 0;
    for (int y = 0; y < p.rows; ++y)
        zmxiPackBitsRow_TIFF_8u_C1(p.row(y), p.rowBytes, stream.data(), &pos, int(stream.size()));
    return pos;
}
Bytes room(const Picture& p) { return Bytes(p.bytes.size() + p.bytes.size() / 5 + std::size_t(2 * p.rows)); }

// A TIFF file in memory of one strip of 8-bit grey.
class MemoryTiff {
    Bytes file;
    std::size_t at = 0;
    TIFF* tiff = nullptr;

    static MemoryTiff& self(thandle_t h) { return *static_cast<MemoryTiff*>(h); }
    static tmsize_t read(thandle_t h, void* p, tmsize_t n) {
        MemoryTiff& m = self(h);
        const std::size_t have = std::min(std::size_t(n), m.file.size() - std::min(m.at, m.file.size()));
        if (have) std::memcpy(p, m.file.data() + m.at, have);
        m.at += have;
        return tmsize_t(have);
    }
    static tmsize_t write(thandle_t h, void* p, tmsize_t n) {
        MemoryTiff& m = self(h);
        if (m.at + std::size_t(n) > m.file.size()) m.file.resize(m.at + std::size_t(n));
        std::memcpy(m.file.data() + m.at, p, std::size_t(n));
        m.at += std::size_t(n);
        return n;
    }
    static toff_t seek(thandle_t h, toff_t to, int from) {
        MemoryTiff& m = self(h);
        m.at = std::size_t(to) + (from == SEEK_CUR ? m.at : from == SEEK_END ? m.file.size() : 0);
        return m.at;
    }
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t h) { return self(h).file.size(); }
    // Mapped, libtiff reads in place, without a copy.
    static int map(thandle_t h, void** p, toff_t* n) {
        *p = self(h).file.data();
        *n = self(h).file.size();
        return 1;
    }
    static void unmap(thandle_t, void*, toff_t) {}

public:
    MemoryTiff() = default;
    MemoryTiff(const MemoryTiff&) = delete;
    ~MemoryTiff() { finish(); }
    void begin(const char* mode) {
        at = 0;
        tiff = TIFFClientOpen("memory", mode, this, read, write, seek, close, size, map, unmap);
    }
    void finish() {
        if (tiff) TIFFClose(tiff);
        tiff = nullptr;
    }
    // Packs the picture as the one strip of a fresh file.
    bool pack(const Picture& p) {
        file.clear();
        file.reserve(2 * p.bytes.size());
        begin("w");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, p.rowBytes);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, p.rows);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, p.rows);
        const bool done =
            TIFFWriteEncodedStrip(tiff, 0, const_cast<Zmx8u*>(p.bytes.data()), tmsize_t(p.bytes.size())) > 0;
        finish();
        return done;
    }
    bool unpack(Bytes& out) {
        return TIFFReadEncodedStrip(tiff, 0, out.data(), tmsize_t(out.size())) == tmsize_t(out.size());
    }
};

void bytesOf(benchmark::State& state, const Picture& p) {
    state.SetBytesProcessed(state.iterations() * std::int64_t(p.bytes.size()));
}

void packOurs(benchmark::State& state) {
    const Picture& p = picture(state.range(0));
    Bytes stream = room(p);
    int n = 0;
    for (auto _ : state) {
        n = packAll(p, stream);
        benchmark::ClobberMemory();
    }
    bytesOf(state, p);
    state.counters["packed"] = double(n) / double(p.bytes.size());
}
void packTheirs(benchmark::State& state) {
    const Picture& p = picture(state.range(0));
    MemoryTiff tiff;
    for (auto _ : state)
        if (!tiff.pack(p)) return state.SkipWithError("libtiff does not pack");
    bytesOf(state, p);
}
void unpackOurs(benchmark::State& state) {
    const Picture& p = picture(state.range(0));
    Bytes stream = room(p), row(std::size_t(p.rowBytes) * std::size_t(p.rows));
    const int n = packAll(p, stream);
    for (auto _ : state) {
        int pos = 0;
        for (int y = 0; y < p.rows; ++y)
            if (zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, n,
                                             row.data() + std::size_t(y) * std::size_t(p.rowBytes),
                                             p.rowBytes) != zmxStsNoErr)
                return state.SkipWithError("a row is damaged");
        benchmark::ClobberMemory();
    }
    if (row != p.bytes) state.SkipWithError("the rows come back changed");
    bytesOf(state, p);
}
void unpackTheirs(benchmark::State& state) {
    const Picture& p = picture(state.range(0));
    MemoryTiff tiff;
    Bytes out(p.bytes.size());
    tiff.pack(p);
    tiff.begin("r");
    for (auto _ : state) {
        if (!tiff.unpack(out)) return state.SkipWithError("libtiff does not unpack");
        benchmark::ClobberMemory();
    }
    if (out != p.bytes) state.SkipWithError("the rows come back changed");
    bytesOf(state, p);
}
void copyOfRows(benchmark::State& state) {
    const Picture& p = picture(state.range(0));
    Bytes out(p.bytes.size());
    for (auto _ : state) {
        std::memcpy(out.data(), p.bytes.data(), out.size());
        benchmark::ClobberMemory();
    }
    bytesOf(state, p);
}
// The argument: 0 the page in 1 bit, 1 in 8 bits, 2 the photograph, 3 random bytes, 4 a halftoned photograph.
BENCHMARK(packOurs)->DenseRange(0, 4);
BENCHMARK(packTheirs)->DenseRange(0, 4);
BENCHMARK(unpackOurs)->DenseRange(0, 4);
BENCHMARK(unpackTheirs)->DenseRange(0, 4);
BENCHMARK(copyOfRows)->DenseRange(0, 4);

void SplitRow_TIFF_16u8u_C1(benchmark::State& state) {
    std::vector<Zmx16u> samples(std::size_t(state.range(0)), 0x1234);
    Bytes high(samples.size()), low(samples.size());
    Zmx8u* const planes[2] = {high.data(), low.data()};
    for (auto _ : state) {
        zmxiSplitRow_TIFF_16u8u_C1(samples.data(), planes, int(samples.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 2);
}
void JoinRow_TIFF_8u16u_C1(benchmark::State& state) {
    std::vector<Zmx16u> samples(std::size_t(state.range(0)));
    const Bytes high(samples.size(), 1), low(samples.size(), 2);
    const Zmx8u* const planes[2] = {high.data(), low.data()};
    for (auto _ : state) {
        zmxiJoinRow_TIFF_8u16u_C1(planes, samples.data(), int(samples.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 2);
}
BENCHMARK(SplitRow_TIFF_16u8u_C1)->Arg(4096);
BENCHMARK(JoinRow_TIFF_8u16u_C1)->Arg(4096);

} // namespace
