// wavelet_checks.h - checks that both wavelets share: whole planes, kernels, column lifting, and the order of
// their tests.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg2000/model/waveletline.h"
#include "tests/jpeg2000/support/strided.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <array>
#include <climits>
#include <functional>
#include <memory>

// What a library function and its model look like; T is the sample.
template <class T> struct PlaneFns {
    ZmxStatus (*forward)(T*, int, const ZmxiRect*, Zmx8u*);
    ZmxStatus (*inverse)(T*, int, const ZmxiRect*, Zmx8u*);
    ZmxStatus (*forwardBands)(const T*, int, const ZmxiRect*, T* const[4], const int[4], Zmx8u*);
    ZmxStatus (*inverseBands)(const T* const[4], const int[4], T*, int, const ZmxiRect*, Zmx8u*);
    ZmxStatus (*size)(const ZmxiRect*, int*);
    ZmxStatus (*bandSize)(const ZmxiRect*, int*);
    void (*modelForward)(model::Grid<T>&, const ZmxiRect&);
    void (*modelInverse)(model::Grid<T>&, const ZmxiRect&);
    int (*modelSize)(const ZmxiRect&);
    int (*modelBandSize)(const ZmxiRect&);
};
template <class T> using ForwardKernel = ZmxStatus (*)(const T*, int, T*, int, T*, int, ZmxiSize, int);
template <class T> using InverseKernel = ZmxStatus (*)(const T*, int, const T*, int, ZmxiSize, T*, int, int);

inline GuardedBlock::Flush anySide(Rng& rng) { return rng.oneIn(2) ? GuardedBlock::AtEnd : GuardedBlock::AtStart; }
inline int anyGap(Rng& rng) { return int(rng.range(0, 9)); }

// Scratch memory of exactly the reported size at any alignment: one side is flush with a guard page.
template <class T> GuardedBlock scratchFor(Rng& rng, ZmxStatus (*size)(const ZmxiRect*, int*), const ZmxiRect& r) {
    int n = -1;
    EXPECT_EQ(size(&r, &n), zmxStsNoErr);
    return GuardedBlock(std::size_t(std::max(n, 0)), anySide(rng));
}

template <class T> model::Grid<T> anyGrid(Rng& rng, int w, int h, Character kind) {
    model::Grid<T> g(w, h);
    Samples<T> samples(rng, kind);
    for (T& v : g.v) v = samples.next();
    return g;
}

// In place, both directions. A direction of no samples still touches the first line.
template <class T> void checkInPlace(Rng& rng, const PlaneFns<T>& f, ZmxiRect r, Character kind) {
    for (const bool forward : {true, false}) {
        SCOPED_TRACE(::testing::Message() << (forward ? "forward " : "inverse ") << r.x << ',' << r.y << ' ' << r.width
                                          << 'x' << r.height << " kind " << int(kind));
        model::Grid<T> g = anyGrid<T>(rng, r.width, r.height, kind);
        const int w = std::max(r.width, 1), h = std::max(r.height, 1);
        Strided<T> plane(rng, w, h, anyGap(rng), anySide(rng));
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) plane.set(x, y, g.at(x, y));
        auto want = plane.bytes();
        (forward ? f.modelForward : f.modelInverse)(g, r);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) plane.put(want, x, y, g.at(x, y));
        GuardedBlock scratch = scratchFor<T>(rng, f.size, r);
        ASSERT_EQ((forward ? f.forward : f.inverse)(plane.data(), plane.step(), &r, scratch.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(want, plane.bytes()));
    }
}

