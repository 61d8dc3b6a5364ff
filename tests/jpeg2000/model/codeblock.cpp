// codeblock.cpp - the coding passes, and the decoder and the encoder of code blocks that run them.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/codeblock.h"

#include "tests/jpeg2000/model/extended.h"

#include <algorithm>
#include <cstring>

namespace model {

std::uint32_t Samples::get(int x, int y) const {
    std::uint32_t v;
    std::memcpy(&v, base + std::ptrdiff_t(step) * y + std::ptrdiff_t(4) * x, 4);
    return v;
}
void Samples::set(int x, int y, std::uint32_t v) const {
    std::memcpy(base + std::ptrdiff_t(step) * y + std::ptrdiff_t(4) * x, &v, 4);
}

// ---- the passes

void CodingPasses::setBlock(int w, int h, int subband, bool keepState) {
    width = w;
    height = h;
    band = subband;
    if (!keepState || samples.empty()) samples.assign(std::size_t(w) * std::size_t(h), Sample());
}

// The neighbour at (dx, dy), if it is significant as far as this sample may know.
const CodingPasses::Sample* CodingPasses::seen(int x, int y, int dx, int dy) const {
    const int nx = x + dx, ny = y + dy;
    if (nx < 0 || ny < 0 || nx >= width || ny >= height) return nullptr;
    const Sample& n = samples[std::size_t(ny) * std::size_t(width) + std::size_t(nx)];
    const bool fromStripeAbove = dy == 1 && ny % 4 == 0;
    return n.significant && (!fromStripeAbove || n.seenFromAbove) ? &n : nullptr;
}

CodingPasses::Around CodingPasses::around(int x, int y) const {
    const auto one = [&](int dx, int dy) { return seen(x, y, dx, dy) ? 1 : 0; };
    return {one(-1, 0) + one(1, 0), one(0, -1) + one(0, 1), one(-1, -1) + one(1, -1) + one(-1, 1) + one(1, 1)};
}

// Table D.1.
int CodingPasses::zeroCodingContext(int x, int y) const {
    Around n = around(x, y);
    int label;
    if (band == 3) {
        const int hv = n.h + n.v;
        if (n.d >= 3)
            label = 8;
        else if (n.d == 2)
            label = hv >= 1 ? 7 : 6;
        else if (n.d == 1)
            label = hv >= 2 ? 5 : hv == 1 ? 4 : 3;
        else
            label = hv >= 2 ? 2 : hv;
    } else {
        if (band == 2) std::swap(n.h, n.v);
        if (n.h == 2)
            label = 8;
        else if (n.h == 1)
            label = n.v >= 1 ? 7 : n.d >= 1 ? 6 : 5;
        else if (n.v >= 1)
            label = n.v == 2 ? 4 : 3;
        else
            label = n.d >= 2 ? 2 : n.d;
    }
    return ZeroCoding + label;
}

// Table D.4.
int CodingPasses::refinementContext(int x, int y) {
    if (at(x, y).refined) return Refinement + 2;
    return around(x, y).any() ? Refinement + 1 : Refinement;
}

int CodingPasses::signContribution(int x, int y, int dx, int dy) const {
    const auto one = [&](const Sample* n) { return !n ? 0 : n->negative ? -1 : 1; };
    return std::clamp(one(seen(x, y, dx, dy)) + one(seen(x, y, -dx, -dy)), -1, 1);
}

// Tables D.2 and D.3. The label depends on the contributions up to a common change of sign, which the
// decision takes.
void CodingPasses::codeSign(int x, int y, bool raw) {
    int negative;
    if (raw) {
        negative = code(kRaw, signOf(x, y));
    } else {
        int h = signContribution(x, y, 1, 0), v = signContribution(x, y, 0, 1), flip = 0;
        if (h < 0 || (h == 0 && v < 0)) {
            h = -h;
            v = -v;
            flip = 1;
        }
        const int label = h == 1 ? 12 + v : 9 + v;
        negative = code(SignCoding + label - 9, signOf(x, y) ^ flip) ^ flip;
    }
    Sample& s = at(x, y);
    s.significant = true;
    s.negative = negative != 0;
    s.seenFromAbove = !(causal && y % 4 == 0);
    becameSignificant(x, y, negative);
}

template <class Visit> void CodingPasses::scan(Visit visit) {
    for (int stripe = 0; stripe < height; stripe += 4)
        for (int x = 0; x < width; ++x)
            for (int y = stripe; y < std::min(stripe + 4, height); ++y) visit(x, y);
}

void CodingPasses::significancePass(bool raw) {
    scan([&](int x, int y) {
        if (at(x, y).significant || !around(x, y).any()) return;
        at(x, y).visited = true;
        if (code(raw ? kRaw : zeroCodingContext(x, y), bitOf(x, y))) codeSign(x, y, raw);
    });
}

void CodingPasses::refinementPass(bool raw) {
    scan([&](int x, int y) {
        if (!at(x, y).significant || at(x, y).visited) return;
        refinedBy(x, y, code(raw ? kRaw : refinementContext(x, y), bitOf(x, y)));
        // A raw refinement leaves it open whether the next one is the first.
        if (!raw) at(x, y).refined = true;
    });
}

void CodingPasses::cleanupPass() {
    int doneTo = 0; // the rows of this column above this one are coded
    scan([&](int x, int y) {
        if (y % 4 == 0) {
            doneTo = y;
            bool quiet = y + 4 <= height;
            for (int i = y; quiet && i < y + 4; ++i)
                quiet = !at(x, i).significant && !at(x, i).visited && !around(x, i).any();
            if (quiet) {
                int first = 0;
                while (first < 4 && !bitOf(x, y + first)) ++first;
                if (code(RunLength, first < 4)) {
                    const int high = code(Uniform, first >> 1 & 1), low = code(Uniform, first & 1);
                    first = 2 * high + low;
                    codeSign(x, y + first, false);
                    doneTo = y + first + 1;
                } else {
                    doneTo = y + 4;
                }
            }
        }
        if (y >= doneTo && !at(x, y).significant && !at(x, y).visited && code(zeroCodingContext(x, y), bitOf(x, y)))
            codeSign(x, y, false);
        at(x, y).visited = false;
    });
}

// ---- decoder

void BlockDecoder::attach(void* dst, int dstStep, ZmxiSize size, int subband, int nBitPlanes, unsigned cbStyle) {
    style = cbStyle;
    samples = Samples(dst, dstStep);
    setBlock(size.width, size.height, subband, has(KeepFlags));
    setCausal(has(Causal));
    if (!has(KeepDst))
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) samples.set(x, y, 0);
    contexts.reset();
    bypassPlane = has(Bypass) && nBitPlanes > 4 ? nBitPlanes - 4 : 0;
    plane = int(std::uint32_t(nBitPlanes) - 1); // wraps
    passCounter = 0;
    next = Cleanup;
    damaged = false;
}

