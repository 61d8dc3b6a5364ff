// arguments.h - the statuses of a function for every single bad argument and every pair of them, which shows the order
// of its tests.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/digests/digests.h"

#include <tuple>
#include <utility>

// An argument, and in how many ways it can be refused. Way 0 is the good one.
template <class T> struct Argument {
    T good;
    std::vector<T> bad;
};

// A number that is refused for being too small: a step, a length.
struct Least {
    int good;
    int least = 1;
};

template <class T> Argument<T*> argument(T* p) { return {p, {nullptr}}; }
inline Argument<int> argument(int v) { return {v, {}}; } // not tested
inline Argument<Zmx32u> argument(Zmx32u v) { return {v, {}}; }
inline Argument<int> argument(Least v) { return {v.good, {v.least - 1, -7}}; }
inline Argument<ZmxiSize> argument(ZmxiSize s) { return {s, {{0, s.height}, {s.width, -1}}}; }
template <class T> Argument<T> argument(Argument<T> a) { return a; }

// An array of N pointers of which each may be null, kept for the time of the test.
template <class T, int N> class PointerSets {
    T* sets[N + 1][N];

public:
    explicit PointerSets(T* const* good) {
        for (int bad = 0; bad <= N; ++bad)
            for (int i = 0; i < N; ++i) sets[bad][i] = bad == i + 1 ? nullptr : good[i];
    }
    Argument<T* const*> get() const {
        Argument<T* const*> all{sets[0], {nullptr}};
        for (int bad = 1; bad <= N; ++bad) all.bad.push_back(sets[bad]);
        return all;
    }
};

template <class F, class... A, std::size_t... I>
void badArgumentsOf(const Named<F>& function, Report& report, const std::tuple<A...>& arguments,
                    std::index_sequence<I...>) {
    report.add(function.name + ": bad arguments", [&](Random&, Digest& digest) {
        const std::size_t ways[] = {std::get<I>(arguments).bad.size()...};
        std::size_t choice[sizeof...(A)] = {};
        const auto call = [&] {
            digest.value(function.call(
                (choice[I] ? std::get<I>(arguments).bad[choice[I] - 1] : std::get<I>(arguments).good)...));
        };
        const auto everyWay = [&](std::size_t i, auto body) {
            for (std::size_t way = 1; way <= ways[i]; ++way) {
                choice[i] = way;
                body();
            }
            choice[i] = 0;
        };
        for (std::size_t i = 0; i < sizeof...(A); ++i)
            everyWay(i, [&] {
                call();
                for (std::size_t k = i + 1; k < sizeof...(A); ++k) everyWay(k, call);
            });
    });
}

// Every bad value alone and every pair of bad values of two arguments. The good ones only have to be good: nothing is
// done when one argument is refused.
template <class F, class... A> void badArguments(Report& report, const Named<F>& function, A... arguments) {
    badArgumentsOf(function, report, std::tuple(argument(arguments)...), std::index_sequence_for<A...>());
}
