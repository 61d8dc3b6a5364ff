// storedrows.cpp - rows of equal size straight from a stream, and how samples are laid out in bytes.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/storedrows.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace codecs {
namespace {

class StoredRows final : public RowSource {
public:
    StoredRows(std::unique_ptr<ByteSource> source, const Shape& shape, std::size_t size, UnpackRow function, bool whole)
        : bytes(std::move(source)), storedBytes(size), unpack(std::move(function)), nothingBehind(whole) {
        form = shape;
    }

    Band next(int rows) override {
        // What the last band showed is given up only now.
        bytes->skip(std::exchange(shown, 0));
        const int n = std::min(rows, form.height - row);
        const std::size_t size = storedBytes * std::size_t(n);
        const bool last = row + n == form.height;
        const ByteView stored = bytes->view(size + (last && nothingBehind));
        if (stored.size() < size)
            throw Error("the file ends in row " + std::to_string(row + int(stored.size() / storedBytes)));
        if (last && nothingBehind && stored.size() > size)
            throw Error("the file has more than the " + std::to_string(bytes->position() + size) +
                        " bytes of the picture");
        shown = size;
        const Band band = unpack ? unpacked(stored, n) : Band{stored.data(), std::ptrdiff_t(storedBytes), n};
        row += n;
        return band;
    }

private:
    Band unpacked(ByteView stored, int rows) {
        const std::size_t size = form.rowBytes();
        buffer.resize(std::max(buffer.size(), size * std::size_t(rows)));
        for (int y = 0; y < rows; ++y) {
            try {
                unpack(stored.data() + storedBytes * std::size_t(y), buffer.data() + size * std::size_t(y));
            } catch (const Error& e) {
                throw Error("row " + std::to_string(row + y) + ": " + e.what());
            }
        }
        return {buffer.data(), std::ptrdiff_t(size), rows};
    }

    std::unique_ptr<ByteSource> bytes;
    std::size_t storedBytes, shown = 0;
    UnpackRow unpack;
    bool nothingBehind;
    Samples buffer;
    int row = 0;
};

void copyWords(const std::uint8_t* from, std::uint8_t* to, std::size_t count, bool exchange) {
    if (!exchange) {
        std::memcpy(to, from, 2 * count);
        return;
    }
    // Exchanged as whole words, which vectorises.
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t v;
        std::memcpy(&v, from + 2 * i, sizeof v);
        v = std::uint16_t(v << 8 | v >> 8);
        std::memcpy(to + 2 * i, &v, sizeof v);
    }
}

} // namespace

Rows storedRows(std::unique_ptr<ByteSource> bytes, const Shape& shape, std::size_t storedBytes, UnpackRow unpack,
                bool nothingBehind) {
    return std::make_unique<StoredRows>(std::move(bytes), shape, storedBytes, std::move(unpack), nothingBehind);
}

void wordsOfBigEndian(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
    copyWords(from, to, count, std::endian::native != std::endian::big);
}
void wordsOfLittleEndian(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
    copyWords(from, to, count, std::endian::native != std::endian::little);
}

void bitsToBytes(const std::uint8_t* stored, std::uint8_t* samples, std::size_t count, unsigned flip) {
    for (std::size_t i = 0; i < count; ++i) samples[i] = std::uint8_t((stored[i / 8] >> (7 - i % 8) & 1) ^ flip);
}

// The last byte is filled up with zeros.
void bytesToBits(const std::uint8_t* samples, std::uint8_t* stored, std::size_t count, unsigned flip) {
    for (std::size_t i = 0; i < count; i += 8) {
        unsigned byte = 0;
        for (std::size_t k = i; k < std::min(count, i + 8); ++k) byte |= ((samples[k] != 0) ^ flip) << (7 - k % 8);
        stored[i / 8] = std::uint8_t(byte);
    }
}

} // namespace codecs
