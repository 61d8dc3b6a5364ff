// pjband.h - the domain of the parameters of a progressive scan.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

namespace zmx {

// The bit position of the successive approximation.
inline bool badShift(int Al) { return Al < 0 || Al > 13; }

// A band of AC coefficients, and its bit position.
inline bool badBand(int Ss, int Se, int Al) { return Ss < 1 || Ss > 63 || Se < Ss || Se > 63 || badShift(Al); }

} // namespace zmx
