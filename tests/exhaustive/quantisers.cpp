// quantisers.cpp - every coefficient by every entry of a table, there and back; and every entry of the tables themselves.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/jpeg/model/quant.h"

#include <algorithm>

namespace exhaustive {

namespace {

constexpr int kBlock = 64;

// All coefficients by one entry.
template <class Library, class Model> bool quantisersAgree(std::uint64_t entry, Library library, Model plain) {
    alignas(32) Zmx16u table[kBlock];
    std::fill(std::begin(table), std::end(table), Zmx16u(entry));
    std::vector<Zmx16s> got = allWords(), expected = got;
    for (std::size_t at = 0; at < got.size(); at += kBlock) {
        if (library(got.data() + at, table)) return false;
        plain(expected.data() + at, table);
    }
    return same(got, expected);
}

// All entries of a raw table at one quality, which the function takes as it comes.
bool scalingAgrees(int quality) {
    for (int first = 0; first < 256; first += kBlock) {
        std::vector<Zmx8u> got(kBlock);
        for (int i = 0; i < kBlock; ++i) got[std::size_t(i)] = Zmx8u(first + i);
        std::vector<Zmx8u> expected = got;
        if (zmxiQuantFwdRawTableInit_JPEG_8u(got.data(), quality)) return false;
        model::scaleRawTable(expected.data(), quality);
        if (!same(got, expected)) return false;
    }
    return true;
}

// Every entry of a raw table at each place.
bool tablesAgree(std::uint64_t value) {
    const std::vector<Zmx8u> raw(kBlock, Zmx8u(value));
    std::vector<Zmx16u> got(2 * kBlock, 0x9E9E), expected = got;
    const ZmxStatus forward = zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), got.data());
    const ZmxStatus inverse = zmxiQuantInvTableInit_JPEG_8u16u(raw.data(), got.data() + kBlock);
    return forward == model::forwardTable(raw.data(), expected.data()) &&
           inverse == model::inverseTable(raw.data(), expected.data() + kBlock) && same(got, expected);
}

} // namespace

void addQuantisers(Domains& to) {
    to.push_back(
        {"QuantFwd8x8", "quantiser, every coefficient by every entry", kWords, kWords,
         [](std::uint64_t slice) { return quantisersAgree(slice, zmxiQuantFwd8x8_JPEG_16s_C1I, model::quantise); }});
    to.push_back(
        {"QuantInv8x8", "dequantiser, every coefficient by every entry", kWords, kWords,
         [](std::uint64_t slice) { return quantisersAgree(slice, zmxiQuantInv8x8_JPEG_16s_C1I, model::dequantise); }});
    to.push_back({"QuantFwdRawTableInit", "every entry of a raw table at each quality from 1 to 100", 100, 256,
                  [](std::uint64_t slice) { return scalingAgrees(int(slice) + 1); }});
    to.push_back({"QuantTableInit", "every entry of a raw table, in both directions", 256, 128, tablesAgree});
}

} // namespace exhaustive
