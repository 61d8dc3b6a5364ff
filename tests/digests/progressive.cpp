// progressive.cpp - digests of the coding of progressive JPEG scans.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/entropy.h"

namespace {

constexpr int kStreams = 10, kBlocks = 60;

// A band of a component, its tables and its blocks.
struct Scan {
    Lists lists;
    int Ss, Se, Al;
    std::vector<Coefficients> blocks;

    Scan(Random& random, bool dc) : lists(listsFor(random, dc ? 12 : 256)) {
        Ss = dc ? 0 : random.range(1, 63);
        Se = dc ? 0 : random.range(Ss, 63);
        Al = random.oneIn(5) ? random.range(0, 13) : random.range(0, 2);
        for (int i = 0; i < kBlocks; ++i) blocks.emplace_back(random, random.oneIn(20) ? 5000 : 1000);
    }
};

// Each coder has its own arguments; call(scan, block or null for a flush, writer) hides them.
template <class Call> void encode(const Scan& scan, Writer& writer, Digest& digest, Call call) {
    EncodeTable table(scan.lists);
    Zmx16s lastDC = 0;
    for (const Coefficients& block : scan.blocks)
        digest.value(call(scan, block.at, writer, table.get(), &lastDC, 0)).value(writer.position).value(lastDC);
    digest.value(call(scan, nullptr, writer, table.get(), &lastDC, 1)).value(writer.position);
    digest.values(writer.written());
}

// A decoder on blocks that hold what `known` leaves of the coefficients.
template <class Call, class Known>
void decode(const Scan& scan, const std::vector<Zmx8u>& stream, Digest& digest, Call call, Known known) {
    DecodeTable table(scan.lists);
    Reader reader(stream);
    Zmx16s lastDC = 0;
    for (const Coefficients& original : scan.blocks) {
        Coefficients block;
        for (int i = 0; i < 64; ++i) block.at[i] = known(original.at[i], scan.Al);
        const ZmxStatus status = call(scan, reader, block.at, table.get(), &lastDC);
        digest.value(status).value(lastDC).values(block.at, 64);
        reader.digest(digest);
        if (status != zmxStsNoErr) break;
    }
}

// The digests of an encoder and its decoder.
template <class Encode, class Decode, class Known>
void coder(Report& report, const std::string& encoder, const std::string& decoder, bool dc, Encode encodeCall,
           Decode decodeCall, Known known) {
    const auto encodes = [&](const std::string& name, auto capacity) {
        report.add(name, [&](Random& random, Digest& digest) {
            for (int i = 0; i < kStreams; ++i) {
                Writer writer(capacity(random));
                encode(Scan(random, dc), writer, digest, encodeCall);
            }
        });
    };
    encodes(encoder, [](Random&) { return std::size_t(kBlocks * 400); });
    encodes(encoder + ": a short destination", [](Random& random) { return std::size_t(random.range(1, 300)); });
    const auto decodes = [&](const std::string& name, auto change) {
        report.add(name, [&](Random& random, Digest& digest) {
            for (int i = 0; i < kStreams; ++i) {
                const Scan scan(random, dc);
                Writer writer(kBlocks * 400);
                Digest ignored;
                encode(scan, writer, ignored, encodeCall);
                decode(scan, change(random, writer.written()), digest, decodeCall, known);
            }
        });
    };
    decodes(decoder, [](Random&, const std::vector<Zmx8u>& stream) { return stream; });
    decodes(decoder + ": damaged streams", damaged);
}

// What an earlier scan has brought: nothing, or the magnitude down to the bit above Al.
Zmx16s nothing(Zmx16s, int) { return 0; }
Zmx16s magnitudeAbove(Zmx16s v, int Al) {
    const int magnitude = (v < 0 ? -int(v) : int(v)) >> (Al + 1) << (Al + 1);
    return Zmx16s(v < 0 ? -magnitude : magnitude);
}

void dcScans(Report& report) {
    coder(
        report, "zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1", "zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1", true,
        [](const Scan& scan, const Zmx16s* block, Writer& w, const ZmxiEncodeHuffmanSpec* table, Zmx16s* lastDC,
           int flush) {
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(block, w.bytes.data(), w.capacity(), &w.position, lastDC,
                                                              scan.Al, table, w.state.get(), flush);
        },
        [](const Scan& scan, Reader& r, Zmx16s* block, const ZmxiDecodeHuffmanSpec* table, Zmx16s* lastDC) {
            return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(r.bytes.data(), r.length(), &r.position, block, lastDC,
                                                              &r.marker, scan.Al, table, r.state.get());
        },
        nothing);
    coder(
        report, "zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1", "zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1", true,
        [](const Scan& scan, const Zmx16s* block, Writer& w, const ZmxiEncodeHuffmanSpec*, Zmx16s*, int flush) {
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block, w.bytes.data(), w.capacity(), &w.position,
                                                               scan.Al, w.state.get(), flush);
        },
        [](const Scan& scan, Reader& r, Zmx16s* block, const ZmxiDecodeHuffmanSpec*, Zmx16s*) {
            return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(r.bytes.data(), r.length(), &r.position, block,
                                                               &r.marker, scan.Al, r.state.get());
        },
        nothing);
}

