// container.h - the kinds of picture files that are written.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstdint>

namespace codecs {

// pnm is PBM for bitmaps, else PGM or PPM; anymap is PAM where these do not do.
enum class Container : std::uint8_t { png, tiff, bmp, pnm, pgm, pbm, pam, anymap };

} // namespace codecs
