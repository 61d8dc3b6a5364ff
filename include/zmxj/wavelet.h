/** \file
 *  wavelet.h - one level of the JPEG2000 wavelets: gathers the reversible 5/3 and the irreversible 9/7 filter.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_WAVELET_H
#define ZMXJ_WAVELET_H

/** \defgroup wavelet Wavelets (JPEG2000)
 *  One level of the wavelets of ISO/IEC 15444-1, annex F, in three levels of service:
 *
 *  - whole planes: C1IR in place, C1R between a plane and four bands; they mirror the edges by themselves
 *  - kernels: FwdRow, InvRow, FwdCol, InvCol; the caller has extended the data past the edges
 *  - column lifting: FwdColLift, InvColLift; one stage over rows that the caller holds in a ring
 *
 *  Of the position of a tile only the parity of x and y counts: even absolute positions are low-pass, odd ones high-pass. A
 *  kernel takes a phase instead: 0 when the first sample is low-pass, anything else when it is high-pass.
 *
 *  In place, and for a line of n samples, the low band comes first, (n + 1) / 2 samples at an even origin and n / 2 at an
 *  odd one, then the high band. The forms on four bands, for a tile of w x h samples and whatever the phases:
 *
 *  | band | horizontally, vertically | width       | height      |
 *  |------|--------------------------|-------------|-------------|
 *  | 0    | low, low                 | (w + 1) / 2 | (h + 1) / 2 |
 *  | 1    | low, high                | (w + 1) / 2 | h / 2       |
 *  | 2    | high, low                | w / 2       | (h + 1) / 2 |
 *  | 3    | high, high               | w / 2       | h / 2       |
 *
 *  At an odd origin of odd size the last sample of a low band is the first one of the high band. Forward and inverse share
 *  that, so that going through both stays exact. Everything runs on the calling thread.
 */

#include "wavelet53.h"
#include "wavelet97.h"

#endif /* ZMXJ_WAVELET_H */
