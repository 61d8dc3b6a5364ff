// transform.h - from the pixels of an MCU to quantised coefficients.
#pragma once

#include "codecs/jpeg/format.h"

#include <memory>

namespace jpeg {

// Divisors for a quality, as the file holds them and as the library multiplies by them.
struct Quantiser {
    std::array<std::uint8_t, 64> raw; // in zig-zag order
    std::array<Zmx16u, 64> forward;
    std::array<Zmx32f, 64> reciprocals; // for the transform in single precision, in natural order

    Quantiser(const std::array<std::uint8_t, 64>& base, int quality);
    QuantTable table() const;
};

class Transformer {
public:
    virtual ~Transformer() = default;
    // Into `blocks`, component by component, each row by row.
    virtual void mcu(int column, int row, Zmx16s* const* blocks) = 0;
};

// From pixels of 8 bits: by the integer transform, on whole MCUs at a time where that is possible, with a
// colour conversion that does not round, which darkens the picture by half a level (units), or with one that
// does (integer); or by the transform in single precision.
enum class Road { units, integer, single };

// Each component of the frame names one of the two quantisers. MCUs are asked for row by row. Samples of 12
// bits always go by single precision.
std::unique_ptr<Transformer> makeTransformer(const Zmx8u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], Road road);
std::unique_ptr<Transformer> makeTransformer(const Zmx16u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], Road road);

} // namespace jpeg