// Between a plane and four bands.
template <class T> void checkBands(Rng& rng, const PlaneFns<T>& f, ZmxiRect r, Character kind) {
    SCOPED_TRACE(::testing::Message() << r.x << ',' << r.y << ' ' << r.width << 'x' << r.height << " kind "
                                      << int(kind));
    Strided<T> plane(rng, r.width, r.height, anyGap(rng), anySide(rng));
    auto band = [&](int i) {
        const model::BandPlace b = model::bandPlace(i, r.width, r.height);
        return Strided<T>(rng, b.width, b.height, anyGap(rng) + 1, anySide(rng));
    };
    Strided<T> bands[4] = {band(0), band(1), band(2), band(3)};
    T* const to[4] = {bands[0].data(), bands[1].data(), bands[2].data(), bands[3].data()};
    const T* const from[4] = {to[0], to[1], to[2], to[3]};
    const int steps[4] = {bands[0].step(), bands[1].step(), bands[2].step(), bands[3].step()};
    auto each = [&](int i, auto use) {
        const model::BandPlace b = model::bandPlace(i, r.width, r.height);
        for (int y = 0; y < b.height; ++y)
            for (int x = 0; x < b.width; ++x) use(x, y);
    };
    {
        model::Grid<T> g = anyGrid<T>(rng, r.width, r.height, kind);
        for (int y = 0; y < r.height; ++y)
            for (int x = 0; x < r.width; ++x) plane.set(x, y, g.at(x, y));
        const auto source = plane.bytes();
        f.modelForward(g, r);
        auto cut = model::cut(g);
        GuardedBlock scratch = scratchFor<T>(rng, f.bandSize, r);
        std::vector<std::uint8_t> want[4];
        for (int i = 0; i < 4; ++i) {
            want[i] = bands[i].bytes();
            each(i, [&](int x, int y) { bands[i].put(want[i], x, y, cut[std::size_t(i)].at(x, y)); });
        }
        ASSERT_EQ(f.forwardBands(plane.data(), plane.step(), &r, to, steps, scratch.data()), zmxStsNoErr);
        for (int i = 0; i < 4; ++i) ASSERT_TRUE(sameBytes(want[i], bands[i].bytes())) << "band " << i;
        ASSERT_TRUE(sameBytes(source, plane.bytes())) << "the source is left alone";
    }
    model::Bands<T> in = {model::Grid<T>(0, 0), model::Grid<T>(0, 0), model::Grid<T>(0, 0), model::Grid<T>(0, 0)};
    std::vector<std::uint8_t> source[4];
    for (int i = 0; i < 4; ++i) {
        const model::BandPlace b = model::bandPlace(i, r.width, r.height);
        in[std::size_t(i)] = anyGrid<T>(rng, b.width, b.height, kind);
        each(i, [&](int x, int y) { bands[i].set(x, y, in[std::size_t(i)].at(x, y)); });
        source[i] = bands[i].bytes();
    }
    model::Grid<T> g = model::join(in, r.width, r.height);
    f.modelInverse(g, r);
    auto want = plane.bytes();
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) plane.put(want, x, y, g.at(x, y));
    GuardedBlock scratch = scratchFor<T>(rng, f.bandSize, r);
    ASSERT_EQ(f.inverseBands(from, steps, plane.data(), plane.step(), &r, scratch.data()), zmxStsNoErr);
    ASSERT_TRUE(sameBytes(want, plane.bytes()));
    for (int i = 0; i < 4; ++i) ASSERT_TRUE(sameBytes(source[i], bands[i].bytes())) << "the source is left alone";
}

