// help.h - what --help prints, made of the table.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

namespace CLI {
class App;
}

namespace command {

// Gives `app` its way of printing help. Subcommands take it from their parent when they are added, so this comes first.
void setHelp(CLI::App& app);

// To be called when all is added: a command whose subcommands have examples shows the first of each.
void giveExamples(CLI::App& app);

} // namespace command
