// texture.cpp - calls of the texture functions between guard pages.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/support/texture.h"

#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr int kPixel = 4; // bytes of a decoded pixel
constexpr GuardedBlock::Flush kSides[] = {GuardedBlock::AtEnd, GuardedBlock::AtStart};

// Decoded pixels are laid over noise, so that a byte too many and a byte too few are both seen.
std::vector<Zmx8u> noise(std::size_t bytes) {
    Rng rng(bytes);
    return rng.vec<Zmx8u>(bytes, 0, 255);
}

template <class Check> void forEverySize(Check check) {
    for (int height = 1; height <= 20; ++height) {
        for (int width = 1; width <= 20; ++width) {
            check(ZmxiSize{width, height});
            if (::testing::Test::HasFatalFailure()) return;
        }
    }
}

// Rows so far apart that only the pages on which they lie exist.
class FarRows {
    std::uintptr_t map = 0, first;
    std::size_t mapBytes;

public:
    static constexpr Zmx32u kStep = 0u - 101;

    FarRows(int rows, std::size_t rowBytes) {
        const auto page = std::size_t(sysconf(_SC_PAGESIZE));
        const bool upwards = sizeof(void*) == 4; // addresses wrap
        const std::size_t apart = upwards ? std::size_t(0) - kStep : std::size_t(kStep);
        mapBytes = (apart * std::size_t(rows - 1) + rowBytes + page) / page * page;
        void* p = mmap(nullptr, mapBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (p == MAP_FAILED) {
            ADD_FAILURE() << "no room for rows that far apart";
            std::abort();
        }
        map = reinterpret_cast<std::uintptr_t>(p);
        first = upwards ? map + apart * std::size_t(rows - 1) : map;
        for (int y = 0; y < rows; ++y) {
            const std::uintptr_t from = std::uintptr_t(row(y)) / page * page;
            mprotect(reinterpret_cast<void*>(from), std::uintptr_t(row(y)) + rowBytes - from, PROT_READ | PROT_WRITE);
        }
    }
    ~FarRows() { munmap(reinterpret_cast<void*>(map), mapBytes); }
    FarRows(const FarRows&) = delete;
    FarRows& operator=(const FarRows&) = delete;

    Zmx8u* row(int y) const { return reinterpret_cast<Zmx8u*>(first + std::uintptr_t(kStep) * std::uintptr_t(y)); }
};

const ZmxiSize kFarSize = {18, 6}; // whole groups of blocks, a part of a block, and a part of a block row

const ZmxiSize kDigestSize = {131, 67};

} // namespace

std::size_t blockBytesOf(const TextureDecoder& f, ZmxiSize roi) {
    return model::blocksOf(roi) * std::size_t(f.blockBytes);
}
std::size_t blockBytesOf(const TextureEncoder& f, ZmxiSize roi) {
    return model::blocksOf(roi) * std::size_t(f.blockBytes);
}

std::size_t extent(ZmxiSize roi, int channels, Zmx32u step) {
    return std::size_t(step) * std::size_t(roi.height - 1) + std::size_t(channels * roi.width);
}

void checkDecoder(const TextureDecoder& f, const std::vector<Zmx8u>& blocks, ZmxiSize roi, Zmx32u step) {
    ASSERT_EQ(blocks.size(), blockBytesOf(f, roi));
    std::vector<Zmx8u> expected = noise(extent(roi, kPixel, step));
    for (GuardedBlock::Flush side : kSides) {
        Guarded<Zmx8u> src(blocks, side), dst(noise(expected.size()), side);
        ASSERT_EQ(f.call(src.data(), dst.data(), step, roi), zmxStsNoErr);
        if (side == kSides[0]) model::decodeSurface(blocks.data(), f.blockBytes, f.model, expected.data(), step, roi);
        ASSERT_TRUE(sameBytes(expected, dst.copy()))
            << f.name << ' ' << roi.width << 'x' << roi.height << " step " << step;
        ASSERT_TRUE(sameBytes(blocks, src.copy()));
    }
}

void checkEncoder(const TextureEncoder& f, const std::vector<Zmx8u>& pixels, ZmxiSize roi, Zmx32u step) {
    ASSERT_EQ(pixels.size(), extent(roi, f.channels, step));
    std::vector<Zmx8u> expected(blockBytesOf(f, roi));
    model::encodeSurface(pixels.data(), f.channels, step, roi, f.model, f.blockBytes, expected.data());
    for (GuardedBlock::Flush side : kSides) {
        Guarded<Zmx8u> src(pixels, side), dst(noise(expected.size()), side);
        ASSERT_EQ(f.call(src.data(), step, roi, dst.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy()))
            << f.name << ' ' << roi.width << 'x' << roi.height << " step " << step;
        ASSERT_TRUE(sameBytes(pixels, src.copy()));
    }
}

