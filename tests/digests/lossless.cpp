// lossless.cpp - digests of the prediction and coding of lossless JPEG rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/entropy.h"

namespace {

constexpr int kWidth = 75;

using Rows = Planes<Zmx16s, 4>;

// Differences and back of first rows, at every precision and some point transforms.
void firstRows(Report& report, const Named<ZmxStatus(const Zmx16s*, Zmx16s*, int, int, int)>& function) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int P = 2; P <= 16; ++P)
            for (int Pt : {0, 1, 5, P, P + 3, 40})
                for (Kind kind : kKinds) {
                    Plane<Zmx16s> source(random, kind, kWidth, 1), destination(random, Kind::Full, kWidth, 1);
                    const int width = random.range(1, kWidth);
                    digest.value(function.call(source.data(), destination.data(), width, P, Pt));
                    destination.digest(digest);
                }
    });
    Zmx16s some[4] = {}, other[4] = {};
    badArguments(report, function, some, other, Least{4}, Least{8, 2}, Least{0, 0});
}

void laterRows(Report& report, const Named<ZmxStatus(const Zmx16s*, const Zmx16s*, Zmx16s*, int, int)>& function) {
    for (int predictor = 1; predictor <= 7; ++predictor)
        report.add(function.name + ": predictor " + char('0' + predictor), [&](Random& random, Digest& digest) {
            for (int width = 1; width <= kWidth; width += random.range(1, 5))
                for (Kind kind : kKinds) {
                    Plane<Zmx16s> source(random, kind, width, 1), above(random, kind, width, 1);
                    Plane<Zmx16s> destination(random, Kind::Full, width, 1);
                    digest.value(function.call(source.data(), above.data(), destination.data(), width, predictor));
                    destination.digest(digest);
                }
        });
    Zmx16s some[4] = {}, other[4] = {};
    badArguments(report, function, some, some, other, Least{4}, Argument<int>{4, {0, 8}});
}

// Rows of differences of up to four planes, and their tables.
struct Scan {
    std::vector<Lists> lists;
    std::vector<EncodeTable> encodeTables;
    std::vector<DecodeTable> decodeTables;
    const ZmxiEncodeHuffmanSpec* encode[4];
    const ZmxiDecodeHuffmanSpec* decode[4];

    explicit Scan(Random& random) {
        for (int p = 0; p < 4; ++p) lists.push_back(listsFor(random, 17));
        for (const Lists& one : lists) {
            encodeTables.emplace_back(one);
            decodeTables.emplace_back(one);
        }
        for (std::size_t p = 0; p < 4; ++p) {
            encode[p] = encodeTables[p].get();
            decode[p] = decodeTables[p].get();
        }
    }
};

void encodeRows(Random& random, Scan& scan, Writer& writer, int planes, Digest& digest) {
    for (Kind kind : kKinds) {
        const Rows rows(random, kind, kWidth, 1);
        digest.value(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(readOnly(rows), kWidth, planes, writer.bytes.data(),
                                                          writer.capacity(), &writer.position, scan.encode,
                                                          writer.state.get(), 0));
        digest.value(writer.position);
    }
    digest.value(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, kWidth, planes, writer.bytes.data(), writer.capacity(),
                                                      &writer.position, scan.encode, writer.state.get(), 1));
    digest.values(writer.written());
}

void decodeRows(Random& random, const Scan& scan, const std::vector<Zmx8u>& stream, int planes, Digest& digest) {
    Reader reader(stream);
    for ([[maybe_unused]] Kind kind : kKinds) {
        Rows rows(random, Kind::Flat, kWidth, 1);
        const ZmxStatus status =
            zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(reader.bytes.data(), reader.length(), &reader.position, rows.data(),
                                                 kWidth, planes, &reader.marker, scan.decode, reader.state.get());
        digest.value(status);
        rows.digest(digest);
        reader.digest(digest);
        if (status != zmxStsNoErr) break;
    }
}

constexpr std::size_t kRoom = 7 * 4 * kWidth * 8;

void rows(Report& report) {
    const std::string encoder = "zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1",
                      decoder = "zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4";
    const auto encodes = [&](const std::string& name, auto capacity) {
        report.add(name, [&](Random& random, Digest& digest) {
            for (int planes = 1; planes <= 5; ++planes) { // the fifth does not count
                Scan scan(random);
                Writer writer(capacity(random));
                encodeRows(random, scan, writer, planes, digest);
            }
        });
    };
    encodes(encoder, [](Random&) { return kRoom; });
    encodes(encoder + ": a short destination", [](Random& random) { return std::size_t(random.range(1, 900)); });
    const auto decodes = [&](const std::string& name, auto change) {
        report.add(name, [&](Random& random, Digest& digest) {
            for (int round = 0; round < 12; ++round) {
                const int planes = round % 5 + 1;
                Scan scan(random);
                Writer writer(kRoom);
                Digest ignored;
                encodeRows(random, scan, writer, planes, ignored);
                decodeRows(random, scan, change(random, writer.written()), planes, digest);
            }
        });
    };
    decodes(decoder, [](Random&, const std::vector<Zmx8u>& stream) { return stream; });
    decodes(decoder + ": damaged streams", damaged);
}

