// lossless.h - lossless files (ITU-T T.81, Annex H).
//
// The predictors of the library halve sums of signed 16-bit samples. Samples that fill all 16 bits are therefore carried
// with their top bit turned over, as signed numbers around zero: each predictor is off by just as much, so that the
// differences are those of the standard; and the first row is predicted from zero.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/segmentreader.h"

namespace codecs::jpeg {

struct LosslessRows {
    int precision, predictor, pointTransform;

    int bias() const { return precision - pointTransform == 16 ? 0x8000 : 0; }
    // A point transform of the precision makes the library's first prediction zero.
    int firstRowTransform() const { return bias() ? precision : pointTransform; }
    Zmx16s stored(int sample) const { return Zmx16s((sample >> pointTransform) ^ bias()); }
    int sample(Zmx16s v) const { return ((v ^ bias()) << pointTransform) & ((1 << precision) - 1); }
};

// Decodes the file from its first scan on, to which `reader` has come.
void decodeLossless(SegmentReader& reader, RowSink& picture, Warnings& warnings);

// One scan of all channels; `options` are what encode() takes.
Warnings encodeLossless(RowSource& picture, ByteSink& file, const EncodeOptions& options);

} // namespace codecs::jpeg
