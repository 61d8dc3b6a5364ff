// digests.h - what the digest program is made of: inputs that are the same on every platform, a digest that does not
// depend on byte order, and the list of results.
//
// The program has nothing but the public header and the standard library, so that every toolchain can build it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

// FNV-1a over values, each taken as its bytes from the low end upward.
class Digest {
    std::uint64_t h = 0xCBF29CE484222325u;

public:
    template <class T> Digest& value(T v) {
        const auto bits = std::make_unsigned_t<T>(v);
        for (std::size_t i = 0; i < sizeof bits; ++i) h = (h ^ (std::uint64_t(bits) >> 8 * i & 255)) * 0x100000001B3u;
        return *this;
    }
    template <class T> Digest& values(const T* v, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) value(v[i]);
        return *this;
    }
    template <class T> Digest& values(const std::vector<T>& v) { return values(v.data(), v.size()); }
    std::uint64_t get() const { return h; }
};

// SplitMix64, seeded by a name: whoever adds a digest leaves the others as they were. Two numbers in one expression need
// an order: compilers evaluate operands and arguments from either side.
class Random {
    std::uint64_t state;

public:
    explicit Random(const std::string& name) : state(Digest().values(name.data(), name.size()).get()) {}
    std::uint64_t next() {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    // A whole number from lo to hi, both included. The span is below 2^32.
    std::int32_t range(std::int32_t lo, std::int32_t hi) {
        const std::uint64_t span = std::uint64_t(std::int64_t(hi) - lo) + 1;
        return std::int32_t(lo + std::int64_t((next() >> 32) * span >> 32));
    }
    bool oneIn(int n) { return range(1, n) == 1; }
};

inline std::uint32_t bitsOf(float v) {
    std::uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

// What samples look like.
enum class Kind {
    Full,   // every value of the type; of floats every bit pattern but those of signalling NaNs
    Small,  // around zero; of unsigned types 0 to 255
    Flat,   // one value of a plane
    Ramp,   // slowly rising
    Ends,   // the ends of the range and their neighbours; of floats huge values
    Spread, // of floats: every significand, exponents far apart; of integers powers of two and their neighbours
    Sparse  // zeros, and now and then any value
};
inline constexpr Kind kKinds[] = {Kind::Full, Kind::Small,  Kind::Flat,  Kind::Ramp,
                                  Kind::Ends, Kind::Spread, Kind::Sparse};

// Samples of T as this program handles them. Floats go by their bits: a processor may quieten a NaN that passes through
// its registers.
template <class T> using Raw = std::conditional_t<std::is_same_v<T, float>, std::uint32_t, T>;

// A stream of samples of one kind.
template <class T> class Samples {
    static constexpr bool floats = std::is_same_v<T, float>;
    Random& random;
    Kind kind;
    Raw<T> first;
    std::int32_t slope, count = 0;

    Raw<T> whole(std::int64_t v) const {
        if constexpr (floats)
            return bitsOf(float(std::int32_t(v))); // few bits: exact
        else
            return T(std::uint64_t(v));
    }
    // Of NaNs only quiet ones: with a signalling one the x87 unit's result depends on whether it is loaded or taken from
    // memory as an operand, which is the compiler's choice.
    static std::uint32_t quiet(std::uint32_t bits) { return (bits & 0x7FFFFFFF) > 0x7F800000 ? bits | 0x400000 : bits; }
    Raw<T> any() {
        const std::uint64_t bits = random.next() >> 32;
        if constexpr (floats)
            return quiet(std::uint32_t(bits));
        else
            return Raw<T>(bits);
    }
    Raw<T> spread() {
        const std::uint64_t bits = random.next();
        if constexpr (floats) { // exponents of 2 from -32 to 31
            const std::uint32_t exponent = std::uint32_t(127 - 32 + (bits >> 58));
            return std::uint32_t(bits & 0x807FFFFF) | exponent << 23;
        } else {
            const std::int64_t v = (std::int64_t(1) << (bits >> 32) % (8 * sizeof(T))) + std::int64_t(bits & 3) - 2;
            return whole(bits & 4 ? v : -v);
        }
    }
    Raw<T> end() {
        const std::uint64_t bits = random.next() >> 40;
        if constexpr (floats) { // the largest finite magnitudes, infinities and a NaN
            return quiet((0x7F7FFFFE + std::uint32_t(bits >> 1) % 4) | std::uint32_t(bits & 1) << 31);
        } else {
            const auto edge = std::uint64_t(std::is_signed_v<T>) << (8 * sizeof(T) - 1); // the least value, or 0
            return T(edge + bits % 4 - 2);
        }
    }

public:
    Samples(Random& source, Kind what) : random(source), kind(what), first(any()), slope(source.range(-300, 300)) {}
    Raw<T> next() {
        switch (kind) {
        case Kind::Full:
            return any();
        case Kind::Small:
            return whole(std::is_unsigned_v<T> ? random.range(0, 255) : random.range(-255, 255));
        case Kind::Flat:
            return first;
        case Kind::Ramp:
            return whole(std::int64_t(slope) * count++ % 32768);
        case Kind::Ends:
            return end();
        case Kind::Spread:
            return spread();
        default:
            return random.oneIn(9) ? any() : Raw<T>(0);
        }
    }
};

// A rectangle of samples at a step, with samples around it; rows may lie at odd addresses. All of it, the gaps between
// rows too, starts with random contents and is part of the digest.
template <class T> class Plane {
    int width, height, margin, rowBytes;
    std::vector<std::uint8_t> memory;

    std::uint8_t* row(int y) { return memory.data() + std::ptrdiff_t(y) * rowBytes; }

public:
    // gap: bytes behind each row; around: samples at both ends of every row, and rows above and below.
    Plane(Random& random, Kind kind, int wide, int high, int gap = 0, int around = 0)
        : width(wide + 2 * around), height(high + 2 * around), margin(around), rowBytes(width * int(sizeof(T)) + gap),
          memory(std::size_t(rowBytes) * std::size_t(height)) {
        for (std::uint8_t& byte : memory) byte = std::uint8_t(random.next() >> 32);
        Samples<T> samples(random, kind);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) set(x - margin, y - margin, samples.next());
    }
    void set(int x, int y, Raw<T> v) {
        std::memcpy(row(y + margin) + sizeof(T) * std::size_t(x + margin), &v, sizeof v);
    }
    T* at(int x, int y) { return reinterpret_cast<T*>(row(y + margin) + sizeof(T) * std::size_t(x + margin)); }
    T* data() { return at(0, 0); }
    int step() const { return rowBytes; }
    void digest(Digest& digest) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                Raw<T> v;
                std::memcpy(&v, row(y) + sizeof(T) * std::size_t(x), sizeof v);
                digest.value(v);
            }
            digest.values(row(y) + sizeof(T) * std::size_t(width),
                          std::size_t(rowBytes) - sizeof(T) * std::size_t(width));
        }
    }
};

