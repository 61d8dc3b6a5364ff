// bench_codeblock.cpp - JPEG2000 code blocks of 64x64 coefficients of a photograph: coefficients a second
// through the encoder (load and store) and the decoder, and decisions a second through the MQ coder.
//
// The luma of the photograph stands as it is ("samples"), or is transformed by five levels of the 5/3 ("53_8bit", which
// scripts/bench compares with another coder) or the 9/7 wavelet. Beyond 8 bits the
// samples get random bits below.
// SPDX-License-Identifier: BSD-2-Clause
#include "src/pj2encstate.h" // for the number of decisions, which the interface does not tell

#include "bench/bench_photograph.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kSide = 64;
constexpr ZmxiSize kSize{kSide, kSide};
constexpr int kCoefficients = kSide * kSide;

struct Plane {
    int width = 0, height = 0;
    std::vector<double> samples; // around 0
    double& at(int x, int y) { return samples[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
};

// The luma of a photograph, cut to whole blocks.
const Plane& picture() {
    static const Plane plane = [] {
        const Photograph photo = readPhotograph("Garden", Channels::Luma);
        Plane p{photo.width / kSide * kSide, photo.height / kSide * kSide, {}};
        for (int y = 0; y < p.height; ++y)
            for (int x = 0; x < p.width; ++x)
                p.samples.push_back(photo.samples[std::size_t(y) * std::size_t(photo.width) + std::size_t(x)] - 128);
        return p;
    }();
    return plane;
}

// One level of a lifting wavelet on a line: lifted in place, then low-pass samples ahead of high-pass ones.
using Lifting = void (*)(std::vector<double>&);

template <class Step> void lift(std::vector<double>& line, std::size_t from, Step step) {
    const auto at = [&](std::ptrdiff_t i) { // mirrored at both ends
        const auto n = std::ptrdiff_t(line.size());
        return line[std::size_t(i < 0 ? -i : i >= n ? 2 * (n - 1) - i : i)];
    };
    for (std::size_t i = from; i < line.size(); i += 2)
        line[i] += step(at(std::ptrdiff_t(i) - 1) + at(std::ptrdiff_t(i) + 1));
}
void lift53(std::vector<double>& line) {
    lift(line, 1, [](double sum) { return -std::floor(sum / 2); });
    lift(line, 0, [](double sum) { return std::floor((sum + 2) / 4); });
}
void lift97(std::vector<double>& line) {
    lift(line, 1, [](double sum) { return -1.586134342 * sum; });
    lift(line, 0, [](double sum) { return -0.052980118 * sum; });
    lift(line, 1, [](double sum) { return 0.882911075 * sum; });
    lift(line, 0, [](double sum) { return 0.443506852 * sum; });
    for (std::size_t i = 0; i < line.size(); ++i) line[i] *= i % 2 ? 1.230174105 / 2 : 1 / 1.230174105;
}

// A level on the top left part of a plane.
void transform(Plane& p, int width, int height, Lifting lifting) {
    const auto lines = [lifting](int n, int length, auto sample) {
        std::vector<double> line(static_cast<std::size_t>(length));
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < length; ++j) line[std::size_t(j)] = sample(i, j);
            lifting(line);
            for (int j = 0; j < length; ++j) sample(i, j / 2 + j % 2 * ((length + 1) / 2)) = line[std::size_t(j)];
        }
    };
    lines(height, width, [&p](int y, int x) -> double& { return p.at(x, y); });
    lines(width, height, [&p](int x, int y) -> double& { return p.at(x, y); });
}

// A whole block of one subband, in sign-magnitude words.
struct Block {
    int subband;
    std::vector<Zmx32s> samples;
};

struct Kind {
    const char* name;
    Lifting lifting; // null for none
    int bits;        // of a sample
    double step;     // of the quantiser
};

std::vector<Block> makeBlocks(const Kind& kind) {
    Plane p = picture();
    std::mt19937 random(1);
    for (double& v : p.samples) {
        v *= 1 << (kind.bits - 8);
        if (kind.bits > 8) v += double(random() % (1u << (kind.bits - 8)));
    }
    std::vector<Block> blocks;
    const auto cut = [&](int subband, int x0, int y0, int width, int height) {
        for (int y = y0; y + kSide <= y0 + height; y += kSide)
            for (int x = x0; x + kSide <= x0 + width; x += kSide) {
                Block block{subband, {}};
                for (int i = 0; i < kCoefficients; ++i) {
                    const double v = p.at(x + i % kSide, y + i / kSide);
                    const auto magnitude = Zmx32u(std::fabs(v) / kind.step);
                    block.samples.push_back(Zmx32s(magnitude | Zmx32u(magnitude && v < 0) << 31));
                }
                blocks.push_back(std::move(block));
            }
    };
    int width = p.width, height = p.height;
    if (kind.lifting)
        for (int level = 0; level < 5; ++level) {
            transform(p, width, height, kind.lifting);
            const int lowWidth = (width + 1) / 2, lowHeight = (height + 1) / 2;
            cut(1, 0, lowHeight, lowWidth, height - lowHeight);
            cut(2, lowWidth, 0, width - lowWidth, lowHeight);
            cut(3, lowWidth, lowHeight, width - lowWidth, height - lowHeight);
            width = lowWidth;
            height = lowHeight;
        }
    cut(0, 0, 0, width, height);
    return blocks;
}

