// blockencoder.cpp - quantisation, the calls of the tier-1 encoder, and what it tells of passes and segments.
#include "codecs/jpeg2000/blockencoder.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace codecs::jpeg2000 {

namespace {

// Lossy magnitudes carry bits below the step, which tell the coder how far off each decision is.
constexpr int kFractionPlanes = 6;
constexpr int fractionOf(const BandCoding& coding) { return coding.reversible ? 0 : kFractionPlanes; }

} // namespace

BlockEncoder::BlockEncoder(int maxWidth, int maxHeight)
    : words(std::size_t(maxWidth) * std::size_t(maxHeight)), buffer(1 << 16) {
    ZmxiEncodeState_JPEG2K* s = nullptr;
    if (zmxiEncodeInitAlloc_JPEG2K(&s, {maxWidth, maxHeight}) != zmxStsNoErr) throw std::bad_alloc();
    state.reset(s);
}

// Fills `words`, and tells the squared error that is left once all planes are coded, in units of the squared step.
double BlockEncoder::quantise(Plane& plane, const Block& block, const BandCoding& coding) {
    const int below = fractionOf(coding);
    const float scale = coding.reversible ? 1 : float(1 << below) / coding.step;
    double residual = 0;
    for (int y = 0; y < block.height; ++y) {
        const std::int32_t* row = plane.at(block.planeX, block.planeY + y);
        std::int32_t* dst = words.data() + std::size_t(y) * std::size_t(block.width);
        std::int32_t error = 0; // in fractions, squared: each below 2^12, a row below 2^22
        for (int x = 0; x < block.width; ++x) {
            const std::int32_t v = row[x];
            const std::int32_t m = coding.reversible ? std::abs(v) : std::int32_t(std::abs(float(v)) * scale);
            dst[x] = std::int32_t(std::uint32_t(m) | (std::uint32_t(v) & kSignBit));
            const std::int32_t open = m & ((1 << below) - 1), off = m >> below != 0 ? open - (1 << below) / 2 : open;
            error += off * off;
        }
        residual += error;
    }
    return std::ldexp(residual, -2 * below);
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

CodedBlock BlockEncoder::encode(Plane& plane, const Block& block, Orientation o, unsigned style,
                                const BandCoding& coding) {
    CodedBlock out;
    out.residual = quantise(plane, block, coding);
    int bits = 0, passes = 0, segments = 0;
    const int below = fractionOf(coding);
    const Zmx32u flags = libraryStyle(style) | (coding.reversible ? ZMX_CB_LOSSLESS : 0);
    const int termination = style & kStylePredictable ? ZMX_MQ_TERM_EASY : ZMX_MQ_TERM_NEAR_OPTIMAL;
    zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(words.data(), block.width * 4, {block.width, block.height}, state.get(),
                                           librarySubband(o), 31 - below, termination, 0, flags, &bits, &passes,
                                           &segments);
    out.bitPlanes = std::max(bits - below, 0);
    if (passes == 0) return out;
    store();
    takePasses(out, style, passes, segments);
    return out;
}

} // namespace codecs::jpeg2000
