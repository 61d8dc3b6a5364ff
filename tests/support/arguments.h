// arguments.h - every combination of good and bad arguments of a function, against the order in which it tests them.
//
// The tests of a function are numbered from 0 in the order in which it makes them. A case states the status that
// each of them gives, and a call in which each argument names its test:
//
//     checkOrder({kNull, kStep, kSize}, [&](const Bad& bad) {
//         return function(bad.null(0, src.data()), bad.below1(1, 8), bad.below1(2, 4));
//     });
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/support/rounds.h"
#include "zmxj/types.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

inline constexpr ZmxStatus kNull = zmxStsNullPtrErr, kStep = zmxStsStepErr, kSize = zmxStsSizeErr,
                           kBadArg = zmxStsBadArgErr;

// Which arguments of a call are bad, and in which way. A test below 0 is one that the function does not make: the
// argument is always good.
class Bad {
    std::vector<int> choice; // of each test: 0 for a good argument, 1, 2, ... for one of the bad ones
    mutable std::vector<int> ways;
    template <class Call> friend void checkOrder(const std::vector<ZmxStatus>& order, Call call);

    explicit Bad(std::size_t tests) : choice(tests, 1), ways(tests, 0) {}
    // The next combination; false when the last one has been.
    bool advance() {
        for (std::size_t i = 0; i < choice.size(); choice[i++] = 0)
            if (choice[i] < ways[i]) return ++choice[i], true;
        return false;
    }

public:
    // Any argument: the good value or one of the bad ones.
    template <class T> T any(int test, T good, std::initializer_list<std::type_identity_t<T>> bad) const {
        if (test < 0) return good;
        int& known = ways.at(std::size_t(test));
        if (known == 0) known = int(bad.size());
        EXPECT_EQ(known, int(bad.size())) << "arguments that share test " << test << " go bad in the same ways";
        const int way = choice[std::size_t(test)];
        return way == 0 ? good : bad.begin()[way - 1];
    }
    // A pointer, which is bad when it is null.
    template <class T> T* null(int test, T* good) const { return any<T*>(test, good, {nullptr}); }
    // A step, length, width or height, which is bad below 1.
    int below1(int test, int good) const { return any(test, good, {0, -1, -2147483647 - 1}); }
};

// Calls call(bad) for every combination but the one in which all is well: the first test that fails decides. In short,
// one bad argument or two, which tell the order as well.
template <class Call> void checkOrder(const std::vector<ZmxStatus>& order, Call call) {
    Bad bad(order.size());
    // The first call, with all of them bad, tells in how many ways each can be.
    ASSERT_EQ(call(std::as_const(bad)), order[0]) << "all arguments bad";
    for (std::size_t i = 0; i < order.size(); ++i) ASSERT_GT(bad.ways[i], 0) << "no argument names test " << i;
    std::fill(bad.choice.begin(), bad.choice.end(), 0);
    const std::ptrdiff_t most = shortened() ? 2 : std::ptrdiff_t(order.size());
    while (bad.advance()) {
        if (std::count_if(bad.choice.begin(), bad.choice.end(), [](int way) { return way != 0; }) > most) continue;
        const auto first = std::find_if(bad.choice.begin(), bad.choice.end(), [](int way) { return way != 0; });
        ASSERT_EQ(call(std::as_const(bad)), order[std::size_t(first - bad.choice.begin())])
            << "bad arguments: " << ::testing::PrintToString(bad.choice);
    }
}
