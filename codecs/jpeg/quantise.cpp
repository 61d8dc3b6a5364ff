// quantise.cpp - quantisation tables as the library takes them.
#include "codecs/jpeg/quantise.h"

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

} // namespace

Quantiser::Quantiser(const std::array<std::uint8_t, kBlock>& base, int quality) {
    std::array<Zmx8u, kBlock> raw = base;
    zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), quality);
    zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), forward.data());
    std::copy(raw.begin(), raw.end(), table.begin());
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
