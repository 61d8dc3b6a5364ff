// texture.h - the functions on texture blocks beside their models, between guard pages, and what to feed
// them.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/support/rng.h"
#include "tests/texture/model/surface.h"

#include <cstdint>
#include <vector>

struct TextureDecoder {
    const char* name;
    ZmxStatus (*call)(const Zmx8u* src, Zmx8u* dst, Zmx32u dstStep, ZmxiSize roi);
    model::Texels (*model)(const Zmx8u* block);
    int blockBytes;
    std::uint64_t digest; // of the output for the input of digestOf()
};

struct TextureEncoder {
    const char* name;
    ZmxStatus (*call)(const Zmx8u* src, Zmx32u srcStep, ZmxiSize roi, Zmx8u* dst);
    void (*model)(const model::Texels& texels, Zmx8u* block);
    int blockBytes, channels;
    std::uint64_t digest;
};

std::size_t blockBytesOf(const TextureDecoder& f, ZmxiSize roi);
std::size_t blockBytesOf(const TextureEncoder& f, ZmxiSize roi);

// From the first pixel of a region to behind its last one. Rows may overlap.
std::size_t extent(ZmxiSize roi, int channels, Zmx32u step);

// Decodes the surface with library and model: pixels, gaps and margins have to agree.
void checkDecoder(const TextureDecoder& f, const std::vector<Zmx8u>& blocks, ZmxiSize roi, Zmx32u step);
void checkEncoder(const TextureEncoder& f, const std::vector<Zmx8u>& pixels, ZmxiSize roi, Zmx32u step);

// Blocks of values between every pair of bounds. follow[c] tells of each channel whether it has these values
// (1), runs against them (-1) or is 128 throughout (0).
void checkEveryPairOfBounds(const TextureEncoder& f, const std::vector<int>& follow);

// Surfaces of 1x1 to 20x20 pixels with steps that fit, that leave gaps and that let rows overlap.
void checkEverySize(const TextureDecoder& f);
void checkEverySize(const TextureEncoder& f);

// A step of more than 2 GiB: it is unsigned, and where addresses have 32 bits it leads upwards.
void checkGreatStep(const TextureDecoder& f);
void checkGreatStep(const TextureEncoder& f);

// In a single row no step counts.
void checkStepOfOneRow(const TextureDecoder& f);
void checkStepOfOneRow(const TextureEncoder& f);

void checkArguments(const TextureDecoder& f);
void checkArguments(const TextureEncoder& f);

std::uint64_t digestOf(const TextureDecoder& f);
std::uint64_t digestOf(const TextureEncoder& f);

// A picture whose blocks each have another character in each channel: flat, of two values, a slope, all
// extremes, narrow ranges at the ends and in the middle, noise.
std::vector<Zmx8u> variedPicture(Rng& rng, ZmxiSize roi, int channels);

// The pixels of one block, 64 bytes, and the block of 16 pixels.
std::vector<Zmx8u> decoded(const TextureDecoder& f, const std::vector<Zmx8u>& block);
std::vector<Zmx8u> encoded(const TextureEncoder& f, const std::vector<Zmx8u>& pixels);
