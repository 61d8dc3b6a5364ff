// main.cpp - the zmx command: every codec of the library's applications as a subcommand.
#include "zmx/commands.h"
#include "zmxj.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

int main(int argc, char** argv) {
    CLI::App app{"Image codecs built on libzmxjpx."};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string(zmxjGetLibVersion()->Name) + " " + zmxjGetLibVersion()->Version);
    addDdsCommands(app);
    addImageCommands(app);
    addJpegCommands(app);
    addTiffCommands(app);
    addHdpCommands(app);
    addJpeg2000Commands(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zmx: %s\n", e.what());
        return 1;
    }
    return 0;
}