void checkEveryPairOfBounds(const TextureEncoder& f, const std::vector<int>& follow) {
    Rng rng(70);
    for (int lo = 0; lo < 256; ++lo) {
        // Blocks side by side, one for each upper bound; the bounds are the first and the last texel.
        const ZmxiSize roi = {4 * (256 - lo), 4};
        std::vector<Zmx8u> pixels;
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                const int hi = lo + x / 4, n = 4 * y + x % 4;
                const auto v = n == 0 ? lo : n == 15 ? hi : int(rng.range(lo, hi));
                for (int c : follow) pixels.push_back(Zmx8u(c > 0 ? v : c < 0 ? 255 - v : 128));
            }
        }
        ASSERT_NO_FATAL_FAILURE(checkEncoder(f, pixels, roi, Zmx32u(f.channels * roi.width)));
    }
}

void checkEverySize(const TextureDecoder& f) {
    Rng rng(71);
    forEverySize([&](ZmxiSize roi) {
        const auto row = Zmx32u(kPixel * roi.width);
        for (Zmx32u step : {row, row + Zmx32u(rng.range(1, 40)), Zmx32u(rng.range(1, row))}) {
            std::vector<Zmx8u> blocks(blockBytesOf(f, roi));
            rng.bytes(blocks.data(), blocks.size());
            ASSERT_NO_FATAL_FAILURE(checkDecoder(f, blocks, roi, step));
        }
    });
}

void checkEverySize(const TextureEncoder& f) {
    Rng rng(72);
    forEverySize([&](ZmxiSize roi) {
        const auto row = Zmx32u(f.channels * roi.width);
        for (Zmx32u step : {row, row + Zmx32u(rng.range(1, 40)), Zmx32u(rng.range(1, row))}) {
            const auto pixels = rng.vec<Zmx8u>(extent(roi, f.channels, step), 0, 255);
            ASSERT_NO_FATAL_FAILURE(checkEncoder(f, pixels, roi, step));
        }
    });
}

void checkGreatStep(const TextureDecoder& f) {
    Rng rng(73);
    std::vector<Zmx8u> blocks(blockBytesOf(f, kFarSize));
    rng.bytes(blocks.data(), blocks.size());
    const auto rowBytes = std::size_t(kPixel * kFarSize.width);
    std::vector<Zmx8u> expected(rowBytes * std::size_t(kFarSize.height));
    model::decodeSurface(blocks.data(), f.blockBytes, f.model, expected.data(), Zmx32u(rowBytes), kFarSize);
    FarRows dst(kFarSize.height, rowBytes);
    ASSERT_EQ(f.call(blocks.data(), dst.row(0), FarRows::kStep, kFarSize), zmxStsNoErr);
    for (int y = 0; y < kFarSize.height; ++y)
        ASSERT_TRUE(sameBytes(expected.data() + rowBytes * std::size_t(y), dst.row(y), rowBytes)) << "row " << y;
}

void checkGreatStep(const TextureEncoder& f) {
    Rng rng(74);
    const auto pixels = variedPicture(rng, kFarSize, f.channels);
    const auto rowBytes = std::size_t(f.channels * kFarSize.width);
    FarRows src(kFarSize.height, rowBytes);
    for (int y = 0; y < kFarSize.height; ++y)
        std::memcpy(src.row(y), pixels.data() + rowBytes * std::size_t(y), rowBytes);
    std::vector<Zmx8u> expected(blockBytesOf(f, kFarSize)), actual(expected.size());
    model::encodeSurface(pixels.data(), f.channels, Zmx32u(rowBytes), kFarSize, f.model, f.blockBytes, expected.data());
    ASSERT_EQ(f.call(src.row(0), FarRows::kStep, kFarSize, actual.data()), zmxStsNoErr);
    ASSERT_TRUE(sameBytes(expected, actual));
}

