// jpeg.h - the subcommands of zmx jpeg, one a file.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace command {

void addJpegEncode(CLI::App& app);
void addJpegDecode(CLI::App& app);
void addJpegTranscode(CLI::App& app);

// A text in a file, scans or tables. One of no words is an error of its own, unlike none.
std::string jpegText(const std::string& path);

} // namespace command