// Every size up to `all` in both directions and phases, then larger and longer ones.
template <class T> void checkPlanes(const PlaneFns<T>& f, int all, int larger, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    auto both = [&](ZmxiRect r, Character kind) {
        checkInPlace(rng, f, r, kind);
        if (r.width > 0 && r.height > 0) checkBands(rng, f, r, kind);
    };
    // Positions count by their parity only, negative ones too.
    const int even[] = {0, 2, -6, INT_MIN}, odd[] = {1, 7, -3, INT_MAX};
    auto at = [&](int p) { return p ? odd[rng.range(0, 3)] : even[rng.range(0, 3)]; };
    const int largest = shortened() ? std::min(all, 6) : all;
    for (int h = 0; h <= largest; ++h)
        for (int w = 0; w <= largest; ++w)
            for (int phases = 0; phases < 4; ++phases) {
                both({at(phases & 1), at(phases >> 1), w, h}, kCharacters[rng.range(0, 5)]);
                if (::testing::Test::HasFatalFailure()) return;
            }
    for (int i = 0; i < rounds(larger); ++i) {
        const int shape = int(rng.range(0, 3));
        const int w = int(shape == 0 ? rng.range(100, 700) : shape == 1 ? rng.range(1, 7) : rng.range(20, 150));
        const int h = int(shape == 0 ? rng.range(1, 7) : shape == 1 ? rng.range(100, 700) : rng.range(20, 150));
        both({at(i & 1), at(i >> 1 & 1), w, h}, kCharacters[i % 6]);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

// One line through a whole-plane function in place: a row at column origin x, or a column at row origin y.
template <class T>
std::vector<T> transformed(ZmxStatus (*fn)(T*, int, const ZmxiRect*, Zmx8u*), std::vector<T> v, const ZmxiRect& r,
                           int step) {
    Zmx8u scratch[512];
    EXPECT_EQ(fn(v.data(), step, &r, scratch), zmxStsNoErr);
    return v;
}
template <class T> std::vector<T> row(ZmxStatus (*fn)(T*, int, const ZmxiRect*, Zmx8u*), std::vector<T> v, int x) {
    return transformed(fn, v, {x, 0, int(v.size()), 1}, int(v.size() * sizeof(T)));
}
template <class T> std::vector<T> column(ZmxStatus (*fn)(T*, int, const ZmxiRect*, Zmx8u*), std::vector<T> v, int y) {
    return transformed(fn, v, {0, y, 1, int(v.size())}, int(sizeof(T)));
}

// Lines of every length up to 40, a few side by side, as rows and as columns.
template <class T> void checkLines(const PlaneFns<T>& f, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int n = 0; n <= (shortened() ? 14 : 40); ++n)
        for (int other : {1, 2, 3, 5})
            for (int phases = 0; phases < 4; ++phases)
                for (const ZmxiSize s : {ZmxiSize{n, other}, ZmxiSize{other, n}}) {
                    checkInPlace(rng, f, {phases & 1, phases >> 1, s.width, s.height}, kCharacters[rng.range(0, 5)]);
                    if (::testing::Test::HasFatalFailure()) return;
                }
}

inline int sizeOf(ZmxStatus (*fn)(const ZmxiRect*, int*), int w, int h) {
    const ZmxiRect r{0, 0, w, h};
    int n = -1;
    EXPECT_EQ(fn(&r, &n), zmxStsNoErr);
    return n;
}

template <class T> void checkSizes(const PlaneFns<T>& f, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const int odd[] = {INT_MIN, -1000, -3, -1, 0,  1,    2,     3,     4,       5,
                       15,      16,    17, 31, 33, 1000, 65535, 65536, 1 << 30, INT_MAX};
    auto check = [&](int w, int h) {
        const ZmxiRect r{int(rng.next()), int(rng.next()), w, h};
        int n = 77, m = 77;
        ASSERT_EQ(f.size(&r, &n), zmxStsNoErr);
        ASSERT_EQ(f.bandSize(&r, &m), zmxStsNoErr);
        ASSERT_EQ(n, f.modelSize(r)) << w << 'x' << h;
        ASSERT_EQ(m, f.modelBandSize(r)) << w << 'x' << h;
    };
    for (int w : odd)
        for (int h : odd) check(w, h);
    for (int i = 0; i < 2000; ++i) check(int(rng.range(0, 5000)), int(rng.range(0, 5000)));
    const ZmxiRect r{0, 0, 9, 9};
    int n = 77;
    for (auto fn : {f.size, f.bandSize})
        checkOrder({kNull, kNull}, [&](const Bad& bad) { return fn(bad.null(0, &r), bad.null(1, &n)); });
    EXPECT_EQ(n, 77);
}

// ---- Kernels. A column is a row on its side: `Down` transposes what a sample's place is.

// How far a kernel reads: samples before the first and behind the last one of a source, in samples of that
// source.
struct Reach {
    int before, behind;
};

// The rows of a kernel's source or destination; along is the direction of the filter, across the other one.
template <class T> struct Lines {
    bool down;
    Strided<T> samples;
    Lines(Rng& rng, bool isDown, int along, int across, Reach reach, int gap, GuardedBlock::Flush flush)
        : down(isDown), samples(isDown ? Strided<T>(rng, across, along + reach.behind, gap, flush, 0, reach.before)
                                       : Strided<T>(rng, along + reach.behind, across, gap, flush, reach.before, 0)) {}
    T get(int i, int line) { return down ? samples.get(line, i) : samples.get(i, line); }
    void set(int i, int line, T v) { down ? samples.set(line, i, v) : samples.set(i, line, v); }
    void put(std::vector<std::uint8_t>& copy, int i, int line, T v) const {
        down ? samples.put(copy, line, i, v) : samples.put(copy, i, line, v);
    }
};
template <class T> void fillLines(Rng& rng, Lines<T>& lines, int along, int across, Reach reach, Character kind) {
    for (int j = 0; j < across; ++j) {
        Samples<T> samples(rng, kind);
        for (int i = -reach.before; i < along + reach.behind; ++i) lines.set(i, j, samples.next());
    }
}

// What a kernel is called with: the lengths from 1 upward at first, then any.
struct KernelCase {
    int pairs, across, phase;
    Character kind;
};
inline KernelCase anyKernelCase(Rng& rng, int turn) {
    const int pairs = turn < 80 ? 1 + turn % 20 : int(rng.range(1, turn % 8 ? 40 : 300));
    const int across = int(rng.range(1, turn % 16 ? 5 : 150));
    const int phase = turn & 1 ? 0 : int(rng.oneIn(2) ? 1 : rng.oneIn(2) ? 2 : INT_MIN);
    return {pairs, across, phase, kCharacters[rng.range(0, 5)]};
}
inline ::testing::Message caseText(int pairs, int across, int phase, Character kind) {
    return ::testing::Message() << pairs << " pairs, " << across << " lines, phase " << phase << ", kind " << int(kind);
}

template <class T>
void checkForwardKernel(ForwardKernel<T> fn, void (*line)(const T*, T*, T*, int, int), bool down, Reach phase0,
                        Reach phase1, int turns, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int turn = 0; turn < turns; ++turn) {
        const auto [w, across, phase, kind] = anyKernelCase(rng, turn);
        SCOPED_TRACE(caseText(w, across, phase, kind));
        const Reach reach = phase ? phase1 : phase0;
        Lines<T> src(rng, down, 2 * w, across, reach, anyGap(rng), anySide(rng));
        fillLines(rng, src, 2 * w, across, reach, kind);
        Lines<T> low(rng, down, w, across, {0, 0}, anyGap(rng), anySide(rng)),
            high(rng, down, w, across, {0, 0}, anyGap(rng), anySide(rng));
        const auto source = src.samples.bytes();
        auto wantLow = low.samples.bytes(), wantHigh = high.samples.bytes();
        for (int j = 0; j < across; ++j) {
            model::Line<T> x(2 * w);
            std::vector<T> l(static_cast<std::size_t>(w)), h(l);
            for (int i = -reach.before; i < 2 * w + reach.behind; ++i) x[i] = src.get(i, j);
            line(&x[0], l.data(), h.data(), w, phase);
            for (int i = 0; i < w; ++i)
                low.put(wantLow, i, j, l[std::size_t(i)]), high.put(wantHigh, i, j, h[std::size_t(i)]);
        }
        const ZmxiSize roi = down ? ZmxiSize{across, w} : ZmxiSize{w, across};
        ASSERT_EQ(fn(src.samples.data(), src.samples.step(), low.samples.data(), low.samples.step(),
                     high.samples.data(), high.samples.step(), roi, phase),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(wantLow, low.samples.bytes())) << "low";
        ASSERT_TRUE(sameBytes(wantHigh, high.samples.bytes())) << "high";
        ASSERT_TRUE(sameBytes(source, src.samples.bytes()));
    }
}

