// textures.cpp - the palettes of DXT blocks: every pair of end colours and of end alphas, with every index.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/texture/model/dxt.h"

namespace exhaustive {

namespace {

using Decode = ZmxStatus (*)(const Zmx8u*, Zmx8u*, Zmx32u, ZmxiSize);

constexpr int kAcross = 1 << 10; // blocks in a call

// The colour part of a block: two ends and all four indices.
void putColours(Zmx8u* block, unsigned first, unsigned second) {
    const Zmx8u bytes[8] = {Zmx8u(first), Zmx8u(first >> 8), Zmx8u(second), Zmx8u(second >> 8), 0xE4, 0x1B, 0xE4, 0x1B};
    std::memcpy(block, bytes, sizeof bytes);
}

// Every second end for one first end.
template <int Bytes, class Model> bool coloursAgree(Decode library, Model plain, std::uint64_t first) {
    std::vector<Zmx8u> blocks(Bytes * kAcross), got(64 * kAcross), expected(64 * kAcross);
    const ZmxiSize size{4 * kAcross, 4};
    for (int second = 0; second < kWords; second += kAcross) {
        for (int i = 0; i < kAcross; ++i)
            putColours(blocks.data() + Bytes * i + Bytes - 8, unsigned(first), unsigned(second + i));
        if (library(blocks.data(), got.data(), 16 * kAcross, size)) return false;
        model::decodeSurface(blocks.data(), Bytes, plain, expected.data(), 16 * kAcross, size);
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
    to.push_back({"DXT1", "palette of DXT1, every pair of end colours", kWords, kWords, [](std::uint64_t slice) {
                      return coloursAgree<8>(zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, model::decodeDxt1, slice);
                  }});
    to.push_back({"DXT3", "palette of DXT3, every pair of end colours", kWords, kWords, [](std::uint64_t slice) {
                      return coloursAgree<16>(zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R, model::decodeDxt3, slice);
                  }});
    to.push_back({"DXT5", "palette of DXT5, every pair of end colours", kWords, kWords, [](std::uint64_t slice) {
                      return coloursAgree<16>(zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, model::decodeDxt5, slice);
                  }});
    to.push_back({"DXT5alpha", "palette of DXT5, every pair of end alphas", 256, 256, alphasAgree});
}

} // namespace exhaustive
