// others.cpp - digests of the HD Photo transform, of TIFF rows and of the version record.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

#include <bit>

namespace {

// Rectangles in place.
void photo(Report& report, const Named<ZmxStatus(Zmx32s*, int, ZmxiSize)>& function) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (const ZmxiSize& size : {ZmxiSize{4, 4}, ZmxiSize{8, 12}, ZmxiSize{20, 4}, ZmxiSize{64, 48}})
            for (Kind kind : kKinds) {
                Plane<Zmx32s> samples(random, kind, size.width, size.height, random.range(0, 5));
                digest.value(function.call(samples.data(), samples.step(), size));
                samples.digest(digest);
            }
    });
    Zmx32s some[16] = {};
    badArguments(report, function, some, Argument<int>{16, {3, 15}},
                 Argument<ZmxiSize>{{4, 4}, {{0, 4}, {4, -4}, {3, 4}, {4, 6}}});
}
void macroblock(Report& report, const Named<ZmxStatus(Zmx32s*, int)>& function, int width, int height) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < 20; ++round)
            for (Kind kind : kKinds) {
                Plane<Zmx32s> samples(random, kind, width, height, round % 7);
                digest.value(function.call(samples.data(), samples.step()));
                samples.digest(digest);
            }
    });
    Zmx32s some[256] = {};
    badArguments(report, function, some, Argument<int>{4 * width, {0, 4 * width - 1}});
}

// A row as bilevel pictures have it: runs, some of which are long.
std::vector<Zmx8u> runs(Random& random, int length) {
    std::vector<Zmx8u> row;
    while (int(row.size()) < length) {
        const int run = random.oneIn(3) ? random.range(1, 300) : random.range(1, 4);
        row.insert(row.end(), std::size_t(run), Zmx8u(random.range(0, 255)));
    }
    row.resize(std::size_t(length));
    return row;
}

void packBits(Report& report) {
    const auto pack = NAMED(zmxiPackBitsRow_TIFF_8u_C1);
    const auto unpack = NAMED(zmxiUnpackBitsRow_TIFF_8u_C1);
    const auto pairs = [&](const Named<ZmxStatus(const Zmx8u*, int, Zmx8u*, int*, int)>& function, int room) {
        return [=](Random& random, Digest& digest) {
            for (int round = 0; round < 150; ++round) {
                const std::vector<Zmx8u> row = runs(random, random.range(1, 700));
                std::vector<Zmx8u> stream(std::size_t(random.range(1, room)), 0x77);
                int position = random.range(0, 3);
                digest.value(function.call(row.data(), int(row.size()), stream.data(), &position, int(stream.size())));
                digest.value(position).values(stream);
            }
        };
    };
    report.add(pack.name, pairs(pack, 1500));
    report.add(pack.name + ": a short destination", pairs(pack, 60));
    const auto unpacks = [&](const std::string& name, bool damage) {
        report.add(name, [&](Random& random, Digest& digest) {
            for (int round = 0; round < 150; ++round) {
                const std::vector<Zmx8u> row = runs(random, random.range(1, 700));
                std::vector<Zmx8u> stream(1500, 0x80);
                int packed = 0, position = 0;
                pack.call(row.data(), int(row.size()), stream.data(), &packed, int(stream.size()) - 1);
                if (damage) stream[std::size_t(random.range(0, packed - 1))] = Zmx8u(random.range(0, 255));
                std::vector<Zmx8u> back(row.size(), 0x33);
                digest.value(unpack.call(stream.data(), &position, packed, back.data(), int(back.size())));
                digest.value(position).values(back);
            }
        });
    };
    unpacks(unpack.name, false);
    unpacks(unpack.name + ": damaged streams", true);
    Zmx8u some[8] = {}, other[8] = {};
    int position = 0;
    badArguments(report, pack, some, Least{8}, other, &position, Least{8});
    badArguments(report, unpack, some, &position, Least{8}, other, Least{8});
}

// The two planes of a 16-bit row are bytes of native words in the order of memory: here they go by their meaning.
void rows(Report& report) {
    const auto split = NAMED(zmxiSplitRow_TIFF_16u8u_C1);
    const auto join = NAMED(zmxiJoinRow_TIFF_8u16u_C1);
    constexpr int high = std::endian::native == std::endian::little ? 0 : 1, low = 1 - high; // of the planes
    report.add(split.name + ", high bytes first", [&](Random& random, Digest& digest) {
        for (int length : {1, 2, 15, 16, 33, 400}) {
            Plane<Zmx16u> samples(random, Kind::Full, length, 1);
            Planes<Zmx8u, 2> planes(random, Kind::Full, length, 1);
            digest.value(split.call(samples.data(), planes.data(), length));
            planes[high].digest(digest);
            planes[low].digest(digest);
        }
    });
    report.add(join.name + ", high bytes first", [&](Random& random, Digest& digest) {
        for (int length : {1, 2, 15, 16, 33, 400}) {
            Planes<Zmx8u, 2> planes(random, Kind::Full, length, 1);
            const Zmx8u* source[2];
            source[high] = planes[0].data();
            source[low] = planes[1].data();
            Plane<Zmx16u> samples(random, Kind::Full, length, 1);
            digest.value(join.call(source, samples.data(), length));
            samples.digest(digest);
        }
    });
    Zmx16u samples[4] = {};
    Zmx8u bytes[4] = {};
    Zmx8u* const planes[2] = {bytes, bytes};
    badArguments(report, split, samples, Argument<Zmx8u* const*>{planes, {nullptr}}, Least{4});
    badArguments(report, join, Argument<Zmx8u* const*>{planes, {nullptr}}, samples, Least{4});
}

void version(Report& report) {
    report.add("zmxjGetLibVersion", [](Random&, Digest& digest) {
        const ZmxLibraryVersion* v = zmxjGetLibVersion();
        digest.value(v->major).value(v->minor).value(v->majorBuild).value(v->build).values(v->targetCpu, 4);
        for (const char* text : {v->Name, v->Version, v->BuildDate}) digest.values(text, std::strlen(text) + 1);
    });
}

} // namespace

void photoAndTiffDigests(Report& report) {
    photo(report, NAMED(zmxiPCTFwd_HDP_32s_C1IR));
    photo(report, NAMED(zmxiPCTInv_HDP_32s_C1IR));
    macroblock(report, NAMED(zmxiPCTFwd16x16_HDP_32s_C1IR), 16, 16);
    macroblock(report, NAMED(zmxiPCTInv16x16_HDP_32s_C1IR), 16, 16);
    macroblock(report, NAMED(zmxiPCTFwd8x16_HDP_32s_C1IR), 8, 16);
    macroblock(report, NAMED(zmxiPCTInv8x16_HDP_32s_C1IR), 8, 16);
    macroblock(report, NAMED(zmxiPCTFwd8x8_HDP_32s_C1IR), 8, 8);
    macroblock(report, NAMED(zmxiPCTInv8x8_HDP_32s_C1IR), 8, 8);
    packBits(report);
    rows(report);
    version(report);
}
