// progressivereader.cpp - the four kinds of progressive scan.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/progressivereader.h"

namespace codecs::jpeg {

// Which kind a scan is follows from its band and its bits (G.1.2): a band from 0 on is DC, an upper bit says that the bits
// below it are refined.
ProgressiveReader::ProgressiveReader(const Header& header, ByteSource& source)
    : StateReader(header, source), scan(header.scan) {
    const bool isDc = scan.first == 0, refines = scan.high != 0;
    decode = isDc ? (refines ? &ProgressiveReader::dcRefine : &ProgressiveReader::dcFirst)
                  : (refines ? &ProgressiveReader::acRefine : &ProgressiveReader::acFirst);
    for (std::size_t i = 0; i < scan.components.size(); ++i) {
        const ScanComponent& c = scan.components[i];
        if (!isDc)
            tables[i] = decodeSpecOf(header.ac[std::size_t(c.ac)], "AC", c.ac, header.scanOffset);
        else if (!refines) // bits alone, without a code
            tables[i] = decodeSpecOf(header.dc[std::size_t(c.dc)], "DC", c.dc, header.scanOffset);
    }
    open();
}

// G.1.2.1: differences as in sequential files, of what is left of the coefficients without their `low` bits.
bool ProgressiveReader::dcFirst(std::size_t component, Zmx16s* block) {
    return read(kWorstBlock, [&](const Zmx8u* source, int length, int* at, int* marker, ZmxiDecodeHuffmanState* state) {
        return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(source, length, at, block, &lastDc[component], marker,
                                                          scan.low, tables[component].get(), state);
    });
}

// G.1.2.1.1: one bit a block, as it is.
bool ProgressiveReader::dcRefine(std::size_t, Zmx16s* block) {
    return read(kWorstBlock, [&](const Zmx8u* source, int length, int* at, int* marker, ZmxiDecodeHuffmanState* state) {
        return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(source, length, at, block, marker, scan.low, state);
    });
}

// G.1.2.2: runs may go on over the ends of blocks (EOBn); how many blocks are left of one is in the state.
bool ProgressiveReader::acFirst(std::size_t component, Zmx16s* block) {
    return read(kWorstBlock, [&](const Zmx8u* source, int length, int* at, int* marker, ZmxiDecodeHuffmanState* state) {
        return zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(source, length, at, block, marker, scan.first, scan.last,
                                                          scan.low, tables[component].get(), state);
    });
}

// G.1.2.3: a bit for each coefficient that is there already, among the runs of those that are not.
bool ProgressiveReader::acRefine(std::size_t component, Zmx16s* block) {
    return read(kWorstBlock, [&](const Zmx8u* source, int length, int* at, int* marker, ZmxiDecodeHuffmanState* state) {
        return zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(source, length, at, block, marker, scan.first, scan.last,
                                                           scan.low, tables[component].get(), state);
    });
}

} // namespace codecs::jpeg
