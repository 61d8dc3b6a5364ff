// source.h - a picture of JavaScript, which lies in the module's memory, as rows.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"
#include "wasm/src/options.h"

namespace web {

class ViewSource final : public codecs::RowSource {
public:
    // The options that describe the picture are taken out of those of the call.
    ViewSource(const std::uint8_t* samples, std::size_t size, Options& options);
    codecs::Band next(int rows) override;

private:
    void checkSamples() const;

    const std::uint8_t* first;
    int row = 0;
};

} // namespace web
