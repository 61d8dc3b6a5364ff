// strided.h - rectangles of samples at any byte step, and samples of several characters to fill them with.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/support/guarded.h"
#include "tests/support/rng.h"

#include <cstring>
#include <limits>
#include <type_traits>

// A rectangle of samples flush with a guard page. Rows lie any number of bytes apart. All bytes are random at
// first; bytes() is what the memory holds, and put() writes a sample into such a copy, so that one comparison
// covers samples and gaps alike.
template <class T> class Strided {
    int left, top, rowStep;
    Guarded<std::uint8_t> memory;

    std::size_t offset(int x, int y) const {
        return std::size_t((y + top) * rowStep) + std::size_t(x + left) * sizeof(T);
    }

public:
    // Samples -leftOf to width - 1 of rows -above to height - 1; pad is the gap behind a row, in bytes.
    Strided(Rng& rng, int width, int height, int pad, GuardedBlock::Flush flush = GuardedBlock::AtEnd, int leftOf = 0,
            int above = 0)
        : left(leftOf), top(above), rowStep((width + leftOf) * int(sizeof(T)) + pad),
          memory(height + above > 0
                     ? std::size_t((height + above - 1) * rowStep) + std::size_t(width + leftOf) * sizeof(T)
                     : 0,
                 flush) {
        rng.bytes(memory.data(), memory.size());
    }
    int step() const { return rowStep; }
    T* at(int x, int y) { return reinterpret_cast<T*>(memory.data() + offset(x, y)); }
    T* data() { return at(0, 0); }
    T get(int x, int y) {
        T v;
        std::memcpy(&v, memory.data() + offset(x, y), sizeof v);
        return v;
    }
    void set(int x, int y, T v) { std::memcpy(memory.data() + offset(x, y), &v, sizeof v); }
    std::vector<std::uint8_t> bytes() { return memory.copy(); }
    void put(std::vector<std::uint8_t>& copy, int x, int y, T v) const {
        std::memcpy(copy.data() + offset(x, y), &v, sizeof v);
    }
};

// Samples: of the whole range, small ones, one value, a ramp, zeros with a few spikes, or the ends of the
// range.
enum class Character { Full, Small, Flat, Ramp, Sparse, Ends };
inline constexpr Character kCharacters[] = {Character::Full, Character::Small,  Character::Flat,
                                            Character::Ramp, Character::Sparse, Character::Ends};

template <class T> T anySample(Rng& rng) {
    if constexpr (std::is_same_v<T, float>)
        return float(double(rng.range(-(1LL << 40), 1LL << 40)) / double(1LL << rng.range(0, 60)));
    else
        return T(rng.range(std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

// A generator of samples of one character; ask for one after another.
template <class T> class Samples {
    Rng& rng;
    Character character;
    T first;
    int slope, count = 0;

public:
    Samples(Rng& source, Character kind)
        : rng(source), character(kind), first(anySample<T>(rng)), slope(int(rng.range(-300, 300))) {}
    T next() {
        switch (character) {
        case Character::Full:
            return anySample<T>(rng);
        case Character::Small:
            return T(rng.range(-255, 255));
        case Character::Flat:
            return first;
        case Character::Ramp:
            return T(std::int16_t(slope * count++ % 32768));
        case Character::Sparse:
            return rng.oneIn(9) ? anySample<T>(rng) : T(0);
        default:
            break;
        }
        if constexpr (std::is_same_v<T, float>)
            return float(rng.range(-1, 1)) * 3.0e37F;
        else
            return rng.oneIn(2) ? std::numeric_limits<T>::min() + T(rng.range(0, 1))
                                : std::numeric_limits<T>::max() - T(rng.range(0, 1));
    }
};
