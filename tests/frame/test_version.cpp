// The version record.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <cstring>
#include <gtest/gtest.h>

TEST(Version, RecordIsConstantAndSaysWhatTheLibraryIs) {
    const ZmxLibraryVersion* v = zmxjGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, zmxjGetLibVersion());
    EXPECT_EQ(v->major, 6);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->majorBuild, 137);
    EXPECT_EQ(v->build, 823);
    EXPECT_EQ(std::memcmp(v->targetCpu, "px\0\0", 4), 0);
    EXPECT_STREQ(v->Name, "libzmxjpx.so.6.1");
    EXPECT_STREQ(v->Version, "6.1 build 137.56");
    EXPECT_STREQ(v->BuildDate, "Mar 17 2010");
}

TEST(Version, StatusValues) {
    EXPECT_EQ(zmxStsNoErr, 0);
    EXPECT_EQ(zmxStsDivByZero, 6);
    EXPECT_EQ(zmxStsErr, -2);
    EXPECT_EQ(zmxStsBadArgErr, -5);
    EXPECT_EQ(zmxStsSizeErr, -6);
    EXPECT_EQ(zmxStsRangeErr, -7);
    EXPECT_EQ(zmxStsNullPtrErr, -8);
    EXPECT_EQ(zmxStsMemAllocErr, -9);
    EXPECT_EQ(zmxStsStepErr, -14);
    EXPECT_EQ(zmxStsContextMatchErr, -17);
    EXPECT_EQ(zmxStsOutOfBufErr, -62);
    EXPECT_EQ(zmxStsDCTRangeErr, -63);
    EXPECT_EQ(zmxStsHuffTableErr, -64);
    EXPECT_EQ(zmxStsCBDamagedErr, -112);
    EXPECT_EQ(zmxStsBadPassNumberErr, -113);
    EXPECT_EQ(zmxStsUnderRunErr, -124);
    EXPECT_EQ(zmxStsCBNotAttachedErr, -180);
    EXPECT_EQ(zmxStsNotSupportedModeErr, -9999);
}

TEST(Version, ElementTypesHaveTheirWidths) {
    EXPECT_EQ(sizeof(Zmx8u), 1u);
    EXPECT_EQ(sizeof(Zmx16s), 2u);
    EXPECT_EQ(sizeof(Zmx16u), 2u);
    EXPECT_EQ(sizeof(Zmx32s), 4u);
    EXPECT_EQ(sizeof(Zmx32u), 4u);
    EXPECT_EQ(sizeof(Zmx32f), 4u);
    EXPECT_EQ(sizeof(ZmxiSize), 8u);
    EXPECT_EQ(sizeof(ZmxiRect), 16u);
    EXPECT_EQ(sizeof(ZmxiPoint), 8u);
    EXPECT_EQ(sizeof(ZmxStatus), 4u);
}
