// blockdecoder.cpp - the call of the tier-1 decoder, and dequantisation.
#include "codecs/jpeg2000/blockdecoder.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

// Magnitudes here have one plane more than coded, for the midpoint.
std::uint32_t withoutRoi(std::uint32_t magnitude, int shift) {
    return shift > 0 && magnitude >> 1 >= 1ull << shift ? magnitude >> shift | 1 : magnitude;
}

// A row of words in sign-magnitude to one of numbers.
void toNumbers(std::span<std::int32_t> words, const BandCoding& coding, std::int32_t* out) {
    if (coding.roiShift > 0)
        for (std::int32_t& word : words) {
            const auto w = std::uint32_t(word);
            word = std::int32_t((w & kSignBit) | withoutRoi(w & ~kSignBit, coding.roiShift));
        }
    if (coding.reversible) {
        for (std::size_t x = 0; x < words.size(); ++x) {
            const std::int32_t m = (words[x] & 0x7FFFFFFF) >> 1, sign = words[x] >> 31;
            out[x] = (m ^ sign) - sign;
        }
        return;
    }
    const float scale = coding.step / 2;
    for (std::size_t x = 0; x < words.size(); ++x) {
        const float m = std::min(float(words[x] & 0x7FFFFFFF) * scale, 1.0e9f);
        out[x] = std::int32_t(words[x] < 0 ? -m : m);
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

bool BlockDecoder::decode(const BlockStream& stream, const Block& block, Orientation o, unsigned style,
                          const BandCoding& coding, Plane& plane) {
    std::vector<int> lengths;
    int passes = 0;
    for (const BlockStream::Codeword& w : stream.codewords) {
        passes += w.kept;
        lengths.push_back(w.length);
        if (w.kept < w.passes) break;
    }
    if (passes == 0) return true;
    const int planes = coding.bitPlanes + coding.roiShift - stream.zeroPlanes;
    if (planes < 1 || planes > kMaxBitPlanes || passes > 3 * planes - 2) return false;

    const ZmxiSize size{block.width, block.height};
    int stateBytes = 0;
    zmxiDecodeGetBufSize_JPEG2K(size, &stateBytes);
    state.resize(std::max(state.size(), std::size_t(stateBytes) / sizeof(std::uint64_t) + 1));
    words.resize(std::size_t(block.width) * std::size_t(block.height));
    const Zmx32u flags = libraryStyle(style) | (style & kStylePredictable ? ZMX_CB_ERROR_PREDICTION : 0) |
                         ZMX_CB_KEEP_MIDPOINT | ZMX_CB_CONCEAL_DAMAGE;
    // One plane more than there is: what a full decoding leaves open is then rebuilt at its midpoint too.
    const ZmxStatus status = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(
        bytesOf(stream).data(), words.data(), block.width * int(sizeof(std::int32_t)), size, librarySubband(o),
        planes + 1, passes, lengths.data(), int(lengths.size()), flags, nullptr,
        reinterpret_cast<ZmxiDecodeCBProgrState*>(state.data()));
    for (int y = 0; y < block.height; ++y)
        toNumbers(std::span(words).subspan(std::size_t(y) * std::size_t(block.width), std::size_t(block.width)), coding,
                  plane.at(block.planeX, block.planeY + y));
    return status == zmxStsNoErr;
}

} // namespace codecs::jpeg2000