namespace {
const Zmx32u kOddSteps[] = {1, 3, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
}

void checkStepOfOneRow(const TextureDecoder& f) {
    Rng rng(75);
    for (Zmx32u step : kOddSteps) {
        const ZmxiSize roi = {21, 1};
        const auto blocks = rng.vec<Zmx8u>(blockBytesOf(f, roi), 0, 255);
        ASSERT_NO_FATAL_FAILURE(checkDecoder(f, blocks, roi, step));
    }
}

void checkStepOfOneRow(const TextureEncoder& f) {
    Rng rng(76);
    for (Zmx32u step : kOddSteps) {
        const ZmxiSize roi = {21, 1};
        const auto pixels = rng.vec<Zmx8u>(extent(roi, f.channels, step), 0, 255);
        ASSERT_NO_FATAL_FAILURE(checkEncoder(f, pixels, roi, step));
    }
}

namespace {

// Pointers, then the step, which is bad only when it is 0, then the size. Nothing is written.
template <class Call> void checkOrderOfArguments(Call call) {
    const std::vector<ZmxStatus> tests = {kNull, kNull, kStep, kSize, kSize};
    std::vector<Zmx8u> src(64, 0x55), dst(64, 0xA5);
    checkOrder(tests, [&](const Bad& bad) {
        return call(bad.null(0, src.data()), bad.null(1, dst.data()), bad.any(2, 16u, {0u}),
                    ZmxiSize{bad.below1(3, 4), bad.below1(4, 4)});
    });
    EXPECT_EQ(dst, std::vector<Zmx8u>(64, 0xA5));
    EXPECT_EQ(src, std::vector<Zmx8u>(64, 0x55));
    EXPECT_EQ(call(src.data(), dst.data(), 16, ZmxiSize{4, 4}), zmxStsNoErr);
}

} // namespace

void checkArguments(const TextureDecoder& f) {
    checkOrderOfArguments([&](const Zmx8u* s, Zmx8u* d, Zmx32u step, ZmxiSize roi) { return f.call(s, d, step, roi); });
}

void checkArguments(const TextureEncoder& f) {
    checkOrderOfArguments([&](const Zmx8u* s, Zmx8u* d, Zmx32u step, ZmxiSize roi) { return f.call(s, step, roi, d); });
}

std::uint64_t digestOf(const TextureDecoder& f) {
    Rng rng(77);
    const auto blocks = rng.vec<Zmx8u>(blockBytesOf(f, kDigestSize), 0, 255);
    const auto step = Zmx32u(kPixel * kDigestSize.width);
    std::vector<Zmx8u> pixels(extent(kDigestSize, kPixel, step));
    EXPECT_EQ(f.call(blocks.data(), pixels.data(), step, kDigestSize), zmxStsNoErr);
    return Digest().add(pixels).get();
}

std::uint64_t digestOf(const TextureEncoder& f) {
    Rng rng(78);
    const auto pixels = variedPicture(rng, kDigestSize, f.channels);
    std::vector<Zmx8u> blocks(blockBytesOf(f, kDigestSize));
    EXPECT_EQ(f.call(pixels.data(), Zmx32u(f.channels * kDigestSize.width), kDigestSize, blocks.data()), zmxStsNoErr);
    return Digest().add(blocks).get();
}

std::vector<Zmx8u> variedPicture(Rng& rng, ZmxiSize roi, int channels) {
    std::vector<Zmx8u> out(extent(roi, channels, Zmx32u(channels * roi.width)));
    const auto at = [&](int x, int y, int c) -> Zmx8u& { return out[std::size_t((y * roi.width + x) * channels + c)]; };
    for (int y0 = 0; y0 < roi.height; y0 += 4) {
        for (int x0 = 0; x0 < roi.width; x0 += 4) {
            for (int c = 0; c < channels; ++c) {
                const auto kind = int(rng.range(0, 9));
                const auto a = int(rng.range(0, 255)), b = int(rng.range(0, 255));
                const auto dx = int(rng.range(-20, 20)), dy = int(rng.range(-20, 20));
                const int lo = std::min(a, b), hi = std::max(a, b), reach = (kind == 8 ? 32 : 64) + a % 3 - 1;
                for (int y = y0; y < std::min(y0 + 4, roi.height); ++y) {
                    for (int x = x0; x < std::min(x0 + 4, roi.width); ++x) {
                        const auto r = int(rng.range(0, 255));
                        const int v = kind == 0   ? r                                                     // noise
                                      : kind == 1 ? a                                                     // flat
                                      : kind == 2 ? (r < 128 ? a : b)                                     // two values
                                      : kind == 3 ? std::clamp(a + dx * (x - x0) + dy * (y - y0), 0, 255) // a slope
                                      : kind == 4 ? (r < 128 ? 0 : 255)                                   // extremes
                                      : kind == 5 ? r % (1 + a % 16)                                  // at the bottom
                                      : kind == 6 ? 255 - r % (1 + a % 16)                            // at the top
                                      : kind == 7 ? lo + r % (hi - lo + 1)                            // a range
                                                  : std::min(128 - reach + r % (2 * reach + 1), 255); // in the middle
                        at(x, y, c) = Zmx8u(v);
                    }
                }
            }
        }
    }
    return out;
}

std::vector<Zmx8u> decoded(const TextureDecoder& f, const std::vector<Zmx8u>& block) {
    EXPECT_EQ(block.size(), std::size_t(f.blockBytes));
    std::vector<Zmx8u> pixels(64);
    EXPECT_EQ(f.call(block.data(), pixels.data(), 16, ZmxiSize{4, 4}), zmxStsNoErr);
    return pixels;
}

std::vector<Zmx8u> encoded(const TextureEncoder& f, const std::vector<Zmx8u>& pixels) {
    EXPECT_EQ(pixels.size(), std::size_t(16 * f.channels));
    std::vector<Zmx8u> block(std::size_t(f.blockBytes));
    EXPECT_EQ(f.call(pixels.data(), Zmx32u(4 * f.channels), ZmxiSize{4, 4}, block.data()), zmxStsNoErr);
    return block;
}
