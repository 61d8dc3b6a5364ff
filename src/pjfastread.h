// pjfastread.h - decoding of a block in a stretch of the source without 0xFF, from a 64-bit register.
//
// What a reader leaves in its state is exact, and so is when it reads: it refills to 25 bits or more whenever fewer than
// 8 are held in front of a code, or too few in front of a value. Here the register is filled on a schedule of its own,
// and the count that the reader would have is kept beside it. In a stretch without 0xFF a byte is a byte and a refill is
// nothing but an addition to the count, so position and buffer follow from the count at the end:
//
//   count - held   is a multiple of 8 at all times, the distance between the reader's position and the register's
//
// At the end the bytes up to the reader's position are known to be without 0xFF, or the block is decoded again, exactly.
#pragma once

#include "pjdecwalk.h"
#include "pjwords.h"

// What a reader with count bits holds once need of them have been asked for: a refill makes it the one number from 25 to
// 32 that leaves whole bytes.
constexpr int refilledBelow(int count, int need) { return count < need ? ((count - 1) & 7) + 25 : count; }

// By category and count behind a code: the count in front of the next code, that is with the value taken and 8 bits asked
// for. A table, since a branch on either refill is as good as random.
inline constexpr auto nextCounts = tableOf<16>([](int s) {
    return tableOf<64>([s](int count) { return Zmx8u(refilledBelow(refilledBelow(count, s) - s, 8)); });
});

// How many of the next 8 bytes stand ahead of a 0xFF and of the end.
inline int bytesWithoutFF(const BitReader& in, const Zmx8u* p) {
    const std::ptrdiff_t left = in.src + in.len - p;
    if (left >= 8 && !hasFF(loadBigEndian(p))) return 8;
    int n = 0;
    while (n < left && p[n] != 0xFF) ++n;
    return n < 8 ? n : 8;
}
// The data end in a marker: behind a byte that is not 0xFF there is another one, and no more is known.
inline int bytesWithoutFF(const DirectReader&, const Zmx8u* p) {
    int n = 0;
    while (n < 8 && p[n] != 0xFF) ++n;
    return n;
}

template <class Reader> class FastReader {
    const Reader& in;
    std::uint64_t bits;  // the next bit on top
    unsigned held;       // how many of them count: at most 63
    unsigned count;      // how many the reader would hold behind the last code
    unsigned category;   // of that code
    unsigned nextCount;  // how many it would hold in front of the next one
    const Zmx8u* next;   // the byte behind the register
    const Zmx8u* known;  // the byte behind those known to be there and not 0xFF

    void lookAhead() { known += bytesWithoutFF(in, known); }

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
        : in(reader), bits(reader.count > 0 ? std::uint64_t(reader.buf) << (64 - reader.count) : 0),
          held(unsigned(reader.count)), count(held), category(0), nextCount(nextCounts[0][held]),
          next(reader.src + reader.pos), known(next) {}

    // Whether a reader is in a state to begin with.
    static bool suits(const Reader& reader) { return reader.marker == 0 && reader.count >= 0 && reader.count <= 32; }

    // Fills the register to 56 bits or more, enough for a code of 16 bits with its value and one of 8 bits with its own.
    // False near a 0xFF or the end.
    bool refill() {
        if (known - next < 8) {
            lookAhead();
            if (known - next < 8) return false;
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

    // Takes the value behind a code with a category other than 0. With the top bit clear it is negative (EXTEND).
    int value() {
        const Zmx32s negative = Zmx32s(bits >> 63) - 1;
        const int v = int(bits >> (64 - category)) + (own_pj_lowest_coef[category] & negative);
        bits <<= category;
        return v;
    }

    // Puts the reader where it would stand; false if that is not known.
    bool leave(Reader& reader) {
        const int atEnd = refilledBelow(int(count), int(category)) - int(category);
        const Zmx8u* const stop = next + (atEnd - int(held)) / 8;
        if (stop > known) {
            lookAhead();
            if (stop > known) return false;
        }
        const int pos = int(stop - reader.src);
        reader.moveTo(pos, atEnd);
        return true;
    }
};
