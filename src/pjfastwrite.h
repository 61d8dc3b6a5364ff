// pjfastwrite.h - writing of bits through a 64-bit register, eight bytes at a time, where there is room enough.
#pragma once

#include "pjbitwrite.h"
#include "pjwords.h"

// The register keeps what has been written above what is pending: a bit writer's state can be read off it.
class FastWriter {
    Zmx8u* next;        // the next byte to write
    std::uint64_t bits; // the newest bit lowest
    int count;          // how many are pending: at most 63

    void putBytes(std::uint64_t word, int n) { // the n top bytes, with stuffing
        for (; n > 0; --n, word <<= 8) {
            const Zmx8u byte = Zmx8u(word >> 56);
            *next++ = byte;
            if (byte == 0xFF) *next++ = 0;
        }
    }

public:
    FastWriter(Zmx8u* p, std::uint64_t pending, int n) : next(p), bits(pending), count(n) {}

    // Writes the low n bits of v, up to 32 of them; the bits above have to be zero.
    void put(std::uint64_t v, int n) {
        const int over = count + n - 64;
        if (over >= 0) {
            const std::uint64_t word = bits << (n - over) | v >> over;
            if (hasFF(word)) {
                putBytes(word, 8);
            } else {
                storeBigEndian(next, word);
                next += 8;
            }
            count = over;
        } else {
            count += n;
        }
        bits = bits << n | v;
    }

    // Writes the whole bytes out: at most seven bits are pending after that.
    void drain() {
        putBytes(count > 0 ? bits << (64 - count) : 0, count / 8);
        count &= 7;
    }

    Zmx8u* position() const { return next; }
    int pending() const { return count; }
    std::uint64_t pendingBits() const { return bits; }
};