// Planes that no sample has room for count modulo 32.
static std::uint32_t atPlane(std::uint32_t bits, int plane) { return bits << (unsigned(plane) % 32); }

// With a midpoint in the bit below the plane.
void BlockDecoder::becameSignificant(int x, int y, int negative) {
    samples.set(x, y, (negative ? 0x80000000u : 0) | atPlane(3, plane) >> 1);
}

void BlockDecoder::refinedBy(int x, int y, int bit) {
    const std::uint32_t above = atPlane(~0u, plane) << 1, midpoint = atPlane(1, plane) >> 1;
    samples.set(x, y, (samples.get(x, y) & above) | atPlane(std::uint32_t(bit), plane) | midpoint);
}

int BlockDecoder::code(int context, int) { return context == kRaw ? rawBit() : mq.decode(contexts, context); }

int BlockDecoder::rawBit() {
    if (rawIndex < 0) {
        rawIndex = rawByte == 0xFF ? 6 : 7;
        rawByte = rawAt < rawLength ? rawData[rawAt] : 0xFF;
        ++rawAt;
    }
    return rawByte >> rawIndex-- & 1;
}

// The bits left over must be 0, 1, 0, 1 and so on.
bool BlockDecoder::rawEndsWrongly() const {
    for (int i = rawIndex, expected = 0; i >= 0; --i, expected ^= 1)
        if ((rawByte >> i & 1) != expected) return true;
    return false;
}

