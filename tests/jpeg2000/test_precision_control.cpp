// The functions in extended precision do not depend on the state of the x87 unit, which is the caller's: its precision
// and its rounding, set to anything, give the same bytes, and are still set when a function returns.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#if (defined __i386__ || defined __x86_64__) && __has_include(<fpu_control.h>)
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/rng.h"

#include <bit>
#include <fpu_control.h>
#include <functional>
#include <gtest/gtest.h>

namespace {

fpu_control_t control() {
    fpu_control_t now;
    _FPU_GETCW(now);
    return now;
}

// Sets the unit for as long as it lives.
class Unit {
    fpu_control_t before = control();

public:
    explicit Unit(fpu_control_t precision, fpu_control_t rounding) {
        fpu_control_t now = fpu_control_t((before & ~(_FPU_EXTENDED | _FPU_RC_ZERO)) | precision | rounding);
        _FPU_SETCW(now);
    }
    ~Unit() { _FPU_SETCW(before); }
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;
};

struct Setting {
    const char* name;
    fpu_control_t precision, rounding;
};
constexpr Setting kSettings[] = {
    {"53 bits", _FPU_DOUBLE, _FPU_RC_NEAREST},         {"24 bits", _FPU_SINGLE, _FPU_RC_NEAREST},
    {"64 bits, up", _FPU_EXTENDED, _FPU_RC_UP},        {"64 bits, down", _FPU_EXTENDED, _FPU_RC_DOWN},
    {"64 bits, to zero", _FPU_EXTENDED, _FPU_RC_ZERO}, {"24 bits, up", _FPU_SINGLE, _FPU_RC_UP},
};

// Calls fn(memory) on the same bytes in every setting; the memory is all that it may change.
using Call = std::function<ZmxStatus(std::vector<Zmx8u>&)>;
void checkSettings(const std::vector<Zmx8u>& memory, const Call& fn) {
    auto want = memory;
    ASSERT_EQ(fn(want), zmxStsNoErr);
    ASSERT_NE(want, memory);
    for (const Setting& s : kSettings) {
        SCOPED_TRACE(s.name);
        auto got = memory;
        ZmxStatus status;
        fpu_control_t during, after;
        {
            const Unit unit(s.precision, s.rounding);
            during = control();
            status = fn(got);
            after = control();
        }
        EXPECT_EQ(status, zmxStsNoErr);
        EXPECT_EQ(during, after);
        EXPECT_EQ(want, got);
    }
}

// Floats whose sums have more than 53 bits now and then, and hardly ever fewer than 24.
std::vector<Zmx8u> floats(std::size_t n, std::uint64_t seed) {
    Rng rng(seed);
    std::vector<Zmx8u> bytes(4 * n);
    for (std::size_t i = 0; i < n; ++i) {
        const Zmx32f v = std::bit_cast<Zmx32f>(Zmx32u(rng.range(0, 1) << 31 | rng.range(0x3D000000, 0x4B000000)));
        std::memcpy(&bytes[4 * i], &v, 4);
    }
    return bytes;
}
Zmx32f* at(std::vector<Zmx8u>& memory, int sample) { return reinterpret_cast<Zmx32f*>(memory.data()) + sample; }

constexpr int kWidth = 1000, kHeight = 40;

// Three planes side by side, and pixels behind them.
using Planes = Zmx32f* const[3];
constexpr int kPixels = 3 * kWidth * kHeight;
constexpr ZmxiSize kRoi{kWidth, kHeight};

} // namespace

TEST(PrecisionControl, ComponentTransforms) {
    const auto memory = floats(2 * kPixels, 901);
    const auto withPlanes = [&](auto fn) {
        checkSettings(memory, [=](std::vector<Zmx8u>& m) {
            Planes planes = {at(m, 0), at(m, kWidth * kHeight), at(m, 2 * kWidth * kHeight)};
            return fn(planes, at(m, kPixels));
        });
    };
    withPlanes([](Planes& p, Zmx32f*) { return zmxiICTFwd_JPEG2K_32f_P3IR(p, 4 * kWidth, kRoi); });
    withPlanes([](Planes& p, Zmx32f*) { return zmxiICTInv_JPEG2K_32f_P3IR(p, 4 * kWidth, kRoi); });
    withPlanes([](Planes& p, Zmx32f* pixels) {
        return zmxiICTFwd_JPEG2K_32f_C3P3R(pixels, 12 * kWidth, p, 4 * kWidth, kRoi);
    });
    withPlanes([](Planes& p, Zmx32f* pixels) {
        const Zmx32f* const from[3] = {p[0], p[1], p[2]};
        return zmxiICTInv_JPEG2K_32f_P3C3R(from, 4 * kWidth, pixels, 12 * kWidth, kRoi);
    });
}

