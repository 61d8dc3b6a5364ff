// levelshift.h - plain models of the level shift of 128.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/frame/model/primitives.h"

namespace model {

inline Zmx8u add128(Zmx16s v) { return limit8u(v + 128); }
inline Zmx16s sub128(Zmx8u v) { return Zmx16s(v - 128); }

} // namespace model
