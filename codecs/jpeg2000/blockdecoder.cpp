// blockdecoder.cpp - the call of the tier-1 decoder, and dequantisation.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/blockdecoder.h"

#include <algorithm>
#include <limits>

namespace codecs::jpeg2000 {

namespace {

constexpr std::int32_t kMagnitude = 0x7FFFFFFF;

// Takes the scaling of a region of interest off (H.1). Magnitudes here have one plane more than coded, for the
// midpoint.
void withoutRoi(std::span<std::int32_t> words, int shift) {
    for (std::int32_t& word : words) {
        const auto magnitude = std::uint32_t(word) & ~kSignBit;
        if (magnitude >> 1 >= 1ull << shift)
            word = std::int32_t((std::uint32_t(word) & kSignBit) | magnitude >> shift | 1);
    }
}

} // namespace

ByteView BlockDecoder::bytesOf(const BlockStream& stream) {
    if (stream.pieces.size() == 1) return stream.pieces[0];
    joined.reserve(1); // never without memory
    joined.clear();
    for (const ByteView& s : stream.pieces) joined.insert(joined.end(), s.begin(), s.end());
    return joined;
}

bool BlockDecoder::call(ByteView bytes, std::span<const int> segments, const BlockCall& c) {
    const ZmxStatus status = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(
        bytes.data(), words.data(), c.size.width * int(sizeof(std::int32_t)), c.size, c.subband, c.planes, c.passes,
        segments.data(), int(segments.size()), c.flags, nullptr,
        reinterpret_cast<ZmxiDecodeCBProgrState*>(state.data()));
    return status == zmxStsNoErr;
}

BlockDecoder::Result BlockDecoder::decode(const BlockStream& stream, const Block& block, Orientation o, unsigned style,
                                          const BandCoding& coding) {
    lengths.clear();
    int passes = 0;
    for (const BlockStream::Codeword& w : stream.codewords) {
        passes += w.kept;
        lengths.push_back(w.length);
        if (w.kept < w.passes) break; // what is behind it cannot be decoded
    }
    // Blocks that no packet holds are 0 throughout.
    if (passes == 0) return Result::empty;
    const int planes = coding.bitPlanes + coding.roiShift - stream.zeroPlanes;
    words.resize(std::size_t(block.width) * block.height);
    width = block.width;
    // Mb of E-2, less what the packet header has told (B.10.5). The first plane has a cleanup pass alone (D.4).
    if (planes < 1 || planes > kMaxBitPlanes || passes > 3 * planes - 2) {
        std::fill(words.begin(), words.end(), 0);
        return Result::damaged;
    }

    const ZmxiSize size{block.width, block.height};
    // The state is kept from block to block, and grows with the largest one.
    int stateBytes = 0;
    zmxiDecodeGetBufSize_JPEG2K(size, &stateBytes);
    state.resize(std::max(state.size(), std::size_t(stateBytes) / sizeof(std::uint64_t) + 1));
    const Zmx32u flags = libraryStyle(style) | (style & kStylePredictable ? ZMX_CB_ERROR_PREDICTION : 0) |
                         ZMX_CB_KEEP_MIDPOINT | ZMX_CB_CONCEAL_DAMAGE;
    // One plane more than there is: what a full decoding leaves open is then rebuilt at its midpoint too.
    const BlockCall c{size, librarySubband(o), planes + 1, passes, flags, style};
    const ByteView bytes = bytesOf(stream);
    bool sound = call(bytes, lengths, c);
    // With predictable termination the end of a raw segment is as the library wants it, or the block is damaged.
    if (!sound && (style & kStyleBypass) && !(style & kStylePredictable)) {
        const Segments mended = mendRawEnds(bytes, lengths, c, words, state);
        sound = call(mended.bytes, mended.lengths, c);
    }
    if (coding.roiShift > 0) withoutRoi(words, coding.roiShift);
    return sound ? Result::sound : Result::damaged;
}

template <Road R> void BlockDecoder::take(int x, int y, const BandCoding& coding, std::span<Number<R>> to) {
    const std::int32_t* from = words.data() + std::size_t(y) * std::size_t(width) + x;
    if constexpr (isReversible(R)) {
        // More than fits is found in hostile files alone.
        constexpr std::int32_t most = std::numeric_limits<Number<R>>::max();
        for (std::size_t i = 0; i < to.size(); ++i) {
            const std::int32_t m = std::min((from[i] & kMagnitude) >> 1, most), sign = from[i] >> 31;
            to[i] = Number<R>((m ^ sign) - sign);
        }
    } else {
        // E-6 with r of one half: the midpoint is in the word already, whose lowest bit is half a step.
        const float scale = coding.step / 2;
        for (std::size_t i = 0; i < to.size(); ++i) {
            const float m = std::min(float(from[i] & kMagnitude) * scale, 1.0e9f);
            to[i] = Number<R>(from[i] < 0 ? -m : m);
        }
    }
}

template void BlockDecoder::take<Road::narrow>(int, int, const BandCoding&, std::span<std::int16_t>);
template void BlockDecoder::take<Road::wide>(int, int, const BandCoding&, std::span<std::int32_t>);
template void BlockDecoder::take<Road::fixed>(int, int, const BandCoding&, std::span<std::int32_t>);
template void BlockDecoder::take<Road::precise>(int, int, const BandCoding&, std::span<float>);

} // namespace codecs::jpeg2000
