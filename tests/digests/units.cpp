// units.cpp - digests of the conversions of one minimum coded unit.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"

namespace {

constexpr int kRounds = 12; // units of each kind

// Blocks of a unit: planes 0 and 3 have `luma` of them, planes 1 and 2 one.
template <int N> std::vector<Plane<Zmx16s>> unit(Random& random, Kind kind, int luma) {
    std::vector<Plane<Zmx16s>> planes;
    for (int p = 0; p < N; ++p) planes.emplace_back(random, kind, 64, p % 3 ? 1 : luma);
    return planes;
}

struct Form {
    int luma, width, height;
};
constexpr Form k444{1, 8, 8}, k422{2, 16, 8}, k411{4, 16, 16};

// A unit to pixels of C elements, or with C = 2 to 4:2:2 pairs.
template <int N, int C, class T>
void toPixels(Report& report, const Named<ZmxStatus(const Zmx16s* const*, T*, int)>& function, Form form) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < kRounds; ++round)
            for (Kind kind : kKinds) {
                auto planes = unit<N>(random, kind, form.luma);
                const Zmx16s* pointers[N];
                for (int p = 0; p < N; ++p) pointers[p] = planes[std::size_t(p)].data();
                Plane<T> pixels(random, Kind::Full, C * form.width, form.height, round % 4);
                digest.value(function.call(pointers, pixels.data(), pixels.step()));
                pixels.digest(digest);
            }
    });
    Random random("");
    Planes<Zmx16s, N> planes(random, Kind::Flat, 64, 4);
    const PointerSets<Zmx16s, N> sets(planes.data());
    T some[4] = {};
    badArguments(report, function, sets.get(), some, Least{64});
}

// Pixels to a unit.
template <int N, int C, class T>
void fromPixels(Report& report, const Named<ZmxStatus(const T*, int, Zmx16s* const*)>& function, Form form) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < kRounds; ++round)
            for (Kind kind : kKinds) {
                Plane<T> pixels(random, kind, C * form.width, form.height, round % 4);
                auto planes = unit<N>(random, Kind::Full, form.luma);
                Zmx16s* pointers[N];
                for (int p = 0; p < N; ++p) pointers[p] = planes[std::size_t(p)].data();
                digest.value(function.call(pixels.data(), pixels.step(), pointers));
                for (auto& plane : planes) plane.digest(digest);
            }
    });
    Random random("");
    Planes<Zmx16s, N> planes(random, Kind::Flat, 64, 4);
    const PointerSets<Zmx16s, N> sets(planes.data());
    T some[4] = {};
    badArguments(report, function, some, Least{64}, sets.get());
}

void unitsToPixels(Report& report) {
    toPixels<3, 3>(report, NAMED(zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R), k444);
    toPixels<3, 3>(report, NAMED(zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R), k422);
    toPixels<3, 3>(report, NAMED(zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R), k411);
    toPixels<3, 3>(report, NAMED(zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R), k444);
    toPixels<3, 3>(report, NAMED(zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R), k422);
    toPixels<3, 3>(report, NAMED(zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R), k411);
    toPixels<3, 1>(report, NAMED(zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R), k444);
    toPixels<3, 1>(report, NAMED(zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R), k422);
    toPixels<3, 1>(report, NAMED(zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R), k411);
    toPixels<3, 1>(report, NAMED(zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R), k444);
    toPixels<3, 1>(report, NAMED(zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R), k422);
    toPixels<3, 1>(report, NAMED(zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R), k411);
    toPixels<4, 4>(report, NAMED(zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R), k444);
    toPixels<4, 4>(report, NAMED(zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R), k422);
    toPixels<4, 4>(report, NAMED(zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R), k411);
    toPixels<3, 3>(report, NAMED(zmxiSampleUp444LS_MCU_16s8u_P3C3R), k444);
    toPixels<3, 3>(report, NAMED(zmxiSampleUp422LS_MCU_16s8u_P3C3R), k422);
    toPixels<3, 3>(report, NAMED(zmxiSampleUp411LS_MCU_16s8u_P3C3R), k411);
    toPixels<3, 2>(report, NAMED(zmxiJoin422LS_MCU_16s8u_P3C2R), k422);
}

void pixelsToUnits(Report& report) {
    fromPixels<3, 3>(report, NAMED(zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R), k444);
    fromPixels<3, 3>(report, NAMED(zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R), k422);
    fromPixels<3, 3>(report, NAMED(zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R), k411);
    fromPixels<3, 3>(report, NAMED(zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R), k444);
    fromPixels<3, 3>(report, NAMED(zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R), k422);
    fromPixels<3, 3>(report, NAMED(zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R), k411);
    fromPixels<3, 1>(report, NAMED(zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R), k444);
    fromPixels<3, 1>(report, NAMED(zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R), k422);
    fromPixels<3, 1>(report, NAMED(zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R), k411);
    fromPixels<3, 1>(report, NAMED(zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R), k444);
    fromPixels<3, 1>(report, NAMED(zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R), k422);
    fromPixels<3, 1>(report, NAMED(zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R), k411);
    fromPixels<4, 4>(report, NAMED(zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R), k444);
    fromPixels<4, 4>(report, NAMED(zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R), k422);
    fromPixels<4, 4>(report, NAMED(zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R), k411);
    fromPixels<3, 3>(report, NAMED(zmxiSampleDown444LS_MCU_8u16s_C3P3R), k444);
    fromPixels<3, 3>(report, NAMED(zmxiSampleDown422LS_MCU_8u16s_C3P3R), k422);
    fromPixels<3, 3>(report, NAMED(zmxiSampleDown411LS_MCU_8u16s_C3P3R), k411);
    fromPixels<3, 2>(report, NAMED(zmxiSplit422LS_MCU_8u16s_C2P3R), k422);
}

} // namespace

void unitDigests(Report& report) {
    unitsToPixels(report);
    pixelsToUnits(report);
}
