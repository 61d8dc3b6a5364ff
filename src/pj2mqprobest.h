// pj2mqprobest.h - the probability estimation of the MQ coder (ISO/IEC 15444-1 C.2.5) for decoder and encoder: the
// state table, the 19 contexts with their initial states, and the form in which the coders hold contexts at work.
#pragma once

#include "pjtable.h"
#include "zmxj.h"

// A row of the state table: the LPS probability, the next row after an MPS and after an LPS, and whether the sense of
// the MPS flips on an LPS.
struct MqEstimate {
    Zmx32u qe, nmps, nlps, flip;
};

// ISO/IEC 15444-1 Table C.2.
inline constexpr MqEstimate owniEstimator_JPEG2K[47] = {
    {0x5601, 1, 1, 1},    {0x3401, 2, 6, 0},    {0x1801, 3, 9, 0},    {0x0AC1, 4, 12, 0},   // 0
    {0x0521, 5, 29, 0},   {0x0221, 38, 33, 0},  {0x5601, 7, 6, 1},    {0x5401, 8, 14, 0},   // 4
    {0x4801, 9, 14, 0},   {0x3801, 10, 14, 0},  {0x3001, 11, 17, 0},  {0x2401, 12, 18, 0},  // 8
    {0x1C01, 13, 20, 0},  {0x1601, 29, 21, 0},  {0x5601, 15, 14, 1},  {0x5401, 16, 14, 0},  // 12
    {0x5101, 17, 15, 0},  {0x4801, 18, 16, 0},  {0x3801, 19, 17, 0},  {0x3401, 20, 18, 0},  // 16
    {0x3001, 21, 19, 0},  {0x2801, 22, 19, 0},  {0x2401, 23, 20, 0},  {0x2201, 24, 21, 0},  // 20
    {0x1C01, 25, 22, 0},  {0x1801, 26, 23, 0},  {0x1601, 27, 24, 0},  {0x1401, 28, 25, 0},  // 24
    {0x1201, 29, 26, 0},  {0x1101, 30, 27, 0},  {0x0AC1, 31, 28, 0},  {0x09C1, 32, 29, 0},  // 28
    {0x08A1, 33, 30, 0},  {0x0521, 34, 31, 0},  {0x0441, 35, 32, 0},  {0x02A1, 36, 33, 0},  // 32
    {0x0221, 37, 34, 0},  {0x0141, 38, 35, 0},  {0x0111, 39, 36, 0},  {0x0085, 40, 37, 0},  // 36
    {0x0049, 41, 38, 0},  {0x0025, 42, 39, 0},  {0x0015, 43, 40, 0},  {0x0009, 44, 41, 0},  // 40
    {0x0005, 45, 42, 0},  {0x0001, 45, 43, 0},  {0x5601, 46, 46, 0},                        // 44
};

// Context numbers; this library's own, 2 above the labels of the standard where those have numbers.
inline constexpr int kContexts = 19;
inline constexpr int kUniformContext = 0;    // the run-length pair and the segmentation symbol
inline constexpr int kRunLengthContext = 1;  // the run-length decision of a cleanup pass
inline constexpr int kZeroCodingContext = 2; // 2 to 10: zero coding; 2: no significant neighbour
inline constexpr int kSignContext = 11;      // 11 to 15: sign coding
inline constexpr int kRefineContext = 16;    // 16, 17: first refinement without and with a significant neighbour; 18: later

// ISO/IEC 15444-1 Table D.7.
inline constexpr Zmx32u owniInitialCtxIndexes_JPEG2K[kContexts] = {46, 3, 4};
inline constexpr Zmx32u owniInitialMPS_JPEG2K[kContexts] = {};
