// filters.h - lines and columns through the wavelet filters (annex F): the library's row kernels and column lifting,
// with the symmetric extension that they leave to their caller.
//
// Positions are absolute: those of low numbers are even, those of high ones odd. A line is the part [begin, end) of
// them. A part of a longer line may be treated as a line of its own: what it makes of its edges reaches kReach
// positions inwards and no further.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/numberrows.h"
#include "zmxj.h"

#include <algorithm>
#include <utility>

namespace codecs::jpeg2000 {

constexpr int kReach = 4;
constexpr int kChunk = 512; // numbers of a row that are lifted at a time: the rows of a stage then stay in the cache

struct Line {
    std::int64_t begin, end;
    int size() const { return int(end - begin); }
    int phase() const { return int(begin & 1); }
    int lows() const { return int((end + 1) / 2 - (begin + 1) / 2); }
    int highs() const { return size() - lows(); }
    int pairs() const { return (size() + 1) / 2; }
    // Symmetric extension (F.3.7) of a line of two numbers or more: the position whose number counts at `p`. Low ones
    // stand for low ones.
    std::int64_t mirrored(std::int64_t p) const {
        while (p < begin || p >= end) p = p < begin ? 2 * begin - p : 2 * (end - 1) - p;
        return p;
    }
};

// The library's functions for each road.
template <Road> struct Kernels;
template <> struct Kernels<Road::narrow> {
    static constexpr auto forwardRow = zmxiWTFwdRow_B53_JPEG2K_16s_C1R;
    static constexpr auto inverseRow = zmxiWTInvRow_B53_JPEG2K_16s_C1R;
    static constexpr auto forwardLift = zmxiWTFwdColLift_B53_JPEG2K_16s_C1;
    static constexpr auto inverseLift = zmxiWTInvColLift_B53_JPEG2K_16s_C1;
};
template <> struct Kernels<Road::wide> {
    static constexpr auto forwardRow = zmxiWTFwdRow_B53_JPEG2K_32s_C1R;
    static constexpr auto inverseRow = zmxiWTInvRow_B53_JPEG2K_32s_C1R;
    static constexpr auto forwardLift = zmxiWTFwdColLift_B53_JPEG2K_32s_C1;
    static constexpr auto inverseLift = zmxiWTInvColLift_B53_JPEG2K_32s_C1;
};
template <> struct Kernels<Road::fixed> {
    static constexpr auto forwardRow = zmxiWTFwdRow_D97_JPEG2K_32s_C1R;
    static constexpr auto inverseRow = zmxiWTInvRow_D97_JPEG2K_32s_C1R;
    static constexpr auto forwardLift = zmxiWTFwdColLift_D97_JPEG2K_32s_C1;
    static constexpr auto inverseLift = zmxiWTInvColLift_D97_JPEG2K_32s_C1;
};
template <> struct Kernels<Road::precise> {
    static constexpr auto forwardRow = zmxiWTFwdRow_D97_JPEG2K_32f_C1R;
    static constexpr auto inverseRow = zmxiWTInvRow_D97_JPEG2K_32f_C1R;
    static constexpr auto forwardLift = zmxiWTFwdColLift_D97_JPEG2K_32f_C1;
    static constexpr auto inverseLift = zmxiWTInvColLift_D97_JPEG2K_32f_C1;
};

// A line of one number is left alone at an even place and doubled at an odd one (F.4.8).
template <class T> T doubled(T v) { return T(v * 2); }
template <class T> T halved(T v) { return T(v / 2); }

// A row into its low and high numbers, each with room for one more than there are. Writes the margins of `x`.
template <Road R> void forwardRow(const Line& line, Number<R>* x, Number<R>* low, Number<R>* high) {
    const int n = line.size();
    if (n == 1) {
        *(line.phase() == 0 ? low : high) = line.phase() == 0 ? *x : doubled(*x);
        return;
    }
    for (int i = 1; i < kMargin; ++i) {
        x[-i] = x[line.mirrored(line.begin - i) - line.begin];
        x[n - 1 + i] = x[line.mirrored(line.end - 1 + i) - line.begin];
    }
    constexpr int step = sizeof(Number<R>); // of single rows: any will do
    Kernels<R>::forwardRow(x, step, low, step, high, step, {line.pairs(), 1}, line.phase());
}

// And back. Writes the margins of `low` and `high`, and one number behind the end of `x` where a line is odd.
template <Road R> void inverseRow(const Line& line, Number<R>* low, Number<R>* high, Number<R>* x) {
    if (line.size() == 1) {
        *x = line.phase() == 0 ? *low : halved(*high);
        return;
    }
    const std::int64_t firstLow = (line.begin + 1) / 2, firstHigh = line.begin / 2;
    const auto extend = [&](int k) {
        low[k] = low[line.mirrored(2 * (firstLow + k)) / 2 - firstLow];
        high[k] = high[line.mirrored(2 * (firstHigh + k) + 1) / 2 - firstHigh];
    };
    // The 9/7 filter looks at three numbers of each kind beyond an end (F.3.7).
    for (int k = -3; k < 0; ++k) extend(k);
    for (int k = std::min(line.lows(), line.highs()); k < line.pairs() + 3; ++k) extend(k);
    constexpr int step = sizeof(Number<R>);
    Kernels<R>::inverseRow(low, step, high, step, {line.pairs(), 1}, x, step, line.phase());
}

// Column lifting as a pipeline over rows. Stages are numbered so that stage n makes low row 2n. The first stages work
// on rows that never were; what they make has left the pipeline by the time that it would count.
template <Road R> class ForwardColumns {
    static constexpr bool kReversible = isReversible(R);
    using T = Number<R>;
    NumberRows<T> memory;
    T *low0, *low1, *high0, *high1, *high2;
    int width;

public:
    static constexpr int kLead = kReversible ? 1 : 3;  // stages ahead of the first row
    static constexpr int kAhead = kReversible ? 2 : 4; // rows that stage n looks ahead of row 2n
    static constexpr int kHigh = kReversible ? 1 : -1; // stage n makes high row 2n + kHigh

    explicit ForwardColumns(int w)
        : memory(5, w), low0(memory[0]), low1(memory[1]), high0(memory[2]), high1(memory[3]), high2(memory[4]),
          width(w) {}

    // `row(p)` gives row p, extended beyond the edges.
    template <class Row> void stage(std::int64_t n, Row row) {
        const std::int64_t first = 2 * n + kAhead - 2;
        const T *x0 = row(first), *x1 = row(first + 1), *x2 = row(first + 2);
        for (int at = 0; at < width; at += kChunk) {
            const int part = std::min(kChunk, width - at);
            if constexpr (kReversible)
                Kernels<R>::forwardLift(x0 + at, x1 + at, x2 + at, low0 + at, high0 + at, high1 + at, part);
            else
                Kernels<R>::forwardLift(x0 + at, x1 + at, x2 + at, low0 + at, low1 + at, high0 + at, high1 + at,
                                        high2 + at, part);
        }
        // What this stage has made is what the next one looks back at: names move, rows stay.
        std::swap(high0, high1);
        if constexpr (!kReversible) {
            std::swap(low0, low1);
            std::swap(high1, high2);
        }
    }
    // What the last stage has made; margins are the caller's.
    T* low() { return kReversible ? low0 : low1; }
    T* high() { return kReversible ? high0 : high2; }
};

template <Road R> class InverseColumns {
    static constexpr bool kReversible = isReversible(R);
    using T = Number<R>;
    NumberRows<T> memory;
    T *done, *odd0, *even0, *odd1, *even1;
    int width;

public:
    static constexpr int kLead = kReversible ? 0 : 3;
    static constexpr int kAhead = kReversible ? 1 : 3;

    explicit InverseColumns(int w)
        : memory(5, w), done(memory[0]), odd0(memory[1]), even0(memory[2]), odd1(memory[3]), even1(memory[4]),
          width(w) {}

    // Makes rows 2n - 1 and 2n.
    template <class Row> void stage(std::int64_t n, Row row) {
        const std::int64_t last = 2 * n + kAhead;
        const T *low = row(last - 1), *before = row(last - 2), *after = row(last);
        for (int at = 0; at < width; at += kChunk) {
            const int part = std::min(kChunk, width - at);
            if constexpr (kReversible)
                Kernels<R>::inverseLift(low + at, before + at, after + at, done + at, odd0 + at, even0 + at, part);
            else
                Kernels<R>::inverseLift(low + at, before + at, after + at, done + at, odd0 + at, even0 + at, odd1 + at,
                                        even1 + at, part);
        }
        // As in the forward direction.
        std::swap(done, even0);
        if constexpr (!kReversible) {
            std::swap(odd0, odd1);
            std::swap(even0, even1);
        }
    }
    T* odd() { return kReversible ? odd0 : odd1; }
    T* even() { return done; }
};

} // namespace codecs::jpeg2000
