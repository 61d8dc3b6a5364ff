// turn.cpp - coefficients in other places. To mirror a block is to change the sign of each second frequency in that
// direction; to exchange rows and columns is to exchange those of its coefficients, and of the divisors.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/turn.h"

#include "codecs/jpeg/quantise.h"

namespace codecs::jpeg {

namespace {

// Where a block of a turned component comes from.
struct Place {
    int x, y;
};
Place placeBefore(int x, int y, int columns, int rows, const TurnSteps& steps) {
    if (steps.exchanged) {
        std::swap(x, y);
        std::swap(columns, rows);
    }
    return {steps.right ? columns - 1 - x : x, steps.down ? rows - 1 - y : y};
}

// The cosines of odd frequencies are odd about the middle of a block (A.3.3): run backwards, they change their sign and
// those of even ones stay as they are. `to` must not be `from`.
void turnBlock(const Zmx16s* from, Zmx16s* to, const TurnSteps& steps) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int u = steps.exchanged ? y : x, v = steps.exchanged ? x : y;
            const Zmx16s c = from[8 * v + u];
            const bool negative = (steps.right && u % 2 != 0) != (steps.down && v % 2 != 0);
            // The one value without a counterpart stays: no picture holds it.
            to[8 * y + x] = negative && c != -32768 ? Zmx16s(-c) : c;
        }
}

// A file of the same kind with another frame and empty blocks. They are filled from those of the old one: places cannot
// be exchanged within a store that has another shape afterwards.
CoefficientFile emptied(const CoefficientFile& file, const Frame& frame) {
    CoefficientFile out(frame);
    out.model = file.model;
    out.quant = file.quant;
    out.restart = file.restart;
    out.application = file.application;
    return out;
}

// Fills `to` with the blocks of the same components from an MCU of `from` on.
void copyBlocks(const CoefficientFile& from, int left, int top, CoefficientFile& to) {
    for (int i = 0; i < int(to.frame.components.size()); ++i) {
        const Component& c = to.frame.components[std::size_t(i)];
        for (int y = 0; y < to.frame.blockRows(c); ++y)
            for (int x = 0; x < to.frame.blockColumns(c); ++x)
                std::copy_n(from.blocks.block(i, left * c.h + x, top * c.v + y), kBlock, to.blocks.block(i, x, y));
    }
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

CoefficientFile withoutChroma(CoefficientFile file) {
    if (file.model == Model::grey) return file;
    if (file.model != Model::yCbCr) throw Error("a picture that is not stored as YCbCr has no luma to keep");
    Frame frame = file.frame;
    frame.components.resize(1);
    Component& luma = frame.components[0];
    // Of luma that is coarser than another component the picture has as many samples as there are (A.1.1).
    frame.width = (frame.width * luma.h + file.frame.hMax - 1) / file.frame.hMax;
    frame.height = (frame.height * luma.v + file.frame.vMax - 1) / file.frame.vMax;
    luma.h = luma.v = 1; // one component is not sampled (A.2.2)
    frame.setMaxima();
    CoefficientFile out = emptied(file, frame);
    out.model = Model::grey;
    out.quant.resize(1);
    copyBlocks(file, 0, 0, out);
    return out;
}

CoefficientFile turned(CoefficientFile file, Turn turn, bool trim) {
    if (turn == Turn::none) return file;
    const TurnSteps steps = stepsOf(turn);
    Frame frame = file.frame;
    // Only a side that runs backwards comes to begin with what it ended with.
    if (steps.right) frame.width = trimmed(frame.width, 8 * frame.hMax, trim, "width");
    if (steps.down) frame.height = trimmed(frame.height, 8 * frame.vMax, trim, "height");
    // The sampling turns along with the picture: 4:2:2 comes to lie on its side.
    if (steps.exchanged) {
        std::swap(frame.width, frame.height);
        for (Component& c : frame.components) std::swap(c.h, c.v);
        frame.setMaxima();
    }
    CoefficientFile out = emptied(file, frame);
    if (steps.exchanged)
        for (QuantTable& table : out.quant) table = transposedTable(table);
    for (int i = 0; i < int(frame.components.size()); ++i) {
        const Component& c = frame.components[std::size_t(i)];
        const int columns = frame.blockColumns(c), rows = frame.blockRows(c);
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) {
                const Place from = placeBefore(x, y, columns, rows, steps);
                turnBlock(file.blocks.block(i, from.x, from.y), out.blocks.block(i, x, y), steps);
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
    // Its right and lower edges lie where they were asked for: a frame may end within a unit.
    frame.width = part.width + part.x - x;
    frame.height = part.height + part.y - y;
    CoefficientFile out = emptied(file, frame);
    copyBlocks(file, left, top, out);
    return out;
}

} // namespace codecs::jpeg
