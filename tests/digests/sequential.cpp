// sequential.cpp - digests of the coding of sequential JPEG blocks.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/entropy.h"

namespace {

constexpr int kStreams = 12, kBlocks = 30;

struct Scan {
    Lists dc, ac;
    std::vector<Coefficients> blocks;

    explicit Scan(Random& random) : dc(listsFor(random, 17)), ac(listsFor(random, 256)) {
        const int largest = random.oneIn(4) ? 32767 : 1023;
        for (int i = 0; i < kBlocks; ++i) blocks.emplace_back(random, largest);
    }
};

// Writes the blocks of a scan and flushes; digests every status, and the bytes.
void encode(const Scan& scan, Writer& writer, Digest& digest) {
    EncodeTable dc(scan.dc), ac(scan.ac);
    Zmx16s lastDC = 0;
    const auto call = [&](const Zmx16s* block, int flush) {
        digest.value(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(block, writer.bytes.data(), writer.capacity(), &writer.position,
                                                        &lastDC, dc.get(), ac.get(), writer.state.get(), flush));
        digest.value(writer.position).value(lastDC);
    };
    for (const Coefficients& block : scan.blocks) call(block.at, 0);
    call(nullptr, 1);
    digest.values(writer.written());
}

// Reads blocks until a status that is none of success; digests all that comes out.
void decode(const Scan& scan, const std::vector<Zmx8u>& stream, Digest& digest) {
    DecodeTable dc(scan.dc), ac(scan.ac);
    Reader reader(stream);
    Zmx16s lastDC = 0;
    for (int i = 0; i < kBlocks; ++i) {
        Coefficients block;
        const ZmxStatus status =
            zmxiDecodeHuffman8x8_JPEG_1u16s_C1(reader.bytes.data(), reader.length(), &reader.position, block.at,
                                               &lastDC, &reader.marker, dc.get(), ac.get(), reader.state.get());
        digest.value(status).value(lastDC).values(block.at, 64);
        reader.digest(digest);
        if (status != zmxStsNoErr) break;
    }
}

std::vector<Zmx8u> encodeDirectly(const Scan& scan, Digest& digest) {
    EncodeTable dc(scan.dc), ac(scan.ac);
    std::vector<Zmx8u> bytes(kBlocks * 600 + 8);
    int bits = 0;
    Zmx16s lastDC = 0;
    for (const Coefficients& block : scan.blocks) {
        const ZmxStatus status =
            zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(block.at, bytes.data(), &bits, &lastDC, dc.get(), ac.get());
        digest.value(status).value(bits).value(lastDC);
    }
    bytes.resize(std::size_t(bits + 7) / 8);
    digest.values(bytes);
    return bytes;
}

void decodeDirectly(const Scan& scan, std::vector<Zmx8u> stream, Digest& digest) {
    DecodeTable dc(scan.dc), ac(scan.ac);
    for (int byte : {0xFF, 0xD9, 0, 0, 0, 0, 0, 0}) stream.push_back(Zmx8u(byte)); // it has no end but the marker
    int bits = 0, marker = 0;
    Zmx32u prefetched = 0;
    Zmx32s valid = 0;
    Zmx16s lastDC = 0;
    for (int i = 0; i < kBlocks; ++i) {
        Coefficients block;
        const ZmxStatus status = zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(
            stream.data(), &bits, block.at, &lastDC, &marker, &prefetched, &valid, dc.get(), ac.get());
        digest.value(status).value(lastDC).value(bits).value(marker).values(block.at, 64);
        if (status != zmxStsNoErr || valid < 0) break;
    }
}

void streams(Report& report) {
    const std::string encoder = "zmxiEncodeHuffman8x8_JPEG_16s1u_C1", decoder = "zmxiDecodeHuffman8x8_JPEG_1u16s_C1";
    report.add(encoder, [](Random& random, Digest& digest) {
        for (int i = 0; i < kStreams; ++i) {
            Writer writer(kBlocks * 600);
            encode(Scan(random), writer, digest);
        }
    });
    report.add(encoder + ": a short destination", [](Random& random, Digest& digest) {
        for (int i = 0; i < kStreams; ++i) {
            Writer writer(std::size_t(random.range(1, 500)));
            encode(Scan(random), writer, digest);
        }
    });
    const auto decodes = [&](const std::string& name, auto change) {
        report.add(name, [&](Random& random, Digest& digest) {
            for (int i = 0; i < kStreams; ++i) {
                const Scan scan(random);
                Writer writer(kBlocks * 600);
                Digest ignored;
                encode(scan, writer, ignored);
                decode(scan, change(random, writer.written()), digest);
            }
        });
    };
    decodes(decoder, [](Random&, const std::vector<Zmx8u>& stream) { return stream; });
    decodes(decoder + ": damaged streams", damaged);
}

void directStreams(Report& report) {
    const std::string encoder = "zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1",
                      decoder = "zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1";
    report.add(encoder, [](Random& random, Digest& digest) {
        for (int i = 0; i < kStreams; ++i) encodeDirectly(Scan(random), digest);
    });
    report.add(decoder, [](Random& random, Digest& digest) {
        for (int i = 0; i < kStreams; ++i) {
            const Scan scan(random);
            Digest ignored;
            decodeDirectly(scan, encodeDirectly(scan, ignored), digest);
        }
    });
}

void statistics(Report& report) {
    const auto function = NAMED(zmxiGetHuffmanStatistics8x8_JPEG_16s_C1);
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int i = 0; i < kStreams; ++i) {
            const Scan scan(random);
            Zmx32u dc[257] = {}, ac[257] = {};
            Zmx16s lastDC = 0;
            for (const Coefficients& block : scan.blocks)
                digest.value(function.call(block.at, dc, ac, &lastDC)).value(lastDC);
            digest.values(dc, 257).values(ac, 257);
        }
    });
    Zmx16s block[64] = {}, lastDC = 0;
    Zmx32u counts[257] = {};
    badArguments(report, function, block, counts, counts, &lastDC);
}

void refusals(Report& report) {
    Zmx16s block[64] = {}, lastDC = 0;
    Zmx8u bytes[8] = {};
    int position = 0, marker = 0;
    Zmx32u prefetched = 0;
    Zmx32s valid = 0;
    const Lists lists;
    EncodeTable encodeTable(lists);
    DecodeTable decodeTable(lists);
    EncodeState encodeState;
    DecodeState decodeState;
    badArguments(report, NAMED(zmxiEncodeHuffman8x8_JPEG_16s1u_C1), block, bytes, Least{8}, &position, &lastDC,
                 encodeTable.get(), encodeTable.get(), encodeState.get(), 0);
    badArguments(report, NAMED(zmxiDecodeHuffman8x8_JPEG_1u16s_C1), bytes, Least{8, 0}, &position, block, &lastDC,
                 &marker, decodeTable.get(), decodeTable.get(), decodeState.get());
    badArguments(report, NAMED(zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1), block, bytes, &position, &lastDC,
                 encodeTable.get(), encodeTable.get());
    badArguments(report, NAMED(zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1), bytes, &position, block, &lastDC, &marker,
                 &prefetched, &valid, decodeTable.get(), decodeTable.get());
}

} // namespace

void sequentialDigests(Report& report) {
    streams(report);
    directStreams(report);
    statistics(report);
    refusals(report);
}
