// arguments.h - every combination of good and bad arguments, and what decides when several are bad.
#pragma once

#include "zmxj/types.h"

#include <gtest/gtest.h>
#include <vector>

// One test of a function's argument tests: in how many ways the argument can be bad, and the status that it gives.
struct ArgTest {
    int ways;
    ZmxStatus status;
};

// Calls with(choice) for every combination but the one in which all is well: choice[i] is 0 for a good argument and
// 1, 2, ... for a bad one. The tests stand in the order in which the function makes them.
template <class Call> void everyBadCombination(const std::vector<ArgTest>& tests, Call with) {
    std::vector<int> choice(tests.size(), 0);
    for (;;) {
        std::size_t i = 0;
        for (; i < choice.size() && choice[i] == tests[i].ways; ++i) choice[i] = 0;
        if (i == choice.size()) return;
        ++choice[i];
        std::size_t first = 0;
        while (choice[first] == 0) ++first;
        ASSERT_EQ(with(choice), tests[first].status) << ::testing::PrintToString(choice);
    }
}

// A step, width or height: good, 0, -1, the least.
inline int badNumber(int choice, int good) {
    const int v[] = {good, 0, -1, -2147483647 - 1};
    return v[choice];
}
