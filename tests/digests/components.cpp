// components.cpp - digests of the component transforms of JPEG2000.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/hardfloats.h"

namespace {

// Pixels and planes seen alike: sample c of pixel x, y.
template <class T> struct PixelPlane {
    Plane<T> plane;
    PixelPlane(Random& random, Kind kind, const Shape& s) : plane(random, kind, 3 * s.width, s.height, s.gap) {}
    T* data() { return plane.data(); }
    int step() const { return plane.step(); }
    void set(int c, int x, int y, Raw<T> v) { plane.set(3 * x + c, y, v); }
    void digest(Digest& digest) { plane.digest(digest); }
};
template <class T> struct ThreePlanes {
    Planes<T, 3> planes;
    ThreePlanes(Random& random, Kind kind, const Shape& s) : planes(random, kind, s.width, s.height, s.gap) {}
    T* const* data() const { return planes.data(); }
    int step() const { return planes.step(); }
    void set(int c, int x, int y, Raw<T> v) { planes[c].set(x, y, v); }
    void digest(Digest& digest) { planes.digest(digest); }
};

// A transform between two forms, or in place where there is but one.
template <class From, class To, class F>
void run(const Named<F>& function, Random& random, Digest& digest, From& from, const Shape& s) {
    const ZmxiSize size{s.width, s.height};
    if constexpr (std::is_same_v<From, To>) {
        digest.value(function.call(from.data(), from.step(), size));
        from.digest(digest);
    } else {
        To to(random, Kind::Full, s);
        digest.value(function.call(from.data(), from.step(), to.data(), to.step(), size));
        to.digest(digest);
    }
}

template <class From, class To, class F> void transform(Report& report, const Named<F>& function) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const Shape& shape : kShapes)
            for (Kind kind : kKinds) {
                From from(random, kind, shape);
                run<From, To>(function, random, digest, from, shape);
            }
    });
}

// The weights of the sums of three terms: rows of the forward matrix, and green of the inverse one.
struct Weights {
    float a, b, c;
};
constexpr Weights kForward[] = {{0.299F, 0.587F, 0.114F}, {-0.16875F, -0.33126F, 0.5F}, {0.5F, -0.41869F, -0.08131F}};
constexpr Weights kInverse[] = {{1.0F, -0.34413F, -0.71414F}};

// The first term of a sum as well as the last one may be the large one.
template <class From, class To, std::size_t N, class F>
void hardCases(Report& report, const Named<F>& function, const Weights (&weights)[N]) {
    report.add(function.name + ": hard cases", [&](Random& random, Digest& digest) {
        const Shape shape{500, 8, 0};
        From from(random, Kind::Full, shape);
        for (int y = 0; y < shape.height; ++y)
            for (int x = 0; x < shape.width; ++x) {
                const Weights& w = weights[std::size_t(random.range(0, int(N) - 1))];
                const std::uint32_t bits[3] = {bitsOf(w.a), bitsOf(w.b), bitsOf(w.c)};
                const int first = random.range(0, 2), second = (first + random.range(1, 2)) % 3,
                          third = 3 - first - second;
                const HardTriple hard = hardTriple(random, bits[first], bits[second], bits[third]);
                from.set(first, x, y, hard.a);
                from.set(second, x, y, hard.b);
                from.set(third, x, y, hard.c);
            }
        run<From, To>(function, random, digest, from, shape);
    });
}

// Bad arguments of the three signatures.
template <class T>
void refusals(Report& report, const Named<ZmxStatus(const T*, int, T* const*, int, ZmxiSize)>& function) {
    Random random("");
    const Planes<T, 3> planes(random, Kind::Small, 4, 4);
    const PointerSets<T, 3> sets(planes.data());
    T some[48] = {};
    badArguments(report, function, some, Least{48}, sets.get(), Least{16}, ZmxiSize{4, 4});
}
template <class T>
void refusals(Report& report, const Named<ZmxStatus(const T* const*, int, T*, int, ZmxiSize)>& function) {
    Random random("");
    const Planes<T, 3> planes(random, Kind::Small, 4, 4);
    const PointerSets<T, 3> sets(planes.data());
    T some[48] = {};
    badArguments(report, function, sets.get(), Least{16}, some, Least{48}, ZmxiSize{4, 4});
}
template <class T> void refusals(Report& report, const Named<ZmxStatus(T* const*, int, ZmxiSize)>& function) {
    Random random("");
    const Planes<T, 3> planes(random, Kind::Small, 4, 4);
    const PointerSets<T, 3> sets(planes.data());
    badArguments(report, function, sets.get(), Least{16}, ZmxiSize{4, 4});
}

template <class T>
void toPlanes(Report& report, const Named<ZmxStatus(const T*, int, T* const*, int, ZmxiSize)>& function) {
    transform<PixelPlane<T>, ThreePlanes<T>>(report, function);
    refusals(report, function);
    if constexpr (std::is_same_v<T, float>) hardCases<PixelPlane<T>, ThreePlanes<T>>(report, function, kForward);
}
template <class T>
void toPixels(Report& report, const Named<ZmxStatus(const T* const*, int, T*, int, ZmxiSize)>& function) {
    transform<ThreePlanes<T>, PixelPlane<T>>(report, function);
    refusals(report, function);
    if constexpr (std::is_same_v<T, float>) hardCases<ThreePlanes<T>, PixelPlane<T>>(report, function, kInverse);
}
template <class T> void inPlace(Report& report, const Named<ZmxStatus(T* const*, int, ZmxiSize)>& function) {
    transform<ThreePlanes<T>, ThreePlanes<T>>(report, function);
    refusals(report, function);
}

} // namespace

void componentDigests(Report& report) {
    toPlanes(report, NAMED(zmxiRCTFwd_JPEG2K_16s_C3P3R));
    toPlanes(report, NAMED(zmxiRCTFwd_JPEG2K_32s_C3P3R));
    inPlace(report, NAMED(zmxiRCTFwd_JPEG2K_16s_P3IR));
    inPlace(report, NAMED(zmxiRCTFwd_JPEG2K_32s_P3IR));
    toPixels(report, NAMED(zmxiRCTInv_JPEG2K_16s_P3C3R));
    toPixels(report, NAMED(zmxiRCTInv_JPEG2K_32s_P3C3R));
    inPlace(report, NAMED(zmxiRCTInv_JPEG2K_16s_P3IR));
    inPlace(report, NAMED(zmxiRCTInv_JPEG2K_32s_P3IR));

    toPlanes(report, NAMED(zmxiICTFwd_JPEG2K_32f_C3P3R));
    toPixels(report, NAMED(zmxiICTInv_JPEG2K_32f_P3C3R));
    inPlace(report, NAMED(zmxiICTFwd_JPEG2K_32f_P3IR));
    inPlace(report, NAMED(zmxiICTInv_JPEG2K_32f_P3IR));
    hardCases<ThreePlanes<float>, ThreePlanes<float>>(report, NAMED(zmxiICTFwd_JPEG2K_32f_P3IR), kForward);
    hardCases<ThreePlanes<float>, ThreePlanes<float>>(report, NAMED(zmxiICTInv_JPEG2K_32f_P3IR), kInverse);
    inPlace(report, NAMED(zmxiICTFwd_JPEG2K_16s_P3IR));
    inPlace(report, NAMED(zmxiICTFwd_JPEG2K_32s_P3IR));
    inPlace(report, NAMED(zmxiICTInv_JPEG2K_16s_P3IR));
    inPlace(report, NAMED(zmxiICTInv_JPEG2K_32s_P3IR));
}
