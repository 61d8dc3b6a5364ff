// The builders of Huffman tables: decoder and encoder tables from arbitrary lists, and optimal tables from
// arbitrary statistics. A table that both sides accept must code every symbol of it there and back.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void fromLists(const Zmx8u* bits, const Zmx8u* vals) {
    ZmxiDecodeHuffmanSpec* decoder = nullptr;
    ZmxiEncodeHuffmanSpec* encoder = nullptr;
    const ZmxStatus decodable = zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(bits, vals, &decoder);
    const ZmxStatus encodable = zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(bits, vals, &encoder);
    require(decodable == zmxStsNoErr || decodable == zmxStsHuffTableErr);
    require(encodable == zmxStsNoErr || encodable == zmxStsHuffTableErr);
    if (encodable == zmxStsNoErr && decodable == zmxStsNoErr) {
        int count = 0;
        for (int i = 0; i < 16; ++i) count += bits[i];
        for (int i = 0; i < count; ++i) {
            // The symbols that a block can be made of at will: those of its DC difference. One listed twice
            // has two codes.
            const int category = vals[i];
            if (category > 15 || std::count(vals, vals + count, vals[i]) != 1) continue;
            Zmx16s block[64] = {}, back[64], lastDc = 0;
            block[0] = Zmx16s(category == 0 ? 0 : 1 << (category - 1));
            Zmx8u stream[256] = {};
            int at = 0;
            zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(block, stream, &at, &lastDc, encoder, encoder);
            std::memset(stream + (at + 7) / 8 + 1, 0, 16);
            ZmxiDecodeHuffmanState* state = nullptr;
            require(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&state) == zmxStsNoErr);
            int position = 0, marker = 0;
            lastDc = 0;
            const ZmxStatus status = zmxiDecodeHuffman8x8_JPEG_1u16s_C1(stream, int(sizeof stream), &position, back,
                                                                        &lastDc, &marker, decoder, decoder, state);
            // The AC part may hold codes that the table has not; the DC value comes first.
            require(status == zmxStsNoErr || status == zmxStsDCTRangeErr || status == zmxStsErr);
            require(lastDc == block[0]);
            zmxiDecodeHuffmanStateFree_JPEG_8u(state);
        }
    }
    zmxiDecodeHuffmanSpecFree_JPEG_8u(decoder);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(encoder);
}

void fromStatistics(const Zmx8u* data, std::size_t size) {
    Zmx32s statistics[257] = {};
    // Two bytes a symbol: numbers of up to 15 bits, whose sum stays far below the 10^9 that the builder
    // starts from.
    for (std::size_t i = 0; i < 256 && 2 * i + 1 < size; ++i)
        statistics[i] = (data[2 * i] & 15) << data[2 * i + 1] % 12;
    Zmx8u bits[16], vals[256] = {};
    const ZmxStatus status = zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics, bits, vals);
    require(status == zmxStsNoErr || status == zmxStsHuffTableErr);
    if (status != zmxStsNoErr) return;
    int used = 0, listed = 0;
    for (int i = 0; i < 256; ++i) used += statistics[i] != 0;
    for (Zmx8u n : bits) listed += n;
    // 256 codes of one length, the reserved one among them, are more than the byte that counts them can hold:
    // such a list comes out short.
    require(listed == used || used >= 255);
    fromLists(bits, vals);
    ZmxiEncodeHuffmanSpec* encoder = nullptr;
    require(zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(bits, vals, &encoder) == zmxStsNoErr);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(encoder);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 17) return 0;
    Zmx8u vals[256] = {};
    std::memcpy(vals, data + 17, std::min<std::size_t>(256, size - 17));
    if (data[0] & 1)
        fromLists(data + 1, vals);
    else
        fromStatistics(data + 1, size - 1);
    return 0;
}
