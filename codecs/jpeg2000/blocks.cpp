// blocks.cpp - quantisation, the step between two's complement and sign-magnitude, and the calls of the coder.
#include "codecs/jpeg2000/blocks.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace jpeg2000 {

namespace {

// The library numbers bands by what is high-pass first vertically.
int subband(Orientation o) { return o == HL ? 2 : o == LH ? 1 : o == HH ? 3 : 0; }

int gain(Orientation o) { return o == LL ? 0 : o == HH ? 2 : 1; }

constexpr std::uint32_t signBit = 0x80000000u;
constexpr int fractionPlanes = 6; // below the lowest coded plane, for the distortions of the encoder

// Magnitudes here have one plane more than coded, for the midpoint.
std::uint32_t withoutRoi(std::uint32_t magnitude, int shift) {
    return shift > 0 && magnitude >> 1 >= 1ull << shift ? magnitude >> shift | 1 : magnitude;
}

void toNumbers(Plane& plane, const Block& b, const BandCoding& coding) {
    const float scale = coding.step / 2;
    for (int y = 0; y < b.height; ++y) {
        std::int32_t* row = plane.at(b.planeX, b.planeY + y);
        if (coding.roiShift > 0)
            for (int x = 0; x < b.width; ++x) {
                const auto w = std::uint32_t(row[x]);
                row[x] = std::int32_t((w & signBit) | withoutRoi(w & ~signBit, coding.roiShift));
            }
        if (coding.reversible)
            for (int x = 0; x < b.width; ++x) {
                const std::int32_t m = (row[x] & 0x7FFFFFFF) >> 1, sign = row[x] >> 31;
                row[x] = (m ^ sign) - sign;
            }
        else
            for (int x = 0; x < b.width; ++x) {
                const float m = std::min(float(row[x] & 0x7FFFFFFF) * scale, 1.0e9f);
                row[x] = std::int32_t(row[x] < 0 ? -m : m);
            }
    }
}

} // namespace

Zmx32u libraryStyle(unsigned style) {
    const auto bit = [style](unsigned ours, Zmx32u theirs) { return style & ours ? theirs : 0; };
    return bit(styleBypass, ZMX_CB_SELECTIVE_BYPASS) | bit(styleReset, ZMX_CB_RESET_CTX) |
           bit(styleTerminateAll, ZMX_CB_TERMINATE_ALL) | bit(styleCausal, ZMX_CB_VERTICALLY_CAUSAL) |
           bit(styleSegmentation, ZMX_CB_SEGMENTATION_SYMBOLS);
}

double stepOf(const StepSize& s, int depth, Orientation o) {
    return std::ldexp(1 + s.mantissa / 2048.0, depth + gain(o) - s.exponent);
}

BandCoding bandCoding(const CodingStyle& style, const Quantization& quant, int roiShift, int depth, int resolution,
                      int band, Orientation o) {
    const StepSize s = quant.step(resolution, band);
    BandCoding c;
    c.reversible = style.reversible;
    c.bitPlanes = quant.guardBits + s.exponent - 1;
    c.step = style.reversible ? 1.0f : float(std::ldexp(stepOf(s, depth, o), waveletFraction(depth)));
    c.roiShift = roiShift;
    return c;
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
    if (planes < 1 || planes > maxBitPlanes || passes > 3 * planes - 2) return false;

    Span data{stream.pieces.empty() ? joined.data() : stream.pieces[0].data, 0};
    if (stream.pieces.size() != 1) {
        joined.assign(1, 0); // never without memory
        joined.clear();
        for (const Span& s : stream.pieces) joined.insert(joined.end(), s.data, s.data + s.size);
        data.data = joined.data();
    }
    const ZmxiSize size{block.width, block.height};
    int bytes = 0;
    zmxiDecodeGetBufSize_JPEG2K(size, &bytes);
    state.resize(std::max(state.size(), std::size_t(bytes) / sizeof(std::uint64_t) + 1));
    const Zmx32u flags = libraryStyle(style) | (style & stylePredictable ? ZMX_CB_ERROR_PREDICTION : 0) |
                         ZMX_CB_KEEP_DST | ZMX_CB_KEEP_MIDPOINT | ZMX_CB_CONCEAL_DAMAGE;
    // One plane more than there is: what a full decoding leaves open is then rebuilt at its midpoint too.
    const ZmxStatus status = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(
        data.data, plane.at(block.planeX, block.planeY), plane.stride(), size, subband(o), planes + 1, passes,
        lengths.data(), int(lengths.size()), flags, nullptr, reinterpret_cast<ZmxiDecodeCBProgrState*>(state.data()));
    toNumbers(plane, block, coding);
    return status == zmxStsNoErr;
}

BlockEncoder::BlockEncoder(int maxWidth, int maxHeight)
    : words(std::size_t(maxWidth) * std::size_t(maxHeight)), buffer(1 << 16) {
    ZmxiEncodeState_JPEG2K* s = nullptr;
    if (zmxiEncodeInitAlloc_JPEG2K(&s, {maxWidth, maxHeight}) != zmxStsNoErr) throw std::bad_alloc();
    state.reset(s);
}

CodedBlock BlockEncoder::encode(Plane& plane, const Block& block, Orientation o, unsigned style,
                                const BandCoding& coding) {
    CodedBlock out;
    // Lossy magnitudes carry bits below the step, which tell the coder how far off each decision is.
    const int below = coding.reversible ? 0 : fractionPlanes;
    const float scale = coding.reversible ? 1 : float(1 << below) / coding.step;
    double residual = 0;
    for (int y = 0; y < block.height; ++y) {
        const std::int32_t* row = plane.at(block.planeX, block.planeY + y);
        std::int32_t* dst = words.data() + std::size_t(y) * std::size_t(block.width);
        std::int32_t error = 0; // in fractions, squared: each below 2^12, a row below 2^22
        for (int x = 0; x < block.width; ++x) {
            const std::int32_t v = row[x];
            const std::int32_t m = coding.reversible ? std::abs(v) : std::int32_t(std::abs(float(v)) * scale);
            dst[x] = std::int32_t(std::uint32_t(m) | (std::uint32_t(v) & signBit));
            const std::int32_t open = m & ((1 << below) - 1), off = m >> below != 0 ? open - (1 << below) / 2 : open;
            error += off * off;
        }
        residual += error;
    }
    out.residual = std::ldexp(residual, -2 * below);
    int bits = 0, passes = 0, segments = 0;
    const Zmx32u flags = libraryStyle(style) | (coding.reversible ? ZMX_CB_LOSSLESS : 0);
    const int termination = style & stylePredictable ? ZMX_MQ_TERM_EASY : ZMX_MQ_TERM_NEAR_OPTIMAL;
    zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(words.data(), block.width * 4, {block.width, block.height}, state.get(),
                                           subband(o), 31 - below, termination, 0, flags, &bits, &passes, &segments);
    out.bitPlanes = std::max(bits - below, 0);
    if (passes == 0) return out;

    std::size_t stored = 0;
    for (int more = 1; more != 0;) {
        if (buffer.size() - stored < 4096) buffer.resize(2 * buffer.size());
        int n = int(buffer.size() - stored);
        zmxiEncodeStoreBits_JPEG2K_1u(buffer.data() + stored, &n, state.get(), &more);
        stored += std::size_t(n);
    }
    // Segments follow each other; one that ends in 0xFF loses that byte, which a decoder supplies.
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
    return out;
}

} // namespace jpeg2000
