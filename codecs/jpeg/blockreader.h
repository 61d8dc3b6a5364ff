// blockreader.h - the entropy-coded blocks of one sequential scan (ITU-T T.81, F.2).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/intervals.h"

namespace codecs::jpeg {

class BlockReader final : public Intervals {
public:
    // The blocks of the scan that `header` has come to, on whose data `source` stands. `header` need not live on.
    BlockReader(const Header& header, ByteSource& source);

    // Decodes the next block of a component of the scan. When the data of the interval have ended or are damaged the
    // block is zero, as are all others up to the next interval.
    bool block(int component, Zmx16s* coefficients);

private:
    void begin() override;

    std::array<DecodeSpec, kMaxComponents> dc, ac;
    std::array<Zmx16s, kMaxComponents> lastDc{};
    int marker = 0;
    Zmx32u bitBuffer = 0; // bits that were read ahead
    Zmx32s bitCount = 0;
};

} // namespace codecs::jpeg