struct InverseReach {
    Reach low, high;
};
template <class T>
void checkInverseKernel(InverseKernel<T> fn, void (*line)(const T*, const T*, T*, int, int), bool down,
                        InverseReach phase0, InverseReach phase1, int turns, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int turn = 0; turn < turns; ++turn) {
        const auto [w, across, phase, kind] = anyKernelCase(rng, turn);
        SCOPED_TRACE(caseText(w, across, phase, kind));
        const auto [lowReach, highReach] = phase ? phase1 : phase0;
        const int gap = anyGap(rng); // the bands of a column share their step
        Lines<T> low(rng, down, w, across, lowReach, gap, anySide(rng));
        Lines<T> high(rng, down, w, across, highReach, down ? gap : anyGap(rng), anySide(rng));
        fillLines(rng, low, w, across, lowReach, kind);
        fillLines(rng, high, w, across, highReach, kind);
        Lines<T> dst(rng, down, 2 * w, across, {0, 0}, anyGap(rng), anySide(rng));
        auto want = dst.samples.bytes();
        const auto lowSource = low.samples.bytes(), highSource = high.samples.bytes();
        for (int j = 0; j < across; ++j) {
            model::Line<T> l(w), h(w);
            std::vector<T> x(static_cast<std::size_t>(2 * w));
            for (int i = -lowReach.before; i < w + lowReach.behind; ++i) l[i] = low.get(i, j);
            for (int i = -highReach.before; i < w + highReach.behind; ++i) h[i] = high.get(i, j);
            line(&l[0], &h[0], x.data(), w, phase);
            for (int i = 0; i < 2 * w; ++i) dst.put(want, i, j, x[std::size_t(i)]);
        }
        const ZmxiSize roi = down ? ZmxiSize{across, w} : ZmxiSize{w, across};
        ASSERT_EQ(fn(low.samples.data(), low.samples.step(), high.samples.data(), high.samples.step(), roi,
                     dst.samples.data(), dst.samples.step(), phase),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(want, dst.samples.bytes()));
        ASSERT_TRUE(sameBytes(lowSource, low.samples.bytes()));
        ASSERT_TRUE(sameBytes(highSource, high.samples.bytes()));
    }
}