void acScans(Report& report) {
    coder(
        report, "zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1", "zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1", false,
        [](const Scan& scan, const Zmx16s* block, Writer& w, const ZmxiEncodeHuffmanSpec* table, Zmx16s*, int flush) {
            return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(block, w.bytes.data(), w.capacity(), &w.position, scan.Ss,
                                                              scan.Se, scan.Al, table, w.state.get(), flush);
        },
        [](const Scan& scan, Reader& r, Zmx16s* block, const ZmxiDecodeHuffmanSpec* table, Zmx16s*) {
            return zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(r.bytes.data(), r.length(), &r.position, block, &r.marker,
                                                              scan.Ss, scan.Se, scan.Al, table, r.state.get());
        },
        nothing);
    coder(
        report, "zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1", "zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1", false,
        [](const Scan& scan, const Zmx16s* block, Writer& w, const ZmxiEncodeHuffmanSpec* table, Zmx16s*, int flush) {
            return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(block, w.bytes.data(), w.capacity(), &w.position,
                                                               scan.Ss, scan.Se, scan.Al, table, w.state.get(), flush);
        },
        [](const Scan& scan, Reader& r, Zmx16s* block, const ZmxiDecodeHuffmanSpec* table, Zmx16s*) {
            return zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(r.bytes.data(), r.length(), &r.position, block,
                                                               &r.marker, scan.Ss, scan.Se, scan.Al, table,
                                                               r.state.get());
        },
        magnitudeAbove);
}

void statistics(Report& report) {
    const auto dc = NAMED(zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1);
    report.add(dc.name, [&](Random& random, Digest& digest) {
        for (int i = 0; i < kStreams; ++i) {
            const Scan scan(random, true);
            Zmx32u counts[257] = {};
            Zmx16s lastDC = 0;
            for (const Coefficients& block : scan.blocks)
                digest.value(dc.call(block.at, counts, &lastDC, scan.Al)).value(lastDC);
            digest.values(counts, 257);
        }
    });
    const auto ac = [&](const auto& function) {
        report.add(function.name, [&](Random& random, Digest& digest) {
            for (int i = 0; i < kStreams; ++i) {
                const Scan scan(random, false);
                EncodeState state;
                Zmx32u counts[257] = {};
                for (const Coefficients& block : scan.blocks)
                    digest.value(function.call(block.at, counts, scan.Ss, scan.Se, scan.Al, state.get(), 0));
                digest.value(function.call(nullptr, counts, scan.Ss, scan.Se, scan.Al, state.get(), 1));
                digest.values(counts, 257);
            }
        });
        Zmx16s block[64] = {};
        Zmx32u counts[257] = {};
        EncodeState state;
        badArguments(report, function, block, counts, Least{1}, Least{5, 1}, Least{0, 0}, state.get(), 0);
    };
    ac(NAMED(zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1));
    ac(NAMED(zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1));
    Zmx16s block[64] = {}, lastDC = 0;
    Zmx32u counts[257] = {};
    badArguments(report, dc, block, counts, &lastDC, Least{0, 0});
}

void refusals(Report& report) {
    Zmx16s block[64] = {}, lastDC = 0;
    Zmx8u bytes[8] = {};
    int position = 0, marker = 0;
    const Lists lists;
    EncodeTable encodeTable(lists);
    DecodeTable decodeTable(lists);
    EncodeState encodeState;
    DecodeState decodeState;
    const Least length{8}, Ss{1}, Se{5, 1}, Al{0, 0};
    badArguments(report, NAMED(zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1), block, bytes, length, &position, &lastDC,
                 Al, encodeTable.get(), encodeState.get(), 0);
    badArguments(report, NAMED(zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1), block, bytes, length, &position, Al,
                 encodeState.get(), 0);
    badArguments(report, NAMED(zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1), bytes, length, &position, block, &lastDC,
                 &marker, Al, decodeTable.get(), decodeState.get());
    badArguments(report, NAMED(zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1), bytes, length, &position, block, &marker,
                 Al, decodeState.get());
    for (const auto& function :
         {NAMED(zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1), NAMED(zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1)})
        badArguments(report, function, block, bytes, length, &position, Ss, Se, Al, encodeTable.get(),
                     encodeState.get(), 0);
    for (const auto& function :
         {NAMED(zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1), NAMED(zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1)})
        badArguments(report, function, bytes, length, &position, block, &marker, Ss, Se, Al, decodeTable.get(),
                     decodeState.get());
}

} // namespace

void progressiveDigests(Report& report) {
    dcScans(report);
    acScans(report);
    statistics(report);
    refusals(report);
}