const std::vector<Block>& blocksOf(const Kind& kind) {
    static std::map<const char*, std::vector<Block>> made;
    const auto [entry, isNew] = made.try_emplace(kind.name);
    if (isNew) entry->second = makeBlocks(kind);
    return entry->second;
}

class Encoder {
    ZmxiEncodeState_JPEG2K* state = nullptr;
    std::vector<Zmx8u> bytes = std::vector<Zmx8u>(1 << 18);

public:
    int planes = 0, passes = 0, segments = 0;

    Encoder() { zmxiEncodeInitAlloc_JPEG2K(&state, kSize); }
    ~Encoder() { zmxiEncodeFree_JPEG2K(state); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    void load(const Block& block, Zmx32u style) {
        zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(block.samples.data(), kSide * 4, kSize, state, block.subband, 31,
                                               ZMX_MQ_TERM_FLUSH, 0, style, &planes, &passes, &segments);
    }
    int decisions() const { return state->pCoder->decisionCount; }
    int store() {
        int length = int(bytes.size()), more;
        zmxiEncodeStoreBits_JPEG2K_1u(bytes.data(), &length, state, &more);
        return length;
    }
    const Zmx8u* data() const { return bytes.data(); }
    // What a rate control asks: where each pass can be cut, and what it is worth.
    double figures() const {
        double sum = 0;
        for (int pass = 0; pass < passes; ++pass) {
            int rate;
            double distortion;
            zmxiEncodeGetRate_JPEG2K(state, pass, &rate);
            zmxiEncodeGetDist_JPEG2K(state, pass, &distortion);
            sum += rate + distortion;
        }
        for (int i = 0; i < segments; ++i) sum += segmentLength(i);
        return sum;
    }
    int segmentLength(int i) const {
        int length;
        zmxiEncodeGetTermPassLen_JPEG2K(state, i, &length);
        return length;
    }
};

struct CodedBytes {
    int subband, planes, passes;
    std::vector<Zmx8u> bytes;
    std::vector<int> lengths;
};

class Decoder {
    std::vector<Zmx32u> buffer;
    std::vector<Zmx32s> samples = std::vector<Zmx32s>(kCoefficients);

public:
    Decoder() {
        int size;
        zmxiDecodeGetBufSize_JPEG2K(kSize, &size);
        buffer.resize(std::size_t(size) / sizeof(Zmx32u) + 1);
    }
    const std::vector<Zmx32s>& decode(const CodedBytes& c, Zmx32u style) {
        zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(c.bytes.data(), samples.data(), kSide * 4, kSize, c.subband, c.planes,
                                             c.passes, c.lengths.data(), int(c.lengths.size()), style, nullptr,
                                             reinterpret_cast<ZmxiDecodeCBProgrState*>(buffer.data()));
        return samples;
    }
};

// The same, one codeword segment a step, with what an application asks between the steps.
class SteppingDecoder {
    ZmxiDecodeCBProgrState* state = nullptr;
    std::vector<Zmx32s> samples = std::vector<Zmx32s>(kCoefficients);

public:
    SteppingDecoder() { zmxiDecodeCBProgrInitAlloc_JPEG2K(&state, kSize); }
    ~SteppingDecoder() { zmxiDecodeCBProgrFree_JPEG2K(state); }
    SteppingDecoder(const SteppingDecoder&) = delete;
    SteppingDecoder& operator=(const SteppingDecoder&) = delete;

