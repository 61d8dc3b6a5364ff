// The zig-zag tables of ITU-T T.81 Figure A.6 and the reordering of blocks.
// SPDX-License-Identifier: BSD-2-Clause
#include "pizigzag.h"
#include "pjzigzag.h"
#include "tests/jpeg/model/quant.h"
#include "tests/support/arguments.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"

using namespace zmx;

TEST(Zigzag, TheWalkAndEightEntriesBehindIt) {
    ASSERT_EQ(own_pj_izigzag_index.size(), 72u);
    for (int k = 0; k < 64; ++k) EXPECT_EQ(own_pj_izigzag_index[std::size_t(k)], model::kZigzag[k]) << k;
    for (std::size_t k = 64; k < 72; ++k) EXPECT_EQ(own_pj_izigzag_index[k], 63) << k;
    static_assert(std::is_same_v<std::remove_cvref_t<decltype(own_pj_izigzag_index[0])>, Zmx32s>);
}

TEST(Zigzag, TheInverseTable) {
    ASSERT_EQ(zigzag_index_Fwd.size(), 64u);
    const int row0[8] = {0, 1, 5, 6, 14, 15, 27, 28}, row7[8] = {35, 36, 48, 49, 57, 58, 62, 63};
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(zigzag_index_Fwd[i], row0[i]);
        EXPECT_EQ(zigzag_index_Fwd[56 + i], row7[i]);
    }
    for (int k = 0; k < 64; ++k) EXPECT_EQ(zigzag_index_Fwd[std::size_t(model::kZigzag[k])], k);
    static_assert(std::is_same_v<std::remove_cvref_t<decltype(zigzag_index_Fwd[0])>, Zmx32s>);
}

TEST(Zigzag, BlocksToNaturalOrder) {
    Guarded<Zmx16s> src(Rng(252).vec<Zmx16s>(64, -32768, 32767)), dst(64);
    ASSERT_EQ(zmxiZigzagInv8x8_16s_C1(src.data(), dst.data()), zmxStsNoErr);
    for (int k = 0; k < 64; ++k) EXPECT_EQ(dst[std::size_t(model::kZigzag[k])], src[std::size_t(k)]);
    checkOrder({kNull, kNull}, [&](const Bad& bad) {
        return zmxiZigzagInv8x8_16s_C1(bad.null(0, src.data()), bad.null(1, dst.data()));
    });
}