// ---- Column lifting: N rows, of which `Const` lead; call(rows, width) and model(rows, width) work on the
// rows given.
template <class T, std::size_t N>
void checkLift(const std::function<ZmxStatus(T* const*, int)>& call,
               const std::function<void(T* const*, int)>& reference, std::initializer_list<std::pair<int, int>> shared,
               std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int turn = 0; turn < 200; ++turn) {
        const int width = turn < 40 ? turn + 1 : int(rng.range(1, 700));
        std::vector<std::vector<T>> plain(N);
        std::vector<std::unique_ptr<GuardedBlock>> rows;
        T *given[N], *expected[N];
        for (std::size_t k = 0; k < N; ++k) {
            Samples<T> samples(rng, kCharacters[rng.range(0, 5)]);
            for (int i = 0; i < width; ++i) plain[k].push_back(samples.next());
            // With a byte more than the row, one end of it is at an odd address.
            rows.push_back(
                std::make_unique<GuardedBlock>(plain[k].size() * sizeof(T) + std::size_t(turn % 3 == 1), anySide(rng)));
            std::memcpy(rows[k]->data(), plain[k].data(), plain[k].size() * sizeof(T));
            given[k] = reinterpret_cast<T*>(rows[k]->data());
            expected[k] = plain[k].data();
        }
        if (turn % 4 == 3) // rows that a caller may take for one another at an edge
            for (auto [a, b] : shared) given[b] = given[a], expected[b] = expected[a];
        reference(expected, width);
        ASSERT_EQ(call(given, width), zmxStsNoErr);
        for (std::size_t k = 0; k < N; ++k)
            ASSERT_TRUE(sameBytes(plain[k].data(), rows[k]->data(), plain[k].size() * sizeof(T)))
                << "row " << k << " of width " << width;
    }
}

// ---- Arguments in the order of their tests: the earliest bad one decides and nothing is written.

