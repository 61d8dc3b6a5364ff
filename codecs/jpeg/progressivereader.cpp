// progressivereader.cpp - the four kinds of progressive scan.
#include "codecs/jpeg/progressivereader.h"

namespace jpeg {

ProgressiveReader::ProgressiveReader(const Header& header, const std::uint8_t* bytes, std::size_t n)
    : StateReader(header, bytes, n), scan(header.scan) {
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
    open(header.dataOffset);
}

ZmxStatus ProgressiveReader::dcFirst(int component, Zmx16s* block) {
    const auto c = std::size_t(component);
    return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(source, length, &at, block, &lastDc[c], &marker, scan.low,
                                                      tables[c].get(), state());
}
ZmxStatus ProgressiveReader::dcRefine(int, Zmx16s* block) {
    return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(source, length, &at, block, &marker, scan.low, state());
}
ZmxStatus ProgressiveReader::acFirst(int component, Zmx16s* block) {
    return zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(source, length, &at, block, &marker, scan.first, scan.last,
                                                      scan.low, tables[std::size_t(component)].get(), state());
}
ZmxStatus ProgressiveReader::acRefine(int component, Zmx16s* block) {
    return zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(source, length, &at, block, &marker, scan.first, scan.last,
                                                       scan.low, tables[std::size_t(component)].get(), state());
}

} // namespace jpeg
