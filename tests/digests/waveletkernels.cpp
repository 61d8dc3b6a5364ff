// waveletkernels.cpp - digests of the row and column kernels of the wavelets.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/wavelets.h"

namespace {

constexpr int kAround = 5; // samples that the caller has extended the data by
constexpr ZmxiSize kSizes[] = {{1, 1}, {2, 1}, {1, 2}, {2, 3}, {3, 2}, {4, 4}, {8, 5}, {17, 9}, {40, 3}};

enum Direction { Row, Column };

template <class T> using Forward = ZmxStatus(const T*, int, T*, int, T*, int, ZmxiSize, int);
template <class T> using Inverse = ZmxStatus(const T*, int, const T*, int, ZmxiSize, T*, int, int);

// One plane of lines, two bands of half of it. The bands have gaps of whole samples that differ: a column kernel looks
// for one of its rows by the step of the other band.
template <class T> struct Sides {
    Plane<T> line, low, high;

    Sides(Random& random, Kind kind, ZmxiSize band, Direction direction)
        : line(random, kind, direction == Row ? 2 * band.width : band.width,
               direction == Row ? band.height : 2 * band.height, random.range(0, 3), kAround),
          low(random, kind, band.width, band.height, 0, kAround),
          high(random, kind, band.width, band.height, random.range(0, 2) * int(sizeof(T)), kAround) {}
};

template <class T> void call(const Named<Forward<T>>& function, Sides<T>& s, ZmxiSize size, int phase, Digest& digest) {
    digest.value(function.call(s.line.data(), s.line.step(), s.low.data(), s.low.step(), s.high.data(), s.high.step(),
                               size, phase));
    s.low.digest(digest);
    s.high.digest(digest);
}
template <class T> void call(const Named<Inverse<T>>& function, Sides<T>& s, ZmxiSize size, int phase, Digest& digest) {
    digest.value(function.call(s.low.data(), s.low.step(), s.high.data(), s.high.step(), size, s.line.data(),
                               s.line.step(), phase));
    s.line.digest(digest);
}

template <class T> void refusals(Report& report, const Named<Forward<T>>& function) {
    T some[64] = {};
    badArguments(report, function, some, Least{8}, some, Least{8}, some, Least{8}, ZmxiSize{2, 2}, 0);
}
template <class T> void refusals(Report& report, const Named<Inverse<T>>& function) {
    T some[64] = {};
    badArguments(report, function, some, Least{8}, some, Least{8}, ZmxiSize{2, 2}, some, Least{8}, 0);
}

template <class T, template <class> class F>
void kernel(Report& report, const Named<F<T>>& function, Direction direction) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const ZmxiSize& size : kSizes)
            for (int phase : {0, 1, -3})
                for (Kind kind : kKinds) {
                    Sides<T> sides(random, kind, size, direction);
                    call(function, sides, size, phase, digest);
                }
    });
    refusals(report, function);
}

// Sample i of line n.
void set(Plane<float>& plane, Direction direction, int i, int n, std::uint32_t v) {
    direction == Row ? plane.set(i, n, v) : plane.set(n, i, v);
}

// Lines of zeros with triples at rounding boundaries, of the first step of the lifting, or with lines of one pair of the
// filter taps.
void zero(Plane<float>& plane, Direction direction, int length, int lines) {
    for (int n = 0; n < lines; ++n)
        for (int i = -kAround; i < length + kAround; ++i) set(plane, direction, i, n, 0);
}

void hardForward(Report& report, const Named<Forward<float>>& function, Direction direction) {
    report.add(function.name + ": hard cases", [&](Random& random, Digest& digest) {
        for (int phase : {0, 1})
            for (int pairs : {1, 24}) {
                const int lines = 64;
                const ZmxiSize size = direction == Row ? ZmxiSize{pairs, lines} : ZmxiSize{lines, pairs};
                Sides<float> sides(random, Kind::Small, size, direction);
                zero(sides.line, direction, 2 * pairs, lines);
                for (int n = 0; n < lines; ++n)
                    for (int i = phase; i + 2 < 2 * pairs + 3; i += 8) {
                        const HardTriple hard = pairs == 1 ? hardTriple(random, kTap0, kTap1, kTap2)
                                                           : hardTriple(random, kAlpha, kAlpha, kOne);
                        set(sides.line, direction, i, n, hard.a);
                        set(sides.line, direction, i + 1, n, pairs == 1 ? hard.b : hard.c);
                        set(sides.line, direction, i + 2, n, pairs == 1 ? hard.c : hard.b);
                    }
                call(function, sides, size, phase, digest);
            }
    });
}

