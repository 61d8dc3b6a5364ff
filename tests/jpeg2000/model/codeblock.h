// codeblock.h - the coding passes of ISO/IEC 15444-1 Annex D on plain arrays: a decoder and an encoder of
// code blocks.
//
// A sample's state is kept in separate arrays, and every context is computed from the neighbours when it is
// needed.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg2000/model/mq.h"
#include "zmxj/types.h"

#include <cstdint>
#include <vector>

namespace model {

// Style flags.
inline constexpr unsigned Causal = 0x1, Bypass = 0x2, TermAll = 0x4, ResetCtx = 0x8, SegSym = 0x10, Lossless = 0x20,
                          Conceal = 0x10000, KeepDst = 0x20000, KeepMidpoint = 0x40000, KeepFlags = 0x80000,
                          ErrorPrediction = 0x100000;

// The scan, the contexts and the state of the samples. Both coders hand every decision through code(): the
// encoder records the value that it is given, the decoder disregards it and answers with what the segment
// says.
class CodingPasses {
protected:
    ~CodingPasses() = default;
    void setBlock(int width, int height, int subband, bool keepState);
    void setCausal(bool on) { causal = on; }

    void significancePass(bool raw);
    void refinementPass(bool raw);
    void cleanupPass();

    static constexpr int kRaw = -1; // the "context" of a plain bit
    virtual int code(int context, int value) = 0;
    virtual int bitOf(int x, int y) const = 0; // of the current plane
    virtual int signOf(int x, int y) const = 0;
    virtual void becameSignificant(int x, int y, int negative) = 0;
    virtual void refinedBy(int x, int y, int bit) = 0;

    int width = 0, height = 0;

private:
    struct Sample {
        bool significant = false, negative = false, visited = false, refined = false;
        bool seenFromAbove = false; // its significance is known to the stripe above
    };
    // The number of significant neighbours across, up and down, and on the diagonals.
    struct Around {
        int h, v, d;
        bool any() const { return h || v || d; }
    };

    Sample& at(int x, int y) { return samples[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
    const Sample* seen(int x, int y, int dx, int dy) const;
    Around around(int x, int y) const;
    int zeroCodingContext(int x, int y) const;
    int refinementContext(int x, int y);
    int signContribution(int x, int y, int dx, int dy) const;
    void codeSign(int x, int y, bool raw);
    template <class Visit> void scan(Visit visit);

    int band = 0;
    bool causal = false;
    std::vector<Sample> samples;
};

// Sign-magnitude samples in rows that stand any number of bytes apart.
class Samples {
    std::uint8_t* base = nullptr;
    int step = 0;

public:
    Samples() = default;
    Samples(void* p, int s) : base(static_cast<std::uint8_t*>(p)), step(s) {}
    std::uint32_t get(int x, int y) const;
    void set(int x, int y, std::uint32_t v) const;
};

class BlockDecoder : private CodingPasses {
public:
    void attach(void* dst, int dstStep, ZmxiSize size, int subband, int nBitPlanes, unsigned style);
    ZmxStatus step(const std::uint8_t* segment, int length);
    // Everything in one go; errorPlane is written after damage only.
    ZmxStatus block(const std::uint8_t* src, void* dst, int dstStep, ZmxiSize size, int subband, int nBitPlanes,
                    int nPasses, const std::vector<int>& lengths, unsigned style, int& errorPlane);

    int passCounter = 0, plane = -1;

private:
    enum Next { Cleanup, Refine, Significance, CleanupAfterRaw, RawRefine, RawSignificance };

    int code(int context, int value) override;
    int bitOf(int, int) const override { return 0; }
    int signOf(int, int) const override { return 0; }
    void becameSignificant(int x, int y, int negative) override;
    void refinedBy(int x, int y, int bit) override;

    bool has(unsigned flag) const { return (style & flag) != 0; }
    void startSegment(const std::uint8_t* segment, int length);
    int rawBit();
    bool rawEndsWrongly() const;
    bool endMq(bool damage, bool test);
    bool significance(bool test);
    bool refine(bool test);
    bool cleanup(bool test);
    bool significanceRaw(bool terminated);
    bool refineRaw();
    bool stepOnePass();
    bool stepOneSegment();

    Samples samples;
    unsigned style = 0;
    int bypassPlane = 0;
    Next next = Cleanup;
    bool damaged = false;
    MqDecoder mq;
    MqContexts contexts;

    const std::uint8_t* rawData = nullptr;
    int rawLength = 0, rawAt = 0, rawIndex = -1, rawByte = 0;
};

class BlockEncoder : private CodingPasses {
public:
    void load(const void* src, int srcStep, ZmxiSize size, int subband, int magnBits, int mqTermType, unsigned style);
    // As many bytes as fit. Tells how many; more is set while there are others.
    int store(std::uint8_t* dst, int capacity, bool& more);

    double distortion(int pass) const;
    int rate(int pass) const { return passes[std::size_t(pass)].rate; }
    int segmentLength(int segment) const;
    int segments() const;
    int passCount() const { return int(passes.size()); }
    int significantBits() const { return sfBits; }

private:
    struct Decision {
        int context, value;
    };
    struct Pass {
        bool raw = false;
        std::vector<Decision> decisions;
        std::int32_t distortion = 0;
        int exponent = 0;
        int bytes = 0, rate = 0;
    };

    int code(int context, int value) override;
    int bitOf(int x, int y) const override { return int(samples.get(x, y) >> plane & 1); }
    int signOf(int x, int y) const override { return int(samples.get(x, y) >> 31); }
    void becameSignificant(int x, int y, int negative) override;
    void refinedBy(int x, int y, int bit) override;

    bool has(unsigned flag) const { return (style & flag) != 0; }
    bool segmentEndsBehind(std::size_t pass) const;
    int fraction(int x, int y, int bits) const;
    void beginPass(bool raw);

    bool codePass(bool last);
    void codeRaw(int value);
    bool rawIsClean() const { return rawBits == 7 - (rawLastFF ? 1 : 0); }
    void finishPass();
    void give(int byte);
    void drain();
    bool room() const { return int(given.size()) < capacity; }

    Samples samples;
    unsigned style = 0;
    int sfBits = 0, plane = 0, basePlane = 0, method = 0;
    std::vector<Pass> passes;

    // The store.
    std::vector<std::uint8_t> given; // in this call
    int capacity = 0;
    MqEncoder mq;
    MqContexts contexts;
    std::size_t current = 0, position = 0;
    int passBytes = 0, totalBytes = 0;
    int rawByte = 0, rawBits = 7;
    bool rawLastFF = false;
};

} // namespace model
