// pjzigzag.h - the zig-zag order of ITU-T T.81 (Figure A.6), both ways.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjtable.h"
#include "zmxj.h"

namespace zmx {

namespace zigzag {

// Where each step of the zig-zag walk stands: diagonals of constant row + column, the even ones upward. The walk
// ends at step 63; every further step stays there, so that a run that overshoots the block lands on element 63.
constexpr Zmx32s step(int k) {
    for (int diagonal = 0, walked = 0; diagonal < 15; ++diagonal)
        for (int i = 0; i <= diagonal; ++i) {
            const int row = diagonal % 2 ? i : diagonal - i, column = diagonal - row;
            if (row < 8 && column < 8 && walked++ == k) return 8 * row + column;
        }
    return 63;
}

} // namespace zigzag

// Entry k: the natural position of the element at zig-zag position k; eight spare entries behind the block.
inline constexpr auto own_pj_izigzag_index = tableOf<72>(zigzag::step);
static_assert(own_pj_izigzag_index[1] == 1 && own_pj_izigzag_index[2] == 8 && own_pj_izigzag_index[3] == 16 &&
              own_pj_izigzag_index[32] == 35 && own_pj_izigzag_index[59] == 54 && own_pj_izigzag_index[71] == 63);

// Entry n: the zig-zag position of the element at natural position n.
inline constexpr auto zigzag_index_Fwd = tableOf<64>([](int n) {
    Zmx32s k = 0;
    while (own_pj_izigzag_index[std::size_t(k)] != n) ++k;
    return k;
});
static_assert(zigzag_index_Fwd[1] == 1 && zigzag_index_Fwd[7] == 28 && zigzag_index_Fwd[8] == 2 &&
              zigzag_index_Fwd[35] == 32 && zigzag_index_Fwd[56] == 35 && zigzag_index_Fwd[63] == 63);

} // namespace zmx
