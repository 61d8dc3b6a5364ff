// commands.h - the subcommands of zmx, one function a codec. Each adds its commands and their callbacks to `app`.
//
// A callback reports trouble by throwing an exception whose what() is one line that says file, what and where;
// main() prints it and exits with 1. CLI11 itself answers a wrong command line with a message and its own codes.
#pragma once

namespace CLI {
class App;
}

void addDdsCommands(CLI::App& app);
void addImageCommands(CLI::App& app);
void addJpegCommands(CLI::App& app);
void addTiffCommands(CLI::App& app);
void addHdpCommands(CLI::App& app);
void addJpeg2000Commands(CLI::App& app);