template <class T> void checkPlaneArguments(const PlaneFns<T>& f) {
    Zmx8u scratch[4096];
    const std::vector<T> fresh(16, T(7));
    std::vector<T> plane = fresh, bands = fresh;
    const ZmxiRect r{0, 0, 4, 4};
    for (auto fn : {f.forward, f.inverse})
        checkOrder({kNull, kStep, kNull, kNull}, [&](const Bad& bad) {
            return fn(bad.null(0, plane.data()), bad.below1(1, 4 * sizeof(T)), bad.null(2, &r), bad.null(3, scratch));
        });
    // Five pointers, one step, four planes, four steps; then the size, by itself as it stands in the rectangle.
    const std::vector<ZmxStatus> order{kNull, kNull, kNull, kNull, kNull, kStep, kNull, kNull,
                                       kNull, kNull, kStep, kStep, kStep, kStep, kSize, kSize};
    // Every set of sixteen tests; numbers are bad in one way at a time, for all mixtures would take minutes.
    for (int value : {0, -1, INT_MIN}) {
        const auto number = [value](const Bad& bad, int test, int good) { return bad.any(test, good, {value}); };
        const auto stepsOf = [&](const Bad& bad) {
            std::array<int, 4> steps;
            for (int k = 0; k < 4; ++k) steps[std::size_t(k)] = number(bad, 10 + k, 2 * sizeof(T));
            return steps;
        };
        const auto rectOf = [&](const Bad& bad) { return ZmxiRect{0, 0, number(bad, 14, 4), number(bad, 15, 4)}; };
        const auto planesOf = [&](const Bad& bad) {
            std::array<T*, 4> planes;
            for (int k = 0; k < 4; ++k) planes[std::size_t(k)] = bad.null(6 + k, bands.data() + 4 * k);
            return planes;
        };
        checkOrder(order, [&](const Bad& bad) {
            const auto to = planesOf(bad);
            const auto steps = stepsOf(bad);
            const ZmxiRect rect = rectOf(bad);
            return f.forwardBands(bad.null(0, plane.data()), number(bad, 5, 4 * sizeof(T)), bad.null(3, &rect),
                                  bad.null(1, to.data()), bad.null(2, steps.data()), bad.null(4, scratch));
        });
        checkOrder(order, [&](const Bad& bad) {
            const auto from = planesOf(bad);
            const T* const sources[4] = {from[0], from[1], from[2], from[3]};
            const auto steps = stepsOf(bad);
            const ZmxiRect rect = rectOf(bad);
            return f.inverseBands(bad.null(0, sources), bad.null(2, steps.data()), bad.null(1, plane.data()),
                                  number(bad, 5, 4 * sizeof(T)), bad.null(3, &rect), bad.null(4, scratch));
        });
    }
    EXPECT_EQ(plane, fresh) << "nothing is written";
    EXPECT_EQ(bands, fresh) << "nothing is written";
}

template <class T>
void checkKernelArguments(std::initializer_list<ForwardKernel<T>> forward,
                          std::initializer_list<InverseKernel<T>> inverse) {
    const std::vector<T> fresh(400, T(7));
    std::vector<T> a = fresh, b = fresh, c = fresh;
    const int s = 10 * sizeof(T);
    const auto ptr = [](const Bad& bad, int test, std::vector<T>& v) { return bad.null(test, v.data() + 200); };
    const std::vector<ZmxStatus> order{kNull, kNull, kNull, kStep, kStep, kStep, kSize, kSize};
    for (auto fn : forward)
        checkOrder(order, [&](const Bad& bad) {
            return fn(ptr(bad, 0, a), bad.below1(3, s), ptr(bad, 1, b), bad.below1(4, s), ptr(bad, 2, c),
                      bad.below1(5, s), {bad.below1(7, 2), bad.below1(6, 2)}, 0);
        });
    for (auto fn : inverse)
        checkOrder(order, [&](const Bad& bad) {
            return fn(ptr(bad, 0, a), bad.below1(3, s), ptr(bad, 1, b), bad.below1(4, s),
                      {bad.below1(7, 2), bad.below1(6, 2)}, ptr(bad, 2, c), bad.below1(5, s), 0);
        });
    EXPECT_EQ(a, fresh) << "nothing is written";
    EXPECT_EQ(b, fresh) << "nothing is written";
    EXPECT_EQ(c, fresh) << "nothing is written";
}

template <class T, std::size_t N> void checkLiftArguments(const std::function<ZmxStatus(T* const*, int)>& call) {
    const std::vector<T> fresh(N, T(7));
    std::vector<T> v = fresh;
    std::vector<ZmxStatus> order(N, kNull);
    order.push_back(kSize);
    checkOrder(order, [&](const Bad& bad) {
        T* rows[N];
        for (std::size_t k = 0; k < N; ++k) rows[k] = bad.null(int(k), &v[k]);
        return call(rows, bad.below1(int(N), 1));
    });
    EXPECT_EQ(v, fresh) << "nothing is written";
}

