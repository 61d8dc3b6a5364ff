// waveletlifts.cpp - digests of the column lifting of the wavelets: one stage over rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/wavelets.h"

namespace {

constexpr int kWidths[] = {1, 2, 3, 7, 8, 16, 31, 64, 101};

// Rows that start at any address, all of them handed over and all of them digested.
template <class T, int N> class RowSet {
    std::vector<Plane<T>> rows;

public:
    RowSet(Random& random, Kind kind, int width) {
        for (int i = 0; i < N; ++i) rows.emplace_back(random, kind, width, 1);
    }
    T* operator[](int i) { return rows[std::size_t(i)].data(); }
    void set(int row, int x, Raw<T> v) { rows[std::size_t(row)].set(x, 0, v); }
    void digest(Digest& digest) {
        for (Plane<T>& row : rows) row.digest(digest);
    }
};

template <class F, class T, std::size_t... I>
ZmxStatus call(const Named<F>& function, RowSet<T, int(sizeof...(I))>& rows, int width, std::index_sequence<I...>) {
    return function.call(rows[int(I)]..., width);
}

// A stage over N rows.
template <class T, int N, class F> void stage(Report& report, const Named<F>& function) {
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int width : kWidths)
            for (Kind kind : kKinds) {
                RowSet<T, N> rows(random, kind, width);
                digest.value(call(function, rows, width, std::make_index_sequence<N>()));
                rows.digest(digest);
            }
    });
    T some[4] = {};
    if constexpr (N == 6)
        badArguments(report, function, some, some, some, some, some, some, Least{4});
    else
        badArguments(report, function, some, some, some, some, some, some, some, some, Least{4});
}

// Triples at rounding boundaries, each with its weights, in three rows; zeros elsewhere.
struct Step {
    int a, b, c; // the rows
    std::uint32_t wa, wb, wc;
};
template <class F> void hardCases(Report& report, const Named<F>& function, const std::vector<Step>& steps) {
    report.add(function.name + ": hard cases", [&](Random& random, Digest& digest) {
        for (const Step& step : steps) {
            const int width = 400;
            RowSet<float, 8> rows(random, Kind::Flat, width);
            for (int row = 0; row < 8; ++row)
                for (int x = 0; x < width; ++x) rows.set(row, x, 0);
            for (int x = 0; x < width; ++x) {
                const HardTriple hard = hardTriple(random, step.wa, step.wb, step.wc);
                rows.set(step.a, x, hard.a);
                rows.set(step.b, x, hard.b);
                rows.set(step.c, x, hard.c);
            }
            digest.value(call(function, rows, width, std::make_index_sequence<8>()));
            rows.digest(digest);
        }
    });
}

} // namespace

void waveletLiftDigests(Report& report) {
    stage<Zmx16s, 6>(report, NAMED(zmxiWTFwdColLift_B53_JPEG2K_16s_C1));
    stage<Zmx32s, 6>(report, NAMED(zmxiWTFwdColLift_B53_JPEG2K_32s_C1));
    stage<Zmx16s, 6>(report, NAMED(zmxiWTInvColLift_B53_JPEG2K_16s_C1));
    stage<Zmx32s, 6>(report, NAMED(zmxiWTInvColLift_B53_JPEG2K_32s_C1));
    stage<Zmx16s, 8>(report, NAMED(zmxiWTFwdColLift_D97_JPEG2K_16s_C1));
    stage<Zmx32s, 8>(report, NAMED(zmxiWTFwdColLift_D97_JPEG2K_32s_C1));
    stage<Zmx32f, 8>(report, NAMED(zmxiWTFwdColLift_D97_JPEG2K_32f_C1));
    stage<Zmx16s, 8>(report, NAMED(zmxiWTInvColLift_D97_JPEG2K_16s_C1));
    stage<Zmx32s, 8>(report, NAMED(zmxiWTInvColLift_D97_JPEG2K_32s_C1));
    stage<Zmx32f, 8>(report, NAMED(zmxiWTInvColLift_D97_JPEG2K_32f_C1));

    // Forward rows: sources 0 to 2, low 3 and 4, high 5 to 7. A of sources 1 and 0, 2; B and G of what is there.
    hardCases(report, NAMED(zmxiWTFwdColLift_D97_JPEG2K_32f_C1),
              {{0, 2, 1, kAlpha, kAlpha, kOne}, {1, 0, 2, kOne, kAlpha, kAlpha}, {6, 0, 5, kBeta, kOne, kOne}});
    // Inverse rows: low 0, high 1 and 2, row 3, in and out 4 and 5. B of low 0 and high 1, 2; A of high and B.
    hardCases(report, NAMED(zmxiWTInvColLift_D97_JPEG2K_32f_C1),
              {{0, 1, 2, kScale, kSign ^ kDeltaOverScale, kSign ^ kDeltaOverScale},
               {1, 2, 0, kSign ^ kDeltaOverScale, kSign ^ kDeltaOverScale, kScale},
               {1, 5, 0, kOneOverScale, kSign ^ kGamma, kOne}});
}
