// blockwriter.cpp - blocks by the coder that has no test for the end of its destination: there is room for the worst.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/blockwriter.h"

namespace codecs::jpeg {

BlockWriter::BlockWriter(Output& o, const Tables& dcTables, const Tables& acTables) : out(o) {
    for (std::size_t i = 0; i < dcTables.size(); ++i) {
        if (dcTables[i]) dc[i] = encodeSpecOf(*dcTables[i]);
        if (acTables[i]) ac[i] = encodeSpecOf(*acTables[i]);
    }
}

void BlockWriter::block(const Zmx16s* coefficients, int component, int table) {
    const auto c = std::size_t(component), t = std::size_t(table);
    zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(coefficients, out.reserve(kWorstBlock), &bits, &lastDc[c], dc[t].get(),
                                              ac[t].get());
    // The coder counts bits from the byte in which the last block has ended; what is left of it stays in the output.
    out.advance(std::size_t(bits >> 3));
    bits &= 7;
}

// A difference of 0 and the end of the block are the shortest that a block can be.
void BlockWriter::padding(int component, int table) {
    Zmx16s same[kBlock] = {lastDc[std::size_t(component)]};
    block(same, component, table);
}

void BlockWriter::finishInterval() {
    if (bits != 0) {
        // One-bits fill the byte (F.1.2.3); should all its bits be ones, it needs stuffing as any other.
        const int last = *out.reserve(2) | 0xFF >> bits;
        out.byte(last);
        if (last == 0xFF) out.byte(0);
    }
    bits = 0;
    lastDc = {};
}

} // namespace codecs::jpeg
