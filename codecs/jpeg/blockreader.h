// blockreader.h - the entropy-coded blocks of one sequential scan.
#pragma once

#include "codecs/jpeg/intervals.h"

namespace jpeg {

class BlockReader final : public Intervals {
public:
    // The blocks of the scan that `header` has come to. `header` need not live on.
    BlockReader(const Header& header, const std::uint8_t* data, std::size_t size);

    // Decodes the next block of a component of the scan. When the data of the interval have ended or are
    // damaged the block is zero, as are all others up to the next interval.
    bool block(int component, Zmx16s* coefficients);

private:
    void begin(std::size_t from) override;
    std::size_t position() const override;

    std::array<DecodeSpec, kMaxComponents> dc, ac;
    std::array<Zmx16s, kMaxComponents> lastDc{};

    // The bit reader: bytes from `next` on, and `bitCount` bits that were read ahead. The decoder needs a
    // marker at their end, so a file that ends without one is read through `tail`.
    const std::uint8_t* next = nullptr;
    std::vector<std::uint8_t> tail;
    int marker = 0;
    Zmx32u bitBuffer = 0;
    Zmx32s bitCount = 0;
};

} // namespace jpeg
