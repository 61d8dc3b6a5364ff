// codeblocks.cpp - digests of the coding of JPEG2000 code blocks.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

#include <algorithm>
#include <memory>

namespace {

constexpr ZmxiSize kSizes[] = {{1, 1}, {4, 4}, {7, 5}, {16, 9}, {3, 64}, {33, 17}};
constexpr Zmx32u kStyles[] = {0,
                              ZMX_CB_VERTICALLY_CAUSAL,
                              ZMX_CB_SELECTIVE_BYPASS,
                              ZMX_CB_TERMINATE_ALL,
                              ZMX_CB_RESET_CTX,
                              ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_LOSSLESS,
                              ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_TERMINATE_ALL | ZMX_CB_RESET_CTX,
                              ZMX_CB_VERTICALLY_CAUSAL | ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_TERMINATE_ALL |
                                  ZMX_CB_RESET_CTX | ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_LOSSLESS};
constexpr ZmxiSize kLargest{64, 64};

struct FreeEncoder {
    void operator()(ZmxiEncodeState_JPEG2K* state) const { zmxiEncodeFree_JPEG2K(state); }
};
using Encoder = std::unique_ptr<ZmxiEncodeState_JPEG2K, FreeEncoder>;
Encoder encoder() {
    ZmxiEncodeState_JPEG2K* state = nullptr;
    zmxiEncodeInitAlloc_JPEG2K(&state, kLargest);
    return Encoder(state);
}
struct FreeDecoder {
    void operator()(ZmxiDecodeCBProgrState* state) const { zmxiDecodeCBProgrFree_JPEG2K(state); }
};
using Decoder = std::unique_ptr<ZmxiDecodeCBProgrState, FreeDecoder>;
Decoder decoder() {
    ZmxiDecodeCBProgrState* state = nullptr;
    zmxiDecodeCBProgrInitAlloc_JPEG2K(&state, kLargest);
    return Decoder(state);
}

// A code block: sign-magnitude samples, most of them small, and how it is coded.
struct Block {
    ZmxiSize size;
    Plane<Zmx32s> samples;
    int subband, magnBits, termination;
    Zmx32u style;

