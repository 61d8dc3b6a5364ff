// inks.h - files with an Adobe marker hold CMYK turned over, 255 for no ink; pictures hold amounts of ink.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"

namespace codecs::jpeg {

// Takes each sample from the largest on its way to another sink, which stays with the caller. Its counterpart on the
// way in is codecs::inverted().
class InkSink final : public RowSink {
public:
    explicit InkSink(RowSink& sink) : to(sink) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        form = shape;
        to.begin(shape, metadata);
    }
    void write(const Band& band) override {
        // The largest sample is all ones: to take from it is to turn its bits over.
        const std::uint16_t ones = std::uint16_t(form.maxval);
        const std::size_t bytes = form.rowBytes();
        turned.resize(bytes * std::size_t(band.rows));
        for (int y = 0; y < band.rows; ++y) {
            std::uint8_t* const row = turned.data() + bytes * std::size_t(y);
            if (form.wide())
                for (std::size_t i = 0; i < form.rowSamples(); ++i)
                    reinterpret_cast<std::uint16_t*>(row)[i] = band.words(y)[i] ^ ones;
            else
                for (std::size_t i = 0; i < bytes; ++i) row[i] = std::uint8_t(band.row(y)[i] ^ ones);
        }
        to.write({turned.data(), std::ptrdiff_t(bytes), band.rows});
    }
    void finish() override { to.finish(); }
    std::vector<std::string> warnings() const override { return to.warnings(); }

private:
    RowSink& to;
    Shape form;
    Samples turned;
};

} // namespace codecs::jpeg
