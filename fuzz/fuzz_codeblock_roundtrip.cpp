// fuzz_codeblock_roundtrip.cpp - what the encoder writes, in any style and through buffers of any size, the
// decoder must give back.
//
// Input: width, height, subband, coded bits, termination, style, buffer size, samples (4 bytes each,
// repeated).
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

void require(bool good) {
    if (!good) __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto byte = [&]() -> int { return size ? --size, *data++ : 0; };
    const ZmxiSize block{1 + byte() % 70, 1 + byte() % 70};
    const int subband = byte() % 5;
    const int magnBits = byte() % 32;
    const int basePlane = 31 - magnBits;
    const int termination = byte() % 4;
    const Zmx32u style = Zmx32u(byte()) & 0x3F;
    const int capacity = 1 + byte();

    std::vector<Zmx32s> samples(std::size_t(block.width * block.height));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Zmx32u v = 0;
        for (std::size_t k = 0; k < 4; ++k) v = v << 8 | (size ? data[(4 * i + k) % size] : 0u);
        samples[i] = Zmx32s(v);
    }

    ZmxiEncodeState_JPEG2K* encoder;
    require(zmxiEncodeInitAlloc_JPEG2K(&encoder, block) == zmxStsNoErr);
    int bits, passes, segments;
    require(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(samples.data(), block.width * 4, block, encoder, subband, magnBits,
                                                   termination, 0, style, &bits, &passes, &segments) == zmxStsNoErr);
    std::vector<Zmx8u> bytes;
    for (int more = 1; more;) {
        std::vector<Zmx8u> piece(static_cast<std::size_t>(capacity));
        int length = capacity;
        require(zmxiEncodeStoreBits_JPEG2K_1u(piece.data(), &length, encoder, &more) == zmxStsNoErr);
        require(length <= capacity);
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + length);
    }
    int total = 0, rate = 0;
    std::vector<int> lengths(static_cast<std::size_t>(segments));
    for (int i = 0; i < segments; ++i) {
        require(zmxiEncodeGetTermPassLen_JPEG2K(encoder, i, &lengths[std::size_t(i)]) == zmxStsNoErr);
        total += lengths[std::size_t(i)];
    }
    require(total == int(bytes.size()));
    for (int i = 0; i < passes; ++i) {
        require(zmxiEncodeGetRate_JPEG2K(encoder, i, &rate) == zmxStsNoErr);
        require(rate >= 0);
        double distortion;
        require(zmxiEncodeGetDist_JPEG2K(encoder, i, &distortion) == zmxStsNoErr);
    }
    require(rate <= total);
    zmxiEncodeFree_JPEG2K(encoder);

    ZmxiDecodeCBProgrState* decoder;
    require(zmxiDecodeCBProgrInitAlloc_JPEG2K(&decoder, block) == zmxStsNoErr);
    std::vector<Zmx32s> decoded(samples.size(), -1);
    const int planes = passes ? bits - basePlane : 0;
    // The easy termination is the one that the decoder can test.
    const Zmx32u test = termination == ZMX_MQ_TERM_EASY ? ZMX_CB_ERROR_PREDICTION : 0;
    bytes.push_back(0); // an address for a block without bytes
    lengths.push_back(0);
    require(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), decoded.data(), block.width * 4, block, subband, planes,
                                                 passes, lengths.data(), segments, style | test, nullptr,
                                                 decoder) == zmxStsNoErr);
    zmxiDecodeCBProgrFree_JPEG2K(decoder);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Zmx32u v = Zmx32u(samples[i]);
        const Zmx32u magnitude = (v & 0x7FFFFFFF) >> basePlane;
        require(Zmx32u(decoded[i]) == (magnitude ? magnitude | (v & 0x80000000) : 0));
    }
    return 0;
}