TEST(PrecisionControl, WaveletKernels) {
    // The samples with margins, the low band, the high band: planes of kHeight rows and as many columns as there are.
    constexpr int step = 4 * kWidth, bandPlace = kWidth * (kHeight + 20), highPlace = 2 * bandPlace,
                  x = 10 * kWidth + 8;
    const auto memory = floats(3 * bandPlace, 902);
    for (const int phase : {0, 1})
        for (const ZmxiSize roi : {ZmxiSize{450, kHeight / 2 - 8}, ZmxiSize{1, 9}, ZmxiSize{9, 1}}) {
            SCOPED_TRACE(::testing::Message() << roi.width << 'x' << roi.height << ' ' << phase);
            for (const auto fn : {zmxiWTFwdRow_D97_JPEG2K_32f_C1R, zmxiWTFwdCol_D97_JPEG2K_32f_C1R})
                checkSettings(memory, [=](std::vector<Zmx8u>& m) {
                    return fn(at(m, x), step, at(m, bandPlace + x), step, at(m, highPlace + x), step, roi, phase);
                });
            for (const auto fn : {zmxiWTInvRow_D97_JPEG2K_32f_C1R, zmxiWTInvCol_D97_JPEG2K_32f_C1R})
                checkSettings(memory, [=](std::vector<Zmx8u>& m) {
                    return fn(at(m, bandPlace + x), step, at(m, highPlace + x), step, roi, at(m, x), step, phase);
                });
        }
}

TEST(PrecisionControl, ColumnLifting) {
    const auto memory = floats(8 * kWidth, 903);
    checkSettings(memory, [](std::vector<Zmx8u>& m) {
        const auto row = [&](int k) { return at(m, k * kWidth); };
        return zmxiWTFwdColLift_D97_JPEG2K_32f_C1(row(0), row(1), row(2), row(3), row(4), row(5), row(6), row(7),
                                                  kWidth);
    });
    checkSettings(memory, [](std::vector<Zmx8u>& m) {
        const auto row = [&](int k) { return at(m, k * kWidth); };
        return zmxiWTInvColLift_D97_JPEG2K_32f_C1(row(0), row(1), row(2), row(3), row(4), row(5), row(6), row(7),
                                                  kWidth);
    });
}

TEST(PrecisionControl, WaveletOfPlanes) {
    Rng rng(904);
    std::vector<Zmx8u> scratch(kWidth * kHeight * 4 + 32 * kHeight + 4 * kWidth + 64);
    for (const int bits : {12, 27, 31}) {
        std::vector<Zmx8u> memory(2 * kWidth * kHeight * 4);
        for (std::size_t i = 0; i < memory.size(); i += 4) {
            const Zmx32s v = Zmx32s(Zmx32u(rng.next())) >> (32 - bits);
            std::memcpy(&memory[i], &v, 4);
        }
        const ZmxiRect tile{0, 0, kWidth, kHeight};
        const auto plane = [](std::vector<Zmx8u>& m, int sample) {
            return reinterpret_cast<Zmx32s*>(m.data()) + sample;
        };
        constexpr int quarter = kWidth * kHeight / 4, step = 2 * kWidth;
        constexpr int steps[4] = {step, step, step, step};
        for (const auto fn : {zmxiWTFwd_D97_JPEG2K_32s_C1IR, zmxiWTInv_D97_JPEG2K_32s_C1IR})
            checkSettings(memory,
                          [&](std::vector<Zmx8u>& m) { return fn(plane(m, 0), 4 * kWidth, &tile, scratch.data()); });
        checkSettings(memory, [&](std::vector<Zmx8u>& m) {
            Zmx32s* const bands[4] = {plane(m, 4 * quarter), plane(m, 5 * quarter), plane(m, 6 * quarter),
                                      plane(m, 7 * quarter)};
            return zmxiWTFwd_D97_JPEG2K_32s_C1R(plane(m, 0), 4 * kWidth, &tile, bands, steps, scratch.data());
        });
        checkSettings(memory, [&](std::vector<Zmx8u>& m) {
            const Zmx32s* const bands[4] = {plane(m, 4 * quarter), plane(m, 5 * quarter), plane(m, 6 * quarter),
                                            plane(m, 7 * quarter)};
            return zmxiWTInv_D97_JPEG2K_32s_C1R(bands, steps, plane(m, 0), 4 * kWidth, &tile, scratch.data());
        });
    }
}

// All planes of all bits: the sum of the first distortion and the last one has more than 53 bits.
TEST(PrecisionControl, Distortion) {
    Rng rng(905);
    constexpr ZmxiSize size{32, 32};
    EncoderState state(size);
    const CodedBlock block = encodeBlock(state, randomBlock(rng, 32, 32, 31), size, choice(0));
    ASSERT_GT(block.passes, 80);
    checkSettings(std::vector<Zmx8u>(8 * 128), [&](std::vector<Zmx8u>& m) {
        for (int pass = 0; pass < block.passes; ++pass) {
            double distortion = -1;
            const ZmxStatus status = zmxiEncodeGetDist_JPEG2K(state, pass, &distortion);
            if (status != zmxStsNoErr) return status;
            std::memcpy(&m[std::size_t(8 * pass)], &distortion, 8);
        }
        return ZmxStatus(zmxStsNoErr);
    });
}
#endif
