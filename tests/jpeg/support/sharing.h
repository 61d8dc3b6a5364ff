// sharing.h - whether a function shares out its rows to threads when it should, and works the same with any number.
//
// A test that includes this also includes tests/support/threads.cpp.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/support/threads.h"
#include "zmxj/types.h"

#include <gtest/gtest.h>

// call() works on a region of this size and compares the result; shared tells whether its function shares out rows.
template <class Call> void checkSharing(ZmxiSize size, bool shared, Call call) {
    for (int threads : {1, 2, 7}) {
        SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height << " on " << threads << " threads");
        setThreads(threads);
        const int asked = threadsAsked();
        const long opened = regionsOpened();
        ASSERT_NO_FATAL_FAILURE(call());
        EXPECT_EQ(threadsAsked(), asked + shared) << "the count is asked at every size";
        if (regionsCounted()) {
            EXPECT_EQ(regionsOpened(), opened + (shared && size.width * size.height > 8192 ? 1 : 0));
        }
    }
    setThreads(1);
}
