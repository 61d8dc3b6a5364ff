// blockreader.h - the entropy-coded blocks of one sequential scan, with its restart intervals.
#pragma once

#include "jpeg/reader.h"

#include <memory>

namespace jpeg {

class BlockReader {
public:
    // The blocks of the scan that `header` has come to. `header` need not live on.
    BlockReader(const Header& header, const std::uint8_t* data, std::size_t size);

    // Decodes the next block of a component of the scan. When the data of the interval have ended or are damaged
    // the block is zero, as are all others up to the next interval.
    bool block(int component, Zmx16s* coefficients);
    // The end of a restart interval: goes to the next one.
    void restart();
    // The offset of the marker behind the data read so far.
    std::size_t end() const { return stop; }
    // What was wrong first, with its offset; empty: nothing.
    const std::string& trouble() const { return fault; }

    int restartInterval() const { return interval; }

private:
    struct FreeSpec {
        void operator()(ZmxiDecodeHuffmanSpec* spec) const { zmxiDecodeHuffmanSpecFree_JPEG_8u(spec); }
    };
    using Spec = std::unique_ptr<ZmxiDecodeHuffmanSpec, FreeSpec>;
    static Spec specOf(const std::optional<HuffmanTable>& table, const char* kind, int number, std::size_t offset);

    void open(std::size_t from);
    void lose(const char* why);

    const std::uint8_t* data;
    std::size_t size;
    int interval;
    std::array<Spec, kMaxComponents> dc, ac;
    std::array<Zmx16s, kMaxComponents> lastDc{};

    // The bit reader: bytes from `next` on, and `bitCount` bits that were read ahead. `stop` is the marker that
    // ends the bytes; the decoder needs one, so a file that ends without one is read through `tail`.
    const std::uint8_t* next = nullptr;
    std::size_t stop = 0;
    std::vector<std::uint8_t> tail;
    int marker = 0;
    Zmx32u bitBuffer = 0;
    Zmx32s bitCount = 0;

    bool lost = false;     // no block comes out of the present interval
    int expected = 0;      // number of the next restart marker
    int missing = 0;       // intervals of which the restart marker was not seen
    std::string fault;
};

} // namespace jpeg
