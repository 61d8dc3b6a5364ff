// textures.cpp - digests of texture blocks.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

namespace {

constexpr ZmxiSize kSizes[] = {{1, 1}, {3, 5}, {4, 4}, {8, 4}, {13, 9}, {64, 40}};

int blocksOf(ZmxiSize size) { return (size.width + 3) / 4 * ((size.height + 3) / 4); }

// Blocks of any bytes, and blocks in which one byte is all that there is.
void decoder(Report& report, const Named<ZmxStatus(const Zmx8u*, Zmx8u*, Zmx32u, ZmxiSize)>& function, int blockBytes) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const ZmxiSize& size : kSizes)
            for (Kind kind : {Kind::Full, Kind::Full, Kind::Flat, Kind::Ramp, Kind::Ends, Kind::Sparse}) {
                Plane<Zmx8u> blocks(random, kind, blockBytes * blocksOf(size), 1);
                Plane<Zmx8u> pixels(random, Kind::Full, 4 * size.width, size.height, 3);
                digest.value(function.call(blocks.data(), pixels.data(), Zmx32u(pixels.step()), size));
                pixels.digest(digest);
            }
    });
    Zmx8u some[64] = {};
    badArguments(report, function, some, some, Argument<Zmx32u>{16, {0}}, ZmxiSize{4, 4});
}

// Every mode of BC7 many times: the position of the lowest bit set in the first byte tells it.
void modes(Report& report) {
    for (int mode = 0; mode < 9; ++mode)
        report.add("zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R: " +
                       (mode < 8 ? "mode " + std::to_string(mode) : "no mode"),
                   [&](Random& random, Digest& digest) {
                       const ZmxiSize size{80, 40};
                       Plane<Zmx8u> blocks(random, Kind::Full, 16, blocksOf(size));
                       for (int i = 0; i < blocksOf(size); ++i)
                           blocks.set(0, i, Zmx8u((random.range(0, 255) << (mode + 1) | 1 << mode) & 255));
                       Plane<Zmx8u> pixels(random, Kind::Full, 4 * size.width, size.height);
                       digest.value(zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R(blocks.data(), pixels.data(),
                                                                              Zmx32u(pixels.step()), size));
                       pixels.digest(digest);
                   });
}

// Pixels as pictures have them: a colour for a block and noise about it.
void picture(Random& random, Plane<Zmx8u>& pixels, ZmxiSize size, int channels) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < channels; ++c) {
                const int noise = random.range(-12, 12), value = (x / 4 * 37 + y / 4 * 91 + c * 59) % 256 + noise;
                pixels.set(channels * x + c, y, Zmx8u(value < 0 ? 0 : value > 255 ? 255 : value));
            }
}

void encoder(Report& report, const Named<ZmxStatus(const Zmx8u*, Zmx32u, ZmxiSize, Zmx8u*)>& function, int blockBytes,
             int channels) {
    const auto encode = [=](Random& random, Digest& digest, Plane<Zmx8u>& pixels, ZmxiSize size) {
        Plane<Zmx8u> blocks(random, Kind::Full, blockBytes * blocksOf(size), 1);
        digest.value(function.call(pixels.data(), Zmx32u(pixels.step()), size, blocks.data()));
        blocks.digest(digest);
    };
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const ZmxiSize& size : kSizes)
            for (Kind kind : kKinds) {
                Plane<Zmx8u> pixels(random, kind, channels * size.width, size.height, 2);
                encode(random, digest, pixels, size);
            }
    });
    report.add(function.name + ": pictures", [&](Random& random, Digest& digest) {
        for (const ZmxiSize& size : {ZmxiSize{64, 64}, ZmxiSize{37, 19}}) {
            Plane<Zmx8u> pixels(random, Kind::Full, channels * size.width, size.height, 1);
            picture(random, pixels, size, channels);
            encode(random, digest, pixels, size);
        }
    });
    Zmx8u some[64] = {};
    badArguments(report, function, some, Argument<Zmx32u>{16, {0}}, ZmxiSize{4, 4}, some);
}

} // namespace

void textureDigests(Report& report) {
    decoder(report, NAMED(zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R), 8);
    decoder(report, NAMED(zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R), 16);
    decoder(report, NAMED(zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R), 16);
    decoder(report, NAMED(zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R), 16);
    modes(report);
    encoder(report, NAMED(zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R), 8, 4);
    encoder(report, NAMED(zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R), 16, 4);
    encoder(report, NAMED(zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R), 16, 4);
    encoder(report, NAMED(zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R), 16, 3);
}