void hardInverse(Report& report, const Named<Inverse<float>>& function, Direction direction) {
    report.add(function.name + ": hard cases", [&](Random& random, Digest& digest) {
        for (int phase : {0, 1})
            for (int pairs : {1, 24}) {
                const int lines = 64;
                const ZmxiSize size = direction == Row ? ZmxiSize{pairs, lines} : ZmxiSize{lines, pairs};
                Sides<float> sides(random, Kind::Small, size, direction);
                zero(sides.low, direction, pairs, lines);
                zero(sides.high, direction, pairs, lines);
                for (int n = 0; n < lines; ++n)
                    for (int i = 0; i < pairs; i += 4) {
                        // A low sample and the high ones beside it.
                        const HardTriple hard =
                            pairs == 1 ? hardTriple(random, kTap0, kSign ^ kTap1, kTap2)
                                       : hardTriple(random, kScale, kSign ^ kDeltaOverScale, kSign ^ kDeltaOverScale);
                        set(sides.low, direction, i, n, hard.a);
                        set(sides.high, direction, i, n, hard.b);
                        if (pairs == 1)
                            set(sides.low, direction, i + 1, n, hard.c);
                        else
                            set(sides.high, direction, phase ? i + 1 : i - 1, n, hard.c);
                    }
                call(function, sides, size, phase, digest);
            }
    });
}

} // namespace

void waveletKernelDigests(Report& report) {
    kernel<Zmx16s, Forward>(report, NAMED(zmxiWTFwdRow_B53_JPEG2K_16s_C1R), Row);
    kernel<Zmx32s, Forward>(report, NAMED(zmxiWTFwdRow_B53_JPEG2K_32s_C1R), Row);
    kernel<Zmx16s, Forward>(report, NAMED(zmxiWTFwdCol_B53_JPEG2K_16s_C1R), Column);
    kernel<Zmx32s, Forward>(report, NAMED(zmxiWTFwdCol_B53_JPEG2K_32s_C1R), Column);
    kernel<Zmx16s, Inverse>(report, NAMED(zmxiWTInvRow_B53_JPEG2K_16s_C1R), Row);
    kernel<Zmx32s, Inverse>(report, NAMED(zmxiWTInvRow_B53_JPEG2K_32s_C1R), Row);
    kernel<Zmx16s, Inverse>(report, NAMED(zmxiWTInvCol_B53_JPEG2K_16s_C1R), Column);
    kernel<Zmx32s, Inverse>(report, NAMED(zmxiWTInvCol_B53_JPEG2K_32s_C1R), Column);

    kernel<Zmx16s, Forward>(report, NAMED(zmxiWTFwdRow_D97_JPEG2K_16s_C1R), Row);
    kernel<Zmx32s, Forward>(report, NAMED(zmxiWTFwdRow_D97_JPEG2K_32s_C1R), Row);
    kernel<Zmx32f, Forward>(report, NAMED(zmxiWTFwdRow_D97_JPEG2K_32f_C1R), Row);
    kernel<Zmx32f, Forward>(report, NAMED(zmxiWTFwdCol_D97_JPEG2K_32f_C1R), Column);
    kernel<Zmx16s, Inverse>(report, NAMED(zmxiWTInvRow_D97_JPEG2K_16s_C1R), Row);
    kernel<Zmx32s, Inverse>(report, NAMED(zmxiWTInvRow_D97_JPEG2K_32s_C1R), Row);
    kernel<Zmx32f, Inverse>(report, NAMED(zmxiWTInvRow_D97_JPEG2K_32f_C1R), Row);
    kernel<Zmx32f, Inverse>(report, NAMED(zmxiWTInvCol_D97_JPEG2K_32f_C1R), Column);

    hardForward(report, NAMED(zmxiWTFwdRow_D97_JPEG2K_32f_C1R), Row);
    hardForward(report, NAMED(zmxiWTFwdCol_D97_JPEG2K_32f_C1R), Column);
    hardInverse(report, NAMED(zmxiWTInvRow_D97_JPEG2K_32f_C1R), Row);
    hardInverse(report, NAMED(zmxiWTInvCol_D97_JPEG2K_32f_C1R), Column);
}
