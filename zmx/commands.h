// commands.h - the subcommands of zmx, one function a codec. Each adds its commands and their callbacks to `app`.
//
// A callback reports trouble by an exception whose what() is one line; main() prints it. The exit code is 2 for a command
// line that asks for nonsense (UsageError, and what CLI11 finds), 1 for all else: a file that cannot be read or written.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

namespace CLI {
class App;
}

namespace command {

void addDds(CLI::App& app);
void addHdp(CLI::App& app);
void addImage(CLI::App& app);
void addJpeg(CLI::App& app);
void addJpeg2000(CLI::App& app);
void addTiff(CLI::App& app);

} // namespace command
