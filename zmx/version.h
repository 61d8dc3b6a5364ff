// version.h - what zmx --version prints.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmx/table.h"

#include <string>

namespace command {

// A line; with `all`, lines on where the library came from, what built the command, what it runs on and what it reads.
// `table` is asked for the codecs.
std::string versionText(bool all, const Command& table);

} // namespace command
