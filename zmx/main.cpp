// main.cpp - the zmx command: every codec of the library's applications as a subcommand.
#include "codecs/picture/bytefile.h"
#include "zmx/commands.h"
#include "zmx/files.h"
#include "zmxj.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
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

void watchSignals() {
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal, onSignal) == SIG_IGN) std::signal(signal, SIG_IGN); // nohup stays in force
    // A file that may grow no further is an error of the write, which is told.
    std::signal(SIGXFSZ, SIG_IGN);
}

// Builds the table of subcommands and runs the one that is asked for.
int run(int argc, char** argv) {
    CLI::App app{"Image codecs built on libzmxjpx."};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string(zmxjGetLibVersion()->Name) + " " + zmxjGetLibVersion()->Version);
    app.footer("Exit codes: 0 done; 1 a file could not be read or written, or is not sound; 2 a wrong command line.");
    command::addDds(app);
    command::addImage(app);
    command::addJpeg(app);
    command::addTiff(app);
    command::addHdp(app);
    command::addJpeg2000(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) { // --help and --version too
        return app.exit(e) == 0 ? 0 : kUsageTrouble;
    }
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
