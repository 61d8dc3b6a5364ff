// The tables of the colour conversions: every entry by its rule, and entries spelt out.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjdeccctbl.h"
#include "pjenccctbl.h"

#include <gtest/gtest.h>

using namespace zmx;

TEST(ColourTables, SampleEntriesFromYCbCr) {
    const struct {
        std::size_t at;
        Zmx32s red, blue, greenOfCr, greenOfCb;
    } rows[] = {
        {0, -179, -227, 5990656, 2919680}, {127, -1, -2, 46802, 55322},         {128, 0, 0, 0, 32768},
        {129, 1, 2, -46802, 10214},        {255, 178, 225, -5943854, -2831590},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.at);
        EXPECT_EQ(cr_r_tbl[row.at], row.red);
        EXPECT_EQ(cb_b_tbl[row.at], row.blue);
        EXPECT_EQ(cr_g_tbl[row.at], row.greenOfCr);
        EXPECT_EQ(cb_g_tbl[row.at], row.greenOfCb);
    }
}

TEST(ColourTables, EveryEntryFromYCbCr) {
    for (int i = 0; i < 256; ++i) {
        SCOPED_TRACE(i);
        const int d = i - 128;
        const auto at = std::size_t(i);
        ASSERT_EQ(cr_r_tbl[at], (91881 * d + 32768) >> 16);
        ASSERT_EQ(cb_b_tbl[at], (116130 * d + 32768) >> 16);
        ASSERT_EQ(cr_g_tbl[at], -46802 * d) << "no rounding term: the other table of green has it";
        ASSERT_EQ(cb_g_tbl[at], -22554 * d + 32768);
    }
}

TEST(ColourTables, SampleEntriesToYCbCr) {
    static_assert(sizeof cc_table == 8192);
    const Zmx32s first[8] = {0, 0, 32768, 0, 0, 8421375, 0, 0};
    const Zmx32s last[8] = {4996725, 9809850, 1937873, -2820045, -5535795, 16777215, -6996945, -1358895};
    for (std::size_t k = 0; k < 8; ++k) {
        EXPECT_EQ(cc_table[256 * k], first[k]) << k;
        EXPECT_EQ(cc_table[256 * k + 255], last[k]) << k;
    }
}

TEST(ColourTables, EveryEntryToYCbCr) {
    const int factor[8] = {19595, 38470, 7471, -11059, -21709, 32768, -27439, -5329};
    const int term[8] = {0, 0, 32768, 0, 0, 128 * 65536 + 32767, 0, 0};
    for (int k = 0; k < 8; ++k)
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(cc_table[std::size_t(256 * k + i)], factor[k] * i + term[k]) << k << ", " << i;
}
