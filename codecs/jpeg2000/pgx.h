// pgx.h - single components in PGX files (ISO/IEC 15444-4, B.2): a line of text, then the samples.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"

namespace codecs::jpeg2000 {

// Samples of up to 16 bits, of either sign and byte order. An Error says what is wrong.
Component readPgx(ByteView file);

// Samples of up to 8 bits in bytes, others in words, high byte first.
Bytes writePgx(const Component& component);

// Components of files as one picture. The largest has a sample for each point of the reference grid; others are
// subsampled as their size says.
PlanarPicture fromComponents(std::vector<Component> components);

} // namespace codecs::jpeg2000
