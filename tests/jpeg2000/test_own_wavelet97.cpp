// What the exact form of the 9/7 lifting makes of its results.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt97exact.h"

#include <climits>
#include <gtest/gtest.h>

using namespace zmx;

TEST(Wavelet97Exact, SaturatesThenTruncatesTowardZero) {
    const auto integer = [](double v) { return wt97::ext::toInteger(SoftExtended(v)); };
    EXPECT_EQ(integer(0), 0);
    EXPECT_EQ(integer(1.999), 1);
    EXPECT_EQ(integer(-1.999), -1);
    EXPECT_EQ(integer(2147483647.0), INT_MAX);
    EXPECT_EQ(integer(2147483647.75), INT_MAX);
    EXPECT_EQ(integer(2147483648.0), INT_MIN) << "2^31 itself";
    EXPECT_EQ(integer(2147483648.5), INT_MAX);
    EXPECT_EQ(integer(1e300), INT_MAX);
    EXPECT_EQ(integer(-2147483647.75), -INT_MAX);
    EXPECT_EQ(integer(-2147483648.0), INT_MIN);
    EXPECT_EQ(integer(-2147483648.5), INT_MIN);
    EXPECT_EQ(integer(-1e300), INT_MIN);
}
