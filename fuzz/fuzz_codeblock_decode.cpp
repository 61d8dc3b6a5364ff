// fuzz_codeblock_decode.cpp - code blocks of any size and style from arbitrary segments.
//
// Input: width, height, subband, planes, passes, style (4 bytes), the number of segments less 1, a length for
// each, the bytes.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto byte = [&]() -> int { return size ? --size, *data++ : 0; };
    const ZmxiSize block{1 + byte() % 80, 1 + byte() % 80};
    const int subband = byte() % 5;
    const int planes = byte() % 48; // also more than a magnitude has
    const int passes = byte() % 160;
    Zmx32u style = 0;
    for (int i = 0; i < 4; ++i) style = style << 8 | Zmx32u(byte());
    std::vector<int> lengths(std::size_t(1 + byte() % 128));
    for (int& n : lengths) n = byte();

    int stateBytes;
    if (zmxiDecodeGetBufSize_JPEG2K(block, &stateBytes)) __builtin_trap();
    std::vector<std::uint64_t> state(std::size_t(stateBytes) / 8 + 1);
    auto* pState = reinterpret_cast<ZmxiDecodeCBProgrState*>(state.data());
    std::vector<Zmx32s> samples(std::size_t(block.width * block.height));

    // In one call, with the lengths cut to what there is. Blocks of no more than the input hold each segment
    // exactly.
    std::vector<int> fitting = lengths;
    int left = int(size);
    for (int& n : fitting) left -= n = std::min(n, left);
    const auto exact = std::make_unique<Zmx8u[]>(size + !size);
    std::copy(data, data + size, exact.get());
    int errorPlane = -1;
    const ZmxStatus status =
        zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(exact.get(), samples.data(), block.width * 4, block, subband, planes,
                                             passes, fitting.data(), int(fitting.size()), style, &errorPlane, pState);
    if (status != zmxStsNoErr && status != zmxStsCBDamagedErr) __builtin_trap();
    if ((errorPlane >= 0) != (status == zmxStsCBDamagedErr)) __builtin_trap();

    // In steps, each segment in memory of its own, so that a read beyond its end is seen; the count of passes
    // is set anew in the middle.
    if (zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(samples.data(), block.width * 4, block, pState, subband, planes, style))
        __builtin_trap();
    zmxiDecodeCBProgrSetPassCounter_JPEG2K(passes, pState);
    bool damaged = false;
    for (std::size_t i = 0; i < fitting.size(); ++i) {
        const auto length = std::size_t(fitting[i]);
        const auto segment = std::make_unique<Zmx8u[]>(length + !length);
        std::copy(data, data + length, segment.get());
        data += length;
        const ZmxStatus step = zmxiDecodeCBProgrStep_JPEG2K(segment.get(), int(length), pState);
        if (damaged ? step != zmxStsCBDamagedErr : step != zmxStsNoErr && step != zmxStsCBDamagedErr) __builtin_trap();
        damaged = step == zmxStsCBDamagedErr;
        if (i == 3) zmxiDecodeCBProgrSetPassCounter_JPEG2K(passes, pState);
    }
    return 0;
}
