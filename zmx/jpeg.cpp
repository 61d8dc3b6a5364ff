// jpeg.cpp - zmx jpeg: the group, and info.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/jpeg.h"

#include "codecs/jpeg/jpeg.h"
#include "codecs/picture/bytefile.h"
#include "zmx/commands.h"
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

namespace {

namespace jpeg = codecs::jpeg;

// Files of any mode, also of those that are not decoded: each segment is a line.
struct InfoArguments {
    std::vector<std::string> paths;
    bool strict = false;
};
// With --strict the text is printed nevertheless: it shows how far the file is sound.
void runInfo(const InfoArguments& args) {
    for (const std::string& path : args.paths) {
        // Names as in every other message.
        const std::string name = codecs::nameForMessages(path, true);
        jpeg::Warnings trouble;
        const std::string text =
            codecs::named(name, [&] { return jpeg::describe(*codecs::openBytes(path), &trouble); });
        if (args.paths.size() > 1) std::printf("%s:\n", name.c_str());
        std::fputs(text.c_str(), stdout);
        if (args.strict && !trouble.empty()) throw codecs::FileError(name + ": " + trouble[0]);
    }
}

void addInfo(CLI::App& app) {
    auto* c = app.add_subcommand("info", "Print what the segments of JPEG files say");
    const auto args = std::make_shared<InfoArguments>();
    c->add_option("IN", args->paths, "JPEG files of any mode; - is a pipe")->required();
    c->add_flag("--strict", args->strict, "fail where a file ends in trouble");
    c->footer("Example:\n  zmx jpeg info photo.jpg");
    c->callback([args] { runInfo(*args); });
}

} // namespace

std::string command::jpegText(const std::string& path) {
    // The codec takes an empty text for none, which an empty file is not.
    const codecs::Bytes bytes = codecs::readFile(path);
    return bytes.empty() ? " " : std::string(bytes.begin(), bytes.end());
}

// The order is that of the help.
void command::addJpeg(CLI::App& app) {
    CLI::App* group = app.add_subcommand("jpeg", "JPEG files (ITU-T T.81)");
    group->require_subcommand(1);
    addJpegEncode(*group);
    addJpegDecode(*group);
    addJpegTranscode(*group);
    addInfo(*group);
}
