// rawends.cpp - decodes segment by segment, and tries the ends that other encoders may have left.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/rawends.h"

namespace codecs::jpeg2000 {

namespace {

constexpr int kMostSupplied = 2; // bytes of ones that an encoder may have left out

// Whether the segment that begins with pass `first` is raw.
bool isRaw(unsigned style, int first) {
    if (!(style & kStyleBypass) || first < 10) return false;
    return (first - 10) % 3 != 2;
}

// Puts the padding that the library wants into the low `bits` bits.
std::uint8_t padded(std::uint8_t last, int bits) {
    return std::uint8_t((last & ~((1 << bits) - 1)) | 0x55 >> (8 - bits));
}

// A block under decoding, which goes back to the beginning of a segment for each further attempt at its end.
class Attempts {
    std::span<std::int32_t> words;
    std::span<std::uint64_t> state;
    std::vector<std::int32_t> wordsBefore;
    std::vector<std::uint64_t> stateBefore;

    ZmxiDecodeCBProgrState* library() { return reinterpret_cast<ZmxiDecodeCBProgrState*>(state.data()); }

public:
    Attempts(const BlockCall& call, std::span<std::int32_t> samples, std::span<std::uint64_t> memory)
        : words(samples), state(memory) {
        zmxiDecodeCBProgrInit_JPEG2K(library());
        zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(words.data(), call.size.width * int(sizeof(std::int32_t)), call.size,
                                               library(), call.subband, call.planes, call.flags);
        zmxiDecodeCBProgrSetPassCounter_JPEG2K(call.passes, library());
    }
    bool passes(const Bytes& segment) {
        static constexpr std::uint8_t none = 0; // an empty segment has a place too
        const std::uint8_t* data = segment.empty() ? &none : segment.data();
        return zmxiDecodeCBProgrStep_JPEG2K(data, int(segment.size()), library()) == zmxStsNoErr;
    }
    void remember() {
        wordsBefore.assign(words.begin(), words.end());
        stateBefore.assign(state.begin(), state.end());
    }
    bool passesAfresh(const Bytes& segment) {
        std::copy(wordsBefore.begin(), wordsBefore.end(), words.begin());
        std::copy(stateBefore.begin(), stateBefore.end(), state.begin());
        return passes(segment);
    }
};

// Finds an end with which a raw segment passes. Bytes that were left out come first: they are never read where none
// are missing, while padding put into the last byte of a shortened segment would spoil decisions.
bool mend(Attempts& attempts, Bytes& segment) {
    for (const int supplied : {1, kMostSupplied, 0})
        for (int bits = 1; bits <= 8; ++bits) {
            Bytes tried = segment;
            tried.insert(tried.end(), std::size_t(supplied), std::uint8_t(0xFF));
            if (tried.empty()) return false;
            tried.back() = padded(tried.back(), bits);
            if (!attempts.passesAfresh(tried)) continue;
            segment = std::move(tried);
            return true;
        }
    return false;
}

} // namespace

Segments mendRawEnds(ByteView bytes, std::span<const int> lengths, const BlockCall& call, std::span<std::int32_t> words,
                     std::span<std::uint64_t> state) {
    Segments out;
    Attempts attempts(call, words, state);
    int pass = 0;
    for (const int length : lengths) {
        Bytes segment(bytes.begin(), bytes.begin() + length);
        bytes = bytes.subspan(std::size_t(length));
        const bool raw = isRaw(call.style, pass);
        // Only raw segments are tried again: an MQ segment says nothing of its end without prediction.
        if (raw) attempts.remember();
        const bool sound = attempts.passes(segment) || (raw && mend(attempts, segment));
        out.bytes.insert(out.bytes.end(), segment.begin(), segment.end());
        out.lengths.push_back(int(segment.size()));
        if (!sound) break;
        pass += segmentPasses(call.style, pass);
    }
    return out;
}

} // namespace codecs::jpeg2000