void BlockDecoder::startSegment(const std::uint8_t* segment, int length) {
    mq.start(segment, length);
    rawData = segment;
    rawLength = length;
    rawAt = 0;
    rawIndex = -1;
    rawByte = 0;
}

bool BlockDecoder::endMq(bool damage, bool test) {
    if (test) damage = mq.endsWrongly(); // this answer alone counts
    if (has(ResetCtx)) contexts.reset();
    return damage;
}
bool BlockDecoder::significance(bool test) {
    significancePass(false);
    return endMq(false, test);
}
bool BlockDecoder::refine(bool test) {
    refinementPass(false);
    return endMq(false, test);
}
bool BlockDecoder::cleanup(bool test) {
    cleanupPass();
    int symbol = 10;
    if (has(SegSym)) {
        symbol = 0;
        for (int i = 0; i < 4; ++i) symbol = 2 * symbol + code(Uniform, 0);
    }
    return endMq(symbol != 10, test);
}
bool BlockDecoder::significanceRaw(bool terminated) {
    significancePass(true);
    return terminated && rawEndsWrongly();
}
bool BlockDecoder::refineRaw() {
    refinementPass(true);
    return rawEndsWrongly();
}

ZmxStatus BlockDecoder::step(const std::uint8_t* segment, int length) {
    if (damaged) return zmxStsCBDamagedErr;
    if (passCounter <= 0 || plane < 0) return zmxStsNoErr;
    startSegment(segment, length);
    damaged = has(TermAll) ? stepOnePass() : stepOneSegment();
    return damaged ? zmxStsCBDamagedErr : zmxStsNoErr;
}

bool BlockDecoder::stepOnePass() {
    const bool test = has(ErrorPrediction);
    --passCounter;
    switch (next) {
    case Significance:
        next = Refine;
        return significance(test);
    case Refine:
        next = Cleanup;
        return refine(test);
    case RawSignificance:
        next = RawRefine;
        return significanceRaw(true);
    case RawRefine:
        next = CleanupAfterRaw;
        return refineRaw();
    default:
        break;
    }
    if (cleanup(test)) return true;
    --plane;
    next = next == Cleanup && plane >= bypassPlane ? Significance : RawSignificance;
    return false;
}

bool BlockDecoder::stepOneSegment() {
    const bool test = has(ErrorPrediction);
    if (next == CleanupAfterRaw) {
        if (cleanup(test)) return true;
        if (--passCounter > 0) {
            --plane;
            next = RawSignificance;
        }
        return false;
    }
    if (next == RawSignificance) {
        if (significanceRaw(false)) return true;
        if (--passCounter > 0) {
            if (refineRaw()) return true;
            next = CleanupAfterRaw;
            --passCounter;
        }
        return false;
    }
    for (;;) {
        if (cleanup(test && plane == bypassPlane)) return true;
        --passCounter;
        if (plane <= bypassPlane) {
            if (passCounter > 0) {
                --plane;
                next = RawSignificance;
            }
            return false;
        }
        if (passCounter <= 0) return false;
        --plane;
        if (significance(false)) return true;
        if (--passCounter <= 0) return false;
        if (refine(false)) return true;
        if (--passCounter <= 0) return false;
    }
}