// N planes of one size and step.
template <class T, int N> class Planes {
    std::vector<Plane<T>> planes;
    T* pointers[N];

public:
    Planes(Random& random, Kind kind, int width, int height, int gap = 0, int around = 0) {
        for (int p = 0; p < N; ++p) planes.emplace_back(random, kind, width, height, gap, around);
        for (int p = 0; p < N; ++p) pointers[p] = planes[std::size_t(p)].data();
    }
    Planes(const Planes&) = delete;
    Plane<T>& operator[](int p) { return planes[std::size_t(p)]; }
    T* const* data() const { return pointers; }
    int step() const { return planes[0].step(); }
    void digest(Digest& digest) {
        for (Plane<T>& plane : planes) plane.digest(digest);
    }
};

// Array parameters of pointers to const: C++ converts these, C's notation hides it.
template <class T, int N> const T* const* readOnly(const Planes<T, N>& planes) { return planes.data(); }

// Sizes that rectangles are tried with: the last one is shared out to threads by the functions that do so.
struct Shape {
    int width, height, gap;
};
inline constexpr Shape kShapes[] = {{1, 1, 0}, {2, 3, 1}, {3, 2, 0}, {7, 5, 3}, {16, 4, 0}, {33, 9, 2}, {129, 65, 5}};

// A function and its name, which NAMED keeps together.
template <class F> struct Named {
    std::string name;
    F* call;
};
#define NAMED(function) named(#function, function)
template <class F> Named<F> named(const char* name, F* function) { return {name, function}; }

// The end of a name whose digest depends on the width of a pointer.
inline std::string pointerWidth(std::size_t bytes) { return ": " + std::to_string(8 * bytes) + "-bit pointers"; }

// All digests so far.
class Report {
public:
    struct Line {
        std::string name;
        std::uint64_t digest;
    };
    std::vector<Line> lines;

    // body(random, digest) calls the function and digests what comes of it.
    template <class Body> void add(const std::string& name, Body body) {
        Random random(name);
        Digest digest;
        body(random, digest);
        lines.push_back({name, digest.get()});
    }
};

// One for each family, in digests of its own file.
void colourDigests(Report&);
void resamplingDigests(Report&);
void unitDigests(Report&);
void blockDigests(Report&);
void huffmanDigests(Report&);
void sequentialDigests(Report&);
void progressiveDigests(Report&);
void losslessDigests(Report&);
void componentDigests(Report&);
void waveletPlaneDigests(Report&);
void waveletKernelDigests(Report&);
void waveletLiftDigests(Report&);
void codeblockDigests(Report&);
void textureDigests(Report&);
void photoAndTiffDigests(Report&);
