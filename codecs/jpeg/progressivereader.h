// progressivereader.h - one scan of a progressive file (ITU-T T.81, Annex G): each block adds to what the scans before
// it have left.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/intervals.h"

namespace codecs::jpeg {

class ProgressiveReader final : public StateReader {
public:
    // The scan that `header` has come to, which is a progressive one, and on whose data `source` stands. `header` need
    // not live on.
    ProgressiveReader(const Header& header, ByteSource& source);

    // Decodes the share of the next block of a component of the scan. When the data of the interval have ended or are
    // damaged the blocks up to the next interval stay as they are.
    bool block(int component, Zmx16s* coefficients) { return (this->*decode)(std::size_t(component), coefficients); }

private:
    void reset() override { lastDc = {}; }
    bool dcFirst(std::size_t component, Zmx16s* block);
    bool dcRefine(std::size_t component, Zmx16s* block);
    bool acFirst(std::size_t component, Zmx16s* block);
    bool acRefine(std::size_t component, Zmx16s* block);

    Scan scan;
    bool (ProgressiveReader::*decode)(std::size_t, Zmx16s*);
    std::array<DecodeSpec, kMaxComponents> tables; // of the one class that the scan uses
    std::array<Zmx16s, kMaxComponents> lastDc{};
};

} // namespace codecs::jpeg
