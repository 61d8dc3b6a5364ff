// blocks.cpp - digests of quantisation tables and of 8x8 blocks between samples and quantised coefficients.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

namespace {

constexpr int kRounds = 20; // blocks of each kind

// Divisors as a DQT segment holds them, and what the library makes of them.
struct Tables {
    Zmx8u raw[64];
    Zmx16u forward[64], inverse[64];

    explicit Tables(Random& random) {
        const int most = random.oneIn(3) ? 255 : 16;
        for (Zmx8u& divisor : raw) divisor = Zmx8u(random.range(1, most));
        zmxiQuantFwdTableInit_JPEG_8u16u(raw, forward);
        zmxiQuantInvTableInit_JPEG_8u16u(raw, inverse);
    }
};

// Tables of single precision by their bits: factors of usual size, and any bits at all. Aligned as floats.
struct FloatTable {
    alignas(float) std::uint8_t memory[256];

    FloatTable(Random& random, bool any) {
        for (std::size_t i = 0; i < 64; ++i) {
            const std::uint32_t usual = std::uint32_t(127 - 10 + random.range(0, 14)) << 23;
            const std::uint32_t noise = std::uint32_t(random.next() >> 32);
            const std::uint32_t bits = any ? noise : usual | (noise & 0x7FFFFF);
            std::memcpy(memory + 4 * i, &bits, 4);
        }
    }
    const Zmx32f* data() const { return reinterpret_cast<const Zmx32f*>(memory); }
};

// Coefficients as they are: mostly zeros behind a point, or samples of a kind.
void coefficients(Random& random, Kind kind, Zmx16s (&block)[64]) {
    Samples<Zmx16s> samples(random, kind);
    const int filled = random.oneIn(3) ? 64 : random.range(1, 20);
    for (int i = 0; i < 64; ++i) block[i] = i < filled ? samples.next() : Zmx16s(0);
}

// body(random, digest, kind) for a number of rounds of each kind.
template <class Body> void rounds(Report& report, const std::string& name, Body body) {
    report.add(name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < kRounds; ++round)
            for (Kind kind : kKinds) body(random, digest, kind);
    });
}

// A block to a block; forward and inverse share the signature.
void blockToBlock(Report& report, const Named<ZmxStatus(const Zmx16s*, Zmx16s*, const Zmx16u*)>& function,
                  bool forward) {
    rounds(report, function.name, [&](Random& random, Digest& digest, Kind kind) {
        const Tables tables(random);
        Zmx16s block[64], result[64] = {};
        coefficients(random, kind, block);
        digest.value(function.call(block, result, forward ? tables.forward : tables.inverse)).values(result, 64);
    });
    Zmx16s some[64] = {};
    Zmx16u table[64] = {};
    badArguments(report, function, some, some, table);
}

// A block in place: transforms and quantisers.
void inPlace(Report& report, const Named<ZmxStatus(Zmx16s*, const Zmx16u*)>& function, bool forward) {
    rounds(report, function.name, [&](Random& random, Digest& digest, Kind kind) {
        const Tables tables(random);
        Zmx16s block[64];
        coefficients(random, kind, block);
        digest.value(function.call(block, forward ? tables.forward : tables.inverse)).values(block, 64);
    });
    // Factors that no divisor gives: forward any 16 bits, inverse up to 32767.
    rounds(report, function.name + ": any table", [&](Random& random, Digest& digest, Kind kind) {
        Zmx16s block[64];
        coefficients(random, kind, block);
        Zmx16u table[64];
        for (Zmx16u& factor : table) factor = Zmx16u(random.range(0, forward ? 65535 : 32767));
        digest.value(function.call(block, table)).values(block, 64);
    });
    Zmx16s some[64] = {};
    Zmx16u table[64] = {};
    badArguments(report, function, some, table);
}

void samplesToBlock(Report& report) {
    const auto function = NAMED(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R);
    rounds(report, function.name, [&](Random& random, Digest& digest, Kind kind) {
        const Tables tables(random);
        Plane<Zmx8u> samples(random, kind, 8, 8, 3);
        Zmx16s result[64] = {};
        digest.value(function.call(samples.data(), samples.step(), result, tables.forward)).values(result, 64);
    });
    Zmx8u some[64] = {};
    Zmx16s block[64] = {};
    Zmx16u table[64] = {};
    badArguments(report, function, some, Least{8}, block, table);
}

