// intervals.h - the restart intervals of a scan, the way back into step behind damage, and the readers of
// coded data that begin anew with each interval.
#pragma once

#include "codecs/jpeg/reader.h"

#include <memory>

namespace jpeg {

struct FreeDecodeSpec {
    void operator()(ZmxiDecodeHuffmanSpec* spec) const { zmxiDecodeHuffmanSpecFree_JPEG_8u(spec); }
};
using DecodeSpec = std::unique_ptr<ZmxiDecodeHuffmanSpec, FreeDecodeSpec>;
// The decoder's form of a table that a scan at `offset` names.
DecodeSpec decodeSpecOf(const std::optional<HuffmanTable>& table, const char* kind, int number, std::size_t offset);

class Intervals {
public:
    virtual ~Intervals() = default;
    // The end of a restart interval: goes to the next one.
    void restart();
    // The offset of the marker behind the data read so far.
    std::size_t end() const { return stop; }
    // What was wrong first, with its offset; empty: nothing.
    const std::string& trouble() const { return fault; }

    int restartInterval() const { return interval; }

protected:
    Intervals(const Header& header, const std::uint8_t* data, std::size_t size);
    // Starts an interval at the offset `from`. A constructor ends with this call.
    void open(std::size_t from);
    // A reader starts on the bytes from the offset `from` up to the marker at `stop`.
    virtual void begin(std::size_t from) = 0;
    // The offset of what is read next, or thereabouts.
    virtual std::size_t position() const = 0;
    // Nothing more comes out of the present interval.
    void lose(const std::string& why);
    void loseAtEnd() { lose(stop == size ? "the file ends in the scan" : "the data of the scan end too early"); }

    const std::uint8_t* data;
    std::size_t size;
    std::size_t stop = 0; // the marker that ends the interval; `size` when the file does
    bool lost = false;    // no data unit comes out of the present interval

private:
    int interval;
    int expected = 0; // number of the next restart marker
    int missing = 0;  // intervals of which the restart marker was not seen
    std::string fault;
};

// Intervals that the library's bit reader reads.
class StateReader : public Intervals {
protected:
    using Intervals::lose;
    StateReader(const Header& header, const std::uint8_t* data, std::size_t size);
    void begin(std::size_t from) final;
    std::size_t position() const final { return std::size_t(source - data) + std::size_t(at); }
    // What else begins anew with an interval.
    virtual void reset() {}
    // False when `status` says that the interval is lost.
    bool check(ZmxStatus status) { return status == zmxStsNoErr || lose(status); }

    const Zmx8u* source = nullptr;
    int length = 0, at = 0, marker = 0;
    ZmxiDecodeHuffmanState* state() const { return bits.get(); }

private:
    bool lose(ZmxStatus status);

    struct FreeState {
        void operator()(ZmxiDecodeHuffmanState* s) const { zmxiDecodeHuffmanStateFree_JPEG_8u(s); }
    };
    std::unique_ptr<ZmxiDecodeHuffmanState, FreeState> bits;
};

} // namespace jpeg
