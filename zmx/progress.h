// progress.h - a bar on the terminal for work that takes longer than a second.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"

#include <chrono>
#include <memory>
#include <string>

namespace command {

class Progress {
public:
    // Nothing is ever shown when `wanted` is false or the standard error is no terminal.
    Progress(bool wanted, std::string what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }

    // `done` of `all` rows have passed.
    void show(int done, int all);
    void clear();

    // Sources and sinks that count what passes. A codec may read all before it writes, so that each end has its own pass.
    codecs::Rows counting(codecs::Rows rows);
    std::unique_ptr<codecs::RowSink> counting(std::unique_ptr<codecs::RowSink> rows);

private:
    bool active, shown = false;
    std::string what;
    std::chrono::steady_clock::time_point next;
};

} // namespace command
