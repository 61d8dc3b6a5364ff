// The workers behind the two level shifts: they test nothing, so rows may also run upward.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjls.h"
#include "tests/jpeg/model/levelshift.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"

using namespace zmx;

TEST(LevelShiftWorkers, RowsUpwardAndStillRows) {
    Rng rng(251);
    SCOPED_TRACE("seed 251");
    Guarded<Zmx16s> wide(rng.vec<Zmx16s>(8 * 5, -200, 200));
    Guarded<Zmx8u> narrow(8 * 5);
    std::vector<Zmx8u> expected(8 * 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 8; ++x)
            expected[std::size_t(8 * y + x)] = model::add128(wide[std::size_t(8 * (4 - y) + x)]);
    ownpj_Add128_JPEG_16s8u_C1R(wide.data() + 32, -16, narrow.data(), 8, {8, 5});
    EXPECT_TRUE(sameBytes(expected, narrow.copy()));

    Guarded<Zmx16s> back(8 * 5);
    ownpj_Sub128_JPEG_8u16s_C1R(narrow.data() + 32, 0, back.data() + 32, -16, {8, 5});
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(back[std::size_t(i)], model::sub128(expected[std::size_t(32 + i % 8)])) << "one row five times";
}

TEST(LevelShiftWorkers, NoRowsNoWork) {
    Zmx16s wide[2] = {5, 6};
    Zmx8u narrow[2] = {7, 8};
    for (ZmxiSize none : {ZmxiSize{2, 0}, ZmxiSize{0, 2}, ZmxiSize{2, -1}}) {
        ownpj_Add128_JPEG_16s8u_C1R(wide, 4, narrow, 2, none);
        ownpj_Sub128_JPEG_8u16s_C1R(narrow, 2, wide, 4, none);
    }
    EXPECT_EQ(wide[0], 5);
    EXPECT_EQ(narrow[0], 7);
}
