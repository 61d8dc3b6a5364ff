// blockencoder.cpp - quantisation, the calls of the tier-1 encoder, and what it tells of passes and segments.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/blockencoder.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace codecs::jpeg2000 {

BlockEncoder::BlockEncoder() : buffer(1 << 16) {}

void BlockEncoder::begin(const Block& block) {
    size = {block.width, block.height};
    words.resize(std::size_t(size.width) * std::size_t(size.height));
    filled = 0;
    residual = 0;
    // The state is made anew only for a block larger than all before.
    if (size.width <= stateWidth && size.height <= stateHeight) return;
    stateWidth = std::max(stateWidth, size.width);
    stateHeight = std::max(stateHeight, size.height);
    ZmxiEncodeState_JPEG2K* s = nullptr;
    if (zmxiEncodeInitAlloc_JPEG2K(&s, {stateWidth, stateHeight}) != zmxStsNoErr) throw std::bad_alloc();
    state.reset(s);
}

namespace {

// What is left of `words` below the step, squared and in fractions of it: half a step off in the middle of the interval
// that a decoder rebuilds, or all of a number that comes to nothing. Each difference fits 8 bits, and a row 22.
std::int32_t errorOf(std::span<const std::int32_t> words, int fractionPlanes) {
    const std::int32_t one = 1 << fractionPlanes;
    std::int32_t error = 0;
    for (const std::int32_t w : words) {
        const std::int32_t m = w & 0x7FFFFFFF, open = m & (one - 1);
        const auto off = std::int16_t(m >= one ? open - one / 2 : open); // products of 16 bits are quick
        error += off * off;
    }
    return error;
}

} // namespace

template <Road R> void BlockEncoder::quantise(std::span<const Number<R>> row, const BandCoding& coding) {
    std::int32_t* const to = words.data() + filled;
    filled += row.size();
    if constexpr (isReversible(R)) {
        for (std::size_t x = 0; x < row.size(); ++x) {
            const std::int32_t v = row[x];
            to[x] = std::int32_t(std::uint32_t(std::abs(v)) | (std::uint32_t(v) & kSignBit));
        }
    } else {
        // E.2: magnitudes are cut off, and the bits behind the point tell the error.
        const float scale = float(1 << coding.fractionPlanes) / coding.step;
        for (std::size_t x = 0; x < row.size(); ++x) {
            const auto v = float(row[x]);
            const auto m = std::int32_t(std::abs(v) * scale);
            // std::bit_cast is made of this builtin, and not in every standard library.
            to[x] = std::int32_t(std::uint32_t(m) | (__builtin_bit_cast(std::uint32_t, v) & kSignBit));
        }
        residual += std::ldexp(errorOf({to, row.size()}, coding.fractionPlanes), -2 * coding.fractionPlanes);
    }
}

// Takes the bytes of the loaded block out of the library, all segments behind each other.
void BlockEncoder::store() {
    std::size_t stored = 0;
    for (int more = 1; more != 0;) {
        if (buffer.size() - stored < 4096) buffer.resize(2 * buffer.size());
        int n = int(buffer.size() - stored);
        zmxiEncodeStoreBits_JPEG2K_1u(buffer.data() + stored, &n, state.get(), &more);
        stored += std::size_t(n);
    }
}

// Segments follow each other; one that ends in 0xFF loses that byte, which a decoder supplies.
void BlockEncoder::takePasses(CodedBlock& out, unsigned style, int passes, int segments) {
    out.passes.reserve(std::size_t(passes));
    std::uint32_t source = 0, dropped = 0;
    for (int segment = 0, pass = 0; segment < segments; ++segment) {
        int length = 0;
        zmxiEncodeGetTermPassLen_JPEG2K(state.get(), segment, &length);
        // A last 0xFF is never needed, and must not be there (B.10.7.1).
        const std::uint32_t end = source + std::uint32_t(length);
        const std::uint32_t kept = length > 0 && buffer[end - 1] == 0xFF ? end - 1 : end;
        out.bytes.insert(out.bytes.end(), buffer.data() + source, buffer.data() + kept);
        const int passesHere = segmentPasses(style, pass);
        for (int i = 0; i < passesHere && pass < passes; ++i, ++pass) {
            int rate = 0;
            double distortion = 0;
            zmxiEncodeGetRate_JPEG2K(state.get(), pass, &rate);
            zmxiEncodeGetDist_JPEG2K(state.get(), pass, &distortion);
            const bool ends = i == passesHere - 1 || pass == passes - 1;
            // What the coder estimates for a pass within a segment may lie past the end that it settled on.
            const std::uint32_t at = ends ? kept : std::clamp(std::uint32_t(rate), source, kept);
            out.passes.push_back({at - dropped, ends, distortion});
        }
        dropped += end - kept;
        source = end;
    }
    // Rates of passes within a segment are estimates, and must not fall.
    for (std::size_t i = out.passes.size(); i-- > 1;)
        out.passes[i - 1].rate = std::min(out.passes[i - 1].rate, out.passes[i].rate);
}

void BlockEncoder::raise(int x, int count, const BandCoding& coding) {
    std::int32_t* row = words.data() + filled - std::size_t(size.width);
    // Fractions stay behind: raised, those of a number that comes to nothing would be a number of the background.
    const std::uint32_t whole = ~kSignBit << coding.fractionPlanes & ~kSignBit;
    for (int i = x; i < x + count; ++i) {
        const auto w = std::uint32_t(row[i]);
        row[i] = std::int32_t((w & kSignBit) | (w & whole) << coding.roiShift);
    }
}

CodedBlock BlockEncoder::encode(Orientation o, const CodingStyle& style, const BandCoding& coding) {
    CodedBlock out;
    out.residual = residual;
    int bits = 0, passes = 0, segments = 0;
    // The planes of the fraction are not coded; the library is told where the lowest coded one is.
    const int below = coding.fractionPlanes;
    const Zmx32u flags = libraryStyle(style.style) | (style.reversible ? ZMX_CB_LOSSLESS : 0);
    // Predictable termination has ends of its own (D.4.2); otherwise the shortest end wins.
    const int termination = style.style & kStylePredictable ? ZMX_MQ_TERM_EASY : ZMX_MQ_TERM_NEAR_OPTIMAL;
    zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(words.data(), size.width * int(sizeof(std::int32_t)), size, state.get(),
                                           librarySubband(o), 31 - below, termination, 0, flags, &bits, &passes,
                                           &segments);
    out.bitPlanes = std::max(bits - below, 0);
    if (passes == 0) return out;
    store();
    takePasses(out, style.style, passes, segments);
    return out;
}

template void BlockEncoder::quantise<Road::narrow>(std::span<const std::int16_t>, const BandCoding&);
template void BlockEncoder::quantise<Road::wide>(std::span<const std::int32_t>, const BandCoding&);
template void BlockEncoder::quantise<Road::fixed>(std::span<const std::int32_t>, const BandCoding&);
template void BlockEncoder::quantise<Road::precise>(std::span<const float>, const BandCoding&);

} // namespace codecs::jpeg2000
