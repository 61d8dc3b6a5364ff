// pjargs.h - the tests of arguments at the head of every exported function.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// A chain of tests in the order in which they stand: the first that fails decides, the later ones are skipped.
// The order is part of each function's contract; where it is not pointers, steps, sizes, a comment says so.
class Args {
    ZmxStatus st = zmxStsNoErr;

public:
    constexpr Args& test(bool bad, ZmxStatus code) {
        if (!st && bad) st = code;
        return *this;
    }
    template <class... Pointer> constexpr Args& ptr(Pointer... p) {
        return (test(p == nullptr, zmxStsNullPtrErr), ...);
    }
    constexpr Args& step(int v) { return test(v < 1, zmxStsStepErr); }
    constexpr Args& size(int v) { return test(v < 1, zmxStsSizeErr); }
    constexpr Args& size(ZmxiSize s) { return size(s.width).size(s.height); }
    constexpr Args& arg(bool bad) { return test(bad, zmxStsBadArgErr); }

    // Each of n plane pointers from the first upward; the array itself must have passed ptr() before.
    template <class T> constexpr Args& planes(T* const* p, int n) {
        for (int i = 0; !st && i < n; ++i) ptr(p[i]);
        return *this;
    }

    constexpr operator ZmxStatus() const { return st; }
};

} // namespace zmx
