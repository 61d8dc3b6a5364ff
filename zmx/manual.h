// manual.h - manual pages and completions, made of the table. Read first: table.h
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmx/table.h"

#include <string>

namespace CLI {
class App;
}

namespace command {

// The source of the manual page of a command, in the macros of man(7).
std::string manualPage(const Command& command);

// What the shells read to complete words of the whole command.
std::string bashCompletion(const Command& root);
std::string fishCompletion(const Command& root);
std::string zshCompletion(const Command& root);

// zmx manual FOLDER, for the build alone: writes all of these into the folder. It is not in the table itself.
void addManual(CLI::App& app);

} // namespace command
