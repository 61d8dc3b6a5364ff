// resampling.cpp - the mean of two by two samples over all of them, and the triangle filter over all that one sample is made of.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/resampling.h"
#include "tests/exhaustive/domain.h"

namespace exhaustive {

namespace {

constexpr int kSquares = 1 << 11;

// Two rows whose squares are the numbers that begin with the slice.
bool downAgrees(std::uint64_t slice) {
    std::vector<Zmx8u> src(4 * kSquares), got(kSquares), expected(kSquares);
    for (std::size_t i = 0; i < kSquares; ++i) {
        const std::uint64_t square = slice * kSquares + i;
        src[2 * i] = Zmx8u(square);
        src[2 * i + 1] = Zmx8u(square >> 8);
        src[2 * kSquares + 2 * i] = Zmx8u(square >> 16);
        src[2 * kSquares + 2 * i + 1] = Zmx8u(square >> 24);
    }
    if (zmxiSampleDownH2V2_JPEG_8u_C1R(src.data(), 2 * kSquares, {2 * kSquares, 2}, got.data(), kSquares,
                                       {kSquares, 1}))
        return false;
    const model::Plane plane{src.data(), 2 * kSquares};
    for (int i = 0; i < kSquares; ++i) expected[std::size_t(i)] = Zmx8u(model::downH2V2(plane, i, 0));
    return same(got, expected);
}

// Rows in which a given sample stands beside each other one: all pairs with it, in both orders.
std::vector<Zmx8u> pairsWith(unsigned one) {
    std::vector<Zmx8u> row;
    for (unsigned i = 0; i < 256; ++i) row.insert(row.end(), {Zmx8u(one), Zmx8u(i)});
    return row;
}

bool triangleAgrees(std::uint64_t slice) {
    const std::vector<Zmx8u> row = pairsWith(unsigned(slice));
    std::vector<Zmx8u> got(2 * row.size()), expected(2 * row.size());
    if (zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(row.data(), int(row.size()), got.data())) return false;
    model::upRowH2V1(row.data(), int(row.size()), expected.data());
    return same(got, expected);
}

// A sample of the new row is made of two of the near row and two of the far one. The slice is a pair of the near row; the far
// one holds all pairs: each of its samples beside each other one.
bool triangle2Agrees(std::uint64_t slice) {
    std::vector<Zmx8u> near, far;
    for (unsigned one = 0; one < 256; ++one) {
        const std::vector<Zmx8u> pairs = pairsWith(one);
        far.insert(far.end(), pairs.begin(), pairs.end());
    }
    while (near.size() < far.size()) near.insert(near.end(), {Zmx8u(slice), Zmx8u(slice >> 8)});
    std::vector<Zmx8u> got(2 * far.size()), expected(2 * far.size());
    if (zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1(near.data(), far.data(), int(far.size()), got.data())) return false;
    model::upRowH2V2(near.data(), far.data(), int(far.size()), expected.data());
    return same(got, expected);
}

} // namespace

void addResampling(Domains& to) {
    to.push_back({"SampleDownH2V2", "mean of two by two samples, all of them", (std::uint64_t(1) << 32) / kSquares,
                  kSquares, downAgrees});
    to.push_back({"SampleUpH2V1Triangle", "triangle filter in a row, every pair of samples", 256, 256, triangleAgrees});
    to.push_back({"SampleUpH2V2Triangle", "triangle filter between rows, every two by two samples", kWords, kWords,
                  triangle2Agrees});
}

} // namespace exhaustive