// A block to `size` rows of samples; how many of its coefficients count differs.
void blockToSamples(Report& report, const Named<ZmxStatus(const Zmx16s*, Zmx8u*, int, const Zmx16u*)>& function,
                    int size) {
    rounds(report, function.name, [&](Random& random, Digest& digest, Kind kind) {
        const Tables tables(random);
        Zmx16s block[64];
        coefficients(random, kind, block);
        Plane<Zmx8u> samples(random, Kind::Full, size, size, random.range(0, 5));
        digest.value(function.call(block, samples.data(), samples.step(), tables.inverse));
        samples.digest(digest);
    });
    Zmx16s block[64] = {};
    Zmx8u some[64] = {};
    Zmx16u table[64] = {};
    badArguments(report, function, block, some, Least{8}, table);
}

// The paths of 12-bit samples, in single precision: with usual tables, and with tables of any bits, NaNs and infinities
// among them.
void deepSamples(Report& report, bool any) {
    const std::string mode = any ? ": any table" : "";
    const auto forward = NAMED(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R);
    rounds(report, forward.name + mode, [&](Random& random, Digest& digest, Kind kind) {
        const FloatTable table(random, any);
        Plane<Zmx16u> samples(random, kind, 8, 8, 2);
        Zmx16s result[64] = {};
        digest.value(forward.call(samples.data(), samples.step(), result, table.data())).values(result, 64);
    });
    const auto inverse = NAMED(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R);
    rounds(report, inverse.name + mode, [&](Random& random, Digest& digest, Kind kind) {
        const FloatTable table(random, any);
        Zmx16s block[64];
        coefficients(random, kind, block);
        Plane<Zmx16u> samples(random, Kind::Full, 8, 8, 2);
        digest.value(inverse.call(block, samples.data(), samples.step(), table.data()));
        samples.digest(digest);
    });
    if (any) return;
    Zmx16u samples[64] = {};
    Zmx16s block[64] = {};
    Zmx32f table[64] = {};
    badArguments(report, forward, samples, Least{16}, block, table);
    badArguments(report, inverse, block, samples, Least{16}, table);
}

void quantisationTables(Report& report) {
    const auto scale = NAMED(zmxiQuantFwdRawTableInit_JPEG_8u);
    report.add(scale.name, [&](Random& random, Digest& digest) {
        for (int quality = 1; quality < 130; ++quality) {
            Zmx8u table[64];
            for (Zmx8u& divisor : table) divisor = Zmx8u(random.range(0, 255));
            digest.value(scale.call(table, quality)).values(table, 64);
        }
        for (int quality : {1000, 4000000, 5000000, 100000000, 2147483647}) { // products that wrap
            Zmx8u table[64];
            for (Zmx8u& divisor : table) divisor = Zmx8u(random.range(0, 255));
            digest.value(scale.call(table, quality)).values(table, 64);
        }
    });
    Zmx8u raw[64] = {};
    Zmx16u table[64] = {};
    badArguments(report, scale, raw, Least{50});

    const auto init = [&](const auto& function) {
        report.add(function.name, [&](Random& random, Digest& digest) {
            for (int first = 0; first < 256; first += 64) { // every divisor, zero too
                for (int i = 0; i < 64; ++i) raw[i] = Zmx8u(first + i);
                digest.value(function.call(raw, table)).values(table, 64);
            }
            for (Zmx8u& divisor : raw) divisor = Zmx8u(random.range(1, 255));
            digest.value(function.call(raw, table)).values(table, 64);
        });
        badArguments(report, function, raw, table);
    };
    init(NAMED(zmxiQuantFwdTableInit_JPEG_8u16u));
    init(NAMED(zmxiQuantInvTableInit_JPEG_8u16u));
}

} // namespace

void blockDigests(Report& report) {
    quantisationTables(report);
    blockToBlock(report, NAMED(zmxiDCTQuantFwd8x8_JPEG_16s_C1), true);
    blockToBlock(report, NAMED(zmxiDCTQuantInv8x8_JPEG_16s_C1), false);
    inPlace(report, NAMED(zmxiDCTQuantFwd8x8_JPEG_16s_C1I), true);
    inPlace(report, NAMED(zmxiDCTQuantInv8x8_JPEG_16s_C1I), false);
    inPlace(report, NAMED(zmxiQuantFwd8x8_JPEG_16s_C1I), true);
    inPlace(report, NAMED(zmxiQuantInv8x8_JPEG_16s_C1I), false);
    samplesToBlock(report);
    blockToSamples(report, NAMED(zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R), 8);
    blockToSamples(report, NAMED(zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R), 8);
    blockToSamples(report, NAMED(zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R), 8);
    blockToSamples(report, NAMED(zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R), 8);
    blockToSamples(report, NAMED(zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R), 2);
    blockToSamples(report, NAMED(zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R), 4);
    deepSamples(report, false);
    deepSamples(report, true);
}
