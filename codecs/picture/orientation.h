// orientation.h - which way up a picture is meant, as its EXIF says, and turning its pixels so.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"

namespace codecs {

// 1: as the rows stand. 2: mirrored left to right, 3: turned by half, 4: mirrored top to bottom, 5: exchanged along the
// diagonal, 6: to be turned to the right by a quarter, 7: exchanged along the other diagonal, 8: to be turned to the left.
int orientationOf(const Metadata& metadata);
// What is done to a picture of that orientation: turns go to the right. In the order of the orientations, from 1.
enum class Turn { none, mirror, half, flip, transpose, quarter, transverse, threeQuarters };
Turn turnOf(int orientation);
// A turn as places: first rows become columns or not, then x, and y, of what is turned run backwards or not.
struct TurnSteps {
    bool exchanged, right, down;
};
TurnSteps stepsOf(Turn turn);

// Sets it in the EXIF, which is made where there is none.
void setOrientation(Metadata& metadata, int orientation);
// Sets the width and the height of the picture where the EXIF tells them.
void setPixelSize(Metadata& metadata, int width, int height);

// The rows as they are meant to be seen, with an orientation of 1. All but 2 hold the whole picture in memory.
Rows upright(Rows from);
std::unique_ptr<RowSink> uprightBefore(std::unique_ptr<RowSink> to);

} // namespace codecs
