// quantise.cpp - quantisation tables as the library takes them, and from words.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/quantise.h"

#include "codecs/jpeg/words.h"

#include <numeric>

namespace codecs::jpeg {

namespace {

// The zig-zag place of each coefficient: what the library makes of the bytes 0 to 63. It takes tables of bytes, and by
// this those of words are put in order as well.
std::array<Zmx16u, kBlock> zigZagPlaces() {
    std::array<Zmx8u, kBlock> numbers;
    std::array<Zmx16u, kBlock> places;
    std::iota(numbers.begin(), numbers.end(), Zmx8u(0));
    zmxiQuantInvTableInit_JPEG_8u16u(numbers.data(), places.data());
    return places;
}

constexpr int kMaxTables = 4;

} // namespace

// Rows of the text are rows of the table, as ITU-T T.81 prints them.
std::vector<QuantTable> parseTables(const std::string& text) {
    const auto places = zigZagPlaces();
    std::vector<QuantTable> tables;
    Words words(text);
    int count = 0;
    // Every 64 numbers begin another table.
    for (; !words.atEnd(); ++count) {
        if (!words.atNumber()) throw Error("quantisation tables: number " + std::to_string(count + 1) + " is none");
        const int v = words.number(65536);
        if (v < 1 || v > 65535) throw Error("quantisation tables: a divisor is 1 to 65535");
        if (count % kBlock == 0) tables.emplace_back();
        tables.back()[places[std::size_t(count % kBlock)]] = std::uint16_t(v);
    }
    if (count == 0 || count % kBlock != 0 || int(tables.size()) > kMaxTables)
        throw Error("quantisation tables: " + std::to_string(count) + " numbers; a table has 64, and there are 1 to 4");
    return tables;
}

QuantTable scaledTable(const QuantTable& table, int quality, int precision) {
    // As the library scales tables of bytes (zmxiQuantFwdRawTableInit_JPEG_8u).
    const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality, most = precision == 8 ? 255 : 32767;
    QuantTable out;
    for (std::size_t i = 0; i < kBlock; ++i)
        out[i] = std::uint16_t(
            std::clamp((std::int64_t(table[i]) * percent + 50) / 100, std::int64_t(1), std::int64_t(most)));
    return out;
}

// Coefficients that trade places take their divisors along.
QuantTable transposedTable(const QuantTable& table) {
    const auto places = zigZagPlaces();
    QuantTable out;
    for (std::size_t i = 0; i < kBlock; ++i) out[places[i % 8 * 8 + i / 8]] = table[places[i]];
    return out;
}

Quantiser::Quantiser(const QuantTable& divisors) : table(divisors) {
    std::array<Zmx8u, kBlock> bytes;
    for (std::size_t i = 0; i < kBlock; ++i) bytes[i] = Zmx8u(std::min<int>(table[i], 255));
    zmxiQuantFwdTableInit_JPEG_8u16u(bytes.data(), forward.data());
    const auto places = zigZagPlaces();
    for (std::size_t i = 0; i < kBlock; ++i) reciprocals[i] = 1.0F / Zmx32f(table[places[i]]);
}

DequantTable dequantTableOf(const QuantTable& table) {
    const auto places = zigZagPlaces();
    DequantTable out;
    // A divisor above 32767 would be read as a negative one.
    for (std::size_t i = 0; i < kBlock; ++i) out[i] = std::min<Zmx16u>(table[places[i]], 32767);
    return out;
}

} // namespace codecs::jpeg
