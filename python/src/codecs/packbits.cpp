// packbits.cpp - rows of PackBits (TIFF 6.0, section 9) for Python.
// SPDX-License-Identifier: BSD-2-Clause
#include "python/src/codecs/arrays.h"

#include "zmxj.h"

#include <climits>

namespace binding {
namespace {

// A row is packed by itself: no packet goes on into the next one.
void packRow(codecs::ByteView row, codecs::Bytes& packed) {
    const std::size_t before = packed.size();
    // The worst row: a packet head for each 128 literal bytes, and what the last packet may need ahead.
    packed.resize(before + row.size() + row.size() / 5 + 8);
    int used = 0;
    const ZmxStatus status = zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), packed.data() + before, &used,
                                                        int(packed.size() - before));
    if (status != zmxStsNoErr) throw codecs::Error("PackBits: status " + std::to_string(status));
    packed.resize(before + std::size_t(used));
}

py::bytes encode(const py::buffer& rows, std::size_t rowBytes) {
    const FileView view(rows);
    if (view.bytes().size() % std::max<std::size_t>(rowBytes, 1) != 0 || rowBytes > INT_MAX / 2)
        refuse("rows of another length");
    codecs::Bytes packed;
    unlocked([&] {
        for (std::size_t at = 0; at < view.bytes().size(); at += rowBytes)
            packRow(view.bytes().subspan(at, rowBytes), packed);
    });
    return toBytes(packed);
}

// How many bytes the packets make; one that is cut off counts as far as it is there.
std::size_t lengthOf(codecs::ByteView packed) {
    std::size_t length = 0;
    for (std::size_t at = 0; at < packed.size();) {
        const unsigned head = packed[at++];
        const std::size_t left = packed.size() - at;
        if (head < 128) {
            length += std::min<std::size_t>(head + 1, left);
            at += std::min<std::size_t>(head + 1, left);
        } else if (head > 128 && left > 0) {
            length += 257 - head;
            ++at;
        }
    }
    return length;
}

// Unpacks row by row into `to`; how many bytes were there before the packets ended.
std::size_t unpack(codecs::ByteView packed, std::uint8_t* to, std::size_t size, std::size_t rowBytes) {
    // The library may read the byte of a run whose head is the last of the stream: there is to be one.
    codecs::Bytes longer;
    const std::uint8_t* from = packed.data();
    if (!packed.empty() && packed.back() > 128) {
        longer.assign(packed.begin(), packed.end());
        longer.push_back(0);
        from = longer.data();
    }
    std::size_t done = 0;
    int at = 0;
    while (done < size) {
        const std::size_t wanted = std::min(rowBytes, size - done);
        // A status below 0 is the end of the packets, in the middle of a row; so is the byte that was added.
        if (at >= int(packed.size()) ||
            zmxiUnpackBitsRow_TIFF_8u_C1(from, &at, int(packed.size()), to + done, int(wanted)) < 0 ||
            at > int(packed.size()))
            break;
        done += wanted;
    }
    return done;
}

py::tuple decode(const py::buffer& data, std::int64_t size, std::int64_t rowBytes) {
    const FileView view(data);
    if (view.bytes().size() > INT_MAX) refuse("more than 2^31 - 1 packed bytes");
    const std::size_t all = size < 0 ? lengthOf(view.bytes()) : std::size_t(size);
    if (all > INT_MAX) refuse("more than 2^31 - 1 bytes");
    // Cleared: bytes that the packets do not bring are 0.
    py::array_t<std::uint8_t> bytes{py::ssize_t(all)};
    std::uint8_t* const to = bytes.mutable_data();
    const std::size_t done = unlocked([&] {
        std::fill(to, to + all, std::uint8_t(0));
        return all == 0 ? 0 : unpack(view.bytes(), to, all, rowBytes < 1 ? all : std::size_t(rowBytes));
    });
    std::vector<std::string> warnings;
    if (done < all) warnings.push_back("the packets end in the row that begins at byte " + std::to_string(done));
    return py::make_tuple(bytes, warnings);
}

} // namespace

void addPackBits(py::module_& module) {
    module.def("encode_packbits", encode);
    module.def("decode_packbits", decode);
}

} // namespace binding
