// main.cpp - the zmx command: every codec of the library's applications as a subcommand.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "zmx/commands.h"
#include "zmx/files.h"
#include "zmx/help.h"
#include "zmx/manual.h"
#include "zmx/version.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace {

constexpr int kFileTrouble = 1, kUsageTrouble = 2;

// An interrupted command leaves no half file, and ends as the signal would have ended it.
extern "C" void onSignal(int signal) {
    codecs::removeUnfinishedFiles();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Whoever reads our output may end before us: SIGPIPE is an interruption too.
void watchSignals() {
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE})
        if (std::signal(signal, onSignal) == SIG_IGN) std::signal(signal, SIG_IGN); // nohup stays in force
    // A file that may grow no further is an error of the write, which is told.
    std::signal(SIGXFSZ, SIG_IGN);
}

// The options of zmx itself. The version flag is asked last, when it is known whether --verbose stands beside it.
void addOwnOptions(CLI::App& app, bool& verbose) {
    app.set_help_flag("-h,--help", "print this help");
    auto* more = app.add_flag("-v,--verbose", verbose, "with --version: also how it was built, and what it runs on");
    more->needs(app.set_version_flag(
        "-V,--version", [&app, &verbose] { return command::versionText(verbose, command::tableOf(app)); },
        "print the version of the library"));
    app.failure_message([](const CLI::App*, const CLI::Error& e) {
        return std::string("zmx: ") + e.what() + "\nRun with --help for more information.\n";
    });
    app.footer("Exit codes: 0 done; 1 a file could not be read or written, or is not sound; 2 a wrong command line.");
}

// What a full disk or a closed pipe has not taken is not done, also where it is only text.
void flushOutput() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        throw codecs::FileError(std::string("standard output: ") + std::strerror(errno));
}

// Builds the table of subcommands and runs the one that is asked for.
int run(int argc, char** argv) {
    CLI::App app{"Image codecs built on libzmxjpx", "zmx"};
    command::setHelp(app); // ahead of the subcommands, which take it over
    bool verbose = false;
    app.require_subcommand(1);
    addOwnOptions(app, verbose);
    command::addDds(app);
    command::addImage(app);
    command::addJpeg(app);
    command::addTiff(app);
    command::addHdp(app);
    command::addJpeg2000(app);
    // What holds for all of them; the last one is for the build, and in no table.
    command::giveThreads(app);
    command::giveExamples(app);
    command::addManual(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) { // --help and --version too
        if (app.exit(e) != 0) return kUsageTrouble;
    }
    flushOutput();
    return 0;
}

// One line for each failure, and the exit code.
int told(const char* what, int code) {
    std::fprintf(stderr, "zmx: %s\n", what);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    watchSignals();
    try {
        return run(argc, argv);
    } catch (const command::UsageError& e) {
        return told(e.what(), kUsageTrouble);
    } catch (const command::ToldError&) {
        return kFileTrouble;
    } catch (const std::bad_alloc&) {
        return told("not enough memory", kFileTrouble);
    } catch (const std::exception& e) {
        return told(e.what(), kFileTrouble);
    }
}
