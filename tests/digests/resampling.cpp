// resampling.cpp - digests of the chroma resampling of planes and rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

namespace {

using RectangleFunction = ZmxStatus(const Zmx8u*, int, ZmxiSize, Zmx8u*, int, ZmxiSize);

// A rectangle function; the source has a sample of its own on every side, which the upward ones read.
void rectangle(Report& report, const Named<RectangleFunction>& function, bool up, bool bothWays) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const Shape& shape : kShapes)
            for (Kind kind : kKinds) {
                // The sizes of the two sides where the smaller one is halved with rounding up.
                const ZmxiSize large{shape.width, shape.height};
                const ZmxiSize small{(shape.width + 1) / 2, bothWays ? (shape.height + 1) / 2 : shape.height};
                const ZmxiSize from = up ? small : ZmxiSize{2 * small.width, 2 * small.height}, to = up ? large : small;
                Plane<Zmx8u> source(random, kind, from.width, from.height, shape.gap, 1);
                Plane<Zmx8u> destination(random, Kind::Full, to.width, to.height, shape.gap + 1);
                digest.value(
                    function.call(source.data(), source.step(), from, destination.data(), destination.step(), to));
                destination.digest(digest);
            }
    });
    Zmx8u some[64] = {};
    badArguments(report, function, some, Least{8}, ZmxiSize{2, 2}, some, Least{8}, ZmxiSize{2, 2});
}

constexpr int kWidths[] = {1, 2, 3, 4, 7, 16, 31, 32, 33, 64, 129, 300};

// A row function of one or two source rows.
template <class F> void row(Report& report, const Named<F>& function, bool up) {
    constexpr bool two = std::is_invocable_v<F, Zmx8u*, Zmx8u*, int, Zmx8u*>;
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int width : kWidths)
            for (Kind kind : kKinds) {
                Plane<Zmx8u> near(random, kind, width, 1, 0, 2), far(random, kind, width, 1, 0, 2);
                Plane<Zmx8u> destination(random, Kind::Full, up ? 2 * width + 2 : (width + 1) / 2, 1);
                if constexpr (two)
                    digest.value(function.call(near.data(), far.data(), width, destination.data()));
                else
                    digest.value(function.call(near.data(), width, destination.data()));
                destination.digest(digest);
            }
    });
    Zmx8u some[16] = {};
    if constexpr (two)
        badArguments(report, function, some, some, Least{4}, some);
    else
        badArguments(report, function, some, Least{4}, some);
}

} // namespace

void resamplingDigests(Report& report) {
    rectangle(report, NAMED(zmxiSampleUpH2V1_JPEG_8u_C1R), true, false);
    rectangle(report, NAMED(zmxiSampleUpH2V2_JPEG_8u_C1R), true, true);
    rectangle(report, NAMED(zmxiSampleDownH2V1_JPEG_8u_C1R), false, false);
    rectangle(report, NAMED(zmxiSampleDownH2V2_JPEG_8u_C1R), false, true);
    row(report, NAMED(zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1), true);
    row(report, NAMED(zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1), true);
    row(report, NAMED(zmxiSampleDownRowH2V1_Box_JPEG_8u_C1), false);
    row(report, NAMED(zmxiSampleDownRowH2V2_Box_JPEG_8u_C1), false);
}
