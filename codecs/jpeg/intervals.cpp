// intervals.cpp - the buffer of coded data, and restart markers, whole and damaged (ITU-T T.81, E.2.5).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/intervals.h"

#include <cstring>

namespace codecs::jpeg {

Intervals::Intervals(const Header& header, ByteSource& s) : file(s), interval(header.restart) {}

// A fresh interval has an empty buffer: what was left of the one before is not looked at again.
void Intervals::open() {
    complete = ended = lost = false;
    next = stop = start;
    slide(0);
    begin();
}

// The byte ahead of the data is for decoders that want a source of no length of 0.
void Intervals::slide(std::size_t enough) {
    constexpr std::size_t kWindow = 1 << 15, kAhead = 1, kMarker = 2;
    const std::size_t room = std::max(kWindow, enough), left = std::size_t(stop - next);
    if (buffer.size() < kAhead + room + kMarker) {
        Bytes larger(kAhead + room + kMarker);
        std::copy(next, stop, larger.begin() + kAhead);
        buffer.swap(larger);
    } else if (left > 0) {
        std::memmove(buffer.data() + kAhead, next, left);
    }
    start = buffer.data();
    next = start + kAhead;
    Zmx8u* end = buffer.data() + kAhead + left;
    // Two bytes of room, so that a stuffed zero stays with its 0xFF.
    while (!complete && std::size_t(end - next) + 1 < room) end += take(end, room - std::size_t(end - next));
    stop = end;
    // A marker ends the data in any case, so that decoders need not ask where they end.
    end[0] = 0xFF;
    end[1] = EOI;
}

// Bytes of the source up to the next stuffed one, fill byte or marker.
std::size_t Intervals::take(Zmx8u* to, std::size_t room) {
    const ByteView all = file.view(room);
    const std::size_t n = std::min(room, all.size());
    const void* p = n > 0 ? std::memchr(all.data(), 0xFF, n) : nullptr;
    const std::size_t plain = p ? std::size_t(static_cast<const std::uint8_t*>(p) - all.data()) : n;
    std::copy_n(all.data(), plain, to);
    file.skip(plain);
    // A 0xFF that is the last byte of the file is no more than its end.
    if (plain + 1 >= all.size() && all.size() < room) return complete = ended = true, plain;
    if (!p || plain + 2 > room) return plain;
    const int code = all[plain + 1];
    if (code == 0) {
        to[plain] = 0xFF;
        to[plain + 1] = 0;
    } else if (code != 0xFF) {
        return complete = true, plain;
    }
    file.skip(code == 0 ? 2 : 1);
    return plain + (code == 0 ? 2 : 0);
}

// Passes over what is left of the interval, up to its marker.
void Intervals::toStop() {
    while (!complete) {
        next = stop;
        slide(0);
    }
}

void Intervals::lose(const std::string& why) {
    lost = true;
    // Where reading was, or thereabouts: fill bytes are not counted.
    // The first trouble is the one that is told.
    if (fault.empty())
        fault = "byte " + std::to_string(file.position() - std::uint64_t(std::max(stop - next, std::ptrdiff_t(0)))) +
                ": " + why;
}

void Intervals::restart() {
    // Markers are numbered modulo 8, so that one can tell how much is missing (E.1.4).
    const int number = expected;
    const auto openNext = [this] { file.skip(2), open(); };
    expected = (expected + 1) & 7;
    if (missing > 0) {
        if (--missing == 0) openNext();
        return;
    }
    toStop();
    // Codes below SOF0 are no markers but damage within the data; one or two numbers back there is data whose
    // place has gone by.
    const auto code = [this] { return ended ? 0 : markerAt(file); };
    const auto ahead = [&] { return (code() - RST0 - number) & 7; };
    while (!ended && (code() < SOF0 || (isRestart(code()) && ahead() >= 6))) {
        file.skip(2);
        ended = !toMarker(file);
    }
    if (!isRestart(code())) return lose(ended ? "the file ends in the scan" : "a restart marker is missing");
    if (ahead() == 0) return openNext();
    lose("a restart marker out of turn");
    // One or two too far on: those before it were destroyed with their data. Else its number is what is damaged.
    if (ahead() <= 2)
        missing = ahead();
    else
        openNext();
}

StateReader::StateReader(const Header& header, ByteSource& source)
    : Intervals(header, source), bits(newDecodeState()) {}

void StateReader::begin() {
    // A state may hold bits of the interval before.
    zmxiDecodeHuffmanStateInit_JPEG_8u(bits.get());
    reset();
    if (next == stop) loseAtEnd();
}

// The library tells of missing bits and of codes that are none.
bool StateReader::lose(ZmxStatus status) {
    if (status == zmxStsOutOfBufErr)
        loseAtEnd();
    else
        lose("damaged data in the scan");
    return false;
}

} // namespace codecs::jpeg
