// manners.cpp - the options of every subcommand, and what warnings come to.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/manners.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <sched.h>

namespace command {
namespace {

// Threads of every kind, the library's included, keep to the processors that this process may use: the first `count` of
// those that it has now.
void keepToProcessors(int count) {
    cpu_set_t all, some;
    CPU_ZERO(&some);
    if (sched_getaffinity(0, sizeof all, &all) != 0) return;
    for (int cpu = 0, taken = 0; cpu < CPU_SETSIZE && taken < count; ++cpu)
        if (CPU_ISSET(cpu, &all)) {
            CPU_SET(cpu, &some);
            ++taken;
        }
    // Where this is not allowed there are more threads than were asked for; the result is the same.
    sched_setaffinity(0, sizeof some, &some);
}

// The mask of processors serves where a codec is not told a count, and leaves out what is beyond it where one is.
CLI::Option* addThreads(CLI::App& c, int& count) {
    return c.add_option("-t,--threads", count, "at the most so many; left out: as the processors allow")
        ->check(CLI::Range(1, 1024))
        ->each([](const std::string& text) { keepToProcessors(std::stoi(text)); });
}

} // namespace

void Manners::addTo(CLI::App& c) {
    auto* q = c.add_flag("-q,--quiet", quiet, "no warnings, no progress");
    c.add_flag("-v,--verbose", verbose, "say what was done")->excludes(q);
    c.add_flag("--strict", strict, "a warning is an error: nothing is written");
    addThreads(c, threads);
}

void Manners::warn(const std::string& file, const std::vector<std::string>& texts) const {
    // The first one decides with --strict: what comes behind it may follow from it.
    for (const std::string& text : texts) {
        if (strict) throw codecs::FileError(file + ": " + text + " (an error by --strict)");
        if (!quiet) std::fprintf(stderr, "zmx: %s: warning: %s\n", file.c_str(), text.c_str());
    }
}

void giveThreads(CLI::App& app) {
    const auto children = app.get_subcommands(static_cast<bool (*)(CLI::App*)>(nullptr));
    for (CLI::App* child : children) giveThreads(*child);
    static int unused = 0; // the mask does it
    // Not by get_option_no_throw(), which ends the process where memory runs out.
    const auto options = app.get_options();
    if (children.empty() &&
        std::none_of(options.begin(), options.end(), [](const CLI::Option* o) { return o->check_lname("threads"); }))
        addThreads(app, unused);
}

} // namespace command
