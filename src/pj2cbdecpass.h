// pj2cbdecpass.h - the coding passes of the decoder.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2decstate.h"

namespace zmx {

// The coding passes on the state's curBitPlane, each on a segment that has been started. They return 1 if the
// block is found damaged, otherwise 0. `causal`, `reset`, `errorPrediction` and `segmentationSymbols` are the
// styles of the names; `terminated`: the segment ends with the pass.
int significancePropagation(ZmxiDecodeCBProgrState* state, bool causal, bool reset, bool errorPrediction);
int magnitudeRefinement(ZmxiDecodeCBProgrState* state, bool reset, bool errorPrediction);
int cleanup(ZmxiDecodeCBProgrState* state, bool causal, bool segmentationSymbols, bool reset, bool errorPrediction);
int significancePropagationRaw(ZmxiDecodeCBProgrState* state, bool causal, bool terminated);
int magnitudeRefinementRaw(ZmxiDecodeCBProgrState* state);

} // namespace zmx
