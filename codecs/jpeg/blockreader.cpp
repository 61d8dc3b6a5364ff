// blockreader.cpp - blocks by the decoder that has no test for the end of its source: a marker is always there.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/blockreader.h"

namespace codecs::jpeg {

BlockReader::BlockReader(const Header& header, ByteSource& source) : Intervals(header, source) {
    const Scan& scan = header.scan;
    for (std::size_t i = 0; i < scan.components.size(); ++i) {
        const ScanComponent& c = scan.components[i];
        dc[i] = decodeSpecOf(header.dc[std::size_t(c.dc)], "DC", c.dc, header.scanOffset);
        ac[i] = decodeSpecOf(header.ac[std::size_t(c.ac)], "AC", c.ac, header.scanOffset);
    }
    open();
}

// An interval begins on a byte, with no difference to go by (E.1.4, F.2.1.3.1).
void BlockReader::begin() {
    lastDc = {};
    marker = 0;
    bitBuffer = 0;
    bitCount = 0;
}

bool BlockReader::block(int component, Zmx16s* coefficients) {
    const auto c = std::size_t(component);
    ahead(kWorstBlock);
    // Behind a marker the decoder makes up bits for ever: a block must not begin with those.
    if (!lost && marker != 0 && bitCount < 1) loseAtEnd();
    if (!lost) {
        int bits = 0; // from `next`, so that no length of scan overflows it
        const ZmxStatus status = zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(
            next, &bits, coefficients, &lastDc[c], &marker, &bitBuffer, &bitCount, dc[c].get(), ac[c].get());
        next += bits >> 3;
        if (status == zmxStsNoErr && bitCount >= 0) return true;
        lose("damaged data in the scan");
    }
    std::fill_n(coefficients, kBlock, Zmx16s(0));
    return false;
}

} // namespace codecs::jpeg