ZmxStatus BlockDecoder::block(const std::uint8_t* src, void* dst, int dstStep, ZmxiSize size, int subband,
                              int nBitPlanes, int nPasses, const std::vector<int>& lengths, unsigned cbStyle,
                              int& errorPlane) {
    attach(dst, dstStep, size, subband, nBitPlanes, cbStyle);
    passCounter = nPasses;
    ZmxStatus status = zmxStsNoErr;
    for (int length : lengths) {
        status = step(src, length);
        if (status) break;
        src += length;
    }
    const auto each = [&](auto change) {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) samples.set(x, y, change(samples.get(x, y)));
    };
    const std::uint32_t below = plane < 1 ? 0 : atPlane(1, plane) - 1;
    if (status == zmxStsCBDamagedErr) {
        errorPlane = plane;
        if (has(Conceal))
            each([&](std::uint32_t v) {
                v &= ~below;
                return v & 0x7FFFFFFF ? v | (below + 1) : 0;
            });
    }
    if (!has(KeepMidpoint)) each([&](std::uint32_t v) { return v & ~below; });
    return status;
}

// ---- encoder

int BlockEncoder::code(int context, int value) {
    passes.back().decisions.push_back({context, value});
    return value;
}

// The magnitude's bits from the plane's (7 bits) or below it (6 bits), zeros where there are none.
int BlockEncoder::fraction(int x, int y, int bits) const {
    const std::uint64_t scaled = std::uint64_t(samples.get(x, y) & 0x7FFFFFFF) << 6 >> plane;
    return int(scaled & ((1u << bits) - 1));
}

// What an error goes down by, from all of v (1 up to 2) to its distance from the midpoint, or to nothing; in
// 1/8192.
void BlockEncoder::becameSignificant(int x, int y, int) {
    const int k = fraction(x, y, 6), v = 64 + k;
    const int before = 2 * v * v, after = 2 * (v - 96) * (v - 96);
    const bool exact = has(Lossless) && plane == basePlane;
    passes.back().distortion += exact ? before : before - after;
}

// The same from the midpoint 1 of the interval 0 up to 2 to the midpoint of the half, or to nothing.
void BlockEncoder::refinedBy(int x, int y, int) {
    const int v = fraction(x, y, 7), midpoint = v < 64 ? 32 : 96;
    const int before = 2 * (v - 64) * (v - 64), after = 2 * (v - midpoint) * (v - midpoint);
    const bool exact = has(Lossless) && plane == basePlane;
    passes.back().distortion += exact ? before : before - after;
}

void BlockEncoder::beginPass(bool raw) {
    passes.emplace_back();
    passes.back().raw = raw;
    passes.back().exponent = 2 * (plane - basePlane) - 13;
}

void BlockEncoder::load(const void* src, int srcStep, ZmxiSize size, int subband, int magnBits, int mqTermType,
                        unsigned codeStyle) {
    *this = BlockEncoder();
    samples = Samples(const_cast<void*>(src), srcStep);
    style = codeStyle;
    method = mqTermType;
    basePlane = 31 - magnBits;
    setBlock(size.width, size.height, subband, false);
    setCausal(has(Causal));
    std::uint32_t largest = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) largest = std::max(largest, samples.get(x, y) & 0x7FFFFFFF);
    while (largest >> sfBits) ++sfBits;

    for (plane = sfBits - 1; plane >= basePlane; --plane) {
        const bool raw = has(Bypass) && plane < sfBits - 4;
        if (plane < sfBits - 1) {
            beginPass(raw);
            significancePass(raw);
            beginPass(raw);
            refinementPass(raw);
        }
        beginPass(false);
        cleanupPass();
        if (has(SegSym))
            for (int bit : {1, 0, 1, 0}) code(Uniform, bit);
    }
}

bool BlockEncoder::segmentEndsBehind(std::size_t i) const {
    return has(TermAll) || i + 1 == passes.size() || passes[i].raw != passes[i + 1].raw;
}

