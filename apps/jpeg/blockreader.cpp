// blockreader.cpp - sequential Huffman decoding, and the way back into step behind damage (ITU-T T.81, F.2).
#include "jpeg/blockreader.h"

namespace jpeg {

BlockReader::BlockReader(const Header& header, const std::uint8_t* bytes, std::size_t n)
    : data(bytes), size(n), interval(header.restart) {
    const Scan& scan = header.scan;
    for (std::size_t i = 0; i < scan.components.size(); ++i) {
        const ScanComponent& c = scan.components[i];
        dc[i] = specOf(header.dc[std::size_t(c.dc)], "DC", c.dc, header.scanOffset);
        ac[i] = specOf(header.ac[std::size_t(c.ac)], "AC", c.ac, header.scanOffset);
    }
    open(header.dataOffset);
}

BlockReader::Spec BlockReader::specOf(const std::optional<HuffmanTable>& table, const char* kind, int number,
                                      std::size_t offset) {
    const std::string name = std::string(kind) + " Huffman table " + std::to_string(number);
    if (!table) fail(offset, name + " is missing");
    ZmxiDecodeHuffmanSpec* spec = nullptr;
    const ZmxStatus status = zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(table->bits.data(), table->vals.data(), &spec);
    Spec owned(spec);
    if (status != zmxStsNoErr) fail(offset, name + " is no prefix code");
    return owned;
}

// Starts an interval at the offset `from`.
void BlockReader::open(std::size_t from) {
    stop = findMarker(data, size, from);
    next = data + from;
    if (stop == size) {
        tail.assign(data + from, data + size);
        tail.insert(tail.end(), {0xFF, EOI});
        next = tail.data();
    }
    lastDc = {};
    marker = 0;
    bitBuffer = 0;
    bitCount = 0;
    lost = false;
}

void BlockReader::lose(const char* why) {
    lost = true;
    if (!fault.empty()) return;
    const std::size_t behind = tail.empty() ? std::size_t(next - data) : size - tail.size() + 2 + std::size_t(next - tail.data());
    fault = "byte " + std::to_string(std::min(behind, stop)) + ": " + why;
}

bool BlockReader::block(int component, Zmx16s* coefficients) {
    const auto c = std::size_t(component);
    if (!lost && marker != 0 && bitCount < 1) lose(stop == size ? "the file ends in the scan" : "the data of the scan end too early");
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

void BlockReader::restart() {
    const int number = expected;
    expected = (expected + 1) & 7;
    if (missing > 0) {
        if (--missing == 0) open(stop + 2);
        return;
    }
    // Codes below SOF0 are no markers but damage within the data; one or two numbers back there is data whose place
    // has gone by.
    const auto ahead = [&] { return (data[stop + 1] - RST0 - number) & 7; };
    while (stop < size && (data[stop + 1] < SOF0 || (isRestart(data[stop + 1]) && ahead() >= 6)))
        stop = findMarker(data, size, stop + 2);
    if (stop == size || !isRestart(data[stop + 1]))
        return lose(stop == size ? "the file ends in the scan" : "a restart marker is missing");
    if (ahead() == 0) return open(stop + 2);
    lose("a restart marker out of turn");
    // One or two too far on: those before it were destroyed with their data. Else its number is what is damaged.
    if (ahead() <= 2) missing = ahead();
    else open(stop + 2);
}

} // namespace jpeg
