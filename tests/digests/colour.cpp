// colour.cpp - digests of the level shift and of the colour conversions of whole planes.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

namespace {

constexpr ZmxiSize kAny{4, 4}; // of a call that is refused

// One plane of pixels of C samples, in the terms of Planes.
template <class T, int C> class Pixels {
    Plane<T> plane;

public:
    Pixels(Random& random, Kind kind, int width, int height, int gap) : plane(random, kind, C * width, height, gap) {}
    T* data() { return plane.data(); }
    int step() const { return plane.step(); }
    void digest(Digest& digest) { plane.digest(digest); }
};

// A conversion of rectangles in every shape, with samples of every kind.
template <class Source, class Destination, class F> void rectangles(Report& report, const Named<F>& function) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const Shape& shape : kShapes)
            for (Kind kind : kKinds) {
                Source source(random, kind, shape.width, shape.height, shape.gap);
                Destination destination(random, Kind::Full, shape.width, shape.height, shape.gap + 1);
                digest.value(function.call(source.data(), source.step(), destination.data(), destination.step(),
                                           {shape.width, shape.height}));
                destination.digest(digest);
            }
    });
}

// Bad arguments, with N planes at the source and M at the destination; 0 for a single pointer.
template <class S, class D, int N, int M, class F> void refusals(Report& report, const Named<F>& function) {
    Random random("");
    Planes<S, N ? N : 1> sources(random, Kind::Full, 16, 4);
    Planes<D, M ? M : 1> destinations(random, Kind::Full, 16, 4);
    const PointerSets<S, N ? N : 1> sourceSets(sources.data());
    const PointerSets<D, M ? M : 1> destinationSets(destinations.data());
    const auto check = [&](auto source, auto destination) {
        badArguments(report, function, source, Least{8}, destination, Least{8}, kAny);
    };
    if constexpr (N > 0 && M > 0)
        check(sourceSets.get(), destinationSets.get());
    else if constexpr (N > 0)
        check(sourceSets.get(), destinations[0].data());
    else if constexpr (M > 0)
        check(sources[0].data(), destinationSets.get());
    else
        check(sources[0].data(), destinations[0].data());
}

// The forms: C pixels of channels, P planes.
template <int C, int D, class F> void pixelsToPixels(Report& report, const Named<F>& function) {
    rectangles<Pixels<Zmx8u, C>, Pixels<Zmx8u, D>>(report, function);
    refusals<Zmx8u, Zmx8u, 0, 0>(report, function);
}
template <int N, int C, class T, class F> void planesToPixels(Report& report, const Named<F>& function) {
    rectangles<Planes<Zmx8u, N>, Pixels<T, C>>(report, function);
    refusals<Zmx8u, T, N, 0>(report, function);
}
template <class T, int C, int N, class F> void pixelsToPlanes(Report& report, const Named<F>& function) {
    rectangles<Pixels<T, C>, Planes<Zmx8u, N>>(report, function);
    refusals<T, Zmx8u, 0, N>(report, function);
}
template <int N, class F> void planesToPlanes(Report& report, const Named<F>& function) {
    rectangles<Planes<Zmx8u, N>, Planes<Zmx8u, N>>(report, function);
    refusals<Zmx8u, Zmx8u, N, N>(report, function);
}

// Every one of the 2^24 colours would take long under an emulator: every 5th of each channel, and both ends.
template <class F> void manyColours(Report& report, const Named<F>& function) {
    report.add(function.name + ": many colours", [&](Random&, Digest& digest) {
        std::vector<Zmx8u> planes(3 * 52), result(3 * 52);
        for (int first = 0; first < 256; first += 5)
            for (int second = 0; second < 256; second += 5) {
                for (int x = 0; x < 52; ++x) {
                    planes[std::size_t(x)] = Zmx8u(first);
                    planes[std::size_t(52 + x)] = Zmx8u(second);
                    planes[std::size_t(104 + x)] = Zmx8u(5 * x);
                }
                const Zmx8u* const source[3] = {&planes[0], &planes[52], &planes[104]};
                Zmx8u* const destination[3] = {&result[0], &result[52], &result[104]};
                digest.value(function.call(source, 52, destination, 52, {52, 1}));
                digest.values(result);
            }
    });
}

