// rowinput.h - a source of interleaved rows as a source of samples.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/samples.h"
#include "codecs/picture/descriptor.h"
#include "codecs/picture/rows.h"

namespace codecs::jpeg2000 {

class RowInput final : public SampleSource {
    RowSource& source;
    const ImageSize& size;
    Band band;
    std::int64_t top = 0, bottom = 0;       // rows of the reference grid that the band holds
    std::optional<codecs::Descriptor> kept; // all rows so far

    void keep() const;

public:
    RowInput(RowSource& from, const ImageSize& imageSize)
        : source(from), size(imageSize), top(imageSize.y0), bottom(imageSize.y0) {}
    // From here on rows that have gone by can be had once more: they wait in a temporary file.
    void keepRows() { kept = codecs::openNameless(); }
    void advance(std::int64_t from, std::int64_t to) override;
    void get(std::size_t component, std::int64_t x, std::int64_t y, std::span<Sample> to) const override;
};

// The components of such a picture.
std::vector<SizComponent> componentsOf(const Shape& shape, const EncodeOptions& options);

} // namespace codecs::jpeg2000
