// turn.cpp - coefficients in other places. To mirror a block is to change the sign of each second frequency in that
// direction; to exchange rows and columns is to exchange those of its coefficients, and of the divisors.
#include "codecs/jpeg/turn.h"

#include "codecs/jpeg/quantise.h"

namespace codecs::jpeg {

namespace {

// A turn as an exchange of rows and columns, and mirrors behind it.
struct Steps {
    bool exchange, across, down;
};
Steps stepsOf(Turn turn) {
    constexpr Steps steps[] = {{false, false, false}, {false, true, false}, {false, true, true}, {false, false, true},
                               {true, false, false},  {true, true, false},  {true, true, true},  {true, false, true}};
    return steps[std::size_t(turn)];
}

// `to` must not be `from`.
void turnBlock(const Zmx16s* from, Zmx16s* to, const Steps& steps) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const Zmx16s v = from[steps.exchange ? 8 * x + y : 8 * y + x];
            const bool negative = (steps.across && x % 2 != 0) != (steps.down && y % 2 != 0);
            // The one value without a counterpart stays: no picture holds it.
            to[8 * y + x] = negative && v != -32768 ? Zmx16s(-v) : v;
        }
}

// Another store of blocks is filled from the old one: places cannot be exchanged in one store of another shape.
// A file of the same kind with another frame and empty blocks.
CoefficientFile emptied(const CoefficientFile& file, const Frame& frame) {
    CoefficientFile out(frame);
    out.model = file.model;
    out.quant = file.quant;
    out.restart = file.restart;
    out.application = file.application;
    return out;
}

// The length of a side without the part of a unit at its end.
int trimmed(int length, int unit, bool trim, const char* side) {
    if (length % unit == 0) return length;
    if (!trim || length < unit)
        throw Error("a picture whose " + std::string(side) + ", " + std::to_string(length) + ", is no multiple of " +
                    std::to_string(unit) + " cannot be turned so without loss" +
                    (length < unit ? "" : "; its last " + std::to_string(length % unit) + " can be cut off"));
    return length - length % unit;
}

} // namespace

Turn turnOf(int orientation) {
    constexpr Turn turns[] = {Turn::none,      Turn::mirror,  Turn::half,       Turn::flip,
                              Turn::transpose, Turn::quarter, Turn::transverse, Turn::threeQuarters};
    return orientation >= 1 && orientation <= 8 ? turns[orientation - 1] : Turn::none;
}

bool exchangesSides(Turn turn) { return stepsOf(turn).exchange; }

CoefficientFile turned(CoefficientFile file, Turn turn, bool trim) {
    if (turn == Turn::none) return file;
    const Steps steps = stepsOf(turn);
    Frame frame = file.frame;
    // Only a side that is mirrored comes to begin with what it ended with.
    if (steps.exchange ? steps.down : steps.across) frame.width = trimmed(frame.width, 8 * frame.hMax, trim, "width");
    if (steps.exchange ? steps.across : steps.down)
        frame.height = trimmed(frame.height, 8 * frame.vMax, trim, "height");
    if (steps.exchange) {
        std::swap(frame.width, frame.height);
        for (Component& c : frame.components) std::swap(c.h, c.v);
        frame.setMaxima();
    }
    CoefficientFile out = emptied(file, frame);
    if (steps.exchange)
        for (QuantTable& table : out.quant) table = transposedTable(table);
    for (int i = 0; i < int(frame.components.size()); ++i) {
        const Component& c = frame.components[std::size_t(i)];
        const int columns = frame.blockColumns(c), rows = frame.blockRows(c);
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) {
                const int u = steps.across ? columns - 1 - x : x, v = steps.down ? rows - 1 - y : y;
                turnBlock(file.blocks.block(i, steps.exchange ? v : u, steps.exchange ? u : v),
                          out.blocks.block(i, x, y), steps);
            }
    }
    return out;
}

CoefficientFile cropped(CoefficientFile file, const Part& part, Warnings& warnings) {
    Frame frame = file.frame;
    if (part.x < 0 || part.y < 0 || part.width < 1 || part.height < 1 || part.width > frame.width - part.x ||
        part.height > frame.height - part.y)
        throw Error("the part to crop is not inside the picture of " + std::to_string(frame.width) + " by " +
                    std::to_string(frame.height));
    const int left = part.x / (8 * frame.hMax), top = part.y / (8 * frame.vMax);
    const int x = left * 8 * frame.hMax, y = top * 8 * frame.vMax;
    if (x != part.x || y != part.y)
        warnings.push_back("the part begins at " + std::to_string(x) + "," + std::to_string(y) +
                           ", where a unit does, and is larger by that");
    frame.width = part.width + part.x - x;
    frame.height = part.height + part.y - y;
    CoefficientFile out = emptied(file, frame);
    for (int i = 0; i < int(frame.components.size()); ++i) {
        const Component& c = frame.components[std::size_t(i)];
        for (int v = 0; v < frame.blockRows(c); ++v)
            for (int u = 0; u < frame.blockColumns(c); ++u)
                std::copy_n(file.blocks.block(i, left * c.h + u, top * c.v + v), kBlock, out.blocks.block(i, u, v));
    }
    return out;
}

} // namespace codecs::jpeg