// 4:2:2 pairs: whole pairs are read and written, and no step is tested.
void pairs(Report& report) {
    const auto function = NAMED(zmxiYCbCr422ToRGB_JPEG_8u_C2C3R);
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const Shape& shape : kShapes)
            for (Kind kind : kKinds) {
                const int even = (shape.width + 1) / 2 * 2;
                Pixels<Zmx8u, 2> source(random, kind, even, shape.height, shape.gap);
                Pixels<Zmx8u, 3> destination(random, Kind::Full, even, shape.height, shape.gap);
                digest.value(function.call(source.data(), source.step(), destination.data(), destination.step(),
                                           {shape.width, shape.height}));
                destination.digest(digest);
            }
    });
    Zmx8u some[64] = {};
    badArguments(report, function, some, 8, some, 16, kAny);
}

// Conversions in place, over their own sources.
template <int N, class F> void inPlace(Report& report, const Named<F>& function) {
    report.add(function.name + ": in place", [&](Random& random, Digest& digest) {
        for (Kind kind : kKinds) {
            Planes<Zmx8u, N> planes(random, kind, 61, 7, 3);
            digest.value(function.call(readOnly(planes), planes.step(), planes.data(), planes.step(), {61, 7}));
            planes.digest(digest);
        }
    });
}

template <class S, class D, class F> void levelShift(Report& report, const Named<F>& function) {
    rectangles<Pixels<S, 1>, Pixels<D, 1>>(report, function);
    refusals<S, D, 0, 0>(report, function);
}

} // namespace

void colourDigests(Report& report) {
    levelShift<Zmx16s, Zmx8u>(report, NAMED(zmxiAdd128_JPEG_16s8u_C1R));
    levelShift<Zmx8u, Zmx16s>(report, NAMED(zmxiSub128_JPEG_8u16s_C1R));

    planesToPlanes<3>(report, NAMED(zmxiYCbCrToRGB_JPEG_8u_P3R));
    planesToPlanes<4>(report, NAMED(zmxiYCCKToCMYK_JPEG_8u_P4R));
    planesToPlanes<3>(report, NAMED(zmxiRGBToYCbCr_JPEG_8u_P3R));
    planesToPlanes<4>(report, NAMED(zmxiCMYKToYCCK_JPEG_8u_P4R));
    manyColours(report, NAMED(zmxiYCbCrToRGB_JPEG_8u_P3R));
    manyColours(report, NAMED(zmxiRGBToYCbCr_JPEG_8u_P3R));
    inPlace<3>(report, NAMED(zmxiYCbCrToRGB_JPEG_8u_P3R));
    inPlace<4>(report, NAMED(zmxiYCCKToCMYK_JPEG_8u_P4R));
    inPlace<3>(report, NAMED(zmxiRGBToYCbCr_JPEG_8u_P3R));
    inPlace<4>(report, NAMED(zmxiCMYKToYCCK_JPEG_8u_P4R));

    planesToPixels<3, 3, Zmx8u>(report, NAMED(zmxiYCbCrToRGB_JPEG_8u_P3C3R));
    planesToPixels<3, 3, Zmx8u>(report, NAMED(zmxiYCbCrToBGR_JPEG_8u_P3C3R));
    planesToPixels<4, 4, Zmx8u>(report, NAMED(zmxiYCCKToCMYK_JPEG_8u_P4C4R));
    planesToPixels<3, 1, Zmx16u>(report, NAMED(zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R));
    planesToPixels<3, 1, Zmx16u>(report, NAMED(zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R));
    planesToPixels<3, 1, Zmx16u>(report, NAMED(zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R));
    planesToPixels<3, 1, Zmx16u>(report, NAMED(zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R));
    planesToPixels<3, 1, Zmx8u>(report, NAMED(zmxiRGBToY_JPEG_8u_P3C1R));
    pairs(report);

    pixelsToPixels<3, 1>(report, NAMED(zmxiRGBToY_JPEG_8u_C3C1R));
    pixelsToPixels<3, 1>(report, NAMED(zmxiBGRToY_JPEG_8u_C3C1R));
    pixelsToPlanes<Zmx8u, 3, 3>(report, NAMED(zmxiRGBToYCbCr_JPEG_8u_C3P3R));
    pixelsToPlanes<Zmx8u, 3, 3>(report, NAMED(zmxiBGRToYCbCr_JPEG_8u_C3P3R));
    pixelsToPlanes<Zmx8u, 4, 4>(report, NAMED(zmxiCMYKToYCCK_JPEG_8u_C4P4R));
    pixelsToPlanes<Zmx16u, 1, 3>(report, NAMED(zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R));
    pixelsToPlanes<Zmx16u, 1, 3>(report, NAMED(zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R));
    pixelsToPlanes<Zmx16u, 1, 3>(report, NAMED(zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R));
    pixelsToPlanes<Zmx16u, 1, 3>(report, NAMED(zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R));
}
