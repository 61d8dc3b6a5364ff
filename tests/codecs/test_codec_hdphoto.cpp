// The coefficients of the HD Photo transform over whole pictures.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/hdphoto/hdphoto.h"
#include "tests/codecs/support/pictures.h"

using namespace codecs;

namespace {

hdphoto::Energy measured(const Picture& picture) {
    PictureSource rows(picture);
    return hdphoto::measure(rows, true);
}

} // namespace

TEST(HdPhoto, AFlatPictureHasItsEnergyInTheDc) {
    const hdphoto::Energy e = measured(made(shapeOf(9, 5, 1), std::vector<unsigned>(45, 138)));
    EXPECT_EQ(e.blocks, 6u) << "3 by 2, the last ones continued";
    EXPECT_EQ(e.lost, 0u);
    EXPECT_EQ(e.mean[0], 1600.0) << "10 above the middle, with a gain of 4";
    for (std::size_t i = 1; i < 16; ++i) EXPECT_EQ(e.mean[i], 0.0);
    ASSERT_EQ(e.coefficients.shape(), shapeOf(12, 8, 1));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 12; ++x) EXPECT_EQ(e.coefficients.at(x, y), x < 3 && y < 2 ? 138u : 128u);
}

TEST(HdPhoto, ARampAsItsCoefficients) {
    std::vector<unsigned> ramp;
    for (unsigned i = 0; i < 16; ++i) ramp.push_back(128 + i);
    const hdphoto::Energy e = measured(made(shapeOf(4, 4, 1), ramp));
    const int coefficients[16] = {30, 0, -17, 0, 0, 0, 0, -2, -4, 0, 0, 0, 0, -1, 0, 0};
    for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(e.mean[i], double(coefficients[i]) * coefficients[i]) << i;
    EXPECT_EQ(e.coefficients.at(2, 0), 128u - 17);
    EXPECT_EQ(e.coefficients.at(0, 0), 128u + 30 / 4);
}

TEST(HdPhoto, EveryKindComesBack) {
    for (int maxval : {1, 255, 4095, 65535})
        for (int channels = 1; channels <= 4; ++channels)
            for (auto [width, height] : {std::pair{1, 1}, {3, 50}, {64, 64}, {101, 7}}) {
                const hdphoto::Energy e = measured(noise(shapeOf(width, height, channels, maxval)));
                EXPECT_EQ(e.lost, 0u);
                EXPECT_EQ(e.blocks, std::uint64_t((width + 3) / 4 * ((height + 3) / 4) * channels));
                EXPECT_TRUE(e.mean[0] > 0 || maxval == 1) << "a single bit is 0 or -1 about its middle";
            }
}
