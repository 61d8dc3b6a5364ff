// bmprle.cpp - run-length codes as Windows defines them (BI_RLE8 and BI_RLE4).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bmprle.h"

#include <algorithm>

namespace codecs {
namespace {

class Runs {
public:
    Runs(ByteSource& source, int depth, Picture& to) : bytes(source), bits(depth), places(to) {}

    void unpack() {
        std::fill(places.all().begin(), places.all().end(), std::uint8_t(0));
        // A count and a value, or 0 and what to do.
        while (row() >= 0) {
            std::uint8_t pair[2];
            if (!take(pair)) return;
            if (pair[0] > 0)
                run(pair[0], pair[1]);
            else if (pair[1] == kEndOfRow)
                nextRow();
            else if (pair[1] == kEndOfPicture)
                return;
            else if (pair[1] == kMove)
                move();
            else
                literal(pair[1]);
        }
    }

private:
    enum : std::uint8_t { kEndOfRow = 0, kEndOfPicture = 1, kMove = 2 };

    int row() const { return places.shape().height - 1 - y; }
    void nextRow() {
        x = 0;
        ++y;
    }

    bool take(std::span<std::uint8_t> to) {
        const ByteView there = bytes.view(to.size());
        if (there.size() < to.size()) return false;
        std::copy_n(there.begin(), to.size(), to.begin());
        bytes.skip(to.size());
        return true;
    }

    // Of 4 bits, a byte holds two places by turns.
    std::uint8_t half(std::uint8_t byte, int i) const {
        return bits == 8 ? byte : std::uint8_t(i % 2 == 0 ? byte >> 4 : byte & 15);
    }
    void put(std::uint8_t place) {
        if (x < places.shape().width && row() >= 0) places.bytes(row())[std::size_t(x)] = place;
        ++x;
    }

    void run(int count, std::uint8_t value) {
        for (int i = 0; i < count; ++i) put(half(value, i));
    }
    // Places as they are, filled up to a whole number of words.
    void literal(int count) {
        std::uint8_t values[256];
        const auto size = std::size_t(bits == 8 ? count : (count + 1) / 2);
        if (!take(std::span(values, (size + 1) & ~std::size_t(1)))) {
            y = places.shape().height;
            return;
        }
        for (int i = 0; i < count; ++i) put(half(values[bits == 8 ? i : i / 2], i));
    }
    void move() {
        std::uint8_t by[2];
        if (!take(by)) return;
        x += by[0];
        y += by[1];
    }

    ByteSource& bytes;
    int bits;
    Picture& places;
    int x = 0, y = 0; // y counts from the last row up
};

} // namespace

void unpackBmpRuns(ByteSource& bytes, int bits, Picture& places) { Runs(bytes, bits, places).unpack(); }

} // namespace codecs
