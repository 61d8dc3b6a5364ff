// blockwriter.h - the blocks of one sequential scan with tables that are known beforehand (ITU-T T.81, F.1).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/output.h"

namespace codecs::jpeg {

class BlockWriter {
public:
    // Tables 0 and 1 of each class; those of which there is none may be null.
    using Tables = std::array<const HuffmanTable*, 2>;
    BlockWriter(Output& out, const Tables& dc, const Tables& ac);

    // `component` keeps the DC predictor, `table` codes.
    void block(const Zmx16s* coefficients, int component, int table);
    // A block that no pixel of the picture lies in: the DC before it and nothing else.
    void padding(int component, int table);
    // The end of the scan or of a restart interval: fills up the last byte.
    void finishInterval();

private:
    Output& out;
    std::array<EncodeSpec, 2> dc, ac;
    std::array<Zmx16s, kMaxComponents> lastDc{};
    int bits = 0; // of the byte behind the output that are written, 0 to 7
};

} // namespace codecs::jpeg
