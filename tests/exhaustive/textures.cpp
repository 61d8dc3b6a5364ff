// textures.cpp - the palettes of DXT blocks: every pair of end colours and of end alphas, with every index.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/texture/model/dxt.h"
#include "tests/texture/model/palette.h"

namespace exhaustive {

namespace {

using Decode = ZmxStatus (*)(const Zmx8u*, Zmx8u*, Zmx32u, ZmxiSize);

constexpr int kAcross = 1 << 10; // blocks in a call

// The indices of a block: each row has all four, and so each column.
constexpr Zmx8u kIndices[4] = {0xE4, 0x93, 0x4E, 0x39};
constexpr int indexAt(int x, int y) { return kIndices[y] >> 2 * x & 3; }

// The colour part of a block: two ends and all four indices.
void putColours(Zmx8u* block, unsigned first, unsigned second) {
    const Zmx8u ends[4] = {Zmx8u(first), Zmx8u(first >> 8), Zmx8u(second), Zmx8u(second >> 8)};
    std::memcpy(block, ends, sizeof ends);
    std::memcpy(block + 4, kIndices, sizeof kIndices);
}

// Where a block keeps no alpha.
model::Texel transparent(int c0, int c1, int index) { return model::fourColours(c0, c1, index, 0); }

// Every second end for one first end. The alpha of a block, where it has one, is zeros.
template <int Bytes, model::Texel Plain(int, int, int)> bool coloursAgree(Decode library, std::uint64_t first) {
    std::vector<Zmx8u> blocks(Bytes * kAcross), got(64 * kAcross), expected(64 * kAcross);
    const ZmxiSize size{4 * kAcross, 4};
    for (int second = 0; second < kWords; second += kAcross) {
        for (int i = 0; i < kAcross; ++i)
            putColours(blocks.data() + Bytes * i + Bytes - 8, unsigned(first), unsigned(second + i));
        if (library(blocks.data(), got.data(), 16 * kAcross, size)) return false;
        for (int i = 0; i < kAcross; ++i) {
            const model::Texel palette[4] = {Plain(int(first), second + i, 0), Plain(int(first), second + i, 1),
                                             Plain(int(first), second + i, 2), Plain(int(first), second + i, 3)};
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 4; ++x)
                    std::memcpy(&expected[std::size_t(16 * (kAcross * y + i) + 4 * x)], &palette[indexAt(x, y)], 4);
        }
        if (!same(got, expected)) return false;
    }
    return true;
}

// The alpha part of DXT5: every second end for one first end, with all eight indices twice.
bool alphasAgree(std::uint64_t first) {
    constexpr int n = 256;
    std::vector<Zmx8u> blocks(16 * n), got(64 * n), expected(64 * n);
    const Zmx8u indices[6] = {0x88, 0xC6, 0xFA, 0x77, 0x39, 0x05}; // 0 to 7, and back
    for (std::size_t i = 0; i < n; ++i) {
        blocks[16 * i] = Zmx8u(first);
        blocks[16 * i + 1] = Zmx8u(i);
        std::memcpy(&blocks[16 * i + 2], indices, sizeof indices);
    }
    const ZmxiSize size{4 * n, 4};
    if (zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(blocks.data(), got.data(), 16 * n, size)) return false;
    model::decodeSurface(blocks.data(), 16, model::decodeDxt5, expected.data(), 16 * n, size);
    return same(got, expected);
}

} // namespace

void addTextures(Domains& to) {
    const auto add = [&](const char* name, auto agree, Decode library) {
        to.push_back({name, std::string("palette of ") + name + ", every pair of end colours", kWords, kWords,
                      [=](std::uint64_t slice) { return agree(library, slice); }});
    };
    add("DXT1", coloursAgree<8, model::dxt1Colour>, zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R);
    add("DXT3", coloursAgree<16, transparent>, zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R);
    add("DXT5", coloursAgree<16, transparent>, zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R);
    to.push_back({"DXT5alpha", "palette of DXT5, every pair of end alphas", 256, 256, alphasAgree});
}

} // namespace exhaustive
