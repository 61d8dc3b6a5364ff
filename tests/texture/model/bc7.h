// bc7.h - plain model of a BC7 block.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/texture/model/surface.h"

namespace model {

Texels decodeBc7(const Zmx8u* block);

} // namespace model
