// argorder.h - every set of bad arguments of a function, against the order in which it tests them.
#pragma once

#include "zmxj.h"

#include <bit>
#include <gtest/gtest.h>
#include <vector>

// In a call for the set `bad`: the argument of the i-th test, or its bad value.
template <class T> T* nullIf(unsigned bad, int i, T* good) { return bad >> i & 1 ? nullptr : good; }
inline int badIf(unsigned bad, int i, int badValue, int good) { return bad >> i & 1 ? badValue : good; }

// order[i] is what the i-th test gives; call(bad) calls the function with the arguments of the tests in `bad`
// gone wrong. The first of them decides.
template <class Call> void checkOrder(const std::vector<ZmxStatus>& order, Call call) {
    for (unsigned bad = 1; bad < 1u << order.size(); ++bad)
        ASSERT_EQ(call(bad), order[std::size_t(std::countr_zero(bad))]) << "bad arguments: tests in mask " << bad;
}
