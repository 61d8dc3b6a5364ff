// progressivereader.h - one scan of a progressive file (ITU-T T.81, Annex G): each block adds to what the
// scans before it have left.
#pragma once

#include "codecs/jpeg/intervals.h"

namespace jpeg {

class ProgressiveReader final : public StateReader {
public:
    // The scan that `header` has come to, which is a progressive one. `header` need not live on.
    ProgressiveReader(const Header& header, const std::uint8_t* data, std::size_t size);

    // Decodes the share of the next block of a component of the scan. When the data of the interval have
    // ended or are damaged the blocks up to the next interval stay as they are.
    bool block(int component, Zmx16s* coefficients) { return !lost && check((this->*decode)(component, coefficients)); }

private:
    void reset() override { lastDc = {}; }
    ZmxStatus dcFirst(int component, Zmx16s* block);
    ZmxStatus dcRefine(int component, Zmx16s* block);
    ZmxStatus acFirst(int component, Zmx16s* block);
    ZmxStatus acRefine(int component, Zmx16s* block);

    Scan scan;
    ZmxStatus (ProgressiveReader::*decode)(int, Zmx16s*);
    std::array<DecodeSpec, kMaxComponents> tables; // of the one class that the scan uses
    std::array<Zmx16s, kMaxComponents> lastDc{};
};

} // namespace jpeg
