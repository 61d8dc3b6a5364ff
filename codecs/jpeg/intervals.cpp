// intervals.cpp - restart markers, whole and damaged (ITU-T T.81, E.2.5).
#include "codecs/jpeg/intervals.h"

#include <limits>
#include <new>

namespace jpeg {

DecodeSpec decodeSpecOf(const std::optional<HuffmanTable>& table, const char* kind, int number, std::size_t offset) {
    const std::string name = std::string(kind) + " Huffman table " + std::to_string(number);
    if (!table) fail(offset, name + " is missing");
    ZmxiDecodeHuffmanSpec* spec = nullptr;
    const ZmxStatus status = zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(table->bits.data(), table->vals.data(), &spec);
    DecodeSpec owned(spec);
    if (status != zmxStsNoErr) fail(offset, name + " is no prefix code");
    return owned;
}

Intervals::Intervals(const Header& header, const std::uint8_t* bytes, std::size_t n)
    : data(bytes), size(n), interval(header.restart) {}

void Intervals::open(std::size_t from) {
    stop = findMarker(data, size, from);
    lost = false;
    begin(from);
}

void Intervals::lose(const std::string& why) {
    lost = true;
    if (fault.empty()) fault = "byte " + std::to_string(std::min(position(), stop)) + ": " + why;
}

void Intervals::restart() {
    const int number = expected;
    expected = (expected + 1) & 7;
    if (missing > 0) {
        if (--missing == 0) open(stop + 2);
        return;
    }
    // Codes below SOF0 are no markers but damage within the data; one or two numbers back there is data whose
    // place has gone by.
    const auto ahead = [&] { return (data[stop + 1] - RST0 - number) & 7; };
    while (stop < size && (data[stop + 1] < SOF0 || (isRestart(data[stop + 1]) && ahead() >= 6)))
        stop = findMarker(data, size, stop + 2);
    if (stop == size || !isRestart(data[stop + 1]))
        return lose(stop == size ? "the file ends in the scan" : "a restart marker is missing");
    if (ahead() == 0) return open(stop + 2);
    lose("a restart marker out of turn");
    // One or two too far on: those before it were destroyed with their data. Else its number is what is
    // damaged.
    if (ahead() <= 2)
        missing = ahead();
    else
        open(stop + 2);
}

StateReader::StateReader(const Header& header, const std::uint8_t* bytes, std::size_t n) : Intervals(header, bytes, n) {
    ZmxiDecodeHuffmanState* s = nullptr;
    if (zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&s) != zmxStsNoErr) throw std::bad_alloc();
    bits.reset(s);
}

void StateReader::begin(std::size_t from) {
    // The marker and the fill bytes ahead of it are left out: the library then tells of the missing bits
    // before it uses them.
    std::size_t last = stop;
    while (last > from && data[last - 1] == 0xFF) --last;
    source = data + from;
    length = int(std::min(last - from, std::size_t(std::numeric_limits<int>::max())));
    at = marker = 0;
    zmxiDecodeHuffmanStateInit_JPEG_8u(state());
    reset();
    if (length == 0) loseAtEnd();
}

bool StateReader::lose(ZmxStatus status) {
    if (status == zmxStsOutOfBufErr)
        loseAtEnd();
    else
        lose("damaged data in the scan");
    return false;
}

} // namespace jpeg
