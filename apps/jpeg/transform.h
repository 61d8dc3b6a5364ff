// transform.h - from the pixels of an MCU to quantised coefficients.
#pragma once

#include "jpeg/format.h"

#include <memory>

namespace jpeg {

// Divisors for a quality, as the file holds them and as the library multiplies by them.
struct Quantiser {
    std::array<std::uint8_t, 64> raw; // in zig-zag order
    std::array<Zmx16u, 64> forward;
    std::array<Zmx32f, 64> wideForward; // of 12-bit samples

    Quantiser(const std::array<std::uint8_t, 64>& base, int quality);
    QuantTable table() const;
};

class Transformer {
public:
    virtual ~Transformer() = default;
    // Into `blocks`, component by component, each row by row.
    virtual void mcu(int column, int row, Zmx16s* const* blocks) = 0;
};

// Each component of the frame names one of the two quantisers. Samples have 8 and 12 bits. MCUs are
// asked for row by row. `fast`: where it can, the colour conversion cuts whole MCUs and does not round, which
// darkens the picture by half a level; that of 12 bits always rounds.
std::unique_ptr<Transformer> makeTransformer(const Zmx8u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], bool fast);
std::unique_ptr<Transformer> makeTransformer(const Zmx16u* pixels, const Frame& frame, Model model,
                                             const Quantiser (&quantisers)[2], bool fast);

} // namespace jpeg
