// intervals.h - the coded data of a scan: its restart intervals, the way back into step behind damage, and the readers
// that begin anew with each interval.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/segmentreader.h"

namespace codecs::jpeg {

// Data pass through a buffer that ends in a marker, or in one that stands in for what is still to come. Fill bytes are
// taken out on the way in, so that no block takes more bytes than its bits ask for.
class Intervals {
public:
    virtual ~Intervals() = default;
    Intervals(const Intervals&) = delete;
    // The end of a restart interval: goes to the next one.
    void restart();
    // Leaves the source on the marker behind the data.
    void finish() { toStop(); }
    // What was wrong first, with its offset; empty: nothing.
    const std::string& trouble() const { return fault; }
    int restartInterval() const { return interval; }

protected:
    // The data of the scan that `header` has come to, on which `source` stands.
    Intervals(const Header& header, ByteSource& source);
    // Starts an interval where the source stands. A constructor ends with this call.
    void open();
    // What a reader begins anew with each interval.
    virtual void begin() = 0;

    // Makes sure that `enough` bytes are there from `next` on, or all up to the marker. A marker is behind them in any
    // case, and a byte ahead of them.
    void ahead(std::size_t enough) {
        if (!complete && std::size_t(stop - next) < enough) [[unlikely]]
            slide(enough);
    }
    // Nothing more comes out of the present interval.
    void lose(const std::string& why);
    void loseAtEnd() { lose(ended ? "the file ends in the scan" : "the data of the scan end too early"); }

    const Zmx8u* start = nullptr; // of the buffer
    const Zmx8u* next = nullptr;  // what is read next
    const Zmx8u* stop = nullptr;  // the end of what is there
    bool complete = false;        // nothing comes behind `stop`, on whose marker the source stands
    bool lost = false;            // no data unit comes out of the present interval

private:
    void slide(std::size_t enough);
    std::size_t take(Zmx8u* to, std::size_t room);
    void toStop();

    ByteSource& file;
    Bytes buffer;
    bool ended = false; // no marker was there up to the end of the file
    int interval;
    int expected = 0; // number of the next restart marker
    int missing = 0;  // intervals of which the restart marker was not seen
    std::string fault;
};

// Intervals that the library's bit reader reads.
class StateReader : public Intervals {
protected:
    using Intervals::lose;
    StateReader(const Header& header, ByteSource& source);
    void begin() final;
    // What else begins anew with an interval.
    virtual void reset() {}

    // Calls `decode(source, length, position, marker, state)` with what takes up to `enough` bytes; false when the
    // interval is lost.
    template <class Decode> bool read(std::size_t enough, Decode decode) {
        if (lost) return false;
        ahead(enough);
        int at = int(next - start), marker = 0;
        const ZmxStatus status = decode(start, int(stop - start), &at, &marker, bits.get());
        next = start + at;
        return status == zmxStsNoErr || lose(status);
    }

private:
    bool lose(ZmxStatus status);

    DecodeState bits;
};

} // namespace codecs::jpeg