int BlockEncoder::segments() const {
    if (passes.empty()) return has(TermAll) ? 0 : 1;
    int n = 0;
    for (std::size_t i = 0; i < passes.size(); ++i) n += segmentEndsBehind(i);
    return n;
}

int BlockEncoder::segmentLength(int segment) const {
    int sum = 0;
    for (std::size_t i = 0; i < passes.size(); ++i) {
        if (segment == 0) sum += passes[i].bytes;
        if (segmentEndsBehind(i)) --segment;
    }
    return sum;
}

double BlockEncoder::distortion(int pass) const {
    Extended sum = 0;
    for (int i = 0; i <= pass; ++i) {
        const Pass& p = passes[std::size_t(i)];
        // An integer power of two whose shift count goes modulo 32, as a signed 32-bit value.
        const auto power = [](int e) { return double(std::int32_t(1u << (e & 31))); };
        sum = sum + Extended(p.distortion) * Extended(p.exponent > 0 ? power(p.exponent) : 1 / power(-p.exponent));
    }
    return double(sum);
}

void BlockEncoder::give(int byte) {
    given.push_back(std::uint8_t(byte));
    ++passBytes;
}

void BlockEncoder::drain() {
    while (!mq.out.empty() && room()) {
        give(mq.out.front());
        mq.out.erase(mq.out.begin());
    }
}

void BlockEncoder::codeRaw(int value) {
    rawByte |= value << rawBits;
    if (--rawBits >= 0) return;
    give(rawByte);
    rawLastFF = rawByte == 0xFF;
    rawBits = rawLastFF ? 6 : 7;
    rawByte = 0;
}

// Codes what it can of the current pass. True when the pass is done with.
bool BlockEncoder::codePass(bool last) {
    const Pass& pass = passes[current];
    drain();
    while (position < pass.decisions.size() && room()) {
        const Decision& d = pass.decisions[position++];
        if (pass.raw)
            codeRaw(d.value);
        else
            mq.encode(contexts, d.context, d.value);
        drain();
    }
    if (position < pass.decisions.size() || !mq.out.empty()) return false;
    if (!last) return true;
    if (pass.raw) {
        if (!room()) return false;
        if (!rawIsClean()) {
            for (int bit = 0; rawBits >= 0; bit ^= 1) rawByte |= bit << rawBits--;
            give(rawByte);
        }
        rawByte = 0;
        rawBits = 7;
        rawLastFF = false;
        return true;
    }
    if (mq.pending) {
        if (!room()) return false;
        mq.terminate(method);
        drain();
        if (!mq.out.empty()) return false;
    }
    mq.restart();
    return true;
}

void BlockEncoder::finishPass() {
    totalBytes += passBytes;
    int slack = 0;
    if (passes[current].raw) {
        slack = rawIsClean() ? 0 : 1;
    } else if (mq.pending) {
        slack = 27 - mq.ct > (mq.b >= 254 ? 22 : 23) ? 5 : 4;
        if (mq.bytesOut == 0) --slack;
    }
    passes[current].rate = totalBytes + slack;
    if (slack == 0)
        for (std::size_t i = current; i > 0 && passes[i].rate < passes[i - 1].rate; --i)
            passes[i - 1].rate = passes[i].rate;
    passes[current].bytes = passBytes;
    ++current;
    position = 0;
    passBytes = 0;
    if (has(ResetCtx)) contexts.reset();
}

int BlockEncoder::store(std::uint8_t* dst, int room_, bool& more) {
    given.clear();
    capacity = room_;
    while (current < passes.size() && room())
        if (codePass(segmentEndsBehind(current))) finishPass();
    const int end = totalBytes + passBytes, start = end - int(given.size());
    for (std::size_t i = 0; i < current; ++i) {
        int& rate = passes[i].rate;
        if (rate > start && rate <= end && given[std::size_t(rate - 1 - start)] == 0xFF) --rate;
    }
    std::copy(given.begin(), given.end(), dst);
    more = current < passes.size();
    return int(given.size());
}

} // namespace model