// ---- Digests of fixed input.

// Forward in place and in bands, then the inverse of other samples, at all four phases.
template <class T> std::uint64_t planeDigest(const PlaneFns<T>& f, int magnitude) {
    Rng rng(5051);
    Digest digest;
    std::vector<Zmx8u> scratch(100000);
    for (int phases = 0; phases < 4; ++phases) {
        const int w = 61 + phases, h = 40 + 5 * phases, s = int(sizeof(T));
        const ZmxiRect r{phases & 1, phases >> 1, w, h};
        auto a = rng.vec<T>(std::size_t(w * h), -magnitude, magnitude), b = rng.vec<T>(a.size(), -magnitude, magnitude),
             c = a, d = a;
        const int n = ((w + 1) / 2) * ((h + 1) / 2);
        std::vector<T> bands(static_cast<std::size_t>(4 * n));
        T* const to[4] = {&bands[0], &bands[std::size_t(n)], &bands[std::size_t(2 * n)], &bands[std::size_t(3 * n)]};
        const T* const from[4] = {to[0], to[1], to[2], to[3]};
        const int step = (w + 1) / 2 * s, steps[4] = {step, step, step, step};
        EXPECT_EQ(f.forward(a.data(), w * s, &r, scratch.data()), zmxStsNoErr);
        EXPECT_EQ(f.inverse(b.data(), w * s, &r, scratch.data()), zmxStsNoErr);
        EXPECT_EQ(f.forwardBands(c.data(), w * s, &r, to, steps, scratch.data()), zmxStsNoErr);
        EXPECT_EQ(f.inverseBands(from, steps, d.data(), w * s, &r, scratch.data()), zmxStsNoErr);
        digest.add(a).add(b).add(bands).add(d);
    }
    return digest.get();
}

template <class T> std::vector<T> digestSamples(Rng& rng, std::size_t n, int magnitude) {
    std::vector<T> v(n);
    for (T& x : v)
        x = std::is_same_v<T, float> ? T(double(rng.range(-magnitude, magnitude)) / 16)
                                     : T(rng.range(-magnitude, magnitude));
    return v;
}
// A kernel in both phases, on 9 pairs and on one, along rows or columns of 20 samples at least.
template <class T, class Call> std::uint64_t kernelDigest(int magnitude, Call call) {
    Rng rng(5052);
    Digest digest;
    for (int phase : {0, 1})
        for (int pairs : {9, 1, 2}) {
            auto a = digestSamples<T>(rng, 40 * 40, magnitude), b = digestSamples<T>(rng, 40 * 40, magnitude);
            std::vector<T> c(40 * 40), d(40 * 40);
            const int step = 40 * int(sizeof(T));
            EXPECT_EQ(call(&a[8 * 40 + 8], &b[8 * 40 + 8], c.data(), d.data(), step, pairs, phase), zmxStsNoErr);
            digest.add(c).add(d);
        }
    return digest.get();
}
template <class T> std::uint64_t kernelDigest(ForwardKernel<T> fn, bool down, int magnitude) {
    return kernelDigest<T>(magnitude, [=](T* a, T*, T* c, T* d, int step, int pairs, int phase) {
        return fn(a, step, c, step, d, step, down ? ZmxiSize{17, pairs} : ZmxiSize{pairs, 17}, phase);
    });
}
template <class T> std::uint64_t kernelDigest(InverseKernel<T> fn, bool down, int magnitude) {
    return kernelDigest<T>(magnitude, [=](T* a, T* b, T* c, T*, int step, int pairs, int phase) {
        return fn(a, step, b, step, down ? ZmxiSize{17, pairs} : ZmxiSize{pairs, 17}, c, step, phase);
    });
}
template <class T, std::size_t N>
std::uint64_t liftDigest(const std::function<ZmxStatus(T* const*, int)>& call, int magnitude) {
    Rng rng(5053);
    auto v = digestSamples<T>(rng, N * 100, magnitude);
    T* rows[N];
    for (std::size_t k = 0; k < N; ++k) rows[k] = &v[100 * k];
    EXPECT_EQ(call(rows, 100), zmxStsNoErr);
    return Digest().add(v).get();
}
