// pjfastread.h - decoding of a block from a 64-bit register that runs ahead of the reader.
//
// What a reader leaves in its state is exact, and so is when it reads: it refills to 25 bits or more whenever
// fewer than 8 are held in front of a code, or too few in front of a value. Here the register is filled on a
// schedule of its own, and the count that the reader would have is kept beside it. As long as no marker and
// no end of the source comes up, a refill is nothing but an addition to the count, and the two counts differ
// by whole data bytes: at the end the reader stands that many data bytes before or behind the register. If a
// marker may be among them the block is decoded again, exactly.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjdecwalk.h"
#include "pjwords.h"

namespace zmx {

// What a reader with count bits holds once need of them have been asked for: a refill makes it the one number
// from 25 to 32 that leaves whole bytes.
constexpr int refilledBelow(int count, int need) { return count < need ? ((count - 1) & 7) + 25 : count; }

// By category and count behind a code: the count in front of the next code, that is with the value taken and
// 8 bits asked for. A table, since a branch on either refill is as good as random.
inline constexpr auto nextCounts = tableOf<16>(
    [](int s) { return tableOf<64>([s](int count) { return Zmx8u(refilledBelow(refilledBelow(count, s) - s, 8)); }); });

// How many of the next 8 bytes stand ahead of a 0xFF and of the end.
inline int bytesWithoutFF(const BitReader& in, const Zmx8u* p) {
    const std::ptrdiff_t left = in.src + in.len - p;
    if (left >= 8 && !hasFF(loadBigEndian(p))) return 8;
    int n = 0; // below 8 at the end: eight of them would have been taken at once
    while (n < left && p[n] != 0xFF) ++n;
    return n;
}
// The data end in a marker: behind a byte that is not 0xFF there is another one, and no more is known.
inline int bytesWithoutFF(const DirectReader&, const Zmx8u* p) {
    int n = 0;
    while (n < 8 && p[n] != 0xFF) ++n;
    return n;
}

// Whether a data byte 0xFF with its stuffing is next, behind bytes without one: at a 0xFF, then, or at the end.
inline bool stuffedFF(const BitReader& in, const Zmx8u* p) { return in.src + in.len - p >= 2 && p[1] == 0; }
inline bool stuffedFF(const DirectReader&, const Zmx8u* p) { return p[1] == 0; }

template <class Reader> class FastReader {
    const Reader* in;
    std::uint64_t bits; // the next bit on top
    unsigned held;      // how many of them count: at most 63
    unsigned count;     // how many the reader would hold behind the last code
    unsigned category;  // of that code
    unsigned nextCount; // how many it would hold in front of the next one
    const Zmx8u* next;  // the byte behind the register
    const Zmx8u* known; // the byte behind those from next on that are known to be there and not 0xFF
    bool stuffed;       // a 0xFF with its stuffing has been passed

    void lookAhead() { known += bytesWithoutFF(*in, known); }

    // Steps over a data byte and its stuffing; false in front of a marker, of fill and of the end.
    bool step(const Zmx8u*& p) {
        if (p == known) lookAhead();
        if (p < known) {
            ++p;
        } else {
            if (!stuffedFF(*in, p)) return false;
            known = p += 2;
            stuffed = true;
        }
        return true;
    }
    // The same backwards, over what has been stepped over in this call. A zero byte is stuffing behind a 0xFF
    // only: a data byte of zero has stuffing between it and a 0xFF.
    const Zmx8u* stepBack(const Zmx8u* p) const {
        const bool pair = p - (in->src + in->pos) >= 2 && p[-1] == 0 && p[-2] == 0xFF;
        return p - (pair ? 2 : 1);
    }

    // Refills a reader byte by byte near a 0xFF. Not a member: the fields of one stay in registers as long as
    // nobody takes its address.
    [[gnu::noinline]] static bool refillSlowly(FastReader& r) {
        while (r.held <= 56) {
            const Zmx8u* const byte = r.next;
            if (!r.step(r.next)) return false;
            r.bits |= std::uint64_t(*byte) << (56 - r.held);
            r.held += 8;
        }
        return true;
    }

    // A code of more than 8 bits, as symbol | length << 16; 0 if the table does not hold it.
    Zmx32u longCode(const ZmxiDecodeHuffmanSpec& table) const {
        for (int length = 9; length <= 16; ++length) {
            const Zmx32u c = Zmx32u(bits >> (64 - length));
            if (table.maxCode[length] != kNoCode && c <= table.maxCode[length])
                return Zmx32u(symbolOf(table, length, c)) | Zmx32u(length) << 16;
        }
        return 0;
    }

public:
    explicit FastReader(const Reader& reader)
        : in(&reader), bits(reader.count > 0 ? std::uint64_t(reader.buf) << (64 - reader.count) : 0),
          held(unsigned(reader.count)), count(held), category(0), nextCount(nextCounts[0][held]),
          next(reader.src + reader.pos), known(next), stuffed(false) {}

    // Whether a reader is in a state to begin with.
    static bool suits(const Reader& reader) {
        return reader.marker == 0 && reader.count >= 0 && reader.count <= 32 && !reader.ended();
    }

    // Fills the register to 56 bits or more, enough for a code of 16 bits with its value and one of 8 bits
    // with its own. False near a marker or the end.
    bool refill() {
        if (known - next < 8) {
            lookAhead();
            if (known - next < 8) [[unlikely]] {
                FastReader copy = *this;
                const bool filled = refillSlowly(copy);
                *this = copy;
                return filled;
            }
        }
        bits |= loadBigEndian(next) >> held; // the part of a byte that is too much comes again next time
        next += 7 - (held >> 3);
        held |= 56;
        return true;
    }

    // Takes a code: its symbol, or -1 and nothing is taken, if the table does not hold it or bits are short.
    int symbol(const ZmxiDecodeHuffmanSpec& table) {
        Zmx32u entry = table.fastTable[bits >> 56];
        unsigned length = entry >> 16;
        if (length == 0) [[unlikely]] {
            entry = longCode(table);
            length = entry >> 16;
            if (length == 0 || length + (entry & 15) > held) return -1;
            // The reader asks for nine bits at once, then for one by one.
            nextCount = unsigned(refilledBelow(int(nextCount), 9));
            if (nextCount < length) nextCount += 32;
        }
        count = nextCount - length;
        category = entry & 15;
        nextCount = nextCounts[category][count];
        bits <<= length;
        held -= length + category;
        return int(entry & 0xFFFF);
    }

    // Takes the value behind a code: 0 for category 0, negative when the top bit is clear (EXTEND).
    int value() {
        const std::uint64_t negative = (bits >> 63) - 1; // 0 or all ones
        const int v = int(((bits ^ negative) >> 1 >> (63 - category) ^ negative) - negative);
        bits <<= category;
        return v;
    }

    // Puts the reader where it would stand; false if that is not known.
    bool leave(Reader& reader) {
        const int atEnd = refilledBelow(int(count), int(category)) - int(category);
        const int bytes = (atEnd - int(held)) / 8;
        const Zmx8u* const start = reader.src + reader.pos;
        const Zmx8u* stop = next;
        const Zmx8u* p; // the buffer holds no more than the last four data bytes
        if (!stuffed && known - next >= bytes) {
            stop += bytes;
            p = stop - start > 4 ? stop - 4 : start;
        } else {
            for (int i = 0; i < bytes; ++i)
                if (!step(stop)) return false;
            for (int i = 0; i > bytes; --i) stop = stepBack(stop);
            p = stop;
            for (int i = 0; i < 4 && p > start; ++i) p = stepBack(p);
        }
        reader.moveTo(p, stop, atEnd);
        return true;
    }
};

} // namespace zmx