    Block(Random& random, ZmxiSize s, Zmx32u cbStyle)
        : size(s), samples(random, Kind::Flat, s.width, s.height, random.range(0, 1) * 4), subband(random.range(0, 3)),
          magnBits(random.oneIn(4) ? 31 : random.range(1, 12)), termination(random.range(0, 2)), style(cbStyle) {
        const int fraction = 31 - magnBits, most = random.range(1, 31), few = random.range(1, 6);
        for (int y = 0; y < s.height; ++y)
            for (int x = 0; x < s.width; ++x) {
                const int shift = random.oneIn(few) ? 31 - most : 31 - fraction;
                const std::uint32_t magnitude = std::uint32_t(random.next() >> 33) >> shift;
                const std::uint32_t kept = random.oneIn(2) ? magnitude : 0, sign = random.oneIn(2) ? 1u << 31 : 0;
                samples.set(x, y, Zmx32s(kept | sign));
            }
    }
};

// What the encoder makes of a block.
struct Coded {
    std::vector<Zmx8u> bytes;
    std::vector<int> lengths; // of the segments
    int sfBits = 0, passes = 0, segments = 0;
    int planes = 0; // that are coded
};

// Runs an encoder over a block, drains it through buffers of `chunk` bytes, and digests what it is asked to.
struct What {
    bool load = false, store = false, lengths = false, rates = false, distortions = false;
};
Coded encode(Block& block, int chunk, What what, Digest& digest) {
    const Encoder state = encoder();
    Coded coded;
    const ZmxStatus status = zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(
        block.samples.data(), block.samples.step(), block.size, state.get(), block.subband, block.magnBits,
        block.termination, 0, block.style, &coded.sfBits, &coded.passes, &coded.segments);
    coded.planes = std::max(0, coded.sfBits - (31 - block.magnBits));
    if (what.load) digest.value(status).value(coded.sfBits).value(coded.passes).value(coded.segments);
    for (int more = 1; more;) {
        std::vector<Zmx8u> buffer(std::size_t(chunk), 0xEE);
        int length = chunk;
        const ZmxStatus stored = zmxiEncodeStoreBits_JPEG2K_1u(buffer.data(), &length, state.get(), &more);
        if (what.store) digest.value(stored).value(length).value(more).values(buffer);
        coded.bytes.insert(coded.bytes.end(), buffer.begin(), buffer.begin() + length);
        if (stored != zmxStsNoErr) break;
    }
    for (int i = 0; i <= coded.segments; ++i) { // one too many: a status
        int length = -1;
        const ZmxStatus told = zmxiEncodeGetTermPassLen_JPEG2K(state.get(), i, &length);
        if (what.lengths) digest.value(told).value(length);
        if (told == zmxStsNoErr) coded.lengths.push_back(length);
    }
    for (int i = -1; i <= coded.passes; ++i) {
        int rate = -1;
        std::uint64_t distortion = 0; // a double by its bits
        static_assert(sizeof(double) == sizeof distortion);
        double value = 0;
        const ZmxStatus rated = zmxiEncodeGetRate_JPEG2K(state.get(), i, &rate);
        const ZmxStatus measured = zmxiEncodeGetDist_JPEG2K(state.get(), i, &value);
        std::memcpy(&distortion, &value, sizeof distortion);
        if (what.rates) digest.value(rated).value(rate);
        if (what.distortions) digest.value(measured).value(distortion);
    }
    return coded;
}

// body(random, block) for every size and style.
template <class Body> void blocks(Random& random, Body body) {
    for (const ZmxiSize& size : kSizes)
        for (Zmx32u style : kStyles)
            for (int round = 0; round < 3; ++round) {
                Block block(random, size, style);
                body(block);
            }
}

void encoders(Report& report) {
    const auto encodes = [&](const std::string& name, int chunk, What what) {
        report.add(name, [&](Random& random, Digest& digest) {
            blocks(random, [&](Block& block) { encode(block, chunk, what, digest); });
        });
    };
    What what;
    what.load = true;
    encodes("zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R", 4096, what);
    what = {};
    what.store = true;
    encodes("zmxiEncodeStoreBits_JPEG2K_1u", 4096, what);
    encodes("zmxiEncodeStoreBits_JPEG2K_1u: a byte a call", 1, what);
    what = {};
    what.lengths = true;
    encodes("zmxiEncodeGetTermPassLen_JPEG2K", 100, what);
    what = {};
    what.rates = true;
    encodes("zmxiEncodeGetRate_JPEG2K", 100, what);
    what = {};
    what.distortions = true;
    encodes("zmxiEncodeGetDist_JPEG2K", 100, what);
    // All planes of large blocks: distortions whose sum has more than 53 significant bits on the way.
    report.add("zmxiEncodeGetDist_JPEG2K: hard cases", [&](Random& random, Digest& digest) {
        for (int round = 0; round < 8; ++round) {
            Block block(random, {32, 32}, kStyles[round]);
            block.magnBits = 31;
            for (int i = 0; i < 32 * 32; ++i) block.samples.set(i % 32, i / 32, Zmx32s(random.next() >> 32));
            encode(block, 4096, what, digest);
        }
    });
}

// The style of a decoder: that of the encoder, and what only decoders know.
Zmx32u decoderStyle(Random& random, const Block& block) {
    Zmx32u style = block.style & ~Zmx32u(ZMX_CB_LOSSLESS);
    if (block.termination == ZMX_MQ_TERM_EASY && random.oneIn(2)) style |= ZMX_CB_ERROR_PREDICTION;
    for (Zmx32u bit : {ZMX_CB_CONCEAL_DAMAGE, ZMX_CB_KEEP_DST, ZMX_CB_KEEP_MIDPOINT})
        if (random.oneIn(3)) style |= bit;
    return style;
}

void decodeAtOnce(Random& random, const Block& block, const Coded& coded, Digest& digest) {
    int bytes = 0;
    zmxiDecodeGetBufSize_JPEG2K(block.size, &bytes);
    std::vector<std::uint64_t> memory(std::size_t(bytes) / 8 + 1);
    auto* state = reinterpret_cast<ZmxiDecodeCBProgrState*>(memory.data());
    Plane<Zmx32s> result(random, Kind::Small, block.size.width, block.size.height, 4);
    std::vector<int> lengths = coded.lengths;
    lengths.push_back(0);
    std::vector<Zmx8u> stream = coded.bytes;
    stream.push_back(0);
    int plane = -99;
    digest.value(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(
        stream.data(), result.data(), result.step(), block.size, block.subband, coded.planes, coded.passes,
        lengths.data(), int(coded.lengths.size()), decoderStyle(random, block), &plane, state));
    digest.value(plane);
    result.digest(digest);
}

void decodeInSteps(Random& random, const Block& block, const Coded& coded, Digest& digest) {
    const Decoder state = decoder();
    Plane<Zmx32s> result(random, Kind::Small, block.size.width, block.size.height, 4);
    digest.value(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(result.data(), result.step(), block.size, state.get(),
                                                        block.subband, coded.planes, decoderStyle(random, block)));
    digest.value(zmxiDecodeCBProgrSetPassCounter_JPEG2K(coded.passes, state.get()));
    const Zmx8u none = 0;
    const Zmx8u* segment = coded.bytes.empty() ? &none : coded.bytes.data();
    for (int length : coded.lengths) {
        digest.value(zmxiDecodeCBProgrStep_JPEG2K(segment, length, state.get()));
        int passes = -1, plane = -99;
        digest.value(zmxiDecodeCBProgrGetPassCounter_JPEG2K(state.get(), &passes)).value(passes);
        digest.value(zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(state.get(), &plane)).value(plane);
        segment += length;
        result.digest(digest);
    }
}

void decoders(Report& report) {
    const auto decodes = [&](const std::string& name, auto decode, bool damage) {
        report.add(name, [&](Random& random, Digest& digest) {
            blocks(random, [&](Block& block) {
                Digest ignored;
                Coded coded = encode(block, 4096, {}, ignored);
                if (damage && !coded.bytes.empty())
                    for (int n = random.range(1, 5); n > 0; --n)
                        coded.bytes[std::size_t(random.range(0, int(coded.bytes.size()) - 1))] =
                            Zmx8u(random.range(0, 255));
                decode(random, block, coded, digest);
            });
        });
    };
    decodes("zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R", decodeAtOnce, false);
    decodes("zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R: damaged streams", decodeAtOnce, true);
    const std::string steps = "zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R, zmxiDecodeCBProgrSetPassCounter_JPEG2K, "
                              "zmxiDecodeCBProgrStep_JPEG2K, zmxiDecodeCBProgrGetPassCounter_JPEG2K, "
                              "zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K";
    decodes(steps, decodeInSteps, false);
    decodes(steps + ": damaged streams", decodeInSteps, true);
}

// Memory: whatever the size of a state is on a platform, one of just that size holds all that is done with it.
void states(Report& report) {
    for (const auto& function : {NAMED(zmxiDecodeCBProgrGetStateSize_JPEG2K), NAMED(zmxiDecodeGetBufSize_JPEG2K)}) {
        // The state holds pointers, so that the size depends on theirs.
        report.add(function.name + pointerWidth(sizeof(void*)), [&](Random&, Digest& digest) {
            for (const ZmxiSize& size : kSizes) {
                int bytes = 0;
                digest.value(function.call(size, &bytes)).value(bytes);
            }
        });
        int bytes = 0;
        badArguments(report, function, kLargest, &bytes);
    }
    const auto init = NAMED(zmxiDecodeCBProgrInit_JPEG2K);
    std::vector<std::uint64_t> memory(4096);
    auto* state = reinterpret_cast<ZmxiDecodeCBProgrState*>(memory.data());
    report.add(init.name, [&](Random&, Digest& digest) {
        const Zmx8u some[4] = {};
        int passes = -1;
        digest.value(init.call(state)).value(zmxiDecodeCBProgrStep_JPEG2K(some, 4, state)); // nothing attached
        digest.value(zmxiDecodeCBProgrGetPassCounter_JPEG2K(state, &passes)).value(passes);
    });
    badArguments(report, init, state);

    const auto decoderAlloc = NAMED(zmxiDecodeCBProgrInitAlloc_JPEG2K);
    const auto decoderFree = NAMED(zmxiDecodeCBProgrFree_JPEG2K);
    report.add(decoderAlloc.name + ", " + decoderFree.name, [&](Random&, Digest& digest) {
        ZmxiDecodeCBProgrState* made = nullptr;
        digest.value(decoderAlloc.call(&made, kLargest)).value(int(made != nullptr)).value(decoderFree.call(made));
        std::vector<std::uint64_t> foreign(4096, 1);
        digest.value(decoderFree.call(reinterpret_cast<ZmxiDecodeCBProgrState*>(foreign.data())));
    });
    badArguments(report, decoderAlloc, &state, kLargest);
    const auto encoderAlloc = NAMED(zmxiEncodeInitAlloc_JPEG2K);
    const auto encoderFree = NAMED(zmxiEncodeFree_JPEG2K);
    ZmxiEncodeState_JPEG2K* coder = nullptr;
    report.add(encoderAlloc.name + ", " + encoderFree.name, [&](Random&, Digest& digest) {
        digest.value(encoderAlloc.call(&coder, kLargest)).value(int(coder != nullptr)).value(encoderFree.call(coder));
    });
    badArguments(report, encoderAlloc, &coder, kLargest);
    badArguments(report, decoderFree, state);
    badArguments(report, encoderFree, coder);
}

void refusals(Report& report) {
    const Encoder coder = encoder();
    const Decoder state = decoder();
    Zmx8u bytes[8] = {};
    Zmx32s samples[16] = {};
    const ZmxiSize size{4, 4};
    int number = 8, other = 0, third = 0;
    double distortion = 0;
    badArguments(report, NAMED(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R), samples, Least{16}, size, coder.get(), 0, 8, 0,
                 0, Zmx32u(0), &number, &other, &third);
    badArguments(report, NAMED(zmxiEncodeStoreBits_JPEG2K_1u), bytes, &number, coder.get(), &other);
    badArguments(report, NAMED(zmxiEncodeGetTermPassLen_JPEG2K), coder.get(), 0, &number);
    badArguments(report, NAMED(zmxiEncodeGetRate_JPEG2K), coder.get(), 0, &number);
    badArguments(report, NAMED(zmxiEncodeGetDist_JPEG2K), coder.get(), 0, &distortion);
    badArguments(report, NAMED(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R), samples, Least{16}, size, state.get(), 0, 8,
                 Zmx32u(0));
    badArguments(report, NAMED(zmxiDecodeCBProgrSetPassCounter_JPEG2K), 1, state.get());
    badArguments(report, NAMED(zmxiDecodeCBProgrStep_JPEG2K), bytes, 8, state.get());
    badArguments(report, NAMED(zmxiDecodeCBProgrGetPassCounter_JPEG2K), state.get(), &number);
    badArguments(report, NAMED(zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K), state.get(), &number);
    badArguments(report, NAMED(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R), bytes, samples, Least{16}, size, 0, 8, 1, &number,
                 1, Zmx32u(0), &other, state.get());
}

} // namespace

void codeblockDigests(Report& report) {
    states(report);
    encoders(report);
    decoders(report);
    refusals(report);
}