    const std::vector<Zmx32s>& decode(const CodedBytes& c, Zmx32u style) {
        zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(samples.data(), kSide * 4, kSize, state, c.subband, c.planes, style);
        zmxiDecodeCBProgrSetPassCounter_JPEG2K(c.passes, state);
        const Zmx8u* segment = c.bytes.data();
        int left = c.passes, plane = c.planes;
        for (std::size_t i = 0; i < c.lengths.size() && left > 0 && plane >= 0; segment += c.lengths[i++]) {
            zmxiDecodeCBProgrStep_JPEG2K(segment, c.lengths[i], state);
            zmxiDecodeCBProgrGetPassCounter_JPEG2K(state, &left);
            zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(state, &plane);
        }
        return samples;
    }
};

// Processor time, so that a busy machine disturbs a comparison with other programs less.
template <class Work> double secondsOf(Work work) {
    const auto now = [] {
        timespec t;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
    };
    const double start = now();
    work();
    return now() - start;
}

enum class Work { Load, Store, Figures, Encode, Decode, Step };

// All blocks of a kind. Rates are in coefficients, or in decisions for the store, which is the MQ encoder
// alone.
void run(benchmark::State& state, Work work, const Kind& kind, Zmx32u style) {
    const std::vector<Block>& blocks = blocksOf(kind);
    if (blocks.empty()) return state.SkipWithError("no picture");
    Encoder encoder;
    Decoder decoder;
    SteppingDecoder stepping;
    std::vector<CodedBytes> coded;
    double bytes = 0, decisions = 0;
    for (const Block& block : blocks) {
        encoder.load(block, style);
        const int length = encoder.store();
        // One byte more than the block has: a block without bytes still needs an address.
        coded.push_back(
            {block.subband, encoder.planes, encoder.passes, {encoder.data(), encoder.data() + length + 1}, {}});
        for (int i = 0; i < encoder.segments; ++i) coded.back().lengths.push_back(encoder.segmentLength(i));
        if (decoder.decode(coded.back(), style) != block.samples ||
            stepping.decode(coded.back(), style) != block.samples)
            return state.SkipWithError("decoded samples differ");
        bytes += length;
        decisions += encoder.decisions();
    }

    // What is timed of the work on a block.
    const auto secondsOfBlock = [&](std::size_t i) {
        if (work == Work::Decode) return secondsOf([&] { decoder.decode(coded[i], style); });
        if (work == Work::Step) return secondsOf([&] { stepping.decode(coded[i], style); });
        const double load = secondsOf([&] { encoder.load(blocks[i], style); });
        if (work == Work::Load) return load;
        const double store = secondsOf([&] { encoder.store(); });
        if (work == Work::Figures) return secondsOf([&] { benchmark::DoNotOptimize(encoder.figures()); });
        return work == Work::Store ? store : load + store;
    };
    for (auto _ : state) {
        double seconds = 0;
        for (std::size_t i = 0; i < blocks.size(); ++i) seconds += secondsOfBlock(i);
        state.SetIterationTime(seconds);
    }
    const double coefficients = double(blocks.size()) * kCoefficients;
    state.SetItemsProcessed(state.iterations() * std::int64_t(work == Work::Store ? decisions : coefficients));
    state.counters["bits/coef"] = 8 * bytes / coefficients;
    state.counters["decisions/coef"] = decisions / coefficients;
}

constexpr Kind kKinds[] = {
    {"samples", nullptr, 8, 1},  {"53_8bit", lift53, 8, 1},        {"53_12bit", lift53, 12, 1},
    {"53_16bit", lift53, 16, 1}, {"97_fine", lift97, 8, 1 / 16.0}, {"97_medium", lift97, 8, 1 / 4.0},
    {"97_coarse", lift97, 8, 1},
};

const bool registered = [] {
    const auto add = [](const std::string& name, Work work, const Kind& kind, Zmx32u style) {
        benchmark::RegisterBenchmark(name.c_str(), [=, &kind](benchmark::State& s) { run(s, work, kind, style); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    };
    for (const Kind& kind : kKinds) {
        const std::string name = kind.name;
        add("CodeBlock/encode/" + name, Work::Encode, kind, 0);
        add("CodeBlock/decode/" + name, Work::Decode, kind, 0);
    }
    const Kind& plain = kKinds[0];
    add("CodeBlock/load/samples", Work::Load, plain, 0);
    add("CodeBlock/store/samples", Work::Store, plain, 0);
    add("CodeBlock/figures/samples", Work::Figures, plain, 0);
    add("CodeBlock/steps/samples", Work::Step, plain, 0);
    add("CodeBlock/encode_bypass/53_12bit", Work::Encode, kKinds[2], ZMX_CB_SELECTIVE_BYPASS);
    add("CodeBlock/decode_bypass/53_12bit", Work::Decode, kKinds[2], ZMX_CB_SELECTIVE_BYPASS);
    add("CodeBlock/steps_bypass/53_12bit", Work::Step, kKinds[2], ZMX_CB_SELECTIVE_BYPASS);
    return true;
}();

} // namespace