// One difference a call.
void ones(Report& report) {
    const auto run = [&](Random& random, Digest& encoded, Digest& decoded) {
        Scan scan(random);
        Writer writer(kRoom);
        for (int v = -32768; v < 32768; v += random.range(1, 300)) {
            const Zmx16s difference = Zmx16s(v);
            encoded.value(zmxiEncodeHuffmanOne_JPEG_16s1u_C1(&difference, writer.bytes.data(), writer.capacity(),
                                                             &writer.position, scan.encode[0], writer.state.get(), 0));
        }
        encoded.value(zmxiEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, writer.bytes.data(), writer.capacity(),
                                                         &writer.position, scan.encode[0], writer.state.get(), 1));
        encoded.values(writer.written());
        Reader reader(writer.written());
        for (ZmxStatus status = zmxStsNoErr; status == zmxStsNoErr;) {
            Zmx16s difference = 0;
            status =
                zmxiDecodeHuffmanOne_JPEG_1u16s_C1(reader.bytes.data(), reader.length(), &reader.position, &difference,
                                                   &reader.marker, scan.decode[0], reader.state.get());
            decoded.value(status).value(difference);
            reader.digest(decoded);
        }
    };
    Digest ignored;
    report.add("zmxiEncodeHuffmanOne_JPEG_16s1u_C1",
               [&](Random& random, Digest& digest) { run(random, digest, ignored); });
    report.add("zmxiDecodeHuffmanOne_JPEG_1u16s_C1",
               [&](Random& random, Digest& digest) { run(random, ignored, digest); });
}

void statistics(Report& report) {
    const auto function = NAMED(zmxiGetHuffmanStatisticsOne_JPEG_16s_C1);
    Zmx16s difference = 0;
    Zmx32u counts[257] = {};
    report.add(function.name, [&](Random&, Digest& digest) {
        for (int v = -32768; v < 32768; v += 3) {
            difference = Zmx16s(v);
            digest.value(function.call(&difference, counts));
        }
        digest.values(counts, 257);
    });
    badArguments(report, function, &difference, counts);
}

void refusals(Report& report) {
    Random random("");
    Scan scan(random);
    const Rows rows(random, Kind::Flat, 4, 1);
    const PointerSets<Zmx16s, 4> rowSets(rows.data());
    const PointerSets<const ZmxiEncodeHuffmanSpec, 4> encodeSets(scan.encode);
    const PointerSets<const ZmxiDecodeHuffmanSpec, 4> decodeSets(scan.decode);
    Zmx8u bytes[8] = {};
    int position = 0, marker = 0;
    Zmx16s difference = 0;
    EncodeState encodeState;
    DecodeState decodeState;
    badArguments(report, NAMED(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1), rowSets.get(), Least{4}, Least{4}, bytes,
                 Least{8}, &position, encodeSets.get(), encodeState.get(), 0);
    badArguments(report, NAMED(zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4), bytes, Least{8}, &position, rowSets.get(),
                 Least{4}, Least{4}, &marker, decodeSets.get(), decodeState.get());
    badArguments(report, NAMED(zmxiEncodeHuffmanOne_JPEG_16s1u_C1), &difference, bytes, Least{8}, &position,
                 scan.encode[0], encodeState.get(), 0);
    badArguments(report, NAMED(zmxiDecodeHuffmanOne_JPEG_1u16s_C1), bytes, Least{8}, &position, &difference, &marker,
                 scan.decode[0], decodeState.get());
}

} // namespace

void losslessDigests(Report& report) {
    for (const auto& function :
         {NAMED(zmxiDiffPredFirstRow_JPEG_16s_C1), NAMED(zmxiReconstructPredFirstRow_JPEG_16s_C1)})
        firstRows(report, function);
    for (const auto& function : {NAMED(zmxiDiffPredRow_JPEG_16s_C1), NAMED(zmxiReconstructPredRow_JPEG_16s_C1)})
        laterRows(report, function);
    rows(report);
    ones(report);
    statistics(report);
    refusals(report);
}
