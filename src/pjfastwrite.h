// pjfastwrite.h - writing of bits through a 64-bit register, eight bytes at a time, where there is room
// enough.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjbitwrite.h"
#include "pjwords.h"
#include "pjwrap.h"

namespace zmx {

// Above what is pending the register keeps what has been written, so that a bit writer's, which keeps the
// last byte above its own pending bits, can be read off it.
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

    // Writes the whole bytes out: at most seven bits are pending after that.
    void drain() {
        putBytes(count > 0 ? bits << (64 - count) : 0, count / 8);
        count &= 7;
    }

public:
    static constexpr int kMostBits = 32; // that put() takes

    // In the place of a bit writer.
    explicit FastWriter(const BitWriter& out)
        : next(out.dst + out.pos), bits(out.buf >> (24 - out.count)), count(out.count) {}

    // At a position in bits: those in front of it in its byte are pending.
    FastWriter(Zmx8u* dst, int position)
        : next(dst + (position >> 3)), bits(position & 7 ? *next >> (8 - (position & 7)) : 0), count(position & 7) {}

    // Writes the low n bits of v, up to kMostBits of them; the bits above have to be zero.
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

    // Puts a bit writer where it would stand.
    void leave(BitWriter& out) {
        drain();
        out.moveTo(int(next - out.dst), Zmx32u(bits << (24 - count)), count);
    }

    // The position in bits. The byte under it gets what is pending and zeros, but where nothing was written
    // it is left.
    int leave(Zmx8u* dst, int from) {
        drain();
        const int to = wrapAdd(wrapMul(int(next - dst), 8), count);
        if (to != from) *next = Zmx8u(bits << (8 - count));
        return to;
    }
};

} // namespace zmx
