// PackBits rows: the bytes as a stream that is unpacked, and the bytes as a row that is packed and comes back.
//
// The first two bytes choose the length of the row and how much room its stream has.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using Bytes = std::vector<Zmx8u>;

void require(bool holds) {
    if (!holds) std::abort();
}

// Unpacks row after row. A row that fails leaves what lies behind its last packet alone.
void unpack(const Bytes& stream, int rowBytes) {
    const int srcLen = int(stream.size()) - 1; // a run at the very end takes its value from behind it
    for (int pos = 0; pos < srcLen;) {
        Bytes row(std::size_t(rowBytes), 0x9E);
        const int before = pos;
        const ZmxStatus status = zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, srcLen, row.data(), rowBytes);
        require(pos > before && pos <= srcLen + 1);
        require(status == zmxStsNoErr || status == zmxStsUnderRunErr);
        if (status != zmxStsNoErr) return;
    }
}

void roundTrip(const Bytes& row, int room) {
    Bytes stream(row.size() + row.size() / 5 + 3, 0x9E), tight(std::size_t(room), 0x9E);
    int end = 0, part = 0;
    require(zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), stream.data(), &end, int(stream.size()) - 1) ==
            zmxStsNoErr);
    Bytes back(row.size());
    int pos = 0;
    require(zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, end, back.data(), int(back.size())) == zmxStsNoErr);
    require(pos == end && back == row);

    // With less room: the packets that fit, and nothing behind them.
    const ZmxStatus status = zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), tight.data(), &part, room);
    require((status == zmxStsNoErr) == (room >= end));
    require(part <= end && part <= room);
    for (int i = part; i < room; ++i) require(tight[std::size_t(i)] == 0x9E);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4 || size > 1 << 16) return 0;
    const Bytes bytes(data + 2, data + size);
    unpack(bytes, 1 + data[0] + 3 * data[1]);
    roundTrip(bytes, 1 + data[0] * 8 + data[1]);
    return 0;
}
