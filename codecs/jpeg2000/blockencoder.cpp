// blockencoder.cpp - quantisation, the calls of the tier-1 encoder, and what it tells of passes and segments.
#include "codecs/jpeg2000/blockencoder.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace codecs::jpeg2000 {

namespace {

// Lossy magnitudes carry bits below the step, which tell the coder how far off each decision is.
constexpr int kFractionPlanes = 6;
constexpr std::int32_t kOne = 1 << kFractionPlanes; // the step

} // namespace

BlockEncoder::BlockEncoder() : buffer(1 << 16) {}

void BlockEncoder::begin(const Block& block) {
    size = {block.width, block.height};
    words.clear();
    residual = 0;
    if (size.width <= stateWidth && size.height <= stateHeight) return;
    stateWidth = std::max(stateWidth, size.width);
    stateHeight = std::max(stateHeight, size.height);
    ZmxiEncodeState_JPEG2K* s = nullptr;
    if (zmxiEncodeInitAlloc_JPEG2K(&s, {stateWidth, stateHeight}) != zmxStsNoErr) throw std::bad_alloc();
    state.reset(s);
}

template <Road R> void BlockEncoder::quantise(std::span<const Number<R>> row, const BandCoding& coding) {
    const std::size_t from = words.size();
    words.resize(from + row.size());
    std::int32_t* const to = words.data() + from;
    if constexpr (isReversible(R)) {
        for (std::size_t x = 0; x < row.size(); ++x) {
            const std::int32_t v = row[x];
            to[x] = std::int32_t(std::uint32_t(std::abs(v)) | (std::uint32_t(v) & kSignBit));
        }
    } else {
        const float scale = float(kOne) / coding.step;
        std::int32_t error = 0; // in fractions, squared: each below 2^12, a row below 2^22
        for (std::size_t x = 0; x < row.size(); ++x) {
            const float v = float(row[x]);
            const auto m = std::int32_t(std::abs(v) * scale);
            to[x] = std::int32_t(std::uint32_t(m) | (v < 0 ? kSignBit : 0));
            const std::int32_t open = m & (kOne - 1), off = m >= kOne ? open - kOne / 2 : open;
            error += off * off;
        }
        residual += std::ldexp(error, -2 * kFractionPlanes);
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
            const std::uint32_t at = ends ? kept : std::clamp(std::uint32_t(rate), source, kept);
            out.passes.push_back({at - dropped, ends, distortion});
        }
        dropped += end - kept;
        source = end;
    }
    for (std::size_t i = out.passes.size(); i-- > 1;)
        out.passes[i - 1].rate = std::min(out.passes[i - 1].rate, out.passes[i].rate);
}

CodedBlock BlockEncoder::encode(Orientation o, const CodingStyle& style, bool reversible) {
    CodedBlock out;
    out.residual = residual;
    int bits = 0, passes = 0, segments = 0;
    const int below = reversible ? 0 : kFractionPlanes;
    const Zmx32u flags = libraryStyle(style.style) | (reversible ? ZMX_CB_LOSSLESS : 0);
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
