// convert.h - rows made into other rows on their way: depth, channels, parts.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"

#include <functional>

namespace codecs {

// A sample scaled from one largest value to another, rounded to the nearest.
class DepthTable {
public:
    DepthTable(int from, int to);
    bool changes() const { return from != to; }
    int maxval() const { return to; }
    // `samples` of them, from the width that `from` has into the one that `to` has.
    void convert(const std::uint8_t* in, std::uint8_t* out, std::size_t samples) const;

private:
    int from, to;
    std::vector<std::uint16_t> table;
};

// Full range stays full range in a container of another depth. That is worth a warning where it takes bits away, and where
// samples do not fill their bits: whoever writes up to 1000 may mean the numbers. More bits for 2^n - 1 are what
// everyone expects.
std::vector<std::string> depthChange(int from, int to, const std::string& container);

// Sources that stand before another one and own it. What changes nothing gives the source itself.
using Rows = std::unique_ptr<RowSource>;

Rows withDepth(Rows from, int maxval);
Rows withoutAlpha(Rows from);
// RGB as its luma of the same depth; grey and alpha stay.
Rows asGrey(Rows from);
// Grey as three equal channels, CMYK as the light that its inks let through; alpha stays.
Rows asRgb(Rows from);
// A last channel of the largest sample where there is no alpha.
Rows withAlpha(Rows from);
// Each sample taken from the largest; alpha stays.
Rows inverted(Rows from);
// Blue first.
Rows withRedAndBlueExchanged(Rows from);
// The part that begins at (x, y); an Error where it is not inside.
Rows cropped(Rows from, int x, int y, int width, int height);
// Without what travels beside the samples.
Rows stripped(Rows from);
// The same rows with another meaning of their channels.
Rows withColour(Rows from, Colour colour, bool alpha);

// A source that stays with the caller.
Rows borrowed(RowSource& from);

// The same changes on the way into a sink: `change` is called once, in begin(), and puts its sources before the rows that
// come. They must not change how many there are.
using RowChange = std::function<Rows(Rows)>;
std::unique_ptr<RowSink> changedBefore(std::unique_ptr<RowSink> to, RowChange change);

} // namespace codecs
