// manual.cpp - the hidden command that writes manual pages and completions, and which files they are.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/manual.h"
#include "codecs/picture/bytefile.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

namespace command {
namespace {

namespace fs = std::filesystem;

void writeText(const fs::path& path, const std::string& text) {
    codecs::writeFile(path.string(), {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

// zmx-jpeg-encode.1 for a command, and the pages of all below it.
void writePages(const fs::path& folder, const Command& c) {
    writeText(folder / (c.name("-") + ".1"), manualPage(c));
    for (const Command& child : c.commands) writePages(folder, child);
}

// Each file has the name under which its reader looks for it.
void writeManual(const fs::path& folder, const Command& root) {
    const std::string name = root.name("");
    for (const char* part : {"man1", "bash", "zsh", "fish"}) fs::create_directories(folder / part);
    writePages(folder / "man1", root);
    writeText(folder / "bash" / name, bashCompletion(root));
    writeText(folder / "zsh" / ("_" + name), zshCompletion(root));
    writeText(folder / "fish" / (name + ".fish"), fishCompletion(root));
}

} // namespace

void addManual(CLI::App& app) {
    CLI::App* c = app.add_subcommand("manual", "Write the manual pages and the completions of shells into a folder");
    c->group(""); // hidden
    const auto folder = std::make_shared<std::string>();
    c->add_option("FOLDER", *folder, "where to; it is made where it is not there")->required();
    c->footer("Examples:\n  zmx manual made/");
    c->callback([folder, &app] { writeManual(*folder, tableOf(app)); });
}

} // namespace command
