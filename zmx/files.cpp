// files.cpp - from the words of a command line to pairs of files.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <set>
#include <unistd.h>

namespace command {
namespace {

namespace fs = std::filesystem;

// What ends with a slash is meant as one, and what is one need not.
bool isFolder(const std::string& path) {
    std::error_code none;
    return !path.empty() && (path.back() == '/' || fs::is_directory(path, none));
}

// "a/b" for "a/b.png"; a name that begins with its only dot has no ending.
std::string stemOf(const std::string& path) {
    const auto slash = path.rfind('/'), dot = path.rfind('.');
    const auto name = slash == std::string::npos ? 0 : slash + 1;
    return dot == std::string::npos || dot <= name ? path : path.substr(0, dot);
}
// "b.png" for "a/b.png".
std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

} // namespace

// IN and OUT are one list for the parser, since only all of them together tell which is which: jobs() parts them.
void Files::addTo(CLI::App& c, const std::string& in, const std::string& result, std::string end) {
    ending = std::move(end);
    c.add_option("IN", paths, in + "; then " + result + ", unless -o or --suffix says where; - is a pipe")
        ->required()
        ->option_text("IN... [OUT]");
    c.add_option("-o,--output", out, "where to: a file, or a folder for several")->type_name("FILE");
    c.add_option("--suffix", suffix, "beside each IN (or in the folder -o), its name without ending and this behind it")
        ->type_name("ENDING");
    c.add_flag("-f,--force", force, "also over IN itself, and to a terminal");
    manners.addTo(c);
}

void Files::addTo(CLI::App& c, const std::string& in, const std::string& result, const PictureOptions& options) {
    addTo(c, in, result, ".png");
    picture = &options;
}

// The name of a result: that of its IN with another ending, beside it or in a folder.
std::string Files::outOf(const std::string& in, const std::string& folder) const {
    if (in == "-") throw UsageError("standard input has no name to make another of; give OUT");
    // --to names the kind of file as its ending does.
    const std::string usual = picture && !picture->to.empty() ? "." + picture->to : ending;
    const std::string made = stemOf(in) + (suffix.empty() ? usual : suffix);
    return folder.empty() ? made : (fs::path(folder) / nameOf(made)).string();
}

// What stands where is told by -o and --suffix; without them the last path is where to.
std::vector<Job> Files::jobs() const {
    std::vector<std::string> ins = paths;
    std::string where = out;
    if (out.empty() && suffix.empty()) {
        if (ins.size() < 2) throw UsageError("where to? Give OUT behind IN, or -o, or --suffix");
        where = ins.back();
        ins.pop_back();
    }
    // Several files and one name are a slip, and a suffix for a whole name is one too.
    const bool folder = isFolder(where);
    if (ins.size() > 1 && !where.empty() && !folder)
        throw UsageError(where + " is no folder, and " + std::to_string(ins.size()) + " files are to go there");
    if (!suffix.empty() && !where.empty() && !folder)
        throw UsageError("--suffix and a name for OUT exclude each other");
    std::vector<Job> all;
    for (const std::string& in : ins) all.push_back({in, where.empty() || folder ? outOf(in, where) : where});
    // One would overwrite the other, and which of them would be chance.
    std::set<std::string> outs;
    for (const Job& job : all)
        if (!outs.insert(job.out).second) throw UsageError("two files would become " + job.out);
    return all;
}

// What would destroy IN or a terminal's screen wants -f.
void Files::workOn(const Job& job, const std::function<void(Run&)>& work) const {
    if (!force) {
        std::error_code none;
        if (job.out == "-" ? isatty(STDOUT_FILENO) : job.in != "-" && fs::equivalent(job.in, job.out, none))
            throw UsageError(job.out == "-" ? "standard output is a terminal; -f writes to it nevertheless"
                                            : job.out + " is IN itself; -f writes over it nevertheless");
    }
    // Without keep() the end of the run takes away what was written.
    Run run(manners, job);
    work(run);
    run.keep();
}

void Files::each(const std::function<void(Run&)>& work) const {
    const std::vector<Job> all = jobs();
    // The error of a single file goes up as it is: main() prints it and ends with its code.
    if (all.size() == 1) return workOn(all[0], work);
    // The others go on; the exit code tells that one did not.
    int failed = 0;
    for (const Job& job : all) {
        try {
            workOn(job, work);
        } catch (const codecs::Error& e) {
            std::fprintf(stderr, "zmx: %s\n", e.what());
            ++failed;
        }
    }
    if (failed) throw ToldError(std::to_string(failed) + " of " + std::to_string(all.size()) + " files failed");
}

} // namespace command
