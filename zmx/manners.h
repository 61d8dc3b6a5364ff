// manners.h - what every subcommand does alike: how much it says, what is an error, and how many threads it takes.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/error.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace command {

// A command line that asks for nonsense: main() ends with 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// Trouble that has been printed already: main() ends with 1.
struct ToldError : codecs::Error {
    using Error::Error;
};

// -q, -v, --strict and --threads.
struct Manners {
    bool quiet = false, verbose = false, strict = false;
    int threads = 0; // 0: as many as the processors allow

    void addTo(CLI::App& c);
    // "zmx: FILE: warning: TEXT" for each; with --strict the first is thrown instead.
    void warn(const std::string& file, const std::vector<std::string>& texts) const;
};

// Gives --threads to every subcommand below `app` that has not got it by its manners.
void giveThreads(CLI::App& app);

} // namespace command
